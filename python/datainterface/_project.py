# SPDX-License-Identifier: MIT
"""The project: opened, looked into, saved and closed."""

import atexit
import logging
import operator
import os
import warnings
import weakref
from collections.abc import Mapping

from . import _native
from ._arguments import TEXT, WHOLE, typed
from ._base import expect, path_text, refuse_pickling
from ._errors import DataInterfaceWarning
from ._progress import reporting

_log = logging.getLogger("datainterface")
#: A weak reference to the open project: one that nobody holds any more closes itself.
_present = None


def _warn(text):
    warnings.warn(text, DataInterfaceWarning, stacklevel=3)


_native.set_listeners(_log.info, _warn)


class Project(Mapping):
    """The project that this process has open: geographies by name.

    Made by :func:`open` and :func:`new`. As a context manager it closes itself; what was not
    saved is lost then.
    """

    def __init__(self, path, mode, state=None):
        self._path = path
        # A path from the root, which stays the same when the working directory changes.
        self._file = os.path.abspath(path) if path is not None else None
        self._state = state
        self._mode = mode
        self._open = True

    # Life

    @property
    def path(self):
        """The file as text; None for a new project that was not saved yet."""
        return self._path

    @property
    def mode(self):
        """``"r"``, ``"r+"``, or ``"w"`` of a new project."""
        return self._mode

    @property
    def closed(self):
        """Whether the project was closed."""
        return not self._open

    def _require_open(self):
        if not self._open:
            raise ValueError(f"the project {self._path or 'without a file'} is closed")

    def close(self):
        """Closes the project and removes its scratch files. A closed project stays closed."""
        global _present
        if self._open:
            _native.close()
            self._open = False
            _present = None

    def __enter__(self):
        self._require_open()
        return self

    def __exit__(self, *_):
        self.close()

    def __del__(self):
        if getattr(self, "_open", False):
            self._open = False
            try:
                _native.close()
            except (ValueError, RuntimeError):
                pass  # of a forked process, or within another call

    def __reduce_ex__(self, protocol):
        refuse_pickling(self)

    __eq__ = object.__eq__
    __hash__ = object.__hash__

    def save(self, path=None, *, progress=None):
        """Saves the project; the file is replaced at the end, whole or not at all.

        Parameters
        ----------
        path : path, optional
            By default the file that was opened. A project that is opened for reading is saved to
            another file only.
        progress : callable or bar, optional
            See :func:`open`.

        Raises
        ------
        ValueError
            For a project that is closed, has no file, or is open for reading.
        OSError
            If the file cannot be written, or another program changed it since it was opened. The
            file is then as it was.
        """
        self._require_open()
        if path is None and self._path is None:
            raise ValueError("a new project has no file yet: name one")
        shown = self._path if path is None else path_text(path)
        target = self._file if path is None else os.path.abspath(shown)
        if self._mode == "r" and _same_file(target, self._file):
            raise ValueError(
                f"{self._path} is open for reading: save to another file, or open it with "
                "mode=\"r+\"")
        with reporting(progress) as report:
            _native.save(target, report)
        if self._mode != "r":
            self._path, self._file, self._state = shown, target, state_of(target)

    # Geographies

    def __getitem__(self, name):
        from ._geography import geography_of

        self._require_open()
        if not isinstance(name, str):
            raise TypeError("a geography is named by a text")
        if not name:
            raise ValueError("a name is not empty")
        return geography_of(self, _native.find_geography(name))

    def __contains__(self, name):
        return isinstance(name, str) and name != "" and super().__contains__(name)

    def __iter__(self):
        return iter([geography.name for geography in self.geographies])

    def __bool__(self):
        return True

    def __len__(self):
        self._require_open()
        return len(_native.geographies())

    @property
    def geographies(self):
        """All geographies, in the order of their creation."""
        from ._geography import geography_of

        self._require_open()
        return [geography_of(self, int(number)) for number in _native.geographies()]

    def import_map(self, path, *, progress=None, **options):
        """Imports a vector file, a table of points, a raster or a cube, as the program does.

        Parameters
        ----------
        path : path
            Any file that GDAL reads.
        **options
            ``name`` of the geography; ``layer``; ``key``, the field of the keys; ``start`` and
            ``end``, fields of a row's existence; ``tables``, files whose fields are joined by key;
            ``series``, such as ``"income=1929..2009"``; ``observations``, a table with a row for
            each key and time, and ``observed``, such as ``"wind=wind_kt@time"``; ``types``, such as
            ``"fips=text"``; ``fields``; ``missing``, ``missing_also``; ``x`` and ``y`` of a table;
            ``crs``; ``snap``; ``times`` and ``time_pattern``; ``encoding``; ``decimal``;
            ``strict``. Of grids: ``dataset``, ``no_data``, ``realizations``, ``packed``, and
            ``raster=True`` for the raster of a file that also holds a map.

        Returns
        -------
        Geography

        Raises
        ------
        OSError
            With the file, the field and the row, for what cannot be read.
        TypeError
            For an unknown option.
        """
        from ._exchange import import_file

        return import_file(self, path, progress=progress, **options)

    def remove(self, geography):
        """Removes a geography, by name or itself, with its datasets."""
        from ._geography import Geography

        if isinstance(geography, str):
            geography = self[geography]
        _native.remove_geography(expect(geography, Geography, "what is removed from a project"))

    @property
    def unreadable(self):
        """Whether values of the file could not be read since it was opened."""
        self._require_open()
        return bool(_native.unreadable_file())

    def __repr__(self):
        name = self._path or "new project"
        if not self._open:
            return f"<Project {name}, closed>"
        return f"<Project {name}, {', '.join(self) or 'empty'}>"

    def _repr_html_(self):
        from ._html import project_html

        return project_html(self)


def _same_file(a, b):
    if a is None or b is None:
        return False
    try:
        return os.path.samefile(a, b)
    except OSError:
        return False


def state_of(path):
    """What tells that a file is another one, or was changed."""
    facts = os.stat(path)
    return facts.st_size, facts.st_mtime_ns


def _opened(path, mode, *, reserve, scratch, cache, progress, state=None):
    global _present
    if not 1 <= operator.index(cache) <= 2000:
        raise ValueError("a cache is 1 to 2000 megabytes")
    held = present_project()
    if held is not None:
        _native.geographies()  # raises in a forked process, which cannot close the project either
        raise ValueError(f"{held.path or 'a new project'} is open; a process has one project at a "
                         "time: close it first")
    _native.close()  # of a project that could not close itself, since a call was running
    with reporting(progress) as report:
        _native.open(os.path.abspath(path) if path else "", reserve,
                     path_text(scratch) if scratch is not None else "", cache, report)
    project = Project(path, mode, state)
    _present = weakref.ref(project)
    return project


@typed(mode=TEXT, cache=WHOLE)
def open(path, mode="r", *, scratch=None, cache=64, progress=None):
    """Opens a project.

    Parameters
    ----------
    path : path
        The project file.
    mode : {"r", "r+"}
        ``"r"`` leaves the file alone: values are unpacked when they are read, and changes stay in
        memory unless they are saved to another file. ``"r+"`` reserves the file, so that no other
        program replaces it, and reads all of it.
    scratch : path, optional
        Where temporary files are made; by default the user's cache directory.
    cache : int
        Megabytes of values that are kept in memory, 1 to 2000.
    progress : callable or bar, optional
        Receives ``(percent, text)`` and cancels by returning False; or a bar with ``update(n)``,
        such as one of tqdm, or the class ``tqdm`` itself. Ctrl-C cancels in any case.

    Returns
    -------
    Project

    Raises
    ------
    OSError
        If the file does not exist, cannot be read, or is no project.
    ValueError
        If a project is open already, or for an unknown mode.
    """
    if mode not in ("r", "r+"):
        raise ValueError(f"a project is opened with mode \"r\" or \"r+\", not {mode!r}")
    path = path_text(path)
    state = state_of(path)  # raises with the number and the name of a file that does not exist
    return _opened(path, mode, reserve=mode == "r+", scratch=scratch, cache=cache,
                   progress=progress, state=state)


@typed(cache=WHOLE)
def new(*, scratch=None, cache=64):
    """Makes an empty project without a file.

    Raises
    ------
    ValueError
        If a project is open already.
    """
    return _opened(None, "w", reserve=False, scratch=scratch, cache=cache, progress=None)


def present_project():
    """The open project, or None."""
    held = _present() if _present is not None else None
    return held if held is not None and not held.closed else None


@atexit.register
def _close_at_exit():
    held = present_project()
    if held is not None:
        try:
            held.close()
        except ValueError:
            pass  # of a forked process
