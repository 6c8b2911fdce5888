// SPDX-License-Identifier: MIT
/// Normal scores: values replaced by the quantiles of the standard normal distribution that have
/// their ranks, and back. C. V. Deutsch and A. G. Journel (1998), GSLIB, V.1.
#pragma once
#include <vector>
#include "core/export.h"

namespace meridor {

class MERIDOR_EXPORT NormalScores {
public:
    /// The k-th smallest of n values, counted from 0, has the score of the probability
    /// (k + 1/2) / n; equal values have the mean of their scores. Raises a Failure if there are
    /// fewer than two different values.
    explicit NormalScores(const std::vector<double> &values);

    /// The scores of the values that were given, in their order.
    const std::vector<double> &scores() const { return mScores; }
    /// Linear between the given values, which it returns exactly for their scores. Scores beyond
    /// those of the smallest and the largest value give these values.
    double valueOf(double score) const;

private:
    std::vector<double> mScores;
    std::vector<double> mKnotScores; ///< ascending, of the different values
    std::vector<double> mKnotValues;
};

} // namespace meridor
