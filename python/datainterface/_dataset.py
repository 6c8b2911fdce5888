# SPDX-License-Identifier: MIT
"""Datasets: the values of one attribute over time and over realizations."""

import operator
from typing import NamedTuple

import numpy as np

from . import _native
from ._arguments import FLAG, TEXT, WHOLE, check, typed
from ._base import Part, telling
from ._geography import _rows, objects_of
from ._optional import load
from ._progress import reporting
from ._times import for_pandas, for_xarray, stamps, text_of


#: Times that are looked up by themselves; 1, 1.0 and True would be the same key.
_PLAIN = frozenset((int, str))


class Statistics(NamedTuple):
    """Statistics of values: NaN without values; ``deviation`` divides by n, and is NaN over all
    times of a dataset that changes."""

    count: int  # type: ignore[assignment]
    mean: float
    deviation: float
    minimum: float
    maximum: float


def dataset_of(geography, number):
    from ._geography import Grid

    return (GridDataset if isinstance(geography, Grid) else VectorDataset)(geography, number)


class Dataset(Part):
    """Values of a geography, over time and over realizations, which are counted from 1."""

    __slots__ = ("_geography", "_form", "_known")

    def __init__(self, geography, number):
        super().__init__(geography.project, number)
        self._geography = geography
        self._form = geography.time_format
        self._known = {}  # instants by text or number, which are asked for in loops

    @property
    def geography(self):
        """The geography of the objects or cells."""
        return self._geography

    @property
    def _facts(self):
        return _native.describe_dataset(self._id)

    @property
    def name(self):
        """The name; set it to rename the dataset."""
        return self._facts["name"]

    @name.setter
    def name(self, name):
        check("a name", name, TEXT)
        _native.rename_dataset(self._id, name)

    @property
    def kind(self):
        """``"decimal"``, ``"integer"`` or ``"text"``; of grids also ``"unsigned"``, ``"colors"``."""
        return self._facts["type"]

    @property
    def storage(self):
        """``"slices"``, ``"series"`` or ``"grids"``."""
        return self._facts["storage"]

    @property
    def static(self):
        """Whether the values hold at all times."""
        return self._facts["static"]

    @property
    def realizations(self):
        """The number of realizations."""
        return self._facts["realizations"]

    @property
    def unit(self):
        """The unit of the values, or an empty text; set it to change it."""
        return self._facts["unit"]

    @unit.setter
    def unit(self, unit):
        check("a unit", unit, TEXT)
        _native.set_unit(self._id, unit)

    @property
    def times(self):
        """The starts of the spans that have values, in order, as :attr:`Geography.times`."""
        return stamps(self._spans()[:, 0], self._form)

    def _spans(self, realization=0):
        return _native.dataset_times(self._id, realization)

    def _index(self, realization):
        if type(realization) is int and realization == 1:
            return 0
        try:
            number = operator.index(realization)
        except TypeError:
            raise TypeError(f"a realization is a number from 1, not {realization!r}") from None
        return _native.realization_index(self._id, min(max(number, -1), 2**31 - 1))

    def _instant(self, at, index=0):
        plain = type(at) in _PLAIN
        if plain and at in self._known:
            return self._known[at]
        instant = _native.dataset_instant(self._id, text_of(at, self._form), index)
        if plain and len(self._known) < 10000:
            self._known[at] = instant
        return instant

    def values(self, at=None, realization=1):
        """The values at a time, as they are held: the fastest way to read them.

        Parameters
        ----------
        at : time, optional
            By default the last.
        realization : int
            From 1.

        Returns
        -------
        numpy.ndarray
            By object index, or by row and column of a grid. Decimals and cells are float64, NaN
            where missing. Integers are int32 or, if one is missing, a masked array. Texts are
            objects, None where missing. The array is the caller's own.

        Raises
        ------
        ValueError
            For a text that is no time, and for a grid without cells at the time. Objects of a
            vector geography are all missing at a time without values.
        """
        index = self._index(realization)
        instant = self._known.get(at) if type(at) in _PLAIN else None
        if instant is None:
            instant = self._instant(at, index)
        values, mask = _native.values(self._id, instant, index)
        return self._shaped(values, mask)

    def statistics(self, at=None, *, realization=1):
        """Statistics of the values at a time; without one, of all times.

        Returns
        -------
        Statistics

        Raises
        ------
        ValueError
            For texts.
        """
        index = self._index(realization)
        time = None if at is None else self._instant(at, index)
        return Statistics(*_native.statistics(self._id, time, index))

    def describe(self, *, realization=1):
        """Statistics of each time.

        Returns
        -------
        pandas.DataFrame
            By time, with the columns count, mean, deviation, minimum and maximum.
        """
        pandas = load("pandas")
        index = self._index(realization)
        spans = self._spans(index)
        rows = [_native.statistics(self._id, int(_instant_of(span)), index) for span in spans]
        times = for_pandas(stamps(spans[:, 0], self._form))
        return pandas.DataFrame(rows, columns=Statistics._fields,
                                index=pandas.Index(times, name="time"))

    @typed(count=WHOLE, method=TEXT)
    def classes(self, count=5, method="jenks", at=None, *, realization=1, progress=None):
        """Class limits.

        Parameters
        ----------
        count : int
            Of classes.
        method : {"jenks", "quantile", "equal"}
            Natural breaks, quantiles or equal intervals.
        at : time, optional
            By default the limits are those of the values of all times.

        Returns
        -------
        numpy.ndarray
            ``count + 1`` limits, ascending. A class includes its upper limit. Empty without values.
        """
        count = operator.index(count)
        if count < 1:
            raise ValueError("there is at least one class")
        index = self._index(realization)
        time = None if at is None else self._instant(at, index)
        with reporting(progress) as report:
            return _native.breaks(self._id, method, count, time, index, report)

    def frequencies(self, *, realization=1):
        """How often each value occurs, over all times.

        Returns
        -------
        pandas.Series
            By value, ascending.
        """
        pandas = load("pandas")
        pairs = _native.frequencies(self._id, self._index(realization))
        index = pandas.Index([value for value, _ in pairs], name=self.name)
        return pandas.Series([count for _, count in pairs], index=index, name="count",
                             dtype="int64")

    @property
    def variogram_models(self):
        """The names of the variogram models of the dataset; see :func:`stored_model`."""
        return _native.model_names(self._id)

    @telling
    def __repr__(self):
        facts = self._facts
        times = "static" if facts["static"] else f"{len(self._spans())} times"
        more = f", {facts['realizations']} realizations" if facts["realizations"] > 1 else ""
        unit = f" in {facts['unit']}" if facts["unit"] else ""
        return (f"<{type(self).__name__} {facts['name']} of {self._geography.name}: "
                f"{facts['type']}{unit}, {times}{more}>")

    @telling
    def _repr_html_(self):
        from ._html import dataset_html

        return dataset_html(self)


def _instant_of(span):
    """An instant in a span (start, end, whether the end is included)."""
    return span[0]


def _limits(spans, form):
    """Starts and ends of spans as the library counts them; an end is the first time after the span,
    since times are whole numbers of seconds, days or steps."""
    return spans[:, 0], spans[:, 1] + np.where(spans[:, 2] == 1, 86400 if form == "date" else 1, 0)


def half_open(spans, form):
    """Starts and ends of spans as times; an end is the first time after the span."""
    starts, ends = _limits(spans, form)
    return stamps(starts, form), stamps(ends, form)


class VectorDataset(Dataset):
    """Values of the objects of a vector geography."""

    __slots__ = ()

    def _shaped(self, values, mask):
        if isinstance(values, list):
            array = np.empty(len(values), dtype=object)
            array[:] = values
            return array
        return values if mask is None else np.ma.array(values, mask=mask)

    def at(self, time=None, *, realization=1):
        """The values at a time, by default the last.

        Returns
        -------
        pandas.Series
            By key, for all objects of the geography. Missing values are NA: NaN of decimals, and
            ``pandas.NA`` of integers and texts.
        """
        pandas = load("pandas")
        index = self._index(realization)
        values, mask = _native.values(self._id, self._instant(time, index), index)
        if isinstance(values, list):
            values = pandas.array(values, dtype="string")
        elif values.dtype.kind == "i":
            values = pandas.arrays.IntegerArray(
                values, np.zeros(len(values), dtype=bool) if mask is None else mask)
        return pandas.Series(values, name=self.name,
                             index=pandas.Index(self._geography.object_keys, name="key"))

    def missing(self, at=None, *, realization=1):
        """The keys of the objects without a value at a time."""
        values = self.at(at, realization=realization)
        return values.index[values.isna().to_numpy()].to_numpy()

    def series(self, key, *, realization=1):
        """The values of one object over time.

        Returns
        -------
        pandas.DataFrame
            With the columns start, end and value.

        Raises
        ------
        KeyError
            For an unknown key.
        """
        pandas = load("pandas")
        spans, values = _native.history(
            self._id, int(objects_of(self._geography, [key])[0]), self._index(realization))
        # The last number or day of the span, and the end of a span of moments, as to_frame tells it.
        step = {"number": 1, "date": 86400}.get(self._form, 0)
        ends = spans[:, 1] - np.where(spans[:, 2] == 0, step, 0)
        kind = {"decimal": "float64", "integer": "Int64", "text": "object"}[self.kind]
        return pandas.DataFrame({
            "start": for_pandas(stamps(spans[:, 0], self._form)),
            "end": for_pandas(stamps(ends, self._form)),
            "value": pandas.Series(values, dtype=kind)})

    def to_frame(self, *, realization=None, progress=None):
        """All values in the long form.

        Parameters
        ----------
        realization : int, optional
            By default all.

        Returns
        -------
        pandas.DataFrame
            With the columns key, start, end and value, and the column realization before value if
            there are several. Spans without a value, and times at which an object does not exist,
            have no row. ``end`` is the last day of a span of days.
        """
        index = None if realization is None else self._index(realization)
        parts = ["key", "start", "end"]
        if self.realizations > 1 and realization is None:
            parts.append("realization")
        frame = _rows(self._geography, [self], parts, realization=index, progress=progress)
        frame.columns = parts + ["value"]
        return frame[frame["value"].notna()].reset_index(drop=True)

    def to_xarray(self, *, progress=None):
        """All values as an array.

        Returns
        -------
        xarray.DataArray
            With the dimensions object, time and, if there are several, realization; without time
            if the dataset is static. ``time`` is the start of each span and ``time_end`` the first
            time after it. Missing numbers are NaN.
        """
        xarray = load("xarray")
        coordinates = {"object": self._geography.object_keys}
        data = _stack(self, (self._geography.count,), coordinates, progress)
        return _array(xarray, self, ("object",), data, coordinates)

    @typed(overwrite=FLAG)
    def add(self, values, *, at=None, end=None, overwrite=True, realization=1):
        """Adds values. Nothing is added unless all can be.

        Parameters
        ----------
        values : pandas.DataFrame or pandas.Series
            A frame as :meth:`to_frame` gives it: the columns key and value and, unless the dataset
            is static, start and possibly end, or time. A series by key, with ``at``. Rows without a
            value are left out. Without an end a value holds for the whole time: ``"1999-09"`` is a
            month, a date or a time of pandas a day.
        at, end : time, optional
            The span of a series: the whole of ``at``, such as a year, or from ``at`` to ``end``.
        overwrite : bool
            Whether a value replaces a present one, or is left out where there is one.

        Raises
        ------
        KeyError
            For an unknown key or a frame without a column.
        ValueError
            For a value of another kind, and for two values of an object at one time.
        """
        from ._adding import add

        add(self, values, at, end, overwrite, self._index(realization))

    def set_missing(self, key, at, end=None, *, realization=1):
        """Takes away the value of an object over a span of time."""
        index = int(objects_of(self._geography, [key])[0])
        start, stop, closed = (0, 0, True) if self.static else self._geography._span(at, end)
        _native.set_missing(self._id, self._index(realization), index, start, stop, closed)


class GridDataset(Dataset):
    """Values of the cells of a grid."""

    __slots__ = ()

    def _shaped(self, values, mask):
        return values.reshape(self._geography.rows, self._geography.columns)

    def at(self, time=None, *, realization=1):
        """The cells at a time, by default the last.

        Returns
        -------
        xarray.DataArray
            With the dimensions y and x; NaN where missing.
        """
        xarray = load("xarray")
        data = self.values(time, realization)
        return _array(xarray, self, ("y", "x"), data,
                      {"y": self._geography.y, "x": self._geography.x}, timed=False)

    def to_xarray(self, *, progress=None):
        """All cells as an array.

        Returns
        -------
        xarray.DataArray
            With the dimensions y, x, time and, if there are several, realization; without time if
            the dataset is static. Coordinates follow the CF conventions; ``time_end`` is the first
            time after each span, and the coordinate system the attribute ``crs_wkt`` of
            ``spatial_ref``.
        """
        xarray = load("xarray")
        grid = self._geography
        coordinates = {"y": grid.y, "x": grid.x}
        data = _stack(self, (grid.rows, grid.columns), coordinates, progress)
        return _array(xarray, self, ("y", "x"), data, coordinates)


def stacked_spans(dataset):
    """The spans of an array of all values, and whether each realization has values in each.

    If realizations change at different times, a span ends wherever one of them changes.
    """
    realizations = [dataset._spans(index) for index in range(dataset.realizations)]
    spans = np.unique(np.concatenate(realizations), axis=0)
    if any(len(own) != len(spans) for own in realizations):
        spans = _common_spans(realizations, dataset._form)
    if dataset.static:
        spans = spans[:1]
    if len(spans) == 0:
        raise ValueError(f"{dataset.name} holds no values")
    held = np.zeros((len(spans), len(realizations)), dtype=bool)
    for index, own in enumerate(realizations):
        if len(own):
            # The last span that does not start later holds the start of this one, or none does.
            last = np.searchsorted(own[:, 0], spans[:, 0], side="right") - 1
            start, end, closed = own[last].T
            held[:, index] = (last >= 0) & (spans[:, 0] < end + closed)
    return spans, held


def _common_spans(realizations, form):
    """The spans between the times at which a realization changes, where one has values."""
    changes = np.unique(np.concatenate([np.concatenate(_limits(own, form)) for own in realizations]))
    spans = np.stack([changes[:-1], changes[1:], np.zeros(len(changes) - 1, dtype=np.int64)], axis=1)
    held = np.zeros(len(spans), dtype=bool)
    for own in realizations:
        starts, ends = _limits(own, form)
        held[:] |= (np.searchsorted(starts, spans[:, 0], side="right")
                    > np.searchsorted(ends, spans[:, 0], side="right"))
    return spans[held]


def _stack(dataset, shape, coordinates, progress):
    """All values as one array: places, then times, then realizations."""
    realizations = dataset.realizations
    spans, known = stacked_spans(dataset)
    kind = object if dataset.kind == "text" else float
    # Places are last in memory, as they are read.
    held = np.full((len(spans), realizations) + shape, None if kind is object else np.nan, dtype=kind)
    whole = np.moveaxis(held, (0, 1), (-2, -1))
    with reporting(progress) as report:
        for number, span in enumerate(spans):
            for index in np.flatnonzero(known[number]).tolist():
                values, mask = _native.values(dataset._id, int(_instant_of(span)), index)
                if isinstance(values, list):
                    held[number, index] = values
                else:
                    held[number, index] = values.reshape(shape)
                    if mask is not None:
                        held[number, index][mask.reshape(shape)] = np.nan
            if report is not None and report(100 * (number + 1) // len(spans), "Reading...") is False:
                raise KeyboardInterrupt("cancelled")
    coordinates["spans"] = spans
    return whole


def _array(xarray, dataset, places, data, coordinates, timed=True):
    spans = coordinates.pop("spans", None)
    dimensions, held = list(places), dict(coordinates)
    attributes = {"units": dataset.unit} if dataset.unit else {}
    if timed:
        if dataset.static:
            data = data[..., 0, :]
        else:
            form = dataset._form
            dimensions.append("time")
            starts, ends = half_open(spans, form)
            held["time"] = xarray.Variable("time", for_xarray(starts),
                                           attrs={"standard_name": "time", "axis": "T"})
            held["time_end"] = xarray.Variable("time", for_xarray(ends))
        if dataset.realizations > 1:
            dimensions.append("realization")
            held["realization"] = np.arange(1, dataset.realizations + 1)
        else:
            data = data[..., 0]
    if dataset.geography.crs and "x" in held:
        held["spatial_ref"] = xarray.Variable((), 0, attrs={"crs_wkt": dataset.geography.crs})
        attributes["grid_mapping"] = "spatial_ref"
    return xarray.DataArray(data, dims=dimensions, coords=held, name=dataset.name,
                            attrs=attributes)
