// SPDX-License-Identifier: MIT
/// A diagonal matrix, of which only the diagonal is stored.
#pragma once
#include "datainterface/export.h"
#include "datainterface/sharedDataPtr.h"

/// Copies share their elements until one of them is written, as those of vorn_matrix do.
class DATAINTERFACE_EXPORT vorn_diagonal_matrix {
public:
    vorn_diagonal_matrix() = default;
    /// Zeros. A negative size raises "Inconsistent matrix size".
    explicit vorn_diagonal_matrix(int n);
    vorn_diagonal_matrix(int n, double value);

    int rows() const { return mData.count(); }
    int cols() const { return mData.count(); }
    /// The i-th diagonal element. The index is not checked.
    double operator[](int i) const { return mData[i]; }
    double &operator[](int i) { return mData[i]; }
    /// The diagonal.
    const double *data() const { return mData.data(); }
    double *data() { return mData.data(); }
    bool operator==(const vorn_diagonal_matrix &other) const { return mData == other.mData; }
    bool operator!=(const vorn_diagonal_matrix &other) const { return !(*this == other); }

private:
    sharedDataPtr<double> mData;
};
