// SPDX-License-Identifier: MIT
#pragma once
#include <QPointF>
#include <QVector>
#include "core/export.h"
#include "datainterface/MVectorData.h"

namespace meridor {

/// The rings of an object's polygon at a time; empty if it is no polygon or does not exist then.
MERIDOR_EXPORT QList<QVector<QPointF>> ringsOf(const MVectorData &geography, int object,
                                               qint64 time);

} // namespace meridor
