// SPDX-License-Identifier: MIT
/// Statistics of a dataset at one time and over all times.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct Statistics {
    qint64 count = 0;
    double mean = 0;
    double deviation =
        0; ///< population standard deviation; NaN over all times of a changing dataset
    double minimum = 0;
    double maximum = 0;
};

/// Statistics of a numeric dataset at an instant; count is 0 if it has no values then.
MERIDOR_EXPORT Statistics statisticsAt(int dataset, qint64 time, int realization = 0);
/// Statistics of a numeric dataset over all times, with the standard deviation if it is static.
MERIDOR_EXPORT Statistics statisticsOfAll(int dataset, int realization = 0);

} // namespace meridor
