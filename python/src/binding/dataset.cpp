// SPDX-License-Identifier: MIT
#include <limits>
#include <optional>
#include <pybind11/stl.h>
#include "call.h"
#include "core/analysis/statistics.h"
#include "core/grids/gridValues.h"
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/render/classes.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

MDataset &required(int id)
{
    MDataset *dataset = datasetOf(id);
    if (!dataset)
        fail(QStringLiteral("the dataset is no longer in the project"));
    return *dataset;
}

py::dict describe(int id)
{
    required(id);
    const DatasetProps props = VORN_GetDatasetProperties(id);
    py::dict facts;
    facts["name"] = datasetName(id);
    facts["type"] = typeName(static_cast<DataType>(props.dataType));
    facts["bits"] = props.bitDepth;
    facts["storage"] =
        props.bitDepth > 0
            ? "grids"
            : storageName(static_cast<MVectorDataset::StorageType>(props.storageType));
    facts["static"] = props.isStatic;
    facts["realizations"] = std::max(1, props.realizationCount);
    facts["unit"] = VORN_GetDatasetMetaData(id, QStringLiteral("Unit"));
    facts["geography"] = VORN_GetGeographyId(id);
    return facts;
}

void failEmpty(int id, qint64 time)
{
    fail(QStringLiteral("%1 holds no values at %2")
             .arg(datasetName(id), axisOf(VORN_GetGeographyId(id)).show(time)));
}

py::object maskOf(const QSet<int> &missing, int count)
{
    if (missing.isEmpty())
        return py::none();
    auto mask = py::array_t<bool>(count);
    bool *flags = mask.mutable_data();
    std::fill(flags, flags + count, false);
    for (const int object : missing)
        flags[object] = true;
    return std::move(mask);
}

/// Values by object or cell, and which are missing, or None. Decimals and cells that are missing are
/// NaN and have no mask.
py::tuple values(int id, qint64 time, int realization)
{
    const MDataset &dataset = required(id);
    QSet<int> missing;
    if (dataset.GetDataType() >= RasterDecimalType)
        return py::make_tuple(arrayOf(gridValues(id, time, realization)), py::none());
    if (dataset.IsDecimal()) {
        QVector<double> numbers;
        if (!VORN_GetDataValues(id, realization, time, numbers, missing))
            failEmpty(id, time);
        for (const int object : qAsConst(missing))
            numbers[object] = std::numeric_limits<double>::quiet_NaN();
        return py::make_tuple(arrayOf(std::move(numbers)), py::none());
    }
    if (dataset.IsInteger()) {
        QVector<int> numbers;
        if (!VORN_GetDataValues(id, realization, time, numbers, missing))
            failEmpty(id, time);
        const int count = numbers.size();
        return py::make_tuple(arrayOf(std::move(numbers)), maskOf(missing, count));
    }
    QVector<QString> texts;
    if (!VORN_GetDataValues(id, realization, time, texts, missing))
        failEmpty(id, time);
    py::list list(static_cast<size_t>(texts.size()));
    for (int i = 0; i < texts.size(); ++i)
        list[static_cast<size_t>(i)] = missing.contains(i) ? py::none() : py::cast(texts[i]);
    return py::make_tuple(list, maskOf(missing, texts.size()));
}

py::tuple history(int id, int object, int realization)
{
    required(id);
    QVector<Interval> intervals;
    QVector<datum> found;
    VORN_GetObjectDataValues(id, realization, static_cast<unsigned>(object), intervals, found);
    py::list list(static_cast<size_t>(found.size()));
    for (int i = 0; i < found.size(); ++i) {
        const datum &value = found[i];
        list[static_cast<size_t>(i)] = value.type == datum::Decimal   ? py::cast(value.decimalValue)
                                       : value.type == datum::Integer ? py::cast(value.integerValue)
                                                                      : py::cast(value.stringValue);
    }
    return py::make_tuple(intervalRows(intervals), list);
}

py::tuple statistics(int id, const py::object &time, int realization)
{
    if (!required(id).IsNumeric())
        fail(QStringLiteral("%1 holds texts").arg(datasetName(id)));
    const Statistics found = time.is_none() ? statisticsOfAll(id, realization)
                                            : statisticsAt(id, time.cast<qint64>(), realization);
    const double none = std::numeric_limits<double>::quiet_NaN();
    const auto known = [&](double value) { return found.count > 0 ? value : none; };
    return py::make_tuple(found.count, known(found.mean), known(found.deviation),
                          known(found.minimum), known(found.maximum));
}

/// Pairs of a value and how often it occurs.
py::list frequencies(int id, int realization)
{
    required(id);
    py::list pairs;
    const QMap<MDatum, int> counts = frequenciesOf(id, realization);
    for (auto it = counts.begin(); it != counts.end(); ++it) {
        const MDatum &value = it.key();
        pairs.append(py::make_tuple(value.type() == MDatum::String ? py::cast(value.text())
                                    : required(id).IsDecimal()     ? py::cast(value.decimalValue())
                                                                   : py::cast(value.integerValue()),
                                    it.value()));
    }
    return pairs;
}

DataType typeNamed(const QString &name)
{
    for (const DataType type : {DecimalType, IntegerType, StringType})
        if (name == QLatin1String(typeName(type)))
            return type;
    failUsage(QStringLiteral("a dataset of a vector geography is decimal, integer or text, not %1")
                  .arg(name));
}

int create(int geography, const QString &name, const QString &type, const QString &storage,
           int realizations, bool isStatic)
{
    if (!geographyOf(geography))
        fail(QStringLiteral("the geography is no longer in the project"));
    requireNewDatasetName(geography, name);
    const bool series = storage == QLatin1String("series");
    if (!series && storage != QLatin1String("slices"))
        failUsage(
            QStringLiteral("a dataset is stored as slices or as series, not as %1").arg(storage));
    const int id = VORN_NewVectorDataset(geography, name, series ? TimeSeries : TimeSlice,
                                         typeNamed(type), realizations, QString());
    if (id < 0)
        fail(QStringLiteral("dataset %1 could not be made").arg(name));
    if (isStatic)
        required(id).SetStatic(true);
    VORN_NewDatasetCreated(id);
    return id;
}

using Ints = py::array_t<int, py::array::c_style | py::array::forcecast>;
using Times = py::array_t<qint64, py::array::c_style | py::array::forcecast>;
template <class T> using Numbers = py::array_t<T, py::array::c_style | py::array::forcecast>;

/// Adds values slice by slice: a whole slice at once where values are stored so, else value by
/// value.
/// @param spans  a row (start, end, whether the end is included) for each slice.
/// @param ends  the end of each slice in `objects` and `values`.
template <class T>
void addSlices(int id, int realization, const Times &spans, const Ints &ends, const Ints &objects,
               const std::vector<T> &values, bool overwrite)
{
    const int count = VORN_GetGeographyProperties(VORN_GetGeographyId(id)).objectCount;
    const auto span = spans.unchecked<2>();
    const bool sliced = VORN_GetDatasetProperties(id).storageType == TimeSlice;
    for (py::ssize_t slice = 0, first = 0; slice < ends.size(); first = ends.data()[slice++]) {
        const Interval when = intervalOf(span(slice, 0), span(slice, 1), span(slice, 2) != 0);
        const py::ssize_t last = ends.data()[slice];
        if (sliced && last - first == count) {
            QVector<T> whole(count);
            for (py::ssize_t i = first; i < last; ++i)
                whole[objects.data()[i]] = values[static_cast<size_t>(i)];
            VORN_AddDataValues(id, realization, when, whole, {}, overwrite, false);
            continue;
        }
        for (py::ssize_t i = first; i < last; ++i)
            VORN_AddDataValue(id, realization, static_cast<unsigned>(objects.data()[i]), when,
                              values[static_cast<size_t>(i)], overwrite, false);
    }
}

template <class T> std::vector<T> numbersOf(const py::object &values)
{
    const auto array = values.cast<Numbers<T>>();
    return {array.data(), array.data() + array.size()};
}

/// Adds values that the caller has checked: objects in the geography, each once at a time, and
/// values of the dataset's type. It cannot be cancelled, so that all are added.
void add(int id, int realization, const Times &spans, const Ints &ends, const Ints &objects,
         const py::object &values, bool overwrite)
{
    const MDataset &dataset = required(id);
    const auto all = [&](const auto &held) {
        addSlices(id, realization, spans, ends, objects, held, overwrite);
    };
    if (dataset.IsDecimal()) {
        all(numbersOf<double>(values));
    } else if (dataset.IsInteger()) {
        all(numbersOf<int>(values));
    } else {
        std::vector<QString> texts;
        for (const py::handle text : values)
            texts.push_back(text.cast<QString>());
        all(texts);
    }
    VORN_RecalculateDataFrequencies(id);
    VORN_DatasetChanged(id);
}

} // namespace

void addDataset(py::module_ &module)
{
    module.def("describe_dataset", [](int id) { return inTurn([&] { return describe(id); }); });
    module.def("dataset_times", [](int id, int realization) {
        return inTurn([&] { return required(id), intervalRows(dataTimes(id, realization)); });
    });
    module.def("dataset_instant", [](int id, const QString &text, int realization) {
        return inTurn([&] { return required(id), chooseTime(id, text, realization); });
    });
    module.def("realization_index", [](int id, int number) {
        return inTurn([&] { return required(id), realizationIndex(id, number); });
    });
    module.def("values", [](int id, qint64 time, int realization) {
        return inTurn([&] { return values(id, time, realization); });
    });
    module.def("history", [](int id, int object, int realization) {
        return inTurn([&] { return history(id, object, realization); });
    });
    module.def("statistics", [](int id, const py::object &time, int realization) {
        return inTurn([&] { return statistics(id, time, realization); });
    });
    module.def("frequencies", [](int id, int realization) {
        return inTurn([&] { return frequencies(id, realization); });
    });
    module.def("breaks", [](int id, const QString &method, int classes, std::optional<qint64> time,
                            int realization, const py::object &progress) {
        return arrayOf(atLength(progress, [&] {
            required(id);
            if (!classificationNames().contains(method))
                failUsage(QStringLiteral("classes are %1, not %2")
                              .arg(classificationNames().join(QStringLiteral(", ")), method));
            const auto kind = classificationOf(method);
            return time ? breaksAt(id, QVector<qint64>{*time}, kind, classes, realization)
                        : breaksOfAll(id, kind, classes, realization);
        }));
    });
    module.def("new_dataset", [](int geography, const QString &name, const QString &type,
                                 const QString &storage, int realizations, bool isStatic) {
        return inTurn(
            [&] { return create(geography, name, type, storage, realizations, isStatic); });
    });
    module.def("add_values", [](int id, int realization, const Times &spans, const Ints &ends,
                                const Ints &objects, const py::object &given, bool overwrite) {
        inTurn([&] { add(id, realization, spans, ends, objects, given, overwrite); });
    });
    module.def("set_missing",
               [](int id, int realization, int object, qint64 start, qint64 end, bool closed) {
                   inTurn([&] {
                       required(id);
                       VORN_SetMissingVectorId(id, realization, static_cast<unsigned>(object),
                                               intervalOf(start, end, closed));
                       VORN_RecalculateDataFrequencies(id);
                       VORN_DatasetChanged(id);
                   });
               });
    module.def("remove_dataset", [](int id) {
        inTurn([&] { required(id), removeDatasets({id}, session().notes()); });
    });
    module.def("rename_dataset", [](int id, const QString &name) {
        inTurn([&] {
            required(id);
            renameDataset(id, name);
        });
    });
    module.def("set_unit", [](int id, const QString &unit) {
        inTurn([&] { required(id), VORN_SetDatasetMetaData(id, QStringLiteral("Unit"), unit); });
    });
}

} // namespace meridor::python
