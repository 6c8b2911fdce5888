// SPDX-License-Identifier: MIT
/// The special functions that the distribution functions are computed from.
#pragma once

namespace datainterface {

/// ln of the gamma function for x > 0, by the series of C. Lanczos, SIAM J. Numer. Anal. B 1 (1964)
/// 86-96, with the six coefficients for g = 5: relative error of gamma below 3.3e-10.
double lnGamma(double x);

/// The lower (P) and upper (Q) regularized incomplete gamma function, a > 0, x >= 0. False for
/// other arguments and when 5,000 rounds did not converge.
bool incompleteGammaP(double a, double x, double &result);
bool incompleteGammaQ(double a, double x, double &result);

/// The regularized incomplete beta function I_x(a, b), a, b > 0, 0 <= x <= 1. False for other
/// arguments and when 5,000 rounds did not converge.
/// @param y  1 - x, which callers can often compute without cancellation.
bool incompleteBeta(double a, double b, double x, double y, double &result);

/// The standard normal distribution function; false for an infinity or NaN.
bool normalP(double x, double &p);

/// Its inverse: minus infinity at 0 and below, plus infinity at 1 and above.
double normalQuantile(double p);

} // namespace datainterface
