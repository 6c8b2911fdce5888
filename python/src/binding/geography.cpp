// SPDX-License-Identifier: MIT
#include "call.h"
#include "core/project/catalog.h"
#include "core/project/edit.h"
#include "core/project/geographyTimes.h"
#include "core/project/shapeAccess.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MVectorData.h"
#include "datainterface/RasterAPI.h"
#include "fennimark/FMObjectChain.h"
#include "fennimark/Fennims.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

MGeoData &required(int id)
{
    MGeoData *geography = geographyOf(id);
    if (!geography)
        fail(QStringLiteral("the geography is no longer in the project"));
    return *geography;
}

const MVectorData *vectorOf(int id)
{
    return dynamic_cast<const MVectorData *>(&required(id));
}

py::dict describe(int id)
{
    required(id);
    const GeoProps props = VORN_GetGeographyProperties(id);
    const int key = keyDataset(id);
    py::dict facts;
    facts["name"] = props.name;
    facts["shapes"] = shapeName(props.type);
    facts["static"] = props.isStatic;
    facts["time_format"] = timeFormatName(props.timeFormat);
    facts["bounds"] = py::make_tuple(
        props.bounds.left(), props.bounds.top(), props.bounds.left() + props.bounds.width(),
        props.bounds.top() + props.bounds.height()); // not right(), which rounds differently
    facts["count"] = props.objectCount;
    facts["rows"] = props.rows;
    facts["columns"] = props.columns;
    facts["cell"] = py::make_tuple(props.pixelWidth, props.pixelHeight);
    facts["projection"] = projectionText(id);
    facts["key"] = key < 0 ? QString() : datasetName(key);
    facts["history"] = props.metaData.value(QStringLiteral("History")).toString();
    return facts;
}

/// Numbers or texts that identify the objects, by object index.
py::object keys(int id)
{
    const int objects = VORN_GetGeographyProperties(id).objectCount;
    const int dataset = keyDataset(id);
    if (dataset < 0) {
        std::vector<qint64> numbers(static_cast<size_t>(objects));
        for (size_t i = 0; i < numbers.size(); ++i)
            numbers[i] = static_cast<qint64>(i) + 1;
        return arrayOf(std::move(numbers));
    }
    QSet<int> missing;
    if (QVector<int> integers; datasetOf(dataset)->IsInteger()
                               && VORN_GetDataValues(dataset, 0, 0, integers, missing)
                               && missing.isEmpty())
        return arrayOf(std::vector<qint64>(integers.begin(), integers.end()));
    return listOf(objectKeys(id));
}

/// The shapes that exist at a time: object indices, parts of each object, vertices of each part, and
/// a row (x, y) for each vertex.
py::tuple outlines(int id, qint64 time)
{
    const MVectorData *vector = vectorOf(id);
    std::vector<int> objects, parts, sizes;
    std::vector<double> places;
    for (const int object : vector ? objectsAt(id, shapeTime(id, time)) : QVector<int>()) {
        const FMObjectChain *chain =
            vector->GetFennims()->GetChainById(vector->GetFennimId(static_cast<unsigned>(object)));
        const int record = chain ? chain->GetObservation(shapeTime(id, time)).second : -1;
        const QVector<QVector<QPointF>> shape = partsOf(*vector, record);
        objects.push_back(object);
        parts.push_back(shape.size());
        for (const QVector<QPointF> &part : shape) {
            sizes.push_back(part.size());
            for (const QPointF &place : part)
                places.insert(places.end(), {place.x(), place.y()});
        }
    }
    const auto rows = static_cast<py::ssize_t>(places.size() / 2);
    return py::make_tuple(arrayOf(std::move(objects)), arrayOf(std::move(parts)),
                          arrayOf(std::move(sizes)), matrixOf(std::move(places), rows, 2));
}

} // namespace

void addGeography(py::module_ &module)
{
    module.def("describe_geography", [](int id) { return inTurn([&] { return describe(id); }); });
    module.def("datasets", [](int id) {
        return inTurn([&] { return required(id), arrayOf(datasetIds(id)); });
    });
    module.def("find_dataset", [](int id, const QString &name) {
        return inTurn([&] { return required(id), byName([&] { return findDataset(id, name); }); });
    });
    module.def("rename_geography", [](int id, const QString &name) {
        inTurn([&] {
            required(id);
            renameGeography(id, name);
        });
    });
    module.def("keys", [](int id) { return inTurn([&] { return required(id), keys(id); }); });
    module.def("names", [](int id) {
        return inTurn([&] { return required(id), listOf(objectNames(id)); });
    });
    module.def("find_object", [](int id, const QString &text) {
        return inTurn([&] { return required(id), byName([&] { return findObject(id, text); }); });
    });
    module.def("geography_times", [](int id) {
        return inTurn([&] { return required(id), intervalRows(objectTimes(id)); });
    });
    module.def("geography_instant", [](int id, const QString &text) {
        return inTurn([&] { return required(id), shapeTime(id, chooseTimeOf(id, text)); });
    });
    module.def("span", [](int id, const QString &start, const QString &end) {
        return inTurn([&] {
            required(id);
            const TimeAxis axis = axisOf(id);
            const Interval first = requireSpan(axis, start);
            if (end.isEmpty())
                return py::make_tuple(first.startTime, first.endTime, first.inclusiveEnd);
            requireSpan(axis, end);
            const auto whole = axis.span(start, end);
            if (!whole)
                failUsage(
                    QStringLiteral("%1 ends before it starts").arg(start + QLatin1Char('/') + end));
            return py::make_tuple(whole->startTime, whole->endTime, whole->inclusiveEnd);
        });
    });
    module.def("show_time", [](int id, qint64 time) {
        return inTurn([&] { return required(id), axisOf(id).show(time); });
    });
    module.def("show_span", [](int id, qint64 start, qint64 end, bool closed) {
        return inTurn(
            [&] { return required(id), axisOf(id).show(intervalOf(start, end, closed)); });
    });
    module.def("objects_at", [](int id, qint64 time) {
        return inTurn([&] { return required(id), arrayOf(objectsAt(id, time)); });
    });
    module.def("outlines",
               [](int id, qint64 time) { return inTurn([&] { return outlines(id, time); }); });
}

} // namespace meridor::python
