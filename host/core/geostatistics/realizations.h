// SPDX-License-Identifier: MIT
/// What the realizations of a dataset have in common, at each cell or object.
#pragma once
#include <QString>
#include <QVector>
#include <vector>
#include "core/export.h"
#include "core/project/progress.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct RealizationQuestions {
    bool mean = false;
    bool deviation = false; ///< with n - 1; missing where fewer than two realizations have values
    QVector<double> quantiles; ///< shares from 0 to 1, linear between the ordered values
    QVector<double> above;     ///< limits: the share of the realizations with larger values
    /// A dataset with the values whose normal scores were simulated, -1 for none. If the asked
    /// dataset holds normal scores, the values of each realization are replaced by those of the
    /// same rank (see VORN_GetRealizationValues).
    int reference = -1;
};

struct RealizationAnswer {
    QString name;               ///< "mean", "deviation", "quantile 0.05", "above 100"
    std::vector<double> values; ///< by object or cell; NaN where no realization has a value
};

/// Answers at one time. Uses at most kMostQuantileBytes for quantiles: more values are read in several
/// passes. Raises a Failure for texts, for no question and for a share outside 0 to 1.
MERIDOR_EXPORT QVector<RealizationAnswer> askRealizations(int dataset, const Interval &when,
                                                          const RealizationQuestions &questions,
                                                          const Meter &meter);

/// Stores each answer as "NAME mean" and so on. @return the ids of the datasets.
MERIDOR_EXPORT QVector<int> storeAnswers(int dataset, const QVector<Interval> &times,
                                         const QVector<QVector<RealizationAnswer>> &answers,
                                         const QString &name);

constexpr qint64 kMostQuantileBytes = qint64(256) << 20;

} // namespace meridor
