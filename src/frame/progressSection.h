// SPDX-License-Identifier: MIT
/// Progress reports that do nothing while no progress bar is shown.
#pragma once
#include <QString>
#include "datainterface/VORN_Progress.h"
#include "frame/frameState.h"

namespace datainterface {

/// The callback to pass to functions that report progress; null while no bar is shown.
inline ProgressCallback progressCallback()
{
    return VORN_Progress::UsingProgressBar() ? &VORN_Progress::UpdateProgress : nullptr;
}

/// Whether a bar is shown and the user cancelled it. False under the testing flag.
inline bool isCanceled()
{
    return VORN_Progress::UsingProgressBar() && !isTesting()
           && VORN_Progress::ProgressBarCanceled();
}

/// @return false when the user cancelled.
inline bool reportProgress(int percent, const char *text = nullptr)
{
    return !VORN_Progress::UsingProgressBar() || VORN_Progress::UpdateProgress(percent, text);
}

inline void setProgressText(const QString &text)
{
    if (VORN_Progress::UsingProgressBar())
        VORN_Progress::SetProgressText(text.toUtf8().constData());
}

/// A nested section of the progress bar for the lifetime of the object. Reports first cover 0 to
/// `upper` percent of the section.
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
        // A slot of the host may have closed the bar while events ran.
        if (!mOpen || !VORN_Progress::UsingProgressBar())
            return;
        try {
            VORN_Progress::PopProgressBarSection();
        } catch (...) { // a new bar was opened meanwhile, which has no such section
        }
    }
    ProgressSection(const ProgressSection &) = delete;
    ProgressSection &operator=(const ProgressSection &) = delete;

    /// Reports from now on cover the next part of the section, up to `upper` percent.
    void next(int upper)
    {
        if (mOpen && VORN_Progress::UsingProgressBar())
            VORN_Progress::SetNextProgressBarSubSection(upper);
    }

private:
    const bool mOpen;
};

} // namespace datainterface
