// SPDX-License-Identifier: MIT
/// The shuffle and the weighted sample that iterators and public functions share.
#pragma once

namespace datainterface {

/// 0 to count - 1 in random order, by the exchange walk of R. Durstenfeld, CACM 7 (1964) 420.
void fillShuffled(int *indices, int count);

/// Picks `count` of `n` positions without replacement, each with probability proportional to its
/// weight, in the order drawn. A pick is -1, and uses up no position, for a draw of exactly 0 (one
/// in 2^32) and when the weights that are left sum to 0 or, by rounding, to less. When rounding
/// makes that sum positive although no weight is left, the last free position is picked.
/// @param picked  `n` flags, all clear; clear again on return.
void pickWeighted(const double *weights, int n, char *picked, int *positions, int count);

} // namespace datainterface
