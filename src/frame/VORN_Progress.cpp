// SPDX-License-Identifier: MIT
#include "datainterface/VORN_Progress.h"
#include <QCoreApplication>
#include <QList>
#include <QProgressDialog>
#include <QString>
#include <algorithm>
#include <limits>
#include "Common/detail/failure.h"
#include "frame/frameState.h"

using datainterface::isTesting;
using datainterface::require;

namespace {

// In percents of the enclosing section.
struct Section {
    int lower = 0;
    int upper = 100;
};

QProgressDialog *gBar = nullptr;
QList<Section> gSections; // the innermost first
bool gResetOnCancel = false;
int gPumping = 0; // calls of Qt now on the stack that may run events, and so a Close

void requireBar(const char *file = __builtin_FILE(), int line = __builtin_LINE())
{
    require(gBar != nullptr, "Progress bar has not been created", file, line);
}

// Runs a call that may deliver events. The bar can be gone after it.
template <class Call> void pump(Call call)
{
    struct Pumping {
        Pumping() { ++gPumping; }
        ~Pumping() { --gPumping; }
    } const pumping;
    call();
}

void pumpEvents()
{
    pump([] { QCoreApplication::processEvents(); });
}

bool isCanceled()
{
    return gBar && gBar->wasCanceled();
}

// Each level truncates, so that the bar stands where it always stood.
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
    if (!datainterface::canShowWidgets())
        return;
    gBar = new QProgressDialog(
        QString::fromUtf8(label), QString::fromUtf8(cancelText), 0, 100, nullptr,
        Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint);
    gBar->setObjectName(QStringLiteral("ProgressBar"));
    gBar->setModal(true);
    gBar->setWindowTitle(QString::fromUtf8(title));
    gBar->setMinimumDuration(500);
    gBar->show();
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
    // A slot that runs inside the bar's own call must not take the bar from under it.
    if (gPumping > 0) {
        gBar->hide();
        gBar->deleteLater();
    } else {
        delete gBar;
    }
    gBar = nullptr;
    gSections.clear();
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
    gBar->setLabelText(QString::fromUtf8(text));
    pumpEvents();
    return true;
}

void VORN_Progress::SetProgressButtonText(const char *text, bool resetOnCancel)
{
    if (isTesting())
        return;
    requireBar();
    gBar->setCancelButtonText(QString::fromUtf8(text));
    gBar->setAutoClose(resetOnCancel);
    gResetOnCancel = resetOnCancel;
    pumpEvents();
}

bool VORN_Progress::UpdateProgress(int percent, const char *text)
{
    if (isTesting())
        return true;
    requireBar();
    if (text)
        gBar->setLabelText(QString::fromUtf8(text));
    if (percent >= 0)
        percent = toBar(percent);
    if (percent >= 0)
        pump([percent] { gBar->setValue(percent); });
    pumpEvents();
    if (!isCanceled())
        return true;
    if (gResetOnCancel)
        gBar->reset();
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
    pumpEvents();
    return isCanceled();
}
