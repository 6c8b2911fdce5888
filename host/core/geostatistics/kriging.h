// SPDX-License-Identifier: MIT
/// Kriging: the best linear unbiased prediction at places or over blocks from samples.
#pragma once
#include <QPointF>
#include <limits>
#include <memory>
#include <optional>
#include <vector>
#include "core/export.h"
#include "core/geostatistics/covariance.h"
#include "core/geostatistics/krigingSystem.h"
#include "core/geostatistics/samples.h"
#include "core/project/progress.h"

namespace meridor {

/// The samples that a prediction uses. Of several at the same distance the one with the lowest row
/// is taken.
struct Neighborhood {
    int most = 20;       ///< nearest samples; 0: all
    int least = 1;       ///< with fewer there is no prediction
    int perQuadrant = 0; ///< at most so many in each of the four quadrants; 0: no limit
    double radius = std::numeric_limits<double>::infinity(); ///< largest distance, map units
};

struct KrigingPlan {
    VariogramModelAtT model;
    Neighborhood neighborhood;
    std::optional<double> mean; ///< simple kriging with this mean; else it is estimated
    int degree = 0;             ///< of the polynomial drift in x and y, 0 to 2
    /// External drift: a value for each sample; empty: none.
    std::vector<double> sampleDrift;
};

/// What is predicted: places, or blocks around them.
struct Targets {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> drift; ///< external drift, if the plan has one; NaN: no prediction
    /// Blocks, as offsets of the points over which a block is averaged: the same for all targets, or
    /// own ones for each target. Both empty: places.
    std::vector<QPointF> block;
    std::vector<std::vector<QPointF>> blocks;
    /// The row of a sample that the target does not use, -1 for none; empty: none. For
    /// cross-validation.
    std::vector<int> leftOut;

    size_t size() const { return x.size(); }
};

/// What was not as asked for.
struct KrigingRemarks {
    int alone = 0;        ///< targets with too few neighbours
    int undetermined = 0; ///< targets whose neighbours do not determine the drift
    int dropped = 0;      ///< systems in which neighbours that depend on others were dropped
};

/// At a sample's place the prediction is its value, with the variance 0; a nugget is a variation at
/// distances below those of the samples, not an error of measurement.
class MERIDOR_EXPORT Kriging {
public:
    /// Raises a Failure for no samples, samples at the same place (see withoutColocated), values or
    /// drifts that are not finite, an unusable model (see Covariance), an unbounded model with a
    /// given mean, a mean with a drift, and for more than kMostTogether samples without a limit of
    /// neighbours.
    Kriging(const Samples &samples, const KrigingPlan &plan);
    ~Kriging();
    Kriging(const Kriging &) = delete;
    Kriging &operator=(const Kriging &) = delete;

    /// In the order of the targets. @param meter  receives 0 to 100.
    std::vector<Estimate> predict(const Targets &targets, const Meter &meter);
    /// The rows of the neighbours of one target and their weights.
    void weights(const Targets &targets, size_t target, std::vector<int> &rows,
                 std::vector<double> &weights);
    const KrigingRemarks &remarks() const;

    static constexpr int kMostTogether = 6000; ///< samples in one system

private:
    class Work;
    std::unique_ptr<Work> mWork;
};

} // namespace meridor
