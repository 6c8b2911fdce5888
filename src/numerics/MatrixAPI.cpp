// SPDX-License-Identifier: MIT
#include "datainterface/MatrixAPI.h"
#include <functional>
#include <utility>
#include "Common/detail/failure.h"
#include "numerics/lapack.h"

using namespace datainterface;

namespace {

constexpr const char *kMatrixSize = "Inconsistent matrix size";
constexpr const char *kSizeMismatch = "Matrix size mismatch";
constexpr const char *kVectorSize = "Inconsistent vector size";

int transFlag(const vorn_matrix &a)
{
    return a.transposed() ? kCblasTrans : kCblasNoTrans;
}

template <class Operation>
vorn_matrix combine(const vorn_matrix &a, const vorn_matrix &b, Operation operation)
{
    require(a.rows() == b.rows() && a.cols() == b.cols(), kMatrixSize);
    if (a.transposed() != b.transposed()) {
        vorn_matrix reposed(b.transposed() ? b : a);
        reposed.repose();
        return b.transposed() ? combine(a, reposed, operation) : combine(reposed, b, operation);
    }
    vorn_matrix result(a.storedRows(), a.storedCols());
    const std::size_t count =
        static_cast<std::size_t>(a.storedRows()) * static_cast<std::size_t>(a.storedCols());
    std::transform(a.data(), a.data() + count, b.data(), result.data(), operation);
    if (a.transposed())
        result.transpose();
    return result;
}

template <class Operation>
vorn_vector combine(const double *a, int sizeA, const double *b, int sizeB, const char *text,
                    Operation operation)
{
    require(sizeA == sizeB, text);
    vorn_vector result(sizeA);
    std::transform(a, a + sizeA, b, result.data(), operation);
    return result;
}

template <class Operation>
vorn_vector combine(const vorn_vector &a, const vorn_vector &b, Operation operation)
{
    return combine(a.data(), a.size(), b.data(), b.size(), kVectorSize, operation);
}

// Multiplies each row (`logicalRows`) or each column of `a` by its factor. A transposed matrix is
// stored by its columns as rows, so the choice is reversed for it.
vorn_matrix scale(const vorn_matrix &a, const vorn_diagonal_matrix &factors, bool logicalRows)
{
    vorn_matrix result(a);
    double *element = result.data();
    const bool byStoredRow = logicalRows != a.transposed();
    for (int c = 0; c < a.storedCols(); ++c) {
        for (int r = 0; r < a.storedRows(); ++r)
            *element++ *= factors[byStoredRow ? r : c];
    }
    return result;
}

// A copy without row `row` and column `col`; an index after the last one removes nothing.
vorn_matrix without(const vorn_matrix &a, int row, int col)
{
    vorn_matrix result(a.rows() - (row < a.rows()), a.cols() - (col < a.cols()));
    for (int c = 0; c < result.cols(); ++c) {
        for (int r = 0; r < result.rows(); ++r)
            result(r, c) = a(r < row ? r : r + 1, c < col ? c : c + 1);
    }
    return result;
}

} // namespace

vorn_matrix operator~(const vorn_matrix &a)
{
    vorn_matrix result(a);
    result.transpose();
    return result;
}

vorn_matrix operator*(const vorn_matrix &a, const vorn_matrix &b)
{
    require(a.cols() == b.rows(), kMatrixSize);
    if (a.cols() == 0)
        return vorn_matrix(a.rows(), b.cols(), 0.0);
    vorn_matrix result(a.rows(), b.cols());
    if (a.rows() > 0 && b.cols() > 0) {
        cblas_dgemm(kCblasColMajor, transFlag(a), transFlag(b), a.rows(), b.cols(), a.cols(), 1.0,
                    a.data(), a.storedRows(), b.data(), b.storedRows(), 0.0, result.data(),
                    a.rows());
    }
    return result;
}

vorn_diagonal_matrix operator*(const vorn_diagonal_matrix &a, const vorn_diagonal_matrix &b)
{
    require(a.cols() == b.cols(), kMatrixSize);
    vorn_diagonal_matrix result(a);
    std::transform(a.data(), a.data() + a.cols(), b.data(), result.data(), std::multiplies<>());
    return result;
}

vorn_matrix operator*(const vorn_diagonal_matrix &a, const vorn_matrix &b)
{
    require(a.cols() == b.rows(), kMatrixSize);
    return scale(b, a, true);
}

vorn_matrix operator*(const vorn_matrix &a, const vorn_diagonal_matrix &b)
{
    require(a.cols() == b.cols(), kMatrixSize);
    return scale(a, b, false);
}

vorn_vector operator*(const vorn_matrix &a, const vorn_vector &x)
{
    require(a.cols() == x.size(), kSizeMismatch);
    vorn_vector result(a.rows());
    if (a.rows() > 0 && a.cols() > 0) {
        cblas_dgemv(kCblasColMajor, transFlag(a), a.storedRows(), a.storedCols(), 1.0, a.data(),
                    a.storedRows(), x.data(), 1, 0.0, result.data(), 1);
    }
    return result;
}

vorn_vector operator*(const vorn_vector &x, const vorn_matrix &a)
{
    return ~a * x;
}

vorn_vector operator*(const vorn_diagonal_matrix &a, const vorn_vector &x)
{
    return combine(a.data(), a.cols(), x.data(), x.size(), kSizeMismatch, std::multiplies<>());
}

vorn_vector operator*(const vorn_vector &x, const vorn_diagonal_matrix &a)
{
    return a * x;
}

vorn_matrix operator*(const vorn_matrix &a, double factor)
{
    vorn_matrix result(a);
    if (a.rows() > 0 && a.cols() > 0)
        cblas_dscal(a.storedRows() * a.storedCols(), factor, result.data(), 1);
    return result;
}

vorn_matrix operator*(double factor, const vorn_matrix &a)
{
    return a * factor;
}

vorn_matrix operator+(const vorn_matrix &a, const vorn_matrix &b)
{
    return combine(a, b, std::plus<>());
}

vorn_matrix operator-(const vorn_matrix &a, const vorn_matrix &b)
{
    return combine(a, b, std::minus<>());
}

vorn_matrix operator-(const vorn_matrix &a, const vorn_diagonal_matrix &b)
{
    require(a.rows() == b.cols() && a.cols() == b.cols(), kMatrixSize);
    vorn_matrix result(a);
    for (int i = 0; i < b.cols(); ++i)
        result(i, i) -= b[i];
    return result;
}

vorn_matrix operator-(const vorn_diagonal_matrix &a, const vorn_matrix &b)
{
    require(a.cols() == b.rows() && a.cols() == b.cols(), kMatrixSize);
    vorn_matrix result = b * -1.0;
    for (int i = 0; i < a.cols(); ++i)
        result(i, i) += a[i];
    return result;
}

vorn_vector operator*(const vorn_vector &a, const vorn_vector &b)
{
    return combine(a, b, std::multiplies<>());
}

vorn_vector operator/(const vorn_vector &a, const vorn_vector &b)
{
    return combine(a, b, std::divides<>());
}

vorn_vector operator+(const vorn_vector &a, const vorn_vector &b)
{
    return combine(a, b, std::plus<>());
}

vorn_vector operator-(const vorn_vector &a, const vorn_vector &b)
{
    return combine(a, b, std::minus<>());
}

bool VORN_GetIdentityMatrix(int n, vorn_diagonal_matrix &identity)
{
    try {
        identity = vorn_diagonal_matrix(n, 1.0);
        return true;
    } catch (...) {
        return false;
    }
}

vorn_vector VORN_GetMatrixRow(const vorn_matrix &a, int row)
{
    require(row >= 0 && row < a.rows(), "Invalid row index");
    vorn_vector result(a.cols());
    for (int c = 0; c < a.cols(); ++c)
        result[c] = a(row, c);
    return result;
}

vorn_vector VORN_GetMatrixCol(const vorn_matrix &a, int col)
{
    require(col >= 0 && col < a.cols(), kSizeMismatch);
    return VORN_GetMatrixRow(~a, col);
}

bool VORN_SetMatrixRow(vorn_matrix &a, int row, const vorn_vector &values)
{
    if (row < 0 || row >= a.rows() || values.size() != a.cols())
        return false;
    for (int c = 0; c < a.cols(); ++c)
        a(row, c) = values[c];
    return true;
}

bool VORN_SetMatrixCol(vorn_matrix &a, int col, const vorn_vector &values)
{
    a.transpose();
    const bool fits = VORN_SetMatrixRow(a, col, values);
    a.transpose();
    return fits;
}

bool VORN_RemoveMatrixRow(vorn_matrix &a, int row)
{
    if (row < 0 || row >= a.rows())
        return false;
    a = without(a, row, a.cols());
    return true;
}

bool VORN_RemoveMatrixCol(vorn_matrix &a, int col)
{
    if (col < 0 || col >= a.cols())
        return false;
    a = without(a, a.rows(), col);
    return true;
}

void VORN_GetMatrixTrace(vorn_matrix &a, double &trace)
{
    require(a.rows() == a.cols(), kSizeMismatch);
    trace = 0.0;
    for (int i = 0; i < a.rows(); ++i)
        trace += std::as_const(a)(i, i);
}
