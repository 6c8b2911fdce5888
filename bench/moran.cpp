// SPDX-License-Identifier: MIT
// Permutation tests of 10,000 objects, compared with as many plain products of the sparse matrix
// with a vector, which is the time of the sums alone.
#include "core/analysis/moran.h"
#include <random>
#include <vector>
#include "ratios.h"

using benchmark::DoNotOptimize;
using ratios::repeat;

namespace {

constexpr int kSide = 100;
constexpr int kPermutations = 999;

/// Queen neighbours on a square lattice; each row of weights sums to 1.
meridor::SparseWeights lattice()
{
    meridor::SparseWeights weights;
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            std::vector<int> neighbors;
            for (int v = std::max(0, y - 1); v <= std::min(kSide - 1, y + 1); ++v)
                for (int u = std::max(0, x - 1); u <= std::min(kSide - 1, x + 1); ++u)
                    if (u != x || v != y)
                        neighbors.push_back(v * kSide + u);
            for (const int neighbor : neighbors)
                weights.addNeighbor(neighbor, 1.0 / static_cast<double>(neighbors.size()));
            weights.endRow();
        }
    }
    return weights;
}

std::vector<double> randomValues()
{
    std::mt19937 generator(7);
    std::normal_distribution<double> normal;
    std::vector<double> values(kSide * kSide);
    for (double &value : values)
        value = normal(generator);
    return values;
}

struct Rows {
    std::vector<int> starts{0};
    std::vector<int> columns;
    std::vector<double> weights;
};

Rows plainRows(const meridor::SparseWeights &weights)
{
    Rows rows;
    for (int i = 0; i < weights.rows(); ++i) {
        rows.columns.insert(rows.columns.end(), weights.columns(i),
                            weights.columns(i) + weights.count(i));
        rows.weights.insert(rows.weights.end(), weights.weights(i),
                            weights.weights(i) + weights.count(i));
        rows.starts.push_back(static_cast<int>(rows.columns.size()));
    }
    return rows;
}

void products(const Rows &rows, const std::vector<double> &values, std::vector<double> &result)
{
    for (int p = 0; p < kPermutations; ++p) {
        for (std::size_t i = 0; i + 1 < rows.starts.size(); ++i) {
            double sum = 0;
            for (auto k = static_cast<std::size_t>(rows.starts[i]);
                 k < static_cast<std::size_t>(rows.starts[i + 1]); ++k)
                sum += rows.weights[k] * values[static_cast<std::size_t>(rows.columns[k])];
            result[i] = sum;
        }
        benchmark::ClobberMemory();
    }
}

} // namespace

int main(int argc, char **argv)
{
    const meridor::SparseWeights weights = lattice();
    const std::vector<double> values = randomValues();
    const Rows rows = plainRows(weights);
    const meridor::Meter silent = [](int) {};
    const ratios::Body peer = repeat([rows, values] {
        std::vector<double> result(values.size());
        products(rows, values, result);
        DoNotOptimize(result.data());
    });
    return ratios::run(
        argc, argv,
        {{"global Moran, 10,000 objects, 999 permutations", "999 sparse products", 1.5,
          repeat([&] { DoNotOptimize(meridor::moran(values, weights, kPermutations, silent)); }),
          peer},
         {"local Moran, conditional permutations, the same", "999 sparse products", 4.0,
          repeat(
              [&] { DoNotOptimize(meridor::localMoran(values, weights, kPermutations, silent)); }),
          peer}});
}
