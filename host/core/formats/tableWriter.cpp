// SPDX-License-Identifier: MIT
#include "core/formats/tableWriter.h"
#include <QHash>
#include <algorithm>
#include "core/formats/values.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

/// Memory for the cells that are not yet in the spool, of all columns.
constexpr int kBuffers = 4 << 20;

std::vector<QByteArray> asUtf8(const QStringList &texts)
{
    std::vector<QByteArray> result;
    for (const QString &text : texts)
        result.push_back(text.toUtf8());
    return result;
}

bool isOneOf(const std::vector<QByteArray> &texts, std::string_view cell)
{
    const std::string_view text = trimmed(cell);
    return std::any_of(texts.begin(), texts.end(), [text](const QByteArray &one) {
        return text == std::string_view(one.constData(), static_cast<size_t>(one.size()));
    });
}

} // namespace

TableWriter::TableWriter(FeatureTable &table, const ReadOptions &options, const QString &encoding)
    : mTable(table),
      mOptions(options),
      mDecoder(encoding),
      mMissing(asUtf8(options.missing)),
      mMissingKeys(asUtf8(options.missingKeys))
{
}

Column &TableWriter::addColumn(std::string_view name)
{
    const std::string_view utf8 = trimmed(mDecoder.decode(name));
    Column column;
    column.name = QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    if (column.name.isEmpty())
        column.name = QStringLiteral("field_%1").arg(mTable.columns.size() + 1);
    column.decimal = mOptions.decimal;
    mTable.columns.append(column);
    return mTable.columns.last();
}

void TableWriter::startRows()
{
    QHash<QString, int> numbers;
    for (int i = 0; i < mTable.columns.size(); ++i) {
        const QString &name = mTable.columns[i].name;
        if (numbers.contains(name))
            fail(QStringLiteral("%1: fields %2 and %3 have the same name, %4")
                     .arg(mTable.file, QString::number(numbers[name] + 1), QString::number(i + 1),
                          name));
        numbers.insert(name, i);
    }
    mX = requireCoordinate(mOptions.xColumn);
    mY = requireCoordinate(mOptions.yColumn);
    // Without a column of the name the keys of a table are its first column.
    mKey = numbers.value(mOptions.key, mOptions.shapes ? -1 : 0);
    const QSet<int> chosen = mOptions.choose ? mOptions.choose(mTable) : QSet<int>();
    mKept.assign(static_cast<size_t>(mTable.columns.size()), true);
    for (size_t i = 0; mOptions.choose && i < mKept.size(); ++i)
        mKept[i] = chosen.contains(static_cast<int>(i));
    const auto kept = static_cast<int>(std::count(mKept.begin(), mKept.end(), true));
    const int chunk = qBound(1 << 10, kBuffers / qMax(1, kept), 1 << 16);
    for (Column &column : mTable.columns)
        column.cells = std::make_shared<Cells>(mTable.spool, chunk);
    if (mOptions.shapes)
        mTable.shapes = std::make_shared<Shapes>(mTable.spool);
    if (mX >= 0)
        mTable.shapeKind = ShapeKind::Points;
}

int TableWriter::requireCoordinate(const QString &name) const
{
    if (name.isEmpty())
        return -1;
    const int index = mTable.indexOf(name);
    if (index < 0)
        fail(QStringLiteral("%1: no field %2; there are: %3")
                 .arg(mTable.file, name, someOf(mTable.columnNames())));
    return index;
}

void TableWriter::addCell(int column, std::string_view text)
{
    try {
        const std::string_view utf8 = mDecoder.decode(text);
        const bool missing = isOneOf(column == mKey ? mMissingKeys : mMissing, utf8);
        mTable.columns[column].cells->append(missing ? std::string_view() : utf8);
    } catch (const WrongEncoding &) {
        // UTF-8 that nobody asked for is only a first try.
        if (mOptions.encoding.isEmpty() && mDecoder.isUtf8())
            throw;
        fail(QStringLiteral("%1: not a text in %2")
                 .arg(place(mTable, mTable.columns[column], mTable.rows), mDecoder.name()),
             "encoding");
    }
}

bool TableWriter::addPoint()
{
    if (mX < 0)
        return false;
    mTable.shapes->append(ShapeParts{{QPointF(coordinate(mX), coordinate(mY))}});
    return true;
}

double TableWriter::coordinate(int column) const
{
    const Column &cells = mTable.columns[column];
    const auto value = toDecimal(cells.view(mTable.rows), cells.decimal);
    if (!value)
        fail(QStringLiteral("%1: \"%2\" is no coordinate")
                 .arg(place(mTable, cells, mTable.rows), cells.text(mTable.rows)),
             looksLikeDecimalComma(cells.view(mTable.rows)) ? "decimal" : "");
    return *value;
}

void TableWriter::endRow(int percent)
{
    ++mTable.rows;
    if (mTable.rows % 256 != 0)
        return;
    stopIfCancelled();
    mOptions.progress(percent);
}

} // namespace meridor
