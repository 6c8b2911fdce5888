// SPDX-License-Identifier: MIT
// Wrappers of LAPACK. Each checks the sizes, makes a private copy that LAPACK may overwrite, and
// calls the routines in order.
#include "datainterface/MatrixAPI.h"
#include <algorithm>
#include <cmath>
#include <vector>
#include "Common/detail/failure.h"
#include "frame/progressSection.h"
#include "numerics/lapack.h"

using namespace datainterface;

namespace {

constexpr double kSmallestRatio = 1e-12; // of the smallest to the largest singular value

void requireSquare(const vorn_matrix &a)
{
    require(a.rows() == a.cols(), "Matrix must be square");
}

bool isFinite(const vorn_matrix &a)
{
    const std::size_t count =
        static_cast<std::size_t>(a.storedRows()) * static_cast<std::size_t>(a.storedCols());
    return std::all_of(a.data(), a.data() + count,
                       [](double value) { return std::isfinite(value); });
}

vorn_matrix reposed(const vorn_matrix &a)
{
    vorn_matrix copy(a);
    copy.repose();
    return copy;
}

// Calls a routine twice: to query the size of its workspace, and to do the work. @return INFO
template <class Routine> int withWorkspace(Routine routine)
{
    double size = 0.0;
    int info = routine(&size, -1);
    if (info != 0)
        return info;
    std::vector<double> work(static_cast<std::size_t>(std::max(size, 1.0)));
    return routine(work.data(), static_cast<int>(work.size()));
}

// The LU factors and pivots of a square matrix as it is stored, that is without applying its
// transposition flag.
struct Factors {
    explicit Factors(const vorn_matrix &a) : n(a.rows()), lu(a), pivots(static_cast<std::size_t>(n))
    {
        dgetrf_(&n, &n, lu.data(), &n, pivots.data(), &info);
    }
    int n;
    vorn_matrix lu;
    std::vector<int> pivots;
    int info = 0;
};

struct ErrorBounds {
    double *forward;
    double *backward;
};

// Solves for `count` right sides `b`, of which `x` holds a copy that is overwritten by the
// solution. With `bounds` the solution is refined and its error bounds are stored.
bool solve(const vorn_matrix &a, const double *b, double *x, int count, const ErrorBounds *bounds)
{
    if (!isFinite(a))
        return false;
    const Factors factors(a);
    if (factors.info != 0)
        return false;
    const int n = factors.n;
    const char *trans = a.transposed() ? "T" : "N";
    int info = 0;
    dgetrs_(trans, &n, &count, factors.lu.data(), &n, factors.pivots.data(), x, &n, &info, 1);
    if (info != 0 || !bounds)
        return info == 0;
    std::vector<double> work(3 * static_cast<std::size_t>(n));
    std::vector<int> integers(static_cast<std::size_t>(n));
    dgerfs_(trans, &n, &count, a.data(), &n, factors.lu.data(), &n, factors.pivots.data(), b, &n, x,
            &n, bounds->forward, bounds->backward, work.data(), integers.data(), &info, 1);
    return info == 0;
}

bool solveAll(const vorn_matrix &a, const vorn_matrix &b, vorn_matrix &x, const ErrorBounds *bounds)
{
    const vorn_matrix rightSides = reposed(b);
    vorn_matrix result(rightSides);
    const bool empty = result.rows() == 0 || result.cols() == 0;
    if (!empty && !solve(a, rightSides.data(), result.data(), result.cols(), bounds))
        return false;
    x = result;
    return true;
}

void checkSystem(const vorn_matrix &a, const vorn_matrix &b)
{
    requireSquare(a);
    require(a.rows() == b.rows(), "Matrix size mismatch");
}

// The order of the smallest leading minor that contains an infinity or a NaN; 0 when none does.
int firstMinorNotFinite(const vorn_matrix &a)
{
    for (int k = 0; k < a.rows(); ++k) {
        for (int i = 0; i <= k; ++i) {
            if (!std::isfinite(a(i, k)) || !std::isfinite(a(k, i)))
                return k + 1;
        }
    }
    return 0;
}

int cholesky(const vorn_matrix &a, const char *half, vorn_matrix &factor)
{
    requireSquare(a);
    vorn_matrix packed = reposed(a);
    const int n = packed.rows();
    // LAPACK tests only the signs of pivots, so it would accept an infinity or a NaN elsewhere.
    int info = firstMinorNotFinite(packed);
    if (info == 0 && n > 0)
        dpotrf_(half, &n, packed.data(), &n, &info, 1);
    if (info != 0)
        return info;
    const bool lower = *half == 'L';
    vorn_matrix result(n, n, 0.0);
    const vorn_matrix &from = packed;
    for (int c = 0; c < n; ++c) {
        for (int r = lower ? c : 0; r < (lower ? n : c + 1); ++r)
            result(r, c) = from(r, c);
    }
    factor = result;
    return 0;
}

} // namespace

bool VORN_InvertMatrix(const vorn_matrix &a, vorn_matrix &inverse)
{
    requireSquare(a);
    if (!isFinite(a))
        return false;
    const int n = a.rows();
    if (n == 0) {
        inverse = a;
        return true;
    }
    // The inverse of the transpose is the transpose of the inverse, so the flag is kept and no
    // element is moved.
    Factors factors(a);
    if (factors.info != 0)
        return false;
    const int info = withWorkspace([&](double *work, int size) {
        int result = 0;
        dgetri_(&n, factors.lu.data(), &n, factors.pivots.data(), work, &size, &result);
        return result;
    });
    inverse = factors.lu;
    return info == 0;
}

bool VORN_SolveMatrixEquation(const vorn_matrix &a, const vorn_vector &b, vorn_vector &x,
                              bool refine)
{
    requireSquare(a);
    require(a.rows() == b.size(), "Matrix-vector mismatch");
    if (b.size() == 1) {
        x = vorn_vector(1, b[0] / a(0, 0));
        return true;
    }
    const vorn_vector rightSide(b);
    x = rightSide;
    if (b.size() == 0)
        return true;
    double forward = 0.0;
    double backward = 0.0;
    const ErrorBounds bounds{&forward, &backward};
    return solve(a, rightSide.data(), x.data(), 1, refine ? &bounds : nullptr);
}

bool VORN_SolveMatrixEquations(const vorn_matrix &a, const vorn_matrix &b, vorn_matrix &x,
                               bool refine)
{
    checkSystem(a, b);
    if (!refine)
        return solveAll(a, b, x, nullptr);
    QVector<double> forwardErrors;
    QVector<double> backwardErrors;
    return VORN_SolveMatrixEquations(a, b, x, forwardErrors, backwardErrors);
}

bool VORN_SolveMatrixEquations(const vorn_matrix &a, const vorn_matrix &b, vorn_matrix &x,
                               QVector<double> &forwardErrors, QVector<double> &backwardErrors)
{
    checkSystem(a, b);
    forwardErrors.fill(0.0, b.cols());
    backwardErrors.fill(0.0, b.cols());
    const ErrorBounds bounds{forwardErrors.data(), backwardErrors.data()};
    return solveAll(a, b, x, &bounds);
}

bool VORN_SVD(const vorn_matrix &a, vorn_matrix &u, vorn_matrix &v, vorn_diagonal_matrix &s,
              bool showProgress)
{
    // The text states the opposite of the condition; it is part of the interface.
    require(a.rows() >= a.cols(), "SVD requires rows < columns");
    if (!isFinite(a))
        return false;
    vorn_matrix reduced = reposed(a);
    const int m = reduced.rows();
    const int n = reduced.cols();
    vorn_diagonal_matrix d(n);
    vorn_matrix right(n, n);
    if (n > 0) {
        const auto length = static_cast<std::size_t>(n);
        std::vector<double> e(length), tauQ(length), tauP(length);
        int info = withWorkspace([&](double *work, int size) {
            int result = 0;
            dgebrd_(&m, &n, reduced.data(), &m, d.data(), e.data(), tauQ.data(), tauP.data(), work,
                    &size, &result);
            return result;
        });
        if (info != 0)
            return false;
        for (int c = 0; c < n; ++c)
            std::copy_n(reduced.data() + static_cast<std::size_t>(c) * static_cast<std::size_t>(m),
                        n, right.data() + static_cast<std::size_t>(c) * length);
        info = withWorkspace([&](double *work, int size) {
            int result = 0;
            dorgbr_("Q", &m, &n, &n, reduced.data(), &m, tauQ.data(), work, &size, &result, 1);
            return result;
        });
        if (info != 0)
            return false;
        info = withWorkspace([&](double *work, int size) {
            int result = 0;
            dorgbr_("P", &n, &n, &m, right.data(), &n, tauP.data(), work, &size, &result, 1);
            return result;
        });
        if (info != 0)
            return false;
        std::vector<double> work(4 * length);
        const int none = 0;
        const int one = 1;
        dbdsqr_("U", &n, &n, &m, &none, d.data(), e.data(), right.data(), &n, reduced.data(), &m,
                nullptr, &one, work.data(), &info, 1);
        if (info != 0)
            return false;
    }
    if (showProgress && isCanceled())
        return false;
    u = reduced;
    v = right;
    s = d;
    return true;
}

bool VORN_IsWellConditioned(const vorn_matrix &a, bool showProgress)
{
    requireSquare(a);
    vorn_matrix u;
    vorn_matrix v;
    vorn_diagonal_matrix s;
    if (a.rows() == 0 || !VORN_SVD(a, u, v, s, showProgress))
        return false;
    const vorn_diagonal_matrix &values = s;
    return values[a.rows() - 1] / values[0] > kSmallestRatio;
}

bool VORN_Cholesky(const vorn_matrix &a, vorn_matrix &l)
{
    return cholesky(a, "L", l) == 0;
}

int VORN_Upper_Cholesky(const vorn_matrix &a, vorn_matrix &u)
{
    return cholesky(a, "U", u);
}

bool VORN_MatrixEigenvalues(const vorn_matrix &a, QVector<double> &real, QVector<double> &imaginary)
{
    requireSquare(a);
    if (!isFinite(a))
        return false;
    vorn_matrix hessenberg = reposed(a);
    const int n = hessenberg.rows();
    real.fill(0.0, n);
    imaginary.fill(0.0, n);
    if (n == 0)
        return true;
    std::vector<double> scale(static_cast<std::size_t>(n));
    std::vector<double> tau(static_cast<std::size_t>(n));
    int low = 0;
    int high = 0;
    int info = 0;
    dgebal_("B", &n, hessenberg.data(), &n, &low, &high, scale.data(), &info, 1);
    if (info != 0)
        return false;
    info = withWorkspace([&](double *work, int size) {
        int result = 0;
        dgehrd_(&n, &low, &high, hessenberg.data(), &n, tau.data(), work, &size, &result);
        return result;
    });
    if (info != 0)
        return false;
    const int one = 1;
    info = withWorkspace([&](double *work, int size) {
        int result = 0;
        dhseqr_("E", "N", &n, &low, &high, hessenberg.data(), &n, real.data(), imaginary.data(),
                nullptr, &one, work, &size, &result, 1, 1);
        return result;
    });
    return info == 0;
}
