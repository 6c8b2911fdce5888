// SPDX-License-Identifier: MIT
/// Exact sums and products of doubles, for the predicates that a floating-point filter cannot
/// decide.
#pragma once
#include <cmath>
#include <vector>

namespace fennimark {

/// A number as an unevaluated sum of doubles that do not overlap, the smallest first (J. R.
/// Shewchuk, "Adaptive precision floating-point arithmetic and fast robust geometric predicates",
/// Discrete & Computational Geometry 18, 1997, 305-363). Operations are exact as long as nothing
/// overflows and no product is below the normal range.
class Expansion {
public:
    Expansion() = default;
    explicit Expansion(double value) { add(value); }

    static Expansion difference(double a, double b)
    {
        Expansion result(a);
        result.add(-b);
        return result;
    }

    int sign() const { return mParts.empty() ? 0 : (mParts.back() > 0.0 ? 1 : -1); }

    Expansion &operator+=(const Expansion &other)
    {
        for (const double part : other.mParts)
            add(part);
        return *this;
    }
    Expansion &operator-=(const Expansion &other)
    {
        for (const double part : other.mParts)
            add(-part);
        return *this;
    }
    friend Expansion operator*(const Expansion &a, const Expansion &b)
    {
        Expansion result;
        for (const double x : a.mParts) {
            for (const double y : b.mParts) {
                const double product = x * y;
                result.add(std::fma(x, y, -product));
                result.add(product);
            }
        }
        return result;
    }

private:
    void add(double value)
    {
        std::size_t kept = 0;
        for (const double part : mParts) {
            const double sum = value + part;
            const double partOfSum = sum - value;
            const double error = (value - (sum - partOfSum)) + (part - partOfSum);
            if (error != 0.0)
                mParts[kept++] = error;
            value = sum;
        }
        mParts.resize(kept);
        if (value != 0.0)
            mParts.push_back(value);
    }

    std::vector<double> mParts;
};

} // namespace fennimark
