// SPDX-License-Identifier: MIT
/// How time values are encoded, stepped and shown: the bodies of MGeoData's calendar functions.
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
/// Truncates toward the epoch: an instant before it that is not at midnight lands on the later day.
QDate ConvertToDate(qint64 t);
/// Always a null time: it is counted from a null time, which stays null. Hosts rely on the empty
/// text and on the answer "invalid" that follow from it.
QTime ConvertToTime(qint64 t);
/// The date with a null time, which QDateTime holds as midnight, in UTC: in the machine's zone some
/// days have no midnight and others are not 24 hours long.
QDateTime ConvertToDateTime(qint64 t);

/// `t` one step later. Calendar steps go through QDate, years first; exact ones count 365 and 30
/// days and are computed in 32 bits, wrapping beyond 68 years. A time of day stops at 86399 and may
/// turn negative. A format out of range leaves `t` as it is.
qint64 IncrementTime(TimeFormat format, TimeStep step, qint64 t);

/// The text of `t`, passed through the translation of the context "MGeoData".
QString TimeToString(qint64 t, TimeFormat format, const char *dateFormat, const char *timeFormat);
/// "[1y,2m,3d] [4h,5m,6s] (exact)" and its parts, or the plain number of steps.
QString TimeStepToString(const TimeStep &step, TimeFormat format);
/// Both ends in the brackets that tell which end is included.
QString IntervalToString(const Interval &interval, TimeFormat format, const char *dateFormat,
                         const char *timeFormat);
/// The present moment in local time, "d MMM yyyy hh:mm:ss", as notes of origin carry it.
QString presentMoment();

} // namespace datainterface
