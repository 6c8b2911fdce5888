// SPDX-License-Identifier: MIT
#include "cli/program.h"
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QProcess>
#include <csignal>

namespace {

constexpr int kPatience = 120000; // milliseconds; an end to a hang, not a measure

} // namespace

QJsonObject Outcome::json() const
{
    return QJsonDocument::fromJson(out.toUtf8()).object();
}

QJsonValue Outcome::at(const QString &path) const
{
    QJsonValue value = json();
    for (const QString &part : path.split('/')) {
        bool isIndex = false;
        const int index = part.toInt(&isIndex);
        value = isIndex ? value[index] : value[part];
    }
    return value;
}

Workplace::Workplace() : mRoot(mDirectory.path())
{
}

Workplace::Workplace(const QString &folder) : mRoot(mDirectory.path() + QLatin1Char('/') + folder)
{
    QDir().mkpath(mRoot);
}

QString Workplace::file(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(name));
    return name;
}

QByteArray Workplace::bytes(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Workplace::files() const
{
    return QDir(mRoot).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

Outcome Workplace::run(const QStringList &arguments) const
{
    return run(QStringLiteral(MERIDOR_PROGRAM), arguments);
}

Outcome Workplace::run(const QString &program, const QStringList &arguments) const
{
    return watch(program, arguments, [](QProcess &) {});
}

Outcome Workplace::interrupt(const QStringList &arguments, const std::function<bool()> &when) const
{
    return watch(QStringLiteral(MERIDOR_PROGRAM), arguments, [&when](QProcess &process) {
        for (int i = 0; i < kPatience && process.state() != QProcess::NotRunning && !when(); ++i)
            process.waitForFinished(1);
        if (process.state() == QProcess::Running) // else the id is 0, which stands for ourselves
            ::kill(static_cast<pid_t>(process.processId()), SIGINT);
    });
}

Outcome Workplace::watch(const QString &program, const QStringList &arguments,
                         const std::function<void(QProcess &)> &meanwhile) const
{
    QProcess process;
    process.setWorkingDirectory(mRoot);
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    Outcome outcome;
    if (process.waitForStarted(kPatience))
        meanwhile(process);
    if (process.state() != QProcess::NotRunning && !process.waitForFinished(kPatience)) {
        process.kill();
        process.waitForFinished();
    } else if (process.exitStatus() == QProcess::NormalExit) {
        outcome.code = process.exitCode();
    }
    outcome.out = QString::fromUtf8(process.readAllStandardOutput());
    outcome.err = QString::fromUtf8(process.readAllStandardError());
    return outcome;
}
