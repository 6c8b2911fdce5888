// SPDX-License-Identifier: MIT
#include "datainterface/VORN_Progress.h"
#include <QList>
#include <QString>
#include <algorithm>
#include <limits>
#include "Common/detail/failure.h"
#include "frame/dialogs.h"
#include "frame/frameState.h"

using datainterface::isTesting;
using datainterface::require;

namespace {

// In percent of the enclosing section.
struct Section {
    int lower = 0;
    int upper = 100;
};

// The dialogs that show the bar; null while there is none. Each call of them may run events of the
// host, which may call Close, so gBar is tested again after it.
HostDialogs *gBar = nullptr;
QList<Section> gSections; // the innermost first
bool gResetOnCancel = false;

void requireBar(const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    require(gBar != nullptr, "Progress bar has not been created", file, line);
}

bool goesOn()
{
    return !gBar || gBar->PollProgress();
}

// Every level truncates to a whole percent; hosts have always seen positions that are computed so.
int toBar(int percent)
{
    constexpr double kLeast = std::numeric_limits<int>::min();
    constexpr double kMost = std::numeric_limits<int>::max();
    for (const Section &section : std::as_const(gSections)) {
        const double width = static_cast<double>(section.upper) - section.lower;
        percent =
            static_cast<int>(std::clamp(section.lower + width * (percent * 0.01), kLeast, kMost));
    }
    return percent;
}

} // namespace

VORN_Progress::VORN_Progress(const char *title, const char *label, const char *cancelText)
{
    if (isTesting())
        return;
    require(gBar == nullptr, "Progress bar already exists");
    HostDialogs *dialogs = datainterface::dialogs();
    if (!dialogs)
        return;
    dialogs->BeginProgress(QString::fromUtf8(title), QString::fromUtf8(label),
                           QString::fromUtf8(cancelText));
    gBar = dialogs;
    PushProgressBarSection();
}

VORN_Progress::~VORN_Progress()
{
    Close();
}

void VORN_Progress::Close()
{
    if (isTesting() || !gBar)
        return;
    HostDialogs *const closed = gBar;
    gBar = nullptr;
    gSections.clear();
    closed->EndProgress();
}

bool VORN_Progress::UsingProgressBar()
{
    return isTesting() || gBar;
}

bool VORN_Progress::SetProgressText(const char *text)
{
    if (isTesting())
        return true;
    requireBar();
    gBar->SetProgressLabel(QString::fromUtf8(text));
    goesOn();
    return true;
}

void VORN_Progress::SetProgressButtonText(const char *text, bool resetOnCancel)
{
    if (isTesting())
        return;
    requireBar();
    gBar->SetProgressButton(QString::fromUtf8(text), resetOnCancel);
    gResetOnCancel = resetOnCancel;
    goesOn();
}

bool VORN_Progress::UpdateProgress(int percent, const char *text)
{
    if (isTesting())
        return true;
    requireBar();
    if (text)
        gBar->SetProgressLabel(QString::fromUtf8(text));
    if (percent >= 0)
        percent = toBar(percent);
    if (percent >= 0 && gBar)
        gBar->SetProgressPercent(percent);
    if (goesOn())
        return true;
    if (gResetOnCancel && gBar)
        gBar->ResetProgress();
    return false;
}

bool VORN_Progress::CheckForCancel(int, const char *)
{
    return isTesting() || !gBar || !ProgressBarCanceled();
}

bool VORN_Progress::SetProgressBarSubSection(int lower, int upper)
{
    if (isTesting())
        return true;
    require(lower <= upper, "lower <= upper");
    requireBar();
    gSections.first() = {lower, upper};
    return true;
}

bool VORN_Progress::SetNextProgressBarSubSection(int upper)
{
    if (isTesting())
        return true;
    requireBar();
    gSections.first() = {gSections.first().upper, upper};
    return true;
}

bool VORN_Progress::PushProgressBarSection()
{
    if (isTesting())
        return true;
    requireBar();
    gSections.prepend(Section());
    return true;
}

bool VORN_Progress::PopProgressBarSection()
{
    if (isTesting())
        return true;
    requireBar();
    require(gSections.size() > 1, "Unmatched section pop");
    gSections.removeFirst();
    return true;
}

bool VORN_Progress::ProgressBarCanceled()
{
    if (isTesting())
        return true;
    requireBar();
    return !goesOn();
}
