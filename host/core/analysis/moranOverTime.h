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
    int realization = 0; ///< of the dataset
    int weightSet = -1;
    QVector<Interval> times;
    int permutations = 999;
    int seed = 1;
    bool local = false;
    QString correction; ///< of local tests: none, bonferroni, holm, simes, fdr or jef
    double alpha = 0.05;
    Islands islands = Islands::Keep;
};

struct MoranAt {
    Interval when;
    MoranTest whole;
    QVector<int> objects; ///< that exist and have a value; the results below are in this order
    LocalMoran local;     ///< empty unless asked for
    QVector<bool> significant;
    QVector<int> islands; ///< those of `objects` without neighbours among them
};

/// Results for each time of the plan that has values. Seeds the library's generator once, so that
/// equal plans give equal results. Raises a Failure for a dataset of texts, and on a cancel.
MERIDOR_EXPORT QVector<MoranAt> moranOverTime(const MoranPlan &plan, const Progress &progress);

/// "high-high", "low-low", "high-low", "low-high", or "not significant".
MERIDOR_EXPORT QString clusterName(const MoranAt &result, int position);

/// Stores results as datasets of the dataset's geography: "NAME I" and "NAME p", which have the
/// same value at all objects of a time, and for local tests "NAME local I", "NAME local p" and
/// "NAME cluster". Raises a Failure if a name is in use.
/// @return the ids of the new datasets.
MERIDOR_EXPORT QVector<int> storeMoran(const MoranPlan &plan, const QVector<MoranAt> &results,
                                       const QString &name);

} // namespace meridor
