// SPDX-License-Identifier: MIT
/// Keeps the cells of a grid in memory for a scope.
#pragma once
#include <exception>
#include "datainterface/MRasterObservation.h"

/// Checks a grid out when it is constructed and in when it is destroyed. The last check-in writes
/// changed cells back, which can raise "result"; nothing is raised while another exception is being
/// handled.
class HeldGrid {
public:
    /// Raises as MRasterObservation::CheckOutObservation does; the grid is then unchanged.
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
