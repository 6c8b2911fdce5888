# SPDX-License-Identifier: MIT
"""Work on a project by the workers of a Dask cluster.

Each worker opens the project by itself, for reading, and keeps it open between its tasks::

    import datainterface as di
    from distributed import Client

    client = Client("scheduler:8786")
    with di.open("/shared/income.vorn") as project:
        income = project["states48"]["income"]
        di.dask.array(income).mean(axis=0).compute()
        di.dask.moran(income, "queen", permutations=99999, seed=1, client=client)

A worker runs one task of this package at a time, so workers with one thread each are the best. What
a task gives depends on its arguments and the file alone: the file is read as it was saved last,
and a file that changed since the client opened it is refused. Seeds are made from that of the call
and the place of the task, so that results are the same, bit by bit, for any number of workers, and
when a task is run again because its worker died.
"""

import hashlib
import operator
import os
import threading

import numpy as np

from . import _native, stats
from ._analysis import _set_of
from ._base import expect
from ._dataset import Dataset, GridDataset, stacked_spans
from ._geography import VectorGeography
from ._optional import load
from ._project import open as open_project
from ._project import present_project, state_of
from ._times import for_pandas, stamps
from ._weights import WeightSet

__all__ = ["ProjectFile", "array", "hand_over", "local_moran", "map_times", "moran", "weights",
           "zonal"]

#: Permutations of one task. Part of the definition of the results: the seed of a block is made from
#: its number.
BLOCK = 25000

_lock = threading.RLock()
_held = None  # (path, state of the file, Project) of this process


class ProjectFile:
    """A project as its workers find it: by its path, or as a copy that was handed over.

    Made by the functions of this module from the open project, and by :func:`hand_over`. It is
    small, and tasks carry it.
    """

    def __init__(self, path, state, digest=None):
        self.path = path
        self.state = state
        self.digest = digest  # of a file that was handed over

    def local_path(self):
        """Where this process finds the file."""
        if self.digest is None:
            return self.path
        copy = os.path.join(_worker_directory(), f"datainterface-{self.digest}.vorn")
        if not os.path.exists(copy):
            raise OSError(f"{_who()} has no copy of {self.path}: it was handed over to the workers "
                          "that the client had then and, by its plugin, to those that came since")
        return copy

    def __dask_tokenize__(self):
        return self.path, self.state, self.digest

    def __repr__(self):
        return f"<ProjectFile {self.path}{', handed over' if self.digest else ''}>"


def _worker():
    try:
        from distributed import get_worker

        return get_worker()
    except (ImportError, ValueError):
        return None  # the threads of a client without a cluster


def _who():
    worker = _worker()
    return "this process" if worker is None else f"worker {worker.address}"


def _worker_directory():
    worker = _worker()
    return os.getcwd() if worker is None else worker.local_directory


def _opened(file):
    """The project in this process. Called with the lock."""
    global _held
    path = file.local_path()
    try:
        state = state_of(path)
    except OSError as error:
        raise OSError(error.errno, f"{_who()} cannot read the project: {error.strerror}",
                      path) from None
    if file.digest is None and state != file.state:
        raise OSError(f"{path} was changed since the work was planned, as {_who()} sees it: open it "
                      "again and plan the work anew")
    present = present_project()
    if _held is not None and _held[2] is present and _held[:2] == (path, state):
        return present
    if present is not None and (_held is None or _held[2] is not present):
        # The client's own project, in threads of the client.
        if present._file is not None and os.path.realpath(present._file) == os.path.realpath(path):
            return present
        raise ValueError(f"{_who()} has {present.path or 'a new project'} open; a process has one "
                         "project at a time")
    if _held is not None:
        _held[2].close()
        _held = None
    try:
        project = open_project(path)
    except OSError as error:
        raise OSError(f"{_who()} cannot read the project {path}: {error}") from error
    _held = (path, state, project)
    return project


def _dataset_of(file, geography, name):
    return _opened(file)[geography][name]


def _file_of(dataset, file):
    if file is not None:
        return file
    return ProjectFile(*_saved(dataset.project))


def _saved(project):
    """The path and the state of a project's file, which is the one that the project was read from.

    Names, keys and times are those of the client's project, and values those of the file: from two
    states of the file they would not belong together.
    """
    project._require_open()
    if project.path is None:
        raise ValueError("workers read the project's file: save the project first")
    path = project._file
    state = state_of(path)
    if state != project._state:
        raise OSError(f"{path} was changed since it was opened: open it again and plan the work anew")
    return path, state


def hand_over(project, client):
    """Sends the file of a project to the workers, for clusters without common files.

    Workers that join the cluster later get it as well. The copies go with the workers' directories.

    Parameters
    ----------
    project : Project
        As it was saved last.
    client : distributed.Client

    Returns
    -------
    ProjectFile
        For the argument `file` of the functions of this module.
    """
    UploadFile = load("distributed.diagnostics.plugin").UploadFile
    path, state = _saved(project)
    with open(path, "rb") as stream:
        digest = hashlib.sha256(stream.read()).hexdigest()[:32]
    plugin = UploadFile(path)
    plugin.filename = f"datainterface-{digest}.vorn"
    client.register_worker_plugin(plugin, name=plugin.filename)
    return ProjectFile(path, state, digest)


def _several(function, calls):
    return [function(*call) for call in calls]


def _gathered(client, function, calls):
    """The results of a function for each of the calls, in their order.

    Calls beside each other are one task, since the scheduler takes some milliseconds for each: as
    many that every worker has several tasks, so that a slow one does not hold up the others.
    """
    if client is None:
        client = load("distributed").default_client()
    tasks = 4 * max(1, sum(client.ncores().values()))
    size = max(1, len(calls) // tasks)
    groups = [calls[first:first + size] for first in range(0, len(calls), size)]
    futures = client.map(_several, [function] * len(groups), groups, pure=False)
    return [result for group in client.gather(futures) for result in group]


def _spans_of(dataset, at, index):
    """The rows of the dataset's spans that hold the times; all rows if there are none."""
    spans = dataset._spans(index)
    if at is None:
        return range(len(spans))
    times = [at] if isinstance(at, (str, bytes)) or not np.iterable(at) else list(at)
    if not times:
        raise ValueError("no times are given: None means all of them")
    rows = []
    for time in times:
        instant = dataset._instant(time, index)
        inside = (spans[:, 0] <= instant) & ((instant < spans[:, 1])
                                             | (instant == spans[:, 1]) & (spans[:, 2] == 1))
        if not inside.any():
            raise ValueError(f"{dataset.name} has no values at {time}")
        rows.append(int(np.flatnonzero(inside)[0]))
    return rows


def _text_at(dataset, index, row):
    """The time of a span as a text, which means the same in every process."""
    start = stamps(dataset._spans(index)[row:row + 1, 0], dataset._form)[0]
    if dataset._form == "number":
        return str(int(start))
    if dataset._form == "time":
        return str(np.datetime64("1970-01-01T00:00:00") + start)[11:]
    return str(start)[:10] if dataset._form == "date" else str(start)


# Arrays


def _chunk(file, geography, name, tail, index, instant, first, last):
    with _lock:
        dataset = _dataset_of(file, geography, name)
        values, mask = _native.values(dataset._id, instant, index)
        values = np.ma.filled(np.ma.array(values, mask=mask, dtype=float), np.nan)
        values = values.reshape(_places(dataset))[first:last]
        return values.reshape(values.shape + tail)


def _places(dataset):
    """The number of objects, or of rows and columns."""
    geography = dataset.geography
    return ((geography.rows, geography.columns) if isinstance(dataset, GridDataset)
            else (geography.count,))


def array(dataset, *, rows=None, file=None):
    """The values of a dataset as a Dask array, whose chunks are read by the workers.

    Parameters
    ----------
    dataset : Dataset
        Of numbers, of the saved project.
    rows : int, optional
        Objects, or rows of a grid, of a chunk; by default all. A chunk has one time of one
        realization.
    file : ProjectFile, optional
        From :func:`hand_over`; by default workers open the project's own path.

    Returns
    -------
    dask.array.Array
        Of float64, NaN where a value is missing, with the dimensions of ``to_xarray()``: objects,
        or rows and columns of a grid, by times unless the dataset is static, by realizations if
        there are several.

    Raises
    ------
    ValueError
        For texts, for a dataset without values, and for a project without a file.
    """
    load("dask")
    import dask.array
    from dask import delayed

    expect(dataset, Dataset, "what is read")
    if dataset.kind == "text":
        raise ValueError(f"{dataset.name} holds texts: an array holds numbers")
    file = _file_of(dataset, file)
    name, geography = dataset.name, dataset.geography.name
    count = dataset.realizations
    spans, held = stacked_spans(dataset)
    shape = _places(dataset)
    step = shape[0] if rows is None else operator.index(rows)
    if step < 1:
        raise ValueError("a chunk has at least one row")
    timed = not dataset.static
    tail = (1,) * (timed + (count > 1))
    read = delayed(_chunk, pure=True)
    blocks = []
    for first in range(0, shape[0], step):
        last = min(first + step, shape[0])
        size = (last - first,) + shape[1:] + tail
        times = []
        for instant, known in zip(spans[:, 0].tolist(), held):
            parts = [dask.array.from_delayed(
                read(file, geography, name, tail, index, instant, first, last), size, float)
                if known[index] else dask.array.full(size, np.nan, chunks=size)
                for index in range(count)]
            times.append(dask.array.concatenate(parts, axis=-1) if count > 1 else parts[0])
        blocks.append(dask.array.concatenate(times, axis=len(shape)) if timed else times[0])
    return dask.array.concatenate(blocks, axis=0)


def _at_time(file, geography, name, function, text):
    with _lock:
        return function(_dataset_of(file, geography, name), text)


def map_times(function, dataset, times=None, client=None, *, file=None):
    """Calls ``function(dataset, time)`` on the workers, once for each time.

    Parameters
    ----------
    function : callable
        Receives the worker's own dataset and the time as a text. Its result must be one that can be
        pickled, so no part of the project. It must not change the project, which other tasks of the
        worker use as well.
    dataset : Dataset
    times : time or times, optional
        By default the starts of all spans that have values.
    client : distributed.Client, optional
        By default the present one.

    Returns
    -------
    list
        In the order of the times.
    """
    file = _file_of(dataset, file)
    texts = [_text_at(dataset, 0, row) for row in _spans_of(dataset, times, 0)]
    return _gathered(client, _at_time,
                     [(file, dataset.geography.name, dataset.name, function, text)
                      for text in texts])


# Moran's I


def _seed_of(seed, *place):
    """The seed of a task: of the seed of the call and the task's place, whoever runs it."""
    return int(np.random.SeedSequence([seed, *place]).generate_state(1)[0] >> 1)


def _blocks(permutations):
    """The sizes of the blocks, of which there is at least one."""
    whole, rest = divmod(permutations, BLOCK)
    return [BLOCK] * whole + ([rest] if rest or not whole else [])


def _moran_block(file, geography, name, index, weight_set, text, permutations, seed, islands, local):
    with _lock:
        dataset = _dataset_of(file, geography, name)
        number = _native.find_weight_set(dataset.geography._id, weight_set)
        found = _native.moran(dataset._id, index, number, [text], permutations, seed, local, "none",
                              0.05, islands == "drop", "", None)
        return found[0] if found else None


def _runs(dataset, weights, at, permutations, seed, islands, realizations, client, file, local):
    """The results of all blocks by (realization, row of the dataset's spans), and the seed."""
    if not 0 <= operator.index(permutations) <= 10**9:
        raise ValueError("permutations are 0 to 1000000000")
    if islands not in ("keep", "drop"):
        raise ValueError("islands are kept or dropped: \"keep\" or \"drop\"")
    if seed is None:
        import secrets

        seed = 1 + secrets.randbelow(2**31 - 2)
    elif not 0 <= seed < 2**31:
        raise ValueError("a seed is 0 to 2147483647")
    file = _file_of(dataset, file)
    weight_set = _set_of(dataset, weights).name
    if realizations is None:
        realizations = range(1, dataset.realizations + 1)
    places, tasks = [], []
    for realization in realizations:
        index = dataset._index(realization)
        for row in _spans_of(dataset, at, index):
            text = _text_at(dataset, index, row)
            for block, size in enumerate(_blocks(permutations)):
                places.append((realization, row))
                tasks.append((file, dataset.geography.name, dataset.name, index, weight_set, text,
                              size, _seed_of(seed, realization, row, block), islands, local))
    runs = {}
    for place, found in zip(places, _gathered(client, _moran_block, tasks)):
        if found is not None:
            runs.setdefault(place, []).append(found)
    return runs, seed


def _pseudo_p(above, permutations):
    if permutations == 0:
        return np.full(np.shape(above), np.nan)
    return (np.minimum(above, permutations - above) + 1.0) / (permutations + 1.0)


def _times_of(dataset, runs):
    spans = (np.concatenate([parts[0][0] for parts in runs.values()]) if runs
             else np.zeros((0, 3), dtype=np.int64))
    return for_pandas(stamps(spans[:, 0], dataset._form))


def moran(dataset, weights, *, at=None, permutations=999, seed=None, islands="keep",
          realizations=None, client=None, file=None):
    """Moran's I at each time and of each realization, with permutations in blocks of 25,000.

    The statistics are those of :func:`datainterface.moran`. Its permutations are drawn from one
    generator for all times, these from one for each block, so `p` differs as it does between seeds.

    Parameters
    ----------
    realizations : numbers from 1, optional
        By default all.
    client : distributed.Client, optional
        By default the present one.
    file : ProjectFile, optional
        From :func:`hand_over`.

    Returns
    -------
    pandas.DataFrame
        With the columns realization, time, I, expectation, p, permutations and seed.
    """
    pandas = load("pandas")
    runs, seed = _runs(dataset, weights, at, permutations, seed, islands, realizations, client,
                       file, False)
    value = np.array([parts[0][1] for parts in runs.values()])
    above = np.array([sum(part[8] for part in parts) for parts in runs.values()])
    return pandas.DataFrame({
        "realization": [realization for realization, _ in runs],
        "time": _times_of(dataset, runs),
        "I": value,
        "expectation": [parts[0][2] for parts in runs.values()],
        "p": np.where(np.isnan(value), np.nan, _pseudo_p(above, permutations)),
        "permutations": permutations,
        "seed": seed,
    })


def local_moran(dataset, weights, *, at=None, permutations=999, seed=None, correction="none",
                alpha=0.05, realizations=None, client=None, file=None):
    """Moran's I of each object; see :func:`moran` and :func:`datainterface.local_moran`.

    Parameters
    ----------
    correction : {"none", "bonferroni", "holm", "simes", "fdr"}

    Returns
    -------
    pandas.DataFrame
        With the columns realization, time, key, I, z, p and cluster.
    """
    pandas = load("pandas")
    corrections = {"none": lambda p, alpha: p <= alpha, "bonferroni": stats.bonferroni,
                   "holm": stats.holm, "simes": stats.simes, "fdr": stats.fdr}
    if not 0 <= alpha <= 1:
        raise ValueError("alpha is a probability, 0 to 1")
    if correction not in corrections:
        raise ValueError(f"{correction!r} is no correction of blocks: {', '.join(corrections)}")
    runs, seed = _runs(dataset, weights, at, permutations, seed, "keep", realizations, client, file,
                       True)
    keys = getattr(dataset.geography, "object_keys", None)
    if keys is None:
        keys = np.arange(dataset.geography.count)
    times = _times_of(dataset, runs)
    frames = []
    for number, ((realization, _), parts) in enumerate(runs.items()):
        local = parts[0][7]
        above = sum(np.asarray(part[7]["above"]) for part in parts)
        p = np.where(np.isnan(local["I"]), np.nan,
                     _pseudo_p(above if np.size(above) else np.zeros(len(local["I"])),
                               permutations))
        significant = corrections[correction](p, alpha)
        side = np.where(local["deviation"] > 0, "high", "low").astype(object)
        lag = np.where(local["lag"] > 0, "high", "low").astype(object)
        frames.append(pandas.DataFrame({
            "realization": realization, "time": times[number], "key": keys[local["objects"]],
            "I": local["I"], "z": local["z"], "p": p,
            "cluster": np.where(significant, side + "-" + lag, "not significant")}))
    columns = ["realization", "time", "key", "I", "z", "p", "cluster"]
    frame = pandas.concat(frames, ignore_index=True) if frames else pandas.DataFrame(columns=columns)
    frame.attrs["seed"] = seed
    frame.attrs["permutations"] = permutations
    return frame


# Zones and neighbours


def _zonal_at(file, geography, name, index, polygons, text):
    with _lock:
        project = _opened(file)
        dataset = project[geography][name]
        return _native.zonal(dataset._id, index, project[polygons]._id, [text], "", "mean",
                             None)[0]


def zonal(dataset, polygons, *, at=None, realizations=None, client=None, file=None):
    """Statistics of grids over polygons, one task for each time of each realization.

    Returns
    -------
    pandas.DataFrame
        As :func:`datainterface.zonal` gives them, with the column realization before the others.
    """
    pandas = load("pandas")
    expect(dataset, GridDataset, "what is summed up")
    if not isinstance(polygons, VectorGeography):
        raise TypeError("zones are a geography of polygons")
    file = _file_of(dataset, file)
    if realizations is None:
        realizations = range(1, dataset.realizations + 1)
    places, tasks = [], []
    for realization in realizations:
        index = dataset._index(realization)
        for row in _spans_of(dataset, at, index):
            places.append(realization)
            tasks.append((file, dataset.geography.name, dataset.name, index, polygons.name,
                          _text_at(dataset, index, row)))
    if not tasks:
        raise ValueError(f"{dataset.name} holds no values")
    frames = []
    for realization, (span, cells, columns) in zip(places, _gathered(client, _zonal_at, tasks)):
        time = for_pandas(stamps(span[:1, 0], dataset._form))[0]
        frame = pandas.DataFrame({"realization": realization, "time": time,
                                  "key": polygons.object_keys, "cells": cells, **columns})
        frame.loc[cells == 0, list(columns)] = np.nan
        frames.append(frame)
    return pandas.concat(frames, ignore_index=True)


def _weights_at(file, geography, weight_set, text):
    with _lock:
        # Its parts: Dask's own way of sending a matrix would send the set with it.
        return _opened(file)[geography].weights(weight_set, at=text).__reduce__()[1]


def weights(geography, weight_set, times, *, client=None, file=None):
    """The weights of a set at several times, calculated by the workers.

    Parameters
    ----------
    geography : VectorGeography
    weight_set : WeightSet or str
    times : time or times

    Returns
    -------
    list of SpatialWeights
        In the order of the times; without the set, which belongs to the worker's project.
    """
    from ._times import texts_of

    load("scipy.sparse")
    from ._sparse import remade

    if isinstance(weight_set, WeightSet):
        weight_set = weight_set.name
    file = _file_of(geography, file)
    texts = texts_of(times, geography.time_format)
    parts = _gathered(client, _weights_at,
                      [(file, geography.name, weight_set, text) for text in texts])
    return [remade(*part) for part in parts]
