// SPDX-License-Identifier: MIT
#include "core/geostatistics/krigingSystem.h"
#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <limits>

namespace meridor {
namespace {

/// From this size on blocked elimination is faster.
constexpr int kLarge = 96;
constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

size_t at(int i)
{
    return static_cast<size_t>(i);
}

double dot(const double *a, const double *b, int count)
{
    // Two sums, so that an addition does not wait for the one before.
    double even = 0;
    double odd = 0;
    int i = 0;
    for (; i + 1 < count; i += 2) {
        even += a[i] * b[i];
        odd += a[i + 1] * b[i + 1];
    }
    return i < count ? even + odd + a[i] * b[i] : even + odd;
}

} // namespace

void CholeskyFactor::resize(int size)
{
    mSize = size;
    mColumns.resize(at(size) * at(size));
    mInverse.resize(at(size));
}

/// Factors a matrix all of whose rows are independent. @return false, with the matrix unchanged, if
/// some are not.
bool CholeskyFactor::factorLarge()
{
    using Matrix = Eigen::MatrixXd;
    const Eigen::Map<Matrix> original(mColumns.data(), mSize, mSize);
    Eigen::LLT<Matrix> decomposed(original);
    if (decomposed.info() != Eigen::Success)
        return false;
    const Matrix &factor = decomposed.matrixLLT();
    for (int i = 0; i < mSize; ++i)
        if (!(factor(i, i) * factor(i, i) > kDependent * original(i, i)))
            return false;
    std::copy(factor.data(), factor.data() + factor.size(), mColumns.data());
    for (int i = 0; i < mSize; ++i)
        mInverse[at(i)] = 1 / mColumns[index(i, i)];
    return true;
}

int CholeskyFactor::factor()
{
    if (mSize >= kLarge && factorLarge())
        return 0;
    int dropped = 0;
    for (int j = 0; j < mSize; ++j)
        mInverse[at(j)] = kDependent * element(j, j); // the least pivot, until the row's turn
    for (int j = 0; j < mSize; ++j) {
        double *const pivot = column(j);
        const int below = mSize - j;
        if (!(*pivot > mInverse[at(j)])) {
            std::fill(pivot, pivot + below, 0.0);
            mInverse[at(j)] = 0;
            ++dropped;
            continue;
        }
        const double inverse = 1 / std::sqrt(*pivot);
        mInverse[at(j)] = inverse;
        for (int i = 0; i < below; ++i)
            pivot[i] *= inverse;
        for (int k = 1; k < below; ++k) {
            double *const target = column(j + k);
            const double factor = pivot[k];
            const double *const source = pivot + k;
            for (int i = 0; i < below - k; ++i)
                target[i] -= factor * source[i];
        }
    }
    return dropped;
}

void CholeskyFactor::forward(double *b) const
{
    for (int j = 0; j < mSize; ++j) {
        const double *const source = &mColumns[index(j, j)];
        const double value = b[j] * mInverse[at(j)];
        b[j] = value;
        double *const target = b + j;
        for (int i = 1; i < mSize - j; ++i)
            target[i] -= value * source[i];
    }
}

void CholeskyFactor::backward(double *v) const
{
    for (int j = mSize - 1; j >= 0; --j) {
        const double *const source = &mColumns[index(j, j)];
        v[j] = (v[j] - dot(source + 1, v + j + 1, mSize - j - 1)) * mInverse[at(j)];
    }
}

void KrigingSystem::build(const Covariance &model, const double *x, const double *y,
                          const double *values, int count, const std::vector<double> &drift,
                          int driftCount)
{
    mFactor.resize(count);
    for (int j = 0; j < count; ++j)
        model.fill(x[j], y[j], x + j, y + j, count - j, mFactor.column(j));
    mDropped = mFactor.factor();
    mValues.assign(values, values + count);
    mFactor.forward(mValues.data());

    mDriftCount = driftCount;
    mDrift.resize(at(driftCount) * at(count));
    mCoefficients.resize(at(driftCount));
    mRest.resize(at(driftCount));
    mHalf.resize(at(driftCount));
    for (int k = 0; k < driftCount; ++k) {
        double *const b = &mDrift[at(k) * at(count)];
        for (int i = 0; i < count; ++i)
            b[i] = drift[at(i) * at(driftCount) + at(k)];
        mFactor.forward(b);
        mCoefficients[at(k)] = dot(b, mValues.data(), count);
    }
    mDriftFactor.resize(driftCount);
    for (int k = 0; k < driftCount; ++k)
        for (int j = k; j < driftCount; ++j)
            mDriftFactor.element(j, k) =
                dot(&mDrift[at(j) * at(count)], &mDrift[at(k) * at(count)], count);
    mDetermined = count > 0 && mDriftFactor.factor() == 0;
    if (mDetermined && driftCount > 0) {
        mDriftFactor.forward(mCoefficients.data());
        mDriftFactor.backward(mCoefficients.data());
    }
}

void KrigingSystem::driftOf(const double *v, const double *f) const
{
    for (int k = 0; k < mDriftCount; ++k)
        mHalf[at(k)] = mRest[at(k)] = f[k] - dot(&mDrift[at(k) * at(size())], v, size());
    if (mDriftCount == 0)
        return;
    mDriftFactor.forward(mHalf.data());
    mDriftFactor.backward(mHalf.data());
}

Estimate KrigingSystem::predict(double *c, const double *f, double sill) const
{
    if (!mDetermined)
        return {kNone, kNone};
    mFactor.forward(c);
    driftOf(c, f);
    Estimate estimate;
    estimate.value =
        dot(c, mValues.data(), size()) + dot(mRest.data(), mCoefficients.data(), mDriftCount);
    const double variance = sill - dot(c, c, size()) + dot(mRest.data(), mHalf.data(), mDriftCount);
    estimate.variance = std::max(0.0, variance);
    return estimate;
}

double KrigingSystem::weights(double *c, const double *f, double sill) const
{
    mFactor.forward(c);
    driftOf(c, f);
    const double variance = sill - dot(c, c, size()) + dot(mRest.data(), mHalf.data(), mDriftCount);
    for (int k = 0; k < mDriftCount; ++k)
        for (int i = 0; i < size(); ++i)
            c[i] += mHalf[at(k)] * mDrift[at(k) * at(size()) + at(i)];
    mFactor.backward(c);
    return std::max(0.0, variance);
}

} // namespace meridor
