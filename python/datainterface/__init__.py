# SPDX-License-Identifier: MIT
"""Geographies that change over time, their datasets, weights and statistics.

A process has one project open at a time::

    import datainterface as di

    with di.open("income.vorn") as project:
        states = project["states48"]
        income = states["income"]
        queen = states.weights("queen", at=1929)
        di.moran(income, queen, permutations=999, seed=1)

Importing the package loads NumPy alone. Pandas, geopandas, xarray, SciPy and libpysal are loaded by
the calls that need them.
"""

from ._analysis import local_moran, moran, zonal
from ._dataset import Dataset, GridDataset, Statistics, VectorDataset
from ._errors import DataInterfaceWarning, InternalError, UnknownNameError
from ._geography import Geography, GeographyAt, Grid, VectorGeography
from ._project import Project, new, open
from ._weights import WeightSet

__all__ = [
    "DataInterfaceWarning",
    "Dataset",
    "Geography",
    "GeographyAt",
    "Grid",
    "GridDataset",
    "InternalError",
    "Project",
    "Statistics",
    "UnknownNameError",
    "VectorDataset",
    "VectorGeography",
    "WeightSet",
    "local_moran",
    "moran",
    "new",
    "open",
    "zonal",
]


def __getattr__(name):
    if name == "dask":
        import importlib

        return importlib.import_module("datainterface.dask")
    raise AttributeError(f"module 'datainterface' has no attribute {name!r}")
