// SPDX-License-Identifier: MIT
#include "core/import/timeline.h"
#include <QSet>
#include <algorithm>
#include "core/project/failure.h"

namespace meridor {
namespace {

constexpr Interval kNoTime{std::numeric_limits<qint64>::max(), std::numeric_limits<qint64>::min(),
                           true, true};

bool isEmpty(const Interval &interval)
{
    return interval.endTime < interval.startTime;
}

void widen(Interval &hull, const Interval &by)
{
    if (by.startTime < hull.startTime)
        hull.startTime = by.startTime;
    if (by.endTime > hull.endTime || (by.endTime == hull.endTime && by.inclusiveEnd)) {
        hull.endTime = by.endTime;
        hull.inclusiveEnd = by.inclusiveEnd;
    }
}

/// A column of times and its table.
struct TimeColumn {
    const FeatureTable *table;
    int column;
};

class Timeline {
public:
    explicit Timeline(ImportPlan &plan) : mPlan(plan), mHull(kNoTime)
    {
        const QString &end = plan.options.end;
        mUntilNext = end == QLatin1String("next") && plan.map.indexOf(end) < 0;
        mStart = plan.options.start.isEmpty() ? -1 : requireColumn(plan.map, plan.options.start);
        mEnd = end.isEmpty() || mUntilNext ? -1 : requireColumn(plan.map, end);
        if (mUntilNext && mStart < 0)
            failUsage(QStringLiteral("an end \"next\" needs a field of the start"), "start");
    }

    void resolve()
    {
        if (!mPlan.options.timePattern.isEmpty())
            translate();
        mPlan.timed =
            mStart >= 0 || mEnd >= 0 || !mPlan.series.isEmpty() || !mPlan.observed.isEmpty();
        chooseFormat();
        gatherHull();
        if (mPlan.timed)
            mPlan.rowSpans.resize(mPlan.map.rows);
        for (int object = 0; object < mPlan.objects.size(); ++object)
            resolve(object);
    }

private:
    QVector<TimeColumn> timeColumns() const
    {
        QVector<TimeColumn> columns;
        for (const int column : {mStart, mEnd})
            if (column >= 0)
                columns.append({&mPlan.map, column});
        for (const ObservationSpec &spec : mPlan.observed)
            for (const int column : {spec.start, spec.end})
                if (column >= 0)
                    columns.append({&mPlan.observations, column});
        return columns;
    }

    /// Translates the time columns from options.timePattern. Times in options are never translated.
    void translate()
    {
        const QString &pattern = mPlan.options.timePattern;
        for (FeatureTable *table : {&mPlan.map, &mPlan.observations}) {
            QSet<int> columns;
            for (const TimeColumn &time : timeColumns())
                if (time.table == table)
                    columns.insert(time.column);
            for (const int column : columns) {
                Column &old = table->columns[column];
                const auto cells = std::make_shared<Cells>(table->spool);
                for (int row = 0; row < table->rows; ++row) {
                    const QString time = old.text(row);
                    const QString text = isoTime(time, pattern);
                    if (text.isNull() && !time.isNull())
                        fail(QStringLiteral("%1: \"%2\" is not like %3")
                                 .arg(place(*table, old, row), time, pattern),
                             "time-format");
                    const QByteArray utf8 = text.toUtf8();
                    cells->append({utf8.constData(), static_cast<size_t>(utf8.size())});
                }
                old.cells = cells;
                old.fileRow.clear();
            }
        }
    }

    void chooseFormat()
    {
        if (mPlan.options.times == QLatin1String("auto")) {
            QSet<QString> texts;
            for (const TimeColumn &time : timeColumns())
                for (int row = 0; row < time.table->rows; ++row)
                    if (const QString cell = time.table->columns[time.column].text(row);
                        !cell.isNull())
                        texts.insert(cell);
            for (const SeriesSpec &spec : mPlan.series)
                for (const SeriesStep &step : spec.steps)
                    for (const QString &text : {step.start, step.end})
                        if (!text.isEmpty())
                            texts.insert(text);
            // A text that is no time is reported by span(), where its row is known.
            mPlan.axis = TimeAxis(recogniseTimes(texts.values()).value_or(formatOfTheRest(texts)));
        } else {
            for (const TimeFormat format : {TF_Date, TF_DateTime, TF_Time, TF_Integer})
                if (mPlan.options.times == QLatin1String(timeFormatName(format)))
                    mPlan.axis = TimeAxis(format);
        }
    }

    static TimeFormat formatOfTheRest(const QSet<QString> &texts)
    {
        QStringList good;
        for (const QString &text : texts)
            if (recogniseTimes({text}))
                good.append(text);
        return recogniseTimes(good).value_or(TF_Integer);
    }

    Interval span(const FeatureTable &table, int column, int row) const
    {
        const Column &cells = table.columns[column];
        const auto result = mPlan.axis.span(cells.text(row));
        if (!result)
            fail(QStringLiteral("%1: \"%2\" is no %3")
                     .arg(place(table, cells, row), cells.text(row),
                          QLatin1String(timeFormatName(mPlan.axis.format()))),
                 "time-format");
        return *result;
    }

    void gatherHull()
    {
        for (const TimeColumn &time : timeColumns())
            for (int row = 0; row < time.table->rows; ++row)
                if (!time.table->columns[time.column].isMissing(row))
                    widen(mHull, span(*time.table, time.column, row));
        for (const SeriesSpec &spec : mPlan.series)
            for (const SeriesStep &step : spec.steps) {
                const auto interval = step.end.isEmpty() ? mPlan.axis.span(step.start)
                                                         : mPlan.axis.span(step.start, step.end);
                if (!interval)
                    fail(QStringLiteral("series %1, field %2: \"%3%4\" is no %5")
                             .arg(spec.name, mPlan.map.columns[step.column].name, step.start,
                                  step.end.isEmpty() ? QString()
                                                     : QString(QLatin1Char('/') + step.end),
                                  QLatin1String(timeFormatName(mPlan.axis.format()))));
                widen(mHull, *interval);
            }
        if (isEmpty(mHull))
            mHull = {0, 0, true, true};
        mPlan.hull = mHull;
    }

    /// The span of a row by its own start and end; a missing one is that of the hull.
    Interval ownSpan(int row) const
    {
        const Column *starts = mStart < 0 ? nullptr : &mPlan.map.columns[mStart];
        const Column *ends = mEnd < 0 ? nullptr : &mPlan.map.columns[mEnd];
        const bool hasStart = starts && !starts->isMissing(row);
        const bool hasEnd = ends && !ends->isMissing(row);
        if (hasStart && hasEnd) {
            span(mPlan.map, mStart, row);
            span(mPlan.map, mEnd, row);
            const auto both = mPlan.axis.span(starts->text(row), ends->text(row));
            if (!both)
                fail(QStringLiteral("%1: the end %2 lies before the start %3")
                         .arg(place(mPlan.map, *ends, row), ends->text(row), starts->text(row)));
            return *both;
        }
        Interval result = mHull;
        if (hasStart)
            result.startTime = span(mPlan.map, mStart, row).startTime;
        if (hasEnd) {
            const Interval end = span(mPlan.map, mEnd, row);
            result.endTime = end.endTime;
            result.inclusiveEnd = end.inclusiveEnd && !mPlan.axis.countsSeconds();
        }
        if (result.startTime == result.endTime)
            result.inclusiveEnd = true;
        return result;
    }

    void resolve(int object)
    {
        auto &spans = mPlan.rowSpans;
        const RowSpan rows = mPlan.objects.rows(object);
        for (const int row : rows)
            if (mPlan.timed)
                spans[row] = ownSpan(row);
        if (!mPlan.timed && rows.size() > 1)
            failTwice(object, rows[0], rows[1]);
        mPlan.objects.sort(
            object, [&spans](int a, int b) { return spans[a].startTime < spans[b].startTime; });
        if (mUntilNext)
            endWithTheNext(rows);
        for (int i = 1; i < rows.size(); ++i)
            if (!mPlan.axis.giveWay(spans[rows[i - 1]], spans[rows[i]]))
                failTwice(object, rows[i - 1], rows[i]);
    }

    void endWithTheNext(const RowSpan &rows)
    {
        auto &spans = mPlan.rowSpans;
        for (int i = 0; i < rows.size(); ++i) {
            Interval &own = spans[rows[i]];
            const bool last = i + 1 == rows.size();
            own.endTime = last ? own.startTime : spans[rows[i + 1]].startTime;
            own.inclusiveEnd = own.endTime == own.startTime;
        }
    }

    [[noreturn]] void failTwice(int object, int earlier, int later) const
    {
        fail(QStringLiteral("%1, rows %2 and %3: object %4 has two shapes at one time; "
                            "fields of start and end tell when each holds")
                 .arg(mPlan.map.file, QString::number(qMin(earlier, later) + 1),
                      QString::number(qMax(earlier, later) + 1), mPlan.objects.key(object)),
             "start");
    }

    ImportPlan &mPlan;
    Interval mHull;
    int mStart = -1;
    int mEnd = -1;
    bool mUntilNext = false;
};

} // namespace

void resolveTimes(ImportPlan &plan)
{
    Timeline(plan).resolve();
}

} // namespace meridor
