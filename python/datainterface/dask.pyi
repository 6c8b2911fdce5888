# SPDX-License-Identifier: MIT
# Types of dask.py.
from collections.abc import Callable, Iterable, Sequence
from typing import Any, Literal, Optional, Union

import pandas

from . import Dataset, Geography, GridDataset, Project, VectorGeography, WeightSet, _Time

__all__: list[str]

BLOCK: int

_Times = Union[_Time, Sequence[_Time], None]

class ProjectFile:
    path: str
    state: tuple[int, int]
    digest: Optional[str]
    def __init__(self, path: str, state: tuple[int, int], digest: Optional[str] = ...) -> None: ...
    def local_path(self) -> str: ...
    def __dask_tokenize__(self) -> tuple[str, tuple[int, int], Optional[str]]: ...

def array(dataset: Dataset, *, rows: Optional[int] = ...,
          file: Optional[ProjectFile] = ...) -> Any: ...
def hand_over(project: Project, client: Any) -> ProjectFile: ...
def map_times(function: Callable[[Any, str], Any], dataset: Dataset, times: _Times = ...,
              client: Any = ..., *, file: Optional[ProjectFile] = ...) -> list[Any]: ...
def moran(dataset: Dataset, weights: Any, *, at: _Times = ..., permutations: int = ...,
          seed: Optional[int] = ..., islands: Literal["keep", "drop"] = ...,
          realizations: Optional[Iterable[int]] = ..., client: Any = ...,
          file: Optional[ProjectFile] = ...) -> pandas.DataFrame: ...
def local_moran(dataset: Dataset, weights: Any, *, at: _Times = ..., permutations: int = ...,
                seed: Optional[int] = ..., correction: str = ..., alpha: float = ...,
                realizations: Optional[Iterable[int]] = ..., client: Any = ...,
                file: Optional[ProjectFile] = ...) -> pandas.DataFrame: ...
def zonal(dataset: GridDataset, polygons: VectorGeography, *, at: _Times = ...,
          realizations: Optional[Iterable[int]] = ..., client: Any = ...,
          file: Optional[ProjectFile] = ...) -> pandas.DataFrame: ...
def weights(geography: Geography, weight_set: Union[WeightSet, str], times: Union[_Time, Sequence[_Time]], *,
            client: Any = ..., file: Optional[ProjectFile] = ...) -> list[Any]: ...
