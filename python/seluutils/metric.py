"""Distances of points, with or without a periodic boundary, and neighbor tables of grids."""

from __future__ import annotations

from typing import Sequence

import numpy as np
import numpy.typing as npt

from . import _core
from ._errors import BadParameter

__all__ = ["distance", "neighbor_table"]


def distance(
    a: npt.ArrayLike, b: npt.ArrayLike, *, period: Sequence[float] | None = None
) -> npt.NDArray[np.float64]:
    """Euclidean distances.

    Parameters
    ----------
    a, b : (d,) or (n, d) arrays
        Points, or rows of points; one point against many is taken for each of them.
    period : (d,) numbers
        The extents of a domain of 2 or 3 axes that wraps around: a difference along an axis counts
        by the way around where that is shorter. It must not exceed the extent.

    Returns
    -------
    (n,) float64, or of no axes for two points

    Raises
    ------
    SeluError
        For points of different lengths, and periods of another number of axes.

    Examples
    --------
    >>> float(distance((1, 1), (4, 5)))
    5.0
    >>> distance((1, 1), [(9, 9), (1, 2)], period=(10, 10)).round(4)
    array([2.8284, 1.    ])
    """
    first, second = np.asarray(a, np.float64), np.asarray(b, np.float64)
    if not (1 <= first.ndim <= 2 and 1 <= second.ndim <= 2 and first.shape[-1] == second.shape[-1]):
        raise BadParameter(f"points of the shapes {first.shape} and {second.shape} do not fit")
    rows = np.broadcast_arrays(np.atleast_2d(first), np.atleast_2d(second))
    wrap = None if period is None else [float(extent) for extent in period]
    distances = _core.distances(rows[0], rows[1], wrap)
    return distances if max(first.ndim, second.ndim) == 2 else distances[0, ...]


def neighbor_table(
    n: int, ndim: int = 3, *, periodic: bool = False
) -> npt.NDArray[np.int64]:
    """The neighbors of each cell of a grid of n cells along each axis.

    Parameters
    ----------
    n : int
        Cells along each axis.
    ndim : 2 or 3
        Axes.
    periodic : bool
        Whether beyond one side comes the other.

    Returns
    -------
    (n**ndim, 9 or 27) int64
        By the cells' numbers in ``ravel()``: the 8 or 26 neighbors in raster order, -1 outside the
        grid, and at the end the cell itself.

    Raises
    ------
    BadParameter
        For another number of axes, and a grid too large for memory.

    Examples
    --------
    >>> neighbor_table(3, 2)[4]
    array([0, 1, 2, 3, 5, 6, 7, 8, 4])
    """
    return _core.neighbor_table(n, ndim, periodic)
