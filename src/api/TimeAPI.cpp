// SPDX-License-Identifier: MIT
#include "datainterface/TimeAPI.h"
#include <QDate>
#include <QDateTime>
#include <QTime>
#include <utility>
#include "Common/detail/failure.h"
#include "time/calendar.h"
#include "time/sweeps.h"

using datainterface::require;
using datainterface::SweepRules;

namespace {

constexpr char kDateFormat[] = "d MMM yyyy";
constexpr char kTimeFormat[] = "hh:mm:ss";
constexpr SweepRules kIntervalRules{"TimeAPI.cpp", "Invalid time stamp containment", false, false};

void put(int *component, int value)
{
    if (component)
        *component = value;
}

void putDate(const QDate &date, int *year, int *month, int *day)
{
    put(year, date.year());
    put(month, date.month());
    put(day, date.day());
}

void putTime(const QTime &time, int *hour, int *minute, int *second)
{
    put(hour, time.hour());
    put(minute, time.minute());
    put(second, time.second());
}

} // namespace

Interval VORN_IntersectIntervals(const Interval &a, const Interval &b)
{
    return datainterface::intersection(a, b);
}

QVector<Interval> VORN_IntervalIntersection(const QVector<Interval> &ts1,
                                            const QVector<Interval> &ts2, bool emptyIfEitherEmpty)
{
    if (ts1.isEmpty() || ts2.isEmpty()) {
        if (emptyIfEitherEmpty)
            return {};
        return ts1.isEmpty() ? ts2 : ts1;
    }
    for (const Interval &interval : ts1)
        require(interval.startTime <= interval.endTime, "ts1[i].startTime <= ts1[i].endTime");
    for (const Interval &interval : ts2)
        require(interval.startTime <= interval.endTime, "ts2[i].startTime <= ts2[i].endTime");
    return datainterface::sweepDepth(ts1, ts2, 2, kIntervalRules);
}

QVector<Interval> VORN_IntervalUnion(const QVector<Interval> &ts1, const QVector<Interval> &ts2)
{
    return datainterface::sweepDepth(ts1, ts2, 1, kIntervalRules);
}

QVector<Interval> VORN_IntervalDifference(const QVector<Interval> &ts1,
                                          const QVector<Interval> &ts2)
{
    return datainterface::sweepDifference(ts1, ts2, kIntervalRules);
}

QVector<Interval> VORN_MergeIntervals(const QVector<Interval> &ts1, const QVector<Interval> &ts2)
{
    datainterface::TimeBoundaries boundaries;
    boundaries.reserve(2 * (static_cast<size_t>(ts1.size()) + static_cast<size_t>(ts2.size())));
    datainterface::appendBoundaries(boundaries, ts1, 0, true);
    datainterface::appendBoundaries(boundaries, ts2, 0, true);
    return datainterface::refine<QVector<Interval>>(std::move(boundaries), kIntervalRules.file);
}

qint64 VORN_ConstructTime(TimeFormat format, int a, int b, int c, int d, int e, int f)
{
    switch (format) {
    case TF_Date:
        return QDate::isValid(a, b, c) ? datainterface::ConvertFromDate(QDate(a, b, c)) : -1;
    case TF_Time:
        return QTime::isValid(a, b, c, 0) ? datainterface::ConvertFromTime(QTime(a, b, c)) : -1;
    case TF_DateTime:
        if (!QDate::isValid(a, b, c) || !QTime::isValid(d, e, f, 0))
            return -1;
        return datainterface::ConvertFromDateTime(QDate(a, b, c), QTime(d, e, f));
    case TF_Integer:
        return a;
    }
    return -1;
}

bool VORN_GetTimeComponents(qint64 t, TimeFormat format, int *a, int *b, int *c, int *d, int *e,
                            int *f)
{
    switch (format) {
    case TF_Date: {
        const QDate date = datainterface::ConvertToDate(t);
        if (!date.isValid())
            return false;
        putDate(date, a, b, c);
        return true;
    }
    case TF_Time: {
        const QTime time = datainterface::ConvertToTime(t);
        if (!time.isValid())
            return false;
        putTime(time, a, b, c);
        return true;
    }
    case TF_DateTime: {
        const QDateTime dateTime = datainterface::ConvertToDateTime(t);
        if (!dateTime.isValid())
            return false;
        putDate(dateTime.date(), a, b, c);
        putTime(dateTime.time(), d, e, f);
        return true;
    }
    case TF_Integer:
        put(a, static_cast<int>(static_cast<quint32>(t)));
        return true;
    }
    return false;
}

qint64 VORN_UpdateTime(TimeFormat format, const TimeStep &step, qint64 t)
{
    return datainterface::IncrementTime(format, step, t);
}

QString VORN_GetDateTime()
{
    return datainterface::presentMoment();
}

bool VORN_GetTimeString(TimeFormat format, qint64 t, QString &text)
{
    text = datainterface::TimeToString(t, format, kDateFormat, kTimeFormat);
    return true;
}

bool VORN_GetIntervalString(TimeFormat format, const Interval &interval, QString &text)
{
    text = datainterface::IntervalToString(interval, format, kDateFormat, kTimeFormat);
    return true;
}
