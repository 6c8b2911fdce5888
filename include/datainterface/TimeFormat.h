// SPDX-License-Identifier: MIT
/// The meaning of a time value of a geography, and steps in time.
#pragma once
#include <QtGlobal>

/// A time value is one signed 64-bit integer; the geography defines its meaning. The epoch is the
/// start of 14 September 1752; days are 86,400 seconds, without time zones or leap seconds.
enum TimeFormat : int {
    TF_Date = 0,     ///< seconds from the epoch, a whole number of days
    TF_Time = 1,     ///< seconds after midnight, 0 to 86399
    TF_DateTime = 2, ///< seconds from the epoch
    TF_Integer = 3   ///< a plain number
};

/// A calendar step or, with `exact`, one in which a year is 365 days and a month 30.
struct TimeStep {
    qint32 years = 0;
    qint32 months = 0;
    qint32 days = 0;
    qint32 hours = 0;
    qint32 minutes = 0;
    qint32 seconds = 0;
    qint32 steps = 0; ///< ticks of TF_Integer
    bool exact = false;
};
