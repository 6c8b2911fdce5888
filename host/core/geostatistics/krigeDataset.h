// SPDX-License-Identifier: MIT
/// Kriging of a dataset over time, its results as datasets, and cross-validation.
#pragma once
#include <QString>
#include <QVector>
#include "core/export.h"
#include "core/geostatistics/kriging.h"
#include "core/project/progress.h"
#include "datainterface/TimeStamp.h"

namespace meridor {

struct KrigeRequest {
    int dataset = -1;
    int realization = 0;
    QVector<Interval> times;
    /// The name of a model, or structures as parseStructures reads them.
    QString model;
    KrigingPlan plan;  ///< its model and the drift of its samples are set for each time
    int external = -1; ///< a raster dataset, for an external drift
    int target = -1;   ///< the geography of the predictions
    int block = 0;     ///< points along a side of a cell or of a polygon's bounds; 0: no blocks
    QString name;      ///< the prediction's; the variance's is "NAME variance"
};

/// What was done at one time.
struct KrigedAt {
    Interval when;
    int samples = 0;
    int merged = 0;       ///< samples that were joined with others at their place
    int withoutDrift = 0; ///< samples where the external drift has no value
    int predictions = 0;
    int missing = 0;
    bool apart = false; ///< whether no prediction is among the samples
    KrigingRemarks remarks;
    double meanVariance = 0; ///< NaN without predictions
};
struct Kriged {
    int prediction = -1; ///< datasets
    int variance = -1;
    QVector<KrigedAt> times;
};

/// Stores predictions and variances. Raises a Failure as Kriging, findModel and structuresAt do, for
/// taken names and for blocks around points; nothing is stored then.
MERIDOR_EXPORT Kriged krigeDataset(const KrigeRequest &request, const Progress &progress);

struct Validation {
    QVector<KrigedAt> times;
    double meanError = 0;   ///< predictions less values
    double meanSquare = 0;  ///< of the errors
    double meanRatio = 0;   ///< of error^2 to kriging variance; about 1 if the model is right
    double correlation = 0; ///< of values and predictions
    int residuals = -1;     ///< datasets; -1 without a name
    int deviates = -1;
};

/// Predicts each sample from the samples of the other folds. Samples are dealt out to the folds at
/// random, by the library's generator. Residuals (value less prediction) and their ratios to the
/// kriging deviation are stored as "NAME residual" and "NAME deviate" unless the name is empty.
/// @param folds  0: every sample is a fold.
MERIDOR_EXPORT Validation crossValidate(const KrigeRequest &request, int folds, int seed,
                                        const Progress &progress);

} // namespace meridor
