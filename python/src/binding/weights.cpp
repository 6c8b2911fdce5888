// SPDX-License-Identifier: MIT
#include <pybind11/stl.h>
#include "call.h"
#include "core/analysis/distanceSets.h"
#include "core/analysis/weightSets.h"
#include "core/analysis/weightsExchange.h"
#include "core/project/catalog.h"
#include "core/project/progress.h"
#include "core/project/text.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MGeoData.h"
#include "intervals.h"
#include "nouns.h"

namespace meridor::python {
namespace {

MGeoData &required(int geography)
{
    requireGeography(geography);
    return *geographyOf(geography);
}

AdjacencySet &requiredSet(int set)
{
    requireWeightSet(set);
    return *geographyOf(set >> 16)->GetSpatialWeightSet(set);
}

int find(int geography, const QString &name)
{
    MGeoData &held = required(geography);
    const QList<QString> names = held.GetSpatialWeightsNames();
    if (const int at = names.indexOf(name); at >= 0)
        return held.GetSpatialWeightsIds()[at];
    raiseUnknown(names.isEmpty()
                     ? QStringLiteral("no weight set %1; %2 has none").arg(name, held.GetName())
                     : QStringLiteral("no weight set %1 of %2; there are: %3")
                           .arg(name, held.GetName(), someOf(QStringList(names))));
}

py::dict describeSet(int id)
{
    const AdjacencySet &set = requiredSet(id);
    QVector<Interval> stored;
    for (const TimeStamp &time : set.GetAdjacencyTimes())
        stored.append(time);
    py::dict facts;
    facts["name"] = set.GetName();
    facts["definition"] = meridor::describe(set);
    facts["information"] = set.GetInformation();
    facts["stored"] = intervalRows(stored);
    return facts;
}

/// The objects that exist at the time, and the rows of all objects as a compressed sparse matrix:
/// objects, row starts, columns, weights.
py::tuple weightsAtTime(int set, qint64 time, const py::object &progress)
{
    struct Lists {
        std::vector<int> objects, starts, columns;
        std::vector<double> weights;
    };
    Lists lists = atLength(progress, [&] {
        requiredSet(set);
        const int count = VORN_GetGeographyProperties(set >> 16).objectCount;
        Lists found;
        found.starts.push_back(0);
        visitNeighbors(set, time, [&](int object, const QVector<neighborDatum> &neighbors) {
            found.objects.push_back(object);
            found.starts.resize(static_cast<size_t>(object) + 1, found.starts.back());
            for (const neighborDatum &neighbor : neighbors) {
                found.columns.push_back(neighbor.id);
                found.weights.push_back(static_cast<double>(neighbor.weight));
            }
            found.starts.push_back(static_cast<int>(found.columns.size()));
        });
        found.starts.resize(static_cast<size_t>(count) + 1, found.starts.back());
        return found;
    });
    return py::make_tuple(arrayOf(std::move(lists.objects)), arrayOf(std::move(lists.starts)),
                          arrayOf(std::move(lists.columns)), arrayOf(std::move(lists.weights)));
}

int create(int geography, const QString &name, const QString &method, const QString &weights,
           int order, int count, double range, bool greatCircle, bool includeEgo, double numerator,
           double power, const QString &information, const py::object &progress)
{
    WeightSetPlan plan;
    plan.name = name;
    plan.information = information;
    plan.method = method;
    plan.weights = weights;
    plan.order = order;
    plan.count = count;
    plan.range = range;
    plan.greatCircle = greatCircle;
    plan.includeEgo = includeEgo;
    plan.numerator = numerator;
    plan.power = power;
    return atLength(progress,
                    [&] { return required(geography), createWeightSet(geography, plan); });
}

/// A set of given lists, which hold over one span of time.
int adopt(int geography, const QString &name, const std::vector<int> &starts,
          const std::vector<int> &columns, const std::vector<double> &weights, qint64 start,
          qint64 end, bool closed, const py::object &progress)
{
    return atLength(progress, [&] {
        required(geography);
        const int count = VORN_GetGeographyProperties(geography).objectCount;
        QStringList ids;
        for (int object = 0; object < count; ++object)
            ids.append(QString::number(object));
        WeightsFile file;
        for (size_t row = 0; row + 1 < starts.size(); ++row) {
            WeightsFile::Ego ego{ids[static_cast<int>(row)], {}};
            for (int i = starts[row]; i < starts[row + 1]; ++i)
                ego.links.append(
                    {ids[columns[static_cast<size_t>(i)]], weights[static_cast<size_t>(i)]});
            file.egos.append(ego);
        }
        return adoptWeights(geography, name, file, ids, intervalOf(start, end, closed), false).set;
    });
}

} // namespace

void addWeights(py::module_ &module)
{
    module.def("weight_sets", [](int geography) {
        return inTurn(
            [&] { return arrayOf(required(geography).GetSpatialWeightsIds().toVector()); });
    });
    module.def("find_weight_set", [](int geography, const QString &name) {
        return inTurn([&] { return find(geography, name); });
    });
    module.def("describe_weight_set",
               [](int set) { return inTurn([&] { return describeSet(set); }); });
    module.def("weights_at", &weightsAtTime, py::arg("set"), py::arg("time"), py::arg("progress"));
    module.def("new_weight_set", &create, py::arg("geography"), py::arg("name"), py::arg("method"),
               py::arg("weights"), py::arg("order"), py::arg("count"), py::arg("range"),
               py::arg("great_circle"), py::arg("include_ego"), py::arg("numerator"),
               py::arg("power"), py::arg("information"), py::arg("progress"));
    module.def("adopt_weights", &adopt, py::arg("geography"), py::arg("name"), py::arg("starts"),
               py::arg("columns"), py::arg("weights"), py::arg("start"), py::arg("end"),
               py::arg("closed"), py::arg("progress"));
    module.def("remove_weight_set", [](int set) {
        inTurn([&] {
            requiredSet(set);
            required(set >> 16).RemoveSpatialWeightSet(set);
        });
    });
}

} // namespace meridor::python
