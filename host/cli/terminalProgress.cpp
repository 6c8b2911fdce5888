// SPDX-License-Identifier: MIT
#include "cli/terminalProgress.h"
#include <cstdio>
#include <unistd.h>

namespace meridor {
namespace {

constexpr int kBarWidth = 30;
constexpr int kRestMilliseconds = 80; ///< least time between two drawings

} // namespace

TerminalProgress::TerminalProgress(bool visible) : mVisible(visible && ::isatty(STDERR_FILENO))
{
}

TerminalProgress::~TerminalProgress()
{
    wipe();
}

void TerminalProgress::show(int percent, const QString &text)
{
    if (!mVisible)
        return;
    if (percent < 0) {
        wipe();
        return;
    }
    if (mDrawn.isValid() && mDrawn.elapsed() < kRestMilliseconds)
        return;
    mDrawn.start();
    const int filled = kBarWidth * qBound(0, percent, 100) / 100;
    const QString line =
        QStringLiteral("[%1%2] %3%  %4")
            .arg(QString(filled, QLatin1Char('#')), QString(kBarWidth - filled, QLatin1Char('.')))
            .arg(percent, 3)
            .arg(text.left(40));
    if (line == mShown)
        return;
    std::fprintf(stderr, "\r%s\033[K", line.toUtf8().constData());
    std::fflush(stderr);
    mShown = line;
}

void TerminalProgress::wipe()
{
    if (mShown.isEmpty())
        return;
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    mShown.clear();
}

} // namespace meridor
