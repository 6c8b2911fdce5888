// SPDX-License-Identifier: MIT
#include "core/import/gridBuilder.h"
#include <QFileInfo>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DatasetProps.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

/// The distinct values of datasets with more cells are not counted at import, but by the first
/// request for classes.
constexpr qint64 kMostCounted = 16 << 20;

} // namespace

int addGridGeography(const ImportOptions &options, const GridPlace &place)
{
    const QFileInfo file(options.map);
    const int id = VORN_CreateNewRasterGeography(
        VORN_GetUniqueGeographyName(options.name.isEmpty() ? file.completeBaseName()
                                                           : options.name),
        static_cast<unsigned>(place.rows), static_cast<unsigned>(place.columns), place.bounds,
        place.hull, place.format, QStringLiteral("Imported from %1").arg(file.fileName()),
        place.projection);
    if (id < 0)
        fail(QStringLiteral("%1: the grid could not be made").arg(options.map));
    if (place.isStatic)
        geographyOf(id)->SetStatic(true);
    return id;
}

int addGridDataset(int geography, const QString &name, DataType type, int bits, int realizations,
                   const QString &unit)
{
    const int id = VORN_NewRasterDataset(geography, name, type, realizations, bits, QString());
    if (id < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    if (!unit.isEmpty())
        VORN_SetDatasetMetaData(id, QStringLiteral("Unit"), unit);
    return id;
}

void finishGridDataset(int dataset, qint64 cells)
{
    if (cells <= kMostCounted || VORN_GetDatasetProperties(dataset).bitDepth <= 16)
        VORN_RecalculateDataFrequencies(dataset);
    VORN_NewDatasetCreated(dataset);
}

} // namespace meridor
