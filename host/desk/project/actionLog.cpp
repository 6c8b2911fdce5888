// SPDX-License-Identifier: MIT
#include "desk/project/actionLog.h"
#include <QRegularExpression>

namespace meridor {

QString shellWord(const QString &text)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z0-9_./:=,@%+-]+$"));
    if (plain.match(text).hasMatch())
        return text;
    QString quoted = text;
    quoted.replace(QLatin1Char('\''), QLatin1String("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

QString commandText(const QStringList &arguments)
{
    QString line = QStringLiteral("meridor");
    for (const QString &argument : arguments)
        line += QLatin1Char(' ') + shellWord(argument);
    return line;
}

void ActionLog::did(const QStringList &arguments)
{
    append(commandText(arguments));
}

void ActionLog::remark(const QString &text)
{
    const QStringList parts = text.split(QLatin1Char('\n'));
    for (const QString &part : parts)
        append(QLatin1String("# ") + part);
}

void ActionLog::append(const QString &line)
{
    mLines.append(line);
    Q_EMIT added(line);
}

} // namespace meridor
