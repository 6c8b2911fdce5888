// SPDX-License-Identifier: MIT
#include "core/import/mapImporter.h"
#include <algorithm>
#include <cmath>
#include <cstdlib>
#ifdef __GLIBC__
#include <malloc.h>
#endif
#include "core/import/datasetBuilder.h"
#include "core/import/geographyBuilder.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/projectHost.h"
#include "core/project/text.h"

namespace meridor {
namespace {

void tell(const ImportPlan &plan, const ImportReport &report, const Notes &notes)
{
    for (const Unmatched &keys : report.unmatched) {
        if (!keys.tableKeys.isEmpty())
            notes.note(QStringLiteral("%1: %2 that no object has: %3")
                           .arg(keys.table, counted(keys.tableKeys.size(), "key"),
                                someOf(keys.tableKeys)));
        if (!keys.objectKeys.isEmpty())
            notes.note(QStringLiteral("%1: %2 without a row, whose values are missing: %3")
                           .arg(keys.table, counted(keys.objectKeys.size(), "object"),
                                someOf(keys.objectKeys)));
    }
    if (!report.withoutShape.isEmpty())
        notes.note(QStringLiteral("%1: %2 without a shape, existing at no time: %3")
                       .arg(plan.map.file, counted(report.withoutShape.size(), "object"),
                            someOf(report.withoutShape)));
    if (report.nearVertices.count == 0)
        return;
    const QString distance = exactNumber(report.nearVertices.distance);
    if (plan.options.snap > 0)
        notes.note(
            QStringLiteral(
                "%1 vertices lie within the tolerance of %2 of others without being the same: "
                "borders there count as one")
                .arg(report.nearVertices.count)
                .arg(distance));
    else
        notes.note(
            QStringLiteral(
                "%1 vertices lie within %2 of others without being the same: borders there may not "
                "count as common unless such places are made one (a snap distance of %2)")
                .arg(report.nearVertices.count)
                .arg(distance));
}

/// Returns freed memory to the system: the C library keeps it, in pieces, when many small blocks
/// were freed.
void releaseFreeMemory()
{
#ifdef __GLIBC__
    ::malloc_trim(0);
#endif
}

void refuseUnmatched(const ImportPlan &plan)
{
    for (const Unmatched &keys : plan.unmatched) {
        QStringList reasons;
        if (!keys.tableKeys.isEmpty())
            reasons.append(QStringLiteral("no object has %1").arg(someOf(keys.tableKeys)));
        if (!keys.objectKeys.isEmpty())
            reasons.append(QStringLiteral("no row has %1").arg(someOf(keys.objectKeys)));
        if (plan.options.strict && !reasons.isEmpty())
            fail(QStringLiteral("%1: keys do not match: %2")
                     .arg(keys.table, reasons.join(QStringLiteral("; "))));
    }
}

void requireSnap(const ImportOptions &options)
{
    if (!std::isfinite(options.snap) || options.snap < 0)
        failUsage(QStringLiteral("the snap distance is no distance"), "snap");
}

ImportReport build(const ImportPlan &plan, const Notes &notes, const Progress &progress)
{
    refuseUnmatched(plan);
    progress.report(30, "Building the geography...");

    ImportReport report;
    report.geography = buildGeography(plan, progress.part(30, 60));
    releaseFreeMemory();
    try {
        report.objects = plan.objects.size();
        report.unmatched = plan.unmatched;
        for (int object = 0; object < plan.objects.size(); ++object) {
            const RowSpan rows = plan.objects.rows(object);
            const auto shapes = std::count_if(rows.begin(), rows.end(), [&plan](int row) {
                return !plan.map.shapes->isEmpty(row);
            });
            report.shapes += static_cast<int>(shapes);
            if (shapes == 0)
                report.withoutShape.append(plan.objects.key(object));
        }
        if (plan.map.shapeKind == ShapeKind::Polygons)
            report.nearVertices = countNearVertices(*plan.map.shapes, plan.options.snap);
        releaseFreeMemory();
        progress.report(60, "Filling the datasets...");
        report.datasets = buildDatasets(plan, report.geography, notes, progress.part(60, 100));
    } catch (...) {
        controller().RemoveGeography(report.geography);
        throw;
    }
    releaseFreeMemory(); // saving needs memory as well
    tell(plan, report, notes);
    return report;
}

} // namespace

ImportReport importMap(const ImportOptions &options, const Notes &notes, const Progress &progress)
{
    requireSnap(options);
    progress.report(0, "Reading files...");
    return build(makePlan(options, notes, progress.part(0, 30)), notes, progress);
}

ImportReport importMap(const FeatureTable &map, const ImportOptions &options, const Notes &notes,
                       const Progress &progress)
{
    requireSnap(options);
    return build(makePlan(map, options, notes), notes, progress);
}

} // namespace meridor
