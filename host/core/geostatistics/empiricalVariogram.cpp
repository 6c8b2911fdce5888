// SPDX-License-Identifier: MIT
// Pairs of points. The plane is cut into square tiles. For each tile that has points the point tree gives all points in a rectangle that contains every partner to the
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

/// Larger tiles ask the tree for fewer points in all, smaller ones compare fewer that are too far.
constexpr double kPointsPerTile = 64;
constexpr double kMostTilesPerCutoff = 8;
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

/// The points near one tile as contiguous arrays, and those that make pairs with one point.
class Near {
public:
    void assign(const QVector<ptTreeQueryResult> &hits, const Samples &samples,
                const std::vector<double> &others)
    {
        const auto count = static_cast<size_t>(hits.size());
        for (std::vector<double> *list : {&mX, &mY, &mZ, &mU, &squares, &lags, &positions, &terms})
            list->resize(count);
        mRows.resize(count);
        mKept.resize(count);
        for (size_t i = 0; i < count; ++i) {
            const ptTreeQueryResult &hit = hits[static_cast<int>(i)];
            const auto row = static_cast<size_t>(hit.id);
            mX[i] = hit.point.x();
            mY[i] = hit.point.y();
            mZ[i] = samples.values[row];
            mU[i] = others.empty() ? 0 : others[row];
            mRows[i] = hit.id;
        }
    }

    /// Keeps the points to the right of a sample within the distance, with `squares` of distances.
    size_t keepPartners(double x, double y, int row, double mostSquare)
    {
        // Plain pointers: the compiler need not assume that a store moves the vectors' elements.
        const double *const xs = mX.data();
        const double *const ys = mY.data();
        const int *const rows = mRows.data();
        int *const kept = mKept.data();
        double *const kepts = squares.data();
        const size_t all = mX.size();
        size_t count = 0;
        for (size_t j = 0; j < all; ++j) {
            const double dx = xs[j] - x;
            const double dy = ys[j] - y;
            const double square = dx * dx + dy * dy;
            // Without branches, which would often be mispredicted.
            const bool right = (dx > 0) | ((dx == 0) & (rows[j] > row));
            kept[count] = static_cast<int>(j);
            kepts[count] = square;
            count += static_cast<size_t>(right & (square <= mostSquare));
        }
        return count;
    }
    /// Fills `lags`, `positions` in widths, and `terms` of the first `count` kept points.
    template <class Term>
    void measure(size_t count, double width, double value, double other, Term term)
    {
        const double *const from = squares.data();
        double *const h = lags.data();
        double *const position = positions.data();
        for (size_t i = 0; i < count; ++i) {
            h[i] = std::sqrt(from[i]);
            position[i] = h[i] / width;
        }
        const int *const kept = mKept.data();
        const double *const z = mZ.data();
        const double *const u = mU.data();
        double *const to = terms.data();
        for (size_t i = 0; i < count; ++i)
            to[i] = term(value - z[kept[i]], other - u[kept[i]]);
    }
    double x(size_t kept) const { return mX[static_cast<size_t>(mKept[kept])]; }
    double y(size_t kept) const { return mY[static_cast<size_t>(mKept[kept])]; }

    std::vector<double> squares, lags, positions, terms; ///< of the kept points

private:
    std::vector<double> mX, mY, mZ, mU;
    std::vector<int> mRows;
    std::vector<int> mKept;
};

double tileSide(const Samples &samples, double cutoff)
{
    const auto x = std::minmax_element(samples.x.begin(), samples.x.end());
    const auto y = std::minmax_element(samples.y.begin(), samples.y.end());
    const double area = (*x.second - *x.first) * (*y.second - *y.first);
    const double side = std::sqrt(kPointsPerTile * area / static_cast<double>(samples.size()));
    return std::clamp(side, cutoff / kMostTilesPerCutoff, cutoff);
}

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

size_t LagSums::classOf(double position) const
{
    auto index = static_cast<int>(position);
    index -= (static_cast<double>(index) == position) & (index > 0); // the upper limit is included
    return std::min(static_cast<size_t>(index), mClasses - 1);
}

void LagSums::addPair(double h, double dx, double dy, double term, qint64 pairs)
{
    const auto count = [&](Sum &sum) {
        sum.value += term;
        sum.lag += h * static_cast<double>(pairs);
        sum.pairs += pairs;
    };
    if (h == 0) {
        count(mColocated);
        return;
    }
    const size_t index = classOf(h / mPlan.width);
    if (mPlan.directions.empty()) {
        count(mSums[index]);
        return;
    }
    const double angle = std::atan2(dy, dx);
    for (size_t d = 0; d < mPlan.directions.size(); ++d)
        if (angleBetween(angle, mPlan.directions[d]) <= mPlan.tolerance + kAngleSlack)
            count(mSums[d * mClasses + index]);
}

template <class Partners>
void LagSums::addKept(const Partners &near, size_t count, double x, double y)
{
    if (!mPlan.directions.empty()) {
        for (size_t i = 0; i < count; ++i)
            addPair(near.lags[i], near.x(i) - x, near.y(i) - y, near.terms[i], 1);
        return;
    }
    const double *const lags = near.lags.data();
    const double *const positions = near.positions.data();
    const double *const terms = near.terms.data();
    Sum *const sums = mSums.data();
    for (size_t i = 0; i < count; ++i) {
        Sum &sum = lags[i] == 0 ? mColocated : sums[classOf(positions[i])];
        sum.value += terms[i];
        sum.lag += lags[i];
        ++sum.pairs;
    }
}

template <class Term>
void LagSums::addPairs(const Samples &samples, const std::vector<double> &others, Term term,
                       const Meter &meter)
{
    if (samples.size() < 2)
        return;
    FM_PointTree tree;
    if (!setPoints(tree, samples))
        fail(QStringLiteral("a place is not finite"));
    const double cutoff = mPlan.cutoff;
    const double most = cutoff * cutoff;
    const double reach = cutoff * (1 + 1e-9);
    const std::vector<Tile> tiles = tilesOf(samples, tileSide(samples, cutoff));
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
        tree.GetPointsInRect(
            QRectF(QPointF(left, bottom - reach), QPointF(right + reach, top + reach)), {}, hits);
        near.assign(hits, samples, others);
        for (size_t k = first; k < end; ++k) {
            const auto i = static_cast<size_t>(tiles[k].sample);
            const double x = samples.x[i];
            const double y = samples.y[i];
            const size_t count = near.keepPartners(x, y, tiles[k].sample, most);
            near.measure(count, mPlan.width, samples.values[i], others.empty() ? 0 : others[i],
                         term);
            addKept(near, count, x, y);
        }
        meter(static_cast<int>(100 * end / tiles.size()));
    }
}

void LagSums::add(const Samples &samples, const Meter &meter)
{
    if (mPlan.estimator == Estimator::Robust)
        addPairs(
            samples, {}, [](double dz, double) { return std::sqrt(std::fabs(dz)); }, meter);
    else
        addPairs(
            samples, {}, [](double dz, double) { return dz * dz; }, meter);
}

void LagSums::add(const Samples &samples, const std::vector<double> &others, const Meter &meter)
{
    addPairs(
        samples, others, [](double dz, double du) { return dz * du; }, meter);
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
