// SPDX-License-Identifier: MIT
// The verbs neighbors and nearest.
#include <QJsonArray>
#include <QJsonObject>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include "cli/commands/commands.h"
#include "core/analysis/distanceSets.h"
#include "core/analysis/weightSets.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/progress.h"
#include "core/project/shapeAccess.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

struct Options {
    QString project;
    QString set;
    QString object;
    QString geography;
    QString at;
    QVector<double> place;
    int count = 5;
    bool greatCircle = false;
};

struct Row {
    QString object;
    QString name; ///< null if the geography has no names
    double weight = kNone;
    double distance = kNone; ///< in map units; for border weights the length of the border
};

/// Prints rows; columns without a number are left out.
void print(const QVector<Row> &rows, QJsonObject head, const char *distanceName,
           const Console &console)
{
    bool names = false;
    bool weights = false;
    bool distances = false;
    for (const Row &row : rows) {
        names |= !row.name.isNull();
        weights |= !std::isnan(row.weight);
        distances |= !std::isnan(row.distance);
    }
    QVector<QPair<QString, TextTable::Align>> columns{{QStringLiteral("object"), TextTable::Left}};
    if (names)
        columns.append({QStringLiteral("name"), TextTable::Left});
    if (weights)
        columns.append({QStringLiteral("weight"), TextTable::Right});
    if (distances)
        columns.append({QLatin1String(distanceName), TextTable::Right});
    TextTable table(columns);
    QJsonArray list;
    for (const Row &row : rows) {
        QStringList cells{row.object};
        QJsonObject entry{{QStringLiteral("object"), row.object}};
        if (names) {
            cells.append(row.name);
            entry.insert(QStringLiteral("name"), row.name);
        }
        if (weights) {
            cells.append(shortNumber(row.weight, 6));
            entry.insert(QStringLiteral("weight"), jsonNumber(row.weight));
        }
        if (distances) {
            cells.append(shortNumber(row.distance));
            entry.insert(QLatin1String(distanceName), jsonNumber(row.distance));
        }
        table.add(cells);
        list.append(entry);
    }
    head.insert(QStringLiteral("neighbors"), list);
    console.json ? console.print(head) : table.print(console);
}

/// The distance of a neighbour from the field of a set, which holds squared distances between
/// points, lengths of borders or distances between cells.
double distanceOf(const AdjacencySet &set, const neighborDatum &neighbor)
{
    if (set.IsCustom()) // lists from a file have no distances
        return set.GetInformation().startsWith(calculatedMark())
                   ? static_cast<double>(neighbor.distance)
                   : kNone;
    const spatialWeightType type = set.WeightType();
    switch (set.GeoType()) {
    case AdjacencySet::PointGeography:
        return std::sqrt(static_cast<double>(neighbor.distance));
    case AdjacencySet::PolygonGeography:
        return type == BorderLengthWeight || type == BorderShareWeight
                   ? static_cast<double>(neighbor.distance)
                   : kNone;
    default:
        return type == DistanceRankWeight || type == InverseDistanceWeight
                   ? static_cast<double>(neighbor.distance)
                   : kNone;
    }
}

void runNeighbors(const Options &options, const Context &context)
{
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int id = findWeightSet(options.set);
    const int geography = id >> 16;
    const AdjacencySet &set = weightSetOf(id);
    const qint64 time = chooseTimeOf(geography, options.at);
    const QString when = axisOf(geography).show(time);
    const int object = findObject(geography, options.object);
    const QStringList keys = objectKeys(geography);
    if (!objectsAt(geography, time).contains(object))
        fail(QStringLiteral("%1 does not exist at %2").arg(keys[object], when));
    QVector<neighborDatum> neighbors;
    {
        const Progress progress("Weights", "Calculating spatial weights...");
        if (!VORN_GetSpatialWeights(id, static_cast<unsigned int>(object), time, neighbors,
                                    VORN_MissingData())) {
            progress.report(100); // raises the cancel
            fail(QStringLiteral("weight set %1 has nothing at %2").arg(set.GetName(), when));
        }
    }
    const QStringList names = objectNames(geography, time);
    QVector<Row> rows;
    for (const neighborDatum &neighbor : neighbors)
        rows.append({keys[neighbor.id], names.value(neighbor.id),
                     static_cast<double>(neighbor.weight), distanceOf(set, neighbor)});
    QJsonObject head{{QStringLiteral("set"), set.GetName()},
                     {QStringLiteral("object"), keys[object]},
                     {QStringLiteral("time"), when}};
    if (!names.isEmpty())
        head.insert(QStringLiteral("name"), names[object]);
    print(rows, head,
          set.GeoType() == AdjacencySet::PolygonGeography && !set.IsCustom() ? "border"
                                                                             : "distance",
          context.console);
}

QPointF placeOf(int geography, int object, qint64 time)
{
    if (const auto *shapes = dynamic_cast<const MVectorData *>(geographyOf(geography)))
        if (const std::optional<QPointF> centre = centreOf(*shapes, object, time))
            return *centre;
    fail(QStringLiteral("%1 does not exist at %2")
             .arg(objectKeys(geography, {object}).first(), axisOf(geography).show(time)));
}

/// Distances in map units, to the nearest place of a shape.
QVector<NearObject> nearestInPlane(int geography, const QPointF &place, qint64 time, int count)
{
    QVector<neighborDatum> neighbors;
    VORN_NearestNeighborQuery(geography, place, time, count, neighbors);
    QVector<NearObject> found;
    for (const neighborDatum &neighbor : qAsConst(neighbors))
        found.append({neighbor.id, std::sqrt(static_cast<double>(neighbor.distance))});
    return found;
}

void runNearest(const Options &options, const Context &context)
{
    if ((options.place.size() == 2) == !options.object.isEmpty())
        failUsage(QStringLiteral("a place is X Y or --object"));
    Session session(context.session, context.user);
    session.loadPacked(options.project);
    const int geography = findGeography(options.geography);
    const qint64 time = chooseTimeOf(geography, options.at);
    const int self = options.object.isEmpty() ? -1 : findObject(geography, options.object);
    const QPointF place =
        self < 0 ? QPointF(options.place[0], options.place[1]) : placeOf(geography, self, time);
    const int count = options.count + (self < 0 ? 0 : 1);
    QVector<NearObject> found;
    if (options.greatCircle)
        found = nearestOnEarth(geography, place, time, count);
    else
        found = nearestInPlane(geography, place, time, count);
    if (found.isEmpty())
        fail(QStringLiteral("no object of %1 exists at %2")
                 .arg(geographyName(geography), axisOf(geography).show(time)));
    if (!options.greatCircle && isInDegrees(geography))
        context.console.note(QStringLiteral("distances are in degrees; --great-circle gives "
                                            "kilometres"));
    const QStringList keys = objectKeys(geography);
    const QStringList names = objectNames(geography, time);
    QVector<Row> rows;
    for (const NearObject &near : qAsConst(found))
        if (near.object != self && rows.size() < options.count)
            rows.append({keys[near.object], names.value(near.object), kNone, near.distance});
    print(rows,
          {{QStringLiteral("place"), QJsonArray{place.x(), place.y()}},
           {QStringLiteral("time"), axisOf(geography).show(time)}},
          options.greatCircle ? "kilometres" : "distance", context.console);
}

} // namespace

void addNeighbors(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("neighbors", "An object's neighbours in a weight set");
    projectArgument(command, options->project);
    command.text("SET", options->set, "The weight set, as SET or GEOGRAPHY/SET").required();
    command.text("OBJECT", options->object, "The object's key, or its name in a text dataset")
        .required();
    command.text("--at", options->at, "The time (default: the last)");
    command.footer("Example:\n  meridor neighbors income.vorn queen Virginia --at 1929");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) { runNeighbors(*options, c); };
    });
}

void addNearest(const Command &app, Context &context)
{
    auto options = std::make_shared<Options>();
    const Command command = app.verb("nearest", "The objects nearest to a place");
    projectArgument(command, options->project);
    command.numbers("PLACE", options->place, "X Y, in map units").values(2, 2);
    command.text("--object", options->object,
                 "Use the place of this object, which is left out of the result");
    command.text("--geography", options->geography, "The geography, if there are several");
    command.number("--count", options->count, "Number of objects").shown().range(1, 1000000);
    command.flag("--great-circle", options->greatCircle,
                 "Kilometres along geodesics, for maps in degrees; to the centroids of polygons");
    command.text("--at", options->at, "The time (default: the last)");
    command.footer("Example:\n  meridor nearest counties.vorn --count 3 -- -80.8 35.2\n"
                   "  meridor nearest income.vorn --object Virginia");
    command.chosen([options, &context] {
        context.run = [options](const Context &c) { runNearest(*options, c); };
    });
}

} // namespace meridor
