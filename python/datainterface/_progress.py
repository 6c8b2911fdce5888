# SPDX-License-Identifier: MIT
"""Progress of long calls: callables, and bars in the manner of tqdm."""

import contextlib


class _Bar:
    """Moves a bar with ``update(n)`` to a percentage."""

    def __init__(self, bar):
        self._bar = bar
        self._percent = 0

    def __call__(self, percent, text):
        if text and hasattr(self._bar, "set_description"):
            self._bar.set_description(text, refresh=False)
        # A call may have several pieces of work, each from 0 to 100.
        if percent > self._percent:
            self._bar.update(percent - self._percent)
            self._percent = percent

    def complete(self):
        if self._percent < 100:
            self._bar.update(100 - self._percent)


@contextlib.contextmanager
def reporting(progress):
    """A callable of a percentage and a text for the native module, or None.

    Parameters
    ----------
    progress : callable, bar, class of bars or None
        A callable receives ``(percent, text)``, and cancels the call by returning False. A bar
        has ``update(n)`` and a total of 100; of a class such as ``tqdm`` one is made and closed.
    """
    if progress is None:
        yield None
        return
    if not hasattr(progress, "update"):
        if not callable(progress):
            raise TypeError("progress is a callable of a percentage and a text, or a bar as tqdm's")
        yield progress
        return
    made = isinstance(progress, type)
    held = progress(total=100) if made else progress
    bar = _Bar(held)
    try:
        yield bar
        bar.complete()
    finally:
        if made:
            held.close()
