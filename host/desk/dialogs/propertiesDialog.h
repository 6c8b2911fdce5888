// SPDX-License-Identifier: MIT
/// Name, facts, description and history of a thing of the project.
#pragma once
#include <QDialog>
#include "desk/project/things.h"

class QLabel;
class QLineEdit;
class QPlainTextEdit;

namespace meridor {

class Workspace;

/// Closes when the thing is removed. Not modal.
class PropertiesDialog : public QDialog {
    Q_OBJECT
public:
    PropertiesDialog(Workspace &workspace, const Thing &thing, QWidget *parent = nullptr);
    /// Writes what was edited into the project. False after the trouble is shown.
    bool apply();

private:
    void closeIf(bool isGone);

    Workspace &mWorkspace;
    Thing mThing;
    QLineEdit *mName;
    QLineEdit *mSummary;
    QPlainTextEdit *mHistory;
    QLabel *mTrouble;
};

} // namespace meridor
