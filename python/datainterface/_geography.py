# SPDX-License-Identifier: MIT
"""Geographies: vector objects that change over time, and grids."""

from collections.abc import Mapping

import numpy as np

from . import _native
from ._arguments import DATASETS, FLAG, NUMBER, TEXT, WHOLE, check, typed
from ._base import Part, expect, telling
from ._optional import load
from ._progress import reporting
from ._queries import GridQueries, VectorQueries
from ._times import stamps, stamps_of_texts, for_pandas, text_of


def geography_of(project, number):
    facts = _native.describe_geography(number)
    return (Grid if facts["shapes"] == "raster" else VectorGeography)(project, number)


class Geography(Part, Mapping):
    """A set of spatial objects with datasets by name."""

    __slots__ = ()
    __eq__ = Part.__eq__
    __hash__ = Part.__hash__

    @property
    def _facts(self):
        return _native.describe_geography(self._id)

    @property
    def name(self):
        """The name; set it to rename the geography."""
        return self._facts["name"]

    @name.setter
    def name(self, name):
        check("a name", name, TEXT)
        _native.rename_geography(self._id, name)

    @property
    def shapes(self):
        """``"polygons"``, ``"points"``, ``"lines"`` or ``"raster"``."""
        return self._facts["shapes"]

    @property
    def count(self):
        """The number of objects, existing or not at a time, or of cells."""
        return self._facts["count"]

    @property
    def bounds(self):
        """(left, bottom, right, top) in map units."""
        return self._facts["bounds"]

    @property
    def crs(self):
        """The coordinate system as well-known text; None if there is none."""
        return self._facts["projection"] or None

    @property
    def static(self):
        """Whether objects and shapes stay the same at all times."""
        return self._facts["static"]

    @property
    def time_format(self):
        """How times are counted: ``"date"``, ``"date-time"``, ``"time"`` or ``"number"``."""
        return self._facts["time_format"]

    @property
    def history(self):
        """Where the geography came from."""
        return self._facts["history"]

    @property
    def times(self):
        """The starts of the spans in which no object changes, in order: an array of
        datetime64[s], of timedelta64[s] for times of day, or of int64 for plain numbers."""
        return stamps(_native.geography_times(self._id)[:, 0], self.time_format)

    def _span(self, start, end=None):
        """(start, end, whether the end is included) as the library counts them."""
        form = self.time_format
        return _native.span(self._id, text_of(start, form), text_of(end, form))

    # Datasets

    def __getitem__(self, name):
        from ._dataset import dataset_of

        if not isinstance(name, str):
            raise TypeError("a dataset is named by a text")
        number = self._id
        return dataset_of(self, _native.find_dataset(number, name))

    def __contains__(self, name):
        return isinstance(name, str) and name != "" and super().__contains__(name)

    def __iter__(self):
        return iter([dataset.name for dataset in self.datasets])

    def __len__(self):
        return len(_native.datasets(self._id))

    def __bool__(self):
        return True

    @property
    def datasets(self):
        """All datasets, in the order of their creation."""
        from ._dataset import dataset_of

        return [dataset_of(self, int(number)) for number in _native.datasets(self._id)]

    def remove(self, dataset):
        """Removes a dataset, by name or itself."""
        from ._dataset import Dataset

        if isinstance(dataset, str):
            dataset = self[dataset]
        number = expect(dataset, Dataset, "what is removed from a geography")
        if dataset.geography != self:
            raise ValueError(f"{dataset.name} is of {dataset.geography.name}, not of {self.name}")
        _native.remove_dataset(number)

    # Weights

    @property
    def weight_sets(self):
        """The weight sets by name: a dict of :class:`WeightSet`."""
        from ._weights import WeightSet

        sets = [WeightSet(self, int(number)) for number in _native.weight_sets(self._id)]
        return {held.name: held for held in sets}

    @typed(name=TEXT)
    def weights(self, name, at=None, *, progress=None):
        """The weights of a set at a time.

        Parameters
        ----------
        name : str
            The set.
        at : time, optional
            By default the last time of the geography.
        progress : callable or bar, optional
            For lists that are not stored yet; see :func:`open`.

        Returns
        -------
        SpatialWeights
            A SciPy matrix in compressed rows, with a row and a column for each object of the
            geography, and ``keys``.

        Raises
        ------
        KeyError
            If there is no such set.
        ValueError
            If no object exists at the time.
        """
        from ._weights import WeightSet

        held = WeightSet(self, _native.find_weight_set(self._id, name))
        return held.at(at, progress=progress)

    @typed(name=TEXT, method=TEXT, weights=TEXT, order=WHOLE, count=WHOLE, distance=NUMBER,
           great_circle=FLAG, include_ego=FLAG, numerator=NUMBER, power=NUMBER, information=TEXT)
    def new_weights(self, name, method="queen", *, weights="row", order=1, count=5, distance=0.0,
                    great_circle=False, include_ego=False, numerator=1.0, power=1.0,
                    information="", progress=None):
        """Defines a weight set. Its lists are calculated when a time is asked for.

        Parameters
        ----------
        name : str
        method : {"queen", "rook", "nearest", "range"}
            Polygons that share a point or a border, adjacent cells, the ``count`` nearest points or
            centroids, or all within ``distance``.
        weights : {"constant", "row", "rank", "inverse", "border", "border-share"}
            1; 1 / neighbours; 1 / rank by distance; ``numerator / (1 + distance ** power)``; the
            length of the common border, or its share of all such borders.
        order : int
            Steps of contiguity between polygons.
        count : int
            Of ``"nearest"``; more where there are ties.
        distance : float
            Of ``"range"``, in map units; in kilometres with ``great_circle``.
        great_circle : bool
            Distances along geodesics, for maps in degrees.
        include_ego : bool
            Whether an object is its own neighbour.

        Returns
        -------
        WeightSet

        Raises
        ------
        ValueError
            For a name that is taken, and for what this kind of geography cannot have.
        """
        from ._weights import WeightSet

        with reporting(progress) as report:
            number = _native.new_weight_set(
                self._id, name, method, weights, order, count, float(distance), great_circle,
                include_ego, float(numerator), float(power), information, report)
        return WeightSet(self, number)

    @typed(name=TEXT)
    def add_weights(self, name, weights, *, start=None, end=None, progress=None):
        """Makes a weight set of given weights.

        Parameters
        ----------
        name : str
        weights : SciPy matrix or libpysal.weights.W
            A matrix has a row and a column for each object, in the order of ``keys``. The ids of a
            W are keys.
        start, end : time, optional
            When the lists hold; by default at all times of the geography.

        Returns
        -------
        WeightSet

        Raises
        ------
        KeyError
            For an id that is no key.
        ValueError
            For a matrix of another size and for weights that are not finite.
        """
        from ._weights import adopt

        return adopt(self, name, weights, start, end, progress)

    @telling
    def _repr_html_(self):
        from ._html import geography_html

        return geography_html(self)


class VectorGeography(VectorQueries, Geography):
    """Points, lines or polygons that exist, move and change over time."""

    __slots__ = ()

    @property
    def keys_name(self):
        """The dataset that holds the keys; None if objects are numbered from 1."""
        return self._facts["key"] or None

    @property
    def object_keys(self):
        """The keys of all objects, by their index: an array of int64, or of texts."""
        return _keys(self._id)

    @property
    def object_names(self):
        """The names of all objects, by their index; empty texts where there is none."""
        return np.array(_native.names(self._id), dtype=object)

    def find(self, text):
        """The key of an object by its key or, if no key matches, its name.

        Raises
        ------
        KeyError
            If no object matches, or several do.
        """
        return self.object_keys[_native.find_object(self._id, str(text))]

    def at(self, time=None):
        """The objects that exist at a time, by default the last.

        Returns
        -------
        GeographyAt
        """
        return GeographyAt(self, _native.geography_instant(
            self._id, text_of(time, self.time_format)))

    @typed(datasets=DATASETS)
    def to_geopandas(self, datasets=(), *, progress=None):
        """All shapes over time: a row for each object and span in which nothing changes.

        Parameters
        ----------
        datasets : iterable of str or Dataset
            Whose values become columns.

        Returns
        -------
        geopandas.GeoDataFrame
            With the columns key, start, end, those of the datasets, and geometry. ``end`` is the
            last day of a span of days.
        """
        frame = _rows(self, datasets, ["key", "start", "end"], shapes=True, progress=progress)
        if self.static:
            frame = frame.drop(columns=["start", "end"])
        return frame

    @typed(name=TEXT, kind=TEXT, storage=TEXT, realizations=WHOLE, static=FLAG, unit=TEXT)
    def new_dataset(self, name, kind="decimal", *, storage="slices", realizations=1, static=False,
                    unit=""):
        """Adds an empty dataset.

        Parameters
        ----------
        name : str
        kind : {"decimal", "integer", "text"}
        storage : {"slices", "series"}
            All objects share the spans of time, or each has its own.
        realizations : int
            Versions of the values, counted from 1.
        static : bool
            Whether the values hold at all times.

        Returns
        -------
        Dataset
        """
        from ._dataset import dataset_of

        number = _native.new_dataset(self._id, name, kind, storage, realizations, static)
        if unit:
            _native.set_unit(number, unit)
        return dataset_of(self, number)

    @telling
    def __repr__(self):
        facts = self._facts
        when = "static" if facts["static"] else f"times as {facts['time_format']}"
        return (f"<VectorGeography {facts['name']}: {facts['count']} {facts['shapes']}, {when}; "
                f"datasets {', '.join(self) or 'none'}>")


def _keys(number):
    keys = _native.keys(number)
    if isinstance(keys, np.ndarray):
        return keys
    array = np.empty(len(keys), dtype=object)
    array[:] = keys
    return array


def objects_of(geography, keys):
    """The object indices of keys.

    Raises
    ------
    KeyError
        That names the first unknown keys.
    """
    from ._errors import UnknownNameError

    known = {str(key): index for index, key in enumerate(geography.object_keys)}
    found = np.array([known.get(_key_text(key), -1) for key in keys], dtype=np.int32)
    if (found < 0).any():
        unknown = [str(key) for key, index in zip(keys, found) if index < 0]
        more = f" and {len(unknown) - 5} more" if len(unknown) > 5 else ""
        raise UnknownNameError(
            f"no object {', '.join(unknown[:5])}{more} in {geography.name}")
    return found


def _key_text(key):
    if isinstance(key, (bool, np.bool_)):
        return str(int(key))
    if isinstance(key, (float, np.floating)) and float(key).is_integer():
        return str(int(key))
    return str(key)


def _rows(geography, datasets, parts, *, at=None, shapes=False, realization=None, progress=None):
    """Rows of the library as a DataFrame, or as a GeoDataFrame with shapes."""
    from ._dataset import Dataset

    pandas = load("pandas")
    geopandas = load("geopandas") if shapes else None
    if isinstance(datasets, (str, Dataset)):
        datasets = [datasets]
    held = [geography[each] if isinstance(each, str) else each for each in datasets]
    with reporting(progress) as report:
        columns, images = _native.rows(
            geography._id, [expect(each, Dataset, "a column") for each in held],
            parts + (["datasets"] if held else []),
            at, shapes, realization, report)
    names = parts + [each.name for each in held]
    form = geography.time_format
    values = {}
    for name, (_, kind, array, extra) in zip(_different(names), columns):
        values[name] = _column(pandas, kind, array, extra, form, name in ("start", "end"))
    frame = pandas.DataFrame(values)
    if not shapes:
        return frame
    series = geopandas.GeoSeries.from_wkb(images, index=frame.index, crs=geography.crs)
    return geopandas.GeoDataFrame(frame, geometry=series)


def _different(names):
    """Names that are all different: a dataset may be called as a part of the rows."""
    seen = []
    for name in names:
        unique, number = name, 2
        while unique in seen or unique == "geometry":
            unique, number = f"{name}_{number}", number + 1
        seen.append(unique)
    return seen


def _column(pandas, kind, array, extra, form, is_time):
    if kind == "decimal":
        return array
    if kind == "integer":
        if not extra.any():
            return array
        return pandas.arrays.IntegerArray(array, extra)
    if kind == "time" and is_time:
        times = stamps_of_texts(extra, form)
        missing = np.array(["NaT"], dtype=times.dtype if len(extra) else "datetime64[s]")
        return for_pandas(np.concatenate([times, missing])[array])
    texts = np.empty(len(extra) + 1, dtype=object)
    texts[:-1] = extra
    texts[-1] = pandas.NA
    return texts[array]


class GeographyAt:
    """The objects of a vector geography that exist at one time."""

    def __init__(self, geography, instant):
        self._geography = geography
        self._instant = instant

    @property
    def geography(self):
        """The geography."""
        return self._geography

    @property
    def time(self):
        """The time as text."""
        return _native.show_time(self._geography._id, self._instant)

    @property
    def keys(self):
        """The keys of the objects."""
        geography = self._geography
        return geography.object_keys[_native.objects_at(geography._id, self._instant)]

    def __len__(self):
        return len(_native.objects_at(self._geography._id, self._instant))

    @typed(datasets=DATASETS)
    def to_geopandas(self, datasets=None, *, progress=None):
        """The shapes of the objects with values at the time.

        Parameters
        ----------
        datasets : iterable of str or Dataset, optional
            By default all datasets of one realization.

        Returns
        -------
        geopandas.GeoDataFrame
            By key, with the coordinate system of the geography. Missing values are NA.
        """
        geography = self._geography
        if datasets is None:
            datasets = [each for each in geography.datasets
                        if each.realizations == 1 and each.name != geography.keys_name]
        frame = _rows(geography, datasets, ["key"], at=self._instant, shapes=True, realization=0,
                      progress=progress)
        return frame.set_index("key")

    @telling
    def __repr__(self):
        geography = self._geography
        return f"<{geography.name} at {self.time}: {len(self)} of {geography.count} objects>"

    @telling
    def _repr_html_(self):
        from ._html import geography_html

        return geography_html(self._geography, self._instant)

    def __reduce_ex__(self, protocol):
        from ._base import refuse_pickling

        refuse_pickling(self)


class Grid(GridQueries, Geography):
    """Cells in rows and columns; row 0 has the largest y."""

    __slots__ = ()

    @property
    def rows(self):
        """The number of rows."""
        return self._facts["rows"]

    @property
    def columns(self):
        """The number of columns."""
        return self._facts["columns"]

    @property
    def x(self):
        """The centres of the columns, in map units."""
        left, _, right, _ = self.bounds
        return left + (np.arange(self.columns) + 0.5) * ((right - left) / self.columns)

    @property
    def y(self):
        """The centres of the rows, in map units, descending."""
        _, bottom, _, top = self.bounds
        return top - (np.arange(self.rows) + 0.5) * ((top - bottom) / self.rows)

    @telling
    def __repr__(self):
        facts = self._facts
        return (f"<Grid {facts['name']}: {facts['rows']} rows, {facts['columns']} columns; "
                f"datasets {', '.join(self) or 'none'}>")
