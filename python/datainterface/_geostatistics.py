# SPDX-License-Identifier: MIT
"""Variograms and their models, kriging and simulation."""

import math
import secrets
from typing import NamedTuple

import numpy as np

from . import _native
from ._arguments import ARRAY, FLAG, NUMBER, NUMBERS, TEXT, WHOLE, typed
from ._base import expect
from ._dataset import Dataset, GridDataset, dataset_of
from ._geography import Geography, Grid, geography_of
from ._optional import load
from ._progress import reporting
from ._times import text_of, texts_of

_WEIGHTS = {"pairs/distance": 0, "pairs": 1, "cressie": 2, "equal": 3}


class Structure(NamedTuple):
    """A structure of a variogram model.

    ``range`` applies along ``direction`` (degrees counter-clockwise from the x axis) and ``major``
    across it; in a power structure they are the exponent.
    """

    kind: str
    sill: float
    range: float
    major: float
    direction: float


class VariogramModel:
    """Nested structures: the semivariance by separation.

    Parameters
    ----------
    text : str
        Such as ``"nugget:0.05,spherical:0.59:897"``: kind, sill and range of each structure, and
        for an anisotropic one the range across and the direction in degrees.

    Raises
    ------
    ValueError
        For a text that is no model.
    """

    def __init__(self, text):
        self._text = _native.model_text(str(text))

    @property
    def structures(self):
        """The structures, a list of :class:`Structure`."""
        return [Structure(kind, sill, along, across, math.degrees(angle))
                for kind, sill, along, across, angle in _native.model_structures(self._text)]

    @property
    def sill(self):
        """The sum of the sills; infinite with a power structure."""
        if any(structure.kind == "power" for structure in self.structures):
            return math.inf
        return sum(structure.sill for structure in self.structures)

    @typed(separation=ARRAY, direction=ARRAY)
    def __call__(self, separation, direction=0.0):
        """The semivariance at separations in map units, in directions in degrees."""
        h, angle = np.broadcast_arrays(np.asarray(separation, dtype=float),
                                       np.radians(np.asarray(direction, dtype=float)))
        values = _native.model_values(self._text, np.ascontiguousarray(h).ravel(),
                                      np.ascontiguousarray(angle).ravel()).reshape(h.shape)
        return float(values) if values.ndim == 0 else values

    def __str__(self):
        return self._text

    def __repr__(self):
        return f"VariogramModel({self._text!r})"

    def __eq__(self, other):
        return self._text == other._text if isinstance(other, VariogramModel) else NotImplemented

    def __hash__(self):
        return hash(self._text)


class Variogram:
    """An empirical variogram, and the model that was fitted to it.

    Attributes
    ----------
    classes : pandas.DataFrame
        With the columns direction (degrees), lag (the mean separation), value and pairs.
    colocated : tuple
        The mean value and the number of pairs at the same place.
    samples : int
        The number of values.
    time : str
        The time as text.
    model : VariogramModel or None
    squares : float or None
        The weighted sum of squared residuals of the model.
    converged : bool or None
    remark : str
        Why the fit did not converge, or what is doubtful.
    """

    def __init__(self, dataset, row):
        pandas = load("pandas")
        (span,), self.samples, bins, colocated, fitted = row
        geography = dataset.geography
        self.time = _native.show_span(geography._id, int(span[0]), int(span[1]), bool(span[2]))
        self.classes = pandas.DataFrame(bins, columns=["direction", "lag", "value", "pairs"])
        self.classes["direction"] = np.degrees(self.classes["direction"])
        self.colocated = colocated[2:]
        self._name = dataset.name
        self.model = self.squares = self.converged = None
        self.remark = ""
        if fitted is not None:
            self.model = VariogramModel(fitted[0])
            _, _, self.squares, self.converged, self.remark = fitted

    def __repr__(self):
        return (f"<Variogram of {self._name} at {self.time}: {self.samples} values, "
                f"{len(self.classes)} classes, model {self.model}>")


@typed(pooled=FLAG, scores=FLAG, cutoff=NUMBER, width=NUMBER, directions=NUMBERS, tolerance=NUMBER,
       estimator=TEXT, model=TEXT, nugget=NUMBER, anisotropic=FLAG, weights=TEXT,
       exact_minimum=FLAG, store=TEXT)
def variogram(dataset, at=None, *, other=None, pooled=False, scores=False, cutoff=0.0, width=0.0,
              directions=(), tolerance=22.5, estimator="classical", model="auto", nugget=None,
              anisotropic=False, weights="pairs/distance", exact_minimum=False, store=None,
              realization=1, progress=None):
    """The empirical variogram of a dataset, and a model fitted to it.

    Parameters
    ----------
    dataset : Dataset
        Of numbers, at points, centroids of polygons or cells.
    at : time, optional
        By default the last.
    other : Dataset, optional
        Of the same geography, for the cross variogram.
    pooled : bool
        Of the pairs of all times; pairs are made within a time.
    scores : bool
        Of the normal scores of the values.
    cutoff, width : float
        The largest separation and the width of a class, in map units. By default a third of the
        diagonal and a fifteenth of the cutoff.
    directions : iterable of float
        Degrees counter-clockwise from the x axis; none for all directions together.
    tolerance : float
        The largest angle to a direction, in degrees.
    estimator : {"classical", "robust"}
    model : str
        ``"auto"`` for the best one, ``"none"``, or structures besides the nugget, separated by
        commas: spherical, exponential, gaussian, power, cubic.
    nugget : float, optional
        Fixed at this value.
    anisotropic : bool
        Two ranges and a direction.
    weights : {"pairs/distance", "pairs", "cressie", "equal"}
    exact_minimum : bool
        The least sum of squares also for a single Gaussian structure.
    store : str, optional
        Keeps the model in the project under this name.

    Returns
    -------
    Variogram

    Raises
    ------
    ValueError
        For texts, fewer than two values, and fewer classes than parameters of the model.
    """
    expect(dataset, Dataset, "what is sampled")
    if estimator not in ("classical", "robust"):
        raise ValueError("an estimator is classical or robust")
    if weights not in _WEIGHTS:
        raise ValueError(f"weights are one of {', '.join(_WEIGHTS)}")
    directions = [math.radians(each) for each in directions]
    if anisotropic and not directions:
        directions = [math.radians(each) for each in (0, 45, 90, 135)]
    plan = {
        "other": -1 if other is None else expect(other, Dataset, "the other one"),
        "pooled": pooled, "scores": scores,
        "cutoff": float(cutoff), "width": float(width), "directions": directions,
        "tolerance": math.radians(tolerance), "robust": estimator == "robust", "model": str(model),
        "nugget": None if nugget is None else float(nugget), "anisotropic": anisotropic,
        "exact_minimum": exact_minimum, "weights": _WEIGHTS[weights]}
    index = dataset._index(realization)
    times = [] if pooled and at is None else [_time(dataset, at, index)]
    with reporting(progress) as report:
        rows = _native.variogram(dataset._id, index, times, plan, store or "", report)
    return Variogram(dataset, rows[0])


def _time(dataset, at, index=0):
    """A time as text; by default the last of the dataset."""
    if at is not None:
        return text_of(at, dataset._form)
    return _native.show_time(dataset.geography._id, dataset._instant(None, index))


@typed(name=TEXT)
def stored_model(dataset, name, at=None):
    """A model that is kept in the project.

    Raises
    ------
    KeyError
        If neither the dataset nor the project has a model of that name.
    """
    expect(dataset, Dataset, "the owner of a model")
    text, _ = _native.stored_model(dataset._id, name, dataset._instant(at))
    return VariogramModel(text)


@typed(name=TEXT, cell=NUMBER, bounds=NUMBERS)
def make_grid(name, cell, like, bounds=None):
    """Adds a grid of square cells, with the coordinate system and the times of a dataset.

    Parameters
    ----------
    name : str
    cell : float
        The side of a cell, in map units.
    like : Dataset
    bounds : (left, bottom, right, top), optional
        By default those of the dataset's geography.

    Returns
    -------
    Grid
    """
    expect(like, Dataset, "what a grid is like")
    left, bottom, right, top = like.geography.bounds if bounds is None else map(float, bounds)
    return geography_of(like.project,
                        _native.make_grid(name, float(cell), left, bottom, right, top, like._id))


class KrigedAt(NamedTuple):
    """What kriging did at a time."""

    time: str
    samples: int
    merged: int
    without_drift: int
    predictions: int
    missing: int
    mean_variance: float


class Kriged(NamedTuple):
    """The datasets of the predictions and their variances, and what was done at each time."""

    prediction: object
    variance: object
    times: list


class Validation(NamedTuple):
    """Errors are predictions less values; the ratio is of squared errors to kriging variances."""

    mean_error: float
    root_mean_square: float
    mean_squared_ratio: float
    correlation: float


def _plan(model, target, name, mean, drift, external, neighbors, least, quadrants, radius, block):
    return {
        "model": str(model), "target": expect(target, Geography, "a target"), "name": name,
        "mean": None if mean is None else float(mean), "drift": drift,
        "external": -1 if external is None else expect(external, GridDataset, "an external drift"),
        "neighbors": neighbors, "least": least, "quadrants": quadrants,
        "radius": None if radius is None else float(radius), "block": block}


@typed(name=TEXT, mean=NUMBER, drift=WHOLE, neighbors=WHOLE, least=WHOLE, quadrants=WHOLE,
       radius=NUMBER, block=WHOLE)
def krige(dataset, model, target, name, *, at=None, mean=None, drift=0, external=None,
          neighbors=20, least=1, quadrants=0, radius=None, block=0, realization=1, progress=None):
    """Predicts a dataset at the objects or cells of a geography.

    Parameters
    ----------
    dataset : Dataset
    model : VariogramModel or str
        Structures, or the name of a stored model.
    target : Geography
    name : str
        Of the prediction; the variance is "NAME variance".
    at : time or times, optional
        By default all times.
    mean : float, optional
        The known mean, for simple kriging.
    drift : int
        The degree of a polynomial drift in x and y, 0 to 2.
    external : GridDataset, optional
        An external drift.
    neighbors, least, quadrants : int
        The nearest values that are used (0: all), the fewest, and the most in each quadrant
        (0: no limit).
    radius : float, optional
        The largest distance of a neighbour, in map units.
    block : int
        Predicts means over cells or polygons, with so many points along a side.

    Returns
    -------
    Kriged
    """
    expect(dataset, Dataset, "what is predicted")
    plan = _plan(model, target, name, mean, drift, external, neighbors, least, quadrants, radius,
                 block)
    with reporting(progress) as report:
        prediction, variance, rows = _native.krige(
            dataset._id, dataset._index(realization), texts_of(at, dataset._form), plan, report)
    number = dataset.geography._id
    times = [KrigedAt(_native.show_span(number, int(span[0]), int(span[1]), bool(span[2])), *facts)
             for (span,), *facts in rows]
    return Kriged(dataset_of(target, prediction), dataset_of(target, variance), times)


@typed(folds=WHOLE, seed=WHOLE, mean=NUMBER, drift=WHOLE, neighbors=WHOLE, least=WHOLE,
       quadrants=WHOLE, radius=NUMBER)
def cross_validate(dataset, model, *, at=None, folds=0, seed=1, mean=None, drift=0, external=None,
                   neighbors=20, least=1, quadrants=0, radius=None, realization=1, progress=None):
    """Predicts each value from those of the other folds.

    The other parameters are those of :func:`krige`.

    Parameters
    ----------
    folds : int
        0: each value is a fold.
    seed : int
        Of the folds.

    Returns
    -------
    Validation
    """
    expect(dataset, Dataset, "what is predicted")
    plan = _plan(model, dataset.geography, "", mean, drift, external, neighbors, least, quadrants,
                 radius, 0)
    with reporting(progress) as report:
        error, square, ratio, correlation = _native.cross_validate(
            dataset._id, dataset._index(realization), texts_of(at, dataset._form), plan, folds,
            seed, report)
    return Validation(error, math.sqrt(square), ratio, correlation)


@typed(name=TEXT, count=WHOLE, scores=FLAG, mean=NUMBER, neighbors=WHOLE, radius=NUMBER, seed=WHOLE)
def simulate(dataset, grid, name, *, model="", count=1, at=None, scores=True, mean=None,
             neighbors=20, radius=None, seed=None, realization=1, progress=None):
    """Draws realizations of a dataset on a grid: sequential Gaussian simulation.

    Parameters
    ----------
    dataset : Dataset or None
        None for an unconditional simulation, which needs a model.
    grid : Grid
    name : str
        Of the new dataset.
    model : VariogramModel or str
        By default the best fit.
    count : int
        Of realizations.
    at : time, optional
        By default the last.
    scores : bool
        Whether the values are simulated by their normal scores.
    mean : float, optional
        Without scores; by default the mean of the values.
    seed : int, optional
        Equal seeds give equal realizations; by default a random one.

    Returns
    -------
    GridDataset
    """
    if not isinstance(grid, Grid):
        raise TypeError("a simulation is made on a grid")
    if dataset is not None:
        expect(dataset, Dataset, "what is simulated")
    if count < 1:
        raise ValueError("there is at least one realization")
    plan = {"name": name, "model": str(model), "scores": scores and dataset is not None,
            "mean": None if mean is None else float(mean), "count": count, "neighbors": neighbors,
            "radius": None if radius is None else float(radius),
            "seed": 1 + secrets.randbelow(2**31 - 2) if seed is None else seed}
    index = 0 if dataset is None else dataset._index(realization)
    when = "" if dataset is None else _time(dataset, at, index)
    with reporting(progress) as report:
        number, *_ = _native.simulate(-1 if dataset is None else dataset._id, index, when, grid._id,
                                      plan, report)
    return dataset_of(grid, number)


@typed(mean=FLAG, deviation=FLAG, quantiles=NUMBERS, above=NUMBERS, store=TEXT)
def summarize_realizations(dataset, at=None, *, mean=False, deviation=False, quantiles=(), above=(),
                           reference=None, store=None, progress=None):
    """What the realizations have in common at each cell or object.

    Parameters
    ----------
    at : time, optional
        By default the last.
    mean, deviation : bool
        The mean and the standard deviation, with n - 1.
    quantiles : iterable of float
        Shares from 0 to 1.
    above : iterable of float
        Limits: the share of the realizations with larger values.
    reference : Dataset, optional
        The values whose normal scores were simulated.
    store : str, optional
        Also stores the answers as datasets "NAME mean" and so on.

    Returns
    -------
    dict
        Arrays by object index, or by row and column, under "mean", "deviation", "quantile 0.05" and
        so on. NaN where no realization has a value.
    """
    expect(dataset, Dataset, "what has realizations")
    if reference is not None:
        expect(reference, Dataset, "a reference")
    with reporting(progress) as report:
        answers = _native.ask_realizations(
            dataset._id, _time(dataset, at), mean, deviation, [float(each) for each in quantiles],
            [float(each) for each in above], -1 if reference is None else reference._id,
            store or "", report)
    return {name: dataset._shaped(values, None) for name, values in answers}
