// SPDX-License-Identifier: MIT
/// Moran's I of a map and of each object, with permutation tests. Works on plain values and
/// weights: rows are the objects that have a value, numbered from 0.
#pragma once
#include <vector>
#include "core/export.h"
#include "core/project/progress.h"

namespace meridor {

/// A sparse matrix of weights by rows. Entries on the diagonal are ignored: an object is not its
/// own neighbour.
class MERIDOR_EXPORT SparseWeights {
public:
    void addNeighbor(int column, double weight);
    /// Ends the row of the neighbours added since the last call. The weights of a neighbour that
    /// was added twice are summed.
    void endRow();

    int rows() const { return static_cast<int>(mStarts.size()) - 1; }
    int start(int row) const { return mStarts[static_cast<size_t>(row)]; }
    int count(int row) const { return start(row + 1) - start(row); }
    const int *columns(int row) const { return mColumns.data() + start(row); }
    const double *weights(int row) const { return mWeights.data() + start(row); }

private:
    std::vector<int> mStarts{0};
    std::vector<int> mColumns;
    std::vector<double> mWeights;
};

/// The permutation p is one-sided, on the side of the median of the permutations on which the value
/// is: p = (r + 1) / (permutations + 1) with r the number of permutations at least as extreme.
struct MoranTest {
    double value = 0;       ///< NaN if all values are equal or all weights are 0
    double expectation = 0; ///< -1 / (n - 1)
    /// Standard deviate under randomisation: A. D. Cliff and J. K. Ord (1981), Spatial processes,
    /// 1.37 and 1.42. NaN for fewer than 4 values.
    double deviate = 0;
    double p = 1; ///< from permutations; NaN if there are none
    /// The central 95 % of the permutations are between low and high; NaN if there are none.
    double low = 0;
    double high = 0;
    int above = 0; ///< permutations whose value is at least this one
};

struct LocalMoran {
    /// I_i = z_i / m2 * sum w_ij z_j with m2 = sum z^2 / n: L. Anselin (1995), Geogr. Anal. 27.
    /// NaN for objects without neighbours.
    std::vector<double> values;
    /// Standard deviates of the values, conditional on z_i: R. R. Sokal, N. L. Oden and B. A.
    /// Thomson (1998), Geogr. Anal. 30. NaN where they are undefined.
    std::vector<double> deviates;
    std::vector<double> z;    ///< value minus mean
    std::vector<double> lags; ///< sum w_ij z_j
    std::vector<double> p;    ///< from conditional permutations; NaN without a value
    std::vector<int> above;   ///< permutations with at least this value; empty without permutations
};

/// How objects without neighbours enter Moran's I. Their values always enter the mean and the
/// variance.
enum class Islands {
    Keep, ///< they count: I = n / S0 * sum w_ij z_i z_j / sum z^2 with n objects
    Drop  ///< n is the number of objects with neighbours, as spdep's moran.test has it by default
};

/// Moran's I of the whole map. Draws `permutations` shuffles from the library's generator.
MERIDOR_EXPORT MoranTest moran(const std::vector<double> &values, const SparseWeights &weights,
                               int permutations, const Meter &meter,
                               Islands islands = Islands::Keep);

/// Moran's I of each object, with conditional permutations: an object keeps its value, the values
/// of its neighbours are drawn from the other objects. All objects use the same `permutations`
/// shuffles, so their tests are not independent of each other.
MERIDOR_EXPORT LocalMoran localMoran(const std::vector<double> &values,
                                     const SparseWeights &weights, int permutations,
                                     const Meter &meter);

/// False positives under the null hypothesis: for each of `permutations` shuffles of the whole map,
/// the objects whose statistic has a one-sided p of at most `alpha` among all shuffles. Uses 4
/// bytes per object and shuffle.
MERIDOR_EXPORT std::vector<std::vector<bool>> flagsOfChance(const std::vector<double> &values,
                                                            const SparseWeights &weights,
                                                            int permutations, double alpha,
                                                            const Meter &meter);

} // namespace meridor
