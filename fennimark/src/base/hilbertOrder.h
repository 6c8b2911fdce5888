// SPDX-License-Identifier: MIT
/// The order of records along a Hilbert curve: near in space and time is near in the store.
#pragma once
#include <QtGlobal>
#include <vector>
#include "fennimark/geometryTypes.h"

namespace fennimark {

/// The middle of one record's box.
struct RecordCenter {
    double x, y, time;
};

/// The keys of places on the curve. `bounds` only sets the grid: centres outside count as at its
/// edge. Without time the curve is plane, 16 bits an axis, else it runs through space and time, 10
/// bits an axis.
class HilbertScale {
public:
    HilbertScale(const RectInT &bounds, bool withTime) : mBounds(bounds), mWithTime(withTime) {}
    quint32 key(const RecordCenter &center) const;

private:
    RectInT mBounds;
    bool mWithTime;
};

/// Positions 0 to n - 1 in the order of their keys, equal keys in the order given. O(n).
std::vector<quint32> orderOfKeys(const std::vector<quint32> &keys);
/// The order of the centres' keys.
std::vector<quint32> hilbertOrder(const std::vector<RecordCenter> &centers, const RectInT &scale,
                                  bool withTime);

/// The position of a cell on the plane curve of 2^16 by 2^16 cells.
quint32 hilbertKey(quint32 x, quint32 y);
/// The position of a cell on the curve through 2^10 by 2^10 by 2^10 cells.
quint32 hilbertKey(quint32 x, quint32 y, quint32 z);

} // namespace fennimark
