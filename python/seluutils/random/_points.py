"""Laws of points in space."""

from __future__ import annotations

from .. import _core
from ._source import Described, Reals, Source, Vector, vector


class Points(Described):
    """A law of points in space."""

    _law: _core.PointLaw

    def points_xyz(self, n: int, source: Source | None = None) -> Reals:
        """Points, one after the other.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n, 3) float64
            x, y and z, in the units of the law's arguments.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import Ball
        >>> Ball((10, 10, 10), 5).points_xyz(2, Source(1)).round(3)
        array([[12.939, 12.893,  9.358],
               [ 9.631,  8.196,  5.39 ]])
        """
        return self._law.points_xyz(n, source)


class Box(Points):
    """Points spread evenly over the box between two corners, of 32 random bits per coordinate.

    Parameters
    ----------
    lower_xyz, upper_xyz : (3,) real numbers
        The corners: lower <= p < upper, in any unit.

    Raises
    ------
    BadParameter
        Unless all numbers are finite, and lower is not above upper.

    Examples
    --------
    >>> Box((0, 0, 0), (100, 100, 50)).points_xyz(2, Source(1)).round(2)
    array([[10.02, 74.71, 40.58],
           [59.05, 18.47, 37.31]])
    """

    def __init__(self, lower_xyz: Vector, upper_xyz: Vector) -> None:
        lower, upper = vector(lower_xyz, "lower_xyz"), vector(upper_xyz, "upper_xyz")
        self._law = _core.box_points(lower, upper)
        self._arguments = (lower, upper)


class Ball(Points):
    """Points spread evenly over a ball.

    Parameters
    ----------
    center_xyz : (3,) real numbers
        In any unit.
    radius : float
        In the same unit, at least 0.

    Raises
    ------
    BadParameter
        Unless all numbers are finite, and the radius is at least 0.

    Notes
    -----
    Three of five coordinates of a uniform point of the sphere in five dimensions: F. Barthe,
    O. Guedon, S. Mendelson and A. Naor, "A Probabilistic Approach to the Geometry of the l_p^n-Ball",
    Annals of Probability 33 (2005) 480-513. Nothing is rejected.

    Examples
    --------
    >>> Ball(radius=2).points_xyz(2, Source(1)).round(3)
    array([[ 1.176,  1.157, -0.257],
           [-0.147, -0.722, -1.844]])
    """

    def __init__(self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0) -> None:
        center = vector(center_xyz, "center_xyz")
        self._law = _core.ball_points(center, radius)
        self._arguments = (center, radius)


class Sphere(Points):
    """Points spread evenly over a sphere's surface.

    Parameters
    ----------
    center_xyz : (3,) real numbers
        In any unit.
    radius : float
        In the same unit, at least 0.

    Raises
    ------
    BadParameter
        Unless all numbers are finite, and the radius is at least 0.

    Notes
    -----
    A vector of three normal numbers, scaled to the radius.

    Examples
    --------
    >>> Sphere().points_xyz(2, Source(1)).round(3)
    array([[ 0.704,  0.693, -0.154],
           [ 0.498, -0.174, -0.85 ]])
    """

    def __init__(self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0) -> None:
        center = vector(center_xyz, "center_xyz")
        self._law = _core.sphere_points(center, radius)
        self._arguments = (center, radius)


class Disc(Points):
    """Points spread evenly over a disc across an axis.

    Parameters
    ----------
    center_xyz : (3,) real numbers
        In any unit.
    radius : float
        In the same unit, at least 0.
    axis_xyz : (3,) real numbers
        The disc's normal, of any length but 0.

    Raises
    ------
    BadParameter
        Unless all numbers are finite, the radius is at least 0, and the axis is not 0.

    Notes
    -----
    Two of four coordinates of a uniform point of the sphere in four dimensions, as for
    :class:`Ball`. Nothing is rejected.

    Examples
    --------
    >>> Disc(radius=10).points_xyz(2, Source(1)).round(2)
    array([[ 6.24,  6.14,  0.  ],
           [ 3.62, -1.26,  0.  ]])
    """

    def __init__(
        self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0, axis_xyz: Vector = (0, 0, 1)
    ) -> None:
        center, axis = vector(center_xyz, "center_xyz"), vector(axis_xyz, "axis_xyz")
        self._law = _core.disc_points(center, radius, axis)
        self._arguments = (center, radius, axis)
