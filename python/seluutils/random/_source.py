"""Sources of random bits, and what all laws have in common."""

from __future__ import annotations

from typing import Any, Sequence

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter

Reals = npt.NDArray[np.float64]
Vector = Sequence[float]


class Source(_core.Source):
    """A source of random bits, which depends on its seed and stream alone.

    Two threads cannot draw from one source at a time; the second call raises `SeluError`. Give each
    thread, process or block of work a stream of its own.

    Parameters
    ----------
    seed : int, optional
        From 0 to 2**64 - 1. Without it the source begins with the system's entropy.
    stream : int
        From 0 to 2**64 - 1. That two of a million streams share numbers within 2**64 words each has
        a chance below 2**-150.

    Raises
    ------
    TypeError
        For a seed or stream that is no integer of that range.

    Notes
    -----
    xoshiro256++, with a period of 2**256 - 1: D. Blackman and S. Vigna, "Scrambled Linear
    Pseudorandom Number Generators", ACM Transactions on Mathematical Software 47 (2021).

    Examples
    --------
    >>> Source(42).words(2)
    array([15021278609987233951,  5881210131331364753], dtype=uint64)
    """

    def words(self, n: int) -> npt.NDArray[np.uint64]:
        """The next random words.

        Parameters
        ----------
        n : int
            How many, at least 0.

        Returns
        -------
        (n,) uint64
            Uniform on all 64-bit numbers. One costs about a nanosecond.

        Examples
        --------
        >>> Source(1).words(3) >> np.uint64(60)
        array([12, 11,  1], dtype=uint64)
        """
        return super().words(n)

    def jump(self) -> None:
        """Goes on by 2**128 words. Sources made by successive jumps do not meet before that many.

        >>> source = Source(1)
        >>> source.jump()
        >>> bool((source.words(2) == Source(1).words(2)).any())
        False
        """
        super().jump()

    def save(self) -> str:
        """The state, as one line of text: a name and four words of 16 hexadecimal digits.

        >>> Source(1).save()
        'xoshiro256++ 910a2dec89025cc1 beeb8da1658eec67 f893a2eefb32555e 71c18690ee42c90b'
        """
        return super().save()

    def restore(self, state: str) -> None:
        """Goes on where a source stood.

        Parameters
        ----------
        state : str
            What its `save` gave.

        Raises
        ------
        BadParameter
            For another text; the source is then as it was.

        Examples
        --------
        >>> source = Source(42, stream=7)
        >>> state = source.save()
        >>> first = source.words(3)
        >>> source.restore(state)
        >>> bool((source.words(3) == first).all())
        True
        """
        super().restore(state)

    def __reduce__(self) -> tuple[Any, ...]:
        return _restored, (self.save(),)

    def __repr__(self) -> str:
        return f"<Source {self.save()}>"


def _restored(state: str) -> Source:
    source = Source(0)
    source.restore(state)
    return source


class Described:
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


def vector(given: Vector, name: str) -> tuple[float, float, float]:
    """Three numbers; BadParameter for another number of them."""
    numbers = tuple(float(number) for number in given)
    if len(numbers) != 3:
        raise BadParameter(f"{name} must be three numbers, not {len(numbers)}")
    x, y, z = numbers
    return x, y, z
