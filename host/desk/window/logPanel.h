// SPDX-License-Identifier: MIT
/// The log of the session as a script of command lines.
#pragma once
#include <QWidget>

class QPlainTextEdit;

namespace meridor {

class Workspace;

class LogPanel : public QWidget {
    Q_OBJECT
public:
    explicit LogPanel(Workspace &workspace, QWidget *parent = nullptr);
    /// Writes the script as an executable file. False after telling the user why not.
    bool saveScript(const QString &file);

public Q_SLOTS:
    /// Puts the selected lines, else all of the script, on the clipboard.
    void copy();
    void askSave();

private:
    Workspace &mWorkspace;
    QPlainTextEdit *mText;
};

} // namespace meridor
