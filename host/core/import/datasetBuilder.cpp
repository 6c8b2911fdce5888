// SPDX-License-Identifier: MIT
#include "core/import/datasetBuilder.h"
#include <QPair>
#include <QSet>
#include <algorithm>
#include <vector>
#include "core/import/cells.h"
#include "core/import/observations.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/DataTypeVisitor.h"
#include "datainterface/MDataSource.h"
#include "datainterface/MDataset.h"
#include "datainterface/MGeoData.h"

namespace meridor {
namespace {

using datainterface::ElementOf;
using datainterface::visitElement;

DataType dataType(ValueKind kind)
{
    switch (kind) {
    case ValueKind::Integer:
        return IntegerType;
    case ValueKind::Decimal:
        return DecimalType;
    default:
        return StringType;
    }
}

class DatasetBuilder {
public:
    DatasetBuilder(const ImportPlan &plan, int geography, const Notes &notes,
                   const std::function<void(int)> &progress)
        : mPlan(plan), mGeography(geography), mNotes(notes), mProgress(progress)
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

    void stepDone() { mProgress(static_cast<int>(100LL * qMin(++mDone, mSteps) / mSteps)); }

    int create(const QString &name, StorageType storage, ValueKind kind)
    {
        const int id =
            VORN_NewVectorDataset(mGeography, name, storage, dataType(kind), 1, QString());
        if (id < 0)
            fail(QStringLiteral("dataset %1 could not be made").arg(name));
        mIds.append(id);
        return id;
    }

    /// Makes the dataset static, with one slice of values.
    template <class T> void fillStatic(int id, const QVector<T> &values, const QSet<int> &missing)
    {
        datasetOf(id)->SetStatic(true);
        addSlice(id, Interval{0, 0, true, true}, values, missing);
    }

    void addKey()
    {
        const CellColumn keys{&mPlan.map, mPlan.keyColumn};
        ValueKind kind = kindOfDataset(mPlan, mPlan.options.key, {keys}, false, mNotes);
        if (kind != ValueKind::Text && !areDistinct(keys)) {
            for (const QString &type : mPlan.options.types)
                if (type.section(QLatin1Char('='), 0, 0) == mPlan.options.key)
                    fail(QStringLiteral("%1, field %2: different keys are one number")
                             .arg(mPlan.map.file, mPlan.options.key),
                         "type");
            kind = ValueKind::Text;
        }
        const int id = create(mPlan.options.key, TimeSlice, kind);
        visitElement(dataType(kind), [&](auto element) {
            using T = ElementOf<decltype(element)>;
            QVector<T> values(objectCount());
            for (int i = 0; i < objectCount(); ++i)
                values[i] = valueOf<T>(keys, mPlan.objects.rows(i).front());
            fillStatic(id, values, {});
        });
        finish(id);
        setKeyDataset(mGeography, id);
        stepDone();
    }

    /// Whether keys that are different texts, such as 1 and 1.0, are different numbers.
    bool areDistinct(const CellColumn &keys) const
    {
        std::vector<double> numbers;
        numbers.reserve(static_cast<size_t>(objectCount()));
        for (int i = 0; i < objectCount(); ++i)
            numbers.push_back(valueOf<double>(keys, mPlan.objects.rows(i).front()));
        std::sort(numbers.begin(), numbers.end());
        return std::adjacent_find(numbers.begin(), numbers.end()) == numbers.end();
    }

    /// True if all rows of each object have the same value.
    bool isConstant(const Column &column) const
    {
        if (objectCount() == mPlan.map.rows)
            return true;
        for (int i = 0; i < objectCount(); ++i) {
            const RowSpan rows = mPlan.objects.rows(i);
            if (!std::all_of(rows.begin(), rows.end(),
                             [&](int row) { return column.same(row, rows.front()); }))
                return false;
        }
        return true;
    }

    void addAttribute(int index)
    {
        const CellColumn column{&mPlan.map, index};
        const ValueKind kind = kindOfDataset(mPlan, column.cells().name, {column}, false, mNotes);
        const bool constant = isConstant(column.cells());
        const int id = create(column.cells().name, constant ? TimeSlice : TimeSeries, kind);
        visitElement(dataType(kind), [&](auto element) {
            using T = ElementOf<decltype(element)>;
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
            const int row = mPlan.objects.rows(i).front();
            if (column.cells().isMissing(row))
                missing.insert(i);
            else
                values[i] = valueOf<T>(column, row);
        }
        fillStatic(id, values, missing);
    }

    /// Stores a series per object, in which each value has the span of its row's shape.
    template <class T> void fillByShape(int id, const CellColumn &column)
    {
        for (int i = 0; i < objectCount(); ++i) {
            QVector<QPair<Interval, T>> values;
            for (const int row : mPlan.objects.rows(i))
                if (!column.cells().isMissing(row))
                    values.append(qMakePair(mPlan.spanOf(row), valueOf<T>(column, row)));
            addSeriesOf(id, i, values);
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
            const auto when = step.end.isEmpty() ? mPlan.axis.span(step.start)
                                                 : mPlan.axis.span(step.start, step.end);
            result.append({step.column, *when});
        }
        std::stable_sort(result.begin(), result.end(), [](const Slice &a, const Slice &b) {
            return a.when.startTime < b.when.startTime;
        });
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
        const ValueKind kind = kindOfDataset(mPlan, spec.name, columns, true, mNotes);
        const int id = create(spec.name, TimeSlice, kind);
        for (const Slice &slice : slices(spec)) {
            visitElement(dataType(kind), [&](auto element) {
                fillSlice<ElementOf<decltype(element)>>(id, {&mPlan.map, slice.column}, slice.when);
            });
            stepDone();
        }
        finish(id);
    }

    template <class T> void fillSlice(int id, const CellColumn &column, const Interval &when)
    {
        QVector<T> values(objectCount());
        QSet<int> missing;
        for (int i = 0; i < objectCount(); ++i) {
            const int row = rowOfValue(column, i);
            if (row < 0)
                missing.insert(i);
            else
                values[i] = valueOf<T>(column, row);
        }
        addSlice(id, when, values, missing);
    }

    /// A row of the object that has a value in a column; -1 if there is none. Raises a Failure if
    /// the values of its rows differ.
    int rowOfValue(const CellColumn &column, int object) const
    {
        int found = -1;
        for (const int row : mPlan.objects.rows(object)) {
            const Column &cells = column.cells();
            if (cells.isMissing(row))
                continue;
            if (found >= 0 && !cells.same(found, row))
                fail(QStringLiteral("%1: object %2 has %3 here and %4 in row %5")
                         .arg(column.place(row), mPlan.objects.key(object), cells.text(row),
                              cells.text(found), QString::number(found + 1)));
            found = row;
        }
        return found;
    }

    void addObservations(const ObservationSpec &spec)
    {
        const CellColumn column{&mPlan.observations, spec.value};
        const ValueKind kind = kindOfDataset(mPlan, spec.name, {column}, true, mNotes);
        const int id = create(spec.name, TimeSeries, kind);
        const auto observations = observationsOf(mPlan, spec);
        visitElement(dataType(kind), [&](auto element) {
            using T = ElementOf<decltype(element)>;
            for (int i = 0; i < objectCount(); ++i) {
                QVector<QPair<Interval, T>> values;
                for (const Observation &observation : observations[i])
                    values.append(qMakePair(observation.when, valueOf<T>(column, observation.row)));
                addSeriesOf(id, i, values);
            }
        });
        finish(id);
        stepDone();
    }

    template <class T>
    void addSlice(int id, const Interval &when, const QVector<T> &values, const QSet<int> &missing)
    {
        if (missing.size() < values.size())
            requireStored(id, VORN_AddDataValues(id, 0, when, values, missing, true, false));
    }

    template <class T>
    void addSeriesOf(int id, int object, const QVector<QPair<Interval, T>> &values)
    {
        if (!values.isEmpty())
            requireStored(id, VORN_AddDataValues(id, 0, static_cast<unsigned int>(object), values,
                                                 true, false));
    }

    static void requireStored(int id, bool stored)
    {
        if (!stored)
            fail(QStringLiteral("dataset %1 does not take its values").arg(datasetName(id)));
    }

    void finish(int id)
    {
        VORN_RecalculateDataFrequencies(id);
        VORN_NewDatasetCreated(id);
    }

    const ImportPlan &mPlan;
    int mGeography;
    const Notes &mNotes;
    const std::function<void(int)> &mProgress;
    QVector<int> mIds;
    int mSteps = 0;
    int mDone = 0;
};

} // namespace

QVector<int> buildDatasets(const ImportPlan &plan, int geography, const Notes &notes,
                           const std::function<void(int)> &progress)
{
    const QVector<int> ids = DatasetBuilder(plan, geography, notes, progress).build();
    if (!plan.timed)
        geographyOf(geography)->SetStatic(true);
    return ids;
}

} // namespace meridor
