// SPDX-License-Identifier: MIT
// Neighbours among the simulated cells. While the lattice of spacing s is visited, all cells of the
// lattice of spacing 2 s have been simulated, a quarter of the cells of this lattice, and none
// outside this lattice. So a disc of a fixed number of lattice steps contains enough simulated cells
// on every lattice, and one list of offsets, ordered by distance, serves all of them.
#include "core/geostatistics/simulation.h"
#include <algorithm>
#include <cmath>
#include <limits>
#include "core/project/failure.h"
#include "datainterface/StatisticsAPI.h"
#include "fennimark/FM_PointTree.h"

namespace meridor {
namespace {

constexpr int kMostNeighbors = 1000;
constexpr int kUnvisited = std::numeric_limits<int>::max();
constexpr int kSampled = -1; ///< order of cells that have the value of a sample

size_t at(int i)
{
    return static_cast<size_t>(i);
}

struct Offset {
    int column;
    int row;
    double square; ///< in map units, at a spacing of 1
};

/// Offsets around a cell of a lattice, the nearest first. In a corner of the grid, with a quarter of
/// the lattice simulated, they contain twice the neighbours wanted.
std::vector<Offset> offsetsFor(int neighbors, const SimulationGrid &grid)
{
    const int reach = static_cast<int>(std::ceil(std::sqrt(32.0 * neighbors / 3.14159))) + 2;
    std::vector<Offset> offsets;
    for (int row = -reach; row <= reach; ++row) {
        for (int column = -reach; column <= reach; ++column) {
            const double dx = column * grid.cellWidth;
            const double dy = row * grid.cellHeight;
            if (row != 0 || column != 0)
                offsets.push_back({column, row, dx * dx + dy * dy});
        }
    }
    std::sort(offsets.begin(), offsets.end(), [](const Offset &a, const Offset &b) {
        return a.square != b.square ? a.square < b.square
               : a.row != b.row     ? a.row < b.row
                                    : a.column < b.column;
    });
    return offsets;
}

/// The number of times by which both numbers can be halved, at most `most`.
int latticeOf(int column, int row, int most)
{
    int level = 0;
    while (level < most && ((column | row) >> level & 1) == 0)
        ++level;
    return level;
}

struct Neighbor {
    double square;
    int index; ///< of the state
    double x;
    double y;
};

} // namespace

GridSimulation::GridSimulation(const Samples &samples, const SimulationGrid &grid,
                               const SimulationPlan &plan, const Meter &meter)
    : mGrid(grid), mPlan(plan), mSamples(samples.size())
{
    if (plan.neighbors < 1 || plan.neighbors > kMostNeighbors)
        failUsage(QStringLiteral("a simulation uses 1 to %1 neighbours").arg(kMostNeighbors),
                  "neighbors");
    if (!(plan.radius > 0))
        failUsage(QStringLiteral("a radius is above 0"), "radius");
    if (!Covariance(plan.model).isBounded())
        fail(QStringLiteral("a power structure has no covariance, which a simulation needs"),
             "model");
    if (samples.size() > 0) {
        KrigingPlan checked; // raises for samples that cannot be used
        checked.model = plan.model;
        checked.mean = plan.mean;
        const Kriging kriging(samples, checked);
    }
    VORN_SetRandomSeed(plan.seed);
    mState.assign(mSamples + grid.cells(), 0.0);
    for (size_t i = 0; i < mSamples; ++i)
        mState[i] = samples.values[i] - plan.mean;
    orderCells(samples);
    findWeights(samples, meter);
}

void GridSimulation::orderCells(const Samples &samples)
{
    std::vector<bool> sampled(mGrid.cells());
    for (size_t i = 0; i < mSamples; ++i) {
        const double column = std::floor((samples.x[i] - mGrid.left) / mGrid.cellWidth);
        const double row = std::floor((mGrid.top - samples.y[i]) / mGrid.cellHeight);
        if (!(column >= 0 && column < mGrid.columns && row >= 0 && row < mGrid.rows))
            continue;
        if (mGrid.x(int(column)) != samples.x[i] || mGrid.y(int(row)) != samples.y[i])
            continue;
        const size_t cell = at(int(row)) * at(mGrid.columns) + at(int(column));
        sampled[cell] = true;
        mState[mSamples + cell] = mState[i];
    }
    int levels = 0;
    while ((std::max(mGrid.columns, mGrid.rows) - 1) >> levels > 1)
        ++levels;
    std::vector<std::vector<int>> lattices(at(levels) + 1);
    for (const int cell : VORN_ShuffleIds(static_cast<unsigned>(mGrid.cells())))
        if (!sampled[at(cell)])
            lattices[at(latticeOf(cell % mGrid.columns, cell / mGrid.columns, levels))].push_back(
                cell);
    mPath.reserve(mGrid.cells());
    for (int level = levels; level >= 0; --level) {
        mPath.insert(mPath.end(), lattices[at(level)].begin(), lattices[at(level)].end());
        mStride.push_back(1 << level);
        mLatticeEnd.push_back(mPath.size());
        std::vector<int>().swap(lattices[at(level)]);
    }
}

void GridSimulation::findWeights(const Samples &samples, const Meter &meter)
{
    const Covariance model(mPlan.model);
    const size_t wanted = at(mPlan.neighbors);
    FM_PointTree tree;
    QVector<QPointF> points;
    QVector<int> rows;
    for (size_t i = 0; i < mSamples; ++i) {
        points.append({samples.x[i], samples.y[i]});
        rows.append(static_cast<int>(i));
    }
    tree.SetPoints(points, rows, nullptr, 0, 100);

    std::vector<int> order(mGrid.cells(), kSampled);
    for (size_t i = 0; i < mPath.size(); ++i)
        order[at(mPath[i])] = kUnvisited;
    const std::vector<Offset> offsets = offsetsFor(mPlan.neighbors, mGrid);
    mNeighbors.reserve(wanted * mPath.size());
    mWeights.reserve(wanted * mPath.size());
    mStarts.reserve(mPath.size() + 1);
    mDeviations.reserve(mPath.size());

    QVector<ptTreeQueryResult> hits;
    std::vector<Neighbor> near;
    std::vector<double> xs, ys, c;
    KrigingSystem system;
    size_t lattice = 0;
    for (size_t step = 0; step < mPath.size(); ++step) {
        while (step >= mLatticeEnd[lattice])
            ++lattice;
        const int column = mPath[step] % mGrid.columns;
        const int row = mPath[step] / mGrid.columns;
        const double x = mGrid.x(column);
        const double y = mGrid.y(row);
        const double most = mPlan.radius * mPlan.radius;
        near.clear();
        if (mSamples > 0) {
            tree.GetNearestNeighbors({x, y}, mPlan.neighbors, {}, hits, true);
            for (const ptTreeQueryResult &hit : hits)
                if (hit.distance <= most)
                    near.push_back({hit.distance, hit.id, hit.point.x(), hit.point.y()});
        }
        const double scale = double(mStride[lattice]) * mStride[lattice];
        size_t found = 0;
        for (const Offset &offset : offsets) {
            const int c2 = column + offset.column * mStride[lattice];
            const int r2 = row + offset.row * mStride[lattice];
            if (found == wanted || offset.square * scale > most)
                break;
            if (c2 < 0 || c2 >= mGrid.columns || r2 < 0 || r2 >= mGrid.rows)
                continue;
            const int cell = r2 * mGrid.columns + c2;
            if (order[at(cell)] == kUnvisited || order[at(cell)] == kSampled)
                continue; // a sampled cell is among the samples
            near.push_back({offset.square * scale, static_cast<int>(mSamples) + cell, mGrid.x(c2),
                            mGrid.y(r2)});
            ++found;
        }
        std::sort(near.begin(), near.end(), [](const Neighbor &a, const Neighbor &b) {
            return a.square != b.square ? a.square < b.square : a.index < b.index;
        });
        near.resize(std::min(near.size(), wanted));

        xs.clear();
        ys.clear();
        for (const Neighbor &neighbor : near) {
            xs.push_back(neighbor.x);
            ys.push_back(neighbor.y);
        }
        const auto count = static_cast<int>(near.size());
        c.assign(near.size(), 0.0);
        double variance = model.sill();
        if (count > 0) {
            const std::vector<double> zeros(near.size());
            system.build(model, xs.data(), ys.data(), zeros.data(), count, {}, 0);
            model.fill(x, y, xs.data(), ys.data(), count, c.data());
            variance = system.weights(c.data(), nullptr, model.sill());
        }
        for (size_t i = 0; i < near.size(); ++i) {
            mNeighbors.push_back(near[i].index);
            mWeights.push_back(static_cast<float>(c[i]));
        }
        mStarts.push_back(mNeighbors.size());
        mDeviations.push_back(static_cast<float>(std::sqrt(variance)));
        order[at(mPath[step])] = static_cast<int>(step);
        if (step % 1024 == 0)
            meter(static_cast<int>(100 * step / mPath.size()));
    }
}

void GridSimulation::next(std::vector<double> &values)
{
    const QVector<double> deviates = VORN_GetNormalDeviates(static_cast<int>(mPath.size()));
    double *const state = mState.data();
    for (size_t step = 0; step < mPath.size(); ++step) {
        double sum = static_cast<double>(mDeviations[step]) * deviates[static_cast<int>(step)];
        for (size_t k = mStarts[step]; k < mStarts[step + 1]; ++k)
            sum += static_cast<double>(mWeights[k]) * state[mNeighbors[k]];
        state[mSamples + at(mPath[step])] = sum;
    }
    values.resize(mGrid.cells());
    for (size_t i = 0; i < values.size(); ++i)
        values[i] = mState[mSamples + i] + mPlan.mean;
}

size_t GridSimulation::keptBytes() const
{
    const auto bytes = [](const auto &list) { return list.capacity() * sizeof(list[0]); };
    return bytes(mPath) + bytes(mStarts) + bytes(mNeighbors) + bytes(mWeights) + bytes(mDeviations);
}

} // namespace meridor
