// SPDX-License-Identifier: MIT
/// The shapes of the objects of a vector geography, and the coordinate system of all geographies.
#pragma once
#include <QPointF>
#include <QVector>
#include <optional>
#include "core/export.h"
#include "datainterface/MVectorData.h"

namespace meridor {

/// The coordinate system as well-known text; empty if none is known. The tag "Projection" of a vector
/// geography is the system's name alone.
MERIDOR_EXPORT QString projectionText(int geography);

/// The rings of an object's polygon at a time; empty if it is no polygon or does not exist then.
MERIDOR_EXPORT QList<QVector<QPointF>> ringsOf(const MVectorData &geography, int object,
                                               qint64 time);
/// The coordinates of a point, the centre of gravity of a polygon, and the centre of the bounds of
/// a line or of a polygon without area; nothing if the object does not exist at the time.
MERIDOR_EXPORT std::optional<QPointF> centreOf(const MVectorData &geography, int object,
                                               qint64 time);

/// The parts of the shape of a record: all rings of a polygon, the parts of a line, or the one vertex
/// of a point. Empty for a record that does not exist.
MERIDOR_EXPORT QVector<QVector<QPointF>> partsOf(const MVectorData &geography, int record);

} // namespace meridor
