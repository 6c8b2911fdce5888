// SPDX-License-Identifier: MIT
// The keys are those of J. Skilling, "Programming the Hilbert curve", AIP Conference Proceedings
// 707 (2004), 381-387. The extent is divided into 2^16 by 2^16 cells (with time: 2^10 in each of
// three directions), and the key of a cell is its position on the curve. The four most significant
// bits of the plane key, over a coarse grid of 4 by 4:
//
//       y
//       |   5---6   9--10
//       |   |   |   |   |
//       |   4   7---8  11
//       |   |           |
//       |   3---2  13--12
//       |       |   |
//       |   0---1  14--15
//       +-------------------- x
//
// Each cell is divided in the same way, turned or mirrored so that the end of one part is next to
// the beginning of the following one. Cells with consecutive keys share an edge, so records that
// are sorted by key form compact groups, which makes the boxes of the box tree small.
//
// keyOf first computes the transposed form of the key, in which axis i holds every n-th bit: for
// each bit from the most significant one down, the lower bits are inverted or exchanged between two
// axes. A Gray encoding follows, then the bits are interleaved. Centres are sorted by a radix sort
// of the 32-bit keys, one byte at a time; it is stable.
#include "base/hilbertOrder.h"
#include <algorithm>
#include <array>
#include <cmath>

namespace fennimark {
namespace {

template <std::size_t Axes, unsigned Bits> quint32 keyOf(std::array<quint32, Axes> axis)
{
    for (quint32 q = 1U << (Bits - 1); q > 1; q >>= 1) {
        const quint32 below = q - 1;
        for (quint32 &a : axis) {
            if (a & q) {
                axis[0] ^= below;
            } else {
                const quint32 swap = (axis[0] ^ a) & below;
                axis[0] ^= swap;
                a ^= swap;
            }
        }
    }
    for (std::size_t i = 1; i < Axes; ++i)
        axis[i] ^= axis[i - 1];
    quint32 inversion = 0;
    for (quint32 q = 1U << (Bits - 1); q > 1; q >>= 1) {
        if (axis[Axes - 1] & q)
            inversion ^= q - 1;
    }
    quint32 key = 0;
    for (unsigned bit = Bits; bit-- > 0;) {
        for (const quint32 a : axis)
            key = (key << 1) | (((a ^ inversion) >> bit) & 1U);
    }
    return key;
}

/// The cell of a value in [low, high], 0 to 2^bits - 1; the nearest cell for a value outside.
quint32 cellOf(double value, double low, double high, unsigned bits)
{
    const double extent = high - low;
    const auto last = double((1U << bits) - 1);
    const double factor = extent > 0 && std::isfinite(extent) ? last / extent : 0;
    const double cell = (value - low) * factor; // NaN for inf * 0, which the next line maps to 0
    return static_cast<quint32>(cell > 0 ? std::min(cell, last) : 0.0);
}

struct Keyed {
    quint32 key, position;
};

} // namespace

quint32 hilbertKey(quint32 x, quint32 y)
{
    return keyOf<2, 16>({x, y});
}

quint32 hilbertKey(quint32 x, quint32 y, quint32 z)
{
    return keyOf<3, 10>({x, y, z});
}

quint32 HilbertScale::key(const RecordCenter &center) const
{
    const unsigned bits = mWithTime ? 10 : 16;
    const quint32 x = cellOf(center.x, mBounds.xMin, mBounds.xMax, bits);
    const quint32 y = cellOf(center.y, mBounds.yMin, mBounds.yMax, bits);
    return mWithTime ? hilbertKey(x, y, cellOf(center.time, mBounds.start, mBounds.end, bits))
                     : hilbertKey(x, y);
}

std::vector<quint32> orderOfKeys(const std::vector<quint32> &keys)
{
    std::vector<Keyed> items(keys.size()), other(keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i)
        items[i] = {keys[i], quint32(i)};
    for (unsigned shift = 0; shift < 32; shift += 8) {
        std::array<std::size_t, 257> start{};
        for (const Keyed &item : items)
            ++start[((item.key >> shift) & 0xffU) + 1];
        for (std::size_t i = 1; i < 257; ++i)
            start[i] += start[i - 1];
        for (const Keyed &item : items)
            other[start[(item.key >> shift) & 0xffU]++] = item;
        items.swap(other);
    }
    std::vector<quint32> positions(items.size());
    std::transform(items.begin(), items.end(), positions.begin(),
                   [](const Keyed &item) { return item.position; });
    return positions;
}

std::vector<quint32> hilbertOrder(const std::vector<RecordCenter> &centers, const RectInT &bounds,
                                  bool withTime)
{
    const HilbertScale scale(bounds, withTime);
    std::vector<quint32> keys;
    keys.reserve(centers.size());
    for (const RecordCenter &center : centers)
        keys.push_back(scale.key(center));
    return orderOfKeys(keys);
}

} // namespace fennimark
