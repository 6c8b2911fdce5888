// SPDX-License-Identifier: MIT
/// Statistics of a dataset, per time and over all.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct Statistics {
    qint64 count = 0;
    double mean = 0;
    double deviation = 0; ///< population form; NaN over all times
    double minimum = 0;
    double maximum = 0;
};

/// Of a numeric dataset at an instant; a count of 0 where it has no values.
MERIDOR_EXPORT Statistics statisticsAt(int dataset, qint64 time);
/// Over all times.
MERIDOR_EXPORT Statistics statisticsOfAll(int dataset);

} // namespace meridor
