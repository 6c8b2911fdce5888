// SPDX-License-Identifier: MIT
/// Shapes as well-known binary (OGC simple features), the form in which programs exchange them in
/// memory.
#pragma once
#include <QByteArray>
#include "core/export.h"
#include "core/formats/featureTable.h"

namespace meridor {

/// Polygons have shells with their holes. Empty for a shape without parts.
MERIDOR_EXPORT QByteArray wellKnownBinary(const ShapeParts &parts, ShapeKind kind);

/// Appends the shape of the next row, that of index `table.rows`; no bytes give a shape without
/// parts. Raises a Failure that names the row for bytes that are no geometry, and for one that a
/// geography cannot hold.
MERIDOR_EXPORT void takeWellKnownBinary(FeatureTable &table, const QByteArray &bytes);

} // namespace meridor
