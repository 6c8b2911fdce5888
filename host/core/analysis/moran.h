// SPDX-License-Identifier: MIT
/// Moran's I, of a whole map and of each object, with permutation tests. Values and weights alone:
/// the rows are the objects that have a value, numbered anew from 0.
#pragma once
#include <functional>
#include <vector>
#include "core/export.h"

namespace meridor {

/// Weights by row. An object is no neighbour of its own: entries on the diagonal are left out.
class MERIDOR_EXPORT SparseWeights {
public:
    void addNeighbor(int column, double weight);
    /// Ends the row that the neighbours before belong to; a neighbour named twice has both weights.
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

/// Told 0 to 100; raises to stop.
using Meter = std::function<void(int)>;

/// A permutation's p is one-sided, on the side of the median on which the value lies, (r + 1) /
/// (permutations + 1) with r the permutations at least as far out: never 0.
struct MoranTest {
    double value = 0;       ///< NaN when all values are equal or all weights 0
    double expectation = 0; ///< -1 / (n - 1)
    double deviate = 0;     ///< under randomisation, A. D. Cliff and J. K. Ord (1981), Spatial
                            ///< processes, 1.37 and 1.42
    double p = 1;           ///< of the permutations; NaN without any
    double low = 0;         ///< 95 of 100 permutations lie between the two; NaN without any
    double high = 0;
};

struct LocalMoran {
    std::vector<double> values;   ///< z_i / m2 * sum w_ij z_j with m2 = sum z^2 / n: L. Anselin
                                  ///< (1995), Geogr. Anal. 27
    std::vector<double> deviates; ///< given z_i: R. R. Sokal, N. L. Oden, B. A. Thomson (1998),
                                  ///< Geogr. Anal. 30; else NaN
    std::vector<double> z;        ///< the value less the mean
    std::vector<double> lags;     ///< sum w_ij z_j
    std::vector<double> p;
};

/// Draws `permutations` shuffles from the library's generator. At least 4 values for a deviate.
MERIDOR_EXPORT MoranTest moran(const std::vector<double> &values, const SparseWeights &weights,
                               int permutations, const Meter &meter);

/// Conditional permutations: an object keeps its value, its neighbours' values are drawn from the
/// others. All objects draw from the same `permutations` shuffles, so tests of one run are not
/// independent of each other.
MERIDOR_EXPORT LocalMoran localMoran(const std::vector<double> &values,
                                     const SparseWeights &weights, int permutations,
                                     const Meter &meter);

/// For each of `permutations` shuffles of the whole map the objects whose statistic then lies as
/// far out as a p of at most `alpha` says, seen among all the shuffles: what chance alone flags.
/// Takes 4 bytes an object and shuffle.
MERIDOR_EXPORT std::vector<std::vector<bool>> flagsOfChance(const std::vector<double> &values,
                                                            const SparseWeights &weights,
                                                            int permutations, double alpha,
                                                            const Meter &meter);

} // namespace meridor
