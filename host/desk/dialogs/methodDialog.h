// SPDX-License-Identifier: MIT
/// The dialog of a method: its form, the command line that does the same, and what it reported. It
/// is not modal: views can be used while it is open.
#pragma once
#include <QDialog>
#include "desk/dialogs/methodForm.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace meridor {

class MethodDialog : public QDialog {
    Q_OBJECT
public:
    MethodDialog(Workspace &workspace, const MethodRegister &methods, const Method &method,
                 QWidget *parent);
    MethodForm &form() { return *mForm; }
    /// Runs the method with what the form shows.
    bool execute();

Q_SIGNALS:
    void executed(const MethodReport &report);
    void helpWanted(const QString &topic);

private:
    void showCommandLine();

    Workspace &mWorkspace;
    const MethodRegister &mMethods;
    const Method &mMethod;
    MethodForm *mForm;
    QLineEdit *mCommandLine;
    QLabel *mReport;
};

} // namespace meridor
