// SPDX-License-Identifier: MIT
/// The encoding of time values, their steps and their texts: the bodies of MGeoData's calendar
/// functions. The epoch of dates is 14 September 1752.
#pragma once
#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"

namespace datainterface {

/// Seconds from the epoch to the start of the date.
qint64 ConvertFromDate(const QDate &date);
/// Seconds after midnight.
qint64 ConvertFromTime(const QTime &time);
qint64 ConvertFromDateTime(const QDate &date, const QTime &time);
/// Truncates toward the epoch: an instant before it that is not at midnight gives the later day.
QDate ConvertToDate(qint64 t);
/// Always a null time, because seconds are added to a null time, which stays null. Hosts rely on
/// its empty text and on its being invalid.
QTime ConvertToTime(qint64 t);
/// The date with a null time, which QDateTime holds as midnight, in UTC: in the machine's zone some
/// days have no midnight and others are not 24 hours long.
QDateTime ConvertToDateTime(qint64 t);

/// `t` one step later. Calendar steps are added by QDate, years first. Exact steps count 365 days
/// for a year and 30 for a month and are computed in 32 bits, which wrap beyond 68 years. A time of
/// day stops at 86399 and may become negative. A format out of range returns `t`.
qint64 IncrementTime(TimeFormat format, TimeStep step, qint64 t);

/// The text of `t`, passed through the translation of the context "MGeoData".
QString TimeToString(qint64 t, TimeFormat format, const char *dateFormat, const char *timeFormat);
/// "[1y,2m,3d] [4h,5m,6s] (exact)" and its parts, or the plain number of steps.
QString TimeStepToString(const TimeStep &step, TimeFormat format);
/// Both ends, in square brackets where an end is included and in round ones where it is not.
QString IntervalToString(const Interval &interval, TimeFormat format, const char *dateFormat,
                         const char *timeFormat);
/// The present moment in local time, "d MMM yyyy hh:mm:ss", for notes of a dataset's origin.
QString presentMoment();

} // namespace datainterface
