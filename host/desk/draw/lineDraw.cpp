// SPDX-License-Identifier: MIT
#include "desk/draw/lineDraw.h"
#include <algorithm>
#include <cmath>

namespace meridor {
namespace {

constexpr double kThin = 1.5; // narrower lines are chains of single pixels
constexpr double kJoined = 3.0;

} // namespace

LineDraw::LineDraw(const Lattice &lattice, const PickArea &area, double width)
    : mLattice(lattice),
      mArea(area),
      mWidth(std::clamp(width, 1.0, 255.0)),
      mJoint(static_cast<int>(mWidth + 0.5)),
      mReach(static_cast<int>(mWidth) + 1)
{
}

void LineDraw::draw(const FMShapes &shapes, std::size_t shape, quint32 value) const
{
    const Rect2D box = mLattice.box(shapes.boxes[shape]);
    if (!(box.xMin < mArea.right + mReach && box.xMax >= mArea.left - mReach
          && box.yMin < mArea.bottom + mReach && box.yMax >= mArea.top - mReach))
        return;
    if (box.xMax - box.xMin < 1.0 && box.yMax - box.yMin < 1.0) {
        mJoint.draw(0.5 * (box.xMin + box.xMax), 0.5 * (box.yMin + box.yMax), value, mArea);
        return;
    }
    const bool joined = mWidth >= kJoined;
    for (quint32 part = shapes.firstPart[shape]; part < shapes.firstPart[shape + 1]; ++part) {
        Place before{};
        for (quint32 i = shapes.partStart[part]; i < shapes.partStart[part + 1]; ++i) {
            const Place place{mLattice.x(shapes.vertices[i].x()),
                              mLattice.y(shapes.vertices[i].y())};
            if (i > shapes.partStart[part])
                segment(before, place, value);
            if (joined)
                mJoint.draw(place.x, place.y, value, mArea);
            before = place;
        }
    }
}

void LineDraw::segment(const Place &from, const Place &to, quint32 value) const
{
    const double dx = std::fabs(to.x - from.x);
    const double dy = std::fabs(to.y - from.y);
    const bool steep = dy > dx;
    if (!(dx + dy > 0.0)) {
        mJoint.draw(from.x, from.y, value, mArea);
        return;
    }
    // a: along the longer axis, b: across it. The order of the ends does not matter to the pixels.
    double a0 = steep ? from.y : from.x;
    double b0 = steep ? from.x : from.y;
    double a1 = steep ? to.y : to.x;
    double b1 = steep ? to.x : to.y;
    if (a0 > a1) {
        std::swap(a0, a1);
        std::swap(b0, b1);
    }
    const double low = std::min(b0, b1);
    const double high = std::max(b0, b1);
    const double slope = (b1 - b0) / (a1 - a0);
    const double half = mWidth < kThin ? 0.0 : 0.5 * mWidth * std::sqrt(1.0 + slope * slope);
    const int first =
        floorWithin(a0, steep ? mArea.top : mArea.left, steep ? mArea.bottom : mArea.right);
    const int end = floorWithin(a1, (steep ? mArea.top : mArea.left) - 1,
                                (steep ? mArea.bottom : mArea.right) - 1)
                    + 1;
    for (int at = first; at < end; ++at) {
        const double b = b0 + (at + 0.5 - a0) * slope;
        step(at, std::clamp(b, low, high), half, steep, value);
    }
}

void LineDraw::step(int along, double across, double half, bool steep, quint32 value) const
{
    const int least = steep ? mArea.left : mArea.top;
    const int most = steep ? mArea.right : mArea.bottom;
    int first = floorWithin(across, least - 1, most);
    int end = first + 1;
    if (half > 0.0) {
        first = ceilWithin(across - half - 0.5, least, most);
        end = ceilWithin(across + half - 0.5, least, most);
    }
    for (int i = std::max(first, least); i < std::min(end, most); ++i) {
        if (steep)
            mArea.row(along)[i - mArea.left] = value;
        else
            mArea.row(i)[along - mArea.left] = value;
    }
}

} // namespace meridor
