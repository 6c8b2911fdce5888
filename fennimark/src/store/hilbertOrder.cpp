// SPDX-License-Identifier: MIT
// The keys: J. Skilling, "Programming the Hilbert curve", AIP Conference Proceedings 707 (2004),
// 381-387. The transposed form of a cell (the key's bits dealt out over the axes) is reached by
// exchanges and inversions from the top bit down and one Gray encoding. The sort is a byte-wise
// radix sort on the 32-bit keys.
#include "store/hilbertOrder.h"
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

/// Maps [low, high] to the cells 0 to 2^bits - 1, what lies outside to the nearest.
class CellScale {
public:
    CellScale(double low, double high, unsigned bits) : mLow(low), mLast(double((1U << bits) - 1))
    {
        const double extent = high - low;
        mFactor = extent > 0 && std::isfinite(extent) ? mLast / extent : 0;
    }
    quint32 operator()(double value) const
    {
        const double cell = (value - mLow) * mFactor;
        return static_cast<quint32>(cell > 0 ? std::min(cell, mLast)
                                             : 0.0); // a NaN of inf * 0 fails the test
    }

private:
    double mLow, mLast, mFactor;
};

struct Keyed {
    quint32 key, position;
};

std::vector<quint32> sortedPositions(std::vector<Keyed> &items)
{
    std::vector<Keyed> other(items.size());
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

} // namespace

quint32 hilbertKey(quint32 x, quint32 y)
{
    return keyOf<2, 16>({x, y});
}

quint32 hilbertKey(quint32 x, quint32 y, quint32 z)
{
    return keyOf<3, 10>({x, y, z});
}

std::vector<quint32> hilbertOrder(const std::vector<RecordCenter> &centers, const RectInT &scale,
                                  bool withTime)
{
    const unsigned bits = withTime ? 10 : 16;
    const CellScale x(scale.xMin, scale.xMax, bits), y(scale.yMin, scale.yMax, bits),
        t(scale.start, scale.end, bits);
    std::vector<Keyed> items;
    items.reserve(centers.size());
    for (const RecordCenter &center : centers) {
        const quint32 key = withTime ? hilbertKey(x(center.x), y(center.y), t(center.time))
                                     : hilbertKey(x(center.x), y(center.y));
        items.push_back({key, quint32(items.size())});
    }
    return sortedPositions(items);
}

} // namespace fennimark
