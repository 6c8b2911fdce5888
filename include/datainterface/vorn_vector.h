// SPDX-License-Identifier: MIT
/// A vector of doubles with the value semantics of vorn_matrix.
#pragma once
#include "datainterface/export.h"
#include "datainterface/sharedDataPtr.h"

/// Copies share their elements until one of them is written.
class DATAINTERFACE_EXPORT vorn_vector {
public:
    vorn_vector() = default;
    /// Zeros. A negative size raises "Inconsistent vector size".
    explicit vorn_vector(int n);
    vorn_vector(int n, double fill);

    int size() const { return mData.count(); }
    /// The index is not checked.
    double operator[](int i) const { return mData[i]; }
    double &operator[](int i) { return mData[i]; }
    /// The elements in order.
    const double *data() const { return mData.data(); }
    double *data() { return mData.data(); }

    /// Keeps the leading elements; new elements are zero.
    void resize(int n);
    /// Removes one element; the elements after it move forward. Raises "Inconsistent vector size"
    /// for an index out of range.
    void remove(int index);
    double sum() const;
    bool operator==(const vorn_vector &other) const { return mData == other.mData; }
    bool operator!=(const vorn_vector &other) const { return !(*this == other); }

private:
    sharedDataPtr<double> mData;
};
