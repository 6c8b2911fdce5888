# SPDX-License-Identifier: MIT
"""Analyses over time."""

import operator
import secrets

import numpy as np

from . import _native
from ._arguments import NUMBER, TEXT, WHOLE, typed
from ._base import expect
from ._dataset import Dataset, GridDataset
from ._geography import VectorGeography
from ._optional import load
from ._progress import reporting
from ._times import for_pandas, stamps, texts_of
from ._weights import WeightSet


def _set_of(dataset, weights):
    expect(dataset, Dataset, "what is analysed")
    if isinstance(weights, str):
        return WeightSet(dataset.geography, _native.find_weight_set(dataset.geography._id, weights))
    held = getattr(weights, "weight_set", weights)
    if isinstance(held, WeightSet):
        if held is not weights and not weights.is_as_read():
            raise ValueError(f"these weights differ from those of the set {held.name}: make a set of "
                             "them with geography.add_weights()")
        return held
    raise TypeError("weights are those of geography.weights(), a weight set, or its name; make a "
                    "set of other weights with geography.add_weights()")


def _run(dataset, weights, at, permutations, seed, local, correction, alpha, islands, store,
         realization, progress):
    if islands not in ("keep", "drop"):
        raise ValueError("islands are kept or dropped: \"keep\" or \"drop\"")
    if correction not in ("none", "bonferroni", "holm", "simes", "fdr", "jef"):
        raise ValueError(f"{correction!r} is no correction: none, bonferroni, holm, simes, fdr, jef")
    if not 0 <= operator.index(permutations) <= 1000000:
        raise ValueError("permutations are 0 to 1000000")
    if not 0 <= alpha <= 1:
        raise ValueError("alpha is a probability, 0 to 1")
    if seed is None:
        seed = 1 + secrets.randbelow(2**31 - 2)
    elif not 0 <= seed < 2**31:
        raise ValueError("a seed is 0 to 2147483647")
    held = _set_of(dataset, weights)
    with reporting(progress) as report:
        found = _native.moran(
            dataset._id, dataset._index(realization), held._id, texts_of(at, dataset._form),
            permutations, seed, local, correction, alpha, islands == "drop", store or "", report)
    return found, seed


def _times_of(dataset, found):
    spans = np.concatenate([row[0] for row in found]) if found else np.zeros((0, 3), dtype=np.int64)
    return for_pandas(stamps(spans[:, 0], dataset._form))


@typed(permutations=WHOLE, seed=WHOLE, islands=TEXT, store=TEXT)
def moran(dataset, weights, *, at=None, permutations=999, seed=None, islands="keep", store=None,
          realization=1, progress=None):
    """Moran's I at each time, with a permutation test.

    Parameters
    ----------
    dataset : Dataset
        Of numbers.
    weights : SpatialWeights, WeightSet or str
        The set is used at all times, whatever the time of the weights.
    at : time or times, optional
        By default all times of the dataset.
    permutations : int
        0 for no test.
    seed : int, optional
        Equal seeds give equal results. By default a random one, which the frame tells.
    islands : {"keep", "drop"}
        Whether objects without neighbours count.
    store : str, optional
        Also stores the results as the datasets "NAME I" and "NAME p".
    progress : callable or bar, optional
        See :func:`open`.

    Returns
    -------
    pandas.DataFrame
        With the columns time, I, expectation, p, permutations and seed. ``p`` is one-sided. The
        standard deviate and the number of objects of each row are in ``frame.attrs``.

    Raises
    ------
    ValueError
        For texts, weights of another geography, and a time without values.
    """
    pandas = load("pandas")
    found, seed = _run(dataset, weights, at, permutations, seed, False, "none", 0.05, islands,
                       store, realization, progress)
    frame = pandas.DataFrame({
        "time": _times_of(dataset, found),
        "I": [row[1] for row in found],
        "expectation": [row[2] for row in found],
        "p": [row[4] for row in found],
        "permutations": permutations,
        "seed": seed,
    })
    frame.attrs["z"] = [row[3] for row in found]
    frame.attrs["objects"] = [row[5] for row in found]
    return frame


@typed(permutations=WHOLE, seed=WHOLE, correction=TEXT, alpha=NUMBER, islands=TEXT, store=TEXT)
def local_moran(dataset, weights, *, at=None, permutations=999, seed=None, correction="none",
                alpha=0.05, islands="keep", store=None, realization=1, progress=None):
    """Moran's I of each object, with conditional permutations.

    The other parameters are those of :func:`moran`.

    Parameters
    ----------
    correction : {"none", "bonferroni", "holm", "simes", "fdr", "jef"}
        For many tests.
    alpha : float
        The level at which a cluster is named.

    Returns
    -------
    pandas.DataFrame
        With the columns time, key, I, z, p and cluster: "high-high", "low-low", "high-low",
        "low-high" or "not significant".
    """
    pandas = load("pandas")
    found, seed = _run(dataset, weights, at, permutations, seed, True, correction, alpha, islands,
                       store, realization, progress)
    keys = getattr(dataset.geography, "object_keys", None)
    if keys is None:
        keys = np.arange(dataset.geography.count)
    times = _times_of(dataset, found)
    frames = [pandas.DataFrame({
        "time": times[number], "key": keys[row[7]["objects"]], "I": row[7]["I"], "z": row[7]["z"],
        "p": row[7]["p"], "cluster": row[7]["cluster"]}) for number, row in enumerate(found)]
    columns = ["time", "key", "I", "z", "p", "cluster"]
    frame = pandas.concat(frames, ignore_index=True) if frames else pandas.DataFrame(columns=columns)
    frame.attrs["seed"] = seed
    frame.attrs["permutations"] = permutations
    return frame


@typed(store=TEXT, statistic=TEXT)
def zonal(dataset, polygons, *, at=None, store=None, statistic="mean", realization=1,
          progress=None):
    """Statistics of a grid over polygons, each cell weighted by the area that it shares with one.

    Parameters
    ----------
    dataset : GridDataset
    polygons : VectorGeography
    at : time or times, optional
        By default all times of the dataset.
    store : str, optional
        Also stores a statistic as a dataset of the polygons, over the spans of the grids.
    statistic : {"mean", "stddev", "min", "max", "sum", "area"}
        That is stored.

    Returns
    -------
    pandas.DataFrame
        With the columns time, key, cells, mean, stddev, min, max, sum and area: sums of value times
        area, in map units. NaN where no cell has a value.
    """
    pandas = load("pandas")
    expect(dataset, GridDataset, "what is summed up")
    if not isinstance(polygons, VectorGeography):
        raise TypeError("zones are a geography of polygons")
    with reporting(progress) as report:
        found = _native.zonal(dataset._id, dataset._index(realization), polygons._id,
                              texts_of(at, dataset._form), store or "", statistic, report)
    times = _times_of(dataset, found)
    keys = polygons.object_keys
    frames = []
    for number, (_, cells, columns) in enumerate(found):
        frame = pandas.DataFrame({"time": times[number], "key": keys, "cells": cells, **columns})
        frame.loc[cells == 0, list(columns)] = np.nan
        frames.append(frame)
    return pandas.concat(frames, ignore_index=True)
