// SPDX-License-Identifier: MIT
#include "core/formats/cfTimes.h"
#include <QHash>
#include <QRegularExpression>
#include <cmath>
#include "core/project/failure.h"

namespace meridor {
namespace {

constexpr qint64 kDay = 86400;
constexpr qint64 kJulianDay1970 = 2440588;
constexpr qint64 kGregorianFrom = 2299161; ///< the Julian day number of 1582-10-15
constexpr int kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

struct Date {
    qint64 year;
    int month;
    int day;
};

/// Julian day numbers by the method of Fliegel and Van Flandern, with years counted from March.
qint64 julianDay(const Date &date, bool gregorian)
{
    const qint64 years = date.year + 4800 - (date.month <= 2 ? 1 : 0);
    const qint64 months = (date.month + 9) % 12;
    const qint64 days = date.day + (153 * months + 2) / 5 + 365 * years + years / 4;
    return gregorian ? days - years / 100 + years / 400 - 32045 : days - 32083;
}

/// Days of a calendar in which every year has 365 days, from the year 0.
qint64 dayWithoutLeap(const Date &date)
{
    return 365 * date.year + kDaysBefore[date.month - 1] + date.day - 1;
}

Date dateWithoutLeap(qint64 number)
{
    const qint64 year = number >= 0 ? number / 365 : -((364 - number) / 365);
    const int ofYear = static_cast<int>(number - 365 * year);
    int month = 1;
    while (kDaysBefore[month] <= ofYear)
        ++month;
    return {year, month, ofYear - kDaysBefore[month - 1] + 1};
}

const QRegularExpression &unitForm()
{
    static const QRegularExpression form(
        QStringLiteral("^\\s*([A-Za-z]+)\\s+(?:since|after|from|ref)\\s+(\\S.*?)\\s*$"),
        QRegularExpression::CaseInsensitiveOption);
    return form;
}

/// 0 for an unknown unit, and for one without a fixed length.
double secondsOf(const QString &unit)
{
    static const QHash<QString, double> known{{"week", 7.0 * kDay},
                                              {"day", kDay},
                                              {"d", kDay},
                                              {"hour", 3600},
                                              {"hr", 3600},
                                              {"h", 3600},
                                              {"minute", 60},
                                              {"min", 60},
                                              {"second", 1},
                                              {"sec", 1},
                                              {"s", 1},
                                              {"millisecond", 1e-3},
                                              {"millisec", 1e-3},
                                              {"msec", 1e-3},
                                              {"ms", 1e-3},
                                              {"microsecond", 1e-6},
                                              {"microsec", 1e-6},
                                              {"us", 1e-6},
                                              {"nanosecond", 1e-9},
                                              {"ns", 1e-9}};
    const QString name = unit.toLower();
    if (known.contains(name))
        return known.value(name);
    return name.endsWith(QLatin1Char('s')) ? known.value(name.chopped(1)) : 0;
}

} // namespace

bool CfTimes::isUnit(const QString &unit)
{
    return unitForm().match(unit).hasMatch();
}

CfTimes::CfTimes(const QString &unit, const QString &calendar, const QString &where)
{
    const QString name = calendar.trimmed().toLower();
    if (name == QLatin1String("proleptic_gregorian"))
        mCalendar = Calendar::Gregorian;
    else if (name == QLatin1String("noleap") || name == QLatin1String("365_day"))
        mCalendar = Calendar::NoLeap;
    else if (!name.isEmpty() && name != QLatin1String("standard")
             && name != QLatin1String("gregorian"))
        fail(QStringLiteral("%1: the calendar %2 has days that do not exist; its times can be read "
                            "as numbers")
                 .arg(where, calendar),
             "times");
    const auto parts = unitForm().match(unit);
    mUnitSeconds = secondsOf(parts.captured(1));
    if (!(mUnitSeconds > 0))
        fail(QStringLiteral("%1: the unit \"%2\" has no fixed length; times can be read as numbers")
                 .arg(where, unit),
             "times");
    static const QRegularExpression moment(
        QStringLiteral("^([+-]?\\d{1,4})-(\\d{1,2})(?:-(\\d{1,2}))?"
                       "(?:(?:[T ]\\s*)(\\d{1,2})(?::(\\d{1,2})(?::(\\d{1,2}(?:\\.\\d*)?))?)?)?"
                       "\\s*(?:Z|UTC|GMT|([+-])(\\d{1,2})(?::?(\\d{2}))?)?$"),
        QRegularExpression::CaseInsensitiveOption);
    const auto origin = moment.match(parts.captured(2));
    const Date date{origin.captured(1).toInt(), origin.captured(2).toInt(),
                    origin.captured(3).isEmpty() ? 1 : origin.captured(3).toInt()};
    if (!origin.hasMatch() || date.month < 1 || date.month > 12 || date.day < 1 || date.day > 31)
        fail(QStringLiteral("%1: \"%2\" names no moment from which times are counted")
                 .arg(where, unit));
    if (mCalendar == Calendar::NoLeap) {
        mOriginDay = dayWithoutLeap(date);
    } else {
        mOriginDay = julianDay(date, true);
        if (mCalendar == Calendar::Standard && mOriginDay < kGregorianFrom)
            mOriginDay = julianDay(date, false);
    }
    const double zone = origin.captured(8).toInt() * 3600.0 + origin.captured(9).toInt() * 60.0;
    mOriginSeconds = origin.captured(4).toInt() * 3600.0 + origin.captured(5).toInt() * 60.0
                     + origin.captured(6).toDouble()
                     - (origin.captured(7) == QLatin1String("-") ? -zone : zone);
}

std::optional<qint64> CfTimes::secondsSince1970(double value) const
{
    static const qint64 first = (julianDay({1, 1, 1}, true) - kJulianDay1970) * kDay;
    static const qint64 behind = (julianDay({10000, 1, 1}, true) - kJulianDay1970) * kDay;
    const double seconds = std::round(value * mUnitSeconds + mOriginSeconds);
    if (!(std::abs(seconds) < 4e11)) // more than the years 1 to 9999
        return std::nullopt;
    const auto whole = static_cast<qint64>(seconds);
    const qint64 days = whole >= 0 ? whole / kDay : -((kDay - 1 - whole) / kDay);
    qint64 day = mOriginDay + days;
    if (mCalendar == Calendar::NoLeap)
        day = julianDay(dateWithoutLeap(day), true);
    const qint64 result = (day - kJulianDay1970) * kDay + whole - days * kDay;
    if (result < first || result > behind)
        return std::nullopt;
    return result;
}

} // namespace meridor
