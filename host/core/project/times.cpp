// SPDX-License-Identifier: MIT
#include "core/project/times.h"
#include <QDateTime>
#include <QLocale>
#include <QRegularExpression>
#include "datainterface/TimeAPI.h"

namespace meridor {
namespace {

// The library's epoch. VORN_GetTimeComponents gives no components of a time of day, so texts are
// made here.
const QDate kEpoch(1752, 9, 14);
constexpr qint64 kDay = 86400;

struct Match {
    TimeFormat format;
    QRegularExpressionMatch parts;
};

std::optional<Match> match(const QString &text)
{
    static const QRegularExpression number(QStringLiteral("^\\s*([+-]?\\d{1,18})\\s*$"));
    static const QRegularExpression date(
        QStringLiteral("^\\s*(\\d{4})-(\\d{2})(?:-(\\d{2}))?\\s*$"));
    static const QRegularExpression moment(
        QStringLiteral("^\\s*(\\d{4}-\\d{2}-\\d{2})[T ](\\d{2}):(\\d{2})(?::(\\d{2})(?:\\.\\d+)?)?"
                       "\\s*(Z|[+-]\\d{2}(?::?\\d{2})?)?\\s*$"));
    static const QRegularExpression clock(
        QStringLiteral("^\\s*(\\d{1,2}):(\\d{2})(?::(\\d{2}))?\\s*$"));
    if (auto parts = number.match(text); parts.hasMatch())
        return Match{TF_Integer, parts};
    if (auto parts = date.match(text); parts.hasMatch())
        return Match{TF_Date, parts};
    if (auto parts = moment.match(text); parts.hasMatch())
        return Match{TF_DateTime, parts};
    if (auto parts = clock.match(text); parts.hasMatch())
        return Match{TF_Time, parts};
    return std::nullopt;
}

qint64 ofDate(const QDate &date)
{
    return VORN_ConstructTime(TF_Date, date.year(), date.month(), date.day(), 0, 0, 0);
}

/// The first day of a year, month or day, and the first day after it.
std::optional<QPair<QDate, QDate>> days(const Match &text)
{
    QDate first;
    QDate behind;
    if (text.format == TF_Integer) {
        bool fits = false;
        const int year = text.parts.captured(1).toInt(&fits);
        if (!fits || year < 1 || year > 9999)
            return std::nullopt;
        first = QDate(year, 1, 1);
        behind = first.addYears(1);
    } else {
        const bool whole = text.parts.captured(3).isEmpty();
        first = QDate(text.parts.captured(1).toInt(), text.parts.captured(2).toInt(),
                      whole ? 1 : text.parts.captured(3).toInt());
        behind = whole ? first.addMonths(1) : first.addDays(1);
    }
    if (!first.isValid())
        return std::nullopt;
    return qMakePair(first, behind);
}

std::optional<qint64> moment(const QRegularExpressionMatch &parts)
{
    const QDate date = QDate::fromString(parts.captured(1), Qt::ISODate);
    const QTime time(parts.captured(2).toInt(), parts.captured(3).toInt(),
                     parts.captured(4).toInt());
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    const qint64 local = VORN_ConstructTime(TF_DateTime, date.year(), date.month(), date.day(),
                                            time.hour(), time.minute(), time.second());
    QString zone = parts.captured(5);
    if (zone.isEmpty() || zone == QLatin1String("Z"))
        return local;
    zone.remove(QLatin1Char(':'));
    const qint64 offset = zone.mid(1, 2).toInt() * 3600 + zone.mid(3, 2).toInt() * 60;
    return zone.startsWith(QLatin1Char('-')) ? local + offset : local - offset;
}

/// A format of higher rank can represent every text of a lower rank.
int rankOf(TimeFormat format)
{
    return format == TF_DateTime ? 2 : format == TF_Date ? 1 : 0;
}

/// Seconds after midnight.
std::optional<qint64> timeOfDay(const QRegularExpressionMatch &parts)
{
    const QTime time(parts.captured(1).toInt(), parts.captured(2).toInt(),
                     parts.captured(3).toInt());
    return time.isValid() ? std::optional<qint64>(time.msecsSinceStartOfDay() / 1000)
                          : std::nullopt;
}

std::optional<Interval> instant(const std::optional<qint64> &time)
{
    return time ? std::optional<Interval>(Interval{*time, *time, true, true}) : std::nullopt;
}

QDateTime ofTime(qint64 time)
{
    return QDateTime(kEpoch, QTime(0, 0), Qt::UTC).addSecs(time);
}

bool isInstant(const Interval &interval)
{
    return interval.startTime == interval.endTime;
}

/// The start of the first day after a span of days. Projects of earlier versions hold spans that
/// end, inclusive, at the start of their last day.
qint64 dayBehind(const Interval &interval)
{
    return interval.inclusiveEnd ? interval.endTime + kDay : interval.endTime;
}

/// "1929" or "1929-07" if the days from `first` to before `behind` are a whole year or month; else
/// empty.
QString calendarName(const QDate &first, const QDate &behind)
{
    if (first.day() != 1)
        return QString();
    if (first.month() == 1 && behind == first.addYears(1))
        return QString::number(first.year());
    if (behind == first.addMonths(1))
        return first.toString(QStringLiteral("yyyy-MM"));
    return QString();
}

} // namespace

std::optional<TimeFormat> recogniseTimes(const QStringList &texts, QString *culprit)
{
    std::optional<TimeFormat> all;
    for (const QString &text : texts) {
        const auto found = match(text);
        const bool clock = found && found->format == TF_Time;
        if (!found || (all && clock != (*all == TF_Time))) {
            if (culprit)
                *culprit = text;
            return std::nullopt;
        }
        if (!all || rankOf(found->format) > rankOf(*all))
            all = found->format;
    }
    return all.value_or(TF_Integer);
}

std::optional<Interval> TimeAxis::span(const QString &text) const
{
    const auto found = match(text);
    if (!found)
        return std::nullopt;
    if (mFormat == TF_Time && found->format == TF_Time)
        return instant(timeOfDay(found->parts));
    if (mFormat == TF_Integer || mFormat == TF_Time) {
        if (found->format != TF_Integer)
            return std::nullopt;
        return instant(found->parts.captured(1).toLongLong());
    }
    if (found->format == TF_DateTime)
        return mFormat == TF_DateTime ? instant(moment(found->parts)) : std::nullopt;
    if (found->format == TF_Time)
        return std::nullopt;
    const auto whole = days(*found);
    if (!whole)
        return std::nullopt;
    const qint64 start = ofDate(whole->first);
    const qint64 behind = ofDate(whole->second);
    return Interval{start, behind, true, false};
}

std::optional<Interval> TimeAxis::span(const QString &start, const QString &end) const
{
    const auto first = span(start);
    const auto last = span(end);
    if (!first || !last)
        return std::nullopt;
    Interval result{first->startTime, last->endTime, true, last->inclusiveEnd};
    if (countsSeconds() && isInstant(*last))
        result.inclusiveEnd = false;
    if (isInstant(result))
        result.inclusiveEnd = true;
    return result.endTime < result.startTime ? std::nullopt : std::optional<Interval>(result);
}

std::optional<Interval> TimeAxis::range(const QString &text) const
{
    const int slash = text.indexOf(QLatin1Char('/'));
    if (slash > 0)
        return span(text.left(slash), text.mid(slash + 1));
    return span(text);
}

QString TimeAxis::show(qint64 time) const
{
    switch (mFormat) {
    case TF_Date:
        return ofTime(time).date().toString(Qt::ISODate);
    case TF_DateTime:
        return ofTime(time).toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    case TF_Time:
        return QTime(0, 0).addSecs(static_cast<int>(time)).toString(QStringLiteral("HH:mm:ss"));
    default:
        return QString::number(time);
    }
}

QString TimeAxis::show(const Interval &interval) const
{
    const bool byDay = mFormat == TF_Date;
    if (byDay || (mFormat == TF_DateTime && !interval.inclusiveEnd)) {
        const QDateTime behind = ofTime(byDay ? dayBehind(interval) : interval.endTime);
        const QDateTime first = ofTime(interval.startTime);
        if (first.time() == QTime(0, 0) && behind.time() == QTime(0, 0)) {
            const QString name = calendarName(first.date(), behind.date());
            if (!name.isEmpty())
                return name;
        }
    }
    const QString start = show(interval.startTime);
    const QString end = showEnd(interval);
    return isInstant(interval) || (byDay && start == end) ? start : start + QLatin1Char('/') + end;
}

bool TimeAxis::giveWay(Interval &earlier, const Interval &later) const
{
    if (earlier.endTime < later.startTime
        || (earlier.endTime == later.startTime && !earlier.inclusiveEnd))
        return true;
    const qint64 last = mFormat == TF_Date ? dayBehind(earlier) - kDay : earlier.endTime;
    if (earlier.startTime >= later.startTime || last != later.startTime)
        return false;
    earlier.endTime = later.startTime;
    earlier.inclusiveEnd = false;
    return true;
}

QString TimeAxis::showEnd(const Interval &interval) const
{
    return show(mFormat == TF_Date ? dayBehind(interval) - kDay : interval.endTime);
}

QString isoTime(const QString &text, const QString &pattern)
{
    const bool ofDay = pattern.contains(QLatin1Char('h'), Qt::CaseInsensitive);
    if (!pattern.contains(QLatin1Char('y'))) {
        const QTime time = QLocale::c().toTime(text.trimmed(), pattern);
        return time.isValid() ? time.toString(QStringLiteral("HH:mm:ss")) : QString();
    }
    const QDateTime time = QLocale::c().toDateTime(text.trimmed(), pattern);
    if (!time.date().isValid() || !time.time().isValid())
        return QString();
    if (ofDay)
        return time.toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
    if (pattern.contains(QLatin1Char('d')))
        return time.toString(QStringLiteral("yyyy-MM-dd"));
    return time.toString(pattern.contains(QLatin1Char('M')) ? QStringLiteral("yyyy-MM")
                                                            : QStringLiteral("yyyy"));
}

const char *timeFormatName(TimeFormat format)
{
    switch (format) {
    case TF_Date:
        return "date";
    case TF_Time:
        return "time";
    case TF_DateTime:
        return "date-time";
    default:
        return "number";
    }
}

} // namespace meridor
