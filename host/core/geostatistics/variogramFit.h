// SPDX-License-Identifier: MIT
/// Fits nested structures to an empirical variogram by weighted least squares.
#pragma once
#include <QString>
#include <QVector>
#include <optional>
#include <vector>
#include "core/export.h"
#include "core/geostatistics/empiricalVariogram.h"
#include "datainterface/VariogramModel.h"

namespace meridor {

/// The weight of the squared residual of a class with n pairs at the mean separation h.
enum class FitWeights : int {
    PairsByDistance = 0, ///< n / h^2
    Pairs = 1,           ///< n
    Cressie = 2, ///< n / gamma^2 of the fitted model: N. Cressie (1985), Math. Geol. 17, 563-586
    Equal = 3
};

struct FitPlan {
    /// At most three, without a nugget, which every model has; a nugget alone is a model without
    /// structures.
    QVector<VariogramBasicModel::ModelType> structures{VariogramBasicModel::Spherical};
    std::optional<double> nugget; ///< fixed at this value; else fitted, 0 or above
    bool anisotropic = false;     ///< with two ranges and a direction for each structure
    FitWeights weights = FitWeights::PairsByDistance;
    /// Also of a model of one isotropic Gaussian structure, whose range is otherwise the zero of
    /// sum w (gamma* - gamma) (h / r) exp(-3 h^2 / r^2) nearest to the least sum of squares.
    bool exactMinimum = false;
    /// Sills and nugget may be below 0, as those of a cross variogram of values of which one falls
    /// where the other rises.
    bool signedSills = false;
};

struct FittedModel {
    VariogramModelAtT model;
    double squares = 0; ///< weighted sum of squared residuals
    bool converged = false;
    QString remark; ///< why it did not converge, or what is doubtful; else empty
};

/// The least weighted sum of squares, with all sills at or above 0 unless the plan says otherwise.
/// Raises a Failure for fewer
/// classes than parameters, for classes that are all 0, for more structures than three, and for
/// anisotropic power structures.
MERIDOR_EXPORT FittedModel fitVariogram(const std::vector<LagBin> &bins, const FitPlan &plan);

/// A model that is given, as if it had been fitted: with its sum of squares.
MERIDOR_EXPORT FittedModel givenModel(const std::vector<LagBin> &bins,
                                      const VariogramModelAtT &model, FitWeights weights);

} // namespace meridor
