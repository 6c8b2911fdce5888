// SPDX-License-Identifier: MIT
#include "core/formats/rasterWriter.h"
#include <algorithm>
#include <cpl_error.h>
#include <vector>
#include "core/formats/cellTypes.h"
#include "core/formats/gdalCellTypes.h"
#include "core/formats/gdalFile.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/safeFile.h"
#include "core/project/shapeAccess.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/HeldGrid.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {
namespace {

constexpr int kStripBytes = 4 << 20;

/// Marks cells of types that GDAL does not have: signed bytes and 16-bit floats.
template <class T> void addTypeOptions(std::vector<const char *> &options)
{
    if constexpr (std::is_same_v<T, half>)
        options.push_back("NBITS=16");
    else if constexpr (std::is_same_v<T, qint8>)
        options.push_back("PIXELTYPE=SIGNEDBYTE");
}

class GridWriter {
public:
    GridWriter(const MRasterDataset &dataset, const MRasterObservation &grid, const GeoProps &place,
               const QString &projection)
        : mDataset(dataset), mGrid(grid), mPlace(place), mProjection(projection)
    {
    }

    template <class T> bool write(const QString &path, const QString &name)
    {
        std::vector<const char *> options{"COMPRESS=DEFLATE", "BIGTIFF=IF_SAFER"};
        addTypeOptions<T>(options);
        options.push_back(nullptr);
        CPLErrorReset();
        GdalFile file(GDALCreate(GDALGetDriverByName("GTiff"), path.toUtf8().constData(),
                                 mGrid.Columns(), mGrid.Rows(), 1, gdalType<T>(),
                                 const_cast<char **>(options.data())));
        if (!file)
            return false;
        describe<T>(file.get(), name);
        if (!writeRows<T>(GDALGetRasterBand(file.get(), 1)))
            return false;
        file.reset(); // closing writes the buffered rest
        return CPLGetLastErrorType() < CE_Failure;
    }

private:
    template <class T> void describe(GDALDatasetH file, const QString &name) const
    {
        const double top = mPlace.bounds.top() + mPlace.bounds.height();
        double transform[6] = {mPlace.bounds.left(), mPlace.pixelWidth, 0, top, 0,
                               -mPlace.pixelHeight};
        GDALSetGeoTransform(file, transform);
        if (!mProjection.isEmpty())
            GDALSetProjection(file, mProjection.toUtf8().constData());
        GDALRasterBandH band = GDALGetRasterBand(file, 1);
        GDALSetDescription(band, name.toUtf8().constData());
        setNoData<T>(band);
        setColors(band);
    }

    template <class T> void setNoData(GDALRasterBandH band) const
    {
        const MissingFlag &flag = mDataset.GetCellFlag();
        if (flag.type == MissingFlag::None)
            return;
        const T value = flag.field<T>();
        if constexpr (std::is_same_v<T, qint64>)
            GDALSetRasterNoDataValueAsInt64(band, value);
        else if constexpr (std::is_same_v<T, quint64>)
            GDALSetRasterNoDataValueAsUInt64(band, value);
        else
            GDALSetRasterNoDataValue(band, static_cast<double>(value));
    }

    void setColors(GDALRasterBandH band) const
    {
        const QVector<unsigned> &colors = mGrid.GetColorMap();
        if (colors.isEmpty())
            return;
        const GDALColorTableH table = GDALCreateColorTable(GPI_RGB);
        for (int i = 0; i < qMin(colors.size(), 256); ++i) {
            const auto byte = [&](int shift) {
                return static_cast<short>(colors[i] >> shift & 255);
            };
            const GDALColorEntry entry{byte(16), byte(8), byte(0), byte(24)};
            GDALSetColorEntry(table, i, &entry);
        }
        GDALSetRasterColorTable(band, table);
        GDALDestroyColorTable(table);
    }

    template <class T> bool writeRows(GDALRasterBandH band) const
    {
        using Wire = std::conditional_t<std::is_same_v<T, half>, float, T>;
        const int columns = mGrid.Columns();
        const int step = qMax(1, kStripBytes / static_cast<int>(sizeof(Wire)) / columns);
        std::vector<Wire> strip;
        for (int row = 0; row < mGrid.Rows(); row += step) {
            stopIfCancelled();
            const int rows = qMin(step, mGrid.Rows() - row);
            const T *first = mGrid.cells<T>() + static_cast<std::ptrdiff_t>(row) * columns;
            strip.assign(first, first + static_cast<std::ptrdiff_t>(rows) * columns);
            if (GDALRasterIO(band, GF_Write, 0, row, columns, rows, strip.data(), columns, rows,
                             gdalType<T>(), 0, 0)
                != CE_None)
                return false;
        }
        return true;
    }

    const MRasterDataset &mDataset;
    const MRasterObservation &mGrid;
    const GeoProps &mPlace;
    QString mProjection;
};

} // namespace

void exportGrid(const QString &path, int dataset, qint64 time, int realization)
{
    const QuietGdal quiet;
    GDALAllRegister();
    const MRasterDataset *raster = rasterOf(dataset);
    if (!raster)
        fail(QStringLiteral("%1 is no grid; GeoTIFF holds grids").arg(datasetName(dataset)));
    const int geography = VORN_GetGeographyId(dataset);
    const TimeAxis axis = axisOf(geography);
    TimeStamp when;
    if (!raster->GetContainingTimeStamp(realization, time, when))
        fail(QStringLiteral("%1 holds no grid at %2").arg(datasetName(dataset), axis.show(time)));
    const GeoProps place = VORN_GetGeographyProperties(geography);
    const MRasterObservation &grid = *raster->GetConstRasterInfo(realization, time);
    const HeldGrid hold(grid);
    const QString name = raster->IsStatic() ? datasetName(dataset) : axis.show(when);
    replaceFile(path, [&](const QString &beside) {
        bool done = false;
        GridWriter writer(*raster, grid, place, projectionText(geography));
        visitCellType(grid.Type(), grid.BitDepth(),
                      [&](auto zero) { done = writer.write<decltype(zero)>(beside, name); });
        if (!done)
            failWriting(path, beside, QuietGdal::complaint());
        return true;
    });
}

} // namespace meridor
