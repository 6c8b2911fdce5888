// SPDX-License-Identifier: MIT
// Targets are visited by tiles. For a tile with centre c and half-diagonal d, and with r the
// distance from c to its k-th nearest sample, the k nearest samples of each target of the tile are
// within r + 2 d of c. So the point tree is asked once for each tile; the targets then choose among
// these candidates. Targets of a tile that choose the same samples share one factored system.
#include "core/geostatistics/kriging.h"
#include <algorithm>
#include <cmath>
#include <numeric>
#include "core/project/failure.h"
#include "fennimark/FM_PointTree.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr double kTargetsPerTile = 64;
constexpr double kSlack = 1 + 1e-9; ///< of distances, for rounding

size_t at(int i)
{
    return static_cast<size_t>(i);
}

struct Extent {
    double left = 0;
    double right = 0;
    double bottom = 0;
    double top = 0;

    double width() const { return right - left; }
    double height() const { return top - bottom; }
    double reach() const { return std::hypot(width(), height()); }
};

Extent extentOf(const std::vector<double> &x, const std::vector<double> &y)
{
    const auto xs = std::minmax_element(x.begin(), x.end());
    const auto ys = std::minmax_element(y.begin(), y.end());
    return {*xs.first, *xs.second, *ys.first, *ys.second};
}

Extent hullOf(const Extent &a, const Extent &b)
{
    return {std::min(a.left, b.left), std::max(a.right, b.right), std::min(a.bottom, b.bottom),
            std::max(a.top, b.top)};
}

/// A sample that may be a neighbour, with its squared distance from the present target.
struct Candidate {
    double square;
    int row;
};
bool nearer(const Candidate &a, const Candidate &b)
{
    return a.square != b.square ? a.square < b.square : a.row < b.row;
}

/// The systems of one tile by their rows.
class SystemCache {
public:
    struct Entry {
        quint64 hash = 0;
        std::vector<int> rows;
        KrigingSystem system;
    };
    /// Entries keep their memory.
    void clear() { mUsed = 0; }
    /// The entry with these rows; a new one is marked by `isNew`.
    Entry &find(const std::vector<int> &rows, bool &isNew)
    {
        quint64 hash = 14695981039346656037u; // Fowler, Noll and Vo
        for (const int row : rows)
            hash = (hash ^ static_cast<quint64>(row)) * 1099511628211u;
        for (size_t i = mUsed; i-- > 0;) {
            if (mEntries[i]->hash == hash && mEntries[i]->rows == rows) {
                isNew = false;
                return *mEntries[i];
            }
        }
        isNew = true;
        if (mUsed == mEntries.size())
            mEntries.push_back(std::make_unique<Entry>());
        Entry &entry = *mEntries[mUsed++];
        entry.hash = hash;
        entry.rows = rows;
        return entry;
    }

private:
    std::vector<std::unique_ptr<Entry>> mEntries;
    size_t mUsed = 0;
};

void requirePlan(const Samples &samples, const KrigingPlan &plan)
{
    if (samples.size() == 0)
        fail(QStringLiteral("there are no values to predict from"));
    if (plan.mean && (plan.degree > 0 || !plan.sampleDrift.empty()))
        failUsage(QStringLiteral("a known mean excludes a drift"), "mean");
    if (plan.mean && !std::isfinite(*plan.mean))
        failUsage(QStringLiteral("the mean is no number"), "mean");
    if (plan.degree < 0 || plan.degree > 2)
        failUsage(QStringLiteral("a drift has the degree 0, 1 or 2"), "drift");
    const Neighborhood &near = plan.neighborhood;
    if (near.most < 0 || near.least < 1 || near.perQuadrant < 0 || !(near.radius > 0))
        failUsage(
            QStringLiteral("a neighbourhood has no negative number, at least one sample and a "
                           "radius above 0"),
            "neighbors");
    for (const std::vector<double> *numbers :
         {&samples.x, &samples.y, &samples.values, &plan.sampleDrift})
        for (const double number : *numbers)
            if (!std::isfinite(number))
                fail(QStringLiteral("a sample has a place, a value or a drift that is no number"));
    std::vector<std::pair<double, double>> places;
    for (size_t i = 0; i < samples.size(); ++i)
        places.emplace_back(samples.x[i], samples.y[i]);
    std::sort(places.begin(), places.end());
    if (std::adjacent_find(places.begin(), places.end()) != places.end())
        fail(QStringLiteral("several samples have the same place"));
}

} // namespace

class Kriging::Work {
public:
    Work(const Samples &samples, const KrigingPlan &plan);

    std::vector<Estimate> predict(const Targets &targets, const Meter &meter);
    void weights(const Targets &targets, size_t target, std::vector<int> &rows,
                 std::vector<double> &weights);
    KrigingRemarks remarks;

private:
    struct Block {
        const std::vector<QPointF> *points = nullptr; ///< null for a place
        double sill = 0;
    };

    void prepare(const Targets &targets);
    std::vector<size_t> tileEnds(const Targets &targets, std::vector<size_t> &order) const;
    void findCandidates(const Targets &targets, const size_t *first, const size_t *last);
    void chooseRows(const Targets &targets, size_t target);
    void chooseByQuadrant(double x, double y);
    void forgetSystems()
    {
        mSystems.clear();
        mEntry = nullptr;
    }
    KrigingSystem &systemOf();
    void driftAt(double x, double y, double external, double *f) const;
    Block blockOf(const Targets &targets, size_t target);
    double blockSill(const std::vector<QPointF> &points) const;
    /// Fills mCovariances and mFunctions.
    double fillTarget(const Targets &targets, size_t target);
    Estimate estimate(const Targets &targets, size_t target);

    const Samples mSamples;
    const KrigingPlan mPlan;
    std::unique_ptr<Covariance> mModel;
    FM_PointTree mTree;
    int mFunctionCount;
    double mCentreX = 0; ///< polynomials are in units of the extent around its centre
    double mCentreY = 0;
    double mUnit = 1;
    double mSharedSill = 0; ///< of Targets::block

    SystemCache mSystems;
    bool mWhole = false; ///< all targets use all samples
    QVector<ptTreeQueryResult> mHits;
    std::vector<int> mNear; ///< rows of the candidates of the tile
    std::vector<Candidate> mCandidates;
    std::vector<int> mRows; ///< of the present target's neighbours, ascending
    int mCoincident = -1;   ///< the sample at the target's place
    const SystemCache::Entry *mEntry = nullptr;
    std::vector<double> mX;
    std::vector<double> mY;
    std::vector<double> mValues;
    std::vector<double> mDrift;
    std::vector<double> mCovariances;
    std::vector<double> mPart;
    double mFunctions[8] = {};
};

Kriging::Work::Work(const Samples &samples, const KrigingPlan &plan)
    : mSamples(samples), mPlan(plan)
{
    requirePlan(samples, plan);
    mFunctionCount =
        plan.mean ? 0
                  : (plan.degree + 1) * (plan.degree + 2) / 2 + (plan.sampleDrift.empty() ? 0 : 1);
    QVector<QPointF> points;
    QVector<int> rows;
    for (size_t i = 0; i < samples.size(); ++i) {
        points.append({samples.x[i], samples.y[i]});
        rows.append(static_cast<int>(i));
    }
    mTree.SetPoints(points, rows, nullptr, 0, 100);
    const Neighborhood &near = plan.neighborhood;
    mWhole = (near.most == 0 || near.most >= static_cast<int>(samples.size()))
             && near.perQuadrant == 0 && std::isinf(near.radius);
    if (mWhole && samples.size() > size_t(kMostTogether))
        fail(QStringLiteral("%1 samples are too many for one system; at most %2 are")
                 .arg(samples.size())
                 .arg(kMostTogether),
             "neighbors");
    prepare({});
}

/// Covariances must hold as far as the targets are from the samples.
void Kriging::Work::prepare(const Targets &targets)
{
    Extent extent = extentOf(mSamples.x, mSamples.y);
    if (targets.size() > 0)
        extent = hullOf(extent, extentOf(targets.x, targets.y));
    mModel = std::make_unique<Covariance>(mPlan.model, extent.reach());
    if (mPlan.mean && !mModel->isBounded())
        fail(QStringLiteral("a power structure has no covariance, which simple kriging needs"),
             "mean");
    mCentreX = extent.left + extent.width() / 2;
    mCentreY = extent.bottom + extent.height() / 2;
    mUnit = extent.reach() > 0 ? extent.reach() / 2 : 1;
    forgetSystems();
    if (!targets.block.empty())
        mSharedSill = blockSill(targets.block);
}

/// Orders the targets by tile. @return the end of each tile in the order.
std::vector<size_t> Kriging::Work::tileEnds(const Targets &targets,
                                            std::vector<size_t> &order) const
{
    const Extent extent = extentOf(targets.x, targets.y);
    const Extent from = extentOf(mSamples.x, mSamples.y);
    const auto area = [](const Extent &e) {
        return std::max(e.width() * e.height(), 1e-4 * e.reach() * e.reach());
    };
    const int most = std::max({mPlan.neighborhood.most, 4 * mPlan.neighborhood.perQuadrant, 16});
    const double square =
        std::min(kTargetsPerTile * area(extent) / static_cast<double>(targets.size()),
                 most * area(from) / static_cast<double>(mSamples.size()));
    const double side = square > 0 ? std::sqrt(square) : std::max(1.0, extent.reach());
    struct Key {
        double row;
        double column;
    };
    std::vector<Key> keys;
    for (size_t i = 0; i < targets.size(); ++i)
        keys.push_back({std::floor((targets.y[i] - extent.bottom) / side),
                        std::floor((targets.x[i] - extent.left) / side)});
    const auto less = [&keys](size_t a, size_t b) {
        return keys[a].row != keys[b].row         ? keys[a].row < keys[b].row
               : keys[a].column != keys[b].column ? keys[a].column < keys[b].column
                                                  : a < b;
    };
    order.resize(targets.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::sort(order.begin(), order.end(), less);
    std::vector<size_t> ends;
    for (size_t i = 1; i <= order.size(); ++i)
        if (i == order.size() || keys[order[i]].row != keys[order[i - 1]].row
            || keys[order[i]].column != keys[order[i - 1]].column)
            ends.push_back(i);
    return ends;
}

void Kriging::Work::findCandidates(const Targets &targets, const size_t *first, const size_t *last)
{
    mNear.clear();
    const Neighborhood &near = mPlan.neighborhood;
    const bool byNumber = near.most > 0 && near.perQuadrant == 0;
    if (mWhole || (!byNumber && std::isinf(near.radius))) {
        mNear.resize(mSamples.size());
        std::iota(mNear.begin(), mNear.end(), 0);
        return;
    }
    Extent tile{targets.x[*first], targets.x[*first], targets.y[*first], targets.y[*first]};
    for (const size_t *i = first; i != last; ++i)
        tile = hullOf(tile, {targets.x[*i], targets.x[*i], targets.y[*i], targets.y[*i]});
    const QPointF centre((tile.left + tile.right) / 2, (tile.bottom + tile.top) / 2);
    const double half = tile.reach() / 2;
    double reach = near.radius + half;
    if (byNumber) {
        const int wanted = near.most + (targets.leftOut.empty() ? 0 : 1);
        mTree.GetNearestNeighbors(centre, wanted, {}, mHits, true);
        reach = std::min(reach, std::sqrt(mHits.last().distance) + 2 * half);
    }
    mTree.GetRangeNeighbors(centre, reach * kSlack, {}, mHits, true);
    for (const ptTreeQueryResult &hit : mHits)
        mNear.push_back(hit.id);
}

/// Keeps the nearest candidates of each quadrant; the axes belong to the quadrant that follows
/// counter-clockwise.
void Kriging::Work::chooseByQuadrant(double x, double y)
{
    std::sort(mCandidates.begin(), mCandidates.end(), nearer);
    int counts[4] = {};
    size_t kept = 0;
    for (const Candidate &candidate : mCandidates) {
        const double dx = mSamples.x[at(candidate.row)] - x;
        const double dy = mSamples.y[at(candidate.row)] - y;
        const int quadrant = dx > 0 ? (dy >= 0 ? 0 : 3) : (dy > 0 ? 1 : dx < 0 ? 2 : 3);
        if (counts[quadrant]++ < mPlan.neighborhood.perQuadrant)
            mCandidates[kept++] = candidate;
    }
    mCandidates.resize(kept);
}

void Kriging::Work::chooseRows(const Targets &targets, size_t target)
{
    const Neighborhood &near = mPlan.neighborhood;
    const double x = targets.x[target];
    const double y = targets.y[target];
    const double most = near.radius * near.radius;
    const int leftOut = targets.leftOut.empty() ? -1 : targets.leftOut[target];
    mCandidates.clear();
    for (const int row : mNear) {
        const double dx = mSamples.x[at(row)] - x;
        const double dy = mSamples.y[at(row)] - y;
        const double square = dx * dx + dy * dy;
        if (square <= most && row != leftOut)
            mCandidates.push_back({square, row});
    }
    if (near.perQuadrant > 0)
        chooseByQuadrant(x, y);
    if (near.most > 0 && mCandidates.size() > at(near.most)) {
        std::nth_element(mCandidates.begin(), mCandidates.begin() + (near.most - 1),
                         mCandidates.end(), nearer);
        mCandidates.resize(at(near.most));
    }
    if (mCandidates.size() > at(kMostTogether))
        fail(QStringLiteral("%1 samples are too many for one system; at most %2 are")
                 .arg(mCandidates.size())
                 .arg(kMostTogether),
             "neighbors");
    mRows.clear();
    mCoincident = -1;
    for (const Candidate &candidate : mCandidates) {
        mRows.push_back(candidate.row);
        if (candidate.square == 0)
            mCoincident = candidate.row;
    }
    std::sort(mRows.begin(), mRows.end());
}

void Kriging::Work::driftAt(double x, double y, double external, double *f) const
{
    if (mFunctionCount == 0)
        return;
    const double u = (x - mCentreX) / mUnit;
    const double v = (y - mCentreY) / mUnit;
    *f++ = 1;
    if (mPlan.degree > 0) {
        *f++ = u;
        *f++ = v;
    }
    if (mPlan.degree > 1) {
        *f++ = u * u;
        *f++ = u * v;
        *f++ = v * v;
    }
    if (!mPlan.sampleDrift.empty())
        *f = external;
}

/// The system of mRows; mX and mY are those of its rows afterwards.
KrigingSystem &Kriging::Work::systemOf()
{
    bool isNew = false;
    SystemCache::Entry &entry = mSystems.find(mRows, isNew);
    if (!isNew && mEntry == &entry)
        return entry.system;
    mEntry = &entry;
    mX.clear();
    mY.clear();
    for (const int row : mRows) {
        mX.push_back(mSamples.x[at(row)]);
        mY.push_back(mSamples.y[at(row)]);
    }
    if (!isNew)
        return entry.system;
    const size_t functions = at(mFunctionCount);
    mValues.clear();
    mDrift.resize(mRows.size() * functions);
    for (size_t i = 0; i < mRows.size(); ++i) {
        const size_t row = at(mRows[i]);
        mValues.push_back(mSamples.values[row] - mPlan.mean.value_or(0));
        driftAt(mX[i], mY[i], mPlan.sampleDrift.empty() ? 0 : mPlan.sampleDrift[row],
                mDrift.data() + i * functions);
    }
    entry.system.build(*mModel, mX.data(), mY.data(), mValues.data(),
                       static_cast<int>(mRows.size()), mDrift, mFunctionCount);
    remarks.dropped += entry.system.dropped() > 0;
    return entry.system;
}

double Kriging::Work::blockSill(const std::vector<QPointF> &points) const
{
    double sum = 0;
    for (const QPointF &a : points)
        for (const QPointF &b : points)
            sum += mModel->smoothAt(a.x() - b.x(), a.y() - b.y());
    return sum / (static_cast<double>(points.size()) * static_cast<double>(points.size()));
}

Kriging::Work::Block Kriging::Work::blockOf(const Targets &targets, size_t target)
{
    if (!targets.blocks.empty())
        return {&targets.blocks[target], blockSill(targets.blocks[target])};
    if (!targets.block.empty())
        return {&targets.block, mSharedSill};
    return {nullptr, mModel->sill()};
}

double Kriging::Work::fillTarget(const Targets &targets, size_t target)
{
    const double x = targets.x[target];
    const double y = targets.y[target];
    const double external = targets.drift.empty() ? 0 : targets.drift[target];
    const auto count = static_cast<int>(mRows.size());
    mCovariances.resize(mRows.size());
    const Block block = blockOf(targets, target);
    if (!block.points) {
        mModel->fill(x, y, mX.data(), mY.data(), count, mCovariances.data());
        driftAt(x, y, external, mFunctions);
        return block.sill;
    }
    std::fill(mCovariances.begin(), mCovariances.end(), 0.0);
    std::fill(std::begin(mFunctions), std::end(mFunctions), 0.0);
    const double share = 1.0 / static_cast<double>(block.points->size());
    double f[8];
    for (const QPointF &offset : *block.points) {
        const double px = x + offset.x();
        const double py = y + offset.y();
        for (size_t i = 0; i < mRows.size(); ++i)
            mCovariances[i] += share * mModel->smoothAt(px - mX[i], py - mY[i]);
        driftAt(px, py, external, f);
        for (int k = 0; k < mFunctionCount; ++k)
            mFunctions[k] += share * f[k];
    }
    return block.sill;
}

Estimate Kriging::Work::estimate(const Targets &targets, size_t target)
{
    chooseRows(targets, target);
    if (static_cast<int>(mRows.size()) < mPlan.neighborhood.least) {
        ++remarks.alone;
        return {kNone, kNone};
    }
    const bool isBlock = !targets.blocks.empty() || !targets.block.empty();
    if (!isBlock && mCoincident >= 0)
        return {mSamples.values[at(mCoincident)], 0};
    if ((!mPlan.sampleDrift.empty() && !std::isfinite(targets.drift[target]))
        || (!targets.blocks.empty() && targets.blocks[target].empty()))
        return {kNone, kNone};
    const KrigingSystem &system = systemOf();
    const double sill = fillTarget(targets, target);
    Estimate found = system.predict(mCovariances.data(), mFunctions, sill);
    if (!system.isDetermined())
        ++remarks.undetermined;
    found.value += mPlan.mean.value_or(0);
    return found;
}

std::vector<Estimate> Kriging::Work::predict(const Targets &targets, const Meter &meter)
{
    std::vector<Estimate> results(targets.size());
    if (targets.size() == 0)
        return results;
    prepare(targets);
    std::vector<size_t> order;
    size_t begin = 0;
    for (const size_t end : tileEnds(targets, order)) {
        findCandidates(targets, order.data() + begin, order.data() + end);
        if (!mWhole)
            forgetSystems();
        for (size_t i = begin; i < end; ++i) {
            // Two targets that leave out a sample each have no system in common.
            if (!targets.leftOut.empty())
                forgetSystems();
            results[order[i]] = estimate(targets, order[i]);
        }
        begin = end;
        meter(static_cast<int>(100 * end / order.size()));
    }
    return results;
}

void Kriging::Work::weights(const Targets &targets, size_t target, std::vector<int> &rows,
                            std::vector<double> &weights)
{
    prepare(targets);
    findCandidates(targets, &target, &target + 1);
    chooseRows(targets, target);
    const KrigingSystem &system = systemOf();
    const double sill = fillTarget(targets, target);
    system.weights(mCovariances.data(), mFunctions, sill);
    rows = mRows;
    weights = mCovariances;
}

Kriging::Kriging(const Samples &samples, const KrigingPlan &plan)
    : mWork(std::make_unique<Work>(samples, plan))
{
}

Kriging::~Kriging() = default;

std::vector<Estimate> Kriging::predict(const Targets &targets, const Meter &meter)
{
    return mWork->predict(targets, meter);
}

void Kriging::weights(const Targets &targets, size_t target, std::vector<int> &rows,
                      std::vector<double> &weights)
{
    mWork->weights(targets, target, rows, weights);
}

const KrigingRemarks &Kriging::remarks() const
{
    return mWork->remarks;
}

} // namespace meridor
