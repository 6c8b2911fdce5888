// SPDX-License-Identifier: MIT
/// Runs the built program in a directory of its own and keeps what it said.
#pragma once
#include <QByteArray>
#include <QJsonObject>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <functional>
#include "support/checks.h"
#include "support/squares.h"

class QProcess;

struct Outcome {
    int code = -1; ///< exit code; -1 when it crashed or never ended
    QString out;
    QString err;
    /// The result as JSON; an empty object when it does not parse.
    QJsonObject json() const;
    /// What stands in the result at a place such as "times/0/mean".
    QJsonValue at(const QString &path) const;
};

class Workplace {
public:
    Workplace();
    /// With a name under the temporary directory, such as one with blanks.
    explicit Workplace(const QString &folder);
    QString path(const QString &name) const { return mRoot + QLatin1Char('/') + name; }
    /// Writes a file and gives its name, relative to the workplace.
    QString file(const QString &name, const QByteArray &content) const;
    QByteArray bytes(const QString &name) const;
    QStringList files() const;
    Outcome run(const QStringList &arguments) const;
    Outcome run(const QString &program, const QStringList &arguments) const;
    /// Presses Ctrl-C as soon as `when` holds, or after a while.
    Outcome interrupt(const QStringList &arguments, const std::function<bool()> &when) const;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();

private:
    Outcome watch(const QString &program, const QStringList &arguments,
                  const std::function<void(QProcess &)> &meanwhile) const;

    QTemporaryDir mDirectory;
    QString mRoot;
};
