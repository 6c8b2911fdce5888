// SPDX-License-Identifier: MIT
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/notes.h"
#include "core/project/progress.h"
#include "core/project/projectHost.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/vorn_error.h"

namespace meridor {

Notes::Notes() = default;
Notes::~Notes() = default;
Notes::Notes(const Notes &) = default;
Notes &Notes::operator=(const Notes &) = default;

void Notes::warn(const QString &text) const
{
    note(text);
}

void NoNotes::note(const QString &) const
{
}

bool isCancelled()
{
    const auto *host = dynamic_cast<const ProjectHost *>(VORN_GetController());
    return host && host->isCancelled();
}

void stopIfCancelled()
{
    if (isCancelled())
        cancelled();
}

// The library raises for an open bar only; what the user's report raises passes through.
Progress::Progress(const char *title, const char *label)
try : mBar(title, label, "Cancel") {
} catch (const vorn_error &) {
    failUsage(QStringLiteral("a progress bar is open; there is one at a time"));
}

void Progress::report(int percent, const char *text) const
{
    const bool goesOn =
        !VORN_Progress::UsingProgressBar() || VORN_Progress::UpdateProgress(percent, text);
    if (!goesOn)
        cancelled();
    stopIfCancelled();
}

} // namespace meridor
