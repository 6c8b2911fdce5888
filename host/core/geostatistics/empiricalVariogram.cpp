// SPDX-License-Identifier: MIT
// Pairs of points. The plane is cut into square tiles of a sixth of the cutoff. For each tile that
// has points the point tree gives all points in a rectangle that contains every partner to the
// right of a point of the tile; their coordinates are copied to contiguous arrays, over which the
// points of the tile loop. A pair is counted from its left point, or from the lower row if both
// have the same x, so each pair is counted once. The rectangle query of the tree is used because its
// hits carry neither distance nor angle, which would have to be calculated once for each hit, also
// for those that the points of the tile then skip.
//
// Pairs of cells. All pairs of a grid with the same offset in columns and rows have the same
// separation and direction, so the sums of one offset are added to a class at once.
#include "core/geostatistics/empiricalVariogram.h"
#include <algorithm>
#include <cmath>
#include "core/project/failure.h"
#include "fennimark/FM_PointTree.h"

namespace meridor {
namespace {

constexpr double kTilesPerCutoff = 6;
constexpr double kMostClasses = 10000;
constexpr double kPi = 3.14159265358979323846;
constexpr double kAngleSlack = 1e-9; ///< radians, so that a direction on a limit is within it

/// The angle between two undirected directions, 0 to pi / 2.
double angleBetween(double a, double b)
{
    const double turn = std::fabs(std::remainder(a - b, kPi));
    return turn;
}

struct Tile {
    qint64 column;
    qint64 row;
    int sample;
};

/// The samples ordered by tile.
std::vector<Tile> tilesOf(const Samples &samples, double side)
{
    const double left = *std::min_element(samples.x.begin(), samples.x.end());
    const double bottom = *std::min_element(samples.y.begin(), samples.y.end());
    std::vector<Tile> tiles;
    for (size_t i = 0; i < samples.size(); ++i)
        tiles.push_back({static_cast<qint64>(std::floor((samples.x[i] - left) / side)),
                         static_cast<qint64>(std::floor((samples.y[i] - bottom) / side)),
                         static_cast<int>(i)});
    std::sort(tiles.begin(), tiles.end(), [](const Tile &a, const Tile &b) {
        return a.row != b.row         ? a.row < b.row
               : a.column != b.column ? a.column < b.column
                                      : a.sample < b.sample;
    });
    return tiles;
}

/// The points near one tile as contiguous arrays.
struct Near {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<int> rows;

    void assign(const QVector<ptTreeQueryResult> &hits)
    {
        x.clear();
        y.clear();
        rows.clear();
        for (const ptTreeQueryResult &hit : hits) {
            x.push_back(hit.point.x());
            y.push_back(hit.point.y());
            rows.push_back(hit.id);
        }
    }
};

bool setPoints(FM_PointTree &tree, const Samples &samples)
{
    QVector<QPointF> points;
    QVector<int> rows;
    for (size_t i = 0; i < samples.size(); ++i) {
        points.append({samples.x[i], samples.y[i]});
        rows.append(static_cast<int>(i));
    }
    return tree.SetPoints(points, rows, nullptr, 0, 100);
}

} // namespace

void completeLags(LagPlan &plan, double diagonal)
{
    if (!(plan.cutoff > 0))
        plan.cutoff = diagonal / 3;
    if (!(plan.width > 0))
        plan.width = plan.cutoff / 15;
}

LagSums::LagSums(const LagPlan &plan) : mPlan(plan)
{
    if (!std::isfinite(plan.cutoff) || !(plan.cutoff > 0))
        fail(QStringLiteral("all places are the same; there are no separations"), "cutoff");
    if (!std::isfinite(plan.width) || !(plan.width > 0) || plan.width > plan.cutoff)
        fail(QStringLiteral("the width of a class is not between 0 and the cutoff"), "width");
    const double classes = std::ceil(plan.cutoff / plan.width * (1 - 1e-12));
    if (classes > kMostClasses)
        fail(QStringLiteral("the cutoff holds more than %1 classes").arg(kMostClasses), "width");
    mClasses = static_cast<size_t>(classes);
    mSums.resize(mClasses * std::max<size_t>(1, plan.directions.size()));
}

/// Calls `visit` with each class that takes a pair of this separation, if there is one.
template <class Visit> void LagSums::visitClasses(double h, double dx, double dy, Visit visit)
{
    const double position = h / mPlan.width;
    auto index = static_cast<size_t>(position);
    if (static_cast<double>(index) == position && index > 0)
        --index; // a class includes its upper limit
    index = std::min(index, mClasses - 1);
    if (mPlan.directions.empty()) {
        visit(mSums[index]);
        return;
    }
    const double angle = std::atan2(dy, dx);
    for (size_t d = 0; d < mPlan.directions.size(); ++d)
        if (angleBetween(angle, mPlan.directions[d]) <= mPlan.tolerance + kAngleSlack)
            visit(mSums[d * mClasses + index]);
}

void LagSums::addPair(double h, double dx, double dy, double term, qint64 pairs)
{
    const auto count = [&](Sum &sum) {
        sum.value += term;
        sum.lag += h * static_cast<double>(pairs);
        sum.pairs += pairs;
    };
    if (h == 0)
        count(mColocated);
    else
        visitClasses(h, dx, dy, count);
}

template <class Term> void LagSums::addPairs(const Samples &samples, Term term, const Meter &meter)
{
    if (samples.size() < 2)
        return;
    FM_PointTree tree;
    if (!setPoints(tree, samples))
        fail(QStringLiteral("a place is not finite"));
    const double cutoff = mPlan.cutoff;
    const double most = cutoff * cutoff;
    const std::vector<Tile> tiles = tilesOf(samples, cutoff / kTilesPerCutoff);
    QVector<ptTreeQueryResult> hits;
    Near near;
    for (size_t first = 0, end = 0; first < tiles.size(); first = end) {
        double left = samples.x[static_cast<size_t>(tiles[first].sample)];
        double bottom = samples.y[static_cast<size_t>(tiles[first].sample)];
        double right = left;
        double top = bottom;
        for (end = first; end < tiles.size() && tiles[end].row == tiles[first].row
                          && tiles[end].column == tiles[first].column;
             ++end) {
            const auto i = static_cast<size_t>(tiles[end].sample);
            left = std::min(left, samples.x[i]);
            right = std::max(right, samples.x[i]);
            bottom = std::min(bottom, samples.y[i]);
            top = std::max(top, samples.y[i]);
        }
        const double slack = 1e-9 * cutoff;
        const double reach = cutoff + slack;
        tree.GetPointsInRect(
            QRectF(QPointF(left, bottom - reach), QPointF(right + reach, top + reach)), {}, hits);
        near.assign(hits);
        for (size_t k = first; k < end; ++k) {
            const int row = tiles[k].sample;
            const double x = samples.x[static_cast<size_t>(row)];
            const double y = samples.y[static_cast<size_t>(row)];
            for (size_t j = 0; j < near.x.size(); ++j) {
                const double dx = near.x[j] - x;
                const double dy = near.y[j] - y;
                const double square = dx * dx + dy * dy;
                if (dx < 0 || square > most || (dx == 0 && near.rows[j] <= row))
                    continue;
                addPair(std::sqrt(square), dx, dy,
                        term(static_cast<size_t>(row), static_cast<size_t>(near.rows[j])));
            }
        }
        meter(static_cast<int>(100 * end / tiles.size()));
    }
}

void LagSums::add(const Samples &samples, const Meter &meter)
{
    const std::vector<double> &z = samples.values;
    if (mPlan.estimator == Estimator::Robust)
        addPairs(
            samples, [&z](size_t i, size_t j) { return std::sqrt(std::fabs(z[i] - z[j])); }, meter);
    else
        addPairs(
            samples, [&z](size_t i, size_t j) { return (z[i] - z[j]) * (z[i] - z[j]); }, meter);
}

void LagSums::add(const Samples &samples, const std::vector<double> &others, const Meter &meter)
{
    const std::vector<double> &z = samples.values;
    addPairs(
        samples, [&](size_t i, size_t j) { return (z[i] - z[j]) * (others[i] - others[j]); },
        meter);
}

namespace {

/// Sums over all pairs of cells that are `right` columns and `down` rows apart.
struct OffsetSum {
    double value = 0;
    qint64 pairs = 0;
};

template <class Term>
OffsetSum sumOfOffset(size_t columns, size_t rows, std::ptrdiff_t right, size_t down, Term term)
{
    OffsetSum sum;
    const size_t from = right < 0 ? static_cast<size_t>(-right) : 0;
    const size_t to = right < 0 ? columns : columns - static_cast<size_t>(right);
    for (size_t row = 0; row + down < rows; ++row) {
        for (size_t column = from; column < to; ++column) {
            const size_t a = row * columns + column;
            const size_t b = a + down * columns + static_cast<size_t>(right);
            const double value = term(a, b);
            if (std::isnan(value))
                continue;
            sum.value += value;
            ++sum.pairs;
        }
    }
    return sum;
}

} // namespace

double LagSums::addGrid(const std::vector<double> &values, const std::vector<double> &others,
                        int columns, double cellWidth, double cellHeight, const Meter &meter)
{
    const auto wide = static_cast<size_t>(columns);
    const size_t rows = values.size() / wide;
    const auto most = [&](double cell, size_t count) {
        return static_cast<std::ptrdiff_t>(
            std::min(std::floor(mPlan.cutoff / cell * (1 + 1e-12)), double(count) - 1));
    };
    const std::ptrdiff_t maxRight = most(cellWidth, wide);
    const std::ptrdiff_t maxDown = most(cellHeight, rows);
    std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>> offsets;
    double products = 0;
    for (std::ptrdiff_t down = 0; down <= maxDown; ++down) {
        for (std::ptrdiff_t right = down == 0 ? 1 : -maxRight; right <= maxRight; ++right) {
            if (std::hypot(static_cast<double>(right) * cellWidth,
                           static_cast<double>(down) * cellHeight)
                > mPlan.cutoff * (1 + 1e-12))
                continue;
            offsets.emplace_back(right, down);
            products += (double(wide) - std::fabs(double(right))) * double(rows - size_t(down));
        }
    }
    const auto step = static_cast<size_t>(std::max(1.0, std::ceil(products / kMostProducts)));
    const double *z = values.data();
    const double *u = others.data();
    for (size_t k = 0; k < offsets.size(); k += step) {
        const auto [right, down] = offsets[k];
        const auto sumOf = [&](auto term) {
            return sumOfOffset(wide, rows, right, static_cast<size_t>(down), term);
        };
        const OffsetSum sum =
            mPlan.estimator == Estimator::Cross
                ? sumOf([z, u](size_t a, size_t b) { return (z[a] - z[b]) * (u[a] - u[b]); })
            : mPlan.estimator == Estimator::Robust
                ? sumOf([z](size_t a, size_t b) { return std::sqrt(std::fabs(z[a] - z[b])); })
                : sumOf([z](size_t a, size_t b) { return (z[a] - z[b]) * (z[a] - z[b]); });
        const double dx = static_cast<double>(right) * cellWidth;
        const double dy = -static_cast<double>(down) * cellHeight;
        if (sum.pairs > 0)
            addPair(std::hypot(dx, dy), dx, dy, sum.value, sum.pairs);
        meter(static_cast<int>(100 * k / offsets.size()));
    }
    return 1.0 / static_cast<double>(step);
}

LagBin LagSums::binOf(const Sum &sum, double direction) const
{
    const auto n = static_cast<double>(sum.pairs);
    LagBin bin;
    bin.direction = direction;
    bin.pairs = sum.pairs;
    if (sum.pairs == 0)
        return bin;
    bin.lag = sum.lag / n;
    bin.value = mPlan.estimator == Estimator::Robust
                    ? std::pow(sum.value / n, 4) / (2 * (0.457 + 0.494 / n))
                    : sum.value / (2 * n);
    return bin;
}

std::vector<LagBin> LagSums::bins() const
{
    std::vector<LagBin> bins;
    for (size_t i = 0; i < mSums.size(); ++i)
        if (mSums[i].pairs > 0)
            bins.push_back(
                binOf(mSums[i], mPlan.directions.empty() ? 0 : mPlan.directions[i / mClasses]));
    return bins;
}

LagBin LagSums::colocated() const
{
    return binOf(mColocated, 0);
}

} // namespace meridor
