// SPDX-License-Identifier: MIT
/// Every value of every dataset, to compare a project with itself after a round trip.
#pragma once
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/export.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct Snapshot {
    struct Series {
        QVector<Interval> intervals;
        QVector<QStringList>
            values; ///< by interval, then by object; null for a missing value, numbers exact
    };
    QMap<QString, Series> datasets;    ///< by GEOGRAPHY/DATASET
    QMap<QString, QStringList> shapes; ///< by geography: each object's existence
    qint64 count = 0;                  ///< values, missing ones left out
};

MERIDOR_EXPORT Snapshot takeSnapshot();
/// The names of what differs.
MERIDOR_EXPORT QStringList differences(const Snapshot &a, const Snapshot &b);

} // namespace meridor
