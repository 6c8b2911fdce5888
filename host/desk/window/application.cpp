// SPDX-License-Identifier: MIT
#include "desk/window/application.h"
#include <QTextCodec>
#include <clocale>
#include "desk/methods/method.h"
#include "desk/project/workspace.h"
#include "desk/window/mainWindow.h"

namespace meridor {

Application::Application(int &argc, char **argv) : QApplication(argc, argv)
{
    // The library converts file names to the local encoding, which in the C locale would lose
    // characters outside ASCII, and reads numbers with a point.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    std::setlocale(LC_NUMERIC, "C");
    setApplicationName(QStringLiteral("meridor-desk"));
    setApplicationDisplayName(QStringLiteral("Meridor"));
    mMethods = std::make_unique<MethodRegister>();
    mWorkspace = std::make_unique<Workspace>(*this, SessionOptions());
    mWindow = std::make_unique<MainWindow>(*mWorkspace, *mMethods);
}

Application::~Application()
{
    mWindow.reset(); // views are closed while the library still runs
    mWorkspace.reset();
}

namespace {

const Method *methodOf(const MethodRegister &methods, int number, const QString &name)
{
    const Method *const named = methods.find(name);
    return named ? named : methods.find(number);
}

} // namespace

int Application::ShowMethod(int method, const QString &name,
                            const QVector<MethodParameter> &parameters)
{
    const Method *const found = methodOf(*mMethods, method, name);
    if (!found)
        return -1;
    mWindow->showMethod(*found, parameters);
    return mMethods->numberOf(found->name);
}

bool Application::ExecuteMethod(int method, const QString &name,
                                const QVector<MethodParameter> &parameters, MethodReport &report)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found && mMethods->execute(*mWorkspace, *found, parameters, report);
}

QString Application::GetMethodName(int method, const QString &name)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found ? found->title : QString();
}

QString Application::GetInvocationStringForMethod(int method, const QString &name,
                                                  const QVector<MethodParameter> &parameters)
{
    const Method *const found = methodOf(*mMethods, method, name);
    return found ? mMethods->invocation(*mWorkspace, *found, parameters) : QString();
}

void Application::RemoveGeography(int id)
{
    if (mWorkspace)
        mWorkspace->geographyDies(id);
    ProjectHost::RemoveGeography(id);
}

} // namespace meridor
