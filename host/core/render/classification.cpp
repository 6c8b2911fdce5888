// SPDX-License-Identifier: MIT
#include "core/render/classification.h"
#include <QHash>
#include <QMap>
#include <algorithm>
#include <cmath>
#include "core/grids/gridValues.h"
#include "core/project/cancel.h"
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "core/project/text.h"
#include "core/render/classes.h"
#include "core/render/palette.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

const QColor kOthers(0xe8, 0xe6, 0xdf);

/// The kinds of clusters that local tests store, in the order and colours of a legend: red is high
/// among high, blue low among low, and pale what differs from its neighbours.
struct Cluster {
    const char *name;
    QRgb color;
};
constexpr Cluster kClusters[] = {{"high-high", 0xffca0020},
                                 {"high-low", 0xfff4a582},
                                 {"low-high", 0xff92c5de},
                                 {"low-low", 0xff0571b0},
                                 {"not significant", 0xffe8e6df}};

struct Method {
    const char *name;
    const char *description;
    const char *palette;
};
constexpr Method kMethods[] = {{"equal", "equal intervals", "lagoon"},
                               {"quantile", "classes of equal size", "lagoon"},
                               {"jenks", "natural breaks", "lagoon"},
                               {"stddev", "standard deviations from the mean", "RdYlBu"},
                               {"box", "quartiles and outliers", "RdYlBu"},
                               {"unique", "", ""}};
constexpr Method kOwnLimits = {"", "given limits", "lagoon"};

const Method &methodOf(const ClassRule &rule)
{
    if (!rule.limits.isEmpty())
        return kOwnLimits;
    for (const Method &method : kMethods)
        if (rule.method == QLatin1String(method.name))
            return method;
    return kMethods[2];
}

bool isMethod(const Method &method, const char *name)
{
    return qstrcmp(method.name, name) == 0;
}

/// The times, or without any those of the values.
QVector<qint64> timesOf(int dataset, QVector<qint64> times, int realization)
{
    if (times.isEmpty())
        for (const Interval &interval : dataTimes(dataset, realization))
            times.append(instantOf(interval));
    return times;
}

/// The values of each time; of all times and objects if there are none.
QVector<ValuesAt> valuesOf(int dataset, const QVector<qint64> &times, int realization)
{
    QVector<ValuesAt> values;
    for (const qint64 time : times)
        values.append(existingValuesAt(dataset, time, realization));
    if (!times.isEmpty())
        return values;
    for (const Interval &interval : dataTimes(dataset, realization)) {
        stopIfCancelled();
        const qint64 time = instantOf(interval);
        values.append(datasetOf(dataset)->IsStatic()
                          ? valuesAt(dataset, time, realization)
                          : existingValuesAt(dataset, time, realization));
    }
    return values;
}

/// The values of the times, ascending; of large grids a sample, which holds the least and the largest.
QVector<double> sortedValues(int dataset, const QVector<qint64> &times, int realization)
{
    const QVector<qint64> all = timesOf(dataset, times, realization);
    if (isLargeGrid(dataset, all.size())) {
        QVector<double> sample = gridSample(dataset, all, realization, kSampledCells);
        std::sort(sample.begin(), sample.end());
        return sample;
    }
    QVector<double> sorted;
    for (const ValuesAt &values : valuesOf(dataset, times, realization)) {
        stopIfCancelled();
        for (int i = 0; i < values.numbers.size(); ++i)
            if (std::isfinite(values.numbers[i]) && !values.missing.contains(i))
                sorted.append(values.numbers[i]);
    }
    std::sort(sorted.begin(), sorted.end());
    return sorted;
}

QVector<double> deviationLimits(const QVector<double> &sorted)
{
    double mean = 0;
    for (int i = 0; i < sorted.size(); ++i)
        mean += (sorted[i] - mean) / (i + 1);
    double sum = 0;
    for (const double value : sorted)
        sum += (value - mean) * (value - mean);
    const double deviation = std::sqrt(sum / sorted.size());
    QVector<double> limits;
    for (int i = -2; i <= 2; ++i)
        limits.append(mean + i * deviation);
    return limits;
}

QVector<double> boxLimits(const QVector<double> &sorted)
{
    const double low = quantileOf(sorted, 0.25);
    const double high = quantileOf(sorted, 0.75);
    const double reach = 1.5 * (high - low);
    return {low - reach, low, quantileOf(sorted, 0.5), high, high + reach};
}

/// The limits of classes that are open at both ends, closed by the smallest and the largest value.
QVector<double> closed(QVector<double> limits, const QVector<double> &sorted)
{
    limits.prepend(std::min(limits.first(), sorted.first()));
    limits.append(std::max(limits.last(), sorted.last()));
    return limits;
}

/// Own limits, with a further class at an end that values are beyond.
QVector<double> widened(QVector<double> limits, double least, double most)
{
    if (least < limits.first())
        limits.prepend(least);
    if (most > limits.last())
        limits.append(most);
    if (limits.size() == 1)
        limits.append(limits.first());
    return limits;
}

/// Moves the outer limits to the least and the largest value of a time.
void coverTime(QVector<double> &limits, int dataset, qint64 time, int realization)
{
    const auto cover = [&limits](double value) {
        limits.first() = std::min(limits.first(), value);
        limits.last() = std::max(limits.last(), value);
    };
    if (rasterOf(dataset)) {
        visitCells(dataset, time, realization, [&](int, int, double value) { cover(value); });
        return;
    }
    const ValuesAt values = datasetOf(dataset)->IsStatic()
                                ? valuesAt(dataset, time, realization)
                                : existingValuesAt(dataset, time, realization);
    for (int i = 0; i < values.numbers.size(); ++i)
        if (std::isfinite(values.numbers[i]) && !values.missing.contains(i))
            cover(values.numbers[i]);
}

/// The limits of many values are found in a sample, which may leave some values outside.
void coverAll(QVector<double> &limits, int dataset, const QVector<qint64> &times, int realization)
{
    if (limits.isEmpty())
        return;
    for (const qint64 time : timesOf(dataset, times, realization)) {
        stopIfCancelled();
        coverTime(limits, dataset, time, realization);
    }
}

/// A limit in full, or with an exponent where it would fill the legend with digits.
QString limitText(double limit, int decimals)
{
    constexpr double kLongest = 1e15;
    return std::abs(limit) < kLongest
               ? grouped(limit, decimals)
               : QString::number(limit, 'g', 4).replace(QLatin1Char('-'), QChar(0x2212));
}

QString classText(double low, double high, int decimals)
{
    if (low == high)
        return limitText(low, decimals);
    return limitText(low, decimals) + QStringLiteral(" \u2013 ") + limitText(high, decimals);
}

/// The colours of a rule from the lowest class to the highest.
QVector<QColor> colorsOf(const ClassRule &rule, int count)
{
    const QString own = QLatin1String(methodOf(rule).palette);
    const bool unordered = unorderedPaletteNames().contains(rule.palette, Qt::CaseInsensitive);
    QVector<QColor> colors =
        unordered ? categoricalColors(count, rule.palette)
                  : sequentialColors(rule.palette.isEmpty() ? own : rule.palette, count);
    // RdYlBu begins with red, which is to mean high values.
    const bool turned = rule.palette.isEmpty() && own == QLatin1String("RdYlBu");
    if (rule.reversed != turned)
        std::reverse(colors.begin(), colors.end());
    return colors;
}

} // namespace

QStringList classMethods()
{
    QStringList names;
    for (const Method &method : kMethods)
        names.append(QLatin1String(method.name));
    return names;
}

void requireRule(const ClassRule &rule)
{
    if (!rule.method.isEmpty() && !classMethods().contains(rule.method))
        failUsage(
            QStringLiteral("no method %1; there are: %2").arg(rule.method, someOf(classMethods())));
    if (!rule.limits.isEmpty() && !rule.method.isEmpty())
        failUsage(QStringLiteral("given limits exclude the method %1").arg(rule.method));
    for (int i = 0; i < rule.limits.size(); ++i)
        if (!std::isfinite(rule.limits[i]) || (i > 0 && rule.limits[i] <= rule.limits[i - 1]))
            failUsage(QStringLiteral("limits of classes ascend: %1 does not")
                          .arg(exactNumber(rule.limits[i])));
    if (!rule.palette.isEmpty())
        requirePalette(rule.palette);
}

Classification::Classification(int dataset, const QVector<qint64> &times, const ClassRule &rule,
                               int realization)
    : mRealization(realization)
{
    requireRule(rule);
    const bool numeric = datasetOf(dataset)->IsNumeric();
    mUnique = rule.method == QLatin1String("unique") || !numeric;
    if (!numeric
        && (!rule.limits.isEmpty()
            || (!rule.method.isEmpty() && rule.method != QLatin1String("unique"))))
        fail(QStringLiteral("%1 holds texts; its classes are its unique values")
                 .arg(datasetName(dataset)));
    if (mUnique)
        enumerate(dataset, times, rule);
    else
        divide(dataset, times, rule);
}

int Classification::of(double value) const
{
    if (mUnique)
        return std::isfinite(value) ? of(exactNumber(value)) : -1;
    return classOf(value, mLimits);
}

void Classification::divide(int dataset, const QVector<qint64> &times, const ClassRule &rule)
{
    const Method &method = methodOf(rule);
    const bool boxes = isMethod(method, "box");
    const bool open = boxes || isMethod(method, "stddev");
    mDescription = QLatin1String(method.description);
    if (open || !rule.limits.isEmpty()) {
        const QVector<double> sorted = sortedValues(dataset, times, mRealization);
        if (!sorted.isEmpty())
            mLimits = boxes  ? closed(boxLimits(sorted), sorted)
                      : open ? closed(deviationLimits(sorted), sorted)
                             : widened(rule.limits, sorted.first(), sorted.last());
    } else {
        const auto type = classificationOf(QLatin1String(method.name));
        mLimits = times.isEmpty() ? breaksOfAll(dataset, type, rule.count, mRealization)
                                  : breaksAt(dataset, times, type, rule.count, mRealization);
        coverAll(mLimits, dataset, times, mRealization);
        // Many equal values make limits that coincide. A first class from a limit to the same limit
        // holds the values that equal it; any other such class is empty.
        const bool startsEqual = mLimits.size() > 1 && mLimits[0] == mLimits[1];
        mLimits.erase(std::unique(mLimits.begin(), mLimits.end()), mLimits.end());
        if (startsEqual)
            mLimits.prepend(mLimits.first());
    }
    const int count = std::max(0, static_cast<int>(mLimits.size()) - 1);
    const QVector<QColor> colors = colorsOf(rule, count);
    const int decimals = decimalsFor(open ? mLimits.mid(1, count - 1) : mLimits);
    for (int i = 0; i < count; ++i) {
        QString text = classText(mLimits[i], mLimits[i + 1], decimals);
        if (open && i == 0)
            text = QStringLiteral("up to ") + limitText(mLimits[1], decimals);
        else if (open && i == count - 1)
            text = QStringLiteral("above ") + limitText(mLimits[i], decimals);
        mEntries.append({colors[i], text});
    }
}

namespace {

/// The classes of a dataset of clusters that are among the texts; none for other texts.
QVector<LegendEntry> clusterEntries(const QStringList &names)
{
    QVector<LegendEntry> entries;
    for (const Cluster &cluster : kClusters)
        if (names.contains(QLatin1String(cluster.name)))
            entries.append({QColor(cluster.color), QLatin1String(cluster.name)});
    return entries.size() == names.size() ? entries : QVector<LegendEntry>();
}

} // namespace

void Classification::enumerate(int dataset, const QVector<qint64> &times, const ClassRule &rule)
{
    const bool numeric = datasetOf(dataset)->IsNumeric();
    QMap<QString, int> counts;
    QHash<double, int> tally;
    const auto add = [&](double value) {
        if (value != std::floor(value))
            fail(QStringLiteral("%1 holds decimals; unique values are of texts and integers")
                     .arg(datasetName(dataset)));
        ++tally[value];
    };
    if (rasterOf(dataset)) {
        for (const qint64 time : timesOf(dataset, times, mRealization))
            visitCells(dataset, time, mRealization, [&](int, int, double value) { add(value); });
    } else {
        for (const ValuesAt &values : valuesOf(dataset, times, mRealization)) {
            stopIfCancelled();
            const int size = numeric ? values.numbers.size() : values.texts.size();
            for (int i = 0; i < size; ++i) {
                if (values.missing.contains(i))
                    continue;
                if (!numeric)
                    ++counts[values.texts[i]];
                else if (std::isfinite(values.numbers[i]))
                    add(values.numbers[i]);
            }
        }
    }
    QMap<double, QString> numbers; // in ascending order
    for (auto each = tally.cbegin(); each != tally.cend(); ++each) {
        const QString text = exactNumber(each.key());
        numbers.insert(each.key(), text);
        counts[text] = each.value();
    }
    QStringList names = counts.keys();
    std::stable_sort(names.begin(), names.end(), [&counts](const QString &a, const QString &b) {
        return counts[a] > counts[b];
    });
    if (rule.palette.isEmpty() && !rule.reversed && !numeric) {
        mEntries = clusterEntries(names);
        for (int i = 0; i < mEntries.size(); ++i)
            mTexts.insert(mEntries[i].text, i);
        if (!mEntries.isEmpty())
            return;
    }
    const int most = categoricalColorCount(rule.palette);
    const bool tooMany = names.size() > most;
    if (tooMany)
        names = names.mid(0, most - 1);
    if (numeric) {
        const QStringList kept = names;
        names.clear();
        for (const QString &text : numbers)
            if (kept.contains(text))
                names.append(text);
    }
    QVector<QColor> colors = categoricalColors(names.size(), rule.palette);
    if (rule.reversed)
        std::reverse(colors.begin(), colors.end());
    for (int i = 0; i < names.size(); ++i) {
        mTexts.insert(names[i], i);
        mEntries.append({colors[i], names[i]});
    }
    if (tooMany) {
        mOthers = mEntries.size();
        mEntries.append({kOthers, QStringLiteral("others")});
    }
}

} // namespace meridor
