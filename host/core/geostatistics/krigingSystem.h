// SPDX-License-Identifier: MIT
/// The linear system of one set of neighbours, factored once and used for all targets that share it.
#pragma once
#include <vector>
#include "core/export.h"
#include "core/geostatistics/covariance.h"

namespace meridor {

/// The Cholesky factor of a symmetric matrix, stored by columns. A row that depends on those before
/// it is dropped: solutions are 0 there. Its remaining pivot is then at most `kDependent` of its
/// diagonal element.
class MERIDOR_EXPORT CholeskyFactor {
public:
    /// Room for a matrix of `size` rows, to be filled in element(row, column), row >= column.
    void resize(int size);
    int size() const { return mSize; }
    double &element(int row, int column) { return mColumns[index(row, column)]; }
    /// The elements from the diagonal downwards.
    double *column(int column) { return &mColumns[index(column, column)]; }
    /// Replaces the matrix by its factor. @return the number of rows that were dropped.
    int factor();
    bool isDropped(int row) const { return mInverse[static_cast<size_t>(row)] == 0; }
    /// L v = b, in place.
    void forward(double *b) const;
    /// L' x = v, in place.
    void backward(double *v) const;

    static constexpr double kDependent = 1e-11;

private:
    size_t index(int row, int column) const
    {
        return static_cast<size_t>(column) * static_cast<size_t>(mSize) + static_cast<size_t>(row);
    }
    bool factorLarge();

    int mSize = 0;
    std::vector<double> mColumns;
    std::vector<double> mInverse; ///< of the diagonal; 0 in dropped rows
};

/// A prediction with its variance; NaN where there is none.
struct Estimate {
    double value = 0;
    double variance = 0;
};

/// Kriging from n neighbours with p drift functions, of which the first is 1; p = 0 is simple
/// kriging of values from which the mean was subtracted. With C = L L', B = L^-1 F and S = B' B the
/// prediction is v' w + r' b and its variance C(0) - v' v + r' S^-1 r, where v = L^-1 c, w = L^-1 z,
/// r = f - B' v and S b = B' w: J.-P. Chiles and P. Delfiner (2012), Geostatistics, 3.4.
class MERIDOR_EXPORT KrigingSystem {
public:
    /// @param drift  p values for each neighbour, neighbour by neighbour.
    void build(const Covariance &model, const double *x, const double *y, const double *values,
               int count, const std::vector<double> &drift, int driftCount);

    int size() const { return mFactor.size(); }
    /// Neighbours that depend on others, which have no weight.
    int dropped() const { return mDropped; }
    /// False if the neighbours do not determine the drift; there is no prediction then.
    bool isDetermined() const { return mDetermined; }
    /// @param c     the covariances of the target with the neighbours; overwritten.
    /// @param f     the drift functions at the target.
    /// @param sill  the covariance of the target with itself.
    Estimate predict(double *c, const double *f, double sill) const;
    /// Replaces `c` by the weights of the neighbours. @return the variance, not below 0.
    double weights(double *c, const double *f, double sill) const;

private:
    /// Sets `mRest` to r and `mHalf` to S^-1 r.
    void driftOf(const double *v, const double *f) const;

    CholeskyFactor mFactor;
    CholeskyFactor mDriftFactor; ///< of S
    std::vector<double> mDrift;  ///< B, function by function
    std::vector<double> mValues; ///< w
    std::vector<double> mCoefficients;
    mutable std::vector<double> mRest;
    mutable std::vector<double> mHalf;
    int mDriftCount = 0;
    int mDropped = 0;
    bool mDetermined = true;
};

} // namespace meridor
