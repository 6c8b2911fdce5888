// SPDX-License-Identifier: MIT
#include "exchange/textExports.h"
#include <QFileInfo>
#include <QLocale>

namespace datainterface {
namespace {

constexpr int kPieceBytes = 1 << 16; ///< text that is written in one call

// Replaces line breaks, so that the text stays one line.
QString oneLine(QString text)
{
    return text.replace(QLatin1Char('\n'), QLatin1Char(' '))
        .replace(QLatin1Char('\r'), QLatin1Char(' '));
}

} // namespace

bool TextExport::open(const ExportTable &table)
{
    mMissing = quoted(table.request().missing).toUtf8();
    mFile.setFileName(table.request().fileName);
    mPending.reserve(2 * kPieceBytes);
    return mFile.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
}

bool TextExport::writeHead(const ExportTable &table)
{
    mPending += head(table).toUtf8();
    return flush();
}

bool TextExport::writeRow(const ExportRow &row)
{
    mPending += QByteArray::number(row.object);
    for (qint64 time : row.times) {
        mPending += mSeparator;
        mPending += QByteArray::number(time);
    }
    for (const VORN_ConstDataContainer &values : row.values) {
        mPending += mSeparator;
        mPending += cellText(values, row.object);
    }
    mPending += '\n';
    return mPending.size() < kPieceBytes || flush();
}

// On a full disk a write can store the first part of the text without an error, so the count is
// compared.
bool TextExport::flush()
{
    mIsWritten = mIsWritten && mFile.write(mPending) == mPending.size();
    mPending.resize(0);
    return mIsWritten;
}

bool TextExport::close(bool)
{
    flush();
    mFile.close();
    return mIsWritten && mFile.error() == QFile::NoError;
}

void TextExport::discard()
{
    if (QFileInfo(mFile).isFile())
        mFile.remove();
}

QByteArray TextExport::cellText(const VORN_ConstDataContainer &values, int object) const
{
    if (isMissingCell(values, object))
        return mMissing;
    switch (values.type()) {
    case VORN_DataContainer::Int32Data:
        return QByteArray::number(values.intvalue(object));
    case VORN_DataContainer::StringData:
        return quoted(values.strvalue(object)).toUtf8();
    default:
        break;
    }
    return QByteArray::number(values.value(object), 'g',
                              mDigits > 0 ? mDigits : QLocale::FloatingPointShortest);
}

QString TextExport::quoted(const QString &text) const
{
    const bool isPlain = !text.contains(QLatin1Char(mSeparator)) && !text.contains(QLatin1Char('"'))
                         && !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r'));
    if (isPlain && !(text.isEmpty() && mSeparator == ' '))
        return text;
    QString escaped = text;
    escaped.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

QStringList TextExport::columnNames(const ExportTable &table) const
{
    QStringList names{QStringLiteral("ObjectId")};
    names += table.timeColumns();
    for (const ExportColumn &column : table.columns())
        names += column.name;
    return names;
}

QString CsvExport::head(const ExportTable &table) const
{
    QStringList fields;
    for (const QString &name : columnNames(table))
        fields += quoted(name);
    return fields.join(QLatin1Char(',')) + QLatin1Char('\n');
}

QString GeoeasExport::head(const ExportTable &table) const
{
    const QStringList names = columnNames(table);
    QStringList lines{oneLine(table.request().title), QString::number(names.size())};
    for (const QString &name : names)
        lines += oneLine(name);
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

bool GeoeasExport::close(bool isEndedEarly)
{
    const bool isWritten = TextExport::close(isEndedEarly);
    if (isEndedEarly)
        discard();
    return isWritten;
}

} // namespace datainterface
