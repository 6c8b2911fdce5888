// SPDX-License-Identifier: MIT
/// Times as texts: 1929, 1929-07, 1929-07-01, 2005-06-08T18:00Z, 18:00. A text means its whole
/// span: "1929" is all days of the year in a geography whose times are dates, and a single time in
/// one whose times are numbers.
#pragma once
#include <QString>
#include <QStringList>
#include <optional>
#include "core/export.h"
#include "datainterface/TimeFormat.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

/// The coarsest format that can represent every text: numbers, then dates, then dates with a time
/// of day. Times of day cannot be mixed with the others. Nothing if a text is no time, or cannot be
/// mixed; `culprit` receives that text.
MERIDOR_EXPORT std::optional<TimeFormat> recogniseTimes(const QStringList &texts,
                                                        QString *culprit = nullptr);

/// Reads and writes times in one format.
class MERIDOR_EXPORT TimeAxis {
public:
    explicit TimeAxis(TimeFormat format) : mFormat(format) {}
    TimeFormat format() const { return mFormat; }
    /// Whether the unit is the second; the end of a span START/END is then exclusive.
    bool countsSeconds() const { return mFormat == TF_DateTime || mFormat == TF_Time; }

    /// The span of a text. A day, month or year ends, exclusive, at the start of the next one, so
    /// that there is no instant between consecutive spans and the day 1929-12-31 belongs to 1929.
    /// Nothing if the text is no time of this format.
    std::optional<Interval> span(const QString &text) const;
    /// From the start of one text to the end of another. An end that is a day is included; one that
    /// is a moment or a time of day is excluded. Nothing if a text is no time or the end is before
    /// the start.
    std::optional<Interval> span(const QString &start, const QString &end) const;
    /// The span of "TIME" or "START/END".
    std::optional<Interval> range(const QString &text) const;

    QString show(qint64 time) const;
    /// If two spans share only the last day or instant of `earlier`, ends `earlier` before `later`.
    /// False if they share more.
    bool giveWay(Interval &earlier, const Interval &later) const;

    /// "1929" or "1929-07" for a whole year or month, else "START/END".
    QString show(const Interval &interval) const;
    /// The last day of a span of dates; the end of any other span.
    QString showEnd(const Interval &interval) const;

private:
    TimeFormat mFormat;
};

MERIDOR_EXPORT const char *timeFormatName(TimeFormat format);

/// Translates a text into the form that TimeAxis reads, with the precision of `pattern`; null if
/// the text does not match. @param pattern a format of QDateTime::fromString: d, M, yyyy, HH, mm,
/// ss and the characters between them.
MERIDOR_EXPORT QString isoTime(const QString &text, const QString &pattern);

} // namespace meridor
