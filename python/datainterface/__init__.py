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
from ._exchange import from_geopandas, from_xarray
from ._geography import Geography, GeographyAt, Grid, VectorGeography
from ._geostatistics import (Kriged, KrigedAt, Structure, Validation, Variogram, VariogramModel,
                             cross_validate, krige, make_grid, simulate, stored_model,
                             summarize_realizations, variogram)
from ._project import Project, new, open
from ._weights import WeightSet
from . import stats
from ._native import __version__

__all__ = [
    "DataInterfaceWarning",
    "Dataset",
    "Geography",
    "GeographyAt",
    "Grid",
    "GridDataset",
    "InternalError",
    "Kriged",
    "KrigedAt",
    "Project",
    "Statistics",
    "Structure",
    "UnknownNameError",
    "Validation",
    "Variogram",
    "VariogramModel",
    "VectorDataset",
    "VectorGeography",
    "WeightSet",
    "cross_validate",
    "from_geopandas",
    "from_xarray",
    "krige",
    "local_moran",
    "make_grid",
    "moran",
    "new",
    "open",
    "simulate",
    "stats",
    "stored_model",
    "summarize_realizations",
    "variogram",
    "zonal",
]


def __getattr__(name):
    if name == "dask":
        import importlib

        return importlib.import_module("datainterface.dask")
    raise AttributeError(f"module 'datainterface' has no attribute {name!r}")
