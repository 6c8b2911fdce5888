// SPDX-License-Identifier: MIT
/// Times as people write them: 1929, 1929-07, 1929-07-01, 2005-06-08T18:00Z, 18:00. A text stands
/// for its whole span, so that "1929" is a year of days in a geography of dates and one tick in a
/// geography of numbers.
#pragma once
#include <QString>
#include <QStringList>
#include <optional>
#include "core/export.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// The coarsest format in which every text can be told: numbers, then dates, then dates with a time
/// of day; times of day keep to themselves. Nothing when a text is none of them; `culprit` then
/// names it.
MERIDOR_EXPORT std::optional<TimeFormat> recogniseTimes(const QStringList &texts,
                                                        QString *culprit = nullptr);

/// Reads and writes times in one format.
class MERIDOR_EXPORT TimeAxis {
public:
    explicit TimeAxis(TimeFormat format) : mFormat(format) {}
    TimeFormat format() const { return mFormat; }
    /// Spans then end just before the next one begins.
    bool countsSeconds() const { return mFormat == TF_DateTime || mFormat == TF_Time; }

    /// The span of a text. Dates and date-times end just before the next one begins, so that spans
    /// meet and no instant lies between them: the day 1929-12-31 belongs to 1929. Nothing for a
    /// text that is no time of this format.
    std::optional<Interval> span(const QString &text) const;
    /// From the start of one text to the end of another: days inclusive, moments and times of day
    /// exclusive. Nothing when a text is no time or the end lies before the start.
    std::optional<Interval> span(const QString &start, const QString &end) const;
    /// "1929-1931" and "START/END" too: what an option takes.
    std::optional<Interval> range(const QString &text) const;

    QString show(qint64 time) const;
    /// When all that two spans share is the last day or instant of the earlier one, that goes to
    /// the later one. False when they share more.
    bool giveWay(Interval &earlier, const Interval &later) const;

    /// Whole years and months by their name, anything else as start/end.
    QString show(const Interval &interval) const;
    /// The last day of a span of dates; else its end.
    QString showEnd(const Interval &interval) const;

private:
    TimeFormat mFormat;
};

MERIDOR_EXPORT const char *timeFormatName(TimeFormat format);

/// A text written in another way, as one that TimeAxis reads and as exact as `pattern`; null when
/// it does not fit. @param pattern  of Qt: d, M, yyyy, HH, mm, ss and what stands between them.
MERIDOR_EXPORT QString isoTime(const QString &text, const QString &pattern);

} // namespace meridor
