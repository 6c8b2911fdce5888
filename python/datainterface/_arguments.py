# SPDX-License-Identifier: MIT
"""Checks of the types of arguments, before anything is changed."""

import functools
import inspect
from collections.abc import Iterable, Sized
from typing import Callable, NamedTuple

import numpy as np


class Kind(NamedTuple):
    """What an argument is, and whether a value is that."""

    what: str
    fits: Callable


def _is_whole(value):
    return hasattr(type(value), "__index__") and np.ndim(value) == 0


def _is_number(value):
    return _is_whole(value) or (hasattr(type(value), "__float__") and np.ndim(value) == 0)


def _is_flag(value):
    return isinstance(value, (bool, np.bool_)) or (_is_whole(value) and value in (0, 1))


def _are_several(value):
    return isinstance(value, Iterable) and not isinstance(value, (str, bytes))


def _are_numbers(value):
    # Iterators are not looked at, since that would use them up.
    return _are_several(value) and (not isinstance(value, Sized) or all(map(_is_number, value)))


def _is_array(value):
    if isinstance(value, np.ndarray) and value.dtype.kind in "biuf":
        return True
    try:
        np.asarray(value, dtype=float)
    except (TypeError, ValueError):
        return False
    return value is not None and np.asarray(value).dtype.kind not in "SU"


TEXT = Kind("a text", lambda value: isinstance(value, str))
WHOLE = Kind("a whole number", _is_whole)
NUMBER = Kind("a number", _is_number)
FLAG = Kind("True or False", _is_flag)
NUMBERS = Kind("several numbers, such as a list", _are_numbers)
ARRAY = Kind("a number or an array of numbers", _is_array)
TEXTS = Kind("a text or several", lambda value: isinstance(value, Iterable)
             or hasattr(type(value), "__fspath__"))
DATASETS = Kind("a dataset, a name of one, or several of these",
                lambda value: not _is_number(value) and not isinstance(value, bytes)
                and (isinstance(value, Iterable) or hasattr(value, "_id")))

def named_type(value):
    """The type of a value with its article: "an int"."""
    name = type(value).__name__
    return f"{'an' if name[0] in 'aeiouAEIOU' else 'a'} {name}"


_LEAST, _MOST = -2 ** 31, 2 ** 31 - 1


def check(name, value, kind):
    """Raises TypeError for a value that is not of a kind, and ValueError for a whole number that the
    library cannot hold."""
    if not kind.fits(value):
        raise TypeError(f"{name} is {kind.what}, not {named_type(value)}")
    if kind is WHOLE and not _LEAST <= value <= _MOST:
        raise ValueError(f"{name} is a whole number of 32 bits; {value} is too large")


def typed(**kinds):
    """Checks the arguments of a function that are named. None passes where it is the default."""

    def decorate(function):
        signature = inspect.signature(function)
        optional = {name for name, parameter in signature.parameters.items()
                    if parameter.default is None}

        @functools.wraps(function)
        def checked(*positional, **keywords):
            try:
                given = signature.bind(*positional, **keywords).arguments
            except TypeError:  # Python's own message names the function
                given = {}
            for name, value in given.items():
                if name in kinds and not (value is None and name in optional):
                    check(name, value, kinds[name])
            return function(*positional, **keywords)

        return checked

    return decorate
