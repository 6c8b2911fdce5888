// SPDX-License-Identifier: MIT
/// All values of a project, to compare it with its copy after saving and loading.
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
        QVector<Interval> intervals; ///< of the realizations one after the other
        /// By interval, then by object: exact numbers; a null text for a missing value.
        QVector<QStringList> values;
    };
    QMap<QString, Series> datasets;    ///< by GEOGRAPHY/DATASET
    QMap<QString, QStringList> shapes; ///< by geography: the existence of each object
    qint64 count = 0;                  ///< number of values that are not missing
};

MERIDOR_EXPORT Snapshot takeSnapshot();
/// The names of the datasets and geographies that differ.
MERIDOR_EXPORT QStringList differences(const Snapshot &a, const Snapshot &b);

} // namespace meridor
