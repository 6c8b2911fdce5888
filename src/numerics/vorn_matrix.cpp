// SPDX-License-Identifier: MIT
#include "datainterface/vorn_matrix.h"
#include <limits>
#include "Common/detail/failure.h"

using datainterface::require;

namespace {

constexpr int kAlignment = 16;

int elementCount(int rows, int cols)
{
    require(rows >= 0 && cols >= 0 && (cols == 0 || rows <= std::numeric_limits<int>::max() / cols),
            "Inconsistent matrix size");
    return rows * cols;
}

} // namespace

vorn_matrix::vorn_matrix(int rows, int cols)
    : mData(elementCount(rows, cols), kAlignment), mRowCount(rows), mColCount(cols)
{
}

vorn_matrix::vorn_matrix(int rows, int cols, double fill)
    : mData(elementCount(rows, cols), fill, kAlignment), mRowCount(rows), mColCount(cols)
{
}

void vorn_matrix::repose()
{
    if (!mIsTransposed)
        return;
    // Square tiles keep the rows that are read and the columns that are written in the cache.
    constexpr int kTile = 32;
    vorn_matrix moved(mColCount, mRowCount);
    const double *from = mData.data();
    double *to = moved.mData.data();
    const auto rows = static_cast<std::size_t>(mRowCount);
    const auto cols = static_cast<std::size_t>(mColCount);
    for (std::size_t colTile = 0; colTile < cols; colTile += kTile) {
        const std::size_t colEnd = std::min(colTile + kTile, cols);
        for (std::size_t rowTile = 0; rowTile < rows; rowTile += kTile) {
            const std::size_t rowEnd = std::min(rowTile + kTile, rows);
            for (std::size_t c = colTile; c < colEnd; ++c) {
                for (std::size_t r = rowTile; r < rowEnd; ++r)
                    to[c + r * cols] = from[r + c * rows];
            }
        }
    }
    *this = moved;
}

bool vorn_matrix::operator==(const vorn_matrix &other) const
{
    if (rows() != other.rows() || cols() != other.cols())
        return false;
    if (mIsTransposed == other.mIsTransposed)
        return mData == other.mData;
    for (int c = 0; c < cols(); ++c) {
        for (int r = 0; r < rows(); ++r) {
            if ((*this)(r, c) != other(r, c))
                return false;
        }
    }
    return true;
}

void vorn_matrix::raiseOutOfBounds()
{
    datainterface::fail("Matrix indices out of bounds");
}
