// SPDX-License-Identifier: MIT
#include "core/formats/textTable.h"
#include <QIODevice>
#include <QLocale>
#include <cmath>
#include "core/project/outputFile.h"

namespace meridor {
namespace {

constexpr int kPieceBytes = 1 << 16; ///< text that is written in one call

QByteArray numberText(double value)
{
    if (std::isnan(value))
        return QByteArrayLiteral("NaN");
    if (std::isinf(value))
        return value > 0 ? QByteArrayLiteral("Inf") : QByteArrayLiteral("-Inf");
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

} // namespace

TableSink::~TableSink() = default;

CsvSink::CsvSink(QIODevice &device, const QString &target, const QString &missing)
    : mDevice(device), mTarget(target), mMissing(missing.toUtf8())
{
    mPending.reserve(2 * kPieceBytes);
}

void CsvSink::begin(const QVector<TableColumn> &columns)
{
    mColumns = columns;
    mPending += head(columns);
}

QByteArray CsvSink::head(const QVector<TableColumn> &columns) const
{
    QByteArray line;
    for (const TableColumn &column : columns)
        line += (line.isEmpty() ? "" : ",") + quoted(column.name);
    return line + '\n';
}

void CsvSink::row(const std::vector<TableCell> &cells, const ShapeParts *)
{
    for (size_t i = 0; i < cells.size(); ++i) {
        if (i > 0)
            mPending += mSeparator;
        mPending +=
            isMissing(cells[i]) ? mMissing : field(cells[i], mColumns[static_cast<int>(i)].kind);
    }
    mPending += '\n';
    if (mPending.size() >= kPieceBytes)
        flush();
}

void CsvSink::end()
{
    flush();
}

QByteArray CsvSink::field(const TableCell &cell, CellKind) const
{
    if (const auto *number = std::get_if<qint64>(&cell))
        return QByteArray::number(*number);
    if (const auto *number = std::get_if<double>(&cell))
        return numberText(*number);
    return quoted(std::get<QString>(cell));
}

QByteArray CsvSink::quoted(const QString &text) const
{
    if (!needsQuotes(text))
        return text.toUtf8();
    QString escaped = text;
    escaped.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return '"' + escaped.toUtf8() + '"';
}

bool CsvSink::needsQuotes(const QString &text) const
{
    if (text.isEmpty() || text.front().isSpace() || text.back().isSpace())
        return true;
    for (const QChar c : text)
        if (c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n')
            || c == QLatin1Char('\r'))
            return true;
    return false;
}

void CsvSink::flush()
{
    writeWhole(mDevice, mPending, mTarget);
    mPending.resize(0);
}

GeoEasSink::GeoEasSink(QIODevice &device, const QString &target, const QString &missing,
                       const QString &title)
    : CsvSink(device, target, missing), mTitle(title)
{
    mSeparator = ' ';
}

QByteArray GeoEasSink::head(const QVector<TableColumn> &columns) const
{
    QByteArray lines =
        mTitle.simplified().toUtf8() + '\n' + QByteArray::number(columns.size()) + '\n';
    for (const TableColumn &column : columns)
        lines += column.name.simplified().toUtf8() + '\n';
    return lines;
}

QByteArray GeoEasSink::field(const TableCell &cell, CellKind kind) const
{
    const bool isTime =
        kind == CellKind::Date || kind == CellKind::Moment || kind == CellKind::Clock;
    if (!isTime || !std::holds_alternative<QString>(cell))
        return CsvSink::field(cell, kind);
    QByteArray digits;
    for (const QChar c : std::get<QString>(cell))
        if (c.isDigit())
            digits += c.toLatin1();
    return digits;
}

bool GeoEasSink::needsQuotes(const QString &text) const
{
    return CsvSink::needsQuotes(text) || text.contains(QLatin1Char(' '))
           || text.contains(QLatin1Char('\t'));
}

} // namespace meridor
