// SPDX-License-Identifier: MIT
#include "core/geostatistics/samples.h"
#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include "core/project/catalog.h"
#include "core/project/failure.h"
#include "datainterface/DataAPI.h"
#include "datainterface/GeoPointTree.h"
#include "datainterface/GeographyAPI.h"
#include "datainterface/MRasterDataset.h"
#include "datainterface/RasterAPI.h"

namespace meridor {
namespace {

Places cellCentres(const GeoProps &grid)
{
    Places places;
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            places.x.push_back(grid.bounds.left() + (column + 0.5) * grid.pixelWidth);
            places.y.push_back(grid.bounds.bottom() - (row + 0.5) * grid.pixelHeight);
            places.objects.push_back(row * grid.columns + column);
        }
    }
    return places;
}

QVector<double> numbersAt(int dataset, qint64 time, int realization, QSet<int> &missing)
{
    QVector<double> values;
    bool there = false;
    if (rasterOf(dataset)) {
        MissingFlag flag;
        there = VORN_GetRasterDataAsDecimal(dataset, realization, time, values, flag);
    } else {
        there = VORN_GetNumericValues(dataset, realization, time, values, missing);
    }
    if (!there)
        fail(QStringLiteral("%1 holds no values at %2")
                 .arg(datasetName(dataset), axisOf(VORN_GetGeographyId(dataset)).show(time)));
    return values;
}

} // namespace

void Samples::add(const QPointF &place, double value, int object)
{
    x.push_back(place.x());
    y.push_back(place.y());
    values.push_back(value);
    objects.push_back(object);
}

QVector<Interval> sampleTimes(int dataset, const QStringList &times, int realization)
{
    const QVector<Interval> found = shapeTimesAt(dataset, times, realization);
    if (!datasetOf(dataset)->IsStatic() || found.size() <= 1)
        return found;
    if (!times.isEmpty())
        failUsage(QStringLiteral("the values of %1 hold at all times: give one time of its places")
                      .arg(datasetName(dataset)),
                  "at");
    return {found.last()};
}

Interval sampleTime(int dataset, const QString &time, int realization)
{
    const QVector<Interval> found =
        sampleTimes(dataset, time.isEmpty() ? QStringList() : QStringList{time}, realization);
    if (found.isEmpty())
        fail(QStringLiteral("%1 holds no values").arg(datasetName(dataset)));
    return found.last();
}

Places placesAt(int geography, qint64 time)
{
    const GeoProps props = VORN_GetGeographyProperties(geography);
    if (props.type == GeoProps::Raster)
        return cellCentres(props);
    if (props.type == GeoProps::Lines)
        fail(QStringLiteral("%1 consists of lines, which are no places").arg(props.name));
    GeoPointTree tree;
    if (!tree.SetGeography(geography, shapeTime(geography, time), PT_RotationMatrix()))
        cancelled();
    constexpr double kFar = 1e300;
    QVector<ptTreeQueryResult> hits;
    tree.GetPointsInRect(QRectF(-kFar, -kFar, 2 * kFar, 2 * kFar), {}, hits);
    Places places;
    for (const ptTreeQueryResult &hit : hits) {
        places.x.push_back(hit.point.x());
        places.y.push_back(hit.point.y());
        places.objects.push_back(hit.id);
    }
    return places;
}

Samples samplesAt(int dataset, qint64 time, int realization)
{
    const MDataset *found = datasetOf(dataset);
    if (!found->IsNumeric())
        fail(QStringLiteral("%1 holds texts").arg(datasetName(dataset)));
    const int realizations = VORN_GetDatasetProperties(dataset).realizationCount;
    if (realization < 0 || realization >= realizations)
        fail(QStringLiteral("%1 has no realization %2; it has %3")
                 .arg(datasetName(dataset))
                 .arg(realization + 1)
                 .arg(realizations),
             "realization");
    QSet<int> missing;
    const QVector<double> values = numbersAt(dataset, time, realization, missing);
    const Places places = placesAt(VORN_GetGeographyId(dataset), time);
    Samples samples;
    for (size_t i = 0; i < places.size(); ++i) {
        const int object = places.objects[i];
        if (object < values.size() && !missing.contains(object) && std::isfinite(values[object]))
            samples.add({places.x[i], places.y[i]}, values[object], object);
    }
    return samples;
}

Samples withoutColocated(const Samples &samples, int &merged)
{
    std::map<std::pair<double, double>, size_t> rows;
    std::vector<double> counts;
    Samples kept;
    for (size_t i = 0; i < samples.size(); ++i) {
        const auto found = rows.try_emplace({samples.x[i], samples.y[i]}, kept.size());
        if (found.second) {
            kept.add({samples.x[i], samples.y[i]}, samples.values[i], samples.objects[i]);
            counts.push_back(1);
            continue;
        }
        const size_t row = found.first->second;
        counts[row] += 1;
        kept.values[row] += (samples.values[i] - kept.values[row]) / counts[row];
    }
    merged = static_cast<int>(samples.size() - kept.size());
    return kept;
}

double diagonalOf(const Samples &samples)
{
    if (samples.size() == 0)
        return 0;
    const auto x = std::minmax_element(samples.x.begin(), samples.x.end());
    const auto y = std::minmax_element(samples.y.begin(), samples.y.end());
    return std::hypot(*x.second - *x.first, *y.second - *y.first);
}

void requireTwo(size_t count, int dataset, const Interval &when, const char *purpose)
{
    if (count >= 2)
        return;
    const QString time =
        datasetOf(dataset)->IsStatic()
            ? QString()
            : QStringLiteral(" at ") + axisOf(VORN_GetGeographyId(dataset)).show(when);
    fail(QStringLiteral("%1 holds %2%3; %4 needs two values")
             .arg(datasetName(dataset),
                  count == 0 ? QStringLiteral("no values") : QStringLiteral("one value"), time,
                  QLatin1String(purpose)));
}

bool isApart(const Samples &samples, int geography)
{
    if (samples.size() == 0)
        return false;
    const auto x = std::minmax_element(samples.x.begin(), samples.x.end());
    const auto y = std::minmax_element(samples.y.begin(), samples.y.end());
    const QRectF bounds = VORN_GetGeographyProperties(geography).bounds;
    // Bounds of a single place or of places on a line have no area, so corners are compared.
    return *x.first > bounds.right() || *x.second < bounds.left() || *y.first > bounds.bottom()
           || *y.second < bounds.top();
}

} // namespace meridor
