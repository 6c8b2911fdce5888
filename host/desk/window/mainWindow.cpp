// SPDX-License-Identifier: MIT
#include "desk/window/mainWindow.h"
#include <QStatusBar>
#include "desk/dialogs/methodDialog.h"
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

void MainWindow::showMethod(const Method &method, const QVector<MethodParameter> &parameters)
{
    auto *const dialog = new MethodDialog(mWorkspace, mMethods, method, this);
    dialog->form().setParameters(parameters);
    dialog->show();
}

} // namespace meridor
