// SPDX-License-Identifier: MIT
/// Variograms of datasets over time, and the variogram models of the project.
#pragma once
#include <QJsonArray>
#include <QStringList>
#include <QVector>
#include <optional>
#include "core/export.h"
#include "core/geostatistics/empiricalVariogram.h"
#include "core/geostatistics/variogramFit.h"
#include "core/project/progress.h"
#include "core/project/projectHost.h"
#include "datainterface/TimeStamp.h"
#include "datainterface/VariogramModel.h"

namespace meridor {

struct VariogramPlan {
    int dataset = -1;
    int other = -1; ///< the second dataset of a cross variogram
    int realization = 0;
    QVector<Interval> times;
    bool pooled = false; ///< pairs of all times in one variogram
    bool scores = false; ///< of the normal scores of each time's values
    LagPlan lags;        ///< see completeLags for what is 0
    bool fits = true;
    FitPlan fit; ///< without structures: the best of the bounded types
    /// Structures that are given and not fitted; empty: there are none.
    VariogramModelAtT given;
};

/// Four directions a quarter of a half turn apart, if an anisotropic model is fitted or given and the
/// plan has no directions.
MERIDOR_EXPORT void completeDirections(VariogramPlan &plan);

/// The variogram of one time, or of all of them.
struct VariogramAt {
    Interval when;
    int samples = 0;
    LagPlan lags;
    std::vector<LagBin> bins;
    LagBin colocated;
    std::optional<FittedModel> fitted;
};

/// Raises a Failure for texts, for fewer than two values at a time, for datasets of two geographies,
/// as LagSums and fitVariogram do, and on a cancel. Notes when lag vectors of a grid were left out.
/// @param meter  receives 0 to 100.
MERIDOR_EXPORT QVector<VariogramAt> variogramsOf(const VariogramPlan &plan, const Meter &meter);

/// The model with what it was fitted from: the classes by time, the estimator, the number of
/// classes, and in `fit` the weights (ints 0), cutoff, width and tolerance (doubles 0 to 2), the
/// largest sum of squares (doubles 3), whether it is of normal scores (flags 3).
MERIDOR_EXPORT VariogramModel modelOf(const VariogramPlan &plan, const QVector<VariogramAt> &found,
                                      const QString &name);
/// A model of the project, with the same structures at all times.
MERIDOR_EXPORT VariogramModel projectModel(const QString &name, const VariogramModelAtT &model);
/// How the classes were made that a model was fitted to, as far as the model tells; else empty.
MERIDOR_EXPORT LagPlan lagsOf(const VariogramModel &model);
MERIDOR_EXPORT bool isOfScores(const VariogramModel &model);

/// A model by its name among those of the dataset, then among the nonconditional ones of the
/// project. Raises a Failure that lists the names if there is none.
/// @param dataset  -1: only the nonconditional ones.
MERIDOR_EXPORT VariogramModel findModel(int dataset, const QString &name);
/// Where a model is kept: in its dataset, or in the project (-1), which calls it nonconditional.
struct ModelPlace {
    int dataset = -1;
    int id = -1;
};
/// A model by its name among those of that dataset alone, or of the project alone. Raises a Failure
/// that lists the names if there is none.
MERIDOR_EXPORT ModelPlace placeOfModel(int dataset, const QString &name);
/// False if there is no such model.
MERIDOR_EXPORT bool modelAt(const ModelPlace &place, VariogramModel &model);
/// The names of the models of a dataset, or of the project.
MERIDOR_EXPORT QStringList modelNames(int dataset);
/// Raises a Failure if the name is empty or another model of the same owner has it.
MERIDOR_EXPORT void renameModel(const ModelPlace &place, const QString &name);
/// @param name  empty: one of copyName().
MERIDOR_EXPORT ModelPlace duplicateModel(const ModelPlace &place, const QString &name);
MERIDOR_EXPORT void removeModels(const QVector<ModelPlace> &places);
/// All models of the project with their structures by time, those of datasets first.
MERIDOR_EXPORT QJsonArray describeModels();

/// The structures at a time. A model with one time serves all times; else a time without structures
/// raises a Failure.
MERIDOR_EXPORT VariogramModelAtT structuresAt(const VariogramModel &model, qint64 time);

/// Adds a model to its dataset; a model without a dataset to the project. A taken name raises a
/// Failure of the setting "replace".
/// @param replaces  whether it takes the place of a model of the same name.
MERIDOR_EXPORT void storeModel(VariogramModel model, bool replaces = false);

/// The SessionUser::variogramFitter of programs that link this library. The estimator is one of
/// Estimator, the second dataset of a cross variogram `locations`; `lagCount` the number of classes
/// (below 1: 15), `flagA` whether times are pooled, `parameter` the cutoff (not above 0: a third of
/// the diagonal), `flagB` whether the model is anisotropic. Of the bounded types the one with the
/// least squares is chosen. A Failure becomes a warning, and the answer false.
MERIDOR_EXPORT bool fitRequestedModel(VariogramModel &model, const VariogramRequest &request);

} // namespace meridor
