// SPDX-License-Identifier: MIT
// The argument is reduced to at most tan(pi / 8) by exchanging the axes and by
//     atan(t) = pi/4 + atan((t - 1) / (t + 1)).
// In that range atan(u) = u + u^3 p(u^2), where p interpolates at the Chebyshev nodes; the relative
// error is below 5e-18. All choices are selections and not branches: directions are unpredictable,
// and without branches the compiler can compute several angles at a time.
#include "base/angle.h"
#include <algorithm>
#include <cmath>

namespace fennimark {
namespace {

constexpr double kTanEighth = 0.41421356237309503;  // tan(pi / 8)
constexpr double kQuarter = 0.78539816339744831;    // pi / 4
constexpr double kHalf = 1.5707963267948966;        // pi / 2, rounded
constexpr double kHalfRest = 6.123233995736766e-17; // pi / 2 - kHalf
// Limits of the larger coordinate: outside of them a step could overflow or underflow.
constexpr double kSmallest = 1e-290;
constexpr double kLargest = 1e300;

// The coefficients of p, the constant term first.
constexpr double kP0 = -0.33333333333333330156;
constexpr double kP1 = 0.19999999999995516545;
constexpr double kP2 = -0.14285714284665680761;
constexpr double kP3 = 0.11111111015187018721;
constexpr double kP4 = -0.090909045753064890845;
constexpr double kP5 = 0.076921831253768920895;
constexpr double kP6 = -0.066645105255089365988;
constexpr double kP7 = 0.058581409048663282818;
constexpr double kP8 = -0.050854078345894842573;
constexpr double kP9 = 0.039230447784793095235;
constexpr double kP10 = -0.019175404711104933678;

double angleOf(double y, double x)
{
    const double across = std::abs(x);
    const double up = std::abs(y);
    const double larger = across > up ? across : up;
    const double smaller = across > up ? up : across;
    const bool turned = smaller > kTanEighth * larger;
    const double u = (turned ? smaller - larger : smaller) / (turned ? smaller + larger : larger);
    const double z = u * u;
    const double z2 = z * z;
    const double z4 = z2 * z2;
    const double low = (kP0 + z * kP1) + z2 * (kP2 + z * kP3);
    const double middle = (kP4 + z * kP5) + z2 * (kP6 + z * kP7);
    const double high = (kP8 + z * kP9) + z2 * kP10;
    const double rest =
        u * z * (low + z4 * (middle + z4 * high)) + (turned ? 0.5 * kHalfRest : 0.0);
    const double octant = (turned ? kQuarter : 0.0) + (u + rest);
    const double quadrant = up > across ? kHalf - (octant - kHalfRest) : octant;
    const double half = x < 0.0 ? 2.0 * kHalf - (quadrant - 2.0 * kHalfRest) : quadrant;
    return std::copysign(half, y);
}

bool isOrdinary(double y, double x)
{
    const double larger = std::max(std::abs(x), std::abs(y));
    return larger > kSmallest && larger < kLargest;
}

} // namespace

void anglesOf(const double *y, const double *x, double *__restrict angles)
{
    for (int i = 0; i < kAngles; ++i)
        angles[i] = angleOf(y[i], x[i]);
    for (int i = 0; i < kAngles; ++i) {
        if (!isOrdinary(y[i], x[i]))
            angles[i] = std::atan2(y[i], x[i]);
    }
}

} // namespace fennimark
