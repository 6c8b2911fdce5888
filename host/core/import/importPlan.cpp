// SPDX-License-Identifier: MIT
#include "core/import/importPlan.h"
#include <QSet>
#include "core/formats/ogrReader.h"
#include "core/import/timeline.h"
#include "core/project/failure.h"

namespace meridor {
namespace {

char decimalOf(const ImportOptions &options)
{
    if (options.decimal.isEmpty() || options.decimal == QLatin1String("."))
        return '.';
    if (options.decimal != QLatin1String(","))
        failUsage(
            QStringLiteral("decimal separator %1: it is a point or a comma").arg(options.decimal),
            "decimal");
    return ',';
}

ReadOptions tableOptions(const ImportOptions &options, const Notes &notes)
{
    ReadOptions read;
    read.key = options.key;
    read.missing = options.missing;
    if (read.missing.isEmpty())
        for (const char *usual : {"n/a", "NA", "N/A", "NaN", "null", "-"})
            read.missing.append(QLatin1String(usual));
    read.missing.append(options.missingAlso);
    // A key such as that of Namibia is missing only if the user says so.
    read.missingKeys = options.missing + options.missingAlso;
    read.encoding = options.encoding;
    read.decimal = decimalOf(options);
    read.notes = &notes;
    read.shapes = false;
    return read;
}

ReadOptions mapOptions(const ImportOptions &options, const Notes &notes,
                       const std::function<void(int)> &progress)
{
    ReadOptions read = tableOptions(options, notes);
    read.layer = options.layer;
    read.xColumn = options.xColumn;
    read.yColumn = options.yColumn;
    read.projection = options.projection;
    read.shapes = true;
    read.progress = progress;
    return read;
}

/// Starts a plan with its map.
ImportPlan planOf(const FeatureTable &map, const ImportOptions &options)
{
    ImportPlan plan;
    plan.options = options;
    plan.map = map;
    if (plan.map.rows == 0)
        fail(plan.map.file + QStringLiteral(": holds no rows"));
    if (plan.map.shapeKind == ShapeKind::None)
        fail(plan.map.file
                 + QStringLiteral(": holds no shapes; points of a table are named by two fields"),
             "x");
    if (!plan.options.key.isEmpty())
        plan.keyColumn = requireColumn(plan.map, plan.options.key);
    return plan;
}

void joinTables(ImportPlan &plan, const Notes &notes)
{
    if (plan.options.tables.isEmpty())
        return;
    if (plan.keyColumn < 0)
        failUsage(QStringLiteral("a table needs a key: its rows are found by the objects' keys"),
                  "key");
    for (const QString &path : plan.options.tables) {
        const FeatureTable table = readFeatures(path, tableOptions(plan.options, notes));
        plan.unmatched.append(join(plan.map, plan.keyColumn, table, notes));
    }
}

void groupObjects(ImportPlan &plan)
{
    plan.objects =
        plan.keyColumn < 0 ? ObjectRows(plan.map.rows) : ObjectRows(plan.map, plan.keyColumn);
}

void readObservations(ImportPlan &plan, const Notes &notes)
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
    ReadOptions read = tableOptions(plan.options, notes);
    // Tables of observations are long, so unused columns are not kept in memory.
    read.choose = [&plan](const FeatureTable &table) {
        plan.observationKey = keyColumnOf(table, plan.options.key);
        plan.observed.clear();
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
    const Column &keys = plan.observations.columns[plan.observationKey];
    std::vector<bool> seen(static_cast<size_t>(plan.objects.size()));
    QSet<QString> unknown;
    for (int row = 0; row < plan.observations.rows; ++row) {
        const int object = plan.objects.find(keys.view(row));
        if (object >= 0)
            seen[static_cast<size_t>(object)] = true;
        else if (const QString key = keys.text(row); !unknown.contains(key))
            unknown.insert(key), unmatched.tableKeys.append(key);
    }
    for (int object = 0; object < plan.objects.size(); ++object)
        if (!seen[static_cast<size_t>(object)])
            unmatched.objectKeys.append(plan.objects.key(object));
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

ImportPlan makePlan(const FeatureTable &map, const ImportOptions &options, const Notes &notes)
{
    ImportPlan plan = planOf(map, options);
    joinTables(plan, notes);
    groupObjects(plan);
    for (const QString &text : options.series)
        plan.series.append(parseSeries(text, plan.map));
    readObservations(plan, notes);
    chooseAttributes(plan);
    checkNames(plan);
    resolveTimes(plan);
    return plan;
}

ImportPlan makePlan(const ImportOptions &options, const Notes &notes,
                    const std::function<void(int)> &progress)
{
    return makePlan(readFeatures(options.map, mapOptions(options, notes, progress)), options,
                    notes);
}

} // namespace meridor
