// SPDX-License-Identifier: MIT
#include "desk/draw/pointStamp.h"
#include <algorithm>
#include <cmath>

namespace meridor {

PointStamp::PointStamp(int diameter)
{
    const int size = std::clamp(diameter, 1, 255);
    mReach = size / 2;
    mShift = size % 2 == 0 ? 0.5 : 0.0;
    for (int row = 0; row < size; ++row) {
        const double dy = row + 0.5 - 0.5 * size;
        Span span{size, 0};
        for (int column = 0; column < size; ++column) {
            const double dx = column + 0.5 - 0.5 * size;
            if (dx * dx + dy * dy > 0.25 * size * size)
                continue;
            span.first = std::min(span.first, column);
            span.end = column + 1;
        }
        mSpans.push_back({span.first - mReach, span.end - mReach});
    }
}

void PointStamp::draw(double x, double y, quint32 value, const PickArea &area) const
{
    const double reach = mReach + 1;
    if (!(x >= area.left - reach && x < area.right + reach && y >= area.top - reach
          && y < area.bottom + reach))
        return;
    const int column = floorInt(x + mShift);
    const int row = floorInt(y + mShift) - mReach;
    const int rows = static_cast<int>(mSpans.size());
    if (column - mReach >= area.left && column + mReach < area.right && row >= area.top
        && row + rows <= area.bottom) {
        quint32 *pixels = area.row(row) + (column - area.left);
        for (const Span &span : mSpans) {
            for (int i = span.first; i < span.end; ++i)
                pixels[i] = value;
            pixels += area.stride;
        }
        return;
    }
    for (int i = std::max(0, area.top - row); i < std::min(rows, area.bottom - row); ++i) {
        quint32 *pixels = area.row(row + i) - area.left;
        const Span &span = mSpans[static_cast<std::size_t>(i)];
        const int end = std::min(column + span.end, area.right);
        for (int at = std::max(column + span.first, area.left); at < end; ++at)
            pixels[at] = value;
    }
}

} // namespace meridor
