"""Laws of rotations and directions."""

from __future__ import annotations

import math
from typing import Any, Sequence

import numpy as np

from .. import _core
from .._errors import BadParameter
from ._source import Described, Reals, Source, Vector, vector


class Rotations(Described):
    """A law of rotations: of directions, each with a uniform spin about it."""

    _law: _core.RotationLaw

    def directions_xyz(self, n: int, source: Source | None = None) -> Reals:
        """Directions: the third columns of the matrices.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n, 3) float64
            Unit vectors. The exact laws make them without the spin, from fewer random words: they are
            not the columns of the matrices that the same source gives.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import VonMisesFisher
        >>> VonMisesFisher(20).directions_xyz(2, Source(1)).round(3)
        array([[ 0.319, -0.071,  0.945],
               [-0.046, -0.224,  0.973]])
        """
        return self._law.directions_xyz(n, source)

    def rotations(self, n: int, source: Source | None = None) -> Reals:
        """Rotations as matrices.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n, 3, 3) float64
            ``matrix @ v_xyz`` is the turned vector; the third column is the direction.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import Isotropic
        >>> turn = Isotropic().rotations(1, Source(1))[0]
        >>> (turn @ turn.T).round(12) + 0.0
        array([[1., 0., 0.],
               [0., 1., 0.],
               [0., 0., 1.]])
        """
        return self._law.rotations(n, source)

    def quaternions(self, n: int, source: Source | None = None) -> Reals:
        """Rotations as unit quaternions; the rotations that `rotations` gives from the same source.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n, 4) float64
            w, x, y, z. SciPy takes x, y, z, w.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import Fixed
        >>> Fixed(theta=np.pi / 2).quaternions(1).round(4) + 0.0
        array([[ 0.7071, -0.7071,  0.    ,  0.    ]])
        """
        return self._law.quaternions(n, source)

    def euler(self, n: int, source: Source | None = None) -> Reals:
        """Rotations as Euler angles; the rotations that `rotations` gives from the same source.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n, 3) float64
            phi, theta and psi in radians: phi and psi in [-pi, pi], theta in [0, pi]. The matrix is
            Rz(psi) Rx(theta) Rz(phi) with passive Rz and Rx: that of SciPy's
            ``Rotation.from_euler("ZXZ", [-psi, -theta, -phi])``. Where theta is 0 or pi, psi is 0.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import Fixed
        >>> Fixed(0.1, 0.2, 0.3).euler(1).round(6)
        array([[0.1, 0.2, 0.3]])
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
        """Rotations as SciPy has them; those that `rotations` gives from the same source.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        scipy.spatial.transform.Rotation
            Of n rotations.

        Raises
        ------
        BadParameter
            For a negative n.
        ImportError
            Where SciPy is not installed.

        Examples
        --------
        >>> from seluutils.random import Isotropic
        >>> bool((Isotropic().to_scipy(4).magnitude() <= np.pi).all())
        True
        """
        from scipy.spatial.transform import Rotation

        return Rotation.from_quat(self.quaternions(n, source)[:, [1, 2, 3, 0]])


class Isotropic(Rotations):
    """Rotations without any preferred direction.

    Parameters
    ----------
    exact : bool
        False takes the library's older generator, of 32 random bits per angle.

    Notes
    -----
    As quaternions they are uniform points of the sphere in four dimensions, four normal numbers
    scaled to length 1: M. E. Muller, "A Note on a Method for Generating Points Uniformly on
    n-Dimensional Spheres", Communications of the ACM 2 (1959) 19-20.

    Examples
    --------
    >>> Isotropic().directions_xyz(2, Source(1)).round(3)
    array([[ 0.704,  0.693, -0.154],
           [ 0.498, -0.174, -0.85 ]])
    """

    def __init__(self, exact: bool = True) -> None:
        self._law = _core.isotropic_rotations(exact)
        self._arguments = (exact,)


class Watson(Rotations):
    """Directions about both ends of an axis, or across it.

    Their density is proportional to exp(kappa t**2), t the cosine of the angle to the axis.

    Parameters
    ----------
    kappa : float
        The concentration: above 0 directions gather at the axis, below 0 across it, 0 is isotropic.
    axis_xyz : (3,) real numbers
        Of any length but 0.
    exact : bool
        False takes the library's older generator, of 32 random bits. That draws the half about the
        axis alone, t >= 0.

    Raises
    ------
    BadParameter
        Unless kappa and the axis are finite, and the axis is not 0.

    Notes
    -----
    G. S. Watson, "Equatorial Distributions on a Sphere", Biometrika 52 (1965) 193-201. By rejection:
    half of the proposals or more are accepted, whatever kappa is.

    Examples
    --------
    >>> Watson(10, axis_xyz=(0, 0, 1)).directions_xyz(2, Source(1)).round(3)
    array([[ 0.43 , -0.15 ,  0.89 ],
           [ 0.028,  0.325,  0.945]])
    """

    def __init__(self, kappa: float, axis_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        axis = vector(axis_xyz, "axis_xyz")
        self._law = _core.watson_rotations(kappa, axis, exact)
        self._arguments = (kappa, axis, exact)


class VonMisesFisher(Rotations):
    """Directions about a mean.

    Their density is proportional to exp(kappa cos(angle to the mean)).

    Parameters
    ----------
    kappa : float
        The concentration, at least 0; 0 is isotropic. For a large one the angle to the mean is
        1 / sqrt(kappa) or so.
    mean_xyz : (3,) real numbers
        Of any length but 0.
    exact : bool
        False takes the library's older generator, of 32 random bits; kappa is above 0 then.

    Raises
    ------
    BadParameter
        Unless kappa is finite and at least 0, and the mean is finite and not 0.

    Notes
    -----
    R. Fisher, "Dispersion on a Sphere", Proceedings of the Royal Society A 217 (1953) 295-305. Drawn
    is 1 - cosine, an exponential number of at most 2, which keeps its digits for any kappa.

    Examples
    --------
    >>> d = VonMisesFisher(1e6, mean_xyz=(0, 3, 4)).directions_xyz(100)
    >>> bool((d @ (0, 0.6, 0.8) > 0.999).all())
    True
    """

    def __init__(self, kappa: float, mean_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        mean = vector(mean_xyz, "mean_xyz")
        self._law = _core.von_mises_fisher_rotations(kappa, mean, exact)
        self._arguments = (kappa, mean, exact)


class Girdle(Rotations):
    """The directions of a uniform sphere that is stretched across the axis by beta.

    The cosine t of the angle to the axis has the density
    beta / (2 (1 + (beta**2 - 1) t**2)**1.5) on [-1, 1].

    Parameters
    ----------
    beta : float
        Above 0. Below 1 directions gather near the axis, both ways; above 1 near the plane across
        it; 1 is isotropic.
    axis_xyz : (3,) real numbers
        Of any length but 0.
    exact : bool
        False takes the library's older generator, of 32 random bits.

    Raises
    ------
    BadParameter
        Unless beta is finite and above 0, and the axis is finite and not 0.

    Notes
    -----
    The angular central Gaussian distribution of D. E. Tyler, "Statistical Analysis for the Angular
    Central Gaussian Distribution on the Sphere", Biometrika 74 (1987) 579-589.

    Examples
    --------
    >>> d = Girdle(100, axis_xyz=(0, 0, 1)).directions_xyz(1000, Source(1))
    >>> bool(np.median(abs(d[:, 2])) < 0.01)
    True
    """

    def __init__(self, beta: float, axis_xyz: Vector = (0, 0, 1), exact: bool = True) -> None:
        axis = vector(axis_xyz, "axis_xyz")
        self._law = _core.girdle_rotations(beta, axis, exact)
        self._arguments = (beta, axis, exact)


class Fixed(Rotations):
    """One rotation, every time; it draws nothing from the source.

    Parameters
    ----------
    phi, theta, psi : float
        Its Euler angles in radians: the matrix is Rz(psi) Rx(theta) Rz(phi), with passive Rz and Rx.

    Raises
    ------
    SeluError
        For angles that are not finite.

    Examples
    --------
    >>> Fixed(phi=np.pi / 2).rotations(1)[0].round(6) + 0.0
    array([[ 0.,  1.,  0.],
           [-1.,  0.,  0.],
           [ 0.,  0.,  1.]])
    """

    def __init__(self, phi: float = 0.0, theta: float = 0.0, psi: float = 0.0) -> None:
        self._law = _core.fixed_rotations(phi, theta, psi)
        self._arguments = (phi, theta, psi)


class Mixture(Rotations):
    """Laws of rotations, each drawn from in proportion to its weight.

    Parameters
    ----------
    laws : sequence of laws of rotations
        At least one; mixtures as well.
    weights : sequence of real numbers
        One for each law, at least 0, of any sum above 0.

    Raises
    ------
    BadParameter
        For other numbers of weights than of laws, and for weights that are negative, not finite, or
        all 0.

    Notes
    -----
    A uniform number chooses the law, which then draws.

    Examples
    --------
    >>> fibers = Mixture([VonMisesFisher(50), Isotropic()], [3, 1])
    >>> fibers.rotations(2).shape
    (2, 3, 3)
    """

    def __init__(self, laws: Sequence[Rotations], weights: Sequence[float]) -> None:
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
