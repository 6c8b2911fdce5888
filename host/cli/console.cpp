// SPDX-License-Identifier: MIT
#include "cli/console.h"
#include <QJsonDocument>
#include <cerrno>
#include <poll.h>
#include <unistd.h>
#include "cli/interrupt.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

constexpr int kPiece = 65536; ///< characters of a table that are written at a time

/// Writes a line to a descriptor. Returns 0 or the error; EINTR only if the user interrupted.
int writeLine(int descriptor, const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    for (int done = 0; done < bytes.size();) {
        const ssize_t step =
            ::write(descriptor, bytes.constData() + done, static_cast<size_t>(bytes.size() - done));
        if (step >= 0) {
            done += static_cast<int>(step);
        } else if (errno == EAGAIN) { // another holder of the terminal made it non-blocking
            struct pollfd ready = {descriptor, POLLOUT, 0};
            ::poll(&ready, 1, -1);
        } else if (errno != EINTR) {
            return errno;
        }
        if (done < bytes.size() && interrupted())
            return EINTR;
    }
    return 0;
}

} // namespace

void Console::print(const QString &line) const
{
    if (clearLine)
        clearLine();
    const int error = writeLine(STDOUT_FILENO, line);
    if (error == EINTR)
        fail(QStringLiteral("standard output: interrupted before the whole result was written"));
    if (error != 0)
        fail(QStringLiteral("standard output: %1").arg(systemError(error)));
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
    writeLine(STDERR_FILENO, QStringLiteral("note: ") + line);
}

void Console::error(const QString &line) const
{
    if (clearLine)
        clearLine();
    writeLine(STDERR_FILENO, QStringLiteral("meridor: ") + line);
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
    QString table;
    const auto add = [&](const QStringList &cells) {
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
        table += table.isEmpty() ? text : QLatin1Char('\n') + text;
    };
    QStringList headings;
    for (const auto &column : mColumns)
        headings.append(column.first);
    add(headings);
    for (const QStringList &row : mRows) {
        if (table.size() > kPiece) {
            console.print(table);
            table.clear();
        }
        add(row);
    }
    console.print(table);
}

} // namespace meridor
