// SPDX-License-Identifier: MIT
/// The progress bar on the terminal.
#pragma once
#include <QElapsedTimer>
#include <QString>

namespace meridor {

class TerminalProgress {
public:
    /// @param visible  false: nothing is drawn. Nothing is drawn either if standard error is no
    ///                 terminal.
    explicit TerminalProgress(bool visible);
    ~TerminalProgress();
    TerminalProgress(const TerminalProgress &) = delete;
    TerminalProgress &operator=(const TerminalProgress &) = delete;

    /// Draws the bar if it has changed and was not drawn in the last 80 ms. A percent of -1 removes
    /// the bar.
    void show(int percent, const QString &text);
    void wipe();

private:
    bool mVisible;
    QElapsedTimer mDrawn;
    QString mShown;
};

} // namespace meridor
