// SPDX-License-Identifier: MIT
/// Arctangents of directions, four at a time: a short query would spend a third of its time on the
/// C library's.
#pragma once

namespace fennimark {

constexpr int kAngles = 4;

/// std::atan2(y, x) within 2 ulp for each of them, special values included; the same on all
/// machines.
void anglesOf(const double *y, const double *x, double *__restrict angles);

} // namespace fennimark
