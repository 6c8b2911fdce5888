// SPDX-License-Identifier: MIT
/// One neighbour of one object.
#pragma once
#include <QDataStream>
#include <QtGlobal>
#include "datainterface/export.h"

/// One entry of a neighbour list. A plain value.
struct neighborDatum {
    int id = -1; ///< the neighbour's object index, or the cell's number
    float weight = 0.0F;
    float angle = 0.0F; ///< From the object to the neighbour, radians, counter-clockwise from the x
                        ///< axis; 0 for polygons.
    /// Points: the squared distance in map units. Polygons: the length of the shared border if the
    /// weights depend on it, otherwise -1. Cells: the distance between centres if the weights
    /// depend on it, otherwise 0.
    float distance = 0.0F;
};
Q_DECLARE_TYPEINFO(neighborDatum, Q_PRIMITIVE_TYPE);

/// The four fields in order. The floats are in the form of the stream, which is 8 bytes from
/// version 12 on.
DATAINTERFACE_EXPORT QDataStream &operator<<(QDataStream &out, const neighborDatum &datum);
DATAINTERFACE_EXPORT QDataStream &operator>>(QDataStream &in, neighborDatum &datum);
