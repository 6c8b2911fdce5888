// SPDX-License-Identifier: MIT
#include "exchange/dbfExport.h"
#include <QLocale>
#include <cmath>
#include <limits>
#include "exchange/dbfFile.h"
#include "frame/notes.h"

namespace datainterface {

struct DbfExport::Field {
    QByteArray name;
    DBFFieldType type = FTInteger;
    int width = 11;
    int decimals = 0;
};

/// The widths of the values of a column.
struct DbfExport::Extent {
    int whole = 0;    ///< characters before the point, with the sign
    int decimals = 0; ///< digits after the point
    int text = 0;     ///< bytes of a text, or of a number written as a text
};

namespace {

constexpr int kNameBytes = 10;
constexpr int kIntegerWidth = 11;
constexpr int kLongestNumber = 25;   ///< Wider decimals become texts.
constexpr int kNumberTextWidth = 20; ///< Width of such a text field, unless a value is longer.
constexpr int kLongestField = 254;

// The first characters of a UTF-8 text that fit into `bytes` bytes.
QByteArray shortened(const QByteArray &utf8, int bytes)
{
    int end = std::min(utf8.size(), bytes);
    while (end > 0 && end < utf8.size() && (static_cast<unsigned char>(utf8[end]) & 0xC0U) == 0x80U)
        --end;
    return utf8.left(end);
}

// The shortest text without an exponent that reads back as the number.
QByteArray plainText(double value)
{
    return QByteArray::number(value, 'f', QLocale::FloatingPointShortest);
}

// The shortest text that reads back as the number.
QByteArray shortText(double value)
{
    return QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
}

int decimalsOf(const QByteArray &plain)
{
    const int point = plain.indexOf('.');
    return point < 0 ? 0 : plain.size() - point - 1;
}

// The number of characters before the point, with one for the sign and one in reserve.
int integerWidthOf(double value)
{
    const double magnitude = std::abs(value);
    return magnitude < 1.0 ? 2 : static_cast<int>(std::log10(magnitude)) + 3;
}

} // namespace

DbfExport::DbfExport() = default;
DbfExport::~DbfExport() = default;

bool DbfExport::open(const ExportTable &table)
{
    mMissing = table.request().missing.toUtf8();
    bool isNumber = false;
    mMissingNumber = table.request().missing.toDouble(&isNumber);
    mHasMissingNumber = isNumber && std::isfinite(mMissingNumber);
    if (!mHasMissingNumber)
        mMissingNumber = 0.0;
    mFile = std::make_unique<DbfFile>(table.request().fileName);
    return mFile->create() != nullptr;
}

bool DbfExport::writeHead(const ExportTable &table)
{
    const qint64 records = qint64(table.objectCount()) * table.times().size();
    const bool isDone = records <= std::numeric_limits<int>::max() && addFields(table);
    if (!isDone)
        mFile->remove();
    return isDone;
}

// The name of a column in the table: blanks become underscores, and the name is cut to ten bytes
// and made unique by a number.
QByteArray DbfExport::fieldName(const QString &columnName)
{
    const QByteArray whole =
        QString(columnName).replace(QLatin1Char(' '), QLatin1Char('_')).toUtf8();
    QByteArray name = shortened(whole, kNameBytes);
    for (int n = 2; mUsedNames.contains(name.toUpper()); ++n) {
        const QByteArray number = QByteArray::number(n);
        name = shortened(whole, kNameBytes - number.size()) + number;
    }
    mUsedNames.insert(name.toUpper());
    if (name != whole)
        noteToLog(QStringLiteral("Note: the column \"%1\" is named \"%2\" in the DBF file.")
                      .arg(columnName, QString::fromUtf8(name)));
    return name;
}

bool DbfExport::addField(const Field &field)
{
    mFields.append(field);
    return DBFAddField(mFile->handle(), field.name.constData(), field.type, field.width,
                       field.decimals)
           >= 0;
}

bool DbfExport::addFields(const ExportTable &table)
{
    QVector<Extent> extents(table.columns().size());
    if (!measure(table, extents))
        return false;
    bool isAdded = addField({fieldName(QStringLiteral("ObjectId")), FTInteger, kIntegerWidth, 0});
    // A plain number can have more digits than a date or a time.
    int timeWidth = kIntegerWidth;
    for (const TimeStamp &stamp : table.times())
        for (qint64 number : table.timesOf(stamp))
            timeWidth = std::max(timeWidth, QByteArray::number(number).size());
    for (const QString &name : table.timeColumns())
        isAdded = addField({fieldName(name), FTInteger, timeWidth, 0}) && isAdded;
    for (int i = 0; i < table.columns().size(); ++i) {
        const ExportColumn &column = table.columns()[i];
        isAdded = addField(fieldOf(column.type, fieldName(column.name), extents[i])) && isAdded;
    }
    return isAdded;
}

bool DbfExport::measure(const ExportTable &table, QVector<Extent> &extents) const
{
    return table.visitTimes([&](int, const ExportTable::Values &values) {
        for (int column = 0; column < extents.size(); ++column) {
            const VORN_ConstDataContainer &cells = values[static_cast<size_t>(column)];
            for (int object = 0; object < table.objectCount(); ++object) {
                if (!isMissingCell(cells, object))
                    widen(extents[column], cells, object);
            }
        }
        return true;
    });
}

void DbfExport::widen(Extent &extent, const VORN_ConstDataContainer &cells, int object)
{
    switch (cells.type()) {
    case VORN_DataContainer::StringData:
        extent.text = std::max(extent.text, cells.strvalue(object).toUtf8().size());
        return;
    case VORN_DataContainer::Int32Data:
        extent.whole = std::max(extent.whole, QByteArray::number(cells.intvalue(object)).size());
        return;
    default:
        break;
    }
    const double value = cells.value(object);
    const QByteArray plain = plainText(value);
    const int decimals = decimalsOf(plain);
    extent.whole = std::max(extent.whole, plain.size() - decimals - (decimals > 0));
    extent.decimals = std::max(extent.decimals, decimals);
    extent.text = std::max(extent.text, shortText(value).size());
}

// Numbers that are too long for a numeric field are written as texts.
DbfExport::Field DbfExport::fieldOf(DataType type, const QByteArray &name,
                                    const Extent &extent) const
{
    Field field{name, FTString, std::max(extent.text, mMissing.size()), 0};
    const int whole = std::max(extent.whole, integerWidthOf(mMissingNumber));
    if (type == IntegerType && whole <= kLongestField) {
        field.type = FTInteger;
        field.width = whole;
    } else if (type == DecimalType) {
        const int decimals = std::max(extent.decimals, decimalsOf(plainText(mMissingNumber)));
        const int width = whole + (decimals > 0 ? decimals + 1 : 0);
        if (width <= kLongestNumber)
            field = {name, FTDouble, width, decimals};
        else
            field.width = std::max(field.width, kNumberTextWidth);
    } else if (type == IntegerType) {
        field.width = std::max(field.width, kNumberTextWidth);
    }
    field.width = std::min(std::max(field.width, 1), kLongestField);
    return field;
}

bool DbfExport::writeRow(const ExportRow &row)
{
    int index = 0;
    mIsWhole = writeText(index++, QByteArray::number(row.object)) && mIsWhole;
    for (qint64 time : row.times)
        mIsWhole = writeText(index++, QByteArray::number(time)) && mIsWhole;
    for (const VORN_ConstDataContainer &values : row.values)
        mIsWhole = writeCell(index++, values, row.object) && mIsWhole;
    ++mRecord;
    return mFile->isWritten();
}

// Numbers are formatted here, since shapelib uses the locale of the process.
bool DbfExport::writeCell(int index, const VORN_ConstDataContainer &values, int object)
{
    const Field &field = mFields[index];
    const bool isText = values.type() == VORN_DataContainer::StringData;
    const bool isMissing = isMissingCell(values, object);
    if (field.type == FTString) {
        const QByteArray whole = isMissing ? mMissing
                                 : isText  ? values.strvalue(object).toUtf8()
                                           : shortText(values.value(object));
        const QByteArray text = shortened(whole, field.width);
        return writeText(index, text) && text.size() == whole.size();
    }
    if (isMissing && !mHasMissingNumber)
        return DBFWriteNULLAttribute(mFile->handle(), mRecord, index) != 0;
    if (field.type == FTInteger)
        return writeText(index, isMissing ? QByteArray::number(std::trunc(mMissingNumber), 'f', 0)
                                          : QByteArray::number(values.intvalue(object)));
    return writeText(index, QByteArray::number(isMissing ? mMissingNumber : values.value(object),
                                               'f', field.decimals));
}

// Texts are left-aligned and numbers right-aligned. A NUL would end the text.
bool DbfExport::writeText(int index, const QByteArray &text)
{
    const Field &field = mFields[index];
    QByteArray cell = field.type == FTString ? text : text.rightJustified(field.width, ' ');
    return DBFWriteAttributeDirectly(mFile->handle(), mRecord, index, cell.data()) != 0
           && cell.size() <= field.width && !text.contains('\0');
}

bool DbfExport::close(bool)
{
    return mFile->close() && mIsWhole;
}

} // namespace datainterface
