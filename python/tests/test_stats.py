# SPDX-License-Identifier: MIT
"""Distributions and corrections against SciPy and plain loops."""

import numpy as np
import pytest
from scipy import stats as theirs

from datainterface import stats

X = np.array([[0.1, 1.0, 2.5], [3.0, 0.0, 7.5]])


@pytest.mark.parametrize("ours, expected", [
    (stats.normal_p(X), theirs.norm.cdf(X)),
    (stats.normal_quantile([0.01, 0.5, 0.999]), theirs.norm.ppf([0.01, 0.5, 0.999])),
    (stats.t_p(X, 7), 1 - 2 * theirs.t.sf(X, 7)),
    (stats.f_p(X, 3, 11), theirs.f.sf(X, 3, 11)),
    (stats.chi_square_p(X, 4), theirs.chi2.sf(X, 4)),
    (stats.chi_square_p(X, 4, lower=True), theirs.chi2.cdf(X, 4)),
    (stats.poisson_p([0, 3, 9], 4.5), theirs.poisson.cdf([-1, 2, 8], 4.5)),
    (stats.binomial_p([0, 3, 9], 9, 0.3), theirs.binom.pmf([0, 3, 9], 9, 0.3)),
    (stats.binomial_p([0, 3, 9], 9, 0.3, cumulative=True), theirs.binom.sf([-1, 2, 8], 9, 0.3)),
], ids=["normal", "quantile", "t", "F", "chi upper", "chi lower", "poisson", "binomial", "cumulated"])
def test_distributions(ours, expected):
    np.testing.assert_allclose(ours, expected, rtol=0, atol=2e-9)


def test_outside_the_domain():
    assert np.isnan(stats.normal_quantile([0.0, 1.0, np.nan])).all()
    assert np.isnan(stats.poisson_p([0.5, -1, 1e12, -1e300, np.inf, np.nan], 2)).all()
    assert isinstance(stats.normal_p(0.0), float) and stats.normal_p(0.0) == 0.5


def test_corrections():
    p = np.array([0.001, 0.2, np.nan, 0.012, 0.049, 0.02, 0.9])
    m, order = 6, np.argsort(np.where(np.isnan(p), 2, p))[:6]
    assert np.flatnonzero(stats.bonferroni(p)).tolist() == [0]
    holm = []
    for rank, index in enumerate(order):
        if p[index] >= 0.05 / (m - rank):
            break
        holm.append(index)
    assert np.flatnonzero(stats.holm(p)).tolist() == sorted(holm)
    ranks = [index for rank, index in enumerate(order, 1) if p[index] < 0.05 * rank / m]
    assert np.flatnonzero(stats.fdr(p)).tolist() == sorted(ranks)
    assert stats.simes(p)[0] and not stats.simes(p)[[2, 6]].any()
    for correction in (stats.bonferroni, stats.holm, stats.simes, stats.fdr):
        masked = np.ma.array(p, mask=np.arange(7) == 0)
        missing = np.where(masked.mask, np.nan, p)
        assert correction(masked).tolist() == correction(missing).tolist()
        assert correction(p.reshape(7, 1)).tolist() == [[flag] for flag in correction(p)]
    assert np.isnan(stats.normal_p(masked)).tolist() == np.isnan(missing).tolist()
    with pytest.raises(ValueError, match="alpha"):
        stats.holm(p, 2)
