// SPDX-License-Identifier: MIT
#include "core/analysis/tables.h"
#include "core/formats/textTable.h"
#include "core/project/catalog.h"
#include "core/project/outputFile.h"
#include "core/project/progress.h"
#include "core/project/shapeAccess.h"
#include "datainterface/MDataset.h"

namespace meridor {
namespace {

WrittenTable describe(const ValueRows &rows)
{
    WrittenTable written;
    written.datasets = rows.datasets();
    for (const TableColumn &column : rows.columns())
        written.columns.append(column.name);
    return written;
}

/// Writes the rows once or, to measure them first, twice.
class Passes {
public:
    explicit Passes(const ValueRows &rows) : mRows(rows), mBar("Export", "Writing the values...") {}
    qint64 count() const { return mCount; }
    void operator()(TableSink &sink) { mCount = mRows.pass(sink, mBar.part(0, 100)); }

private:
    const ValueRows &mRows;
    const Progress mBar;
    qint64 mCount = 0;
};

} // namespace

WrittenTable exportTable(const QString &path, TableFormat format, const RowPlan &plan,
                         const QString &missing, const std::function<void(const QString &)> &note)
{
    const ValueRows rows(plan);
    WrittenTable written = describe(rows);
    Passes pass(rows);
    if (format == TableFormat::Dbf) {
        FeatureTarget target;
        target.path = path;
        target.format = FeatureFormat::Dbf;
        target.layer = geographyName(plan.geography);
        writeFeatures(target, std::ref(pass), note);
    } else {
        writeOutput(path, [&](QIODevice &device) {
            CsvSink csv(device, path, missing);
            GeoEasSink geoEas(device, path, missing, geographyName(plan.geography));
            pass(format == TableFormat::Csv ? csv : geoEas);
        });
    }
    written.rows = pass.count();
    return written;
}

WrittenTable exportShapes(FeatureTarget target, RowPlan plan,
                          const std::function<void(const QString &)> &note)
{
    plan.shapes = true;
    const ValueRows rows(plan);
    WrittenTable written = describe(rows);
    target.kind = rows.shapeKind();
    target.projection = projectionText(plan.geography);
    if (target.layer.isEmpty())
        target.layer = geographyName(plan.geography);
    Passes pass(rows);
    writeFeatures(target, std::ref(pass), note);
    written.rows = pass.count();
    return written;
}

QPair<qint64, qint64> timesOf(const QVector<int> &datasets)
{
    bool any = false;
    QPair<qint64, qint64> hull(0, 0);
    for (const int id : datasets) {
        TimeStamp bounds;
        if (datasetOf(id)->IsStatic() || !datasetOf(id)->GetTimeBounds(bounds))
            continue;
        const qint64 last = lastInstantOf(bounds);
        hull = {any ? qMin(hull.first, bounds.startTime) : bounds.startTime,
                any ? qMax(hull.second, last) : last};
        any = true;
    }
    return hull;
}

} // namespace meridor
