// SPDX-License-Identifier: MIT
#include "core/import/cubeTimes.h"
#include <algorithm>
#include <cmath>
#include "core/formats/cfTimes.h"
#include "core/import/bandTimes.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "datainterface/TimeAPI.h"

namespace meridor {
namespace {

constexpr qint64 kDay = 86400;

/// The places of a dimension in seconds since 1970.
struct Moments {
    QVector<qint64> at;
    QVector<Interval> spans; ///< empty without bounds
    bool areDays = true;
};

qint64 dayOf(qint64 seconds)
{
    return (seconds >= 0 ? seconds / kDay : -((kDay - 1 - seconds) / kDay)) * kDay;
}

class TimeReading {
public:
    TimeReading(const ImportOptions &options, QStringList &notes) : mOptions(options), mNotes(notes)
    {
    }

    QString where(const CubeTimes &times) const
    {
        return QStringLiteral("%1, dimension %2").arg(mOptions.map, times.name);
    }

    bool areMoments(const CubeTimes &times) const
    {
        return CfTimes::isUnit(times.unit) && !times.values.isEmpty()
               && mOptions.times != QLatin1String("number");
    }

    Moments moments(const CubeTimes &times) const
    {
        const CfTimes calendar(times.unit, times.calendar, where(times));
        if (calendar.hasNoLeapDays())
            mNotes.append(where(times)
                          + QStringLiteral(": its calendar has no 29 February; dates are kept"));
        Moments read;
        for (int i = 0; i < times.count; ++i)
            read.at.append(secondsOf(times, calendar, times.values[i], i));
        for (int i = 0; i < times.bounds.size() / 2; ++i) {
            Interval span{secondsOf(times, calendar, times.bounds[2 * i], i),
                          secondsOf(times, calendar, times.bounds[2 * i + 1], i), true, false};
            if (span.endTime < span.startTime)
                std::swap(span.startTime, span.endTime);
            read.spans.append(span);
        }
        if (!areApart(read.spans)) {
            mNotes.append(where(times)
                          + QStringLiteral(": its bounds overlap or are empty; each grid holds at "
                                           "its time"));
            read.spans.clear();
        }
        for (const qint64 at : qAsConst(read.at))
            read.areDays = read.areDays && (!read.spans.isEmpty() || at == dayOf(at));
        for (const Interval &span : qAsConst(read.spans))
            read.areDays = read.areDays && span.startTime == dayOf(span.startTime)
                           && span.endTime == dayOf(span.endTime);
        return read;
    }

    QVector<Interval> numbers(const CubeTimes &times) const
    {
        QVector<Interval> spans;
        for (int i = 0; i < times.count; ++i) {
            const double value = times.values.isEmpty() ? i + 1 : times.values[i];
            if (!(std::abs(value) < 1e15) || value != std::trunc(value))
                fail(
                    QStringLiteral("%1: %2 (place %3) is no whole number, and its unit \"%4\" "
                                   "names no moment")
                        .arg(where(times), exactNumber(value), QString::number(i + 1), times.unit));
            const auto time = static_cast<qint64>(value);
            spans.append(Interval{time, time, true, true});
        }
        return spans;
    }

private:
    qint64 secondsOf(const CubeTimes &times, const CfTimes &calendar, double value, int place) const
    {
        const auto seconds = calendar.secondsSince1970(value);
        if (!seconds)
            fail(
                QStringLiteral("%1: %2 %3 (place %4) is no time of the years 1 to 9999")
                    .arg(where(times), exactNumber(value), times.unit, QString::number(place + 1)));
        return *seconds;
    }

    /// Whether all spans have a length and share no time.
    static bool areApart(QVector<Interval> spans)
    {
        std::sort(spans.begin(), spans.end(),
                  [](const Interval &a, const Interval &b) { return a.startTime < b.startTime; });
        for (int i = 0; i < spans.size(); ++i)
            if (spans[i].startTime == spans[i].endTime
                || (i > 0 && spans[i - 1].endTime > spans[i].startTime))
                return false;
        return true;
    }

    const ImportOptions &mOptions;
    QStringList &mNotes;
};

/// Texts in the forms of TimeAxis, or in the pattern of the options.
QStringList isoTexts(const CubeTimes &times, const ImportOptions &options, const QString &where)
{
    QStringList texts;
    for (const QString &text : times.texts) {
        texts.append(options.timePattern.isEmpty() ? text : isoTime(text, options.timePattern));
        if (texts.last().isNull() && !options.timePattern.isEmpty())
            fail(
                QStringLiteral("%1: \"%2\" does not fit %3").arg(where, text, options.timePattern));
    }
    return texts;
}

QVector<Interval> asIntervals(const Moments &moments, TimeFormat format)
{
    const qint64 zero = VORN_ConstructTime(TF_Date, 1970, 1, 1, 0, 0, 0);
    QVector<Interval> spans;
    for (int i = 0; i < moments.at.size(); ++i) {
        const qint64 at = moments.at[i];
        Interval span{at, at, true, true};
        if (!moments.spans.isEmpty())
            span = moments.spans[i];
        else if (format == TF_Date)
            span = Interval{dayOf(at), dayOf(at) + kDay, true, false};
        if (format == TF_Date && !moments.spans.isEmpty())
            span = Interval{dayOf(span.startTime), dayOf(span.endTime + kDay - 1), true, false};
        spans.append(Interval{zero + span.startTime, zero + span.endTime, span.inclusiveStart,
                              span.inclusiveEnd});
    }
    return spans;
}

} // namespace

GridTimes cubeTimes(const CubeReader &reader, const ImportOptions &options, QStringList &notes)
{
    GridTimes result;
    const TimeReading reading(options, notes);
    QVector<Moments> moments;
    QStringList texts;
    bool areDays = true;
    bool areNumbers = false;
    for (const CubeTimes &times : reader.times()) {
        moments.append(Moments());
        if (!times.texts.isEmpty()) {
            texts += isoTexts(times, options, reading.where(times));
        } else if (reading.areMoments(times)) {
            moments.last() = reading.moments(times);
            areDays = areDays && moments.last().areDays;
        } else {
            areNumbers = true;
        }
    }
    QString culprit;
    const auto ofTexts = recogniseTimes(texts, &culprit);
    if (!texts.isEmpty() && !ofTexts)
        fail(QStringLiteral("%1: \"%2\" is no time").arg(options.map, culprit));
    areNumbers = areNumbers || (!texts.isEmpty() && *ofTexts == TF_Integer);
    areDays = areDays && (texts.isEmpty() || *ofTexts == TF_Date);
    result.format = areNumbers ? TF_Integer : areDays ? TF_Date : TF_DateTime;
    if (!texts.isEmpty() && *ofTexts == TF_Time)
        result.format = TF_Time;
    for (const TimeFormat format : {TF_Date, TF_DateTime, TF_Integer, TF_Time})
        if (options.times == QLatin1String(timeFormatName(format))) {
            if (format != result.format && (areNumbers || format == TF_Time))
                fail(QStringLiteral("%1: its times are numbers and not of the form %2")
                         .arg(options.map, options.times));
            result.format = format;
        }
    const TimeAxis axis(result.format);
    QVector<Interval> all;
    for (int i = 0; i < reader.times().size(); ++i) {
        const CubeTimes &times = reader.times()[i];
        QVector<Interval> spans;
        if (!times.texts.isEmpty()) {
            for (const QString &text : isoTexts(times, options, reading.where(times))) {
                const auto span = axis.range(text);
                if (!span)
                    fail(QStringLiteral("%1: \"%2\" is no %3")
                             .arg(reading.where(times), text,
                                  QLatin1String(timeFormatName(result.format))));
                spans.append(*span);
            }
        } else if (!moments[i].at.isEmpty()) {
            if (areNumbers)
                fail(QStringLiteral("%1: its times are dates, those of another dimension are "
                                    "numbers; fields with one kind of times can be chosen")
                         .arg(reading.where(times)),
                     "fields");
            spans = asIntervals(moments[i], result.format);
        } else {
            spans = reading.numbers(times);
        }
        partSpans(spans, axis, options.end == QLatin1String("next"),
                  reading.where(times) + QStringLiteral(": places"));
        all += spans;
        result.of.append(spans);
    }
    if (!all.isEmpty())
        result.hull = hullOf(all);
    return result;
}

} // namespace meridor
