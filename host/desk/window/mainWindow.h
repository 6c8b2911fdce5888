// SPDX-License-Identifier: MIT
/// The main window: the start page or the views of the open project, its contents, time and log.
#pragma once
#include <QMainWindow>
#include <QVector>
#include "datainterface/MethodRecords.h"

namespace meridor {

class Method;
class MethodRegister;
class Workspace;

class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(Workspace &workspace, const MethodRegister &methods);
    ~MainWindow() override;

    /// Shows the dialog of a method, filled with these parameters.
    void showMethod(const Method &method, const QVector<MethodParameter> &parameters);

private:
    Workspace &mWorkspace;
    const MethodRegister &mMethods;
};

} // namespace meridor
