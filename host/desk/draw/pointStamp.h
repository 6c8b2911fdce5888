// SPDX-License-Identifier: MIT
/// The pixels of a place.
#pragma once
#include <vector>
#include "desk/draw/polygonFill.h"

namespace meridor {

/// A disc of pixels about a place. An odd diameter is centred on the pixel that contains the place,
/// an even one on the nearest corner of pixels.
class PointStamp {
public:
    explicit PointStamp(int diameter);
    /// Writes `value` where the disc about a place of the lattice and the area overlap.
    void draw(double x, double y, quint32 value, const PickArea &area) const;
    /// No pixel of the disc is farther from its place.
    int reach() const { return mReach; }

private:
    struct Span {
        int first;
        int end;
    };
    int mReach;
    double mShift;            // from a place to its pixel or to the nearest corner
    std::vector<Span> mSpans; // of the rows from -mReach on
};

} // namespace meridor
