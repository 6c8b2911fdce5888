// SPDX-License-Identifier: MIT
/// Times of climate and forecast files: numbers of a unit since a moment, such as "hours since
/// 1900-01-01", in one of the calendars of the CF conventions.
#pragma once
#include <QString>
#include <optional>
#include "core/export.h"

namespace meridor {

class MERIDOR_EXPORT CfTimes {
public:
    /// @param unit      weeks, days, hours, minutes, seconds and parts of a second, since a moment.
    /// @param calendar  empty: "standard".
    /// @param where     names the file and the dimension in a message.
    /// Raises a Failure for a unit without a fixed length (months and years), for a moment that
    /// cannot be read, and for a calendar with days that do not exist.
    CfTimes(const QString &unit, const QString &calendar, const QString &where);

    /// Whether a unit has the form "UNIT since MOMENT".
    static bool isUnit(const QString &unit);
    /// Whether the calendar leaves out 29 February.
    bool hasNoLeapDays() const { return mCalendar == Calendar::NoLeap; }
    /// The number of seconds since 1970-01-01T00:00Z in the Gregorian calendar, rounded; nothing
    /// for a value that is not finite or outside the years 1 to 9999.
    std::optional<qint64> secondsSince1970(double value) const;

private:
    /// Standard: Julian before 1582-10-15, Gregorian from then on.
    enum class Calendar { Standard, Gregorian, NoLeap };

    Calendar mCalendar = Calendar::Standard;
    double mUnitSeconds = 1;
    qint64 mOriginDay = 0;     ///< number of the day in the calendar
    double mOriginSeconds = 0; ///< within that day, in UTC
};

} // namespace meridor
