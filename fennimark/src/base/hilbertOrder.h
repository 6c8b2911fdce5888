// SPDX-License-Identifier: MIT
/// The order of records along a Hilbert curve, which places records that are close in space and
/// time close to one another in the store.
#pragma once
#include <QtGlobal>
#include <vector>
#include "fennimark/geometryTypes.h"

namespace fennimark {

/// The middle of one record's box.
struct RecordCenter {
    double x, y, time;
};

/// Computes the keys of record centres. `bounds` sets the grid; centres outside count as being on
/// its edge. Without time the curve is plane with 16 bits an axis; with time it fills space and
/// time with 10 bits an axis.
class HilbertScale {
public:
    HilbertScale(const RectInT &bounds, bool withTime) : mBounds(bounds), mWithTime(withTime) {}
    quint32 key(const RecordCenter &center) const;

private:
    RectInT mBounds;
    bool mWithTime;
};

/// The numbers 0 to n - 1 sorted by their keys; equal keys keep their order. O(n).
std::vector<quint32> orderOfKeys(const std::vector<quint32> &keys);
/// The numbers of the centres sorted by their keys on the curve over `scale`.
std::vector<quint32> hilbertOrder(const std::vector<RecordCenter> &centers, const RectInT &scale,
                                  bool withTime);

/// The position of a cell on the plane curve of 2^16 by 2^16 cells.
quint32 hilbertKey(quint32 x, quint32 y);
/// The position of a cell on the curve through 2^10 by 2^10 by 2^10 cells.
quint32 hilbertKey(quint32 x, quint32 y, quint32 z);

} // namespace fennimark
