// SPDX-License-Identifier: MIT
#include "call.h"
#include "core/analysis/moranOverTime.h"
#include "core/analysis/zonal.h"
#include "core/project/catalog.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

py::dict localOf(const MoranAt &result)
{
    QStringList clusters;
    for (int i = 0; i < result.objects.size(); ++i)
        clusters.append(clusterName(result, i));
    py::dict local;
    local["objects"] = arrayOf(result.objects);
    local["I"] = arrayOf(result.local.values);
    local["z"] = arrayOf(result.local.deviates);
    local["p"] = arrayOf(result.local.p);
    local["above"] = arrayOf(result.local.above);
    local["deviation"] = arrayOf(result.local.z);
    local["lag"] = arrayOf(result.local.lags);
    local["cluster"] = listOf(clusters);
    return local;
}

/// A tuple for each time: interval, I, expectation, deviate, p, objects, islands, local results or
/// None, permutations at or above I.
py::list moranOf(int dataset, int realization, int set, const py::iterable &times, int permutations,
                 int seed, bool local, const QString &correction, double alpha, bool dropIslands,
                 const QString &store, const py::object &progress)
{
    MoranPlan plan;
    plan.dataset = dataset;
    plan.realization = realization;
    plan.weightSet = set;
    plan.permutations = permutations;
    plan.seed = seed;
    plan.local = local;
    plan.correction = correction;
    plan.alpha = alpha;
    plan.islands = dropIslands ? Islands::Drop : Islands::Keep;
    const QStringList wanted = textsOf(times);
    const QVector<MoranAt> found = atLength(progress, [&] {
        requireDataset(dataset);
        requireWeightSet(set);
        if (set >> 16 != VORN_GetGeographyId(dataset))
            fail(QStringLiteral("the weights are of %1, %2 of %3")
                     .arg(geographyName(set >> 16), datasetName(dataset),
                          geographyName(VORN_GetGeographyId(dataset))));
        plan.times = shapeTimesAt(dataset, wanted, realization);
        const Progress bar("Moran", "Permuting...");
        const QVector<MoranAt> results = moranOverTime(plan, bar);
        if (!store.isEmpty())
            storeMoran(plan, results, store);
        return results;
    });
    py::list rows;
    for (const MoranAt &result : found)
        rows.append(py::make_tuple(
            intervalRows({result.when}), result.whole.value, result.whole.expectation,
            result.whole.deviate, result.whole.p, result.objects.size(), arrayOf(result.islands),
            local ? py::object(localOf(result)) : py::none(), result.whole.above));
    return rows;
}

/// A tuple for each time: interval, cells by object, and an array for each statistic by object.
py::list zonalOf(int dataset, int realization, int polygons, const py::iterable &times,
                 const QString &store, const QString &statistic, const py::object &progress)
{
    const QStringList wanted = textsOf(times);
    const QVector<ZonesAtTime> found = atLength(progress, [&] {
        requireDataset(dataset);
        requireGeography(polygons);
        if (VORN_GetGeographyProperties(polygons).type != GeoProps::Polygons)
            fail(QStringLiteral("%1 has no polygons").arg(geographyName(polygons)));
        zoneStatistic(statistic);
        if (!store.isEmpty())
            requireNewDatasetName(polygons, store);
        const Progress bar("Zones", "Summing up...");
        const auto zones = zonalStatistics(
            dataset, polygons, dataTimesAt(dataset, wanted, realization), bar, realization);
        if (!store.isEmpty())
            keepZonal(zones, dataset, polygons, store, statistic);
        return zones;
    });
    py::list rows;
    for (const ZonesAtTime &at : found) {
        std::vector<int> cells;
        for (const ZoneStatistics &zone : at.zones)
            cells.push_back(zone.cells);
        py::dict columns;
        for (const ZoneStatistic &known : zoneStatistics()) {
            std::vector<double> values;
            for (const ZoneStatistics &zone : at.zones)
                values.push_back(zone.*known.field);
            columns[known.name] = arrayOf(std::move(values));
        }
        rows.append(py::make_tuple(intervalRows({at.when}), arrayOf(std::move(cells)), columns));
    }
    return rows;
}

} // namespace

void addAnalysis(py::module_ &module)
{
    module.def("moran", &moranOf, py::arg("dataset"), py::arg("realization"), py::arg("set"),
               py::arg("times"), py::arg("permutations"), py::arg("seed"), py::arg("local"),
               py::arg("correction"), py::arg("alpha"), py::arg("drop_islands"), py::arg("store"),
               py::arg("progress"));
    module.def("zonal", &zonalOf, py::arg("dataset"), py::arg("realization"), py::arg("polygons"),
               py::arg("times"), py::arg("store"), py::arg("statistic"), py::arg("progress"));
}

} // namespace meridor::python
