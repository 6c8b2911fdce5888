// SPDX-License-Identifier: MIT
#include "desk/project/actionLog.h"
#include <QDir>
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

namespace {

const QRegularExpression &lineBreaks()
{
    static const QRegularExpression breaks(QStringLiteral("[\\r\\n\\x{2028}\\x{2029}]+"));
    return breaks;
}

QString shellLine(const QStringList &words)
{
    QStringList quoted;
    for (const QString &word : words)
        quoted.append(shellWord(word));
    return quoted.join(QLatin1Char(' '));
}

} // namespace

QString commandText(const QStringList &arguments)
{
    return shellLine(QStringList{QStringLiteral("meridor")} + arguments);
}

QStringList optionWords(const QString &option, const QString &value)
{
    if (value.startsWith(QLatin1Char('-')))
        return {option + QLatin1Char('=') + value};
    return {option, value};
}

QString ActionLog::Line::text() const
{
    return words.isEmpty() ? QLatin1String("# ") + comment : shellLine(words);
}

void ActionLog::did(const QStringList &arguments)
{
    append({QStringList{QStringLiteral("meridor")} + arguments, QString()});
}

void ActionLog::remark(const QString &text)
{
    const QStringList parts = text.split(lineBreaks());
    for (const QString &part : parts)
        append({{}, part});
}

void ActionLog::append(const Line &line)
{
    mLines.append(line);
    Q_EMIT added(line.text());
}

QStringList ActionLog::lines() const
{
    QStringList texts;
    for (const Line &line : mLines)
        texts.append(line.text());
    return texts;
}

QString ActionLog::script() const
{
    const QStringList head{QStringLiteral("#!/bin/sh"), QStringLiteral("set -e"),
                           shellLine({QStringLiteral("cd"), QDir::currentPath()})};
    return (head + lines()).join(QLatin1Char('\n')) + QLatin1Char('\n');
}

void ActionLog::changed(bool isNoted)
{
    if (mFirstChange < 0)
        mFirstChange = qMax(0, mLines.size() - (isNoted ? 1 : 0));
}

void ActionLog::saved(const QString &before, const QString &now, const QString &untitled)
{
    const int first = mFirstChange < 0 ? mLines.size() : mFirstChange;
    mFirstChange = -1;
    if (before == now)
        return;
    const QString name = before.isEmpty() ? untitled : before;
    for (int i = first; i < mLines.size(); ++i)
        for (QString &word : mLines[i].words)
            if (word == name)
                word = now;
    if (!before.isEmpty())
        mLines.insert(first, {{QStringLiteral("cp"), before, now}, QString()});
    Q_EMIT rewritten();
}

void ActionLog::discarded()
{
    if (mFirstChange < 0)
        return;
    for (int i = mFirstChange; i < mLines.size(); ++i)
        if (!mLines[i].words.isEmpty())
            // A name may have several lines, and a shell would run all but the first.
            mLines[i] = {{},
                         tr("not saved: %1")
                             .arg(mLines[i].text().replace(lineBreaks(), QStringLiteral(" ")))};
    mFirstChange = -1;
    Q_EMIT rewritten();
}

} // namespace meridor
