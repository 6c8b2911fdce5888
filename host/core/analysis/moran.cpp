// SPDX-License-Identifier: MIT
// Global statistic. It is a sum over pairs of objects: w_ij and w_ji are added to one weight, which
// halves the work of a permutation, and kTogether permutations share a pass over the pairs, so that
// the indices of a pair are read once for all of them.
//
// Local statistics. The conditional permutations of an object with k neighbours need only the first
// k values of a shuffle of all objects, because a random permutation from which one object is
// removed is a random permutation of the others. FirstValues stores value 0 of all permutations,
// then value 1 of all permutations, and so on; the lags of an object in all permutations are then k
// passes over contiguous arrays. In permutations that have the object itself among its first k
// values, it is skipped and value k is used as well.
#include "core/analysis/moran.h"
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include "datainterface/randomizationIt.h"

namespace meridor {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr size_t kTogether = 4;                 ///< permutations per pass over the pairs
constexpr size_t kTableBytes = size_t(1) << 22; ///< size of a FirstValues table
constexpr double kSlack = 1e-12; ///< relative: equal sums that differ by rounding are ties

size_t at(int i)
{
    return static_cast<size_t>(i);
}

std::vector<double> centred(const std::vector<double> &values)
{
    const auto n = static_cast<double>(values.size());
    const double mean = std::accumulate(values.begin(), values.end(), 0.0) / n;
    std::vector<double> z(values);
    for (double &value : z)
        value -= mean;
    return z;
}

double sumOfPowers(const std::vector<double> &z, int power)
{
    double sum = 0;
    for (const double value : z)
        sum += power == 2 ? value * value : value * value * value * value;
    return sum;
}

/// The one-sided p from the number of permutations at or above the value; see MoranTest.
double pseudoP(int above, int permutations)
{
    if (permutations == 0)
        return kNone;
    return (std::min(above, permutations - above) + 1.0) / (permutations + 1.0);
}

/// The weights w_ij + w_ji of all pairs i < j by rows, and sums of weights.
struct Pairs {
    std::vector<int> starts{0};
    std::vector<int> others;
    std::vector<double> weights;
    double s0 = 0; ///< sum of all weights
    double s1 = 0; ///< half the sum of (w_ij + w_ji)^2
    double s2 = 0; ///< sum of (row sum + column sum)^2
};

Pairs pairsOf(const SparseWeights &weights)
{
    const int n = weights.rows();
    struct Entry {
        int other;
        double weight;
    };
    std::vector<std::vector<Entry>> rows(at(n));
    std::vector<double> sums(at(n));
    Pairs pairs;
    for (int i = 0; i < n; ++i) {
        for (int k = 0; k < weights.count(i); ++k) {
            const int j = weights.columns(i)[k];
            const double weight = weights.weights(i)[k];
            rows[at(std::min(i, j))].push_back({std::max(i, j), weight});
            sums[at(i)] += weight;
            sums[at(j)] += weight;
            pairs.s0 += weight;
        }
    }
    for (std::vector<Entry> &row : rows) {
        std::sort(row.begin(), row.end(),
                  [](const Entry &a, const Entry &b) { return a.other < b.other; });
        for (size_t k = 0; k < row.size(); ++k) {
            if (k > 0 && row[k].other == row[k - 1].other) {
                pairs.weights.back() += row[k].weight;
                continue;
            }
            pairs.others.push_back(row[k].other);
            pairs.weights.push_back(row[k].weight);
        }
        pairs.starts.push_back(static_cast<int>(pairs.others.size()));
    }
    for (const double weight : pairs.weights)
        pairs.s1 += weight * weight;
    for (const double sum : sums)
        pairs.s2 += sum * sum;
    return pairs;
}

/// sum w_ij z_i z_j of `Count` permutations at a time; z[i * Count + b] is the value of object i in
/// permutation b.
template <size_t Count> std::array<double, Count> products(const Pairs &pairs, const double *z)
{
    std::array<double, Count> sums{};
    const size_t n = pairs.starts.size() - 1;
    for (size_t i = 0; i < n; ++i) {
        std::array<double, Count> lag{};
        for (int k = pairs.starts[i]; k < pairs.starts[i + 1]; ++k) {
            const double weight = pairs.weights[at(k)];
            const double *other = z + at(pairs.others[at(k)]) * Count;
            for (size_t b = 0; b < Count; ++b)
                lag[b] += weight * other[b];
        }
        for (size_t b = 0; b < Count; ++b)
            sums[b] += lag[b] * z[i * Count + b];
    }
    return sums;
}

/// Calls `visit` with the number and the indices of each of `permutations` shuffles.
template <class Visit> void visitShuffles(int n, int permutations, Visit visit)
{
    shuffleIt shuffle(n, permutations);
    for (int p = 0; p < permutations; ++p) {
        visit(p, shuffle.indices());
        shuffle++;
    }
}

/// sum w_ij z_i z_j of each permutation.
std::vector<double> permutedSums(const Pairs &pairs, const std::vector<double> &z, int permutations,
                                 const Meter &meter)
{
    const int n = static_cast<int>(z.size());
    std::vector<double> together(z.size() * kTogether);
    std::vector<double> all;
    all.reserve(at(permutations));
    visitShuffles(n, permutations, [&](int p, const int *indices) {
        const size_t slot = at(p) % kTogether;
        for (size_t i = 0; i < z.size(); ++i)
            together[i * kTogether + slot] = z[at(indices[i])];
        if (slot + 1 < kTogether && p + 1 < permutations)
            return;
        const auto sums = products<kTogether>(pairs, together.data());
        all.insert(all.end(), sums.begin(), sums.begin() + slot + 1);
        meter(100 * p / permutations);
    });
    return all;
}

/// The value below which `share` of the others lie; NaN of none. Reorders them.
double quantile(std::vector<double> &values, double share)
{
    if (values.empty())
        return kNone;
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + rank, values.end());
    return values[static_cast<size_t>(rank)];
}

double variance(const Pairs &pairs, double n, double kurtosis)
{
    const double s0 = pairs.s0 * pairs.s0;
    const double free = n * ((n * n - 3 * n + 3) * pairs.s1 - n * pairs.s2 + 3 * s0);
    const double tied = kurtosis * ((n * n - n) * pairs.s1 - 2 * n * pairs.s2 + 6 * s0);
    return (free - tied) / ((n - 1) * (n - 2) * (n - 3) * s0) - 1 / ((n - 1) * (n - 1));
}

/// The first values of `count` shuffles: table[k * count + p] is value k of permutation p.
struct FirstValues {
    int count = 0;
    int depth = 0;
    std::vector<double> table;
    struct Hit {
        int object;
        int permutation;
        int position;
    };
    std::vector<Hit> hits; ///< where each object is in the table, sorted by object

    FirstValues(shuffleIt &shuffle, const std::vector<double> &z, int permutations, int values)
        : count(permutations), depth(values), table(at(permutations) * at(values))
    {
        for (int p = 0; p < count; ++p) {
            for (int k = 0; k < depth; ++k) {
                const int object = shuffle.indices()[k];
                table[at(k) * at(count) + at(p)] = z[at(object)];
                hits.push_back({object, p, k});
            }
            shuffle++;
        }
        std::sort(hits.begin(), hits.end(), [](const Hit &a, const Hit &b) {
            return a.object != b.object ? a.object < b.object : a.permutation < b.permutation;
        });
    }
    const double *values(int k) const { return table.data() + at(k) * at(count); }
};

/// Counts, for each object, the permutations whose statistic is at least that of the object.
class ConditionalCounts {
public:
    ConditionalCounts(const SparseWeights &weights, const std::vector<double> &z,
                      const std::vector<double> &lags, double slack)
        : mWeights(weights), mZ(z), mLags(lags), mSlack(slack), mAbove(z.size())
    {
    }

    void add(const FirstValues &first)
    {
        std::vector<double> sums(at(first.count));
        auto hit = first.hits.begin();
        for (int i = 0; i < mWeights.rows(); ++i) {
            std::fill(sums.begin(), sums.end(), 0.0);
            const int neighbors = mWeights.count(i);
            for (int k = 0; k < neighbors; ++k) {
                const double weight = mWeights.weights(i)[k];
                const double *values = first.values(k);
                for (size_t p = 0; p < sums.size(); ++p)
                    sums[p] += weight * values[p];
            }
            for (; hit != first.hits.end() && hit->object == i; ++hit)
                if (hit->position < neighbors)
                    sums[at(hit->permutation)] = lagWithout(first, *hit, i);
            mAbove[at(i)] += countAbove(sums, i);
        }
    }
    int above(int object) const { return mAbove[at(object)]; }

private:
    double lagWithout(const FirstValues &first, const FirstValues::Hit &hit, int object) const
    {
        double sum = 0;
        for (int k = 0; k < mWeights.count(object); ++k)
            sum += mWeights.weights(object)[k]
                   * first.values(k < hit.position ? k : k + 1)[hit.permutation];
        return sum;
    }

    /// The statistic is z_i times the lag, so a negative z_i reverses the comparison of lags.
    int countAbove(const std::vector<double> &sums, int object) const
    {
        const double limit = mLags[at(object)];
        int count = 0;
        if (mZ[at(object)] >= 0)
            for (const double sum : sums)
                count += sum >= limit - mSlack;
        else
            for (const double sum : sums)
                count += sum <= limit + mSlack;
        return count;
    }

    const SparseWeights &mWeights;
    const std::vector<double> &mZ;
    const std::vector<double> &mLags;
    double mSlack;
    std::vector<int> mAbove;
};

void lagOf(const SparseWeights &weights, const std::vector<double> &z, std::vector<double> &lags)
{
    lags.resize(z.size());
    for (int i = 0; i < weights.rows(); ++i) {
        double sum = 0;
        for (int k = 0; k < weights.count(i); ++k)
            sum += weights.weights(i)[k] * z[at(weights.columns(i)[k])];
        lags[at(i)] = sum;
    }
}

double localDeviate(const SparseWeights &weights, int i, double z, double value, double n,
                    double m2)
{
    double sum = 0;
    double squares = 0;
    for (int k = 0; k < weights.count(i); ++k) {
        const double weight = weights.weights(i)[k];
        sum += weight;
        squares += weight * weight;
    }
    const double expectation = -z * z * sum / ((n - 1) * m2);
    const double variance =
        z / m2 * (z / m2) * n / (n - 2) * (squares - sum * sum / (n - 1)) * (m2 - z * z / (n - 1));
    return variance > 0 ? (value - expectation) / std::sqrt(variance) : kNone;
}

} // namespace

void SparseWeights::addNeighbor(int column, double weight)
{
    if (column == rows())
        return;
    mColumns.push_back(column);
    mWeights.push_back(weight);
}

void SparseWeights::endRow()
{
    const size_t first = at(mStarts.back());
    std::vector<std::pair<int, double>> row;
    for (size_t k = first; k < mColumns.size(); ++k)
        row.emplace_back(mColumns[k], mWeights[k]);
    std::stable_sort(row.begin(), row.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    mColumns.resize(first);
    mWeights.resize(first);
    for (const auto &[column, weight] : row) {
        if (mColumns.size() > first && mColumns.back() == column) {
            mWeights.back() += weight;
            continue;
        }
        mColumns.push_back(column);
        mWeights.push_back(weight);
    }
    mStarts.push_back(static_cast<int>(mColumns.size()));
}

MoranTest moran(const std::vector<double> &values, const SparseWeights &weights, int permutations,
                const Meter &meter, Islands islands)
{
    auto n = static_cast<double>(values.size());
    for (int row = 0; islands == Islands::Drop && row < weights.rows(); ++row)
        n -= weights.count(row) == 0;
    const std::vector<double> z = centred(values);
    const double squares = sumOfPowers(z, 2);
    const Pairs pairs = pairsOf(weights);
    if (n < 2 || !(squares > 0) || pairs.s0 == 0)
        return {kNone, kNone, kNone, kNone, kNone, kNone};
    const double scale = n / pairs.s0 / squares;
    const double sum = products<1>(pairs, z.data())[0];
    MoranTest test{scale * sum, -1 / (n - 1), kNone, kNone, kNone, kNone};
    const double kurtosis =
        static_cast<double>(values.size()) * sumOfPowers(z, 4) / squares / squares;
    if (n > 3)
        test.deviate = (test.value - test.expectation) / std::sqrt(variance(pairs, n, kurtosis));
    const double limit = sum - kSlack / scale;
    std::vector<double> sums = permutedSums(pairs, z, permutations, meter);
    const auto above =
        std::count_if(sums.begin(), sums.end(), [limit](double other) { return other >= limit; });
    test.above = static_cast<int>(above);
    test.p = pseudoP(test.above, permutations);
    test.low = scale * quantile(sums, 0.025);
    test.high = scale * quantile(sums, 0.975);
    return test;
}

LocalMoran localMoran(const std::vector<double> &values, const SparseWeights &weights,
                      int permutations, const Meter &meter)
{
    const int n = static_cast<int>(values.size());
    LocalMoran local;
    local.z = centred(values);
    lagOf(weights, local.z, local.lags);
    const double m2 = n > 0 ? sumOfPowers(local.z, 2) / n : 0;
    int depth = 0;
    for (int i = 0; i < n; ++i) {
        const double z = local.z[at(i)];
        const bool tells = m2 > 0 && weights.count(i) > 0;
        local.values.push_back(tells ? z / m2 * local.lags[at(i)] : kNone);
        local.deviates.push_back(
            tells && n > 2 ? localDeviate(weights, i, z, local.values.back(), n, m2) : kNone);
        depth = std::max(depth, weights.count(i));
    }
    local.p.assign(values.size(), kNone);
    if (permutations == 0 || n < 2)
        return local;
    // One value more than neighbours, for the permutations that contain the object itself.
    depth = std::min(depth + 1, n);
    const int batch = std::max(1, static_cast<int>(kTableBytes / sizeof(double)) / depth);
    ConditionalCounts counts(weights, local.z, local.lags, kSlack * std::sqrt(m2));
    shuffleIt shuffle(n, permutations);
    for (int done = 0; done < permutations; done += batch) {
        meter(static_cast<int>(100LL * done / permutations));
        counts.add(FirstValues(shuffle, local.z, std::min(batch, permutations - done), depth));
    }
    for (int i = 0; i < n; ++i) {
        local.above.push_back(counts.above(i));
        if (!std::isnan(local.values[at(i)]))
            local.p[at(i)] = pseudoP(counts.above(i), permutations);
    }
    return local;
}

std::vector<std::vector<bool>> flagsOfChance(const std::vector<double> &values,
                                             const SparseWeights &weights, int permutations,
                                             double alpha, const Meter &meter)
{
    const std::vector<double> z = centred(values);
    const size_t n = z.size();
    std::vector<float> statistics(n * at(permutations)); // [object][permutation]
    std::vector<double> permuted(n);
    std::vector<double> lags;
    visitShuffles(static_cast<int>(n), permutations, [&](int p, const int *indices) {
        for (size_t i = 0; i < n; ++i)
            permuted[i] = z[at(indices[i])];
        lagOf(weights, permuted, lags);
        for (size_t i = 0; i < n; ++i)
            statistics[i * at(permutations) + at(p)] = static_cast<float>(permuted[i] * lags[i]);
        meter(100 * p / permutations);
    });
    std::vector<std::vector<bool>> flags(at(permutations), std::vector<bool>(n));
    // The number of permutations in a tail of p at most alpha.
    const int tail =
        std::min(static_cast<int>(alpha * (permutations + 1.0) + kSlack), permutations);
    if (tail < 1)
        return flags;
    std::vector<float> sorted(at(permutations));
    for (size_t i = 0; i < n; ++i) {
        const float *own = statistics.data() + i * at(permutations);
        std::copy_n(own, permutations, sorted.begin());
        std::sort(sorted.begin(), sorted.end());
        const float low = sorted[at(tail - 1)];
        const float high = sorted[at(permutations - tail)];
        for (size_t p = 0; p < flags.size(); ++p)
            flags[p][i] = own[p] <= low || own[p] >= high;
    }
    return flags;
}

} // namespace meridor
