// SPDX-License-Identifier: MIT
#include "core/formats/rasterReader.h"
#include <algorithm>
#include <cmath>
#include <cpl_error.h>
#include <cpl_string.h>
#include <limits>
#include <vector>
#include "core/formats/cellText.h"
#include "core/formats/gdalArray.h"
#include "core/formats/gdalCellTypes.h"
#include "core/formats/gdalFile.h"
#include "core/formats/values.h"
#include "core/formats/wholeFile.h"
#include "core/project/failure.h"
#include "core/project/text.h"

namespace meridor {
namespace {

constexpr qint64 kMostGridBytes = std::numeric_limits<int>::max() - 64;
constexpr qint64 kGroupBytes = 32 << 20;
constexpr qint64 kStripBytes = 4 << 20;
constexpr qint64 kCacheBytes = 32 << 20; // of GDAL's block cache; each block is read only once

GDALRasterBandH bandOf(const GdalFile &file, int band)
{
    return GDALGetRasterBand(file.get(), band + 1);
}

/// The type to read cells as.
GDALDataType typeToRead(const RasterBand &band)
{
    GDALDataType found = GDT_Unknown;
    visitCellType(band.type, band.bits,
                  [&found](auto zero) { found = gdalType<decltype(zero)>(); });
    return found;
}

bool isHalf(const RasterBand &band)
{
    return band.type == RasterDecimalType && band.bits == 16;
}

/// Determines the type and depth of a band; false for complex numbers.
bool formOf(GDALRasterBandH handle, RasterBand &band)
{
    const auto structure = [handle](const char *key) {
        return QString::fromUtf8(GDALGetMetadataItem(handle, key, "IMAGE_STRUCTURE"));
    };
    if (!cellFormOf(GDALGetRasterDataType(handle), band.type, band.bits))
        return false;
    if (band.bits == 8 && structure("PIXELTYPE") == QLatin1String("SIGNEDBYTE"))
        band.type = RasterIntegerType;
    if (band.type == RasterDecimalType && band.bits == 32
        && structure("NBITS") == QLatin1String("16"))
        band.bits = 16;
    return true;
}

QVector<unsigned> colorsOf(GDALRasterBandH handle)
{
    QVector<unsigned> colors;
    const GDALColorTableH table = GDALGetRasterColorTable(handle);
    for (int i = 0; table && i < GDALGetColorEntryCount(table); ++i) {
        GDALColorEntry entry{};
        GDALGetColorEntryAsRGB(table, i, &entry);
        const auto byte = [](short part) {
            return static_cast<unsigned>(qBound<short>(0, part, 255));
        };
        colors.append(byte(entry.c4) << 24 | byte(entry.c1) << 16 | byte(entry.c2) << 8
                      | byte(entry.c3));
    }
    return colors;
}

/// The exact text of the file's no-data value; null if there is none.
QString noDataOf(GDALRasterBandH handle)
{
    int has = 0;
    switch (GDALGetRasterDataType(handle)) {
    case GDT_Int64: {
        const auto value = GDALGetRasterNoDataValueAsInt64(handle, &has);
        return has ? QString::number(value) : QString();
    }
    case GDT_UInt64: {
        const auto value = GDALGetRasterNoDataValueAsUInt64(handle, &has);
        return has ? QString::number(value) : QString();
    }
    default: {
        const double value = GDALGetRasterNoDataValue(handle, &has);
        return has ? exactNumber(value) : QString();
    }
    }
}

bool isNaNText(const QString &text)
{
    return text.compare(QLatin1String("nan"), Qt::CaseInsensitive) == 0;
}

/// Sets the missing flag of a band; false if no cell of the band can hold the value.
bool setMissing(RasterBand &band, const QString &text)
{
    band.missing = MissingFlag();
    band.missingIsNaN = isNaNText(text) && band.type == RasterDecimalType;
    if (text.isEmpty() || text == QLatin1String("none") || band.missingIsNaN)
        return true;
    bool fits = false;
    visitCellType(band.type, band.bits, [&](auto cell) {
        fits = toCell(text, cell);
        if (fits)
            band.missing = MissingFlag(cell);
    });
    return fits;
}

} // namespace

bool isRasterFile(const QString &path)
{
    const QuietGdal quiet;
    if (!looksLikeRaster(path))
        return false;
    if (const GdalFile layers = openGdalFile(path, GDAL_OF_VECTOR);
        layers && GDALDatasetGetLayerCount(layers.get()) > 0)
        return false;
    return openGdalFile(path, GDAL_OF_RASTER) != nullptr;
}

RasterReader::RasterReader(const QString &path, const RasterReadOptions &options) : mPath(path)
{
    const QuietGdal quiet;
    GDALSetCacheMax64(kCacheBytes);
    mFile = openGdalFile(path, GDAL_OF_RASTER);
    if (!mFile)
        failUnread(path);
    requireWholeFile(path, mFile.get());
    const int count = GDALGetRasterCount(mFile.get());
    if (count == 0) {
        QStringList names;
        char **items = GDALGetMetadata(mFile.get(), "SUBDATASETS");
        for (int i = 0; items && items[i]; i += 2)
            names.append(QString::fromUtf8(items[i]).section(QLatin1Char('='), 1));
        fail(names.isEmpty() ? path + QStringLiteral(": holds no bands")
                             : QStringLiteral("%1: holds several grids, import one of: %2")
                                   .arg(path, someOf(names)));
    }
    mColumns = GDALGetRasterXSize(mFile.get());
    mRows = GDALGetRasterYSize(mFile.get());
    if (mColumns < 1 || mRows < 1)
        fail(path + QStringLiteral(": holds no cells"));
    mIsInterleaved =
        QString::fromUtf8(GDALGetMetadataItem(mFile.get(), "INTERLEAVE", "IMAGE_STRUCTURE"))
        == QLatin1String("PIXEL");
    place(options.projection);
    for (int band = 0; band < count; ++band)
        describe(band, options.noData);
}

void RasterReader::place(const QString &projection)
{
    double transform[6] = {0, 1, 0, 0, 0, -1};
    if (GDALGetGeoTransform(mFile.get(), transform) != CE_None) {
        if (GDALGetGCPCount(mFile.get()) > 0)
            fail(mPath
                 + QStringLiteral(
                     ": is tied to the map by control points; warp it to a regular grid first"));
        mNotes.append(
            mPath
            + QStringLiteral(": has no place on the map; cells are squares of 1 from (0, 0)"));
        std::fill(transform, transform + 6, 0.0);
        transform[1] = 1;
        transform[3] = mRows;
        transform[5] = -1;
    }
    const bool isFinite =
        std::all_of(transform, transform + 6, [](double term) { return std::isfinite(term); });
    if (transform[2] != 0 || transform[4] != 0)
        fail(mPath
             + QStringLiteral(
                 ": the grid is turned or sheared; warp it to the axes of its map first"));
    if (!isFinite || !(transform[1] > 0) || transform[5] == 0)
        fail(mPath + QStringLiteral(": the columns of the grid do not run from left to right"));
    mIsSouthUp = transform[5] > 0;
    const double height = mRows * std::abs(transform[5]);
    mBounds = QRectF(transform[0], mIsSouthUp ? transform[3] : transform[3] - height,
                     mColumns * transform[1], height);
    mProjection = projection.isEmpty() ? wktOf(GDALGetSpatialRef(mFile.get())) : wktOf(projection);
}

void RasterReader::describe(int index, const QString &noData)
{
    GDALRasterBandH handle = bandOf(mFile, index);
    const QString where = QStringLiteral("%1, band %2").arg(mPath, QString::number(index + 1));
    RasterBand band;
    band.name = QString::fromUtf8(GDALGetDescription(handle));
    band.unit = QString::fromUtf8(GDALGetRasterUnitType(handle));
    char **items = GDALGetMetadata(handle, nullptr);
    for (int i = 0; items && items[i]; ++i) {
        const QString item = QString::fromUtf8(items[i]);
        band.items.insert(item.section(QLatin1Char('='), 0, 0), item.section(QLatin1Char('='), 1));
    }
    if (!formOf(handle, band))
        fail(where + QStringLiteral(": numbers of two parts have no place in a grid"));
    if (band.type == RasterUnsignedType && band.bits == 8) {
        band.colors = colorsOf(handle);
        if (!band.colors.isEmpty())
            band.type = RasterColorType;
    }
    const qint64 bytes = qint64(mColumns) * band.bits / 8;
    if (mRows > std::numeric_limits<int>::max() / mColumns || bytes > kMostGridBytes / mRows)
        fail(QStringLiteral("%1: %2 by %3 cells are more than a grid can hold")
                 .arg(where, QString::number(mColumns), QString::number(mRows)));
    const QString missing = noData.isEmpty() ? noDataOf(handle) : noData;
    if (!setMissing(band, missing))
        fail(
            QStringLiteral("%1: the no-data value %2 fits no cell of %3 bits; another value can be "
                           "given, or none")
                .arg(where, missing, QString::number(band.bits)),
            "no-data");
    int has = 0;
    const double scale = GDALGetRasterScale(handle, &has);
    const double offset = GDALGetRasterOffset(handle, &has);
    if (scale != 1 || offset != 0)
        mNotes.append(QStringLiteral("%1: cells stay as they are stored; a value is cell * %2 + %3")
                          .arg(where, exactNumber(scale), exactNumber(offset)));
    mBands.append(band);
}

int RasterReader::groupAt(int band) const
{
    const qint64 most =
        mIsInterleaved ? qMax<qint64>(1, kGroupBytes / qMax<qint64>(1, bytesOf(band))) : 1;
    int count = 1;
    while (count < most && band + count < mBands.size()
           && mBands[band + count].type == mBands[band].type
           && mBands[band + count].bits == mBands[band].bits)
        ++count;
    return count;
}

void RasterReader::read(int band, int count, char *cells,
                        const std::function<void(int)> &progress) const
{
    const QuietGdal quiet;
    int blockWidth = 0;
    int blockHeight = 0;
    GDALGetBlockSize(bandOf(mFile, band), &blockWidth, &blockHeight);
    // Strips are whole rows of blocks, so that no block is read twice.
    const qint64 rowBytes = qMax<qint64>(1, qint64(mColumns) * count * mBands[band].bits / 8);
    const qint64 blocks = qMax<qint64>(1, kStripBytes / rowBytes / qMax(1, blockHeight));
    const int step = static_cast<int>(qMin<qint64>(mRows, blocks * qMax(1, blockHeight)));
    for (int row = 0; row < mRows; row += step) {
        readRows(band, count, row, qMin(step, mRows - row), cells);
        progress(static_cast<int>(100LL * qMin(mRows, row + step) / mRows));
    }
}

void RasterReader::readRows(int band, int count, int row, int rows, char *cells) const
{
    const RasterBand &form = mBands[band];
    const GDALDataType type = typeToRead(form);
    const qint64 bytes = GDALGetDataTypeSizeBytes(type);
    const qint64 strip = qint64(mColumns) * rows;
    std::vector<float> floats(isHalf(form) ? static_cast<size_t>(strip * count) : 0);
    // A grid whose first row is the southernmost is flipped by a negative line spacing.
    const qint64 lineSpace = (mIsSouthUp ? -1 : 1) * bytes * mColumns;
    const qint64 bandSpace = floats.empty() ? bytes * mColumns * mRows : bytes * strip;
    const int firstRow = mIsSouthUp ? mRows - 1 - row : row;
    char *target = floats.empty() ? cells + bytes * firstRow * mColumns
                                  : reinterpret_cast<char *>(floats.data());
    if (!floats.empty() && mIsSouthUp)
        target += bytes * (strip - mColumns);
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(band + i + 1);
    CPLErrorReset();
    if (GDALDatasetRasterIOEx(mFile.get(), GF_Read, 0, row, mColumns, rows, target, mColumns, rows,
                              type, count, numbers.data(), bytes, lineSpace, bandSpace, nullptr)
            != CE_None
        || CPLGetLastErrorType() >= CE_Failure)
        fail(QStringLiteral("%1, band %2: broken at row %3%4")
                 .arg(mPath, QString::number(band + 1), QString::number(row + 1),
                      QuietGdal::complaint()));
    if (floats.empty())
        return;
    const int top = mIsSouthUp ? mRows - row - rows : row;
    for (int i = 0; i < count; ++i) {
        const auto first = floats.begin() + static_cast<std::ptrdiff_t>(i * strip);
        half *to =
            reinterpret_cast<half *>(cells) + qint64(i) * mColumns * mRows + qint64(top) * mColumns;
        std::transform(first, first + static_cast<std::ptrdiff_t>(strip), to,
                       [](float value) { return half(value); });
    }
}

} // namespace meridor
