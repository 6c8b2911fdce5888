// SPDX-License-Identifier: MIT
/// The program: Qt's application and the library's controller in one object, so that the library sees
/// that there are windows. Every request of the library is answered here, by the main window.
#pragma once
#include <QApplication>
#include <memory>
#include "core/project/projectHost.h"

namespace meridor {

class MainWindow;
class MethodRegister;
class Workspace;

class Application : public QApplication, public ProjectHost {
    Q_OBJECT
public:
    Application(int &argc, char **argv);
    ~Application() override;
    Workspace &workspace() { return *mWorkspace; }
    MainWindow &window() { return *mWindow; }
    const MethodRegister &methods() const { return *mMethods; }

    int ShowMethod(int method, const QString &name,
                   const QVector<MethodParameter> &parameters) override;
    bool ExecuteMethod(int method, const QString &name, const QVector<MethodParameter> &parameters,
                       MethodReport &report) override;
    QString GetMethodName(int method, const QString &name) override;
    QString GetInvocationStringForMethod(int method, const QString &name,
                                         const QVector<MethodParameter> &parameters) override;
    void RemoveGeography(int id) override;

private:
    std::unique_ptr<MethodRegister> mMethods;
    std::unique_ptr<Workspace> mWorkspace;
    std::unique_ptr<MainWindow> mWindow;
};

} // namespace meridor
