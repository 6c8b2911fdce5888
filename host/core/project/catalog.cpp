// SPDX-License-Identifier: MIT
#include "core/project/catalog.h"
#include <QSet>
#include <algorithm>
#include <numeric>
#include "core/project/failure.h"
#include "core/project/geographyTimes.h"
#include "core/project/text.h"
#include "core/project/timeMessages.h"
#include "datainterface/ControllerBase.h"
#include "datainterface/DataAPI.h"
#include "datainterface/FrameAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MGeoData.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/MVectorData.h"
#include "fennimark/Fennims.h"

namespace meridor {
namespace {

const QString kKeyTag = QStringLiteral("Object key");

QString fullName(int dataset)
{
    return geographyName(VORN_GetGeographyId(dataset)) + QLatin1Char('/') + datasetName(dataset);
}

/// The values of a static dataset as texts; a null text is a missing value.
QStringList constantTexts(int dataset)
{
    QVector<datum> values;
    QSet<int> missing;
    QStringList texts;
    if (!VORN_GetDataValues(dataset, 0, 0, values, missing))
        return texts;
    for (int i = 0; i < values.size(); ++i)
        texts.append(missing.contains(i) ? QString() : textOf(values[i]));
    return texts;
}

} // namespace

QString textOf(const datum &value)
{
    switch (value.type) {
    case 0:
        return exactNumber(value.decimalValue);
    case 1:
        return QString::number(value.integerValue);
    default:
        return value.stringValue;
    }
}

QJsonValue jsonValue(const datum &value)
{
    switch (value.type) {
    case 0:
        return jsonNumber(value.decimalValue);
    case 1:
        return static_cast<double>(value.integerValue);
    default:
        return value.stringValue;
    }
}

ControllerBase &controller()
{
    return *VORN_GetController();
}

MGeoData *geographyOf(int id)
{
    return controller().GetGeoData().value(id, nullptr);
}

MDataset *datasetOf(int id)
{
    MGeoData *geography = geographyOf(VORN_GetGeographyId(id));
    return geography ? geography->GetDataSource()->GetDataset(id) : nullptr;
}

MRasterDataset *rasterOf(int dataset)
{
    return dynamic_cast<MRasterDataset *>(datasetOf(dataset));
}

QVector<int> geographyIds()
{
    return controller().GetGeoData().keys().toVector();
}

QVector<int> datasetIds(int geography)
{
    QVector<int> ids;
    for (const int id : VORN_GetGeographyProperties(geography).datasetIds)
        ids.append(id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

QString geographyName(int id)
{
    MGeoData *geography = geographyOf(id);
    return geography ? geography->GetName() : QString();
}

QString datasetName(int id)
{
    MDataset *dataset = datasetOf(id);
    return dataset ? dataset->GetDisplayName() : QString();
}

TimeAxis axisOf(int geography)
{
    return TimeAxis(VORN_GetGeographyProperties(geography).timeFormat);
}

const char *typeName(DataType type)
{
    switch (type) {
    case DecimalType:
    case RasterDecimalType:
        return "decimal";
    case IntegerType:
    case RasterIntegerType:
        return "integer";
    case RasterUnsignedType:
    case RasterCellType:
        return "unsigned";
    case RasterColorType:
        return "colors";
    default:
        return "text";
    }
}

const char *storageName(MVectorDataset::StorageType storage)
{
    return storage == MVectorDataset::TimeSlice ? "slices" : "series";
}

QString typeText(const DatasetProps &props)
{
    const QString name = QLatin1String(typeName(static_cast<DataType>(props.dataType)));
    return props.bitDepth > 0 ? QStringLiteral("%1 %2").arg(name, QString::number(props.bitDepth))
                              : name;
}

QString gridText(const GeoProps &props)
{
    return counted(props.rows, "row") + QStringLiteral(", ") + counted(props.columns, "column");
}

const char *shapeName(int geographyType)
{
    switch (geographyType) {
    case GeoProps::Polygons:
        return "polygons";
    case GeoProps::Points:
        return "points";
    case GeoProps::Lines:
        return "lines";
    default:
        return "raster";
    }
}

int findGeography(const QString &name)
{
    const QVector<int> ids = geographyIds();
    if (name.isEmpty() && ids.size() == 1)
        return ids.first();
    QStringList names;
    for (const int id : ids) {
        names.append(geographyName(id));
        if (names.last() == name)
            return id;
    }
    if (names.isEmpty())
        fail(QStringLiteral("the project holds no geography"));
    if (name.isEmpty())
        fail(QStringLiteral("several geographies, name one: %1").arg(someOf(names)));
    fail(QStringLiteral("no geography %1; there are: %2").arg(name, someOf(names)));
}

int findDataset(int geography, const QString &name)
{
    const int id = VORN_GetDatasetByName(geography, name);
    if (id >= 0)
        return id;
    QStringList names;
    for (const int other : datasetIds(geography)) {
        if (fullName(other) == name)
            return other;
        names.append(datasetName(other));
    }
    fail(QStringLiteral("no dataset %1 in %2; there are: %3")
             .arg(name, geographyName(geography), someOf(names)));
}

int findDataset(const QString &name)
{
    QVector<int> found;
    QStringList names;
    for (const int geography : geographyIds()) {
        for (const int id : datasetIds(geography)) {
            names.append(datasetName(id));
            if (datasetName(id) == name || fullName(id) == name)
                found.append(id);
        }
    }
    if (found.isEmpty())
        fail(QStringLiteral("no dataset %1; there are: %2").arg(name, someOf(names)));
    if (found.size() > 1)
        fail(QStringLiteral("several datasets %1; write %2").arg(name, fullName(found.first())));
    return found.first();
}

void requireNewGeographyName(const QString &name)
{
    for (const int id : geographyIds())
        if (geographyName(id) == name)
            fail(QStringLiteral("the project has a geography %1 already").arg(name));
}

void requireNewDatasetName(int geography, const QString &name)
{
    if (name.isEmpty())
        failUsage(QStringLiteral("a name is not empty"));
    if (VORN_GetDatasetByName(geography, name) >= 0)
        fail(QStringLiteral("%1 has a dataset %2 already").arg(geographyName(geography), name));
}

int keyDataset(int geography)
{
    const QVariant id = geographyOf(geography)->GetMetaData()[kKeyTag];
    return id.isValid() && datasetOf(id.toInt()) ? id.toInt() : -1;
}

void setKeyDataset(int geography, int dataset)
{
    geographyOf(geography)->GetMetaData().setTag(kKeyTag, dataset);
}

QStringList uniqueTexts(int dataset)
{
    const QString name = datasetName(dataset);
    if (!datasetOf(dataset)->IsStatic())
        fail(QStringLiteral("%1 changes over time: it names no objects").arg(name));
    const QStringList texts = constantTexts(dataset);
    QSet<QString> seen;
    for (int i = 0; i < texts.size(); ++i) {
        if (texts[i].isNull())
            fail(QStringLiteral("%1: object %2 has no value").arg(name, QString::number(i + 1)));
        if (seen.contains(texts[i]))
            fail(QStringLiteral("%1: two objects have %2").arg(name, texts[i]));
        seen.insert(texts[i]);
    }
    return texts;
}

QStringList objectKeys(int geography)
{
    QStringList keys;
    if (const int dataset = keyDataset(geography); dataset >= 0)
        keys = constantTexts(dataset);
    const int count = VORN_GetGeographyProperties(geography).objectCount;
    for (int i = keys.size(); i < count; ++i)
        keys.append(QString::number(i + 1));
    return keys;
}

QStringList objectKeys(int geography, const QVector<int> &objects)
{
    const QStringList all = keyDataset(geography) < 0 ? QStringList() : objectKeys(geography);
    QStringList keys;
    for (const int object : objects)
        keys.append(all.isEmpty() ? QString::number(object + 1) : all.value(object));
    return keys;
}

int nameDataset(int geography)
{
    int containing = -1;
    int distinct = -1;
    const int objects = VORN_GetGeographyProperties(geography).objectCount;
    for (const int id : datasetIds(geography)) {
        const MDataset &dataset = *datasetOf(id);
        if (dataset.GetDataType() != StringType || id == keyDataset(geography))
            continue;
        const QString name = datasetName(id);
        if (name.compare(QLatin1String("name"), Qt::CaseInsensitive) == 0)
            return id;
        if (containing < 0 && name.contains(QLatin1String("name"), Qt::CaseInsensitive))
            containing = id;
        bool complete = false;
        if (distinct < 0 && dataset.IsStatic() && VORN_GetUniqueDataCount(id, complete) == objects)
            distinct = id;
    }
    return containing >= 0 ? containing : distinct;
}

QStringList objectNames(int geography, std::optional<qint64> time)
{
    const int dataset = nameDataset(geography);
    QStringList names;
    if (dataset < 0)
        return names;
    for (int i = VORN_GetGeographyProperties(geography).objectCount; i > 0; --i)
        names.append(QString());
    QVector<qint64> instants;
    for (const Interval &when : dataTimes(dataset))
        instants.append(instantOf(when));
    if (time)
        instants.append(*time);
    for (const qint64 instant : instants) {
        QVector<QString> texts;
        QSet<int> missing;
        VORN_GetDataValues(dataset, 0, instant, texts, missing);
        for (int i = 0; i < texts.size() && i < names.size(); ++i)
            if (!missing.contains(i) && !texts[i].isEmpty())
                names[i] = texts[i];
    }
    return names;
}

int findObject(int geography, const QString &text)
{
    if (keyDataset(geography) >= 0) {
        if (const int index = objectKeys(geography).indexOf(text); index >= 0)
            return index;
    } else if (const int index = text.toInt() - 1;
               index >= 0 && index < VORN_GetGeographyProperties(geography).objectCount
               && QString::number(index + 1) == text) {
        return index;
    }
    QVector<int> found;
    for (const int id : datasetIds(geography)) {
        const MDataset *dataset = datasetOf(id);
        if (!dataset->IsStatic() || dataset->GetDataType() != StringType)
            continue;
        const QStringList texts = constantTexts(id);
        for (int i = 0; i < texts.size(); ++i)
            if (texts[i] == text && !found.contains(i))
                found.append(i);
    }
    if (found.isEmpty())
        fail(QStringLiteral("no object %1 in %2").arg(text, geographyName(geography)));
    if (found.size() > 1)
        fail(QStringLiteral("%1 objects of %2 are called %3; name one by its key")
                 .arg(found.size())
                 .arg(geographyName(geography), text));
    return found.first();
}

qint64 shapeTime(int geography, qint64 time)
{
    const auto *vector = dynamic_cast<const MVectorData *>(geographyOf(geography));
    return vector && vector->IsStatic()
               ? static_cast<qint64>(vector->GetFennims()->GetBoundingRect().start)
               : time;
}

QVector<int> objectsAt(int geography, qint64 time)
{
    QVector<unsigned int> existing;
    if (VORN_GetExistingObjects(geography, time, existing))
        return QVector<int>(existing.begin(), existing.end());
    QVector<int> cells(VORN_GetGeographyProperties(geography).objectCount);
    std::iota(cells.begin(), cells.end(), 0);
    return cells;
}

QVector<Interval> dataTimes(int dataset, int realization)
{
    QVector<Interval> times;
    VORN_GetAllDatasetTimes(dataset, realization, times);
    return times;
}

int realizationIndex(int dataset, int number)
{
    const int count = std::max(1, VORN_GetDatasetProperties(dataset).realizationCount);
    if (number < 1 || number > count)
        fail(QStringLiteral("%1 has no realization %2; it has %3")
                 .arg(datasetName(dataset))
                 .arg(number)
                 .arg(count),
             "realization");
    return number - 1;
}

int realizationIndex(int dataset, int number, const QVector<int> &together)
{
    const auto isSingle = [](int id) {
        return VORN_GetDatasetProperties(id).realizationCount <= 1;
    };
    if (isSingle(dataset) && !std::all_of(together.begin(), together.end(), isSingle))
        return 0;
    return realizationIndex(dataset, number);
}

namespace {

/// Those of the intervals `all` that hold the times; all of them without any time.
QVector<Interval> chosenOf(const QVector<Interval> &all, int dataset, const QStringList &times,
                           int realization)
{
    QVector<Interval> chosen;
    const bool isAlways = datasetOf(dataset)->IsStatic() && all.size() == 1;
    for (const QString &text : times) {
        const qint64 time = chooseTime(dataset, text, realization);
        const int before = chosen.size();
        for (const Interval &when : all)
            if (isAlways || TimeStamp(when).contains(time))
                chosen.append(when);
        if (chosen.size() == before)
            fail(QStringLiteral("%1 holds no values at %2").arg(datasetName(dataset), text));
    }
    return times.isEmpty() ? all : chosen;
}

} // namespace

QVector<Interval> dataTimesAt(int dataset, const QStringList &times, int realization)
{
    return chosenOf(dataTimes(dataset, realization), dataset, times, realization);
}

QVector<Interval> shapeTimesAt(int dataset, const QStringList &times, int realization)
{
    const int geography = VORN_GetGeographyId(dataset);
    if (!datasetOf(dataset)->IsStatic() || VORN_GetGeographyProperties(geography).isStatic)
        return dataTimesAt(dataset, times, realization);
    return chosenOf(objectTimes(geography), dataset, times, realization);
}

qint64 instantOf(const Interval &interval)
{
    return TimeStamp(interval).timeInInterval();
}

qint64 lastInstantOf(const Interval &interval)
{
    const bool exclusive = !interval.inclusiveEnd && interval.endTime > interval.startTime;
    return exclusive ? interval.endTime - 1 : interval.endTime;
}

Interval requireSpan(const TimeAxis &axis, const QString &text)
{
    const auto span = axis.span(text);
    if (!span)
        failUsage(whyNoTime(axis, text));
    return *span;
}

qint64 chooseTimeOf(int geography, const QString &text)
{
    if (!text.isEmpty())
        return requireSpan(axisOf(geography), text).startTime;
    const QVector<Interval> times = objectTimes(geography);
    if (times.isEmpty())
        fail(QStringLiteral("%1 has no object at any time").arg(geographyName(geography)));
    return instantOf(times.last());
}

qint64 chooseTime(int dataset, const QString &text, int realization)
{
    if (!text.isEmpty())
        return requireSpan(axisOf(VORN_GetGeographyId(dataset)), text).startTime;
    const QVector<Interval> times = dataTimes(dataset, realization);
    if (times.isEmpty())
        fail(QStringLiteral("dataset %1 holds no values").arg(datasetName(dataset)));
    return instantOf(times.last());
}

} // namespace meridor
