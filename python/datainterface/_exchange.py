# SPDX-License-Identifier: MIT
"""Geographies out of files, frames and arrays."""

import decimal
import math

import numpy as np

from . import _native
from ._arguments import FLAG, NUMBER, TEXT, TEXTS, check, typed
from ._base import path_text
from ._errors import DataInterfaceWarning, UnknownNameError
from ._geography import Grid, VectorGeography, geography_of
from ._optional import load
from ._progress import reporting
from ._project import new, present_project
from ._times import _EPOCH, text_of

#: Cells without a value in grids that are made of arrays.
_NO_DECIMAL = {32: float(np.finfo(np.float32).min), 64: float(np.finfo(np.float64).min)}
_NO_INTEGER = -2**31


def _project_for(project):
    if project is None:
        project = present_project() or new()
    project._require_open()
    return project


_IMPORT_OPTIONS = {
    **dict.fromkeys(("layer", "name", "key", "start", "end", "x", "y", "crs", "observations",
                     "encoding", "decimal", "times", "time_pattern", "dataset", "no_data",
                     "realizations"), TEXT),
    **dict.fromkeys(("fields", "tables", "series", "observed", "types", "missing",
                     "missing_also"), TEXTS),
    **dict.fromkeys(("attributes", "packed", "strict", "bands_are_times"), FLAG),
    "snap": NUMBER}


def import_file(project, path, *, raster=False, progress=None, **options):
    """Imports a map or a grid into a project; see :meth:`Project.import_map`."""
    unknown = sorted(set(options) - set(_IMPORT_OPTIONS))
    if unknown:
        raise TypeError(f"an import has no option {unknown[0]}")
    given = {}
    for name, value in options.items():
        kind = _IMPORT_OPTIONS[name]
        if name == "observations":
            value = path_text(value)
        else:
            check(name, value, kind)
        if kind is TEXTS:
            value = [value] if isinstance(value, str) or hasattr(value, "__fspath__") else value
            value = [path_text(each) if name == "tables" else each for each in value]
            for each in value:
                check(f"each of {name}", each, TEXT)
        given[name] = value
    if "times" in given:
        given.setdefault("bands_are_times", True)
    project._require_open()
    with reporting(progress) as report:
        number = _native.import_file(path_text(path), given, raster, report)
    return geography_of(project, number)


@typed(key=TEXT, start=TEXT, end=TEXT, name=TEXT, snap=NUMBER)
def from_geopandas(frame, key=None, start=None, end=None, *, name="map", snap=0.0, project=None,
                   progress=None):
    """Makes a geography of a GeoDataFrame.

    Parameters
    ----------
    frame : geopandas.GeoDataFrame
        Rows with the same key are one object over time. Columns without another use become
        datasets. Rows without a shape are kept: their values hold while the object exists.
    key : str, optional
        The column, or the name of the index, with the keys. By default the index if it has a name,
        else each row is an object of its own.
    start, end : str, optional
        The columns with the start and end of a row's existence. An end that is a day is included.
        Without them objects exist at all times.
    name : str
        Of the geography; a number is appended to a name that is taken.
    snap : float
        Vertices within this distance, in map units, count as one for common borders.
    project : Project, optional
        By default the open one, or a new project if none is open.

    Returns
    -------
    VectorGeography
        In the coordinate system of the frame.

    Raises
    ------
    KeyError
        For a column that the frame does not have.
    ValueError
        For shapes that a geography cannot hold, such as several kinds of them, and for times that
        overlap.
    """
    geopandas = load("geopandas")
    pandas = load("pandas")
    if not isinstance(frame, geopandas.GeoDataFrame):
        raise TypeError(f"a geography is made of a GeoDataFrame, not of a {type(frame).__name__}")
    if key is None and frame.index.name is not None:
        key = frame.index.name
    if key is not None and key not in frame.columns and key == frame.index.name:
        frame = frame.reset_index()
    for column in (key, start, end):
        if column is not None and column not in frame.columns:
            raise UnknownNameError(f"the frame has no column {column}; there are: "
                                   f"{', '.join(map(str, frame.columns))}")
    if start is None and end is not None:
        raise ValueError("an end needs a start")
    shapes = frame.geometry
    times = [column for column in (start, end) if column is not None]
    texts = dict(zip(times, _time_texts(pandas, [frame[column] for column in times])))
    if not str(name):
        raise ValueError("a name is not empty")
    columns = []
    for column in frame.columns:
        if column == shapes.name:
            continue
        if column in texts:
            columns.append((str(column), "text", texts[column], None))
        else:
            columns.append(_column_of(pandas, str(column), frame[column]))
    project = _project_for(project)
    options = {"name": str(name), "snap": float(snap)}
    options.update({place: str(column) for place, column in
                    (("key", key), ("start", start), ("end", end)) if column is not None})
    wkt = shapes.crs.to_wkt() if shapes.crs is not None else ""
    with reporting(progress) as report:
        number = _native.import_table("a GeoDataFrame", wkt, columns, shapes.to_wkb().tolist(),
                                      options, report)
    geography = geography_of(project, number)
    if wkt and geography.crs is None:
        import warnings

        warnings.warn("the coordinate system cannot be held and is left out", DataInterfaceWarning,
                      stacklevel=2)
    return geography


def _time_texts(pandas, columns):
    """Times as texts: days if all of them are."""
    forms = "date"
    for column in columns:
        if pandas.api.types.is_datetime64_any_dtype(column):
            known = column.dropna()
            if not (known == known.dt.normalize()).all():
                forms = "date-time"
    return [[None if pandas.isna(time) else text_of(time, forms) for time in column]
            for column in columns]


def _column_of(pandas, name, column):
    types = pandas.api.types
    if types.is_object_dtype(column) or isinstance(column.dtype, pandas.CategoricalDtype):
        column = _numbers_of(pandas, column.astype(object))
    if types.is_bool_dtype(column) or types.is_integer_dtype(column):
        mask = column.isna().to_numpy()
        known = [int(value) for value in column[~mask]]
        largest = max(map(abs, known), default=0)
        if largest <= 2**53:
            values = np.zeros(len(column), dtype="int64")
            values[~mask] = known
            if largest <= 2**31 - 1:
                return name, "integer", values, mask
            return name, "decimal", np.where(mask, np.nan, values.astype(float)), None
        # Such as the identifiers of hexagons: a decimal would round them.
    elif types.is_float_dtype(column):
        return name, "decimal", column.to_numpy(dtype="float64", na_value=np.nan), None
    texts = [None if gone else
             value if isinstance(value, str) else
             text_of(value, "date") if types.is_datetime64_any_dtype(column) else str(value)
             for value, gone in zip(column, column.isna())]
    return name, "text", texts, None


def _numbers_of(pandas, column):
    """A column of objects in the type of its numbers, if all are: databases give decimal.Decimal,
    and integers beside None stay objects."""
    known = column[column.notna()]
    if not len(known) or not known.map(lambda value: isinstance(
            value, (int, float, decimal.Decimal, np.number)) and not np.iscomplexobj(value)).all():
        return column
    if not known.map(lambda value: math.isfinite(value) and value == int(value)).all():
        return column.astype(float)
    whole = [None if gone else int(value) for value, gone in zip(column, column.isna())]
    if max(abs(value) for value in whole if value is not None) >= 2**63:
        return column
    return pandas.Series(pandas.array(whole, dtype="Int64"), index=column.index)


# Arrays

@typed(name=TEXT, span=TEXT)
def from_xarray(array, *, name=None, geography=None, span=None, project=None, progress=None):
    """Makes a dataset of an array.

    Parameters
    ----------
    array : xarray.DataArray
        Of a grid, with the dimensions y and x (or latitude and longitude), or of objects, with the
        dimension object; and time and realization, if there are any. Cells are equally far apart.
    name : str, optional
        Of the dataset, and of a new grid; by default that of the array.
    geography : Geography, optional
        That of the objects, by key, or an existing grid. By default a new grid is made.
    span : {"year", "month", "day", "next"}, optional
        How long the values of a time hold: ``"next"`` is up to the next time. By default up to the
        coordinate ``time_end`` or the bounds of the CF conventions, or for a day if all times are
        days, and otherwise at the moment.
    project : Project, optional
        By default the open one, or a new project if none is open.

    Returns
    -------
    GridDataset or VectorDataset

    Raises
    ------
    ValueError
        For other dimensions, for places that are not equally far apart, and for times that overlap.
    """
    xarray = load("xarray")
    if not isinstance(array, xarray.DataArray):
        raise TypeError(f"a dataset is made of a DataArray, not of a {type(array).__name__}")
    name = str(name if name is not None else array.name if array.name is not None else "values")
    if "object" in array.dims:
        if not isinstance(geography, VectorGeography):
            raise ValueError("an array of objects needs their geography")
        return _objects_of_array(array, name, geography, span)
    if array.size == 0:
        raise ValueError("the array has no values")
    if geography is not None and not isinstance(geography, Grid):
        raise ValueError("an array of cells needs a grid")
    y, x = _axes(array)
    extra = [each for each in array.dims if each not in (y, x, "time", "realization")]
    if extra:
        raise ValueError(f"the array has a dimension {extra[0]}, which is none of a grid")
    form, spans = _spans_of(array, span)
    bounds = _bounds(array, y, x)
    if float(array[y][0]) < float(array[y][-1]):
        array = array.isel({y: slice(None, None, -1)})
    if float(array[x][0]) > float(array[x][-1]):
        array = array.isel({x: slice(None, None, -1)})
    project = _project_for(project) if geography is None else geography.project
    made = geography is None
    if made:
        rows, columns = array.sizes[y], array.sizes[x]
        whole = None if spans is None else (
            int(spans[:, 0].min()), int(spans[:, 1].max()), bool(spans[-1, 2]))
        geography = geography_of(project, _native.new_grid(
            name, rows, columns, *bounds, whole, form, _crs_of(array)))
    elif not _fits(geography, bounds, array.sizes[y], array.sizes[x]):
        raise ValueError(f"the cells of the array are not those of {geography.name}")
    elif spans is not None and (geography.static or geography.time_format != form):
        raise ValueError(f"the times of the array do not suit {geography.name}")
    dataset = None
    try:
        dataset = _fill_grid(array, name, geography, y, x, spans, progress)
    except BaseException:
        if made:
            _native.remove_geography(geography._id)
        raise
    return dataset


def _axes(array):
    for y, x in (("y", "x"), ("lat", "lon"), ("latitude", "longitude")):
        if y in array.dims and x in array.dims:
            return y, x
    raise ValueError("the array has neither the dimensions y and x nor object: "
                     f"{', '.join(map(str, array.dims))}")


def _bounds(array, y, x):
    """(left, bottom, right, top) of cells around the places."""
    steps, ends = [], []
    for axis in (x, y):
        places = np.asarray(array[axis].values, dtype=float)
        if len(places) == 0 or not np.isfinite(places).all():
            raise ValueError(f"the places along {axis} are not finite")
        step = (places[-1] - places[0]) / (len(places) - 1) if len(places) > 1 else None
        if step is not None:
            even = places[0] + step * np.arange(len(places))
            if step == 0 or (np.abs(places - even) > 1e-5 * abs(step)).any():
                raise ValueError(f"the places along {axis} are not equally far apart")
        steps.append(None if step is None else abs(step))
        ends.append((places.min(), places.max()))
    if steps == [None, None]:
        raise ValueError("the size of a single cell is not known")
    across, along = steps[0] or steps[1], steps[1] or steps[0]
    return (float(ends[0][0] - across / 2), float(ends[1][0] - along / 2),
            float(ends[0][1] + across / 2), float(ends[1][1] + along / 2))


def _fits(grid, bounds, rows, columns):
    reach = max(abs(grid.bounds[2] - grid.bounds[0]), abs(grid.bounds[3] - grid.bounds[1]))
    return (grid.rows == rows and grid.columns == columns
            and np.allclose(grid.bounds, bounds, rtol=0, atol=1e-6 * reach))


def _crs_of(array):
    for coordinate in array.coords.values():
        for attribute in ("crs_wkt", "spatial_ref"):
            if attribute in coordinate.attrs:
                return str(coordinate.attrs[attribute])
    return ""


def _spans_of(array, span):
    """The time format and a row (start, end, whether the end is included) for each time."""
    if span not in (None, "year", "month", "day", "next"):
        raise ValueError("a span is a year, a month, a day, or up to the next time")
    if "time" not in array.dims:
        return "number", None
    times = array["time"].values
    if times.dtype.kind not in "iumMO":
        raise ValueError(f"times are dates or whole numbers, not {times.dtype}")
    ends = None
    if "time_end" in array.coords:
        ends = array["time_end"].values
    elif array["time"].attrs.get("bounds") in array.coords:
        ends = array[array["time"].attrs["bounds"]].values[:, 1]
    if times.dtype.kind in "iu":
        starts = times.astype(np.int64)
        behind = ends.astype(np.int64) if ends is not None else (
            np.append(starts[1:], starts[-1] + 1) if span == "next" else starts + 1)
        form, rows = "number", np.stack([starts, behind - 1, np.ones_like(starts)], axis=1)
    elif times.dtype.kind == "m":
        starts = times.astype("timedelta64[s]").astype(np.int64)
        behind = ends.astype("timedelta64[s]").astype(np.int64) if ends is not None else (
            np.append(starts[1:], 86400) if span == "next" else starts + 1)
        moment = behind - starts == 1
        form, rows = "time", np.stack([starts, np.where(moment, starts, behind), moment], axis=1)
    else:
        starts = _seconds(times)
        unit = {"year": "Y", "month": "M", "day": "D"}.get(span)
        if unit:
            whole = (_EPOCH + starts.astype("timedelta64[s]")).astype(f"datetime64[{unit}]")
            behind = _seconds((whole + 1).astype("datetime64[s]"))
        elif span == "next":
            behind = np.append(starts[1:], 2 * starts[-1] - starts[-2] if len(starts) > 1
                               else starts[-1] + 86400)
        elif ends is not None:
            behind = _seconds(ends)
        else:
            behind = starts + (86400 if (starts % 86400 == 0).all() else 1)
        days = (starts % 86400 == 0).all() and (behind % 86400 == 0).all()
        form = "date" if days else "date-time"
        moment = behind - starts == 1
        rows = np.stack([starts, np.where(moment, starts, behind), moment.astype(np.int64)], axis=1)
    order = np.argsort(rows[:, 0], kind="stable")
    after = rows[order]
    if (after[:, 1] < after[:, 0]).any():
        raise ValueError("a time ends before it starts")
    if len(after) > 1 and (after[1:, 0] < after[:-1, 1] + after[:-1, 2]).any():
        raise ValueError("two times of the array overlap")
    return form, rows


def _seconds(times):
    if times.dtype.kind == "M":
        if np.isnat(times).any():
            raise ValueError("NaT is no time")
        return (times.astype("datetime64[s]") - _EPOCH).astype(np.int64)
    try:
        return np.array([(np.datetime64(time.isoformat()[:19], "s") - _EPOCH).astype(np.int64)
                         for time in times], dtype=np.int64)
    except (AttributeError, ValueError):
        wrong = next(time for time in times if not _is_day(time))
        raise ValueError(f"{wrong} is no time of the Gregorian calendar: convert the times with "
                         "array.convert_calendar()") from None


def _is_day(time):
    try:
        return np.datetime64(time.isoformat()[:10], "D") is not None
    except (AttributeError, ValueError):
        return False


def _unit_of(array):
    unit = array.attrs.get("units")
    return "" if unit is None else str(unit)


def _fill_grid(array, name, grid, y, x, spans, progress):
    from ._dataset import dataset_of

    realizations = array.sizes.get("realization", 1)
    integers, bits, missing = _cells(array)
    number = _native.new_grid_dataset(grid._id, name, integers, bits, realizations,
                                      _unit_of(array))
    try:
        rows = spans if spans is not None else np.array([[0, 0, 1]])
        with reporting(progress) as report:
            for index, (start, end, closed) in enumerate(rows.tolist()):
                at = array.isel(time=index) if spans is not None else array
                for realization in range(realizations):
                    one = at.isel(realization=realization) if "realization" in array.dims else at
                    cells = np.asarray(one.transpose(y, x).values)
                    if not integers:
                        if np.isinf(cells).any():
                            raise ValueError("infinity is no value")
                        cells = np.where(np.isnan(cells), missing, cells)
                    _native.add_cells(number, realization, start, end, bool(closed),
                                      np.ascontiguousarray(cells), missing)
                if report is not None and report(100 * (index + 1) // len(rows),
                                                 "Adding cells...") is False:
                    raise KeyboardInterrupt("cancelled")
        _native.finish_grid_dataset(number)
    except BaseException:
        _native.remove_dataset(number)
        raise
    return dataset_of(grid, number)


def _cells(array):
    """(whether cells are integers, their bits, the value of missing cells)"""
    kind = array.dtype.kind
    if kind in "iub":
        low, high = (int(array.min()), int(array.max())) if array.size else (0, 0)
        if low > _NO_INTEGER and high < 2**31:
            return True, 32, float(_NO_INTEGER)
        if max(abs(low), abs(high)) > 2**53:
            raise ValueError("integers above 2 ** 53 cannot be held")
        return False, 64, _NO_DECIMAL[64]
    if kind != "f":
        raise ValueError(f"cells are numbers, not {array.dtype}")
    bits = 64 if array.dtype.itemsize > 4 else 32
    return False, bits, _NO_DECIMAL[bits]


def _objects_of_array(array, name, geography, span):
    pandas = load("pandas")
    extra = [each for each in array.dims if each not in ("object", "time", "realization")]
    if extra:
        raise ValueError(f"the array has a dimension {extra[0]}, which is none of objects")
    from ._geography import objects_of

    form, spans = _spans_of(array, span)
    if spans is not None and form != geography.time_format:
        raise ValueError(f"times of {geography.name} are of the format {geography.time_format}")
    objects = objects_of(geography, array["object"].values.tolist())
    if len(np.unique(objects)) < len(objects):
        raise ValueError("an object occurs twice in the array")
    realizations = array.sizes.get("realization", 1)
    if array.dtype.kind not in "OUiubf":
        raise ValueError(f"values are numbers or texts, not {array.dtype}")
    kind = "text" if array.dtype.kind in "OU" else "decimal"
    if array.dtype.kind in "iub":
        largest = max((abs(int(array.max())), abs(int(array.min()))), default=0)
        if largest > 2**53:
            raise ValueError("integers above 2 ** 53 cannot be held")
        kind = "integer" if largest < 2**31 else "decimal"
    if kind == "decimal" and bool(np.isinf(array).any()):
        raise ValueError("infinity is no value")
    dataset = geography.new_dataset(name, kind, realizations=realizations, static=spans is None,
                                    unit=_unit_of(array))
    try:
        for realization in range(realizations):
            one = array.isel(realization=realization) if "realization" in array.dims else array
            one = one.transpose("object", "time") if spans is not None else one.expand_dims("time", 1)
            rows = spans if spans is not None else np.array([[0, 0, 1]])
            cells = one.values.T
            known = ~pandas.isna(cells)
            order = np.argsort(rows[:, 0], kind="stable")
            held = np.concatenate([cells[index][known[index]] for index in order])
            _native.add_values(dataset._id, realization, rows[order],
                               np.cumsum([known[index].sum() for index in order]),
                               np.concatenate([objects[known[index]] for index in order]),
                               held.tolist() if kind == "text" else held, True)
    except BaseException:
        _native.remove_dataset(dataset._id)
        raise
    return dataset
