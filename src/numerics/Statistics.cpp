// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include "datainterface/StatisticsAPI.h"
#include "numerics/distributions.h"

using namespace datainterface;

namespace {

// When the expected numbers of successes and of failures are both above this, the binomial is
// approximated by the normal distribution, with an error below 0.1 / variance.
constexpr double kNormalFrom = 20.0;
// Longer sums of logarithms are replaced by the gamma function; the probability is then 0 within
// its error.
constexpr int kLongestSum = 1000000;

// ln of n choose k.
double lnChoose(int n, int k)
{
    const int smaller = std::min(k, n - k);
    if (smaller > kLongestSum)
        return lnGamma(n + 1.0) - lnGamma(k + 1.0) - lnGamma(n - k + 1.0);
    double sum = 0.0;
    for (int i = 1; i <= smaller; ++i)
        sum += std::log((n - smaller + static_cast<double>(i)) / i);
    return sum;
}

bool isProbability(double p)
{
    return p >= 0.0 && p <= 1.0;
}

} // namespace

bool VORN_GetNormalP(double x, double &p)
{
    return normalP(x, p);
}

bool VORN_GetNormalQuantile(double p, double &x)
{
    if (!(p > 0.0 && p < 1.0))
        return false;
    x = normalQuantile(p);
    return true;
}

bool VORN_GetPoissonP(int k, double mean, double &p)
{
    if (k < 0 || !(mean >= 0.0) || !std::isfinite(mean))
        return false;
    if (k == 0) {
        p = 0.0; // P(X < 0)
        return true;
    }
    return incompleteGammaQ(k, mean, p);
}

bool VORN_GetBinomialP(int n, int k, double p, double &result)
{
    if (k < 0 || k > n || !isProbability(p))
        return false;
    if (p == 0.0 || p == 1.0) {
        result = p; // for every k: results of old studies depend on it
        return true;
    }
    const double mean = n * p;
    if (mean > kNormalFrom && n * (1.0 - p) > kNormalFrom) {
        const double deviation = std::sqrt(mean * (1.0 - p));
        double upper = 0.0;
        double lower = 0.0;
        if (!normalP((k + 0.5 - mean) / deviation, upper)
            || !normalP((k - 0.5 - mean) / deviation, lower))
            return false;
        result = upper - lower;
        return true;
    }
    result = std::exp(lnChoose(n, k) + k * std::log(p) + (n - k) * std::log(1.0 - p));
    return true;
}

bool VORN_GetCumBinomialP(int n, int k, double p, double &result)
{
    if (k < 0 || k > n || !isProbability(p))
        return false;
    if (k == 0) {
        result = 1.0;
        return true;
    }
    return incompleteBeta(k, n - k + 1.0, p, 1.0 - p, result);
}

bool VORN_GetTDistP(double t, int df, double &p)
{
    if (df < 1 || !std::isfinite(t))
        return false;
    const double square = t * t;
    const double inside = std::isfinite(square) ? square / (square + df) : 1.0;
    double outside = 0.0;
    if (!incompleteBeta(0.5 * df, 0.5, df / (square + df), inside, outside))
        return false;
    p = 1.0 - outside;
    return true;
}

bool VORN_GetFDistP(double f, int df1, int df2, double &p)
{
    if (df1 < 1 || df2 < 1 || !(f >= 0.0) || !std::isfinite(f))
        return false;
    const double scaled = df1 * f;
    const double below = std::isfinite(scaled) ? scaled / (scaled + df2) : 1.0;
    return incompleteBeta(0.5 * df2, 0.5 * df1, df2 / (scaled + df2), below, p);
}

bool VORN_GetChiDistP(double x, int df, bool lowerTail, double &p)
{
    if (df < 1)
        return false;
    return lowerTail ? incompleteGammaP(0.5 * df, 0.5 * x, p)
                     : incompleteGammaQ(0.5 * df, 0.5 * x, p);
}
