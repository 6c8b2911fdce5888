// SPDX-License-Identifier: MIT
#include "core/formats/wholeFile.h"
#include <QDataStream>
#include <QFile>
#include <QVector>
#include <QtEndian>
#include <cstdlib>
#include <gdal_priv.h>
#include "core/project/failure.h"

namespace meridor {
namespace {

/// Reads the header of a classic NetCDF file (versions 1, 2 and 5) to know where its cells end.
class NetCdfHeader {
public:
    explicit NetCdfHeader(QFile &file) : mIn(&file) {}

    /// 0 if the header is none, or does not say it.
    qint64 end()
    {
        char magic[4] = {};
        if (mIn.readRawData(magic, 4) != 4 || qstrncmp(magic, "CDF", 3) != 0)
            return 0;
        mVersion = magic[3];
        if (mVersion != 1 && mVersion != 2 && mVersion != 5)
            return 0;
        const qint64 records = number();
        const bool isStream = records == (mVersion == 5 ? -1 : 0xFFFFFFFFLL);
        for (qint64 left = listCount(); left > 0 && ok(); --left) {
            skipName();
            mLengths.append(number());
        }
        skipAttributes();
        qint64 last = 0;
        qint64 recordBytes = 0;
        QVector<QPair<qint64, qint64>> ofRecords; // begin and bytes in a record
        for (qint64 left = listCount(); left > 0 && ok(); --left) {
            skipName();
            bool isRecord = false;
            qint64 cells = 1;
            const qint64 dimensions = number();
            for (qint64 i = 0; i < dimensions && ok(); ++i) {
                const qint64 id = number();
                const qint64 length = id >= 0 && id < mLengths.size() ? mLengths[int(id)] : 1;
                isRecord = isRecord || (i == 0 && length == 0);
                if (length > 0 && cells < (qint64(1) << 40) / length)
                    cells *= length;
            }
            skipAttributes();
            const qint64 bytes = cells * cellBytes(word());
            number(); // the stated size is too small for a large variable
            const qint64 begin = mVersion == 1 ? word() : wide();
            if (isRecord) {
                ofRecords.append({begin, bytes});
                recordBytes += (bytes + 3) / 4 * 4;
            } else {
                last = qMax(last, begin + bytes);
            }
        }
        if (!ok())
            return 0;
        if (ofRecords.size() == 1) // which is not padded
            recordBytes = ofRecords.first().second;
        for (const auto &[begin, bytes] : qAsConst(ofRecords))
            if (records > 0 && !isStream && records < (qint64(1) << 50) / qMax(1LL, recordBytes))
                last = qMax(last, begin + (records - 1) * recordBytes + bytes);
        return last;
    }

private:
    bool ok() const { return mIn.status() == QDataStream::Ok; }
    qint64 word()
    {
        quint32 value = 0;
        mIn >> value;
        return value;
    }
    qint64 wide()
    {
        qint64 value = 0;
        mIn >> value;
        return value;
    }
    /// A count, whose width depends on the version.
    qint64 number() { return mVersion == 5 ? wide() : word(); }
    /// The number of entries of a list; its tag says of what.
    qint64 listCount()
    {
        word();
        return number();
    }
    void skip(qint64 bytes)
    {
        const qint64 padded = (bytes + 3) / 4 * 4;
        if (bytes < 0 || padded > (1 << 30)
            || mIn.skipRawData(static_cast<int>(padded)) != static_cast<int>(padded))
            mIn.setStatus(QDataStream::ReadPastEnd);
    }
    void skipName() { skip(number()); }
    void skipAttributes()
    {
        for (qint64 left = listCount(); left > 0 && ok(); --left) {
            skipName();
            const qint64 width = cellBytes(word());
            const qint64 count = number();
            skip(count < 0 || count > (1 << 27) ? -1 : count * width);
        }
    }
    static qint64 cellBytes(qint64 type)
    {
        static const int widths[] = {0, 1, 1, 2, 4, 4, 8, 1, 2, 4, 8, 8};
        return type >= 0 && type < 12 ? widths[type] : 0;
    }

    QDataStream mIn;
    int mVersion = 1;
    QVector<qint64> mLengths; ///< of dimensions; 0: that of the records
};

/// The size of a SQLite database by its header; 0 if the file is none.
qint64 databaseEnd(QFile &file)
{
    const QByteArray head = file.read(100);
    const auto at = [&](int place) { return qFromBigEndian<quint32>(head.constData() + place); };
    if (head.size() < 100 || !head.startsWith("SQLite format 3") || at(24) != at(92))
        return 0; // the number of pages is valid if both change counters agree
    const int page = qFromBigEndian<quint16>(head.constData() + 16);
    return qint64(at(28)) * (page == 1 ? 65536 : page);
}

/// The end of raw cells in the file that holds them, whose name is put out; 0 if there are none.
qint64 rawEnd(GDALDataset &dataset, QString &file)
{
    const QByteArray driver = GDALGetDriverShortName(dataset.GetDriver());
    if (driver == "PCRaster" && dataset.GetRasterCount() == 1)
        return 256
               + qint64(dataset.GetRasterXSize()) * dataset.GetRasterYSize()
                     * GDALGetDataTypeSizeBytes(dataset.GetRasterBand(1)->GetRasterDataType());
    GDALDataset::RawBinaryLayout layout;
    if (!dataset.GetRawBinaryLayout(layout))
        return 0;
    file = QString::fromStdString(layout.osRawFilename);
    const auto furthest = [](qint64 count, qint64 step) { return qMax(0LL, (count - 1) * step); };
    return static_cast<qint64>(layout.nImageOffset)
           + furthest(dataset.GetRasterXSize(), layout.nPixelOffset)
           + furthest(dataset.GetRasterYSize(), layout.nLineOffset)
           + furthest(dataset.GetRasterCount(), layout.nBandOffset)
           + GDALGetDataTypeSizeBytes(layout.eDataType);
}

} // namespace

void requireWholeFile(const QString &path, void *dataset)
{
    const auto check = [&](const QString &name, qint64 end) {
        const QFile file(name);
        if (end > 0 && file.exists() && file.size() < end)
            fail(QStringLiteral("%1: ends after %2 of at least %3 bytes; it is incomplete")
                     .arg(name, QString::number(file.size()), QString::number(end)));
    };
    for (const bool isDatabase : {false, true}) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            check(path, isDatabase ? databaseEnd(file) : NetCdfHeader(file).end());
    }
    if (dataset) {
        QString file = path;
        const qint64 end = rawEnd(*GDALDataset::FromHandle(dataset), file);
        check(file, end);
    }
}

} // namespace meridor
