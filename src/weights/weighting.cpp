// SPDX-License-Identifier: MIT
// The weights of one object's neighbours. Sums and quotients are calculated in double; only the
// final weight is rounded to float.
//
// With d the distance and r the number of nearer neighbours, a weight is 1, 1 / count, 1 / (1 + r)
// or numerator / (1 + d^power); for polygons it can also be the length of the shared border, or
// that length divided by the sum for all neighbours.
#include "weights/weighting.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>
#include "Common/detail/failure.h"
#include "datainterface/OrderedDouble.h"

namespace datainterface {
namespace {

// The relative difference of squared distances up to which two neighbours tie. The point tree
// reports distances as ties if they differ only by rounding; after rounding to float such distances
// are at most one unit in the last place apart. The width is relative, so it does not depend on the
// unit of the map.
constexpr double kTieWidth = std::numeric_limits<float>::epsilon();

double shareOf(double part, double whole)
{
    return whole == 0.0 ? 0.0 : part / whole;
}

template <class Weight> void weigh(neighborDatum *list, int count, Weight weight)
{
    for (neighborDatum *datum = list; datum != list + count; ++datum)
        datum->weight = narrowed(weight(*datum));
}

/// Weights of 1 / (1 + number of nearer neighbours).
void weighByRank(neighborDatum *list, int count)
{
    std::vector<OrderedDouble> distances;
    distances.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i)
        distances.emplace_back(static_cast<double>(list[i].distance));
    std::sort(distances.begin(), distances.end());
    weigh(list, count, [&distances](const neighborDatum &datum) {
        const OrderedDouble distance(static_cast<double>(datum.distance));
        const auto nearer =
            std::lower_bound(distances.begin(), distances.end(), distance) - distances.begin();
        return 1.0 / (1.0 + static_cast<double>(nearer));
    });
}

/// The number of neighbours at the end of the list that tie with the last one.
int tiesAtTheEnd(const neighborDatum *list, int count)
{
    const double last = static_cast<double>(list[count - 1].distance);
    int ties = 0;
    const auto isTied = [last](double distance) {
        return distance == last || std::abs(distance - last) <= kTieWidth * last;
    };
    while (ties < count && isTied(static_cast<double>(list[count - 1 - ties].distance)))
        ++ties;
    return ties;
}

} // namespace

void WeightRule::apply(neighborDatum *list, int count) const
{
    if (isRaster)
        return weighCells(list, count);
    if (method == PolygonNeighbors)
        return weighPolygons(list, count);
    if (method == NearestNeighbors || method == RangeNeighbors)
        weighPoints(list, count);
}

void WeightRule::weighCells(neighborDatum *list, int count) const
{
    switch (type) {
    case ConstantWeight:
        return weigh(list, count, [](const neighborDatum &) { return 1.0; });
    case RowStandardizedWeight:
        return weigh(list, count, [count](const neighborDatum &) { return 1.0 / count; });
    case DistanceRankWeight:
        return weighByRank(list, count);
    case InverseDistanceWeight:
        return weigh(list, count, [this](const neighborDatum &datum) {
            return numerator / (1.0 + std::pow(static_cast<double>(datum.distance), power));
        });
    default:
        fail("Invalid weight set type");
    }
}

// A list of nearest neighbours can be longer than requested because of ties at the last distance.
// The tied neighbours share the remaining places: each gets the factor 1 - (count - neighborCount)
// / ties, so that all factors sum to neighborCount.
void WeightRule::weighPoints(neighborDatum *list, int count) const
{
    const bool hasShared = method == NearestNeighbors && count > neighborCount && count > 0;
    const int ties = hasShared ? tiesAtTheEnd(list, count) : 0;
    const double shared = hasShared ? 1.0 - static_cast<double>(count - neighborCount) / ties : 1.0;
    const auto factor = [&](const neighborDatum &datum) {
        return &datum - list >= count - ties ? shared : 1.0;
    };
    switch (type) {
    case ConstantWeight:
        return weigh(list, count, factor);
    case RowStandardizedWeight: {
        double sum = 0.0;
        for (int i = 0; i < count; ++i)
            sum += factor(list[i]);
        return weigh(list, count,
                     [&](const neighborDatum &datum) { return shareOf(factor(datum), sum); });
    }
    case DistanceRankWeight:
        return weighByRank(list, count);
    case InverseDistanceWeight: // the 1 keeps the weight of a distance 0 finite
        return weigh(list, count, [this](const neighborDatum &datum) {
            return numerator
                   / (1.0 + std::pow(std::sqrt(static_cast<double>(datum.distance)), power));
        });
    default:
        fail("Invalid weight set type");
    }
}

void WeightRule::weighPolygons(neighborDatum *list, int count) const
{
    switch (type) {
    case ConstantWeight:
        return weigh(list, count, [](const neighborDatum &) { return 1.0; });
    case RowStandardizedWeight:
        return weigh(list, count, [count](const neighborDatum &) { return 1.0 / count; });
    case BorderLengthWeight:
        return weigh(list, count, [](const neighborDatum &datum) {
            return static_cast<double>(datum.distance);
        });
    case BorderShareWeight: {
        double borders = 0.0;
        for (int i = 0; i < count; ++i)
            borders += static_cast<double>(list[i].distance);
        return weigh(list, count, [borders](const neighborDatum &datum) {
            return shareOf(static_cast<double>(datum.distance), borders);
        });
    }
    default:
        fail("Invalid weight set type");
    }
}

} // namespace datainterface
