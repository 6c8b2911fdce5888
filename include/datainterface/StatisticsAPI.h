// SPDX-License-Identifier: MIT
/// Random deviates, distribution functions, shuffles and multiple-testing corrections.
///
/// Deviates come from two MT19937 generators of the process, one for everything uniform and one for
/// normal values; equal seeds give equal sequences. They are not locked, so deviates must be drawn
/// on one thread.
///
/// Distribution functions return false for arguments outside their domain, including NaN and
/// infinities, and never give NaN. Their absolute error is at most 1e-9, which is that of their
/// log-gamma series.
#pragma once
#include <QVector>
#include "datainterface/MissingData.h"
#include "datainterface/export.h"

/// Seeds both generators.
DATAINTERFACE_EXPORT void VORN_SetRandomSeed(int seed);

/// Uniform in [0, 1).
DATAINTERFACE_EXPORT double VORN_GetUniformDeviate();
/// Standard normal, by the transform of Box and Muller (1958). Both values of a pair are used.
DATAINTERFACE_EXPORT double VORN_GetNormalDeviate();
/// `n` normal deviates; empty for n < 1.
DATAINTERFACE_EXPORT QVector<double> VORN_GetNormalDeviates(int n);
/// From mean - width / 2 to mean + width / 2, with the mode at the mean.
DATAINTERFACE_EXPORT double VORN_GetTriangularDeviate(double mean, double width);
/// Exponential with that mean.
DATAINTERFACE_EXPORT double VORN_GetExponentialDeviate(double mean);
/// By multiplication for a mean below 12, by rejection from 12 on; 0 for a mean that is not above
/// 0.
DATAINTERFACE_EXPORT int VORN_GetPoissonDeviate(double mean);
/// Successes in `n` trials of probability `p`.
DATAINTERFACE_EXPORT int VORN_GetBinomialDeviate(double p, int n);

/// P(Z <= x).
DATAINTERFACE_EXPORT bool VORN_GetNormalP(double x, double &p);
/// Its inverse by P. J. Acklam's rational approximation, relative error 1.15e-9; 0 < p < 1.
DATAINTERFACE_EXPORT bool VORN_GetNormalQuantile(double p, double &x);
/// P(X < k) for a Poisson variable; mean >= 0, k >= 0.
DATAINTERFACE_EXPORT bool VORN_GetPoissonP(int k, double mean, double &p);
/// P(X = k) of `n` trials; 0 <= k <= n. With n p and n (1 - p) above 20 the normal approximation
/// with continuity correction. 0 whatever k for p = 0, 1 whatever k for p = 1.
DATAINTERFACE_EXPORT bool VORN_GetBinomialP(int n, int k, double p, double &result);
/// P(X >= k) of `n` trials; 0 <= k <= n.
DATAINTERFACE_EXPORT bool VORN_GetCumBinomialP(int n, int k, double p, double &result);
/// P(|T| < |t|) with `df` >= 1 degrees of freedom.
DATAINTERFACE_EXPORT bool VORN_GetTDistP(double t, int df, double &p);
/// P(F > f) with df1 and df2 >= 1 degrees of freedom; f >= 0.
DATAINTERFACE_EXPORT bool VORN_GetFDistP(double f, int df1, int df2, double &p);
/// The lower or the upper tail at x of the chi-square distribution with `df` >= 1 degrees of
/// freedom; x >= 0.
DATAINTERFACE_EXPORT bool VORN_GetChiDistP(double x, int df, bool lowerTail, double &p);

/// 0 to n - 1 in random order.
DATAINTERFACE_EXPORT QVector<int> VORN_ShuffleIds(unsigned int n);
/// The same, but missing ids keep their positions.
DATAINTERFACE_EXPORT QVector<int> VORN_ShuffleIds(unsigned int n, const VORN_MissingData &missing);
/// `count` positions without replacement, each pick with probability proportional to weight, in the
/// order drawn, none twice. Empty for more picks than weights; weights that sum to 0 raise
/// "weightSum". A pick is -1 for a draw of exactly 0 (one in 2^32) and when no weight remains; if
/// rounding leaves a remainder above 0, the last position that has not been picked is taken.
DATAINTERFACE_EXPORT QVector<int> VORN_ChooseRandomIds(int count, const QVector<double> &weights);

/// Indices of the p-values below alpha / m, where m is the number of objects that are not missing.
/// The values of missing objects are tested as well.
DATAINTERFACE_EXPORT QVector<int> VORN_PerformBonferroniCorrection(const QVector<double> &p,
                                                                   const VORN_MissingData &missing,
                                                                   double alpha);
/// S. Holm (1979), Scandinavian J. of Statistics 6, 65-70: step-down. The result is in ascending
/// order of p-value.
DATAINTERFACE_EXPORT QVector<int>
VORN_PerformHolmCorrection(const QVector<double> &p, const VORN_MissingData &missing, double alpha);
/// R. J. Simes (1986), Biometrika 73, 751-754. Goes from the largest p-value down to the first one
/// below alpha / (position + 1). The result is the indices before that one, largest p-value first:
/// those that the procedure does not reject.
DATAINTERFACE_EXPORT QVector<int> VORN_PerformSimesCorrection(const QVector<double> &p,
                                                              const VORN_MissingData &missing,
                                                              double alpha);
/// The thresholds of Y. Benjamini and Y. Hochberg (1995), J. R. Statist. Soc. B 57, 289-300, where
/// each p-value is compared only with the threshold of its own rank. The result is in descending
/// order of p-value.
DATAINTERFACE_EXPORT QVector<int>
VORN_PerformFDRCorrection(const QVector<double> &p, const VORN_MissingData &missing, double alpha);
/// The largest set of objects, taken in ascending order of how often they are flagged by chance, in
/// which the fraction of false flags exceeds `falseFraction` in at most `alpha` of the
/// randomizations.
/// @param randomizations  one vector for each randomization, with one flag for each object; an
///         empty list raises "numRandomizations".
DATAINTERFACE_EXPORT QVector<int>
VORN_PerformJEFCorrection(const QVector<QVector<bool>> &randomizations,
                          const VORN_MissingData &missing, double alpha, double falseFraction);
