// SPDX-License-Identifier: MIT
#include "datainterface/DataAPI.h"
#include <algorithm>
#include "Common/detail/failure.h"
#include "api/dataFrame.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "datainterface/dataContainer.h"

using namespace datainterface;

namespace datainterface {

QVector<Interval> toIntervals(const QList<TimeStamp> &stamps)
{
    QVector<Interval> intervals;
    intervals.reserve(stamps.size());
    for (const TimeStamp &stamp : stamps)
        intervals.append(stamp);
    return intervals;
}

bool toDatum(const MDatum &value, datum &result)
{
    switch (value.type()) {
    // A datum has 32-bit integers, as vector datasets do. Wider raster cells keep their low 32
    // bits.
    case MDatum::Integer:
        result = datum(static_cast<int>(value.integerValue()));
        return true;
    case MDatum::Decimal:
        result = datum(value.decimalValue());
        return true;
    case MDatum::String:
        result = datum(value.text());
        return true;
    case MDatum::Empty:
        return false;
    }
    fail("Invalid data type", "DataAPI.cpp");
}

} // namespace datainterface

namespace {

// Converts the extreme that `get` finds to a number; false when there is none.
template <class Get> bool getExtreme(Get get, double &value)
{
    MDatum extreme;
    if (!get(extreme) || extreme.isEmpty())
        return false;
    value = extreme.toDouble();
    return true;
}

} // namespace

int VORN_GetGeographyId(int id)
{
    return geographyIdOf(id);
}

DatasetProps VORN_GetDatasetProperties(int id)
{
    return onGeography(geographyIdOf(id), DatasetProps(), [id](MGeoData &geography) {
        return onDataset(id, DatasetProps(),
                         [&](MDataset &dataset) { return dataset.GetProperties(&geography); });
    });
}

int VORN_GetDatasetByName(int geographyId, const QString &name)
{
    return onGeographySource(geographyId, -1, [&name](MDataSource &source) {
        for (const DataId &id : source.GetDatasetIds())
            if (source.GetDisplayName(id) == name)
                return static_cast<int>(id);
        return -1;
    });
}

bool VORN_GetAllDatasetTimes(int id, int realization, QVector<Interval> &intervals)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        intervals = toIntervals(source.GetCommonTimeStamps(id, realization));
        return true;
    });
}

bool VORN_GetDataIntervals(int id, int realization, int object, QVector<Interval> &intervals)
{
    if (VORN_GetRasterIntervals(id, realization, intervals))
        return true;
    return onObject(id, static_cast<unsigned int>(object), false, [&](MVectorDataset &dataset) {
        intervals = toIntervals(dataset.GetDataIntervals(realization, object));
        return true;
    });
}

bool VORN_GetTimeSliceDataIntervals(int id, int realization, QVector<Interval> &intervals)
{
    if (VORN_GetRasterIntervals(id, realization, intervals))
        return true;
    return onDataset<MVectorDataset>(id, false, [&](MVectorDataset &dataset) {
        intervals = toIntervals(dataset.GetTimeSliceIntervals(realization));
        return true;
    });
}

bool VORN_GetDatasetAttribute(int id, const QString &key, QVariant &value)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        const QVariant found = source.GetMetaData(id, key);
        if (found.isValid())
            value = found;
        return found.isValid();
    });
}

bool VORN_SetDatasetAttribute(int id, const QString &key, const QVariant &value)
{
    return onValidSource(id, false,
                         [&](MDataSource &source) { return source.SetMetaData(id, key, value); });
}

QString VORN_GetDatasetMetaData(int id, const QString &key)
{
    return onDataset(id, QString(), [&key](const MDataset &dataset) {
        return dataset.GetMetaData(key).toString();
    });
}

bool VORN_SetDatasetMetaData(int id, const QString &key, const QString &value)
{
    return onDataset(id, false, [&](MDataset &dataset) {
        dataset.SetMetaData(key, value);
        return true;
    });
}

bool VORN_SetShortDescription(int id, const QString &text)
{
    return onValidSource(id, false,
                         [&](MDataSource &source) { return source.SetShortDescription(id, text); });
}

bool VORN_GetLongDescription(int id, QString &text)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        text = source.GetLongDescription(id);
        return true;
    });
}

bool VORN_SetLongDescription(int id, const QString &text)
{
    return onValidSource(id, false,
                         [&](MDataSource &source) { return source.SetLongDescription(id, text); });
}

bool VORN_AppendToLongDescription(int id, const QString &text)
{
    return onValidSource(
        id, false, [&](MDataSource &source) { return source.AddToLongDescription(id, text); });
}

bool VORN_RecalculateDataFrequencies(int id)
{
    return onDataset(id, false, [](MDataset &dataset) { return dataset.RecalculateFrequencies(); });
}

int VORN_GetUniqueDataCount(int id, bool &isCapped)
{
    return onDataset(id, 0, [&isCapped](const MDataset &dataset) {
        return dataset.UniqueValueCount(&isCapped);
    });
}

bool VORN_GetUniqueDataValues(int id, QList<datum> &values)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        QList<datum> found;
        const QMap<MDatum, int> frequencies = source.GetDataFrequencies(id);
        for (auto entry = frequencies.cbegin(); entry != frequencies.cend(); ++entry) {
            datum value;
            if (toDatum(entry.key(), value))
                found.append(value);
        }
        values = found;
        return true;
    });
}

bool VORN_GetMean(int id, int realization, qint64 t, double &mean)
{
    return onValidSource(
        id, false, [&](MDataSource &source) { return source.GetMean(id, realization, t, mean); });
}

bool VORN_GetStddev(int id, int realization, qint64 t, double &deviation)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        return source.GetStddev(id, realization, t, deviation);
    });
}

bool VORN_GetMax(int id, int realization, qint64 t, double &value)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        return getExtreme(
            [&](MDatum &extreme) { return source.GetMax(id, realization, t, extreme); }, value);
    });
}

bool VORN_GetMin(int id, int realization, qint64 t, double &value)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        return getExtreme(
            [&](MDatum &extreme) { return source.GetMin(id, realization, t, extreme); }, value);
    });
}

bool VORN_GetMax(int id, int realization, double &value)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        return getExtreme(
            [&](MDatum &extreme) { return source.GetGlobalMax(id, realization, extreme); }, value);
    });
}

bool VORN_GetMin(int id, int realization, double &value)
{
    return onValidSource(id, false, [&](MDataSource &source) {
        return getExtreme(
            [&](MDatum &extreme) { return source.GetGlobalMin(id, realization, extreme); }, value);
    });
}

unsigned int VORN_GetDataCount(int id, qint64 t)
{
    return onSource(id, 0U, [=](MDataSource &source) {
        return static_cast<unsigned int>(source.GetDataCount(id, 0, t));
    });
}

bool VORN_HasDataAtTime(int id, qint64 t)
{
    return onSource(id, false,
                    [=](const MDataSource &source) { return source.HasDataAtTime(id, 0, t); });
}

bool VORN_IsVectorDataMissing(int id, int realization, unsigned int object, qint64 t)
{
    return onObject(id, object, false, [=](const MVectorDataset &dataset) {
        return dataset.IsMissing(realization, static_cast<int>(object), t);
    });
}

bool VORN_GetMissingVectorIds(int id, int realization, qint64 t, QSet<int> &missing)
{
    return onGeography<MVectorData>(geographyIdOf(id), false, [&](MVectorData &geography) {
        return geography.GetMissingValues(id, realization, t, missing);
    });
}

bool VORN_SetMissingVectorId(int id, int realization, unsigned int object, const Interval &interval)
{
    return onGeography<MVectorData>(geographyIdOf(id), false, [&](MVectorData &geography) {
        return object < geography.GetObjectCount()
               && geography.SetMissingValue(id, realization, object, TimeStamp(interval));
    });
}

bool VORN_GetAllMissingRealizationLocations(int id, qint64 t, VORN_MissingData &missing)
{
    MDataset *dataset =
        onDataset(id, static_cast<MDataset *>(nullptr), [](MDataset &found) { return &found; });
    require(dataset != nullptr, "Invalid dataset id");
    VORN_MissingData sum = VORN_ConstDataContainer(dataset, t, 0).missingData();
    for (int realization = 1; realization < dataset->GetRealizationCount(); ++realization)
        sum += VORN_ConstDataContainer(dataset, t, realization).missingData();
    missing = sum;
    return true;
}
