// SPDX-License-Identifier: MIT
#include "datainterface/vorn_vector.h"
#include <numeric>
#include "Common/detail/failure.h"
#include "datainterface/vorn_diagonal_matrix.h"

using datainterface::require;

namespace {

constexpr int kAlignment = 16;

int checkedSize(int n, const char *text)
{
    require(n >= 0, text);
    return n;
}

} // namespace

vorn_vector::vorn_vector(int n) : vorn_vector(n, 0.0)
{
}

vorn_vector::vorn_vector(int n, double fill)
    : mData(checkedSize(n, "Inconsistent vector size"), fill, kAlignment)
{
}

void vorn_vector::resize(int n)
{
    if (n == size())
        return;
    vorn_vector resized(n);
    std::copy_n(data(), std::min(n, size()), resized.mData.data());
    *this = resized;
}

void vorn_vector::remove(int index)
{
    require(index >= 0 && index < size(), "Inconsistent vector size");
    vorn_vector shorter(size() - 1);
    const double *from = std::as_const(mData).data();
    std::copy_n(from, index, shorter.mData.data());
    std::copy(from + index + 1, from + size(), shorter.mData.data() + index);
    *this = shorter;
}

double vorn_vector::sum() const
{
    return std::accumulate(data(), data() + size(), 0.0);
}

vorn_diagonal_matrix::vorn_diagonal_matrix(int n) : vorn_diagonal_matrix(n, 0.0)
{
}

vorn_diagonal_matrix::vorn_diagonal_matrix(int n, double value)
    : mData(checkedSize(n, "Inconsistent matrix size"), value, kAlignment)
{
}
