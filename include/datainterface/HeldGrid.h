// SPDX-License-Identifier: MIT
/// Check-outs of grids come in pairs by scope.
#pragma once
#include <exception>
#include "datainterface/MRasterObservation.h"

/// Holds a grid checked out for a scope: its cells stay in memory. Leaving the scope writes changed
/// cells back, which can raise "result"; when an exception leaves it, no second one is raised.
class HeldGrid {
public:
    /// Raises as MRasterObservation::CheckOutObservation, with the grid as it was.
    explicit HeldGrid(const MRasterObservation &grid)
        : mGrid(grid), mUnwinding(std::uncaught_exceptions())
    {
        try {
            mGrid.CheckOutObservation();
        } catch (...) { // The count stays raised after a failed read.
            mGrid.CheckInObservation();
            throw;
        }
    }
    ~HeldGrid() noexcept(false)
    {
        try {
            mGrid.CheckInObservation();
        } catch (...) {
            if (std::uncaught_exceptions() == mUnwinding)
                throw;
        }
    }
    HeldGrid(const HeldGrid &) = delete;
    HeldGrid &operator=(const HeldGrid &) = delete;

private:
    const MRasterObservation &mGrid;
    const int mUnwinding;
};
