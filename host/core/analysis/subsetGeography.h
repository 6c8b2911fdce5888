// SPDX-License-Identifier: MIT
/// Geographies made of some or all objects of another geography.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// Creates a geography of `objects` with all their shapes and all datasets of the parent, which is
/// unchanged. Moves the progress bar of the caller. Raises a Failure, also on a cancel; no geography is
/// added then.
/// @param objects  indices in the parent, ascending.
/// @return the id of the new geography.
MERIDOR_EXPORT int subsetGeography(int parent, const QVector<int> &objects, const QString &name);

/// Copies a geography or grid with all its datasets; weight sets are not copied. Raises a Failure, also
/// on a cancel and if the name is taken; no geography is added then.
/// @return the id of the copy.
MERIDOR_EXPORT int copyGeography(int geography, const QString &name);

} // namespace meridor
