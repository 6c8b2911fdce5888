// SPDX-License-Identifier: MIT
#include "exchange/dbfExport.h"
#include <QLocale>
#include <cmath>
#include <limits>
#include <shapefil.h>
#include "datainterface/ControllerBase.h"
#include "frame/frameState.h"

namespace datainterface {

struct DbfExport::Field {
    QByteArray name;
    DBFFieldType type = FTInteger;
    int width = 11;
    int decimals = 0;
};

struct DbfExport::Table {
    explicit Table(DBFHandle opened) : handle(opened) {}
    ~Table() { DBFClose(handle); }
    Table(const Table &) = delete;
    Table &operator=(const Table &) = delete;
    const DBFHandle handle;
};

namespace {

constexpr int kNameBytes = 10;
constexpr int kIntegerWidth = 11;
constexpr int kLongestNumber = 25;   ///< Wider decimals become texts.
constexpr int kNumberTextWidth = 20; ///< of such a text
constexpr int kLongestText = 254;
constexpr int kMostDecimals = 15;

// At most `bytes` bytes of UTF-8, no character cut in two.
QByteArray shortened(const QByteArray &utf8, int bytes)
{
    int end = std::min(utf8.size(), bytes);
    while (end > 0 && end < utf8.size() && (static_cast<unsigned char>(utf8[end]) & 0xC0U) == 0x80U)
        --end;
    return utf8.left(end);
}

// Digits behind the point of the shortest text of a number.
int decimalsOf(double value)
{
    const QString text = QString::number(std::abs(value), 'f', QLocale::FloatingPointShortest);
    const int point = text.indexOf(QLatin1Char('.'));
    return point < 0 ? 0 : std::min(text.size() - point - 1, kMostDecimals);
}

// Characters before the point, with one for the sign and one to spare.
int integerWidthOf(double value)
{
    const double magnitude = std::abs(value);
    return magnitude < 1.0 ? 2 : static_cast<int>(std::log10(magnitude)) + 3;
}

int longestText(const ExportTable &table, int column)
{
    int longest = 0;
    for (const TimeStamp &stamp : table.times()) {
        const VORN_ConstDataContainer values(table.columns()[column].id, stamp.timeInInterval(),
                                             table.request().realization, false);
        for (int object = 0; object < table.objectCount(); ++object)
            if (!values.isMissing(object))
                longest = std::max(longest, values.strvalue(object).toUtf8().size());
    }
    return longest;
}

// A number as a text that fits, with as many digits as there is room for.
QByteArray numberText(double value, int width)
{
    QByteArray text = QByteArray::number(value, 'g', QLocale::FloatingPointShortest);
    for (int digits = 17; text.size() > width && digits > 0; --digits)
        text = QByteArray::number(value, 'g', digits);
    return text;
}

} // namespace

DbfExport::DbfExport() = default;
DbfExport::~DbfExport() = default;

bool DbfExport::open(const ExportTable &table)
{
    mMissing = table.request().missing;
    const DBFHandle handle =
        DBFCreateEx(QFile::encodeName(table.request().fileName).constData(), "UTF-8");
    if (!handle)
        return false;
    mTable = std::make_unique<Table>(handle);
    return addFields(table);
}

// The name that a column has in the table: blanks become underscores, ten bytes at most, distinct
// by a number.
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
        controller()->AddToLog(
            QStringLiteral("Note: the column \"%1\" is named \"%2\" in the DBF file.")
                .arg(columnName, QString::fromUtf8(name)),
            false);
    return name;
}

bool DbfExport::addField(const Field &field)
{
    mFields.append(field);
    return DBFAddField(mTable->handle, field.name.constData(), field.type, field.width,
                       field.decimals)
           >= 0;
}

bool DbfExport::addFields(const ExportTable &table)
{
    bool isAdded = addField({fieldName(QStringLiteral("ObjectId")), FTInteger, kIntegerWidth, 0});
    // A plain number can be longer than a date or a time.
    int timeWidth = kIntegerWidth;
    for (const TimeStamp &stamp : table.times())
        for (qint64 number : table.timesOf(stamp))
            timeWidth = std::max(timeWidth, QByteArray::number(number).size());
    for (const QString &name : table.timeColumns())
        isAdded = addField({fieldName(name), FTInteger, timeWidth, 0}) && isAdded;
    for (int i = 0; i < table.columns().size(); ++i) {
        const ExportColumn &column = table.columns()[i];
        Field field{fieldName(column.name), FTString, column.width, 0};
        const int missingLength = mMissing.toUtf8().size();
        const double missingNumber = mMissing.toDouble();
        if (column.type == StringType) {
            field.width = std::max({column.width, longestText(table, i), missingLength});
        } else if (column.type == IntegerType) {
            field.type = FTInteger;
            field.width = std::max(column.width, integerWidthOf(missingNumber));
        } else {
            field.type = FTDouble;
            field.decimals =
                std::max(std::min(column.decimals, kMostDecimals), decimalsOf(missingNumber));
            const int integerWidth =
                std::max(column.width - (column.decimals > 0 ? column.decimals + 1 : 0),
                         integerWidthOf(missingNumber));
            field.width = integerWidth + (field.decimals > 0 ? field.decimals + 1 : 0);
            if (field.width > kLongestNumber)
                field = {field.name, FTString, std::max(kNumberTextWidth, missingLength), 0};
        }
        field.width = std::min(std::max(field.width, 1), kLongestText);
        isAdded = addField(field) && isAdded;
    }
    return isAdded;
}

void DbfExport::writeRow(const ExportRow &row)
{
    int index = 0;
    bool isWritten = DBFWriteIntegerAttribute(mTable->handle, mRecord, index++, row.object) != 0;
    for (qint64 time : row.times)
        isWritten =
            DBFWriteDoubleAttribute(mTable->handle, mRecord, index++, static_cast<double>(time))
            && isWritten;
    for (const VORN_ConstDataContainer &values : row.values)
        isWritten = writeCell(mRecord, index++, values, row.object) && isWritten;
    mIsWritten = mIsWritten && isWritten;
    ++mRecord;
}

// A missing number is the missing text read as one.
bool DbfExport::writeCell(int record, int index, const VORN_ConstDataContainer &values, int object)
{
    const Field &field = mFields[index];
    const bool isText = values.type() == VORN_DataContainer::StringData;
    const bool isMissing =
        values.isMissing(object) || (!isText && !std::isfinite(values.value(object)));
    if (field.type == FTString) {
        const QByteArray whole = isMissing ? mMissing.toUtf8()
                                 : isText  ? values.strvalue(object).toUtf8()
                                           : numberText(values.value(object), field.width);
        const QByteArray text = shortened(whole, field.width);
        return DBFWriteStringAttribute(mTable->handle, record, index, text.constData())
               && text == whole;
    }
    if (field.type == FTInteger) {
        const double number = isMissing ? std::trunc(mMissing.toDouble()) : values.value(object);
        return DBFWriteDoubleAttribute(mTable->handle, record, index, number) != 0;
    }
    return DBFWriteDoubleAttribute(mTable->handle, record, index,
                                   isMissing ? mMissing.toDouble() : values.value(object))
           != 0;
}

bool DbfExport::close(bool)
{
    mTable.reset();
    return mIsWritten;
}

} // namespace datainterface
