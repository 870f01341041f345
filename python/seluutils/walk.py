"""Walks over the voxels of digital lines, polygons, planes, solids, boxes and whole images.

Each function gives a :class:`Walk`, an iterator over points as tuples in the order of the array's
axes, so that ``image[p]`` is the voxel at p. :mod:`seluutils.draw` has the same functions with all
points at once.

Ctrl-C ends the making of points; the building of a polygon, an area or a solid it cannot interrupt.

`shape` is that of an image; what lies outside it is left out. Neighborhoods are named by the number
of neighbors that a move may lead to: 4, "6.1" (with +-(1, 1)), "6.2" (with +-(1, -1)) and 8 in a
plane, 6, "14.1", "14.2" and 26 in space.
"""

from __future__ import annotations

from typing import Any, Literal, Sequence, Union

import numpy as np
import numpy.typing as npt

from . import _core
from ._core import Walk
from ._errors import BadParameter

__all__ = [
    "Walk",
    "area",
    "ellipsoid",
    "line",
    "plane",
    "polygon",
    "solid",
    "sweep",
    "window",
]

Neighborhood = Union[int, str, None]
Boundary = Literal["closed", "half_open", "open"]
Shape = Union[Sequence[int], None]

_CODES: dict[int, dict[Any, int]] = {
    2: {None: 9, 4: 0, "6.1": 3, "6.2": 6, 8: 9},
    3: {None: 21, 6: 12, "14.1": 15, "14.2": 18, 26: 21},
}


def line(
    start: npt.ArrayLike,
    end: npt.ArrayLike,
    *,
    neighborhood: Neighborhood = None,
    ends: bool = True,
    shape: Shape = None,
) -> Walk:
    """The digital line from one voxel to another.

    Parameters
    ----------
    start, end : (d,) integers
        Its first and last point, in the order of the array's axes.
    neighborhood : int or str
        The moves from voxel to voxel; all of them by default.
    ends : bool
        Whether both ends belong to it.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        O(1) per point; without diagonal moves in space 24 bytes per point.

    Raises
    ------
    BadParameter
        For points of other lengths than 2 or 3, more than 2**31 - 1 apart along an axis.

    Examples
    --------
    >>> list(line((0, 0), (1, 3)))
    [(0, 0), (0, 1), (1, 2), (1, 3)]
    """
    ndim = _ndim(start, "start")
    return _core.line(start, end, ndim, _code(neighborhood, ndim), ends, shape)


def polygon(
    outline: npt.ArrayLike,
    *,
    holes: Sequence[npt.ArrayLike] = (),
    neighborhood: Neighborhood = None,
    border: bool = True,
    boundary: Boundary | None = None,
    shape: Shape = None,
) -> Walk:
    """A simple polygon in a plane or in space, concave or with holes, decided exactly.

    Parameters
    ----------
    outline : (n, d) array
        Its corners in either orientation, in the order of the array's axes. Integers, or in
        ``[y, x]`` real numbers, which are taken as they are.
    holes : sequence of (m, d) arrays
        Polygons inside the outline.
    neighborhood : int or str
        The moves of the digital border lines.
    border : bool
        Whether the digital border lines belong to it; without them there are the points strictly
        inside that are not on a line.
    boundary : {"closed", "half_open", "open"}
        In a plane instead of the border lines: the points inside and those exactly on the outline
        all, none, or so that polygons that tile an area share no point. Real corners always have
        it, "closed" by default.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        Each point once. O(columns of all edges) to build.

    Raises
    ------
    BadParameter
        For corners that do not lie in a plane, or too far apart, and a hole outside the outline.

    Examples
    --------
    >>> len(polygon([(0, 0), (0, 3), (3, 0)]))
    10
    >>> list(polygon([(0.5, 0.5), (0.5, 2.5), (2.5, 0.5)]))
    [(1, 1), (1, 2), (2, 1)]
    """
    ndim = _ndim(outline, "outline")
    is_real = any(np.asarray(corners).dtype.kind == "f" for corners in (outline, *holes))
    if boundary is None and not is_real:
        code = _code(neighborhood, ndim)
        return _core.polygon(outline, list(holes), ndim, code, border, shape)
    if ndim != 2:
        raise BadParameter("a polygon in space has integer corners and no boundary but its border")
    return _core.real_polygon([outline, *holes], boundary or "closed", shape)


def area(
    corners: npt.ArrayLike,
    *,
    neighborhood: Neighborhood = None,
    border: bool = True,
    shape: Shape = None,
) -> Walk:
    """A convex polygon, filled between its digital border lines.

    Parameters
    ----------
    corners : (n, d) integers
        In either orientation, in the order of the array's axes.
    neighborhood : int or str
        The moves of the border lines.
    border : bool
        Whether the border belongs to it.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        Concave outlines and oblique ones in space lose points; :func:`polygon` has them all.

    Raises
    ------
    SeluError
        For outlines that it cannot fill.

    Examples
    --------
    >>> len(area([(0, 0), (0, 3), (3, 3), (3, 0)], border=False))
    4
    """
    ndim = _ndim(corners, "corners")
    return _core.area(corners, ndim, _code(neighborhood, ndim), border, shape)


def plane(
    shape: Sequence[int],
    normal: npt.ArrayLike | None = None,
    distance: float | None = None,
    *,
    through: npt.ArrayLike | None = None,
) -> Walk:
    """The voxels of a plane through a volume, each once.

    Parameters
    ----------
    shape : (3,) integers
        The extents of the volume.
    normal, distance : (3,) real numbers, float
        The plane of all p with ``normal @ p == distance``, in the order of the array's axes; the
        normal need not have length 1.
    through : (3, 3) integers
        Three points of the plane instead.

    Returns
    -------
    Walk
        In each column along the axis of the normal's largest component the voxel nearest the plane.

    Raises
    ------
    BadParameter
        For a normal of zeros and for points in a line.

    Examples
    --------
    >>> list(plane((2, 2, 2), (1, 1, 0), 1))
    [(1, 0, 0), (1, 0, 1), (0, 1, 0), (0, 1, 1)]
    """
    if through is not None:
        if normal is not None or distance is not None:
            raise BadParameter("give normal and distance, or through, not both")
        return _core.plane_through(shape, through)
    if normal is None or distance is None:
        raise BadParameter("a plane needs normal and distance, or three points to go through")
    return _core.plane(shape, normal, distance)


def solid(
    corners: npt.ArrayLike,
    faces: Sequence[Sequence[int]] | npt.NDArray[np.integer[Any]],
    *,
    neighborhood: Neighborhood = None,
    border: bool = True,
    boundary: Boundary | None = None,
    shape: Shape = None,
) -> Walk:
    """A solid given by its surface: concave, hollow or with holes, decided exactly.

    Parameters
    ----------
    corners : (n, 3) integers
        In the order of the array's axes.
    faces : sequence of sequences of int, or (m, k) array
        Numbers of corners, from 0 on: triangles, or polygons in a plane. The surface is closed.
    neighborhood : int or str
        The moves of the faces' border lines.
    border : bool
        Whether the digital faces belong to it, or only the points strictly inside.
    boundary : {"closed", "half_open", "open"}
        Instead of the digital faces: which points exactly on the surface belong to it.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        In raster order, each point once.

    Raises
    ------
    BadParameter
        For an open surface, faces that are not flat, and corners that there are not.

    Examples
    --------
    >>> corners = [(0, 0, 0), (0, 0, 3), (0, 3, 0), (3, 0, 0)]
    >>> len(solid(corners, [(0, 1, 2), (0, 1, 3), (0, 2, 3), (1, 2, 3)]))
    20
    """
    numbered = [[int(corner) for corner in face] for face in faces]
    if any(corner < 0 for face in numbered for corner in face):
        raise BadParameter("a face names a corner below 0")
    return _core.solid(corners, numbered, _code(neighborhood, 3), border, boundary, shape)


def ellipsoid(
    center: npt.ArrayLike,
    semi_axes: float | npt.ArrayLike,
    *,
    border: bool = True,
    shape: Shape = None,
) -> Walk:
    """An ellipsoid along the axes, or a ball, decided exactly.

    Parameters
    ----------
    center : (3,) real numbers
        In the order of the array's axes, in voxels.
    semi_axes : float or (3,) real numbers
        The radius of a ball, or one for each axis.
    border : bool
        Whether points exactly on the surface belong to it.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        In raster order, each point once.

    Raises
    ------
    BadParameter
        For numbers that are not finite, and semi-axes that are not above 0.

    Examples
    --------
    >>> len(ellipsoid((10, 10, 10), 5))
    515
    """
    axes = np.broadcast_to(np.asarray(semi_axes, dtype=np.float64), (3,))
    return _core.ellipsoid(center, axes, border, shape)


def window(start: npt.ArrayLike, stop: npt.ArrayLike, *, shape: Shape = None) -> Walk:
    """All voxels of a box in raster order.

    Parameters
    ----------
    start, stop : (d,) integers
        The first corner, and the one beyond the last, as in a slice.
    shape : tuple of int
        Only the points in an image of this shape.

    Returns
    -------
    Walk
        Empty where a start is not below its stop.

    Raises
    ------
    BadParameter
        For points of other lengths than 2 or 3.

    Examples
    --------
    >>> list(window((1, 2), (3, 4)))
    [(1, 2), (1, 3), (2, 2), (2, 3)]
    """
    return _core.window(start, stop, _ndim(start, "start"), shape)


def sweep(shape: Sequence[int], direction: npt.ArrayLike) -> Walk:
    """All voxels of an image, along parallel lines.

    Parameters
    ----------
    shape : (d,) integers
        The extents of the image.
    direction : (d,) numbers
        In the order of the array's axes. Integers of -1, 0 and 1 give straight lines from border to
        border; any real direction gives digital lines within half a voxel of it, which go on at the
        opposite side where they leave the image.

    Returns
    -------
    Walk
        Each voxel once.

    Raises
    ------
    BadParameter
        For a direction of zeros, and integers other than -1, 0 and 1.

    Examples
    --------
    >>> list(sweep((2, 2), (1, 1)))
    [(0, 0), (1, 1), (1, 0), (0, 1)]
    """
    ndim = _ndim(shape, "shape")
    if np.asarray(direction).dtype.kind == "f":
        return _core.sweep(shape, direction, ndim)
    return _core.unit_sweep(shape, direction, ndim)


def _ndim(points: npt.ArrayLike, name: str) -> int:
    array = np.asarray(points)
    ndim = array.shape[-1] if array.ndim else 0
    if ndim not in (2, 3):
        raise BadParameter(f"{name} must have points of 2 or 3 numbers, not the shape {array.shape}")
    return ndim


def _code(neighborhood: Neighborhood, ndim: int) -> int:
    codes = _CODES[ndim]
    if neighborhood not in codes:
        known = ", ".join(repr(name) for name in codes if name is not None)
        raise BadParameter(f"neighborhood must be one of {known}, not {neighborhood!r}")
    return codes[neighborhood]
