# SPDX-License-Identifier: MIT
"""Exceptions and warnings of the package."""


class InternalError(RuntimeError):
    """A condition inside the library does not hold, after which the open project cannot be trusted.

    The text is the library's: the condition, its file and line.
    """


class UnknownNameError(KeyError):
    """A geography, dataset, weight set, model or object of that name does not exist."""

    def __str__(self):
        # KeyError would show the text in quotes.
        return str(self.args[0]) if self.args else ""


class DataInterfaceWarning(UserWarning):
    """A warning of the library, such as that a file could be read in part only."""
