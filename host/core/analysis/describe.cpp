// SPDX-License-Identifier: MIT
#include "core/analysis/describe.h"
#include <QJsonObject>
#include <algorithm>
#include <numeric>
#include <optional>
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/geographyTimes.h"
#include "core/project/progress.h"
#include "core/project/text.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"

namespace meridor {
namespace {

QJsonObject span(const TimeAxis &axis, const TimeStamp &bounds)
{
    if (bounds.endTime < bounds.startTime)
        return {};
    return {{QStringLiteral("start"), axis.show(bounds.startTime)},
            {QStringLiteral("end"), axis.showEnd(Interval(bounds))}};
}

/// The name of a unit. The unit of angular coordinates is given as its EPSG code.
QString unitName(const QVariant &unit)
{
    switch (unit.type() == QVariant::Int ? unit.toInt() : 0) {
    case 9101:
        return QStringLiteral("radian");
    case 9102:
        return QStringLiteral("degree");
    case 9105:
        return QStringLiteral("grad");
    default:
        return unit.toString();
    }
}

constexpr int kFewCells = 1 << 22; // reading these takes no longer than starting the process

/// Values in the frequency table of a dataset; nothing if adding them up takes long.
std::optional<qint64> countedValues(int id)
{
    bool isCapped = false;
    constexpr int kFewKeys = 1 << 16;
    if (VORN_GetUniqueDataCount(id, isCapped) > kFewKeys || isCapped)
        return std::nullopt;
    const auto frequencies = datasetOf(id)->GetDataFrequencies();
    return std::accumulate(frequencies.begin(), frequencies.end(), qint64(0));
}

bool lacksValues(int id, int objects)
{
    if (!rasterOf(id))
        return datasetOf(id)->HasMissing(0);
    const QVector<Interval> times = dataTimes(id);
    return std::any_of(times.begin(), times.end(), [&](const Interval &when) {
        return static_cast<int>(VORN_GetDataCount(id, instantOf(when))) < objects;
    });
}

/// Whether a dataset has missing values, without reading values if that is possible: those of grids
/// and slices are counted in the frequency table. Null for large grids without a table.
QJsonValue missingValues(int id, int objects, const DatasetProps &props)
{
    const MRasterDataset *raster = rasterOf(id);
    if (raster && raster->GetCellFlag().type == MissingFlag::None)
        return false;
    if (raster || (props.storageType == TimeSlice && props.realizationCount == 1)) {
        const std::optional<qint64> counted = countedValues(id);
        if (counted && *counted > 0)
            return *counted < qint64(objects) * dataTimes(id).size() * props.realizationCount;
        if (raster && objects > kFewCells)
            return QJsonValue::Null;
    }
    return lacksValues(id, objects);
}

/// Null for a grid that was not counted.
QJsonValue uniqueValues(int id, int objects)
{
    bool isCapped = false;
    const int count = VORN_GetUniqueDataCount(id, isCapped);
    const bool isCounted =
        count > 0 || !rasterOf(id) || dataTimes(id).isEmpty()
        || (objects <= kFewCells && VORN_GetDataCount(id, instantOf(dataTimes(id).first())) == 0);
    return isCounted ? QJsonValue(count) : QJsonValue::Null;
}

QJsonObject describeDataset(int id, const TimeAxis &axis)
{
    const DatasetProps props = VORN_GetDatasetProperties(id);
    const int objects = VORN_GetGeographyProperties(VORN_GetGeographyId(id)).objectCount;
    QJsonObject object{
        {QStringLiteral("name"), datasetName(id)},
        {QStringLiteral("type"), QLatin1String(typeName(static_cast<DataType>(props.dataType)))},
        {QStringLiteral("storage"),
         props.bitDepth > 0 ? QStringLiteral("grids")
                            : QString(QLatin1String(storageName(
                                static_cast<MVectorDataset::StorageType>(props.storageType))))},
        {QStringLiteral("static"), props.isStatic},
        {QStringLiteral("realizations"), props.realizationCount},
        {QStringLiteral("times"), props.isStatic ? 0 : dataTimes(id).size()},
        {QStringLiteral("missing"), missingValues(id, objects, props)},
        {QStringLiteral("uniqueValues"), uniqueValues(id, objects)},
        {QStringLiteral("key"), keyDataset(VORN_GetGeographyId(id)) == id}};
    if (props.bitDepth > 0)
        object.insert(QStringLiteral("bits"), props.bitDepth);
    if (!props.isStatic)
        object.insert(QStringLiteral("time"), span(axis, props.timeBounds));
    const Description description = descriptionOf(id);
    if (!description.summary.isEmpty())
        object.insert(QStringLiteral("summary"), description.summary);
    if (!description.history.isEmpty())
        object.insert(QStringLiteral("history"), description.history);
    return object;
}

/// The names of the models of all datasets of a geography, as "MODEL of DATASET".
QStringList modelNames(int geography)
{
    QStringList names;
    for (const int id : datasetIds(geography))
        for (const QString &name : datasetOf(id)->GetVariogramModelNames())
            names.append(QStringLiteral("%1 of %2").arg(name, datasetName(id)));
    return names;
}

QJsonObject toJson(const LinkSummary &summary, int set, const QString &time)
{
    const QStringList keys = objectKeys(set >> 16, summary.islands);
    const QJsonArray islands = QJsonArray::fromStringList(keys);
    return {{QStringLiteral("time"), time},
            {QStringLiteral("objects"), summary.objects},
            {QStringLiteral("links"), static_cast<double>(summary.links)},
            {QStringLiteral("least"), summary.least},
            {QStringLiteral("most"), summary.most},
            {QStringLiteral("mean"), summary.mean()},
            {QStringLiteral("islands"), islands}};
}

} // namespace

QJsonObject describeDataset(int id)
{
    return describeDataset(id, axisOf(VORN_GetGeographyId(id)));
}

QJsonObject describeGeography(int id, const QString &at)
{
    const GeoProps props = VORN_GetGeographyProperties(id);
    const TimeAxis axis(props.timeFormat);
    QJsonArray datasets;
    for (const int dataset : datasetIds(id))
        datasets.append(describeDataset(dataset, axis));
    QJsonObject object{
        {QStringLiteral("name"), geographyName(id)},
        {QStringLiteral("shapes"), QLatin1String(shapeName(props.type))},
        {QStringLiteral("objects"), props.objectCount},
        {QStringLiteral("projection"),
         props.metaData.value(QStringLiteral("Projection")).toString()},
        {QStringLiteral("distanceUnit"),
         unitName(props.metaData.value(QStringLiteral("Distance unit")))},
        {QStringLiteral("history"), historyOf(id)},
        {QStringLiteral("bounds"), QJsonArray{props.bounds.left(), props.bounds.top(),
                                              props.bounds.left() + props.bounds.width(),
                                              props.bounds.top() + props.bounds.height()}},
        {QStringLiteral("static"), props.isStatic},
        {QStringLiteral("timeFormat"), QLatin1String(timeFormatName(props.timeFormat))},
        {QStringLiteral("datasets"), datasets}};
    if (!props.isStatic)
        object.insert(QStringLiteral("time"), span(axis, timeBoundsOf(id)));
    if (const int parent = geographyOf(id)->GetParentId(); geographyOf(parent))
        object.insert(QStringLiteral("parent"), geographyName(parent));
    if (props.type == GeoProps::Raster) {
        object.insert(QStringLiteral("rows"), props.rows);
        object.insert(QStringLiteral("columns"), props.columns);
        object.insert(QStringLiteral("cellSize"), QJsonArray{props.pixelWidth, props.pixelHeight});
    }
    const QStringList models = modelNames(id);
    if (!models.isEmpty())
        object.insert(QStringLiteral("variogramModels"), QJsonArray::fromStringList(models));
    const QStringList sets = geographyOf(id)->GetSpatialWeightsNames();
    if (!sets.isEmpty())
        object.insert(QStringLiteral("weightSets"), QJsonArray::fromStringList(sets));
    if (!at.isEmpty()) {
        const auto when = axis.span(at);
        const QVector<int> existing = when ? objectsAt(id, when->startTime) : QVector<int>();
        object.insert(QStringLiteral("existing"),
                      QJsonArray::fromStringList(objectKeys(id, existing)));
    }
    return object;
}

QJsonArray describeProject(const QString &at)
{
    QJsonArray geographies;
    for (const int id : geographyIds())
        geographies.append(describeGeography(id, at));
    return geographies;
}

QJsonObject describeWeightSet(int id)
{
    const AdjacencySet &set = weightSetOf(id);
    const int geography = id >> 16;
    const TimeAxis axis = axisOf(geography);
    QJsonArray times;
    for (const TimeStamp &time : set.GetAdjacencyTimes())
        times.append(axis.show(Interval(time)));
    QString information = set.GetInformation();
    if (information.startsWith(calculatedMark())) // that line is the definition
        information = information.section(QLatin1Char('\n'), 1);
    return {{QStringLiteral("name"), set.GetName()},
            {QStringLiteral("geography"), geographyName(geography)},
            {QStringLiteral("definition"), describe(set)},
            {QStringLiteral("information"), information},
            {QStringLiteral("stored"), times}};
}

QJsonArray describeLinks(int set, const QStringList &at)
{
    const Progress progress("Weights", "Calculating spatial weights...");
    const int geography = set >> 16;
    QJsonArray times;
    for (const QString &text : at.isEmpty() ? QStringList{QString()} : at) {
        const qint64 time = chooseTimeOf(geography, text);
        times.append(toJson(summarize(set, time), set, axisOf(geography).show(time)));
    }
    return times;
}

} // namespace meridor
