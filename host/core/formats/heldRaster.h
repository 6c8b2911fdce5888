// SPDX-License-Identifier: MIT
#pragma once
#include "datainterface/MRasterObservation.h"

namespace meridor {

/// The cells of a grid in memory for a scope.
class HeldRaster {
public:
    explicit HeldRaster(const MRasterObservation &grid) : mGrid(grid)
    {
        try {
            mGrid.CheckOutObservation();
        } catch (...) {
            mGrid.CheckInObservation(); // a failed read stays counted
            throw;
        }
    }
    ~HeldRaster() { mGrid.CheckInObservation(); } // nothing was changed, so nothing is written
    HeldRaster(const HeldRaster &) = delete;
    HeldRaster &operator=(const HeldRaster &) = delete;

private:
    const MRasterObservation &mGrid;
};

} // namespace meridor
