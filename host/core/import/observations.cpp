// SPDX-License-Identifier: MIT
#include "core/import/observations.h"
#include <algorithm>
#include "core/project/failure.h"

namespace meridor {
namespace {

class ObservationReader {
public:
    ObservationReader(const ImportPlan &plan, const ObservationSpec &spec)
        : mPlan(plan), mTable(plan.observations), mSpec(spec), mStarts(mTable.columns[spec.start])
    {
    }

    QVector<QVector<Observation>> read() const
    {
        QVector<QVector<Observation>> observations(mPlan.objects.size());
        const Column &keys = mTable.columns[mPlan.observationKey];
        for (int row = 0; row < mTable.rows; ++row) {
            const int object = mPlan.objects.find(keys.view(row));
            if (object < 0)
                continue;
            if (mStarts.isMissing(row))
                fail(QStringLiteral("%1: no time").arg(place(mTable, mStarts, row)));
            const Observation one{row, span(row)};
            observations[object].append(one);
        }
        for (int object = 0; object < observations.size(); ++object)
            arrange(observations[object], object);
        return observations;
    }

private:
    Interval span(int row) const
    {
        const QString start = mStarts.text(row);
        if (mSpec.end < 0 || mTable.columns[mSpec.end].isMissing(row))
            return *mPlan.axis.span(start);
        const Column &ends = mTable.columns[mSpec.end];
        const auto both = mPlan.axis.span(start, ends.text(row));
        if (!both)
            fail(QStringLiteral("%1: the end lies before the start").arg(place(mTable, ends, row)));
        return *both;
    }

    void arrange(QVector<Observation> &own, int object) const
    {
        std::stable_sort(own.begin(), own.end(), [](const Observation &a, const Observation &b) {
            return a.when.startTime < b.when.startTime;
        });
        if (mSpec.end == ObservationSpec::kUntilNext)
            endWithTheNext(own);
        // Rows with a missing value are dropped only now, since they end the value before them.
        const Column &values = mTable.columns[mSpec.value];
        own.erase(
            std::remove_if(own.begin(), own.end(),
                           [&values](const Observation &one) { return values.isMissing(one.row); }),
            own.end());
        for (int i = 1; i < own.size(); ++i)
            if (TimeStamp(own[i - 1].when).overlaps(TimeStamp(own[i].when)))
                fail(QStringLiteral("%1: object %2 has two values of %3 at %4")
                         .arg(mTable.file, mPlan.objects.key(object), mSpec.name,
                              mPlan.axis.show(own[i].when.startTime)));
    }

    static void endWithTheNext(QVector<Observation> &own)
    {
        for (int i = 0; i < own.size(); ++i) {
            Interval &when = own[i].when;
            when.endTime = i + 1 < own.size() ? own[i + 1].when.startTime : when.startTime;
            when.inclusiveEnd = when.endTime == when.startTime;
        }
    }

    const ImportPlan &mPlan;
    const FeatureTable &mTable;
    const ObservationSpec &mSpec;
    const Column &mStarts;
};

} // namespace

QVector<QVector<Observation>> observationsOf(const ImportPlan &plan, const ObservationSpec &spec)
{
    return ObservationReader(plan, spec).read();
}

} // namespace meridor
