"""Random numbers, directions, rotations and points, the same from the same source.

Laws draw from a :class:`Source`, or, where none is given, from the system's entropy anew in each
call. What a source gives depends on its seed and stream alone, on every machine; threads and
processes take a stream each.

Directions, rotations and points of space are Cartesian: (x, y, z).

The laws are exact to their tails. With ``exact=False`` they are those of the library's older
generators, from 32 random bits, for results that have to stay as they were.
"""

from __future__ import annotations

import math
from typing import Any, Sequence

import numpy as np
import numpy.typing as npt

from . import _core
from ._errors import BadParameter

__all__ = [
    "Ball",
    "Box",
    "ChordLength",
    "CircleDiameter",
    "Disc",
    "Discrete",
    "Exponential",
    "Fixed",
    "Gamma",
    "Girdle",
    "Isotropic",
    "LogNormal",
    "Mixture",
    "Normal",
    "Poisson",
    "PressedDirections",
    "Rayleigh",
    "Source",
    "Sphere",
    "Uniform",
    "VonMisesFisher",
    "Watson",
]

Reals = npt.NDArray[np.float64]
Vector = Sequence[float]


class Source(_core.Source):
    """A source of random bits.

    Parameters
    ----------
    seed : int, optional
        From 0 to 2**64 - 1; without it the source begins with the system's entropy.
    stream : int
        Different pairs of seed and stream share no numbers.

    >>> Source(42).words(2)
    array([15021278609987233951,  5881210131331364753], dtype=uint64)
    >>> source = Source(42, stream=7)
    >>> state = source.save()
    >>> first = source.words(3)
    >>> source.restore(state)
    >>> bool((source.words(3) == first).all())
    True
    """

    def __reduce__(self) -> tuple[Any, ...]:
        return _restored, (self.save(),)

    def __repr__(self) -> str:
        return f"<Source {self.save()}>"


def _restored(state: str) -> Source:
    source = Source(0)
    source.restore(state)
    return source


class _Described:
    """A value that is made of its arguments: it shows, compares and pickles by them."""

    _arguments: tuple[Any, ...]

    def __repr__(self) -> str:
        return f"{type(self).__name__}({', '.join(map(repr, self._arguments))})"

    def __eq__(self, other: object) -> bool:
        return type(self) is type(other) and self.__dict__["_arguments"] == (
            other.__dict__["_arguments"]
        )

    def __hash__(self) -> int:
        return hash((type(self), self._arguments))

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), self._arguments


class _Scalar(_Described):
    """A law of numbers."""

    _law: _core.Law

    def sample(self, n: int, source: Source | None = None) -> npt.NDArray[Any]:
        """n draws, one after the other: float64, or int64 where the law is one of counts."""
        return self._law.sample(n, source)

    def to_scipy(self) -> Any:
        """The same law as a frozen distribution of ``scipy.stats``."""
        raise NotImplementedError(f"scipy.stats has no {type(self).__name__}")


def _stats() -> Any:
    import scipy.stats

    return scipy.stats


class Uniform(_Scalar):
    """Uniform on [low, high).

    >>> bool((Uniform(5, 6).sample(100) >= 5).all())
    True
    """

    def __init__(self, low: float = 0.0, high: float = 1.0, exact: bool = True) -> None:
        self._law = _core.uniform_law(low, high, exact)
        self._arguments = (low, high, exact)

    def to_scipy(self) -> Any:
        low, high, _ = self._arguments
        return _stats().uniform(low, high - low)


class Normal(_Scalar):
    """Normal, of a mean and a standard deviation.

    >>> Normal(10, 2).sample(3, Source(42)).round(4)
    array([12.1618,  9.0938,  7.1377])
    """

    def __init__(self, mean: float = 0.0, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.normal_law(mean, sigma, exact)
        self._arguments = (mean, sigma, exact)

    def to_scipy(self) -> Any:
        return _stats().norm(*self._arguments[:2])


class LogNormal(_Scalar):
    """The exponential of a normal number of mean mu and standard deviation sigma."""

    def __init__(self, mu: float = 0.0, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.log_normal_law(mu, sigma, exact)
        self._arguments = (mu, sigma, exact)

    def to_scipy(self) -> Any:
        mu, sigma, _ = self._arguments
        return _stats().lognorm(sigma, scale=math.exp(mu))


class Exponential(_Scalar):
    """Exponential, of a rate; the mean is 1 / rate."""

    def __init__(self, rate: float = 1.0, exact: bool = True) -> None:
        self._law = _core.exponential_law(rate, exact)
        self._arguments = (rate, exact)

    def to_scipy(self) -> Any:
        return _stats().expon(scale=1 / self._arguments[0])


class Gamma(_Scalar):
    """Gamma, of a shape and a rate; the mean is shape / rate."""

    def __init__(self, shape: float, rate: float, exact: bool = True) -> None:
        self._law = _core.gamma_law(shape, rate, exact)
        self._arguments = (shape, rate, exact)

    def to_scipy(self) -> Any:
        shape, rate, _ = self._arguments
        return _stats().gamma(shape, scale=1 / rate)


class Poisson(_Scalar):
    """Poisson counts of a mean; with ``exact=False`` roughly, by rounded logistic ones, from 512 on.

    >>> Poisson(1000).sample(2).dtype
    dtype('int64')
    """

    def __init__(self, mean: float, exact: bool = True) -> None:
        self._law = _core.poisson_law(mean, exact)
        self._arguments = (mean, exact)

    def to_scipy(self) -> Any:
        return _stats().poisson(self._arguments[0])


class Rayleigh(_Scalar):
    """Lengths of plane vectors whose components are normal of that standard deviation."""

    def __init__(self, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.rayleigh_law(sigma, exact)
        self._arguments = (sigma, exact)

    def to_scipy(self) -> Any:
        return _stats().rayleigh(scale=self._arguments[0])


class PressedDirections(_Scalar):
    """Angles in [0, pi] between the x axis and (factor cos t, sin t), t uniform on the circle."""

    def __init__(self, factor: float, exact: bool = True) -> None:
        self._law = _core.pressed_directions_law(factor, exact)
        self._arguments = (factor, exact)


class ChordLength(_Scalar):
    """The chord that a random line cuts from a ball of diameter 1: density 2 x on [0, 1)."""

    def __init__(self) -> None:
        self._law = _core.chord_length_law()
        self._arguments = ()

    def to_scipy(self) -> Any:
        return _stats().beta(2, 1)


class CircleDiameter(_Scalar):
    """The diameter of the circle that a random plane cuts from a ball of diameter 1.

    Its density is x / sqrt(1 - x**2) on (0, 1].
    """

    def __init__(self) -> None:
        self._law = _core.circle_diameter_law()
        self._arguments = ()


class Discrete(_Scalar):
    """One of a few numbers, each in proportion to its weight.

    >>> sorted(set(Discrete([0.25, 0.75], [1, 3]).sample(1000).tolist()))
    [0.25, 0.75]
    """

    def __init__(self, values: Sequence[float], weights: Sequence[float]) -> None:
        if len(values) != len(weights):
            raise BadParameter(f"{len(values)} values have {len(weights)} weights")
        self._law = _core.indices_law(list(weights))
        self._arguments = (tuple(values), tuple(weights))

    def sample(self, n: int, source: Source | None = None) -> npt.NDArray[Any]:
        """n of the values, of the dtype that NumPy gives them."""
        return np.asarray(self._arguments[0])[self._law.sample(n, source)]

    def to_scipy(self) -> Any:
        values, weights = self._arguments
        total = math.fsum(weights)
        return _stats().rv_discrete(values=(values, [weight / total for weight in weights]))


class _Rotations(_Described):
    """A law of rotations: of directions, each with a uniform spin about it."""

    _law: _core.RotationLaw

    def directions_xyz(self, n: int, source: Source | None = None) -> Reals:
        """n unit vectors, (n, 3), the third columns of the matrices."""
        return self._law.directions_xyz(n, source)

    def rotations(self, n: int, source: Source | None = None) -> Reals:
        """n rotation matrices, (n, 3, 3); ``matrix @ v_xyz`` is the turned vector."""
        return self._law.rotations(n, source)

    def quaternions(self, n: int, source: Source | None = None) -> Reals:
        """n unit quaternions, (n, 4): w, x, y, z."""
        return self._law.quaternions(n, source)

    def euler(self, n: int, source: Source | None = None) -> Reals:
        """n triples of Euler angles, (n, 3): phi, theta and psi in radians.

        The matrix is Rz(psi) Rx(theta) Rz(phi) with passive Rz and Rx: that of SciPy's
        ``Rotation.from_euler("ZXZ", [-psi, -theta, -phi])``. Without a theta psi is 0.
        """
        m = self._law.rotations(n, source)
        sine = np.hypot(m[:, 0, 2], m[:, 1, 2])
        theta = np.arctan2(sine, m[:, 2, 2])
        is_tilted = sine > 1e-12
        phi = np.where(
            is_tilted, np.arctan2(m[:, 2, 0], -m[:, 2, 1]), np.arctan2(m[:, 0, 1], m[:, 0, 0])
        )
        psi = np.where(is_tilted, np.arctan2(m[:, 0, 2], m[:, 1, 2]), 0.0)
        return np.stack([phi, theta, psi], axis=1)

    def to_scipy(self, n: int, source: Source | None = None) -> Any:
        """n draws as a ``scipy.spatial.transform.Rotation``."""
        from scipy.spatial.transform import Rotation

        return Rotation.from_quat(self.quaternions(n, source)[:, [1, 2, 3, 0]])


def _vector(vector: Vector, name: str) -> tuple[float, float, float]:
    numbers = tuple(float(number) for number in vector)
    if len(numbers) != 3:
        raise BadParameter(f"{name} must be three numbers, not {len(numbers)}")
    x, y, z = numbers
    return x, y, z


class Isotropic(_Rotations):
    """Rotations without any preferred direction.

    >>> Isotropic().directions_xyz(5).shape
    (5, 3)
    """

    def __init__(self, exact: bool = True) -> None:
        self._law = _core.isotropic_rotations(exact)
        self._arguments = (exact,)


class Watson(_Rotations):
    """Directions about both ends of an axis (kappa > 0) or across it (kappa < 0).

    Their density is proportional to exp(kappa t**2), t the cosine of the angle to the axis. With
    ``exact=False`` only the half about the axis is drawn.
    """

    def __init__(self, kappa: float, axis_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        axis = _vector(axis_xyz, "axis_xyz")
        self._law = _core.watson_rotations(kappa, axis, exact)
        self._arguments = (kappa, axis, exact)


class VonMisesFisher(_Rotations):
    """Directions about a mean, with a density proportional to exp(kappa cos(angle to it)).

    >>> d = VonMisesFisher(1e6, mean_xyz=(0, 3, 4)).directions_xyz(100)
    >>> bool((d @ (0, 0.6, 0.8) > 0.999).all())
    True
    """

    def __init__(self, kappa: float, mean_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        mean = _vector(mean_xyz, "mean_xyz")
        self._law = _core.von_mises_fisher_rotations(kappa, mean, exact)
        self._arguments = (kappa, mean, exact)


class Girdle(_Rotations):
    """The directions of a uniform sphere that is stretched across the axis by beta."""

    def __init__(self, beta: float, axis_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        axis = _vector(axis_xyz, "axis_xyz")
        self._law = _core.girdle_rotations(beta, axis, exact)
        self._arguments = (beta, axis, exact)


class Fixed(_Rotations):
    """One rotation, by its Euler angles in radians, every time.

    >>> Fixed(0.1, 0.2, 0.3).euler(1).round(6)
    array([[0.1, 0.2, 0.3]])
    """

    def __init__(self, phi: float = 0.0, theta: float = 0.0, psi: float = 0.0) -> None:
        self._law = _core.fixed_rotations(phi, theta, psi)
        self._arguments = (phi, theta, psi)


class Mixture(_Rotations):
    """Laws of rotations, each drawn from in proportion to its weight.

    >>> fibers = Mixture([VonMisesFisher(50), Isotropic()], [3, 1])
    >>> fibers.rotations(2).shape
    (2, 3, 3)
    """

    def __init__(self, laws: Sequence[_Rotations], weights: Sequence[float]) -> None:
        if len(laws) != len(weights) or not laws:
            raise BadParameter(f"{len(laws)} laws have {len(weights)} weights")
        shares = [float(weight) for weight in weights]
        total = math.fsum(shares)
        if not all(share >= 0 for share in shares) or not 0 < total < math.inf:
            raise BadParameter(f"weights must be at least 0 and have a sum, not {list(weights)}")
        shares = [share / total for share in shares]
        shares[-1] = max(0.0, 1 - sum(shares[:-1]))  # they add up to 1 without a rest
        self._law = _core.mixture_rotations([law._law for law in laws], shares)
        self._arguments = (tuple(laws), tuple(weights))


class _Points(_Described):
    """A law of points in space."""

    _law: _core.PointLaw

    def points_xyz(self, n: int, source: Source | None = None) -> Reals:
        """n points, (n, 3)."""
        return self._law.points_xyz(n, source)


class Box(_Points):
    """Points spread evenly over the box between two corners.

    >>> bool((Box((0, 0, 0), (100, 100, 50)).points_xyz(10) < (100, 100, 50)).all())
    True
    """

    def __init__(self, lower_xyz: Vector, upper_xyz: Vector) -> None:
        lower, upper = _vector(lower_xyz, "lower_xyz"), _vector(upper_xyz, "upper_xyz")
        self._law = _core.box_points(lower, upper)
        self._arguments = (lower, upper)


class Ball(_Points):
    """Points spread evenly over a ball."""

    def __init__(self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0) -> None:
        center = _vector(center_xyz, "center_xyz")
        self._law = _core.ball_points(center, radius)
        self._arguments = (center, radius)


class Sphere(_Points):
    """Points spread evenly over a sphere's surface."""

    def __init__(self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0) -> None:
        center = _vector(center_xyz, "center_xyz")
        self._law = _core.sphere_points(center, radius)
        self._arguments = (center, radius)


class Disc(_Points):
    """Points spread evenly over a disc across an axis."""

    def __init__(
        self, center_xyz: Vector = (0, 0, 0), radius: float = 1.0, axis_xyz: Vector = (0, 0, 1)
    ) -> None:
        center, axis = _vector(center_xyz, "center_xyz"), _vector(axis_xyz, "axis_xyz")
        self._law = _core.disc_points(center, radius, axis)
        self._arguments = (center, radius, axis)
