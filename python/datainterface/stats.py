# SPDX-License-Identifier: MIT
"""Distributions and corrections for many tests, without a project.

Functions of numbers take arrays and give arrays of the same shape, with NaN outside their domain.
Their absolute error is at most 1e-9.
"""

import numpy as np

from . import _native
from ._arguments import ARRAY, FLAG, NUMBER, WHOLE, typed

__all__ = ["binomial_p", "bonferroni", "chi_square_p", "f_p", "fdr", "holm", "normal_p",
           "normal_quantile", "poisson_p", "simes", "t_p"]


def _each(function, values, *parameters):
    """A function of numbers; masked values are missing."""
    if isinstance(values, np.ma.MaskedArray):
        values = np.ma.filled(values.astype(float), np.nan)
    result = function(values, *parameters)
    return float(result) if np.ndim(values) == 0 else result


@typed(x=ARRAY)
def normal_p(x):
    """P(Z <= x) of the standard normal distribution."""
    return _each(_native.normal_p, x)


@typed(p=ARRAY)
def normal_quantile(p):
    """The inverse of :func:`normal_p`, with a relative error of 1.15e-9."""
    return _each(_native.normal_quantile, p)


@typed(t=ARRAY, df=WHOLE)
def t_p(t, df):
    """``P(|T| < |t|)`` with `df` degrees of freedom, 1 or more."""
    return _each(_native.t_p, t, df)


@typed(f=ARRAY, df1=WHOLE, df2=WHOLE)
def f_p(f, df1, df2):
    """P(F > f)."""
    return _each(_native.f_p, f, df1, df2)


@typed(x=ARRAY, df=WHOLE, lower=FLAG)
def chi_square_p(x, df, *, lower=False):
    """The upper tail at x of the chi-square distribution, or the lower one."""
    return _each(_native.chi_square_p, x, df, lower)


@typed(k=ARRAY, mean=NUMBER)
def poisson_p(k, mean):
    """P(X < k) of a Poisson variable."""
    return _each(_native.poisson_p, k, mean)


@typed(k=ARRAY, n=WHOLE, p=NUMBER, cumulative=FLAG)
def binomial_p(k, n, p, *, cumulative=False):
    """P(X = k) of n trials of probability p; P(X >= k) if `cumulative`."""
    return _each(_native.binomial_p, k, n, p, cumulative)


def _flags(function, p, alpha):
    """The tests that a correction chooses, in the shape of `p`; a missing p is no test."""
    if not 0 <= alpha <= 1:
        raise ValueError("alpha is a probability, 0 to 1")
    p = np.atleast_1d(np.ma.filled(np.ma.asarray(p).astype(float), np.nan))
    flags = np.zeros(p.size, dtype=bool)
    flags[function(p.ravel(), alpha)] = True
    return flags.reshape(p.shape), np.isnan(p)


@typed(p=ARRAY, alpha=NUMBER)
def bonferroni(p, alpha=0.05):
    """Which tests are significant: p below alpha divided by their number.

    Parameters
    ----------
    p : array
        Probabilities; NaN and masked ones are no tests.
    alpha : float

    Returns
    -------
    numpy.ndarray of bool
        In the shape of `p`.
    """
    return _flags(_native.bonferroni, p, alpha)[0]


@typed(p=ARRAY, alpha=NUMBER)
def holm(p, alpha=0.05):
    """The same by S. Holm (1979), Scandinavian Journal of Statistics 6, 65-70."""
    return _flags(_native.holm, p, alpha)[0]


@typed(p=ARRAY, alpha=NUMBER)
def simes(p, alpha=0.05):
    """The same by R. J. Simes (1986), Biometrika 73, 751-754."""
    failed, missing = _flags(_native.simes, p, alpha)
    return ~failed & ~missing


@typed(p=ARRAY, alpha=NUMBER)
def fdr(p, alpha=0.05):
    """The same by Y. Benjamini and Y. Hochberg (1995), Journal of the Royal Statistical Society B
    57, 289-300, where each p is compared with the threshold of its own rank alone."""
    return _flags(_native.fdr, p, alpha)[0]
