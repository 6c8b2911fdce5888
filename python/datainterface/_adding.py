# SPDX-License-Identifier: MIT
"""Values of frames on their way into a dataset. All is checked before anything is added."""

import numpy as np

from . import _native
from ._errors import UnknownNameError
from ._geography import objects_of
from ._optional import load
from ._times import text_of


def add(dataset, values, at, end, overwrite, realization):
    pandas = load("pandas")
    if isinstance(values, pandas.Series):
        frame = _frame_of_series(pandas, dataset, values, at, end)
    elif isinstance(values, pandas.DataFrame):
        if at is not None or end is not None:
            raise ValueError("the times of a frame are its columns")
        frame = values
    else:
        raise TypeError(f"values are a pandas Series or DataFrame, not {type(values).__name__}")
    for name in ("key", "value"):
        if name not in frame.columns:
            raise UnknownNameError(f"the frame has no column {name}")
    for name in ("key", "value", "start", "end", "time"):
        if frame.columns.tolist().count(name) > 1:
            raise ValueError(f"the frame has two columns {name}")
    frame = frame[frame["value"].notna()]
    objects = objects_of(dataset.geography, frame["key"].tolist())
    held = _checked(dataset, frame["value"])
    spans = _spans(pandas, dataset, frame)
    order = np.lexsort((spans[:, 0], objects))
    _refuse_twice(dataset, objects[order], spans[order])
    # One slice for each span, in order of time.
    uniques, slices, counts = np.unique(spans, axis=0, return_inverse=True, return_counts=True)
    rows = np.argsort(slices.ravel(), kind="stable")
    part = held[rows] if isinstance(held, np.ndarray) else [held[row] for row in rows]
    _native.add_values(dataset._id, realization, uniques, np.cumsum(counts), objects[rows], part,
                       overwrite)


def _frame_of_series(pandas, dataset, series, at, end):
    if at is None and not dataset.static:
        raise ValueError("the time of a series is given as at=")
    if at is not None and dataset.static:
        raise ValueError(f"the values of {dataset.name} hold at all times")
    frame = pandas.DataFrame({"key": series.index.tolist(), "value": series.array})
    if not dataset.static:
        form = dataset.geography.time_format
        frame["start"] = text_of(at, form)
        if end is not None:
            frame["end"] = text_of(end, form)
    return frame


def _checked(dataset, column):
    """The values in the type of the dataset."""
    kind = dataset.kind
    if kind == "text":
        texts = column.tolist()
        for text in texts:
            if not isinstance(text, str):
                raise ValueError(f"{dataset.name} holds texts, and {text!r} is none")
        return texts
    try:
        # Texts of numbers and moments could be converted, but are hardly meant as values.
        if column.dtype.kind in "cmM" or column.map(lambda value: isinstance(value, str)).any():
            raise TypeError
        numbers = column.to_numpy(dtype=float)
    except (TypeError, ValueError):
        raise ValueError(f"{dataset.name} holds numbers, and the values are not all numbers"
                         ) from None
    if not np.isfinite(numbers).all():
        raise ValueError(f"{dataset.name}: {numbers[~np.isfinite(numbers)][0]} is no value")
    if kind == "decimal":
        return numbers
    if (numbers != np.round(numbers)).any() or (np.abs(numbers) > 2**31 - 1).any():
        wrong = numbers[(numbers != np.round(numbers)) | (np.abs(numbers) > 2**31 - 1)][0]
        raise ValueError(f"{dataset.name} holds integers of 32 bits, and {wrong:g} is none")
    return numbers.astype(np.int32)


def _spans(pandas, dataset, frame):
    """(start, end, whether the end is included) for each row."""
    if dataset.static:
        return np.tile(np.array([0, 0, 1], dtype=np.int64), (len(frame), 1))
    name = "start" if "start" in frame.columns else "time"
    if name not in frame.columns:
        raise UnknownNameError("the frame has neither a column start nor a column time")
    form = dataset.geography.time_format
    columns = [frame[name]] + ([frame["end"]] if "end" in frame.columns else [])
    codes, uniques = [], []
    for column in columns:
        code, unique = pandas.factorize(column, use_na_sentinel=True)
        if (code < 0).any():
            raise ValueError(f"the column {column.name} has a row without a time")
        codes.append(code)
        uniques.append([text_of(time, form) for time in unique])
    pairs, places = np.unique(np.stack(codes, axis=1), axis=0, return_inverse=True)
    spans = [_native.span(dataset.geography._id, uniques[0][pair[0]],
                          uniques[1][pair[1]] if len(pair) > 1 else "") for pair in pairs]
    return np.array(spans, dtype=np.int64).reshape(-1, 3)[places.ravel()]


def _refuse_twice(dataset, objects, spans):
    """Raises for rows of one object, which are in order of time, that share a time."""
    same = objects[1:] == objects[:-1]
    behind = spans[:-1, 1] + spans[:-1, 2]  # an included end is one step longer
    twice = np.flatnonzero(same & (spans[1:, 0] < behind))
    if len(twice):
        geography = dataset.geography
        when = _native.show_time(geography._id, int(spans[twice[0] + 1, 0]))
        key = geography.object_keys[objects[twice[0]]]
        raise ValueError(f"{dataset.name}: object {key} has two values at {when}")
