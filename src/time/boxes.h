// SPDX-License-Identifier: MIT
/// Conversions of rectangles and stamps to the types of the geometry library and back.
#pragma once
#include <QRectF>
#include "datainterface/TimeStamp.h"
#include "fennimark/geometryTypes.h"

namespace datainterface {

/// The rectangle's top left corner has the smallest x and the smallest y.
inline QRectF rectOf(const Rect2D &box)
{
    return QRectF(box.xMin, box.yMin, box.xMax - box.xMin, box.yMax - box.yMin);
}

inline Rect2D boxOf(const QRectF &rect)
{
    return {rect.x(), rect.x() + rect.width(), rect.y(), rect.y() + rect.height()};
}

/// Times beyond 2^53 lose their low bits.
inline timeRange rangeOf(const TimeStamp &stamp)
{
    constexpr int kStartInclusive = 0xF0;
    constexpr int kEndInclusive = 0x0F;
    const int flags =
        (stamp.inclusiveStart ? kStartInclusive : 0) | (stamp.inclusiveEnd ? kEndInclusive : 0);
    return {static_cast<double>(stamp.startTime), static_cast<double>(stamp.endTime),
            static_cast<unsigned char>(flags)};
}

inline RectInT boxOf(const QRectF &rect, const TimeStamp &stamp)
{
    return {boxOf(rect), rangeOf(stamp)};
}

} // namespace datainterface
