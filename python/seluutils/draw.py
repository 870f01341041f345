"""The points of lines, polygons, planes, solids and boxes as arrays; profiles and painting.

The functions of :mod:`seluutils.walk`, with the same arguments, give all points at once: (n, d)
int64 arrays in the order of the array's axes and of the walk. ``image[tuple(points.T)]`` are the
voxels.

>>> line((0, 0), (1, 3))
array([[0, 0],
       [0, 1],
       [1, 2],
       [1, 3]])
"""

from __future__ import annotations

import functools
import inspect
from typing import Any, Callable, Literal, ParamSpec, TypeVar

import numpy as np
import numpy.typing as npt

from . import walk
from ._errors import BadParameter
from .walk import Walk

__all__ = [
    "area",
    "ellipsoid",
    "line",
    "paint",
    "plane",
    "polygon",
    "profile",
    "solid",
    "sweep",
    "window",
]

Arguments = ParamSpec("Arguments")
Points = npt.NDArray[np.int64]
Image = TypeVar("Image", bound="npt.NDArray[Any]")
Outside = Literal["error", "skip"]


def _all(function: Callable[Arguments, Walk], example: str) -> Callable[Arguments, Points]:
    """The function of `walk` with all points at once, and an example of its own."""

    @functools.wraps(function, assigned=("__name__", "__qualname__"))
    def points(*args: Arguments.args, **kwargs: Arguments.kwargs) -> Points:
        return function(*args, **kwargs).points()

    says = inspect.getdoc(function) or ""
    says = says.replace("\nWalk\n    ", "\n(n, d) int64\n    In the order of the walk. ")
    points.__doc__ = says.partition(">>>")[0] + inspect.cleandoc(example)
    return points


line = _all(
    walk.line,
    """
    >>> image = np.arange(12).reshape(3, 4)
    >>> image[tuple(line((0, 0), (2, 3)).T)]
    array([ 0,  5,  6, 11])
    """,
)
polygon = _all(
    walk.polygon,
    """
    A square with a hole, of which the digital border belongs to both:

    >>> image = np.zeros((5, 5), int)
    >>> square, hole = [(0, 0), (0, 4), (4, 4), (4, 0)], [(1, 1), (1, 3), (3, 3), (3, 1)]
    >>> paint(image, polygon(square, holes=[hole]), 1)
    array([[1, 1, 1, 1, 1],
           [1, 1, 1, 1, 1],
           [1, 1, 0, 1, 1],
           [1, 1, 1, 1, 1],
           [1, 1, 1, 1, 1]])
    """,
)
area = _all(
    walk.area,
    """
    >>> paint(np.zeros((4, 5), int), area([(0, 2), (3, 0), (3, 4)]), 1)
    array([[0, 0, 1, 0, 0],
           [0, 1, 1, 1, 0],
           [0, 1, 1, 1, 0],
           [1, 1, 1, 1, 1]])
    """,
)
plane = _all(
    walk.plane,
    """
    >>> volume = np.arange(27).reshape(3, 3, 3)
    >>> profile(volume, plane(volume.shape, normal=(1, 0, 0), distance=1))
    array([ 9, 10, 11, 12, 13, 14, 15, 16, 17])
    """,
)
solid = _all(
    walk.solid,
    """
    >>> tip, base = (2, 0, 0), [(0, 0, 0), (0, 2, 0), (0, 2, 2), (0, 0, 2)]
    >>> faces = [(1, 2, 3, 4), (0, 1, 2), (0, 2, 3), (0, 3, 4), (0, 4, 1)]
    >>> np.bincount(solid([tip, *base], faces)[:, 0])     # voxels in each slice
    array([9, 4, 1])
    """,
)
ellipsoid = _all(
    walk.ellipsoid,
    """
    >>> ellipsoid((1, 1, 1), (0.5, 1, 1))
    array([[1, 0, 1],
           [1, 1, 0],
           [1, 1, 1],
           [1, 1, 2],
           [1, 2, 1]])
    """,
)
window = _all(
    walk.window,
    """
    >>> window((8, 0), (12, 2), shape=(10, 10))
    array([[8, 0],
           [8, 1],
           [9, 0],
           [9, 1]])
    """,
)
sweep = _all(
    walk.sweep,
    """
    >>> image = np.arange(6).reshape(2, 3)
    >>> profile(image, sweep(image.shape, (1, 1)))
    array([0, 4, 3, 1, 5, 2])
    """,
)


def profile(
    image: npt.NDArray[Any], points: Walk | npt.ArrayLike, *, outside: Outside = "error"
) -> npt.NDArray[Any]:
    """The voxels below a walk, in its order.

    Parameters
    ----------
    image : array of d axes
        Of any dtype.
    points : Walk or (n, d) integers
        Where to look; what is left of a walk.
    outside : {"error", "skip"}
        What becomes of points outside the image.

    Returns
    -------
    (n,) array of the image's dtype

    Raises
    ------
    BadParameter
        For a point outside the image, unless those are skipped.

    Examples
    --------
    >>> image = np.arange(12).reshape(3, 4)
    >>> profile(image, line((0, 0), (2, 3)))
    array([ 0,  5,  6, 11])
    """
    return image[_index(image, points, outside)]


def paint(
    image: Image, points: Walk | npt.ArrayLike, value: Any, *, outside: Outside = "error"
) -> Image:
    """Sets the voxels below a walk.

    Parameters
    ----------
    image : writable array of d axes
        Of any dtype.
    points : Walk or (n, d) integers
        Which ones; what is left of a walk.
    value : number or (n,) array
        One for all, or one for each point.
    outside : {"error", "skip"}
        What becomes of points outside the image.

    Returns
    -------
    array
        The image.

    Raises
    ------
    BadParameter
        For a point outside the image, unless those are skipped; nothing is set then.

    Examples
    --------
    >>> paint(np.zeros((2, 3), np.uint8), line((0, 0), (1, 2)), 7)
    array([[7, 0, 0],
           [0, 7, 7]], dtype=uint8)
    """
    image[_index(image, points, outside)] = value
    return image


def _index(
    image: npt.NDArray[Any], points: Walk | npt.ArrayLike, outside: Outside
) -> tuple[Points, ...]:
    """What indexes the image; NumPy alone would count negative coordinates from the end."""
    where = points.points() if isinstance(points, Walk) else np.asarray(points)
    if where.ndim != 2 or where.shape[1] != image.ndim or where.dtype.kind not in "iu":
        raise BadParameter(
            f"points must be integers of the shape (n, {image.ndim}), not {where.dtype} {where.shape}"
        )
    is_inside = ((where >= 0) & (where < image.shape)).all(axis=1)
    if not is_inside.all():
        if outside == "error":
            first = tuple(where[~is_inside][0].tolist())
            raise BadParameter(f"the point {first} lies outside the image {image.shape}")
        if outside != "skip":
            raise BadParameter(f'outside must be "error" or "skip", not "{outside}"')
        where = where[is_inside]
    return tuple(where.T)
