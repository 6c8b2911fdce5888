// SPDX-License-Identifier: MIT
/// Check-outs of grids come in pairs by scope.
#pragma once
#include <exception>
#include "datainterface/MRasterObservation.h"

namespace datainterface {

class HeldGrid {
public:
    explicit HeldGrid(const MRasterObservation &grid)
        : mGrid(grid), mUnwinding(std::uncaught_exceptions())
    {
        try {
            mGrid.CheckOutObservation();
        } catch (...) { // the count stands raised after a failed read
            mGrid.CheckInObservation();
            throw;
        }
    }
    ~HeldGrid() noexcept(
        false) // the last check-in writes back, which can raise; never a second time
    {
        try {
            mGrid.CheckInObservation();
        } catch (...) {
            if (std::uncaught_exceptions() == mUnwinding)
                throw;
        }
    }
    Q_DISABLE_COPY(HeldGrid)

private:
    const MRasterObservation &mGrid;
    const int mUnwinding;
};

} // namespace datainterface
