// SPDX-License-Identifier: MIT
/// Sequential Gaussian simulation on a grid.
#pragma once
#include <QRectF>
#include <vector>
#include "core/export.h"
#include "core/geostatistics/kriging.h"

namespace meridor {

struct SimulationGrid {
    int columns = 0;
    int rows = 0;
    double left = 0;
    double top = 0; ///< row 0 is at the largest y
    double cellWidth = 0;
    double cellHeight = 0;

    size_t cells() const { return static_cast<size_t>(columns) * static_cast<size_t>(rows); }
    double x(int column) const { return left + (column + 0.5) * cellWidth; }
    double y(int row) const { return top - (row + 0.5) * cellHeight; }
};

struct SimulationPlan {
    VariogramModelAtT model;
    double mean = 0; ///< of the Gaussian variable
    /// Nearest samples and simulated cells together; quadrants are not used.
    int neighbors = 20;
    double radius = std::numeric_limits<double>::infinity();
    int seed = 1;
};

/// Draws realizations of a Gaussian random function with a mean and a variogram model, given its
/// values at samples (simple kriging): A. G. Journel (1974), Econ. Geol. 69, 673-687.
///
/// The path visits lattices of halving spacing, each in random order, so that the large-scale
/// structure is drawn before the cells in between. All realizations use the same path: the
/// neighbours and weights of a cell are calculated once and kept, in 8 bytes for each neighbour and
/// 16 for each cell. The path and the deviates come from the library's generators, which are seeded
/// by the constructor: equal plans, grids and samples give equal realizations.
class MERIDOR_EXPORT GridSimulation {
public:
    /// @param samples  values of the Gaussian variable; none for an unconditional simulation. A cell
    ///                 whose centre is the place of a sample has its value in all realizations.
    /// Raises a Failure as Kriging does, and for an unbounded model and more than 1000 neighbours.
    GridSimulation(const Samples &samples, const SimulationGrid &grid, const SimulationPlan &plan,
                   const Meter &meter);

    /// Draws the next realization, cell by cell from the top left.
    void next(std::vector<double> &values);
    /// The memory kept for weights, neighbours and the path.
    size_t keptBytes() const;

private:
    void orderCells(const Samples &samples);
    void findWeights(const Samples &samples, const Meter &meter);

    SimulationGrid mGrid;
    SimulationPlan mPlan;
    std::vector<double> mState; ///< samples, then cells, less the mean
    size_t mSamples = 0;
    std::vector<int> mPath;   ///< cells in the order of the simulation
    std::vector<int> mStride; ///< of the lattices: [i] up to mPath[mLatticeEnd[i]]
    std::vector<size_t> mLatticeEnd;
    std::vector<size_t> mStarts{0}; ///< of the neighbours of each cell of the path
    std::vector<int> mNeighbors;    ///< indices of mState
    std::vector<float> mWeights;
    std::vector<float> mDeviations;
};

} // namespace meridor
