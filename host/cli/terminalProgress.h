// SPDX-License-Identifier: MIT
/// One bar on the terminal for all long work, fed by the library's own progress.
#pragma once
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include "datainterface/VORN_Progress.h"

class QProgressDialog;

namespace meridor {

/// Watches for the library's progress dialog, which nobody sees, and shows on standard error what
/// it says. Ctrl-C presses its cancel button. Other dialogs that the library may open are told as
/// notes and closed, so that nothing ever waits for an answer.
class TerminalProgress : public QObject {
    Q_OBJECT
public:
    /// @param visible  false: nothing is shown, cancelling works all the same.
    explicit TerminalProgress(bool visible);
    ~TerminalProgress() override;
    void setVisible(bool visible) { mVisible = visible; }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void follow(QProgressDialog *dialog);
    void poll();
    void draw(int percent, const QString &text);
    void wipe();

    bool mVisible;
    QPointer<QProgressDialog> mDialog;
    QTimer mTimer;
    QString mShown;
};

/// The library's bar for a scope. Reports raise the cancel.
class Progress {
public:
    Progress(const char *title, const char *label) : mBar(title, label, "Cancel") {}
    /// @param percent  of this scope's work.
    void report(int percent, const char *text = nullptr) const;
    /// Reports 0 to 100 of a part of it.
    auto part(int from, int to) const
    {
        return [this, from, to](int percent) { report(from + (to - from) * percent / 100); };
    }

private:
    VORN_Progress mBar;
};

} // namespace meridor
