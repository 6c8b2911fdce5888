// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstring>
#include <vector>
#include "Common/detail/failure.h"
#include "datainterface/StatisticsAPI.h"

using namespace datainterface;

namespace {

struct RankedValue {
    quint64 key; ///< has the order of the p-value
    int index;
};

// Bits whose unsigned order is the order of the doubles. A NaN is ordered beyond the infinity of
// its sign.
quint64 orderedBits(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits & 0x8000000000000000ULL ? ~bits : bits | 0x8000000000000000ULL;
}

// Radix sort from the least significant digit, 11 bits a pass. A digit that is equal in all values
// is skipped.
void radixSort(std::vector<RankedValue> &values)
{
    constexpr int kBits = 11;
    constexpr int kPasses = 6;
    constexpr quint64 kMask = (1ULL << kBits) - 1;
    std::vector<std::array<quint32, kMask + 1>> counts(kPasses);
    for (const RankedValue &value : values) {
        for (unsigned pass = 0; pass < kPasses; ++pass)
            ++counts[pass][(value.key >> (pass * kBits)) & kMask];
    }
    std::vector<RankedValue> other(values.size());
    for (unsigned pass = 0; pass < kPasses; ++pass) {
        auto &count = counts[pass];
        const unsigned shift = pass * kBits;
        if (values.empty() || count[(values.front().key >> shift) & kMask] == values.size())
            continue;
        quint32 start = 0;
        for (quint32 &c : count) {
            const quint32 size = c;
            c = start;
            start += size;
        }
        for (const RankedValue &value : values)
            other[count[(value.key >> shift) & kMask]++] = value;
        values.swap(other);
    }
}

// The number of objects that are not missing. Missing ids out of range are ignored.
int presentCount(const QVector<double> &p, const VORN_MissingData &missing)
{
    if (missing.noneMissing())
        return p.size();
    int count = 0;
    for (int i = 0; i < p.size(); ++i)
        count += !missing.isMissing(i);
    return count;
}

// The objects that are not missing, in ascending order of their p-values.
std::vector<RankedValue> ranked(const QVector<double> &p, const VORN_MissingData &missing)
{
    std::vector<RankedValue> values;
    values.reserve(static_cast<std::size_t>(p.size()));
    const bool all = missing.noneMissing();
    for (int i = 0; i < p.size(); ++i) {
        if (all || !missing.isMissing(i))
            values.push_back({orderedBits(p[i]), i});
    }
    radixSort(values);
    return values;
}

} // namespace

QVector<int> VORN_PerformBonferroniCorrection(const QVector<double> &p,
                                              const VORN_MissingData &missing, double alpha)
{
    QVector<int> result;
    const int m = presentCount(p, missing);
    if (m <= 0)
        return result;
    const double threshold = alpha / m;
    for (int i = 0; i < p.size(); ++i) { // missing objects are tested too; only m excludes them
        if (p[i] < threshold)
            result.append(i);
    }
    return result;
}

QVector<int> VORN_PerformHolmCorrection(const QVector<double> &p, const VORN_MissingData &missing,
                                        double alpha)
{
    QVector<int> result;
    const auto values = ranked(p, missing);
    int k = static_cast<int>(values.size());
    for (const RankedValue &value : values) {
        if (!(p[value.index] <= alpha / k--))
            break;
        result.append(value.index);
    }
    return result;
}

QVector<int> VORN_PerformSimesCorrection(const QVector<double> &p, const VORN_MissingData &missing,
                                         double alpha)
{
    QVector<int> result;
    const auto values = ranked(p, missing);
    int rank = 0;
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        if (p[value->index] < alpha / ++rank)
            break;
        result.append(value->index);
    }
    return result;
}

QVector<int> VORN_PerformFDRCorrection(const QVector<double> &p, const VORN_MissingData &missing,
                                       double alpha)
{
    QVector<int> result;
    const auto values = ranked(p, missing);
    const int m = static_cast<int>(values.size());
    int k = m;
    for (auto value = values.rbegin(); value != values.rend(); ++value) {
        if (p[value->index] < k-- * alpha / m)
            result.append(value->index);
    }
    return result;
}

QVector<int> VORN_PerformJEFCorrection(const QVector<QVector<bool>> &randomizations,
                                       const VORN_MissingData &missing, double alpha,
                                       double falseFraction)
{
    const int randomizationCount = randomizations.size();
    require(randomizationCount != 0, "numRandomizations");

    // The number of randomizations that flag each object.
    const int objectCount = randomizations.front().size();
    std::vector<int> flagged(static_cast<std::size_t>(objectCount), 0);
    for (const QVector<bool> &flags : randomizations) {
        const bool *flag = flags.constData();
        for (std::size_t i = 0, n = static_cast<std::size_t>(std::min(objectCount, flags.size()));
             i < n; ++i)
            flagged[i] += flag[i];
    }
    std::vector<int> family;
    for (int i = 0; i < objectCount; ++i) {
        if (!missing.isMissing(i))
            family.push_back(i);
    }
    std::sort(family.begin(), family.end(), [&](int a, int b) {
        const auto key = [&](int i) { return flagged[static_cast<std::size_t>(i)]; };
        return key(a) != key(b) ? key(a) < key(b) : a < b;
    });
    const std::size_t size = family.size();

    // Families grow by one object at a time, so the count of a randomization is carried over from
    // one family to the next.
    std::vector<int> allowed(size);
    for (std::size_t k = 0; k < size; ++k) {
        const double limit = static_cast<double>(k + 1) * falseFraction;
        allowed[k] = limit >= objectCount ? objectCount
                     : limit > -1.0       ? static_cast<int>(limit)
                                          : -1;
    }
    std::vector<int> exceeding(size, 0);
    for (const QVector<bool> &flags : randomizations) {
        const bool *flag = flags.constData();
        int count = 0;
        for (std::size_t k = 0; k < size; ++k) {
            count += family[k] < flags.size() && flag[family[k]];
            exceeding[k] += count > allowed[k];
        }
    }

    // p is summed by repeated addition, once for the observed data and once for each randomization,
    // because its rounding decides in borderline cases.
    const double increment = 1.0 / (randomizationCount + 1);
    int tolerated = -1;
    for (double p = increment; !(p > alpha) && tolerated < randomizationCount; p += increment)
        ++tolerated;
    std::size_t cut = 0;
    while (cut < size && exceeding[cut] <= tolerated)
        ++cut;
    return QVector<int>(family.begin(), family.begin() + static_cast<std::ptrdiff_t>(cut));
}
