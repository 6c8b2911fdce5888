// SPDX-License-Identifier: MIT
// Continued fractions are evaluated by Lentz's method as modified by I. J. Thompson and A. R.
// Barnett, J. Comput. Phys. 64 (1986) 490-509.
#include "numerics/distributions.h"
#include <algorithm>
#include <cmath>
#include <limits>

namespace datainterface {
namespace {

constexpr double kPrecision = 3e-16; // relative change at which an expansion has converged
constexpr double kFloor = 1e-300;    // replaces a zero denominator in Lentz's method
constexpr int kMaxRounds = 5000;

double awayFromZero(double value)
{
    return std::fabs(value) < kFloor ? kFloor : value;
}

constexpr double kLanczosShift = 5.5;

double lanczosSeries(double x)
{
    constexpr double kCoefficients[] = {76.18009172947146,    -86.50532032941678,
                                        24.01409824083091,    -1.231739572450155,
                                        0.001208650973866179, -5.395239384953e-06};
    double series = 1.000000000190015;
    for (double coefficient : kCoefficients)
        series += coefficient / ++x;
    return series;
}

// lnGamma(a + b) - lnGamma(a) from the same series, with its large terms cancelled
// analytically.
double lnGammaStep(double a, double b)
{
    const double t = a + kLanczosShift;
    return std::log(lanczosSeries(a + b) / lanczosSeries(a) * (a / (a + b))) - b
           + b * std::log(t + b) + (a + 0.5) * std::log1p(b / t);
}

double gammaFront(double a, double x)
{
    return std::exp(-x + a * std::log(x) - lnGamma(a));
}

// The series of P(a, x), for x < a + 1.
bool gammaSeries(double a, double x, double &p)
{
    double term = 1.0 / a;
    double sum = term;
    for (int i = 1; i <= kMaxRounds; ++i) {
        term *= x / (a + i);
        sum += term;
        if (std::fabs(term) < std::fabs(sum) * kPrecision) {
            p = sum * gammaFront(a, x);
            return true;
        }
    }
    return false;
}

// The continued fraction of Q(a, x), for x >= a + 1.
bool gammaFraction(double a, double x, double &q)
{
    double b = x + 1.0 - a;
    double c = 1.0 / kFloor;
    double d = 1.0 / awayFromZero(b);
    double h = d;
    for (int i = 1; i <= kMaxRounds; ++i) {
        const double numerator = -i * (i - a);
        b += 2.0;
        d = 1.0 / awayFromZero(numerator * d + b);
        c = awayFromZero(b + numerator / c);
        const double factor = d * c;
        h *= factor;
        if (std::fabs(factor - 1.0) < kPrecision) {
            q = gammaFront(a, x) * h;
            return true;
        }
    }
    return false;
}

bool incompleteGamma(double a, double x, bool lower, double &result)
{
    if (!(a > 0.0) || !(x >= 0.0) || !std::isfinite(a) || !std::isfinite(x))
        return false;
    double value = 0.0;
    const bool isSeries = x < a + 1.0;
    if (x > 0.0 && !(isSeries ? gammaSeries(a, x, value) : gammaFraction(a, x, value)))
        return false;
    result = isSeries == lower ? value : 1.0 - value;
    return true;
}

bool betaFraction(double a, double b, double x, double &result)
{
    double c = 1.0;
    double d = 1.0 / awayFromZero(1.0 - (a + b) * x / (a + 1.0));
    double h = d;
    for (int m = 1; m <= kMaxRounds; ++m) {
        const double twice = 2.0 * m;
        const double even = m * (b - m) * x / ((a - 1.0 + twice) * (a + twice));
        d = 1.0 / awayFromZero(1.0 + even * d);
        c = awayFromZero(1.0 + even / c);
        h *= d * c;
        const double odd = -(a + m) * (a + b + m) * x / ((a + twice) * (a + 1.0 + twice));
        d = 1.0 / awayFromZero(1.0 + odd * d);
        c = awayFromZero(1.0 + odd / c);
        const double factor = d * c;
        h *= factor;
        if (std::fabs(factor - 1.0) < kPrecision) {
            result = h;
            return true;
        }
    }
    return false;
}

} // namespace

double lnGamma(double x)
{
    const double t = x + kLanczosShift;
    return std::log(2.5066282746310007 * lanczosSeries(x) / x) - (t - (x + 0.5) * std::log(t));
}

bool incompleteGammaP(double a, double x, double &result)
{
    return incompleteGamma(a, x, true, result);
}

bool incompleteGammaQ(double a, double x, double &result)
{
    return incompleteGamma(a, x, false, result);
}

bool incompleteBeta(double a, double b, double x, double y, double &result)
{
    if (!(a > 0.0) || !(b > 0.0) || !(x >= 0.0 && x <= 1.0) || !std::isfinite(a)
        || !std::isfinite(b))
        return false;
    const bool direct = x < (a + 1.0) / (a + b + 2.0);
    double value = 0.0;
    if (x > 0.0 && y > 0.0) {
        const double front =
            std::exp(lnGammaStep(std::max(a, b), std::min(a, b)) - lnGamma(std::min(a, b))
                     + a * std::log(x) + b * std::log(y));
        double fraction = 0.0;
        if (!(direct ? betaFraction(a, b, x, fraction) : betaFraction(b, a, y, fraction)))
            return false;
        value = front * fraction / (direct ? a : b);
    }
    result = direct ? value : 1.0 - value;
    return true;
}

bool normalP(double x, double &p)
{
    const double z = x / std::sqrt(2.0);
    double e = 1.0; // beyond any z whose square is finite
    if (!std::isfinite(x) || (std::isfinite(z * z) && !incompleteGammaP(0.5, z * z, e)))
        return false;
    p = x >= 0.0 ? 0.5 * (1.0 + e) : 0.5 - 0.5 * e;
    return true;
}

// P. J. Acklam's rational approximation, relative error below 1.2e-9, without a refinement step.
double normalQuantile(double p)
{
    constexpr double kA[] = {-3.969683028665376e+01, 2.209460984245205e+02,  -2.759285104469687e+02,
                             1.383577518672690e+02,  -3.066479806614716e+01, 2.506628277459239e+00};
    constexpr double kB[] = {-5.447609879822406e+01, 1.615858368580409e+02, -1.556989798598866e+02,
                             6.680131188771972e+01, -1.328068155288572e+01};
    constexpr double kC[] = {-7.784894002430293e-03, -3.223964580411365e-01, -2.400758277161838e+00,
                             -2.549732539343734e+00, 4.374664141464968e+00,  2.938163982698783e+00};
    constexpr double kD[] = {7.784695709041462e-03, 3.224671290700398e-01, 2.445134137142996e+00,
                             3.754408661907416e+00};
    constexpr double kLow = 0.02425;
    if (p <= 0.0)
        return -std::numeric_limits<double>::infinity();
    if (p >= 1.0)
        return std::numeric_limits<double>::infinity();
    if (p < kLow || p > 1.0 - kLow) {
        const double q = std::sqrt(-2.0 * std::log(p < kLow ? p : 1.0 - p));
        const double x = (((((kC[0] * q + kC[1]) * q + kC[2]) * q + kC[3]) * q + kC[4]) * q + kC[5])
                         / ((((kD[0] * q + kD[1]) * q + kD[2]) * q + kD[3]) * q + 1.0);
        return p < kLow ? x : -x;
    }
    const double q = p - 0.5;
    const double r = q * q;
    return (((((kA[0] * r + kA[1]) * r + kA[2]) * r + kA[3]) * r + kA[4]) * r + kA[5]) * q
           / (((((kB[0] * r + kB[1]) * r + kB[2]) * r + kB[3]) * r + kB[4]) * r + 1.0);
}

} // namespace datainterface
