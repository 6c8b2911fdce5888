// SPDX-License-Identifier: MIT
#include "desk/window/mainWindow.h"
#include <QStatusBar>
#include "desk/methods/method.h"
#include "desk/project/workspace.h"

namespace meridor {

MainWindow::MainWindow(Workspace &workspace, const MethodRegister &methods)
    : mWorkspace(workspace), mMethods(methods)
{
    resize(1280, 800);
    connect(&mWorkspace, &Workspace::told, this,
            [this](const QString &text) { statusBar()->showMessage(text); });
}

MainWindow::~MainWindow() = default;

void MainWindow::showMethod(const Method &, const QVector<MethodParameter> &)
{
}

} // namespace meridor
