# SPDX-License-Identifier: MIT
"""Weights at one time as a SciPy matrix."""

import zlib

import numpy as np
from scipy.sparse import csr_matrix


class SpatialWeights(csr_matrix):
    """A matrix in compressed rows: row i holds the weights of the neighbours of object i.

    Results of its methods are such matrices without ``weight_set``. Analyses take the weights from
    the set, and refuse a matrix that was changed since it was read from it.

    Attributes
    ----------
    keys : numpy.ndarray or None
        The keys of the objects, by row.
    existing : numpy.ndarray or None
        The keys of the objects that exist at the time; rows and columns of others are empty.
    time : str or None
        The time as text.
    weight_set : WeightSet or None
        The set that the weights were read from.
    """

    def __init__(self, arg1, shape=None, dtype=None, copy=False, *, keys=None, existing=None,
                 time=None, weight_set=None, name="weights"):
        super().__init__(arg1, shape=shape, dtype=dtype, copy=copy)
        self.keys = keys
        self.existing = existing
        self.time = time
        self.weight_set = weight_set
        self._name = name
        self._read = None
        if weight_set is not None:
            self._read = self._print()

    def _print(self):
        """What tells weights from others: their shape and sums over the parts of the matrix."""
        self.sort_indices()
        parts = (self.indptr, self.indices[:self.nnz], self.data[:self.nnz])
        return self.shape, *(zlib.crc32(np.ascontiguousarray(part)) for part in parts)

    def is_as_read(self):
        """Whether these are still the weights that were read from the set."""
        return self._read == self._print()

    def to_libpysal(self, *, islands=True):
        """The objects that exist at the time as ``libpysal.weights.W``, by key.

        Parameters
        ----------
        islands : bool
            Whether objects without neighbours are kept.
        """
        from ._optional import load

        weights = load("libpysal.weights")
        if self.keys is None:
            raise ValueError("these weights have no keys")
        keys = self.keys.tolist()
        existing = set(self.existing.tolist()) if self.existing is not None else set(keys)
        neighbors, values = {}, {}
        for row, key in enumerate(keys):
            if key not in existing:
                continue
            span = slice(self.indptr[row], self.indptr[row + 1])
            if not islands and span.start == span.stop:
                continue
            neighbors[key] = [keys[column] for column in self.indices[span]]
            values[key] = self.data[span].tolist()
        return weights.W(neighbors, values, id_order=list(neighbors), silence_warnings=True)

    def __reduce__(self):
        # Without the set, which belongs to the project of this process.
        return (remade, (np.array(self.data), self.indices, self.indptr, self.shape, self.keys,
                          self.existing, self.time, self._name))

    def __repr__(self):
        when = f" at {self.time}" if self.time else ""
        return f"<SpatialWeights {self._name}{when}: {self.shape[0]} objects, {self.nnz} links>"


def remade(data, indices, indptr, shape, keys, existing, time, name):
    return SpatialWeights((data, indices, indptr), shape=shape, keys=keys, existing=existing,
                          time=time, name=name)
