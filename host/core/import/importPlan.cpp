// SPDX-License-Identifier: MIT
#include "core/import/importPlan.h"
#include <QSet>
#include "core/formats/ogrReader.h"
#include "core/import/timeline.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

ReadOptions readOptions(const ImportOptions &options, const std::function<void(int)> &progress)
{
    ReadOptions read;
    read.layer = options.layer;
    read.xColumn = options.xColumn;
    read.yColumn = options.yColumn;
    read.projection = options.projection;
    read.missing = options.missing;
    read.progress = progress;
    return read;
}

ReadOptions tableOptions(const ImportOptions &options)
{
    ReadOptions read;
    read.missing = options.missing;
    read.shapes = false;
    return read;
}

void readMap(ImportPlan &plan, const std::function<void(int)> &progress)
{
    plan.map = readFeatures(plan.options.map, readOptions(plan.options, progress));
    if (plan.map.rows == 0)
        fail(plan.map.file + QStringLiteral(": holds no rows"));
    if (plan.map.shapeKind == ShapeKind::None)
        fail(plan.map.file
                 + QStringLiteral(": holds no shapes; points of a table are named by two fields"),
             "x");
    if (!plan.options.key.isEmpty())
        plan.keyColumn = requireColumn(plan.map, plan.options.key);
}

void joinTables(ImportPlan &plan, const Notes &notes)
{
    if (plan.options.tables.isEmpty())
        return;
    if (plan.keyColumn < 0)
        failUsage(QStringLiteral("a table needs a key: its rows are found by the objects' keys"),
                  "key");
    for (const QString &path : plan.options.tables) {
        const FeatureTable table = readFeatures(path, tableOptions(plan.options));
        plan.unmatched.append(join(plan.map, plan.keyColumn, table, notes));
    }
}

void groupObjects(ImportPlan &plan)
{
    for (int row = 0; row < plan.map.rows; ++row) {
        QString key = QString::number(row + 1);
        if (plan.keyColumn >= 0) {
            const Column &keys = plan.map.columns[plan.keyColumn];
            key = keys.cells[row];
            if (key.isNull())
                fail(QStringLiteral("%1: no key").arg(place(plan.map, keys, row)));
        }
        const auto known = plan.objectOf.constFind(key);
        if (known == plan.objectOf.constEnd()) {
            plan.objectOf.insert(key, plan.objects.size());
            plan.objects.append({key, {row}});
        } else {
            plan.objects[*known].rows.append(row);
        }
    }
}

void readObservations(ImportPlan &plan)
{
    if (plan.options.observations.isEmpty() != plan.options.observed.isEmpty())
        failUsage(QStringLiteral("a table of observations and its datasets go together"),
                  "observe");
    if (plan.options.observations.isEmpty())
        return;
    if (plan.keyColumn < 0)
        failUsage(
            QStringLiteral("observations need a key: their rows are found by the objects' keys"),
            "key");
    ReadOptions read = tableOptions(plan.options);
    // Tables of observations are long, so unused columns are not kept in memory.
    read.choose = [&plan](const FeatureTable &table) {
        plan.observationKey = keyColumnOf(table, plan.options.key);
        QSet<int> used{plan.observationKey};
        for (const QString &text : plan.options.observed) {
            plan.observed.append(parseObservation(text, table));
            used << plan.observed.last().value << plan.observed.last().start
                 << plan.observed.last().end;
        }
        return used;
    };
    plan.observations = readFeatures(plan.options.observations, read);

    Unmatched unmatched{plan.observations.file, {}, {}};
    QSet<QString> seen;
    for (int row = 0; row < plan.observations.rows; ++row) {
        const QString key = plan.observations.columns[plan.observationKey].cells[row];
        if (!plan.objectOf.contains(key) && !seen.contains(key))
            unmatched.tableKeys.append(key);
        seen.insert(key);
    }
    for (const ObjectRows &object : plan.objects)
        if (!seen.contains(object.key))
            unmatched.objectKeys.append(object.key);
    if (unmatched.objectKeys.size() == plan.objects.size())
        fail(QStringLiteral("%1: no key in field %2 is one of the map's")
                 .arg(plan.observations.file, plan.observations.columns[plan.observationKey].name));
    plan.unmatched.append(unmatched);
}

void chooseAttributes(ImportPlan &plan)
{
    QSet<int> used{plan.keyColumn};
    for (const QString &name :
         {plan.options.start, plan.options.end, plan.options.xColumn, plan.options.yColumn})
        used.insert(plan.map.indexOf(name));
    for (const SeriesSpec &spec : plan.series)
        for (const SeriesStep &step : spec.steps)
            used.insert(step.column);
    if (!plan.options.fields.isEmpty()) {
        for (const QString &name : plan.options.fields)
            if (const int column = requireColumn(plan.map, name); column != plan.keyColumn)
                plan.attributes.append(column);
    } else if (plan.options.attributes) {
        for (int column = 0; column < plan.map.columns.size(); ++column)
            if (!used.contains(column))
                plan.attributes.append(column);
    }
}

void checkNames(const ImportPlan &plan)
{
    QSet<QString> names;
    const auto take = [&names](const QString &name) {
        if (names.contains(name))
            failUsage(QStringLiteral("two datasets would be called %1").arg(name));
        names.insert(name);
    };
    if (plan.keyColumn >= 0)
        take(plan.options.key);
    for (const int column : plan.attributes)
        take(plan.map.columns[column].name);
    for (const SeriesSpec &spec : plan.series)
        take(spec.name);
    for (const ObservationSpec &spec : plan.observed)
        take(spec.name);
    for (const QString &type : plan.options.types)
        if (const QString name = type.section(QLatin1Char('='), 0, 0); !names.contains(name))
            failUsage(QStringLiteral("type %1: no dataset of that name is imported").arg(type),
                      "type");
}

} // namespace

ImportPlan makePlan(const ImportOptions &options, const Notes &notes,
                    const std::function<void(int)> &progress)
{
    ImportPlan plan;
    plan.options = options;
    readMap(plan, progress);
    joinTables(plan, notes);
    groupObjects(plan);
    for (const QString &text : options.series)
        plan.series.append(parseSeries(text, plan.map));
    readObservations(plan);
    chooseAttributes(plan);
    checkNames(plan);
    resolveTimes(plan);
    return plan;
}

} // namespace meridor
