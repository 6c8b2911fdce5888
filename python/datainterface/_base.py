# SPDX-License-Identifier: MIT
"""What all nouns of a project share."""

import functools
import html
import os

from ._arguments import named_type


class Part:
    """A part of the open project. It keeps the project, which may have been closed since."""

    __slots__ = ("_project", "_number", "__weakref__")

    def __init__(self, project, number):
        self._project = project
        self._number = number

    @property
    def project(self):
        """The project that this is a part of."""
        return self._project

    @property
    def _id(self):
        project = self._project
        if not project._open:
            project._require_open()
        return self._number

    def __eq__(self, other):
        if not isinstance(other, Part):
            return NotImplemented
        return (type(self) is type(other) and self._project is other._project
                and self._number == other._number)

    def __hash__(self):
        return hash((id(self._project), self._number))

    def __reduce_ex__(self, protocol):
        refuse_pickling(self)


def telling(method):
    """For ``__repr__`` and ``_repr_html_``, which debuggers and notebooks call at any time: a part that
    cannot be used any more tells why."""

    @functools.wraps(method)
    def tell(self):
        try:
            return method(self)
        except (ValueError, OSError) as error:
            text = f"<{type(self).__name__}: {error}>"
            return html.escape(text) if method.__name__ == "_repr_html_" else text

    return tell


def expect(thing, kind, role):
    """The id of a part, which is of a kind.

    Parts count by numbers that mean something else for each kind, so a part of another kind would
    be taken for one that the caller did not name.

    Raises
    ------
    TypeError
        For anything else.
    """
    if not isinstance(thing, kind):
        raise TypeError(f"{role} is a {kind.__name__}, not {named_type(thing)}")
    return thing._id


def refuse_pickling(thing):
    raise TypeError(
        f"a {type(thing).__name__} is a part of the project that this process has open and cannot "
        "be pickled or copied: pass the path of the project and open it there, or pass values, as "
        "to_frame() and to_xarray() give them")


def path_text(path):
    """A path as text, with ``~`` as it stands."""
    if not isinstance(path, (str, bytes)) and not hasattr(type(path), "__fspath__"):
        raise TypeError(f"a path is a text or a path object, not {named_type(path)}")
    return os.fsdecode(os.fspath(path))
