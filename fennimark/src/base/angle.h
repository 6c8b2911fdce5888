// SPDX-License-Identifier: MIT
/// Arctangents of directions, four at a time. With the C library's atan2 a short query would spend
/// a third of its time there.
#pragma once

namespace fennimark {

constexpr int kAngles = 4;

/// Computes std::atan2(y[i], x[i]) within 2 ulp for kAngles values, special values included. The
/// results for ordinary values are the same on all machines.
void anglesOf(const double *y, const double *x, double *__restrict angles);

} // namespace fennimark
