// SPDX-License-Identifier: MIT
/// A dense matrix of doubles in the column-major order of BLAS and LAPACK. Copying and transposing
/// cost O(1).
#pragma once
#include <cstddef>
#include "datainterface/export.h"
#include "datainterface/sharedDataPtr.h"

/// Copies share their elements until one of them is written. Not for use on two threads, even with
/// separate copies.
class DATAINTERFACE_EXPORT vorn_matrix {
public:
    vorn_matrix() = default;
    /// Contents undefined. A negative size, and one whose element count overflows an int, raises
    /// "Inconsistent matrix size".
    vorn_matrix(int rows, int cols);
    vorn_matrix(int rows, int cols, double fill);

    /// The logical size.
    int rows() const { return mIsTransposed ? mColCount : mRowCount; }
    int cols() const { return mIsTransposed ? mRowCount : mColCount; }

    /// Whether the elements are stored transposed: element (r, c) is then at c + r * storedRows().
    bool transposed() const { return mIsTransposed; }
    /// Flips the flag; no element moves.
    void transpose() { mIsTransposed = !mIsTransposed; }
    /// Moves the elements into the column-major order of the logical matrix, unless they already
    /// are in that order.
    void repose();

    /// Raises "Matrix indices out of bounds" for an index below 0 or beyond the size.
    double operator()(int r, int c) const { return mData.data()[position(r, c)]; }
    double &operator()(int r, int c)
    {
        const std::size_t at = position(r, c);
        return mData.data()[at];
    }

    /// The elements in their stored order, for BLAS and LAPACK, with storedRows() as the leading
    /// dimension.
    const double *data() const { return mData.data(); }
    double *data() { return mData.data(); }
    int storedRows() const { return mRowCount; }
    int storedCols() const { return mColCount; }

    /// Same logical size and elements.
    bool operator==(const vorn_matrix &other) const;
    bool operator!=(const vorn_matrix &other) const { return !(*this == other); }

private:
    [[noreturn]] static void raiseOutOfBounds();
    std::size_t position(int r, int c) const
    {
        const auto row = static_cast<unsigned>(mIsTransposed ? c : r);
        const auto col = static_cast<unsigned>(mIsTransposed ? r : c);
        if (row >= static_cast<unsigned>(mRowCount) || col >= static_cast<unsigned>(mColCount))
            raiseOutOfBounds();
        return row + static_cast<std::size_t>(col) * static_cast<unsigned>(mRowCount);
    }

    sharedDataPtr<double> mData;
    int mRowCount = 0;
    int mColCount = 0;
    bool mIsTransposed = false;
};
