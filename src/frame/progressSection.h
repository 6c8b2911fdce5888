// SPDX-License-Identifier: MIT
/// Reporting from code that runs with a progress bar or without one.
#pragma once
#include <QString>
#include "datainterface/VORN_Progress.h"
#include "frame/frameState.h"

namespace datainterface {

/// For callees that take a callback: null without a bar.
inline ProgressCallback progressCallback()
{
    return VORN_Progress::UsingProgressBar() ? &VORN_Progress::UpdateProgress : nullptr;
}

/// Whether there is a bar that the user cancelled. Under the testing flag every report counts as
/// fine.
inline bool isCanceled()
{
    return VORN_Progress::UsingProgressBar() && !isTesting()
           && VORN_Progress::ProgressBarCanceled();
}

/// False: the user cancelled.
inline bool reportProgress(int percent, const char *text = nullptr)
{
    return !VORN_Progress::UsingProgressBar() || VORN_Progress::UpdateProgress(percent, text);
}

inline void setProgressText(const QString &text)
{
    if (VORN_Progress::UsingProgressBar())
        VORN_Progress::SetProgressText(text.toUtf8().constData());
}

/// An inner level of work for a scope. It begins on 0 to `upper` percent of its own range.
class ProgressSection {
public:
    explicit ProgressSection(int upper) : mOpen(VORN_Progress::UsingProgressBar())
    {
        if (!mOpen)
            return;
        VORN_Progress::PushProgressBarSection();
        VORN_Progress::SetProgressBarSubSection(0, upper);
    }
    ~ProgressSection()
    {
        // The bar can be gone: a host's slot may have closed it while events ran.
        if (!mOpen || !VORN_Progress::UsingProgressBar())
            return;
        try {
            VORN_Progress::PopProgressBarSection();
        } catch (...) { // another bar stands in its place, without our sections
        }
    }
    ProgressSection(const ProgressSection &) = delete;
    ProgressSection &operator=(const ProgressSection &) = delete;

    /// On to the next part of the range, up to `upper`.
    void next(int upper)
    {
        if (mOpen && VORN_Progress::UsingProgressBar())
            VORN_Progress::SetNextProgressBarSubSection(upper);
    }

private:
    const bool mOpen;
};

} // namespace datainterface
