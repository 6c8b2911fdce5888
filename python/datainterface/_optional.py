# SPDX-License-Identifier: MIT
"""Packages that are loaded when they are first used."""

import importlib

# By module: the package of the distribution and that of the Python package index.
_PACKAGES = {
    "cftime": ("python3-cftime", "cftime"),
    "dask": ("python3-dask", "dask"),
    "distributed": ("python3-distributed", "distributed"),
    "geopandas": ("python3-geopandas", "geopandas"),
    "libpysal": ("python3-libpysal", "libpysal"),
    "pandas": ("python3-pandas", "pandas"),
    "scipy": ("python3-scipy", "scipy"),
    "shapely": ("python3-shapely", "shapely"),
    "xarray": ("python3-xarray", "xarray"),
}


def load(name):
    """Imports a module; a missing one is named with its packages.

    Raises
    ------
    ImportError
        If the package is not installed.
    """
    try:
        return importlib.import_module(name)
    except ModuleNotFoundError as error:
        top = name.partition(".")[0]
        if error.name is None or error.name.partition(".")[0] != top:
            raise
        debian, index = _PACKAGES[top]
        raise ModuleNotFoundError(
            f"{top} is not installed: install the Debian package {debian}, "
            f"or run: pip install {index}",
            name=top,
        ) from None
