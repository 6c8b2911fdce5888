// SPDX-License-Identifier: MIT
#include "cli/console.h"
#include <QJsonDocument>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include "core/project/failure.h"

namespace meridor {
namespace {

bool writeLine(FILE *stream, const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    const auto size = static_cast<size_t>(bytes.size());
    return std::fwrite(bytes.constData(), 1, size, stream) == size && std::fflush(stream) == 0;
}

} // namespace

void Console::print(const QString &line) const
{
    if (clearLine)
        clearLine();
    if (!writeLine(stdout, line))
        fail(QStringLiteral("standard output: %1")
                 .arg(QString::fromLocal8Bit(std::strerror(errno))));
}

void Console::print(const QJsonObject &object) const
{
    print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented)).trimmed());
}

void Console::note(const QString &line) const
{
    if (quiet)
        return;
    if (clearLine)
        clearLine();
    writeLine(stderr, QStringLiteral("note: ") + line);
}

void Console::error(const QString &line) const
{
    if (clearLine)
        clearLine();
    writeLine(stderr, QStringLiteral("meridor: ") + line);
}

void TextTable::print(const Console &console) const
{
    QVector<int> widths;
    for (int c = 0; c < mColumns.size(); ++c) {
        int width = mColumns[c].first.size();
        for (const QStringList &row : mRows)
            width = qMax(width, row.value(c).size());
        widths.append(width);
    }
    const auto line = [&](const QStringList &cells) {
        QString text;
        for (int c = 0; c < mColumns.size(); ++c) {
            const QString cell = cells.value(c);
            if (c > 0)
                text += QStringLiteral("  ");
            text += mColumns[c].second == Right ? cell.rightJustified(widths[c])
                                                : cell.leftJustified(widths[c]);
        }
        while (text.endsWith(QLatin1Char(' ')))
            text.chop(1);
        console.print(text);
    };
    QStringList headings;
    for (const auto &column : mColumns)
        headings.append(column.first);
    line(headings);
    for (const QStringList &row : mRows)
        line(row);
}

} // namespace meridor
