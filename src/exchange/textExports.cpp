// SPDX-License-Identifier: MIT
#include "exchange/textExports.h"
#include <QLocale>

namespace datainterface {
namespace {

// A line of its own must stay one line.
QString oneLine(QString text)
{
    return text.replace(QLatin1Char('\n'), QLatin1Char(' '))
        .replace(QLatin1Char('\r'), QLatin1Char(' '));
}

} // namespace

bool TextExport::open(const ExportTable &table)
{
    mMissing = quoted(table.request().missing);
    mFile.setFileName(table.request().fileName);
    if (!mFile.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return false;
    mOut.setDevice(&mFile);
    mOut.setCodec("UTF-8");
    writeHeader(table);
    return true;
}

void TextExport::writeRow(const ExportRow &row)
{
    mOut << row.object;
    for (qint64 time : row.times)
        mOut << mSeparator << time;
    for (const VORN_ConstDataContainer &values : row.values)
        mOut << mSeparator << cellText(values, row.object);
    mOut << '\n';
}

bool TextExport::close(bool)
{
    mOut.flush();
    const bool isWritten =
        mOut.status() == QTextStream::Ok && mFile.flush() && mFile.error() == QFile::NoError;
    mFile.close();
    return isWritten;
}

QString TextExport::cellText(const VORN_ConstDataContainer &values, int object) const
{
    if (values.isMissing(object))
        return mMissing;
    switch (values.type()) {
    case VORN_DataContainer::Int32Data:
        return QString::number(values.intvalue(object));
    case VORN_DataContainer::StringData:
        return quoted(values.strvalue(object));
    default:
        break;
    }
    return QString::number(values.value(object), 'g',
                           mDigits > 0 ? mDigits : QLocale::FloatingPointShortest);
}

QString TextExport::quoted(const QString &text) const
{
    const bool isPlain = !text.contains(mSeparator) && !text.contains(QLatin1Char('"'))
                         && !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r'));
    if (isPlain && !(text.isEmpty() && mSeparator.isSpace()))
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

void CsvExport::writeHeader(const ExportTable &table)
{
    QStringList fields;
    for (const QString &name : columnNames(table))
        fields += quoted(name);
    mOut << fields.join(QLatin1Char(',')) << '\n';
}

void GeoeasExport::writeHeader(const ExportTable &table)
{
    const QStringList names = columnNames(table);
    mOut << oneLine(table.request().title) << '\n' << names.size() << '\n';
    for (const QString &name : names)
        mOut << oneLine(name) << '\n';
}

bool GeoeasExport::close(bool isCanceled)
{
    const bool isWritten = TextExport::close(isCanceled);
    if (isCanceled)
        discard();
    return isWritten;
}

} // namespace datainterface
