// SPDX-License-Identifier: MIT
/// One bar on the terminal for all long work.
#pragma once
#include <QElapsedTimer>
#include <QString>

namespace meridor {

class TerminalProgress {
public:
    /// @param visible  false: nothing is shown.
    explicit TerminalProgress(bool visible);
    ~TerminalProgress();
    TerminalProgress(const TerminalProgress &) = delete;
    TerminalProgress &operator=(const TerminalProgress &) = delete;

    /// Draws the bar again when it has changed and was not drawn a moment ago; a percent of -1
    /// takes it off the line.
    void show(int percent, const QString &text);
    void wipe();

private:
    bool mVisible;
    QElapsedTimer mDrawn;
    QString mShown;
};

} // namespace meridor
