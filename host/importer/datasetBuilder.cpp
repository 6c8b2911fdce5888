// SPDX-License-Identifier: MIT
#include "importer/datasetBuilder.h"
#include <QPair>
#include <QSet>
#include <algorithm>
#include "datainterface/DataAPI.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"
#include "failure.h"
#include "importer/cells.h"
#include "model.h"

namespace meridor {
namespace {

DataType dataType(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Integer: return IntegerType;
    case ValueKind::Decimal: return DecimalType;
    default: return StringType;
    }
}

/// Calls with a value of the type that holds a kind.
template <class Visit> void visitKind(ValueKind kind, Visit visit)
{
    switch (kind) {
    case ValueKind::Integer: visit(int()); break;
    case ValueKind::Decimal: visit(double()); break;
    case ValueKind::Text: visit(QString()); break;
    }
}

class DatasetBuilder {
public:
    DatasetBuilder(const ImportPlan &plan, int geography, const std::function<void(int)> &progress)
        : mPlan(plan), mGeography(geography), mProgress(progress)
    {
        mSteps = 1 + plan.attributes.size() + plan.observed.size();
        for (const SeriesSpec &spec : plan.series)
            mSteps += spec.steps.size();
    }

    QVector<int> build()
    {
        if (mPlan.keyColumn >= 0)
            addKey();
        for (const int column : mPlan.attributes)
            addAttribute(column);
        for (const SeriesSpec &spec : mPlan.series)
            addSeries(spec);
        for (const ObservationSpec &spec : mPlan.observed)
            addObservations(spec);
        return mIds;
    }

private:
    int objectCount() const { return mPlan.objects.size(); }

    void stepDone()
    {
        mProgress(static_cast<int>(100LL * qMin(++mDone, mSteps) / mSteps));
    }

    int create(const QString &name, StorageType storage, ValueKind kind)
    {
        const int id = VORN_NewVectorDataset(mGeography, name, storage, dataType(kind), 1, QString());
        if (id < 0)
            fail(QStringLiteral("dataset %1 could not be made").arg(name));
        mIds.append(id);
        return id;
    }

    /// Values that do not depend on time: one slice for good.
    template <class T> void fillStatic(int id, const QVector<T> &values, const QSet<int> &missing)
    {
        datasetOf(id)->SetStatic(true);
        if (missing.size() < values.size())
            VORN_AddDataValues(id, 0, Interval{0, 0, true, true}, values, missing, true, false);
    }

    void addKey()
    {
        const CellColumn keys{&mPlan.map, mPlan.keyColumn};
        const ValueKind kind = kindOfDataset(mPlan, mPlan.options.key, {keys}, false);
        const int id = create(mPlan.options.key, TimeSlice, kind);
        visitKind(kind, [&](auto type) {
            QVector<decltype(type)> values;
            for (const ObjectRows &object : mPlan.objects)
                values.append(valueOf<decltype(type)>(keys, object.rows.first()));
            fillStatic(id, values, {});
        });
        finish(id);
        setKeyDataset(mGeography, id);
        stepDone();
    }

    /// True when every object has one value for good, whatever its number of shapes.
    bool isConstant(const Column &column) const
    {
        return std::all_of(mPlan.objects.begin(), mPlan.objects.end(), [&](const ObjectRows &object) {
            return std::all_of(object.rows.begin(), object.rows.end(),
                               [&](int row) { return column.cells.same(row, object.rows.first()); });
        });
    }

    void addAttribute(int index)
    {
        const CellColumn column{&mPlan.map, index};
        const ValueKind kind = kindOfDataset(mPlan, column.cells().name, {column}, false);
        const bool constant = isConstant(column.cells());
        const int id = create(column.cells().name, constant ? TimeSlice : TimeSeries, kind);
        visitKind(kind, [&](auto type) {
            using T = decltype(type);
            if (constant)
                fillConstant<T>(id, column);
            else
                fillByShape<T>(id, column);
        });
        finish(id);
        stepDone();
    }

    template <class T> void fillConstant(int id, const CellColumn &column)
    {
        QVector<T> values(objectCount());
        QSet<int> missing;
        for (int i = 0; i < objectCount(); ++i) {
            const int row = mPlan.objects[i].rows.first();
            if (column.cells().cells.isMissing(row))
                missing.insert(i);
            else
                values[i] = valueOf<T>(column, row);
        }
        fillStatic(id, values, missing);
    }

    /// A value holds as long as the shape of its row.
    template <class T> void fillByShape(int id, const CellColumn &column)
    {
        for (int i = 0; i < objectCount(); ++i) {
            QVector<QPair<Interval, T>> values;
            for (const int row : mPlan.objects[i].rows)
                if (!column.cells().cells.isMissing(row))
                    values.append(qMakePair(mPlan.rowSpans[row], valueOf<T>(column, row)));
            if (!values.isEmpty())
                VORN_AddDataValues(id, 0, static_cast<unsigned int>(i), values, true, false);
        }
    }

    struct Slice {
        int column;
        Interval when;
    };

    QVector<Slice> slices(const SeriesSpec &spec) const
    {
        QVector<Slice> result;
        for (const SeriesStep &step : spec.steps) {
            const auto when = step.end.isEmpty() ? mPlan.axis.span(step.start) : mPlan.axis.span(step.start, step.end);
            result.append({step.column, *when});
        }
        std::stable_sort(result.begin(), result.end(),
                         [](const Slice &a, const Slice &b) { return a.when.startTime < b.when.startTime; });
        for (int i = 1; i < result.size(); ++i)
            if (TimeStamp(result[i - 1].when).overlaps(TimeStamp(result[i].when)))
                fail(QStringLiteral("series %1: fields %2 and %3 hold at the same time")
                         .arg(spec.name, mPlan.map.columns[result[i - 1].column].name,
                              mPlan.map.columns[result[i].column].name));
        return result;
    }

    void addSeries(const SeriesSpec &spec)
    {
        QVector<CellColumn> columns;
        for (const SeriesStep &step : spec.steps)
            columns.append({&mPlan.map, step.column});
        const ValueKind kind = kindOfDataset(mPlan, spec.name, columns, true);
        const int id = create(spec.name, TimeSlice, kind);
        for (const Slice &slice : slices(spec)) {
            visitKind(kind, [&](auto type) { fillSlice<decltype(type)>(id, {&mPlan.map, slice.column}, slice.when); });
            stepDone();
        }
        finish(id);
    }

    template <class T> void fillSlice(int id, const CellColumn &column, const Interval &when)
    {
        QVector<T> values(objectCount());
        QSet<int> missing;
        for (int i = 0; i < objectCount(); ++i) {
            const int row = rowOfValue(column, mPlan.objects[i]);
            if (row < 0)
                missing.insert(i);
            else
                values[i] = valueOf<T>(column, row);
        }
        if (missing.size() < values.size())
            VORN_AddDataValues(id, 0, when, values, missing, true, false);
    }

    /// The rows of one object must agree on a value of one time.
    int rowOfValue(const CellColumn &column, const ObjectRows &object) const
    {
        int found = -1;
        for (const int row : object.rows) {
            const Cells &cells = column.cells().cells;
            if (cells.isMissing(row))
                continue;
            if (found >= 0 && !cells.same(found, row))
                fail(QStringLiteral("%1: object %2 has %3 here and %4 in row %5")
                         .arg(column.place(row), object.key, cells[row], cells[found]).arg(found + 1));
            found = row;
        }
        return found;
    }

    void addObservations(const ObservationSpec &spec)
    {
        const CellColumn column{&mPlan.observations, spec.value};
        const ValueKind kind = kindOfDataset(mPlan, spec.name, {column}, true);
        const int id = create(spec.name, TimeSeries, kind);
        const QVector<QVector<int>> rows = observationRows(spec);
        visitKind(kind, [&](auto type) {
            using T = decltype(type);
            for (int i = 0; i < objectCount(); ++i) {
                QVector<QPair<Interval, T>> values;
                for (int k = 0; k < rows[i].size(); ++k)
                    if (!column.cells().cells.isMissing(rows[i][k]))
                        values.append(qMakePair(observationSpan(spec, rows[i], k), valueOf<T>(column, rows[i][k])));
                refuseOverlap(spec, rows[i], values);
                if (!values.isEmpty())
                    VORN_AddDataValues(id, 0, static_cast<unsigned int>(i), values, true, false);
            }
        });
        finish(id);
        stepDone();
    }

    /// For each object its rows of the table in the order of time.
    QVector<QVector<int>> observationRows(const ObservationSpec &spec) const
    {
        const FeatureTable &table = mPlan.observations;
        const Column &starts = table.columns[spec.start];
        QVector<QVector<int>> rows(objectCount());
        for (int row = 0; row < table.rows; ++row) {
            const int object = mPlan.objectOf.value(table.columns[mPlan.observationKey].cells[row], -1);
            if (object < 0)
                continue;
            if (starts.cells.isMissing(row))
                fail(QStringLiteral("%1: no time").arg(place(table, starts, row)));
            rows[object].append(row);
        }
        QVector<qint64> times(table.rows);
        for (QVector<int> &own : rows) {
            for (const int row : own)
                times[row] = startOf(spec, row);
            std::stable_sort(own.begin(), own.end(), [&times](int a, int b) { return times[a] < times[b]; });
        }
        return rows;
    }

    qint64 startOf(const ObservationSpec &spec, int row) const
    {
        return mPlan.axis.span(mPlan.observations.columns[spec.start].cells[row])->startTime;
    }

    Interval observationSpan(const ObservationSpec &spec, const QVector<int> &rows, int position) const
    {
        const FeatureTable &table = mPlan.observations;
        const int row = rows[position];
        const QString start = table.columns[spec.start].cells[row];
        if (spec.end == ObservationSpec::kUntilNext) {
            const qint64 from = startOf(spec, row);
            const qint64 to = position + 1 < rows.size() ? startOf(spec, rows[position + 1]) : from;
            return {from, to, true, from == to};
        }
        if (spec.end < 0 || table.columns[spec.end].cells.isMissing(row))
            return *mPlan.axis.span(start);
        const auto span = mPlan.axis.span(start, table.columns[spec.end].cells[row]);
        if (!span)
            fail(QStringLiteral("%1: the end lies before the start").arg(place(table, table.columns[spec.end], row)));
        return *span;
    }

    template <class T>
    void refuseOverlap(const ObservationSpec &spec, const QVector<int> &rows, const QVector<QPair<Interval, T>> &values) const
    {
        for (int k = 1; k < values.size(); ++k)
            if (TimeStamp(values[k - 1].first).overlaps(TimeStamp(values[k].first)))
                fail(QStringLiteral("%1: object %2 has two values of %3 at %4")
                         .arg(mPlan.observations.file,
                              mPlan.observations.columns[mPlan.observationKey].cells[rows.first()], spec.name,
                              mPlan.axis.show(values[k].first.startTime)));
    }

    void finish(int id)
    {
        VORN_RecalculateDataFrequencies(id);
        VORN_NewDatasetCreated(id);
    }

    const ImportPlan &mPlan;
    int mGeography;
    const std::function<void(int)> &mProgress;
    QVector<int> mIds;
    int mSteps = 0;
    int mDone = 0;
};

} // namespace

QVector<int> buildDatasets(const ImportPlan &plan, int geography, const std::function<void(int)> &progress)
{
    const QVector<int> ids = DatasetBuilder(plan, geography, progress).build();
    if (!plan.timed)
        geographyOf(geography)->SetStatic(true);
    return ids;
}

} // namespace meridor
