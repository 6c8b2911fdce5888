# SPDX-License-Identifier: MIT
"""Objects and cells by place."""

import math

import numpy as np

from . import _native
from ._arguments import FLAG, NUMBER, WHOLE, typed
from ._optional import load
from ._times import text_of


def _finite(*numbers):
    for number in numbers:
        if not math.isfinite(number):
            raise ValueError(f"{number} is no place or distance")


def _rectangle(left, bottom, right, top):
    _finite(left, bottom, right, top)
    if right < left or top < bottom:
        raise ValueError("a rectangle is left, bottom, right, top")


def _radius(x, y, radius):
    """A radius whose square is finite."""
    _finite(x, y, radius)
    if radius < 0:
        raise ValueError("a radius is not below 0")
    return min(radius, 1e150)


def _rings(polygon):
    """The rings of a polygon as matrices of x and y."""
    if getattr(polygon, "is_empty", False):
        raise ValueError("the polygon is empty")
    parts = getattr(polygon, "geoms", None)
    if getattr(polygon, "geom_type", "") == "Polygon":
        parts = [polygon]
    if parts is None:
        raise TypeError("a polygon is one of shapely, such as geography.shape() gives")
    rings = []
    for part in parts:
        if part.geom_type != "Polygon":
            raise TypeError(f"a {part.geom_type} is no polygon")
        if not part.is_empty:
            rings += [np.asarray(ring.coords)[:, :2] for ring in [part.exterior, *part.interiors]]
    if not all(np.isfinite(ring).all() for ring in rings):
        raise ValueError("the polygon has a vertex that is not finite")
    return [np.ascontiguousarray(ring, dtype=float) for ring in rings]


class VectorQueries:
    """Queries of a vector geography at a time. Boundaries belong to shapes."""

    __slots__ = ()

    def _when(self, at):
        return _native.geography_instant(self._id, text_of(at, self.time_format))

    @typed(left=NUMBER, bottom=NUMBER, right=NUMBER, top=NUMBER)
    def in_rectangle(self, left, bottom, right, top, *, at=None):
        """The keys of the objects that have a point in common with a rectangle.

        Parameters
        ----------
        left, bottom, right, top : float
            In map units.
        at : time, optional
            By default the last.

        Returns
        -------
        numpy.ndarray
            In the order of the objects.
        """
        _rectangle(left, bottom, right, top)
        return self.object_keys[_native.in_rectangle(self._id, left, bottom, right, top,
                                                     self._when(at))]

    @typed(x=NUMBER, y=NUMBER, radius=NUMBER)
    def in_circle(self, x, y, radius, *, at=None):
        """The keys of the objects that have a point in common with a disc, in map units."""
        return self.object_keys[_native.in_circle(self._id, x, y, _radius(x, y, radius),
                                                  self._when(at))]

    def in_polygon(self, polygon, *, at=None):
        """The objects that have a point in common with a polygon.

        Parameters
        ----------
        polygon : shapely.geometry.Polygon or MultiPolygon
            In the coordinates of the geography, such as :meth:`shape` gives.

        Returns
        -------
        pandas.DataFrame
            With the columns key and area: the area that both share, in squared map units, 0 unless
            the objects are polygons.
        """
        pandas = load("pandas")
        objects, areas = _native.in_polygon(self._id, _rings(polygon), self._when(at))
        return pandas.DataFrame({"key": self.object_keys[objects], "area": areas})

    @typed(x=NUMBER, y=NUMBER, count=WHOLE, great_circle=FLAG)
    def nearest(self, x, y, count=1, *, at=None, great_circle=False):
        """The objects nearest to a place.

        Parameters
        ----------
        x, y : float
        count : int
        great_circle : bool
            Kilometres along geodesics, for maps in degrees; to the centroids of polygons.

        Returns
        -------
        pandas.DataFrame
            With the columns key and distance, the nearest first.
        """
        pandas = load("pandas")
        _finite(x, y)
        if count < 1:
            raise ValueError("a count is 1 or more")
        objects, distances = _native.nearest(self._id, x, y, self._when(at), count, great_circle)
        return pandas.DataFrame({"key": self.object_keys[objects], "distance": distances})

    def shape(self, key, *, at=None):
        """The shape of an object at a time; None if it does not exist then.

        Returns
        -------
        shapely.geometry.Point, LineString, Polygon, or a collection of these

        Raises
        ------
        KeyError
            For an unknown key.
        """
        from ._geography import objects_of

        index = int(objects_of(self, [key])[0])
        wkb = _native.shape(self._id, index, self._when(at))
        return None if wkb is None else load("shapely.wkb").loads(wkb)


class GridQueries:
    """Queries of the cells of a grid."""

    __slots__ = ()

    def _cells(self, found):
        pandas = load("pandas")
        rows, columns, areas = found
        frame = pandas.DataFrame({"row": rows, "column": columns, "x": self.x[columns],
                                  "y": self.y[rows]})
        if areas is not None:
            frame["area"] = areas
        return frame

    @typed(left=NUMBER, bottom=NUMBER, right=NUMBER, top=NUMBER, centers=FLAG)
    def in_rectangle(self, left, bottom, right, top, *, centers=False):
        """The cells that share area with a rectangle, or whose centres are in it.

        Returns
        -------
        pandas.DataFrame
            With the columns row, column, x, y and, unless centres count, the shared area.
        """
        _rectangle(left, bottom, right, top)
        return self._cells(_native.cells_in_rectangle(self._id, left, bottom, right, top, centers))

    @typed(x=NUMBER, y=NUMBER, radius=NUMBER)
    def in_circle(self, x, y, radius):
        """The cells whose centres are in a disc: the columns row, column, x and y."""
        return self._cells(_native.cells_in_circle(self._id, x, y, _radius(x, y, radius)))

    @typed(centers=FLAG)
    def in_polygon(self, polygon, *, centers=False):
        """The cells that share area with a polygon, or whose centres are in it; as
        :meth:`in_rectangle`."""
        return self._cells(_native.cells_in_polygon(self._id, _rings(polygon), centers))
