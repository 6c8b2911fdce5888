// SPDX-License-Identifier: MIT
#include "core/formats/cubeOutput.h"
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtEndian>
#include <cpl_error.h>
#include <cpl_string.h>
#include <limits>
#include <ogr_srs_api.h>
#include "core/formats/cellTypes.h"
#include "core/formats/gdalFile.h"
#include "core/project/cancel.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"

namespace meridor {
namespace {

constexpr int kTextsAtOnce = 1024; ///< between two questions whether the user cancelled

/// The bytes of a block of an array, by its description.
qint64 blockBytes(const QJsonObject &array)
{
    qint64 bytes = array.value(QStringLiteral("dtype")).toString().mid(2).toLongLong();
    for (const QJsonValue &extent : array.value(QStringLiteral("chunks")).toArray())
        bytes *= extent.toInt();
    return bytes;
}

/// GDAL writes the files of a store through buffers and does not check that they reach the disk, so
/// each file is read again. Blocks that are not there are those of the fill value.
bool isWholeStore(const QString &path)
{
    QDirIterator files(path, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    QString folder;
    QJsonObject array;
    const auto read = [](const QString &name) {
        QFile file(name);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    while (files.hasNext()) {
        stopIfCancelled();
        QByteArray bytes = read(files.next());
        if (files.fileName().startsWith(QLatin1Char('.'))) {
            if (QJsonDocument::fromJson(bytes).isNull())
                return false;
            continue;
        }
        if (folder != files.fileInfo().path()) {
            folder = files.fileInfo().path();
            array = QJsonDocument::fromJson(read(folder + QStringLiteral("/.zarray"))).object();
        }
        const qint64 expected = blockBytes(array);
        if (array.value(QStringLiteral("compressor")).isObject()) { // zlib
            QByteArray length(4, '\0');
            qToBigEndian(static_cast<quint32>(expected), length.data());
            bytes = qUncompress(length + bytes);
        }
        if (bytes.size() != expected)
            return false;
    }
    return true;
}

} // namespace

CubeOutput::CubeOutput(const QString &path, const QString &target, bool isZarr)
    : mTarget(target), mPath(path), mIsZarr(isZarr)
{
    GDALAllRegister();
    CPLErrorReset();
    const GDALDriverH driver = GDALGetDriverByName(isZarr ? "Zarr" : "netCDF");
    if (!driver)
        fail(QStringLiteral("%1: this GDAL writes no %2")
                 .arg(target, isZarr ? QStringLiteral("Zarr") : QStringLiteral("NetCDF")));
    mFile.reset(GDALCreateMultiDimensional(driver, path.toUtf8().constData(), nullptr, nullptr));
    mRoot.reset(mFile ? GDALDatasetGetRootGroup(mFile.get()) : nullptr);
    if (!mRoot)
        failWritten();
}

void CubeOutput::failWritten() const
{
    const QString probe = QFileInfo(mPath).path() + QStringLiteral("/probe");
    failWriting(mTarget, mIsZarr ? probe : mPath, QuietGdal::complaint());
}

void CubeOutput::addDimension(const QByteArray &name, qint64 size, const char *type,
                              const char *direction)
{
    GdalDimension dimension(GDALGroupCreateDimension(mRoot.get(), name.constData(), type, direction,
                                                     static_cast<GUInt64>(size), nullptr));
    if (!dimension)
        failWritten();
    mNames.insert(name, dimension.get());
    mDimensions.push_back(std::move(dimension));
}

GdalArray CubeOutput::addArray(const QByteArray &name, const QVector<QByteArray> &dimensions,
                               const GdalCellType &type, const QVector<qint64> &block,
                               bool isPacked)
{
    std::vector<GDALDimensionH> handles;
    for (const QByteArray &dimension : dimensions)
        handles.push_back(mNames.value(dimension));
    QByteArrayList extents;
    for (const qint64 extent : block)
        extents.append(QByteArray::number(extent));
    CPLStringList options;
    if (isPacked && !dimensions.isEmpty())
        options.SetNameValue("COMPRESS", mIsZarr ? "ZLIB" : "DEFLATE");
    if (isPacked && !dimensions.isEmpty())
        options.SetNameValue(mIsZarr ? "ZLIB_LEVEL" : "ZLEVEL", "1");
    if (!block.isEmpty())
        options.SetNameValue("BLOCKSIZE", extents.join(',').constData());
    GdalArray array(GDALGroupCreateMDArray(mRoot.get(), name.constData(), handles.size(),
                                           handles.data(), type.get(), options.List()));
    if (!array)
        failWritten();
    if (mIsZarr)
        nameDimensions(array, dimensions);
    return array;
}

// Readers of Zarr take the names of dimensions from this attribute, which GDAL 3.6 reads but does
// not write.
void CubeOutput::nameDimensions(const GdalArray &array, const QVector<QByteArray> &dimensions)
{
    CPLStringList names;
    for (const QByteArray &dimension : dimensions)
        names.AddString(dimension.constData());
    const auto count = static_cast<GUInt64>(dimensions.size());
    const GdalCellType type(GDALExtendedDataTypeCreateString(0));
    const GdalAttribute attribute(GDALMDArrayCreateAttribute(array.get(), "_ARRAY_DIMENSIONS", 1,
                                                             &count, type.get(), nullptr));
    if (!attribute || !GDALAttributeWriteStringArray(attribute.get(), names.List()))
        failWritten();
}

GdalArray CubeOutput::addNumbers(const QByteArray &name, const QVector<QByteArray> &dimensions,
                                 GDALDataType type, const void *fill, const QVector<qint64> &block)
{
    GdalArray array = addArray(name, dimensions, numericType(type), block, !block.isEmpty());
    if (fill) {
        if (!GDALMDArraySetRawNoDataValue(array.get(), fill))
            failWritten();
    } else if (mIsZarr) {
        DataType form = RasterDecimalType;
        int bits = 0;
        cellFormOf(type, form, bits);
        visitCellType(form, bits, [&](auto cell) {
            using T = decltype(cell);
            if constexpr (std::is_floating_point_v<T>)
                cell = std::numeric_limits<T>::quiet_NaN();
            else if constexpr (std::is_integral_v<T>)
                cell = std::is_signed_v<T> ? std::numeric_limits<T>::min()
                                           : std::numeric_limits<T>::max();
            if (!GDALMDArraySetRawNoDataValue(array.get(), &cell))
                failWritten();
        });
    }
    return array;
}

// NetCDF has texts of any length. Zarr has bytes of one length, which readers take for UTF-8 by
// the attribute.
GdalArray CubeOutput::addTexts(const QByteArray &name, const QVector<QByteArray> &dimensions,
                               int most)
{
    const auto length = static_cast<size_t>(mIsZarr ? qMax(1, most) : 0);
    GdalArray array = addArray(name, dimensions,
                               GdalCellType(GDALExtendedDataTypeCreateString(length)), {}, false);
    const char *empty = "";
    if (mIsZarr && !GDALMDArraySetRawNoDataValue(array.get(), &empty))
        failWritten();
    if (mIsZarr)
        setText(array, "_Encoding", QStringLiteral("utf-8"));
    return array;
}

void CubeOutput::setText(const GdalArray &array, const char *name, const QString &text)
{
    if (text.isEmpty())
        return;
    const GdalCellType type(GDALExtendedDataTypeCreateString(0));
    const GdalAttribute attribute(
        GDALMDArrayCreateAttribute(array.get(), name, 0, nullptr, type.get(), nullptr));
    if (!attribute || !GDALAttributeWriteString(attribute.get(), text.toUtf8().constData()))
        failWritten();
}

void CubeOutput::setTitle(const QString &title)
{
    const GdalCellType type(GDALExtendedDataTypeCreateString(0));
    const QPair<const char *, QString> texts[] = {{"Conventions", QStringLiteral("CF-1.8")},
                                                  {"title", title}};
    for (const auto &[name, text] : texts) {
        const GdalAttribute attribute(
            GDALGroupCreateAttribute(mRoot.get(), name, 0, nullptr, type.get(), nullptr));
        if (!attribute || !GDALAttributeWriteString(attribute.get(), text.toUtf8().constData()))
            failWritten();
    }
}

void CubeOutput::setProjection(const GdalArray &array, const QString &wkt)
{
    const OGRSpatialReferenceH reference = OSRNewSpatialReference(wkt.toUtf8().constData());
    const bool isSet = reference && GDALMDArraySetSpatialRef(array.get(), reference);
    if (reference)
        OSRDestroySpatialReference(reference);
    if (!isSet)
        failWritten();
}

void CubeOutput::write(const GdalArray &array, const QVector<qint64> &start,
                       const QVector<qint64> &count, GDALExtendedDataTypeH type, const void *values,
                       size_t bytesEach)
{
    const std::vector<GUInt64> from(start.begin(), start.end());
    const std::vector<size_t> extent(count.begin(), count.end());
    size_t bytes = bytesEach;
    for (const size_t size : extent)
        bytes *= size;
    if (!GDALMDArrayWrite(array.get(), from.data(), extent.data(), nullptr, nullptr, type, values,
                          values, bytes)
        || CPLGetLastErrorType() >= CE_Failure)
        failWritten();
}

void CubeOutput::writeTexts(const GdalArray &array, const QVector<qint64> &start,
                            const QVector<qint64> &count, const QStringList &texts)
{
    QVector<QByteArray> bytes;
    QVector<const char *> pointers;
    for (const QString &text : texts)
        bytes.append(text.toUtf8());
    for (const QByteArray &text : qAsConst(bytes))
        pointers.append(text.constData());
    const GdalCellType type(GDALExtendedDataTypeCreateString(0));
    if (isZarr()) {
        write(array, start, count, type.get(), pointers.constData(), sizeof(const char *));
        return;
    }
    // HDF5 clears a buffer of a megabyte for every text that it writes, and a text that was never
    // written is read as empty, so only runs of others are written.
    for (int first = 0; first < texts.size();) {
        int end = first;
        while (end < texts.size() && end - first < kTextsAtOnce && !texts[end].isEmpty())
            ++end;
        if (end > first) {
            stopIfCancelled();
            QVector<qint64> from = start;
            QVector<qint64> size = count;
            from.last() += first;
            size.last() = end - first;
            write(array, from, size, type.get(), pointers.constData() + first,
                  sizeof(const char *));
        }
        first = end > first ? end : first + 1;
    }
}

void CubeOutput::close()
{
    mDimensions.clear();
    mNames.clear();
    mRoot.reset();
    mFile.reset();
    if (CPLGetLastErrorType() >= CE_Failure || (mIsZarr && !isWholeStore(mPath)))
        failWritten();
}

} // namespace meridor
