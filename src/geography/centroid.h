// SPDX-License-Identifier: MIT
/// The place that stands for an object in point trees and in answers to hosts.
#pragma once
#include "fennimark/FMObject.h"

namespace datainterface {

/// The centre of gravity; the centre of the bounds for an object without area.
inline QPointF centroidOf(const FMObject &object)
{
    double x = 0.0;
    double y = 0.0;
    if (object.GetCentroid(x, y))
        return {x, y};
    const Rect2D box = object.GetBounds();
    return {box.xMin + (box.xMax - box.xMin) * 0.5, box.yMin + (box.yMax - box.yMin) * 0.5};
}

} // namespace datainterface
