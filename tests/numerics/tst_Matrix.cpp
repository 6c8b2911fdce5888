// SPDX-License-Identifier: MIT
#include <cmath>
#include <limits>
#include <random>
#include "datainterface/MatrixAPI.h"
#include "support/checks.h"
#include "support/support.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNaN = std::nan("");

vorn_matrix matrix(int rows, int cols, std::initializer_list<double> rowByRow)
{
    vorn_matrix result(rows, cols);
    auto value = rowByRow.begin();
    for (int r = 0; r < rows; ++r) {
        for (int c = 0; c < cols; ++c)
            result(r, c) = *value++;
    }
    return result;
}

vorn_vector vector(std::initializer_list<double> values)
{
    vorn_vector result(static_cast<int>(values.size()));
    std::copy(values.begin(), values.end(), result.data());
    return result;
}

vorn_matrix randomMatrix(int rows, int cols, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    vorn_matrix result(rows, cols);
    std::generate_n(result.data(), rows * cols, [&] { return uniform(generator); });
    return result;
}

double at(const vorn_matrix &a, int r, int c)
{
    return a(r, c);
}

double largestDifference(const vorn_matrix &a, const vorn_matrix &b)
{
    if (a.rows() != b.rows() || a.cols() != b.cols())
        return kInfinity;
    double largest = 0.0;
    for (int r = 0; r < a.rows(); ++r) {
        for (int c = 0; c < a.cols(); ++c)
            largest = std::max(largest, std::fabs(at(a, r, c) - at(b, r, c)));
    }
    return largest;
}

vorn_matrix plainProduct(const vorn_matrix &a, const vorn_matrix &b)
{
    vorn_matrix result(a.rows(), b.cols(), 0.0);
    for (int r = 0; r < a.rows(); ++r) {
        for (int c = 0; c < b.cols(); ++c) {
            for (int k = 0; k < a.cols(); ++k)
                result(r, c) += at(a, r, k) * at(b, k, c);
        }
    }
    return result;
}

vorn_matrix asMatrix(const vorn_diagonal_matrix &d)
{
    vorn_matrix result(d.rows(), d.cols(), 0.0);
    for (int i = 0; i < d.rows(); ++i)
        result(i, i) = d[i];
    return result;
}

} // namespace

class TestMatrix : public QObject {
    Q_OBJECT
    void solve(const vorn_matrix &a)
    {
        const int n = a.rows();
        const vorn_matrix b = randomMatrix(n, 3, 7);
        for (const bool refine : {false, true}) {
            const InCase inRefine(refine);
            vorn_vector x;
            QVERIFY(VORN_SolveMatrixEquation(a, VORN_GetMatrixCol(b, 2), x, refine));
            vorn_matrix all;
            QVERIFY(VORN_SolveMatrixEquations(a, b, all, refine));
            QVERIFY(largestDifference(a * all, b) < 1e-11);
            for (int i = 0; i < n; ++i)
                QVERIFY(std::fabs(x[i] - at(all, i, 2)) < 1e-11);
        }
        vorn_matrix x;
        QVector<double> forward, backward;
        QVERIFY(VORN_SolveMatrixEquations(a, b, x, forward, backward));
        QCOMPARE(forward.size(), 3);
        for (int i = 0; i < 3; ++i)
            QCOMPARE(answers({backward[i]<1e-14, forward[i]> backward[i], forward[i] < 1e-8}),
                     "yyy");
        vorn_matrix inverse;
        QVERIFY(VORN_InvertMatrix(a, inverse));
        QVERIFY(largestDifference(inverse * a, asMatrix(vorn_diagonal_matrix(n, 1.0))) < 1e-11);
    }

private Q_SLOTS:
    void copiesShareUntilOneIsWritten()
    {
        vorn_matrix a = matrix(2, 2, {1, 2, 3, 4});
        const vorn_matrix copy(a);
        QCOMPARE(static_cast<const vorn_matrix &>(a).data(), copy.data());
        a(0, 0) = 9;
        QCOMPARE(at(copy, 0, 0), 1.0);
        QCOMPARE(at(a, 0, 0), 9.0);
        vorn_vector v = vector({1, 2});
        const vorn_vector w(v);
        v[0] = 5;
        QCOMPARE(w[0], 1.0);

        auto *foreign = new double[2]{1, 2};
        sharedDataPtr<double> adopted(foreign, 2);
        sharedDataPtr<double> shared(adopted);
        shared[1] = 7;
        QCOMPARE(std::as_const(adopted)[1], 2.0);
        QCOMPARE(std::as_const(adopted).data(), static_cast<const double *>(foreign));
    }

    void transposingMovesNothing()
    {
        const vorn_matrix a = randomMatrix(70, 45, 1);
        vorn_matrix t = ~a;
        QCOMPARE(std::as_const(t).data(), a.data());
        QCOMPARE(t.rows(), 45);
        QCOMPARE(at(t, 3, 60), at(a, 60, 3));
        t.repose();
        QVERIFY(!t.transposed());
        QVERIFY(t == ~a);
        QVERIFY(!(t == a));
        const double *before = std::as_const(t).data();
        t.repose();
        QCOMPARE(std::as_const(t).data(), before);
        t(44, 69) = 5;
        QVERIFY(t != ~a);
    }

    void productsEqualThePlainSum()
    {
        const vorn_matrix a = randomMatrix(5, 7, 2);
        const vorn_matrix b = randomMatrix(7, 3, 3);
        const vorn_matrix at = ~a;
        const vorn_matrix bt = ~b;
        vorn_matrix aReposed(at);
        aReposed.repose();
        vorn_matrix bReposed(bt);
        bReposed.repose();
        const vorn_matrix expected = plainProduct(a, b);
        QVERIFY(largestDifference(a * b, expected) < 1e-14);
        QVERIFY(largestDifference(~aReposed * b, expected) < 1e-14);
        QVERIFY(largestDifference(a * ~bReposed, expected) < 1e-14);
        QVERIFY(largestDifference(~aReposed * ~bReposed, expected) < 1e-14);

        const vorn_vector x = VORN_GetMatrixCol(b, 1);
        const vorn_vector y = VORN_GetMatrixCol(expected, 1);
        const vorn_vector results[] = {a * x, ~aReposed * x, x * at};
        for (const vorn_vector &result : results) {
            for (int i = 0; i < y.size(); ++i)
                QVERIFY(std::fabs(result[i] - y[i]) < 1e-14);
        }
        QVERIFY(largestDifference(a + ~aReposed, a * 2.0) < 1e-15);
        QVERIFY(largestDifference(aReposed - ~a, vorn_matrix(7, 5, 0.0)) < 1e-15);
        QVERIFY(largestDifference(0.5 * (at + at), aReposed) < 1e-15);
    }

    void diagonalsActAsFullMatrices()
    {
        vorn_diagonal_matrix d(3);
        for (int i = 0; i < 3; ++i)
            d[i] = i + 2;
        const vorn_matrix full = asMatrix(d);
        const vorn_matrix a = randomMatrix(3, 4, 4);
        const vorn_matrix square = randomMatrix(3, 3, 5);
        QVERIFY(largestDifference(d * a, full * a) < 1e-14);
        QVERIFY(largestDifference(~a * d, ~a * full) < 1e-14);
        QVERIFY(largestDifference(d * ~square, full * ~square) < 1e-14);
        QVERIFY(largestDifference(asMatrix(d * d), full * full) < 1e-14);
        QVERIFY(largestDifference(square - d, square - full) < 1e-14);
        QVERIFY(largestDifference(d - ~square, full - ~square) < 1e-14);
        const vorn_vector x = vector({1, 10, 100});
        QVERIFY(d * x == full * x);
        QVERIFY(x * d == full * x);
        vorn_diagonal_matrix identity;
        QVERIFY(VORN_GetIdentityMatrix(3, identity));
        QVERIFY(identity * square == square);
        QVERIFY(!VORN_GetIdentityMatrix(-1, identity));
    }

    void sizesThatDoNotFitRaise()
    {
        const vorn_matrix a(2, 3, 1.0);
        const vorn_matrix square(3, 3, 1.0);
        const vorn_diagonal_matrix d(2);
        const vorn_vector v(2);
        vorn_matrix u, w, copy(a);
        vorn_diagonal_matrix s;
        vorn_vector x;
        double trace = 0;
        QVector<double> values;
        const auto raises = [](const char *text, auto... calls) {
            for (const QString &raised : {raisedText(calls)...})
                QCOMPARE(raised, text);
        };
        raises(
            "Inconsistent matrix size", [&] { a *a; }, [&] { d *vorn_diagonal_matrix(3); },
            [&] { d *square; }, [&] { a *d; }, [&] { a + square; }, [&] { a - ~a; }, [&] { a - d; },
            [&] { d - square; }, [&] { vorn_matrix(65536, 65536); }, [&] { vorn_matrix(-1, 2); });
        raises(
            "Matrix size mismatch", [&] { a *v; }, [&] { vorn_vector(3) * a; },
            [&] { d *vorn_vector(3); }, [&] { VORN_GetMatrixCol(a, 3); },
            [&] { VORN_GetMatrixTrace(copy, trace); },
            [&] { VORN_SolveMatrixEquations(square, a, u, false); });
        raises("Matrix-vector mismatch", [&] { VORN_SolveMatrixEquation(square, v, x, false); });
        raises("Inconsistent vector size", [&] { v + vorn_vector(3); });
        raises("Invalid row index", [&] { VORN_GetMatrixRow(a, 2); });
        raises(
            "Matrix indices out of bounds", [&] { at(a, 2, 0); }, [&] { at(a, 0, -1); },
            [&] { at(~a, 0, 2); });
        raises(
            "Matrix must be square", [&] { VORN_InvertMatrix(a, u); },
            [&] { VORN_IsWellConditioned(a, false); }, [&] { VORN_Cholesky(a, u); },
            [&] { VORN_MatrixEigenvalues(a, values, values); });
        raises("SVD requires rows < columns", [&] { VORN_SVD(a, u, w, s, false); });
    }

    void emptyMatricesPassThroughEverything()
    {
        const vorn_matrix none(0, 0);
        vorn_matrix result;
        QVERIFY(VORN_InvertMatrix(none, result));
        QVERIFY(VORN_Cholesky(none, result));
        QVERIFY(!VORN_IsWellConditioned(none, false));
        QVector<double> real, imaginary;
        QVERIFY(VORN_MatrixEigenvalues(none, real, imaginary));
        QVERIFY(real.isEmpty());
        vorn_vector x;
        QVERIFY(VORN_SolveMatrixEquation(none, vorn_vector(0), x, true));
        const vorn_matrix product = vorn_matrix(2, 0) * vorn_matrix(0, 3);
        QVERIFY(product == vorn_matrix(2, 3, 0.0));
        QCOMPARE((vorn_matrix(2, 0) * vorn_vector(0)).size(), 2);
        vorn_matrix u, v;
        vorn_diagonal_matrix s;
        QVERIFY(VORN_SVD(vorn_matrix(3, 0), u, v, s, false));
    }

    void rowsAndColumnsComeAndGo()
    {
        vorn_matrix a = matrix(2, 3, {1, 2, 3, 4, 5, 6});
        a.transpose(); // 1 4 / 2 5 / 3 6
        QVERIFY(VORN_GetMatrixRow(a, 1) == vector({2, 5}));
        QVERIFY(VORN_GetMatrixCol(a, 1) == vector({4, 5, 6}));
        QVERIFY(VORN_SetMatrixRow(a, 2, vector({7, 8})));
        QVERIFY(VORN_SetMatrixCol(a, 0, vector({9, 9, 9})));
        QVERIFY(a == matrix(3, 2, {9, 4, 9, 5, 9, 8}));
        QVERIFY(!VORN_SetMatrixRow(a, 3, vector({1, 2})));
        QVERIFY(!VORN_SetMatrixCol(a, 0, vector({1, 2})));
        QVERIFY(VORN_RemoveMatrixRow(a, 1));
        QVERIFY(a == matrix(2, 2, {9, 4, 9, 8}));
        double trace = 0;
        VORN_GetMatrixTrace(a, trace);
        QCOMPARE(trace, 17.0);
        QVERIFY(VORN_RemoveMatrixCol(a, 0));
        QVERIFY(a == matrix(2, 1, {4, 8}));
        QVERIFY(!a.transposed());
        QVERIFY(!VORN_RemoveMatrixCol(a, 1));
        QVERIFY(!VORN_RemoveMatrixRow(a, -1));
    }

    void vectorsKeepTheirElements()
    {
        vorn_vector v = vector({1, 2, 3});
        v.resize(5);
        QVERIFY(v == vector({1, 2, 3, 0, 0}));
        v.remove(1);
        QVERIFY(v == vector({1, 3, 0, 0}));
        v.resize(2);
        QCOMPARE(v.sum(), 4.0);
        QVERIFY(v / v == vector({1, 1}));
        QCOMPARE(raisedText([&] { v.remove(2); }), QString("Inconsistent vector size"));
    }

    void solutionsSatisfyTheirSystem()
    {
        constexpr int n = 60;
        const vorn_matrix asItLies = randomMatrix(n, n, 6);
        solve(asItLies);
        solve(~asItLies);
        vorn_vector x;
        QVERIFY(VORN_SolveMatrixEquation(matrix(1, 1, {2}), vector({6}), x, true));
        QCOMPARE(x[0], 3.0);
        QVERIFY(VORN_SolveMatrixEquation(matrix(1, 1, {0}), vector({6}), x, false));
        QCOMPARE(x[0], kInfinity); // one equation is a division
    }

    void factorsMultiplyToTheirMatrix()
    {
        const vorn_matrix tall = randomMatrix(9, 6, 8);
        vorn_matrix u, v;
        vorn_diagonal_matrix s;
        QVERIFY(VORN_SVD(tall, u, v, s, true)); // without a bar nobody can cancel
        QVERIFY(largestDifference(u * s * v, tall) < 1e-13);
        QVERIFY(largestDifference(~u * u, asMatrix(vorn_diagonal_matrix(6, 1.0))) < 1e-13);
        const vorn_diagonal_matrix &values = s;
        for (int i = 1; i < 6; ++i)
            QVERIFY(values[i - 1] >= values[i]);
        vorn_matrix wide(tall);
        wide.transpose();
        wide.repose();
        wide.transpose(); // tall again, but lying transposed
        QVERIFY(VORN_SVD(wide, u, v, s, false));
        QVERIFY(largestDifference(u * s * v, tall) < 1e-13);

        const vorn_matrix positive = ~tall * tall;
        vorn_matrix l;
        QVERIFY(VORN_Cholesky(positive, l));
        QVERIFY(largestDifference(l * ~l, positive) < 1e-13);
        QCOMPARE(at(l, 0, 5), 0.0);
        QCOMPARE(VORN_Upper_Cholesky(positive, u), 0);
        QVERIFY(largestDifference(~u * u, positive) < 1e-13);
        QCOMPARE(at(u, 5, 0), 0.0);
        QVERIFY(VORN_IsWellConditioned(positive, false));
    }

    void eigenvaluesOfKnownMatrices()
    {
        QVector<double> real, imaginary;
        QVERIFY(VORN_MatrixEigenvalues(matrix(2, 2, {0, -1, 1, 0}), real,
                                       imaginary)); // a quarter turn: i and -i
        QCOMPARE(
            answers({std::fabs(real[0]) < 1e-15, std::fabs(std::fabs(imaginary[0]) - 1.0) < 1e-15}),
            "yy");
        QCOMPARE(imaginary[0], -imaginary[1]);
        // The companion matrix of (x - 1)(x - 2)(x - 3).
        QVERIFY(
            VORN_MatrixEigenvalues(matrix(3, 3, {6, -11, 6, 1, 0, 0, 0, 1, 0}), real, imaginary));
        std::sort(real.begin(), real.end());
        for (int i = 0; i < 3; ++i)
            QVERIFY(std::fabs(real[i] - (i + 1)) < 1e-12);
    }

    void hopelessNumbersGiveFalse()
    {
        const vorn_matrix hopeless[] = {matrix(2, 2, {1, 2, 2, 4}), vorn_matrix(3, 3, 0.0),
                                        matrix(2, 2, {1, kNaN, 2, 4}),
                                        matrix(2, 2, {kInfinity, 0, 0, 1})};
        vorn_matrix result;
        vorn_vector x;
        for (const vorn_matrix &a : hopeless) {
            QVERIFY(!VORN_InvertMatrix(a, result));
            QVERIFY(!VORN_SolveMatrixEquation(a, vorn_vector(a.rows(), 1.0), x, false));
            QVERIFY(!VORN_SolveMatrixEquations(a, a, result, true));
            QVERIFY(!VORN_IsWellConditioned(a, false));
            QVERIFY(!VORN_Cholesky(a - vorn_diagonal_matrix(a.rows(), 1.0), result));
        }
        for (const double bad : {kNaN, kInfinity, -kInfinity}) {
            for (const QPoint &place : {QPoint(0, 0), QPoint(2, 2), QPoint(1, 2), QPoint(2, 1)}) {
                vorn_matrix a = asMatrix(vorn_diagonal_matrix(3, 4.0));
                QVERIFY(VORN_Cholesky(a, result));
                a(place.x(), place.y()) = bad;
                QVERIFY(!VORN_Cholesky(a, result));
                QCOMPARE(VORN_Upper_Cholesky(a, result), std::max(place.x(), place.y()) + 1);
            }
        }
        QCOMPARE(VORN_Upper_Cholesky(matrix(2, 2, {1, 0, 0, -1}), result), 2);
    }
};

QTEST_GUILESS_MAIN(TestMatrix)
#include "tst_Matrix.moc"
