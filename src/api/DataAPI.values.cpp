// SPDX-License-Identifier: MIT
// Values of vector datasets. Each overload calls a template with its element type.
#include "datainterface/DataAPI.h"
#include <algorithm>
#include <cstring>
#include "api/dataFrame.h"
#include "datainterface/dataContainer.h"
#include "datasets/datasetCopies.h"

using namespace datainterface;

namespace {

// Sets both outputs on success and neither on failure.
template <class T>
bool getValues(int id, int realization, qint64 t, QVector<T> &values, QSet<int> &missing)
{
    return onSource<MVectorDataSource>(id, false, [&](MVectorDataSource &source) {
        QVector<T> foundValues;
        QSet<int> foundMissing;
        DataType type{};
        if (!source.GetDataType(id, type) || type != typeCode<T>()
            || !source.GetDataValues(id, realization, t, foundValues, foundMissing))
            return false;
        values = foundValues;
        missing = foundMissing;
        return true;
    });
}

template <class T>
bool getWrappedValues(int id, int realization, qint64 t, QVector<datum> &values, QSet<int> &missing)
{
    QVector<T> typed;
    if (!getValues(id, realization, t, typed, missing))
        return false;
    values.clear();
    values.reserve(typed.size());
    for (const T &value : std::as_const(typed))
        values.append(datum(value));
    return true;
}

template <class T>
bool getSlice(int id, int realization, qint64 t, QVector<T> &values, QSet<int> &missing)
{
    return onDataset<MVectorDataset>(id, false, [&](const MVectorDataset &dataset) {
        const TimeSliceData<T> *slice = nullptr;
        if (!dataset.GetTimeSliceData(realization, t, slice))
            return false;
        const CheckedOut<TimeSliceData<T>> hold(*slice);
        values = slice->GetValues();
        missing = slice->GetMissingIds();
        return true;
    });
}

// With few classes a count of all limits below the value is faster than a binary search, whose
// branches are unpredictable.
constexpr int kCountedLimits = 24;

QVector<int> classesOf(const QVector<double> &values, const QVector<double> &breaks)
{
    if (breaks.size() < 2)
        return QVector<int>(values.size(), -1);
    QVector<int> classes(values.size());
    int *out = classes.data();
    const double *inner = breaks.constData() + 1;
    const int innerCount = breaks.size() - 2;
    for (const double value : values) {
        int found = 0;
        if (innerCount <= kCountedLimits) {
            for (int i = 0; i < innerCount; ++i)
                found += value > inner[i] ? 1 : 0;
        } else {
            found = static_cast<int>(std::lower_bound(inner, inner + innerCount, value) - inner);
        }
        *out++ = value >= breaks.first() && value <= breaks.last() ? found : -1;
    }
    return classes;
}

MDatum valueOf(int id, int realization, unsigned int object, qint64 t)
{
    return onObject(id, object, MDatum(), [=](MVectorDataset &dataset) {
        return dataset.GetValue(static_cast<int>(object), t, realization);
    });
}

// A value of another type than T is read as 0; false only when there is no value.
template <class T> bool numberOf(int id, int realization, unsigned int object, qint64 t, T &value)
{
    return onObject(id, object, false, [=, &value](MVectorDataset &dataset) {
        const int index = static_cast<int>(object);
        if (dataset.GetDataType() == typeCode<T>())
            return dataset.ReadValue(realization, index, t, value);
        if (dataset.GetValue(index, t, realization).isEmpty())
            return false;
        value = T();
        return true;
    });
}

template <class T>
bool getSeries(int id, int realization, unsigned int object, QMap<Interval, T> &values)
{
    return onObject(id, object, false, [&](const MVectorDataset &dataset) {
        const auto *map = seriesOf<T>(dataset, realization);
        const TimeSeriesData<T> *series =
            map ? map->value(static_cast<int>(object), nullptr) : nullptr;
        if (!series)
            return false;
        values.clear();
        const QMap<TimeStamp, T> entries = series->GetValues();
        for (auto entry = entries.cbegin(); entry != entries.cend(); ++entry)
            values.insert(entry.key(), entry.value());
        return true;
    });
}

template <class T>
bool setSeries(int id, int realization, unsigned int object, const QMap<Interval, T> &values)
{
    return onObject(id, object, false, [&](MVectorDataset &dataset) {
        if (dataset.GetDataType() != typeCode<T>() || realization < 0
            || realization >= dataset.GetRealizationCount())
            return false;
        QMap<TimeStamp, T> entries;
        for (auto entry = values.cbegin(); entry != values.cend(); ++entry)
            entries.insert(TimeStamp(entry.key()), entry.value());
        return dataset.SetTimeSeriesData(static_cast<int>(object), realization, entries, true);
    });
}

template <class T>
bool addSlice(int id, int realization, const Interval &interval, const QVector<T> &values,
              const QSet<int> &missing, bool overwrite, bool updateFrequencies)
{
    return onSource<MVectorDataSource>(id, false, [&](MVectorDataSource &source) {
        return source.AddTimeSliceValues(id, realization, TimeStamp(interval), values, missing,
                                         overwrite, updateFrequencies);
    });
}

template <class T>
bool addSeries(int id, int realization, unsigned int object,
               const QVector<QPair<Interval, T>> &values, bool overwrite, bool updateFrequencies)
{
    return onObject(id, object, false, [&](MVectorDataset &dataset) {
        QVector<QPair<TimeStamp, T>> stamped;
        stamped.reserve(values.size());
        for (const QPair<Interval, T> &value : values)
            stamped.append({TimeStamp(value.first), value.second});
        return dataset.AddTimeSeriesValues(realization, static_cast<int>(object), stamped,
                                           overwrite, updateFrequencies);
    });
}

bool addValue(int id, int realization, unsigned int object, const Interval &interval,
              const MDatum &value, bool overwrite, bool updateFrequencies)
{
    return onObject(id, object, false, [&](MVectorDataset &dataset) {
        return dataset.AddDataValue(realization, static_cast<int>(object), TimeStamp(interval),
                                    value, overwrite, updateFrequencies);
    });
}

} // namespace

bool VORN_GetDataValues(int id, int realization, qint64 t, QVector<double> &values,
                        QSet<int> &missing)
{
    return getValues(id, realization, t, values, missing);
}

bool VORN_GetDataValues(int id, int realization, qint64 t, QVector<int> &values, QSet<int> &missing)
{
    return getValues(id, realization, t, values, missing);
}

bool VORN_GetDataValues(int id, int realization, qint64 t, QVector<QString> &values,
                        QSet<int> &missing)
{
    return getValues(id, realization, t, values, missing);
}

bool VORN_GetDataValues(int id, int realization, qint64 t, QVector<datum> &values,
                        QSet<int> &missing)
{
    return onDataset<MVectorDataset>(id, false, [&](const MVectorDataset &dataset) {
        return visitElement(dataset.GetDataType(), [&](auto element) {
            return getWrappedValues<ElementOf<decltype(element)>>(id, realization, t, values,
                                                                  missing);
        });
    });
}

bool VORN_GetNumericValues(int id, int realization, qint64 t, QVector<double> &values,
                           QSet<int> &missing)
{
    return onDataset<MVectorDataset>(id, false, [&](const MVectorDataset &dataset) {
        QVector<double> foundValues;
        QSet<int> foundMissing;
        if (!dataset.GetValuesAsDecimal(realization, t, foundValues, foundMissing))
            return false;
        values = foundValues;
        missing = foundMissing;
        return true;
    });
}

bool VORN_GetClassNumbers(int id, int realization, qint64 t, const QVector<double> &breaks,
                          QVector<int> &classes)
{
    QVector<double> values;
    QSet<int> missing;
    if (!VORN_GetNumericValues(id, realization, t, values, missing))
        return false;
    QVector<int> found = classesOf(values, breaks);
    for (const int object : qAsConst(missing))
        found[object] = -1;
    classes = found;
    return true;
}

bool VORN_GetTimeSliceData(int id, int realization, qint64 t, QVector<double> &values,
                           QSet<int> &missing)
{
    return getSlice(id, realization, t, values, missing);
}

bool VORN_GetTimeSliceData(int id, int realization, qint64 t, QVector<int> &values,
                           QSet<int> &missing)
{
    return getSlice(id, realization, t, values, missing);
}

bool VORN_GetTimeSliceData(int id, int realization, qint64 t, QVector<QString> &values,
                           QSet<int> &missing)
{
    return getSlice(id, realization, t, values, missing);
}

// Intervals at which the object is missing are left out, also when other objects have values there.
bool VORN_GetObjectDataValues(int id, int realization, unsigned int object,
                              QVector<Interval> &intervals, QVector<datum> &values)
{
    return onObject(id, object, false, [&](MVectorDataset &dataset) {
        dataset.GetObjectValues(realization, static_cast<int>(object), intervals, values);
        return true;
    });
}

bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t, datum &value)
{
    return toDatum(valueOf(id, realization, object, t), value);
}

bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t, double &value)
{
    return numberOf(id, realization, object, t, value);
}

bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t, int &value)
{
    return numberOf(id, realization, object, t, value);
}

bool VORN_GetDataValue(int id, int realization, unsigned int object, qint64 t, int maxLength,
                       char *buffer)
{
    const MDatum found = valueOf(id, realization, object, t);
    if (found.isEmpty() || maxLength < 0)
        return false;
    std::strncpy(buffer, found.charstr(), static_cast<size_t>(maxLength));
    return true;
}

bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                            QMap<Interval, double> &values)
{
    return getSeries(id, realization, object, values);
}

bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                            QMap<Interval, int> &values)
{
    return getSeries(id, realization, object, values);
}

bool VORN_GetTimeSeriesData(int id, int realization, unsigned int object,
                            QMap<Interval, QString> &values)
{
    return getSeries(id, realization, object, values);
}

bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                            const QMap<Interval, double> &values)
{
    return setSeries(id, realization, object, values);
}

bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                            const QMap<Interval, int> &values)
{
    return setSeries(id, realization, object, values);
}

bool VORN_SetTimeSeriesData(int id, int realization, unsigned int object,
                            const QMap<Interval, QString> &values)
{
    return setSeries(id, realization, object, values);
}

bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                        const QVector<double> &values, const QSet<int> &missing, bool overwrite,
                        bool updateFrequencies)
{
    return addSlice(id, realization, interval, values, missing, overwrite, updateFrequencies);
}

bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                        const QVector<int> &values, const QSet<int> &missing, bool overwrite,
                        bool updateFrequencies)
{
    return addSlice(id, realization, interval, values, missing, overwrite, updateFrequencies);
}

bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                        const QVector<QString> &values, const QSet<int> &missing, bool overwrite,
                        bool updateFrequencies)
{
    return addSlice(id, realization, interval, values, missing, overwrite, updateFrequencies);
}

bool VORN_AddDataValues(int id, int realization, const Interval &interval,
                        VORN_DataContainer &values, bool overwrite, bool updateFrequencies)
{
    return onSource(id, false, [&](MDataSource &source) {
        return source.AddTimeSliceValues(id, realization, TimeStamp(interval), values, overwrite,
                                         updateFrequencies);
    });
}

bool VORN_AddDataValues(int id, int realization, unsigned int object,
                        const QVector<QPair<Interval, double>> &values, bool overwrite,
                        bool updateFrequencies)
{
    return addSeries(id, realization, object, values, overwrite, updateFrequencies);
}

bool VORN_AddDataValues(int id, int realization, unsigned int object,
                        const QVector<QPair<Interval, int>> &values, bool overwrite,
                        bool updateFrequencies)
{
    return addSeries(id, realization, object, values, overwrite, updateFrequencies);
}

bool VORN_AddDataValues(int id, int realization, unsigned int object,
                        const QVector<QPair<Interval, QString>> &values, bool overwrite,
                        bool updateFrequencies)
{
    return addSeries(id, realization, object, values, overwrite, updateFrequencies);
}

bool VORN_AddDataValue(int id, int realization, unsigned int object, const Interval &interval,
                       double value, bool overwrite, bool updateFrequencies)
{
    return addValue(id, realization, object, interval, MDatum(value), overwrite, updateFrequencies);
}

bool VORN_AddDataValue(int id, int realization, unsigned int object, const Interval &interval,
                       int value, bool overwrite, bool updateFrequencies)
{
    return addValue(id, realization, object, interval, MDatum(value), overwrite, updateFrequencies);
}

bool VORN_AddDataValue(int id, int realization, unsigned int object, const Interval &interval,
                       const QString &value, bool overwrite, bool updateFrequencies)
{
    return addValue(id, realization, object, interval, MDatum(value), overwrite, updateFrequencies);
}
