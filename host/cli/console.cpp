// SPDX-License-Identifier: MIT
#include "cli/console.h"
#include <QJsonDocument>
#include <QLocale>
#include <cmath>
#include <cstdio>

namespace meridor {
namespace {

void writeLine(FILE *stream, const QString &line)
{
    const QByteArray bytes = line.toUtf8() + '\n';
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

void Console::print(const QString &line) const
{
    writeLine(stdout, line);
}

void Console::print(const QJsonObject &object) const
{
    print(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented)).trimmed());
}

void Console::note(const QString &line) const
{
    if (!quiet)
        writeLine(stderr, QStringLiteral("note: ") + line);
}

void Console::error(const QString &line) const
{
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

QString exactNumber(double value)
{
    return QString::number(value, 'g', QLocale::FloatingPointShortest);
}

QString shortNumber(double value, int decimals)
{
    if (!std::isfinite(value))
        return QStringLiteral("-");
    if (value != 0 && (std::abs(value) < std::pow(10.0, -decimals) || std::abs(value) >= 1e15))
        return QString::number(value, 'g', 6);
    QString text = QString::number(value, 'f', decimals);
    while (text.contains(QLatin1Char('.'))
           && (text.endsWith(QLatin1Char('0')) || text.endsWith(QLatin1Char('.')))) {
        const bool point = text.endsWith(QLatin1Char('.'));
        text.chop(1);
        if (point)
            break;
    }
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QJsonValue jsonNumber(double value)
{
    return std::isfinite(value) ? QJsonValue(value) : QJsonValue(QJsonValue::Null);
}

QString someOf(const QStringList &names, int most)
{
    if (names.size() <= most)
        return names.join(QStringLiteral(", "));
    return QStringList(names.mid(0, most)).join(QStringLiteral(", "))
           + QStringLiteral(" and %1 more").arg(names.size() - most);
}

} // namespace meridor
