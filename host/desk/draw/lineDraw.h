// SPDX-License-Identifier: MIT
/// Draws lines into a part of a pick buffer.
#pragma once
#include "desk/draw/pointStamp.h"
#include "desk/draw/polygonFill.h"

namespace meridor {

/// Each segment is stepped along its longer axis, at the centres of columns or rows. A step of a
/// thin line is the pixel that contains the segment there; of a wider one, all pixels across whose
/// centres are within half the width. Discs cover the joints of lines from three pixels on. A line
/// whose box is smaller than a pixel takes the pixel of the box's centre.
class LineDraw {
public:
    LineDraw(const Lattice &lattice, const PickArea &area, double width);
    void draw(const FMShapes &shapes, std::size_t shape, quint32 value) const;
    /// No pixel is farther from its line.
    int reach() const { return mReach; }

private:
    struct Place {
        double x;
        double y;
    };
    void segment(const Place &from, const Place &to, quint32 value) const;
    void step(int along, double across, double half, bool steep, quint32 value) const;

    const Lattice mLattice;
    const PickArea mArea;
    const double mWidth;
    const PointStamp mJoint;
    const int mReach;
};

} // namespace meridor
