"""Laws of numbers."""

from __future__ import annotations

import math
from typing import Any, Sequence

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter
from ._source import Described, Source


class Numbers(Described):
    """A law of numbers."""

    _law: _core.Law

    def sample(self, n: int, source: Source | None = None) -> npt.NDArray[Any]:
        """Draws, one after the other.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it. It goes on where it stands: two calls
            give what one call for both would.

        Returns
        -------
        (n,) float64, or int64 where the law is one of counts
            In the unit of the law's arguments.

        Raises
        ------
        BadParameter
            For a negative n.
        SeluError
            Where another thread draws from the source.

        Examples
        --------
        >>> from seluutils.random import Exponential, Source
        >>> source = Source(1)
        >>> Exponential(0.5).sample(2, source).round(4), Exponential(0.5).sample(1, source).round(4)
        (array([2.1936, 2.26  ]), array([0.7228]))
        """
        return self._law.sample(n, source)

    def to_scipy(self) -> Any:
        """The same law as a frozen distribution of ``scipy.stats``.

        Returns
        -------
        frozen distribution
            With ``pdf`` or ``pmf``, ``cdf``, ``mean`` and so on. Its own draws are SciPy's.

        Raises
        ------
        ImportError
            Where SciPy is not installed.
        NotImplementedError
            For laws that SciPy does not have: PressedDirections and CircleDiameter.

        Examples
        --------
        >>> from seluutils.random import Gamma
        >>> float(Gamma(2.5, 0.5).to_scipy().mean())
        5.0
        """
        raise NotImplementedError(f"scipy.stats has no {type(self).__name__}")


def _stats() -> Any:
    import scipy.stats

    return scipy.stats


class Uniform(Numbers):
    """Uniform on [low, high).

    Parameters
    ----------
    low, high : float
        low < high.
    exact : bool
        True gives one of 2**53 equally likely numbers, False one of 2**32.

    Raises
    ------
    BadParameter
        Unless both are finite, their difference as well, and low < high.

    Examples
    --------
    >>> Uniform(5, 6).sample(3, Source(1)).round(4)
    array([5.8116, 5.7471, 5.1002])
    """

    def __init__(self, low: float = 0.0, high: float = 1.0, exact: bool = True) -> None:
        self._law = _core.uniform_law(low, high, exact)
        self._arguments = (low, high, exact)

    def to_scipy(self) -> Any:
        low, high, _ = self._arguments
        return _stats().uniform(low, high - low)


class Normal(Numbers):
    """Normal numbers, of any mean and standard deviation.

    Parameters
    ----------
    mean : float
        Any finite number.
    sigma : float
        The standard deviation, at least 0.
    exact : bool
        False takes the library's older generator, which ends at 6.66 standard deviations.

    Raises
    ------
    BadParameter
        Unless both are finite, and sigma is at least 0.

    Notes
    -----
    The ziggurat: G. Marsaglia and W. W. Tsang, "The Ziggurat Method for Generating Random
    Variables", Journal of Statistical Software 5 (2000) 8. About 2 ns per number.

    Examples
    --------
    >>> Normal(10, 2).sample(3, Source(42)).round(4)
    array([12.1618,  9.0938,  7.1377])
    """

    def __init__(self, mean: float = 0.0, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.normal_law(mean, sigma, exact)
        self._arguments = (mean, sigma, exact)

    def to_scipy(self) -> Any:
        return _stats().norm(*self._arguments[:2])


class LogNormal(Numbers):
    """The exponential of a normal number.

    Parameters
    ----------
    mu : float
        The mean of the logarithm.
    sigma : float
        The standard deviation of the logarithm, at least 0.
    exact : bool
        False takes the library's older generator, of 32 random bits.

    Raises
    ------
    BadParameter
        Unless both are finite, and sigma is at least 0.

    Examples
    --------
    >>> LogNormal(0, 0.5).sample(3, Source(1)).round(4)
    array([1.7325, 1.7175, 0.8869])
    """

    def __init__(self, mu: float = 0.0, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.log_normal_law(mu, sigma, exact)
        self._arguments = (mu, sigma, exact)

    def to_scipy(self) -> Any:
        mu, sigma, _ = self._arguments
        return _stats().lognorm(sigma, scale=math.exp(mu))


class Exponential(Numbers):
    """Exponential numbers: how long something waits that happens at a rate.

    Parameters
    ----------
    rate : float
        Above 0, per unit of the numbers; the mean is 1 / rate.
    exact : bool
        False takes the library's older generator, which ends at 22.2 means.

    Raises
    ------
    BadParameter
        Unless the rate is above 0, and it and the mean are finite.

    Notes
    -----
    The ziggurat, as for :class:`Normal`.

    Examples
    --------
    >>> Exponential(0.5).sample(3, Source(1)).round(4)
    array([2.1936, 2.26  , 0.7228])
    """

    def __init__(self, rate: float = 1.0, exact: bool = True) -> None:
        self._law = _core.exponential_law(rate, exact)
        self._arguments = (rate, exact)

    def to_scipy(self) -> Any:
        return _stats().expon(scale=1 / self._arguments[0])


class Gamma(Numbers):
    """Gamma numbers.

    Parameters
    ----------
    shape : float
        Above 0.
    rate : float
        Above 0, per unit of the numbers; the mean is shape / rate. SciPy's and NumPy's scale is
        1 / rate.
    exact : bool
        False takes the library's older generator, whose law is off by 10**-7 or so.

    Raises
    ------
    BadParameter
        Unless both are finite and above 0, and shape / rate is finite.

    Notes
    -----
    G. Marsaglia and W. W. Tsang, "A Simple Method for Generating Gamma Variables", ACM Transactions
    on Mathematical Software 26 (2000) 363-372.

    Examples
    --------
    >>> Gamma(2.5, 0.5).sample(3, Source(1)).round(4)
    array([8.4413, 3.6647, 3.6674])
    """

    def __init__(self, shape: float, rate: float, exact: bool = True) -> None:
        self._law = _core.gamma_law(shape, rate, exact)
        self._arguments = (shape, rate, exact)

    def to_scipy(self) -> Any:
        shape, rate, _ = self._arguments
        return _stats().gamma(shape, scale=1 / rate)


class Poisson(Numbers):
    """Poisson counts: how often something happens that happens a mean number of times.

    Parameters
    ----------
    mean : float
        From 0 to 2**62.
    exact : bool
        False takes the library's older generator. From a mean of 512 on that gives rounded logistic
        numbers, which follow the law roughly.

    Raises
    ------
    BadParameter
        For another mean.

    Notes
    -----
    Products of uniform numbers below a mean of 10 (D. E. Knuth, The Art of Computer Programming 2,
    3.4.1); from there on transformed rejection, at the same cost for any mean: W. Hoermann, "The
    Transformed Rejection Method for Generating Poisson Random Variables", Insurance: Mathematics and
    Economics 12 (1993) 39-45.

    Examples
    --------
    >>> Poisson(10).sample(5, Source(1))
    array([13,  5,  7, 15, 10])
    """

    def __init__(self, mean: float, exact: bool = True) -> None:
        self._law = _core.poisson_law(mean, exact)
        self._arguments = (mean, exact)

    def to_scipy(self) -> Any:
        return _stats().poisson(self._arguments[0])


class Rayleigh(Numbers):
    """Lengths of plane vectors whose two components are normal numbers of mean 0.

    Parameters
    ----------
    sigma : float
        The standard deviation of a component, above 0.
    exact : bool
        False takes the library's older generator, of 32 random bits.

    Raises
    ------
    BadParameter
        Unless sigma is finite and above 0.

    Examples
    --------
    >>> Rayleigh(2).sample(3, Source(1)).round(4)
    array([2.9622, 3.0066, 1.7003])
    """

    def __init__(self, sigma: float = 1.0, exact: bool = True) -> None:
        self._law = _core.rayleigh_law(sigma, exact)
        self._arguments = (sigma, exact)

    def to_scipy(self) -> Any:
        return _stats().rayleigh(scale=self._arguments[0])


class PressedDirections(Numbers):
    """Angles of plane directions after the plane has been pressed along the x axis.

    The angle, in radians from 0 to pi, between the x axis and (factor cos t, sin t), t uniform on
    the circle.

    Parameters
    ----------
    factor : float
        At least 0. Below 1 the angles gather at pi / 2, above 1 at 0 and pi.
    exact : bool
        False takes the library's older generator, of 32 random bits.

    Raises
    ------
    BadParameter
        Unless the factor is finite and at least 0.

    Examples
    --------
    >>> PressedDirections(0.5).sample(3, Source(1)).round(4)
    array([1.1007, 1.744 , 1.6726])
    """

    def __init__(self, factor: float, exact: bool = True) -> None:
        self._law = _core.pressed_directions_law(factor, exact)
        self._arguments = (factor, exact)


class ChordLength(Numbers):
    """The chord that a random line cuts from a ball of diameter 1.

    Its density is 2 x on [0, 1). Multiply by the diameter for another ball. The numbers are the roots
    of uniform ones of 32 random bits, so none but 0 is below 2**-16.

    >>> ChordLength().sample(3, Source(1)).round(4)
    array([0.9009, 0.8644, 0.3165])
    """

    def __init__(self) -> None:
        self._law = _core.chord_length_law()
        self._arguments = ()

    def to_scipy(self) -> Any:
        return _stats().beta(2, 1)


class CircleDiameter(Numbers):
    """The diameter of the circle that a random plane cuts from a ball of diameter 1.

    Its density is x / sqrt(1 - x**2) on (0, 1]. Multiply by the diameter for another ball. The
    numbers come from uniform ones of 32 random bits, so none is below 2**-15.5.

    >>> CircleDiameter().sample(3, Source(1)).round(4)
    array([0.5842, 0.6647, 0.995 ])
    """

    def __init__(self) -> None:
        self._law = _core.circle_diameter_law()
        self._arguments = ()


class Discrete(Numbers):
    """One of a few numbers, each in proportion to its weight.

    Parameters
    ----------
    values : sequence of numbers
        What is drawn. A value may occur twice: its weights add up.
    weights : sequence of real numbers
        One for each value, at least 0, of any sum above 0.

    Raises
    ------
    BadParameter
        For other numbers of weights than of values, and for weights that are negative, not finite,
        or all 0.

    Notes
    -----
    The alias method, at one cost per draw for any number of values: A. J. Walker, ACM Transactions on
    Mathematical Software 3 (1977) 253-256; M. D. Vose, IEEE Transactions on Software Engineering 17
    (1991) 972-975.

    Examples
    --------
    >>> Discrete([0.25, 0.75], [1, 3]).sample(5, Source(1))
    array([0.75, 0.75, 0.25, 0.75, 0.25])
    """

    def __init__(self, values: Sequence[float], weights: Sequence[float]) -> None:
        if len(values) != len(weights):
            raise BadParameter(f"{len(values)} values have {len(weights)} weights")
        self._law = _core.indices_law(list(weights))
        self._arguments = (tuple(values), tuple(weights))

    def sample(self, n: int, source: Source | None = None) -> npt.NDArray[Any]:
        """Draws, one after the other.

        Parameters
        ----------
        n : int
            How many, at least 0.
        source : Source, optional
            What to draw from; the system's entropy without it.

        Returns
        -------
        (n,) array
            Values, of the dtype that NumPy gives them.

        Raises
        ------
        BadParameter
            For a negative n.

        Examples
        --------
        >>> from seluutils.random import Discrete, Source
        >>> Discrete([1, 10], [1, 1]).sample(6, Source(1))
        array([10, 10,  1, 10,  1, 10])
        """
        return np.asarray(self._arguments[0])[self._law.sample(n, source)]

    def to_scipy(self) -> Any:
        values, weights = self._arguments
        total = math.fsum(weights)
        return _stats().rv_discrete(values=(values, [weight / total for weight in weights]))
