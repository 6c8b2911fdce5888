// SPDX-License-Identifier: MIT
// What does the numeric toolkit cost over the routines that it calls, and how do its random
// sequences compare with those of the standard library?
#include <QSet>
#include <algorithm>
#include <numeric>
#include <random>
#include "datainterface/MatrixAPI.h"
#include "datainterface/StatisticsAPI.h"
#include "datainterface/randomizationIt.h"
#include "numerics/deviates.h"
#include "numerics/lapack.h"
#include "ratios.h"

using namespace datainterface;
using benchmark::DoNotOptimize;
using ratios::Pair;
using ratios::repeat;

namespace {

vorn_matrix randomMatrix(int rows, int cols, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(-1.0, 1.0);
    vorn_matrix result(rows, cols);
    std::generate_n(result.data(), rows * cols, [&] { return uniform(generator); });
    return result;
}

std::vector<double> elements(const vorn_matrix &a)
{
    return std::vector<double>(a.data(), a.data() + a.storedRows() * a.storedCols());
}

void addProducts(std::vector<Pair> &table)
{
    for (const int n : {4, 200, 500}) {
        for (const bool transposed : {false, true}) {
            vorn_matrix a = randomMatrix(n, n, 1);
            const vorn_matrix b = randomMatrix(n, n, 2);
            const std::vector<double> plainA = elements(a);
            const std::vector<double> plainB = elements(b);
            if (transposed)
                a.transpose();
            const int flag = transposed ? kCblasTrans : kCblasNoTrans;
            const std::string name =
                "product " + std::to_string(n) + (transposed ? ", transposed" : "");
            table.push_back({name, "cblas_dgemm", n == 4 ? 1.5 : 1.01,
                             repeat([a, b] { DoNotOptimize(a * b); }), repeat([=] {
                                 std::vector<double> c(plainA.size());
                                 cblas_dgemm(kCblasColMajor, flag, kCblasNoTrans, n, n, n, 1.0,
                                             plainA.data(), n, plainB.data(), n, 0.0, c.data(), n);
                                 DoNotOptimize(c.data());
                             })});
            if (n == 4)
                continue;
            const vorn_vector x(n, 1.5);
            table.push_back(
                {"times vector " + std::to_string(n) + (transposed ? ", transposed" : ""),
                 "cblas_dgemv", 1.01, repeat([a, x] { DoNotOptimize(a * x); }), repeat([=] {
                     std::vector<double> y(static_cast<std::size_t>(n));
                     cblas_dgemv(kCblasColMajor, flag, n, n, 1.0, plainA.data(), n, x.data(), 1,
                                 0.0, y.data(), 1);
                     DoNotOptimize(y.data());
                 })});
        }
    }
}

void addSolvers(std::vector<Pair> &table)
{
    static constexpr int n = 1000;
    const vorn_matrix a = randomMatrix(n, n, 3);
    const std::vector<double> plain = elements(a);
    table.push_back({"inverse 1000", "DGETRF, DGETRI", 1.02, repeat([a] {
                         vorn_matrix inverse;
                         DoNotOptimize(VORN_InvertMatrix(a, inverse));
                     }),
                     repeat([plain] {
                         std::vector<double> lu(plain);
                         std::vector<int> pivots(n);
                         int info = 0, size = -1;
                         double wanted = 0;
                         dgetrf_(&n, &n, lu.data(), &n, pivots.data(), &info);
                         dgetri_(&n, lu.data(), &n, pivots.data(), &wanted, &size, &info);
                         size = int(wanted);
                         std::vector<double> work(static_cast<std::size_t>(size));
                         dgetri_(&n, lu.data(), &n, pivots.data(), work.data(), &size, &info);
                         DoNotOptimize(lu.data());
                     })});
    const vorn_vector b(n, 1.0);
    table.push_back({"solve 1000", "DGETRF, DGETRS", 1.02, repeat([a, b] {
                         vorn_vector x;
                         DoNotOptimize(VORN_SolveMatrixEquation(a, b, x, false));
                     }),
                     repeat([plain] {
                         std::vector<double> lu(plain), x(n, 1.0);
                         std::vector<int> pivots(n);
                         int info = 0;
                         const int one = 1;
                         dgetrf_(&n, &n, lu.data(), &n, pivots.data(), &info);
                         dgetrs_("N", &n, &one, lu.data(), &n, pivots.data(), x.data(), &n, &info,
                                 1);
                         DoNotOptimize(x.data());
                     })});
}

void plainSvd(const std::vector<double> &plain, int n)
{
    const auto length = static_cast<std::size_t>(n);
    std::vector<double> u(plain), v, d(length), e(length), tauQ(length), tauP(length), work(1);
    int info = 0, size = -1;
    const int none = 0, one = 1;
    const auto grown = [&] {
        size = int(work[0]);
        work.resize(static_cast<std::size_t>(size));
    };
    dgebrd_(&n, &n, u.data(), &n, d.data(), e.data(), tauQ.data(), tauP.data(), work.data(), &size,
            &info);
    grown();
    dgebrd_(&n, &n, u.data(), &n, d.data(), e.data(), tauQ.data(), tauP.data(), work.data(), &size,
            &info);
    v = u;
    size = -1;
    dorgbr_("Q", &n, &n, &n, u.data(), &n, tauQ.data(), work.data(), &size, &info, 1);
    grown();
    dorgbr_("Q", &n, &n, &n, u.data(), &n, tauQ.data(), work.data(), &size, &info, 1);
    dorgbr_("P", &n, &n, &n, v.data(), &n, tauP.data(), work.data(), &size, &info, 1);
    work.resize(std::max<std::size_t>(work.size(), 4 * length));
    dbdsqr_("U", &n, &n, &n, &none, d.data(), e.data(), v.data(), &n, u.data(), &n, nullptr, &one,
            work.data(), &info, 1);
    benchmark::DoNotOptimize(d.data());
}

void addSvdAndAccess(std::vector<Pair> &table)
{
    const vorn_matrix a = randomMatrix(500, 500, 4);
    const std::vector<double> plain = elements(a);
    table.push_back({"SVD 500", "DGEBRD, DORGBR, DBDSQR", 1.02, repeat([a] {
                         vorn_matrix u, v;
                         vorn_diagonal_matrix s;
                         DoNotOptimize(VORN_SVD(a, u, v, s, false));
                     }),
                     repeat([plain] { plainSvd(plain, 500); })});
    table.push_back({"checked reads of 500 x 500", "raw pointer", 1.5, repeat([a] {
                         double sum = 0;
                         for (int c = 0; c < a.cols(); ++c) {
                             for (int r = 0; r < a.rows(); ++r)
                                 sum += a(r, c);
                         }
                         DoNotOptimize(sum);
                     }),
                     repeat([plain] {
                         double sum = 0;
                         for (const double value : plain)
                             sum += value;
                         DoNotOptimize(sum);
                     })});
}

// Each iteration makes 10,000 steps of an exhaustive walk.
template <class Iterator> ratios::Body walk(int n, int k)
{
    return [n, k](benchmark::State &state) {
        Iterator it(n, k);
        for (auto _ : state) {
            for (int i = 0; i < 10000; ++i)
                it++;
            if (it.done())
                it.reset();
        }
    };
}

void addSequences(std::vector<Pair> &table)
{
    static std::mt19937 standard(5489);
    static MersenneTwister own;
    constexpr int kDraws = 100000;
    table.push_back({"100,000 draws of 32 bits", "std::mt19937", 0.5, repeat([] {
                         for (int i = 0; i < kDraws; ++i)
                             DoNotOptimize(own.draw());
                     }),
                     repeat([] {
                         for (int i = 0; i < kDraws; ++i)
                             DoNotOptimize(standard());
                     })});
    table.push_back({"100,000 uniform deviates", "std::mt19937 and distribution", 0.5, repeat([] {
                         for (int i = 0; i < kDraws; ++i)
                             DoNotOptimize(VORN_GetUniformDeviate());
                     }),
                     repeat([] {
                         std::uniform_real_distribution<double> uniform;
                         for (int i = 0; i < kDraws; ++i)
                             DoNotOptimize(uniform(standard));
                     })});
    table.push_back({"100,000 normal deviates", "std::normal_distribution", 1.0,
                     repeat([] { DoNotOptimize(VORN_GetNormalDeviates(kDraws)); }), repeat([] {
                         std::normal_distribution<double> normal;
                         std::vector<double> values(kDraws);
                         for (double &value : values)
                             value = normal(standard);
                         DoNotOptimize(values.data());
                     })});
    table.push_back({"shuffle of 3,000", "std::shuffle", 0.67,
                     [](benchmark::State &state) {
                         shuffleIt it(3000, std::numeric_limits<int>::max());
                         for (auto _ : state)
                             it++;
                     },
                     [](benchmark::State &state) {
                         std::vector<int> ids(3000);
                         std::iota(ids.begin(), ids.end(), 0);
                         for (auto _ : state) {
                             std::shuffle(ids.begin(), ids.end(), standard);
                             DoNotOptimize(ids.data());
                         }
                     }});
    const ratios::Body standardPermutations = [](benchmark::State &state) {
        std::vector<int> ids(10);
        std::iota(ids.begin(), ids.end(), 0);
        for (auto _ : state) {
            for (int i = 0; i < 10000; ++i)
                std::next_permutation(ids.begin(), ids.end());
            DoNotOptimize(ids.data());
        }
    };
    table.push_back({"10,000 permutations of 10", "std::next_permutation", 2.0,
                     walk<permutationIt>(10, 10), standardPermutations});
    table.push_back({"10,000 arrangements of 5 in 30", "std::next_permutation", 2.0,
                     walk<permutationIt>(30, 5), standardPermutations});
    table.push_back({"10,000 combinations of 10 in 30", "std::next_permutation", 2.0,
                     walk<combinationIt>(30, 10), standardPermutations});
}

void addCorrections(std::vector<Pair> &table)
{
    std::mt19937 generator(11);
    std::uniform_real_distribution<double> uniform;
    QVector<double> p(1000000);
    for (double &value : p)
        value = uniform(generator);
    const ratios::Body sorting = repeat([p] {
        std::vector<double> values(p.cbegin(), p.cend());
        std::sort(values.begin(), values.end());
        DoNotOptimize(values.data());
    });
    using Correction = QVector<int> (*)(const QVector<double> &, const VORN_MissingData &, double);
    const std::pair<const char *, Correction> corrections[] = {
        {"Holm", &VORN_PerformHolmCorrection},
        {"Simes", &VORN_PerformSimesCorrection},
        {"FDR", &VORN_PerformFDRCorrection}};
    for (const auto &[name, correction] : corrections) {
        table.push_back({std::string(name) + " of 1,000,000", "std::sort", 1.5,
                         repeat([p, correct = correction] {
                             DoNotOptimize(correct(p, VORN_MissingData(), 0.05));
                         }),
                         sorting});
    }
    QVector<QVector<bool>> flags(999, QVector<bool>(10000));
    for (auto &row : flags) {
        for (bool &flag : row)
            flag = generator() % 20 == 0;
    }
    table.push_back({"JEF, 10,000 objects, 999 randomizations", "one pass over the flags", 10.0,
                     repeat([flags] {
                         DoNotOptimize(
                             VORN_PerformJEFCorrection(flags, VORN_MissingData(), 0.05, 0.1));
                     }),
                     repeat([flags] {
                         std::vector<int> counts(10000, 0);
                         for (const auto &row : flags) {
                             for (int i = 0; i < 10000; ++i)
                                 counts[static_cast<std::size_t>(i)] += row[i];
                         }
                         DoNotOptimize(counts.data());
                     })});
}

} // namespace

int main(int argc, char **argv)
{
    std::vector<Pair> table;
    addProducts(table);
    addSolvers(table);
    addSvdAndAccess(table);
    addSequences(table);
    addCorrections(table);
    return ratios::run(argc, argv, table);
}
