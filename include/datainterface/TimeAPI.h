// SPDX-License-Identifier: MIT
/// Public functions for time: intervals, calendar components, and the texts that are shown to the
/// user.
#pragma once
#include <QString>
#include <QVector>
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/export.h"

/// The intersection of `a` and `b`. Its ends are crossed when they are disjoint.
DATAINTERFACE_EXPORT Interval VORN_IntersectIntervals(const Interval &a, const Interval &b);

/// The time that both lists cover. Intervals of one list must not overlap ("Invalid time stamp
/// containment") and must not have crossed ends. Unless `emptyIfEitherEmpty` is set, an empty list
/// means no restriction and the result is the other list. O(n log n).
DATAINTERFACE_EXPORT QVector<Interval> VORN_IntervalIntersection(const QVector<Interval> &ts1,
                                                                 const QVector<Interval> &ts2,
                                                                 bool emptyIfEitherEmpty);
/// The time that at least one list covers. Intervals of one list must not overlap. Pieces that only
/// touch are not joined. O(n log n).
DATAINTERFACE_EXPORT QVector<Interval> VORN_IntervalUnion(const QVector<Interval> &ts1,
                                                          const QVector<Interval> &ts2);
/// The time that `ts1` covers and `ts2` does not. O(n log n).
DATAINTERFACE_EXPORT QVector<Interval> VORN_IntervalDifference(const QVector<Interval> &ts1,
                                                               const QVector<Interval> &ts2);
/// The common refinement: disjoint pieces in order of time, cut at every boundary of either list.
/// O(n log n).
DATAINTERFACE_EXPORT QVector<Interval> VORN_MergeIntervals(const QVector<Interval> &ts1,
                                                           const QVector<Interval> &ts2);

/// A time value from its components: year, month, day (TF_Date); hour, minute, second (TF_Time);
/// all six (TF_DateTime); the number itself in `a` (TF_Integer). -1 for components outside the
/// calendar, which is also the value of the second before the epoch.
DATAINTERFACE_EXPORT qint64 VORN_ConstructTime(TimeFormat format, int a, int b, int c, int d, int e,
                                               int f);
/// The components of a time value, in the order of VORN_ConstructTime. `a` is required, the others
/// may be null. False when the time has no valid components: a time of day never has any (see
/// MGeoData::ConvertToTime).
DATAINTERFACE_EXPORT bool VORN_GetTimeComponents(qint64 t, TimeFormat format, int *a, int *b,
                                                 int *c, int *d, int *e, int *f);
/// The time one step later (see MGeoData::IncrementTime).
DATAINTERFACE_EXPORT qint64 VORN_UpdateTime(TimeFormat format, const TimeStep &step, qint64 t);
/// The local date and time as "d MMM yyyy hh:mm:ss".
DATAINTERFACE_EXPORT QString VORN_GetDateTime();
/// A time value as "d MMM yyyy" and "hh:mm:ss". Always true.
DATAINTERFACE_EXPORT bool VORN_GetTimeString(TimeFormat format, qint64 t, QString &text);
/// Both ends, in brackets that show which end is included: "[1 Jan 2000, 5 Jan 2000)". Always true.
DATAINTERFACE_EXPORT bool VORN_GetIntervalString(TimeFormat format, const Interval &interval,
                                                 QString &text);
/// The text of a step in the time format of a geography; false when the id is unknown.
DATAINTERFACE_EXPORT bool VORN_GetTimeStepString(int geographyId, const TimeStep &step,
                                                 QString &text);

/// The widest interval around `t` over which nothing changes in the datasets and their vector
/// geographies. False when an id is unknown or there are no data at `t`; `interval` then holds the
/// intersection up to that id.
DATAINTERFACE_EXPORT bool VORN_GetNoChangeInterval(const QVector<int> &dataIds, qint64 t,
                                                   Interval &interval);
/// The widest interval around `t` over which the objects of a vector geography do not change. False
/// when there is none or the id is not of a vector geography.
DATAINTERFACE_EXPORT bool VORN_GetStaticObjectInterval(int geographyId, qint64 t,
                                                       Interval &interval);
