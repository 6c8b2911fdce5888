// SPDX-License-Identifier: MIT
/// Geographies cut down to some of their objects.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"

namespace meridor {

/// A new geography of `objects` (indices, ascending) with all their shapes and all datasets of the
/// parent, which stays. Raises a Failure, or the cancel, with nothing left behind.
/// @return the new id
MERIDOR_EXPORT int subsetGeography(int parent, const QVector<int> &objects, const QString &name);

} // namespace meridor
