// SPDX-License-Identifier: MIT
#include "core/analysis/zonal.h"
#include "core/grids/gridValues.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {

const std::array<ZoneStatistic, 6> &zoneStatistics()
{
    static const std::array<ZoneStatistic, 6> statistics{{{"mean", &ZoneStatistics::mean},
                                                          {"stddev", &ZoneStatistics::deviation},
                                                          {"min", &ZoneStatistics::minimum},
                                                          {"max", &ZoneStatistics::maximum},
                                                          {"sum", &ZoneStatistics::sum},
                                                          {"area", &ZoneStatistics::area}}};
    return statistics;
}

namespace {

/// Raises a Failure if no polygon can meet a cell. All results would be missing then, and the usual
/// cause is that the coordinates are of different projections.
void requireCommonArea(int grid, int polygons)
{
    const GeoProps cells = VORN_GetGeographyProperties(grid);
    const GeoProps zones = VORN_GetGeographyProperties(polygons);
    if (!cells.bounds.intersects(zones.bounds))
        fail(QStringLiteral(
                 "%1 and %2 have no area in common; zones need the projection of the grid")
                 .arg(zones.name, cells.name));
}

} // namespace

double ZoneStatistics::*zoneStatistic(const QString &name)
{
    QStringList names;
    for (const ZoneStatistic &known : zoneStatistics()) {
        if (name == QLatin1String(known.name))
            return known.field;
        names.append(QLatin1String(known.name));
    }
    failUsage(QStringLiteral("%1 is no statistic of zones; there are: %2")
                  .arg(name, names.join(QStringLiteral(", "))),
              "statistic");
}

QVector<ZonesAtTime> zonalStatistics(int dataset, int polygons, const QVector<Interval> &times,
                                     const Progress &progress, int realization)
{
    if (!rasterOf(dataset))
        fail(QStringLiteral("%1 is no grid").arg(datasetName(dataset)));
    Zones zones(VORN_GetGeographyId(dataset), polygons);
    requireCommonArea(VORN_GetGeographyId(dataset), polygons);
    QVector<ZonesAtTime> result;
    for (const Interval &interval : times) {
        const qint64 time = instantOf(interval);
        CellReader cells(dataset, time, realization);
        ZonesAtTime at{interval, QVector<ZoneStatistics>(zones.count())};
        QVector<double> values;
        zones.each(time, progress, [&](int object, const QVector<CellShare> &shares) {
            values.resize(0);
            for (const CellShare &share : shares)
                values.append(cells.at(share.column, share.row));
            at.zones[object] = statisticsOf(shares, values);
        });
        result.append(at);
        progress.report(100 * result.size() / times.size(), "Summing up...");
    }
    return result;
}

namespace {

/// Makes the times of the grid valid in the geography of the polygons, which requires the same time
/// format: a static geography without time-dependent datasets takes over that of the grid, any
/// other one raises a Failure.
void alignTimes(int dataset, int polygons)
{
    const TimeFormat format = axisOf(VORN_GetGeographyId(dataset)).format();
    const GeoProps zones = VORN_GetGeographyProperties(polygons);
    if (zones.timeFormat == format || rasterOf(dataset)->IsStatic())
        return;
    for (const int id : datasetIds(polygons))
        if (!zones.isStatic || !datasetOf(id)->IsStatic())
            fail(QStringLiteral("the times of %1 are of format %2, those of %3 of format %4")
                     .arg(datasetName(dataset), QLatin1String(timeFormatName(format)), zones.name,
                          QLatin1String(timeFormatName(zones.timeFormat))));
    if (zones.isStatic)
        geographyOf(polygons)->SetTimeFormat(format);
}

} // namespace

int keepZonal(const QVector<ZonesAtTime> &times, int dataset, int polygons, const QString &name,
              const QString &statistic)
{
    requireNewDatasetName(polygons, name);
    double ZoneStatistics::*const field = zoneStatistic(statistic);
    alignTimes(dataset, polygons);
    const int id = VORN_NewVectorDataset(polygons, name, TimeSlice, DecimalType, 1, QString());
    for (const ZonesAtTime &at : times) {
        QVector<double> values;
        QSet<int> missing;
        for (int i = 0; i < at.zones.size(); ++i) {
            values.append(at.zones[i].*field);
            if (at.zones[i].cells == 0)
                missing.insert(i);
        }
        if (missing.size() < values.size()
            && !VORN_AddDataValues(id, 0, at.when, values, missing, true, false)) {
            VORN_RemoveDatasets({id});
            fail(QStringLiteral("dataset %1 does not take its values").arg(name));
        }
    }
    if (rasterOf(dataset)->IsStatic())
        datasetOf(id)->SetStatic(true);
    VORN_RecalculateDataFrequencies(id);
    VORN_NewDatasetCreated(id);
    return id;
}

} // namespace meridor
