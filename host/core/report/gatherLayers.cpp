// SPDX-License-Identifier: MIT
#include "core/report/gatherLayers.h"
#include <QHash>
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/grids/valuesAt.h"
#include "core/project/catalog.h"
#include "core/render/classes.h"
#include "core/render/palette.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeographyAPI.h"

namespace meridor {
namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();
constexpr int kClasses = 7;
/// The number of distinct values up to which the frequency table of a dataset is complete.
constexpr int kMostForJenks = 5000;
constexpr int kMostWords = 11;          ///< words with separate colours
constexpr int kMostCells = 160000;      ///< of one grid
constexpr qint64 kMostValues = 2000000; ///< of the grids of a geography

/// Percentages of the mean of each row; empty if a value is negative or the mean of a row is not
/// positive.
QVector<QVector<double>> relativeRows(const QVector<QVector<double>> &rows)
{
    QVector<QVector<double>> relative;
    for (const QVector<double> &row : rows) {
        double sum = 0;
        int count = 0;
        for (const double value : row) {
            if (value < 0)
                return {};
            if (!std::isnan(value)) {
                sum += value;
                ++count;
            }
        }
        if (!(sum > 0))
            return {};
        QVector<double> parts;
        for (const double value : row)
            parts.append(100 * value * count / sum);
        relative.append(parts);
    }
    return relative;
}

/// The next number above of the form 1, 2 or 5 times a power of ten.
double roundStep(double value)
{
    const double power = std::pow(10, std::floor(std::log10(value)));
    for (const double step : {1.0, 2.0, 2.5, 5.0})
        if (step * power >= value)
            return step * power;
    return 10 * power;
}

/// Six classes around 100; about half of the values are in the two classes next to 100.
LayerView relativeView(const QVector<QVector<double>> &rows)
{
    QVector<double> distances;
    double low = 100;
    double high = 100;
    for (const QVector<double> &row : rows)
        for (const double value : row)
            if (!std::isnan(value)) {
                distances.append(std::abs(value - 100));
                low = std::min(low, value);
                high = std::max(high, value);
            }
    LayerView view{QStringLiteral("Compared with the mean of each time"), true, {}, {}};
    if (distances.isEmpty() || !(high > low))
        return view;
    const auto middle = distances.begin() + distances.size() * 2 / 5;
    std::nth_element(distances.begin(), middle, distances.end());
    const double step = std::min(50.0, roundStep(std::max(*middle, 1e-6)));
    static const char *const kColors[] = {"#8c510a", "#cf9a4a", "#ecd9b0",
                                          "#bfe0da", "#56a79c", "#0b5f57"};
    view.breaks = {
        std::min(low, 100 - 2 * step), 100 - 2 * step, 100 - step, 100, 100 + step, 100 + 2 * step,
        std::max(high, 100 + 2 * step)};
    for (const char *color : kColors)
        view.colors.append(QLatin1String(color));
    return view;
}

QStringList names(const QVector<QColor> &colors)
{
    QStringList texts;
    for (const QColor &color : colors)
        texts.append(color.name());
    return texts;
}

/// Class limits with equal numbers of values.
QVector<double> quantiles(const QVector<QVector<double>> &rows)
{
    QVector<double> values;
    for (const QVector<double> &row : rows)
        for (const double value : row)
            if (!std::isnan(value))
                values.append(value);
    std::sort(values.begin(), values.end());
    QVector<double> breaks;
    for (int i = 0; i <= kClasses && !values.isEmpty(); ++i)
        breaks.append(values[static_cast<int>(qint64(values.size() - 1) * i / kClasses)]);
    return breaks;
}

LayerView plainView(int dataset, const ReportLayer &layer)
{
    // A frequency table that has reached its limit is incomplete, so classes from it would omit
    // values. Large grids have none until it is requested.
    bool capped = false;
    const int different = VORN_GetUniqueDataCount(dataset, capped);
    const bool jenks = different > 0 && different < kMostForJenks && !capped;
    QVector<double> breaks =
        jenks ? breaksOfAll(dataset, MDataset::Jenks, kClasses, layer.realization - 1)
              : quantiles(layer.rows);
    breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
    if (breaks.size() == 1)
        breaks.append(breaks.first());
    return {jenks ? QStringLiteral("Natural breaks of all times")
                  : QStringLiteral("Classes of equal size, of all times"),
            false, breaks,
            names(sequentialColors(QString(), std::max(0, static_cast<int>(breaks.size()) - 1)))};
}

/// The share of the variance that is within times, between objects.
double shareWithinTimes(const QVector<QVector<double>> &rows)
{
    double count = 0, sum = 0, squares = 0, between = 0;
    for (const QVector<double> &row : rows) {
        double rowSum = 0, rowCount = 0;
        for (const double value : row)
            if (!std::isnan(value)) {
                rowSum += value;
                ++rowCount;
                squares += value * value;
            }
        count += rowCount;
        sum += rowSum;
        between += rowCount > 0 ? rowSum * rowSum / rowCount : 0;
    }
    const double all = squares - sum * sum / std::max(1.0, count);
    return all > 0 ? (squares - between) / all : 1;
}

void addViews(int dataset, ReportLayer &layer)
{
    if (layer.isText) {
        // The most frequent words have colours; the last colour is that of all others.
        const int colors = std::min(kMostWords, static_cast<int>(layer.words.size()));
        layer.views.append(
            {QStringLiteral("The commonest names"), false, {}, names(categoricalColors(colors))});
        return;
    }
    layer.views.append(plainView(dataset, layer));
    const QVector<QVector<double>> relative =
        layer.rows.size() > 1 ? relativeRows(layer.rows) : QVector<QVector<double>>();
    if (relative.isEmpty())
        return;
    const LayerView view = relativeView(relative);
    if (view.breaks.isEmpty())
        return;
    layer.views.append(view);
    // If most of the variance is between times, the map of one time would have few colours.
    if (shareWithinTimes(layer.rows) < 0.3)
        layer.view = 1;
}

/// Numbers the words of a layer by frequency, the most frequent first.
void numberWords(const QVector<QStringList> &texts, ReportLayer &layer)
{
    QHash<QString, int> counts;
    for (const QStringList &row : texts)
        for (const QString &text : row)
            if (!text.isNull())
                ++counts[text];
    layer.words = counts.keys();
    std::sort(layer.words.begin(), layer.words.end(), [&](const QString &a, const QString &b) {
        return counts[a] != counts[b] ? counts[a] > counts[b] : a < b;
    });
    QHash<QString, int> numbers;
    for (int i = 0; i < layer.words.size(); ++i)
        numbers.insert(layer.words[i], i);
    for (const QStringList &row : texts) {
        QVector<double> numbered;
        for (const QString &text : row)
            numbered.append(text.isNull() ? kMissing : numbers.value(text));
        layer.rows.append(numbered);
    }
}

QVector<double> shownCells(const QVector<double> &all, int columns, const ReportGeography &shown)
{
    if (shown.every == 1)
        return all;
    QVector<double> cells;
    for (int row = 0; row < shown.rows; ++row)
        for (int column = 0; column < shown.columns; ++column)
            cells.append(all[row * shown.every * columns + column * shown.every]);
    return cells;
}

} // namespace

void chooseCells(int geography, int times, ReportGeography &shown)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    const auto parts = [](int cells, int every) { return (cells + every - 1) / every; };
    for (shown.every = 1;; ++shown.every) {
        shown.rows = parts(props.rows, shown.every);
        shown.columns = parts(props.columns, shown.every);
        const qint64 cells = qint64(shown.rows) * shown.columns;
        if (cells == 1 || (cells <= kMostCells && cells * times <= kMostValues))
            return;
    }
}

ReportLayer gatherLayer(int dataset, int realization, const ReportGeography &shown,
                        const std::function<void()> &stop)
{
    const int geography = VORN_GetGeographyId(dataset);
    const DatasetProps props = VORN_GetDatasetProperties(dataset);
    ReportLayer layer;
    layer.name = datasetName(dataset);
    layer.realization = realization + 1;
    layer.type = typeText(props);
    if (const QString shownOne = realizationText(dataset, realization); !shownOne.isEmpty())
        layer.type += QStringLiteral(", ") + shownOne;
    layer.always = props.isStatic;
    layer.isText = !rasterOf(dataset) && !datasetOf(dataset)->IsNumeric();
    QVector<QStringList> texts;
    const auto add = [&](qint64 time) {
        stop();
        ValuesAt values = valuesAt(dataset, time, realization);
        const QSet<int> missing = values.missing;
        if (layer.isText) {
            for (const int object : missing)
                values.texts[object] = QString();
            texts.append(values.texts);
            return;
        }
        for (const int object : missing)
            values.numbers[object] = kMissing;
        for (double &value : values.numbers)
            if (!std::isfinite(value))
                value = kMissing;
        layer.rows.append(rasterOf(dataset) ? shownCells(
                              values.numbers, VORN_GetGeographyProperties(geography).columns, shown)
                                            : values.numbers);
    };
    const QVector<Interval> times = dataTimes(dataset, realization);
    if (layer.always && !times.isEmpty())
        add(instantOf(times.first()));
    for (int step = 0; step < shown.steps.size() && !layer.always; ++step)
        if (times.contains(shown.steps[step].when)) {
            layer.steps.append(step);
            add(shown.steps[step].instant);
        }
    if (layer.isText)
        numberWords(texts, layer);
    addViews(dataset, layer);
    return layer;
}

} // namespace meridor
