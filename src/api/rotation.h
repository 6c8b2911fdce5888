// SPDX-License-Identifier: MIT
/// The rotation of points before they enter a point tree, so that ellipses become circles.
#pragma once
#include "datainterface/GeoPointTree.h"

namespace datainterface {

/// Compares only the elements of each diagonal, so other matrices are taken for the identity too.
/// Hosts rely on it.
inline bool isIdentity(const PT_RotationMatrix &m)
{
    return m.m00 == m.m11 && m.m01 == m.m10;
}

inline QPointF rotated(const QPointF &p, const PT_RotationMatrix &m)
{
    if (isIdentity(m))
        return p;
    return {m.m00 * p.x() + m.m01 * p.y(), m.m10 * p.x() + m.m11 * p.y()};
}

} // namespace datainterface
