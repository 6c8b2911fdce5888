// SPDX-License-Identifier: MIT
#include "time/calendar.h"
#include <QCoreApplication>

namespace datainterface {
namespace {

constexpr qint64 kDay = 86400;
constexpr qint64 kLastSecond = kDay - 1;

QDate epoch()
{
    return QDate(1752, 9, 14);
}

// Steps are counted in 32 bits: an exact step of more than 68 years of seconds wraps and moves time
// backward. The sums are formed with unsigned numbers, whose overflow is defined.
quint32 bits(qint32 value)
{
    return static_cast<quint32>(value);
}

qint32 exactDays(const TimeStep &step)
{
    return static_cast<qint32>(bits(step.years) * 365U + bits(step.days) + bits(step.months) * 30U);
}

qint32 secondsOf(const TimeStep &step, qint32 days)
{
    return static_cast<qint32>(bits(step.seconds)
                               + (bits(step.minutes) + (bits(step.hours) + bits(days) * 24U) * 60U)
                                     * 60U);
}

qint64 wrappedSum(qint64 a, qint64 b)
{
    return static_cast<qint64>(static_cast<quint64>(a) + static_cast<quint64>(b));
}

template <class CalendarTime>
CalendarTime addCalendarDays(const CalendarTime &time, const TimeStep &step)
{
    return time.addYears(step.years).addMonths(step.months).addDays(step.days);
}

qint64 addTimeOfDay(const TimeStep &step, qint64 t)
{
    const auto hours = static_cast<qint32>(bits(step.hours) * 3600U);
    const auto minutes = static_cast<qint32>(bits(step.minutes) * 60U);
    return qMin(wrappedSum(qint64(hours) + minutes + step.seconds, t), kLastSecond);
}

QString dateStepText(const TimeStep &step)
{
    return QString::asprintf("[%dy,%dm,%dd]", step.years, step.months, step.days);
}

QString timeStepText(const TimeStep &step)
{
    return QString::asprintf("[%dh,%dm,%ds]", step.hours, step.minutes, step.seconds);
}

} // namespace

qint64 ConvertFromDate(const QDate &date)
{
    return epoch().daysTo(date) * kDay;
}

qint64 ConvertFromTime(const QTime &time)
{
    return QTime(0, 0, 0, 0).secsTo(time);
}

qint64 ConvertFromDateTime(const QDate &date, const QTime &time)
{
    return ConvertFromDate(date) + ConvertFromTime(time);
}

QDate ConvertToDate(qint64 t)
{
    return epoch().addDays(t / kDay);
}

QTime ConvertToTime(qint64 t)
{
    return QTime().addSecs(static_cast<int>(t % kDay));
}

QDateTime ConvertToDateTime(qint64 t)
{
    return QDateTime(ConvertToDate(t), ConvertToTime(t), Qt::UTC);
}

qint64 IncrementTime(TimeFormat format, TimeStep step, qint64 t)
{
    switch (format) {
    case TF_Date:
        if (step.exact)
            return wrappedSum(t, static_cast<qint32>(bits(exactDays(step)) * 86400U));
        return ConvertFromDate(addCalendarDays(ConvertToDate(t), step));
    case TF_Time:
        return addTimeOfDay(step, t);
    case TF_DateTime: {
        if (step.exact)
            return wrappedSum(t, secondsOf(step, exactDays(step)));
        const QDateTime later =
            addCalendarDays(ConvertToDateTime(t), step).addSecs(secondsOf(step, 0));
        return ConvertFromDateTime(later.date(), later.time());
    }
    case TF_Integer:
        return wrappedSum(t, step.steps);
    }
    return t;
}

QString TimeToString(qint64 t, TimeFormat format, const char *dateFormat, const char *timeFormat)
{
    QString text;
    switch (format) {
    case TF_Date:
        text = ConvertToDate(t).toString(QString::fromUtf8(dateFormat));
        break;
    case TF_Time:
        text = ConvertToTime(t).toString(QString::fromUtf8(timeFormat));
        break;
    case TF_DateTime:
        text = ConvertToDate(t).toString(QString::fromUtf8(dateFormat)) + QLatin1Char(' ')
               + ConvertToTime(t).toString(QString::fromUtf8(timeFormat));
        break;
    case TF_Integer:
        text = QString::number(t);
        break;
    }
    return QCoreApplication::translate("MGeoData", text.toUtf8().constData());
}

QString TimeStepToString(const TimeStep &step, TimeFormat format)
{
    QString text;
    switch (format) {
    case TF_Date:
        text = dateStepText(step);
        break;
    case TF_Time:
        text = timeStepText(step);
        break;
    case TF_DateTime:
        text = dateStepText(step) + QLatin1Char(' ') + timeStepText(step);
        break;
    case TF_Integer:
        return QString::number(step.steps);
    default:
        return QString();
    }
    return step.exact ? QString(text + QLatin1String(" (exact)")) : text;
}

QString IntervalToString(const Interval &interval, TimeFormat format, const char *dateFormat,
                         const char *timeFormat)
{
    return QLatin1Char(interval.inclusiveStart ? '[' : '(')
           + TimeToString(interval.startTime, format, dateFormat, timeFormat) + QLatin1String(", ")
           + TimeToString(interval.endTime, format, dateFormat, timeFormat)
           + QLatin1Char(interval.inclusiveEnd ? ']' : ')');
}

QString presentMoment()
{
    return QDateTime::currentDateTime().toString(QStringLiteral("d MMM yyyy hh:mm:ss"));
}

} // namespace datainterface
