# SPDX-License-Identifier: MIT
"""Weight sets: who is whose neighbour at each time, and how much it counts."""

import numpy as np

from . import _native
from ._base import Part, telling
from ._geography import objects_of
from ._progress import reporting
from ._times import stamps, text_of


class WeightSet(Part):
    """The definition of neighbours and weights over time."""

    __slots__ = ("_geography",)

    def __init__(self, geography, number):
        super().__init__(geography.project, number)
        self._geography = geography

    @property
    def geography(self):
        """The geography of the objects."""
        return self._geography

    @property
    def _facts(self):
        return _native.describe_weight_set(self._id)

    @property
    def name(self):
        """The name."""
        return self._facts["name"]

    @property
    def definition(self):
        """Such as ``"queen neighbours to order 1, weights row"``."""
        return self._facts["definition"]

    @property
    def information(self):
        """What its maker noted."""
        return self._facts["information"]

    @property
    def stored(self):
        """The starts of the spans whose lists are stored."""
        return stamps(self._facts["stored"][:, 0], self._geography.time_format)

    def at(self, time=None, *, progress=None):
        """The weights at a time; see :meth:`Geography.weights`."""
        from ._optional import load

        load("scipy.sparse")
        from ._sparse import SpatialWeights

        geography = self._geography
        instant = _native.geography_instant(geography._id, text_of(time, geography.time_format))
        with reporting(progress) as report:
            objects, starts, columns, weights = _native.weights_at(self._id, instant, report)
        keys = getattr(geography, "object_keys", None)
        if keys is None:
            keys = np.arange(geography.count)
        return SpatialWeights((weights, columns, starts), shape=(len(keys), len(keys)), keys=keys,
                              existing=keys[objects], weight_set=self, name=self.name,
                              time=_native.show_time(geography._id, instant))

    def remove(self):
        """Removes the set from its geography."""
        _native.remove_weight_set(self._id)

    @telling
    def __repr__(self):
        facts = self._facts
        return f"<WeightSet {facts['name']} of {self._geography.name}: {facts['definition']}>"


def adopt(geography, name, weights, start, end, progress):
    if hasattr(weights, "id_order") and hasattr(weights, "sparse"):  # libpysal's W
        places = objects_of(geography, weights.id_order)
        links = weights.sparse.tocoo()
        rows, columns, values = places[links.row], places[links.col], links.data
    elif hasattr(weights, "tocoo"):
        if weights.shape != (geography.count, geography.count):
            raise ValueError(f"weights of {geography.name} have {geography.count} rows and columns, "
                             f"not {weights.shape[0]} and {weights.shape[1]}")
        links = weights.tocoo()
        rows, columns, values = links.row, links.col, links.data
    else:
        raise TypeError("weights are a SciPy matrix or weights of libpysal")
    if np.asarray(values).dtype.kind not in "biuf":
        raise ValueError(f"weights are numbers, not {np.asarray(values).dtype}")
    values = np.asarray(values, dtype=float)
    if not np.isfinite(values).all():
        raise ValueError("a weight is not finite")
    if (np.abs(values) > np.finfo(np.float32).max).any():
        raise ValueError("a weight is beyond 32-bit numbers")
    order = np.lexsort((columns, rows))
    rows, columns, values = rows[order], columns[order], values[order]
    starts = np.searchsorted(rows, np.arange(geography.count + 1))
    if start is None:
        spans = _native.geography_times(geography._id)
        if len(spans) == 0:
            raise ValueError(f"{geography.name} has no object at any time")
        first, last, closed = spans[0, 0], spans[-1, 1], bool(spans[-1, 2])
    else:
        first, last, closed = geography._span(start, end)
    with reporting(progress) as report:
        number = _native.adopt_weights(geography._id, name, starts.tolist(), columns.tolist(),
                                       values.tolist(), int(first), int(last), closed, report)
    return WeightSet(geography, number)
