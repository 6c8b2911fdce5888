// SPDX-License-Identifier: MIT
/// Moran's I of a dataset at its times, under a weight set.
#pragma once
#include <QString>
#include <QStringList>
#include <QVector>
#include "core/analysis/moran.h"
#include "core/export.h"
#include "core/project/progress.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct MoranPlan {
    int dataset = -1;
    int weightSet = -1;
    QVector<Interval> times;
    int permutations = 999;
    int seed = 1;
    bool local = false;
    QString correction; ///< of local tests: none, bonferroni, holm, simes, fdr or jef
    double alpha = 0.05;
};

struct MoranAt {
    Interval when;
    MoranTest whole;
    QVector<int> objects; ///< that have a value and exist; what stands below is in their order
    LocalMoran local;     ///< empty unless asked for
    QVector<bool> significant;
};

/// Seeds the library's generator once, so that equal plans give equal results. Times without values
/// are left out. Raises a Failure for a dataset of texts, and the cancel.
MERIDOR_EXPORT QVector<MoranAt> moranOverTime(const MoranPlan &plan, const Progress &progress);

/// "high-high", "low-low", "high-low", "low-high", or "not significant".
MERIDOR_EXPORT QString clusterName(const MoranAt &result, int position);

/// Adds what was found to the dataset's geography: "NAME I" and "NAME p", the same at every object
/// of a time, and of local tests "NAME local I", "NAME local p" and "NAME cluster". Raises a
/// Failure for a name that is there. @return the new datasets
MERIDOR_EXPORT QVector<int> storeMoran(const MoranPlan &plan, const QVector<MoranAt> &results,
                                       const QString &name);

} // namespace meridor
