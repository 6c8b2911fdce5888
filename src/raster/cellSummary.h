// SPDX-License-Identifier: MIT
/// Mean, extremes and standard deviation of the cells of grids that are finite and not missing.
///
/// Cell i is added to lane i % kLanes, and each lane has its own sum. An addition then does not
/// wait for the previous one, the compiler can process several lanes with one instruction, and the
/// rounding error is smaller than that of a single sum. Lanes are added at the end.
#pragma once
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>
#include "cells/cellForms.h"
#include "datainterface/MDataset.h"

namespace datainterface {

/// The type of sums and comparisons; halves are converted to floats.
template <class T> using Summand = std::conditional_t<std::is_same_v<T, half>, float, T>;

template <class T> bool isFiniteSummand(T value)
{
    if constexpr (std::is_floating_point_v<T>)
        return std::fabs(value) <= std::numeric_limits<T>::max();
    else
        return true;
}

template <class T> class CellSummary {
public:
    using Value = Summand<T>;

    void add(const T *cells, int count, const CellTest<const T *> &test)
    {
        test.isSet() ? addCells<true>(cells, count, test) : addCells<false>(cells, count, test);
    }
    qint64 count() const { return total(mCounts); }
    DataSetStats stats() const
    {
        DataSetStats stats;
        stats.meanValid = true;
        if (count() == 0)
            return stats;
        stats.mean = total(mSums) / static_cast<double>(count());
        stats.minimum = datum(*std::min_element(mMinima.begin(), mMinima.end()));
        stats.maximum = datum(*std::max_element(mMaxima.begin(), mMaxima.end()));
        return stats;
    }

private:
    static constexpr int kLanes = 8;
    using Limits = std::numeric_limits<Value>;

    template <bool Tests> void addCells(const T *cells, int count, const CellTest<const T *> &test)
    {
        // Local copies, so that the compiler knows that no pointer in the loop refers to them.
        std::array<double, kLanes> sums = mSums;
        std::array<Value, kLanes> minima = mMinima;
        std::array<Value, kLanes> maxima = mMaxima;
        const auto addBlock = [&](int from, int lanes, std::array<int, kLanes> &counts) {
            for (int lane = 0; lane < lanes; ++lane) {
                const auto l = static_cast<std::size_t>(lane);
                const T cell = cells[from + lane];
                const auto value = static_cast<Value>(cell);
                const bool counted = isFiniteSummand(value) && !(Tests && test.equals(cell));
                sums[l] += counted ? static_cast<double>(value) : 0.0;
                minima[l] = counted && value < minima[l] ? value : minima[l];
                maxima[l] = counted && value > maxima[l] ? value : maxima[l];
                counts[l] += counted;
            }
        };
        std::array<int, kLanes> counts{};
        const int whole = count - count % kLanes;
        for (int i = 0; i < whole; i += kLanes)
            addBlock(i, kLanes, counts);
        addBlock(whole, count - whole, counts);
        mSums = sums;
        mMinima = minima;
        mMaxima = maxima;
        for (std::size_t lane = 0; lane < kLanes; ++lane)
            mCounts[lane] += counts[lane];
    }
    template <class Number> static Number total(const std::array<Number, kLanes> &lanes)
    {
        return std::accumulate(lanes.begin(), lanes.end(), Number(0));
    }
    static MDatum datum(Value value)
    {
        if constexpr (std::is_same_v<T, qint8> || std::is_same_v<T, qint16>)
            return MDatum(static_cast<int>(value));
        else if constexpr (std::is_same_v<T, quint8> || std::is_same_v<T, quint16>)
            return MDatum(static_cast<unsigned int>(value));
        else if constexpr (std::is_floating_point_v<Value>)
            return MDatum(static_cast<double>(value));
        else
            return MDatum(value);
    }
    template <class Number> static std::array<Number, kLanes> filled(Number value)
    {
        std::array<Number, kLanes> lanes;
        lanes.fill(value);
        return lanes;
    }

    std::array<double, kLanes> mSums{};
    std::array<qint64, kLanes> mCounts{};
    std::array<Value, kLanes> mMinima = filled(Limits::max());
    std::array<Value, kLanes> mMaxima = filled(Limits::lowest());
};

/// The sum of squared deviations from `mean`.
/// @param counted  receives the number of cells.
template <class T>
double squaredDeviations(const T *cells, int count, const CellTest<const T *> &test, double mean,
                         qint64 &counted)
{
    constexpr int kLanes = 8;
    std::array<double, kLanes> sums{};
    std::array<int, kLanes> counts{};
    const auto addBlock = [&](int from, int lanes) {
        for (int lane = 0; lane < lanes; ++lane) {
            const auto l = static_cast<std::size_t>(lane);
            const T cell = cells[from + lane];
            const auto value = static_cast<Summand<T>>(cell);
            const bool isCounted = isFiniteSummand(value) && !test.isMissing(cell);
            const double deviation = isCounted ? static_cast<double>(value) - mean : 0.0;
            sums[l] += deviation * deviation;
            counts[l] += isCounted;
        }
    };
    const int whole = count - count % kLanes;
    for (int i = 0; i < whole; i += kLanes)
        addBlock(i, kLanes);
    addBlock(whole, count - whole);
    counted = std::accumulate(counts.begin(), counts.end(), qint64(0));
    return std::accumulate(sums.begin(), sums.end(), 0.0);
}

} // namespace datainterface
