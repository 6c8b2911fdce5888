// SPDX-License-Identifier: MIT
#include "core/import/bandTimes.h"
#include <algorithm>
#include <numeric>
#include "core/project/failure.h"

namespace meridor {
namespace {

QString inIso(const QString &text, const ImportOptions &options, int band)
{
    if (options.timePattern.isEmpty())
        return text;
    const QString result = isoTime(text, options.timePattern);
    if (result.isNull())
        fail(QStringLiteral("%1, band %2: \"%3\" does not fit %4")
                 .arg(options.map, QString::number(band + 1), text, options.timePattern));
    return result;
}

QString item(const RasterReader &reader, const ImportOptions &options, int band, const QString &key)
{
    const auto &items = reader.bands()[band].items;
    if (!items.contains(key))
        fail(QStringLiteral("%1, band %2: has no item %3")
                 .arg(options.map, QString::number(band + 1), key));
    return inIso(items.value(key), options, band);
}

QStringList startTexts(const RasterReader &reader, const ImportOptions &options)
{
    QStringList texts;
    const int count = reader.bands().size();
    for (int band = 0; band < count; ++band)
        texts.append(options.start.isEmpty() ? inIso(reader.bands()[band].name, options, band)
                                             : item(reader, options, band, options.start));
    if (!options.start.isEmpty() || recogniseTimes(texts))
        return texts;
    for (int band = 0; band < count; ++band)
        texts[band] = QString::number(band + 1);
    return texts;
}

TimeFormat formatOf(const QString &wanted, const QStringList &texts, const QString &file)
{
    for (const TimeFormat format : {TF_Date, TF_DateTime, TF_Integer, TF_Time})
        if (wanted == QLatin1String(timeFormatName(format)))
            return format;
    QString culprit;
    const auto found = recogniseTimes(texts, &culprit);
    if (!found)
        fail(QStringLiteral("%1: \"%2\" is no time").arg(file, culprit));
    return *found;
}

} // namespace

void partSpans(QVector<Interval> &spans, const TimeAxis &axis, bool untilNext, const QString &what)
{
    std::vector<int> order(static_cast<size_t>(spans.size()));
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return spans[a].startTime < spans[b].startTime; });
    for (size_t i = 1; i < order.size(); ++i) {
        Interval &first = spans[order[i - 1]];
        const Interval &second = spans[order[i]];
        if (untilNext && first.startTime < second.startTime) {
            first.endTime = second.startTime;
            first.inclusiveEnd = false;
        } else if (!axis.giveWay(first, second)) {
            fail(QStringLiteral("%1 %2 and %3 hold at one time")
                     .arg(what, QString::number(order[i - 1] + 1), QString::number(order[i] + 1)));
        }
    }
}

Interval hullOf(const QVector<Interval> &spans)
{
    Interval hull = spans.first();
    for (const Interval &span : spans) {
        hull.startTime = qMin(hull.startTime, span.startTime);
        if (span.endTime >= hull.endTime) {
            hull.inclusiveEnd =
                span.inclusiveEnd || (span.endTime == hull.endTime && hull.inclusiveEnd);
            hull.endTime = span.endTime;
        }
    }
    return hull;
}

BandTimes bandTimes(const RasterReader &reader, const ImportOptions &options)
{
    BandTimes times;
    if (!options.bandsAreTimes)
        return times;
    const bool untilNext = options.end == QLatin1String("next");
    const QStringList starts = startTexts(reader, options);
    QStringList ends;
    for (int band = 0; !options.end.isEmpty() && !untilNext && band < starts.size(); ++band)
        ends.append(item(reader, options, band, options.end));
    times.format = formatOf(options.times, starts + ends, options.map);
    const TimeAxis axis(times.format);
    for (int band = 0; band < starts.size(); ++band) {
        const auto span =
            ends.isEmpty() ? axis.span(starts[band]) : axis.span(starts[band], ends[band]);
        if (!span)
            fail(QStringLiteral("%1, band %2: \"%3\" is no %4")
                     .arg(options.map, QString::number(band + 1),
                          starts[band] + (ends.isEmpty() ? QString() : QString('/' + ends[band])),
                          QLatin1String(timeFormatName(times.format))));
        times.of.append(*span);
    }
    partSpans(times.of, axis, untilNext, options.map + QStringLiteral(": bands"));
    times.hull = hullOf(times.of);
    return times;
}

} // namespace meridor
