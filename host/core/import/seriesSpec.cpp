// SPDX-License-Identifier: MIT
#include "core/import/seriesSpec.h"
#include <QRegularExpression>
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/project/times.h"

namespace meridor {
namespace {

[[noreturn]] void badSeries(const QString &text)
{
    failUsage(
        QStringLiteral(
            "\"%1\" is no series: write NAME=FIRST..LAST, NAME=PREFIX* or NAME=COLUMN@TIME,...")
            .arg(text));
}

QPair<QString, QString> splitName(const QString &text)
{
    const int equals = text.indexOf(QLatin1Char('='));
    if (equals < 1 || equals + 1 == text.size())
        badSeries(text);
    return qMakePair(text.left(equals).trimmed(), text.mid(equals + 1));
}

/// The time at the end of a column's name, as in "1929", "pop_1990" and "t2005-06-08". Raises a
/// Failure if there is none.
QString timeAtEnd(const FeatureTable &table, int column)
{
    static const QRegularExpression pattern(QStringLiteral(
        "(?:^|\\D)(\\d{4}-\\d{2}(?:-\\d{2})?(?:T\\d{2}:\\d{2}(?::\\d{2})?Z?)?|\\d+)$"));
    const auto match = pattern.match(table.columns[column].name);
    if (!match.hasMatch())
        fail(QStringLiteral("%1: the name of field %2 ends in no time; write %2@TIME")
                 .arg(table.file, table.columns[column].name));
    return match.captured(1);
}

void addRange(const FeatureTable &table, const QString &first, const QString &last,
              SeriesSpec &spec)
{
    const int from = requireColumn(table, first);
    const int to = requireColumn(table, last);
    if (to < from)
        failUsage(
            QStringLiteral("%1: field %2 is behind field %3; write %3..%2")
                .arg(table.columns[from].file.isEmpty() ? table.file : table.columns[from].file,
                     first, last),
            "series");
    for (int column = from; column <= to; ++column)
        spec.steps.append({column, timeAtEnd(table, column), QString()});
}

void addPattern(const FeatureTable &table, const QString &pattern, SeriesSpec &spec)
{
    const QString prefix = pattern.section(QLatin1Char('*'), 0, 0);
    const QString suffix = pattern.section(QLatin1Char('*'), 1, 1);
    const int before = spec.steps.size();
    for (int column = 0; column < table.columns.size(); ++column) {
        const QString &name = table.columns[column].name;
        if (name.size() <= prefix.size() + suffix.size() || !name.startsWith(prefix)
            || !name.endsWith(suffix))
            continue;
        const QString time = name.mid(prefix.size(), name.size() - prefix.size() - suffix.size());
        if (recogniseTimes({time}))
            spec.steps.append({column, time, QString()});
    }
    if (spec.steps.size() == before)
        fail(QStringLiteral("%1: no field %2 with a time in the place of *")
                 .arg(table.file, pattern));
}

void addItem(const FeatureTable &table, const QString &item, SeriesSpec &spec)
{
    const int at = item.lastIndexOf(QLatin1Char('@'));
    const int dots = item.indexOf(QLatin1String(".."));
    if (at > 0) {
        const QString time = item.mid(at + 1);
        const int slash = time.indexOf(QLatin1Char('/'));
        spec.steps.append({requireColumn(table, item.left(at)), slash < 0 ? time : time.left(slash),
                           slash < 0 ? QString() : time.mid(slash + 1)});
    } else if (table.indexOf(item) >= 0) {
        spec.steps.append({table.indexOf(item), timeAtEnd(table, table.indexOf(item)), QString()});
    } else if (dots > 0) {
        addRange(table, item.left(dots), item.mid(dots + 2), spec);
    } else if (item.count(QLatin1Char('*')) == 1) {
        addPattern(table, item, spec);
    } else {
        requireColumn(table, item);
    }
}

} // namespace

int requireColumn(const FeatureTable &table, const QString &name)
{
    const int index = table.indexOf(name);
    if (index < 0)
        fail(QStringLiteral("%1: no field %2; there are: %3")
                 .arg(table.file, name, someOf(table.columnNames())));
    return index;
}

SeriesSpec parseSeries(const QString &text, const FeatureTable &table)
{
    const auto parts = splitName(text);
    SeriesSpec spec{parts.first, {}};
    for (const QString &item : parts.second.split(QLatin1Char(',')))
        addItem(table, item.trimmed(), spec);
    return spec;
}

ObservationSpec parseObservation(const QString &text, const FeatureTable &table)
{
    const auto parts = splitName(text);
    const int at = parts.second.lastIndexOf(QLatin1Char('@'));
    if (at < 1)
        failUsage(QStringLiteral(
                      "\"%1\" is no observation: write NAME=VALUE@START or NAME=VALUE@START/END, "
                      "all three fields of the table")
                      .arg(text));
    const QString start = parts.second.mid(at + 1).section(QLatin1Char('/'), 0, 0);
    const QString end = parts.second.mid(at + 1).section(QLatin1Char('/'), 1);
    ObservationSpec spec{parts.first, requireColumn(table, parts.second.left(at)),
                         requireColumn(table, start), -1};
    if (!end.isEmpty()) {
        const bool untilNext = end == QLatin1String("next") && table.indexOf(end) < 0;
        spec.end = untilNext ? ObservationSpec::kUntilNext : requireColumn(table, end);
    }
    return spec;
}

} // namespace meridor
