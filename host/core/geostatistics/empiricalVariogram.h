// SPDX-License-Identifier: MIT
/// Empirical variograms: half the mean squared difference of two values by their separation.
#pragma once
#include <functional>
#include <vector>
#include "core/export.h"
#include "core/geostatistics/samples.h"
#include "core/project/progress.h"

namespace meridor {

/// Codes of VariogramModel::estimator in models that this program fits.
enum class Estimator : int {
    Classical = 0, ///< sum of squared differences / (2 n): G. Matheron (1963), Econ. Geol. 58
    /// (mean of sqrt |difference|)^4 / (2 (0.457 + 0.494 / n)): N. Cressie and D. M. Hawkins (1980),
    /// Math. Geol. 12, 115-125
    Robust = 1,
    Cross = 2 ///< sum of products of the differences of two variables / (2 n)
};

struct LagPlan {
    Estimator estimator = Estimator::Classical;
    double cutoff = 0; ///< the largest separation, map units, above 0
    double width = 0;  ///< of a class of separations, map units, above 0
    /// Radians counter-clockwise from the x axis; a separation and its opposite have the same
    /// direction. Empty: all directions in one.
    std::vector<double> directions;
    double tolerance = 0; ///< largest angle, radians, between a pair and its direction
};
/// Cutoff: a third of the diagonal; width: a fifteenth of the cutoff. Values above 0 are kept.
MERIDOR_EXPORT void completeLags(LagPlan &plan, double diagonal);

/// One class of pairs: separations in (k width, (k + 1) width] within the tolerance of a direction.
struct LagBin {
    double lag = 0;       ///< mean separation
    double direction = 0; ///< one of the plan's
    double value = 0;
    qint64 pairs = 0;
};

/// Sums over pairs, to which the samples of several times may be added: pairs are made within a
/// time only. Pairs at the same place are counted apart: they tell the variance of a repeated
/// measurement, and no separation could be given to them.
class MERIDOR_EXPORT LagSums {
public:
    /// Raises a Failure for a plan whose numbers are not finite, for more than 10,000 classes and
    /// for a width above the cutoff.
    explicit LagSums(const LagPlan &plan);

    /// O(pairs within the cutoff). @param meter  receives 0 to 100.
    void add(const Samples &samples, const Meter &meter);
    /// For Estimator::Cross; `others` are the values of the second variable in the same rows.
    void add(const Samples &samples, const std::vector<double> &others, const Meter &meter);
    /// A grid, by its lag vectors; NaN is a missing cell. Of more lag vectors than `kMostProducts`
    /// products of cells allow, every n-th is taken.
    /// @param others  of the second variable, for Estimator::Cross; else empty.
    /// @return the share of the lag vectors that was taken.
    double addGrid(const std::vector<double> &values, const std::vector<double> &others,
                   int columns, double cellWidth, double cellHeight, const Meter &meter);

    /// The classes that have pairs, by direction and separation.
    std::vector<LagBin> bins() const;
    /// The class of pairs at the same place; its lag is 0.
    LagBin colocated() const;

    static constexpr double kMostProducts = 4e9;

private:
    struct Sum {
        double value = 0; ///< of squares, of square roots or of products
        double lag = 0;
        qint64 pairs = 0;
    };
    LagBin binOf(const Sum &sum, double direction) const;
    void addPair(double h, double dx, double dy, double term, qint64 pairs);
    template <class Term>
    void addPairs(const Samples &samples, const std::vector<double> &others, Term term,
                  const Meter &meter);

    LagPlan mPlan;
    size_t mClasses;
    std::vector<Sum> mSums; ///< [direction * mClasses + class]
    Sum mColocated;
};

} // namespace meridor
