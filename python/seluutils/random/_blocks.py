"""Large arrays of draws that come out alike in whatever parts they are made.

An array is laid out in tiles whose extents depend on its number of axes alone. Each tile has a
stream of its own, and its draws follow one another in the order of the array. A part of the array is
cut from the tiles that it meets.
"""

from __future__ import annotations

import itertools
import math
import operator
from typing import Any, Iterator, Literal, Sequence, Union

import numpy as np
import numpy.typing as npt

from .._errors import BadParameter
from ._numbers import Numbers
from ._points import Points
from ._rotations import Rotations
from ._source import Source

Law = Union[Numbers, Rotations, Points]
Method = Literal["sample", "directions_xyz", "rotations", "quaternions", "euler", "points_xyz"]
Index = tuple[int, ...]

# Extents of a tile along the last axes; 1 along those before. About 2**16 to 2**18 draws.
_TILES: dict[int, Index] = {1: (1 << 16,), 2: (256, 256), 3: (64, 64, 64)}
_MOST = 2**64


def draws(
    law: Law,
    shape: int | Sequence[int],
    *,
    seed: int,
    method: Method | None = None,
    first_stream: int = 0,
    low: int | Sequence[int] | None = None,
    high: int | Sequence[int] | None = None,
) -> npt.NDArray[Any]:
    """Draws for all elements of an array, or for a box of it: the same for any division into boxes.

    So the parts of a large array can be made by any threads, processes or machines, in any order,
    and again after one has died. :func:`seluutils.dask.draws` does so on a Dask scheduler.

    Parameters
    ----------
    law : law of this module
        What to draw from.
    shape : int or tuple of int
        The extents of the whole array, in draws.
    seed : int
        From 0 to 2**64 - 1.
    method : str, optional
        The method of the law that draws: by default "sample" for numbers, "points_xyz" for points
        and "rotations" for rotations, which also have "directions_xyz", "quaternions" and "euler".
    first_stream : int
        The number of the first stream. The array takes as many streams of the seed as it has tiles:
        of 65536 draws in one axis, 256 x 256 in two, 64 x 64 x 64 in three or in the last three.
        Arrays that must not share numbers take other seeds, or streams that lie apart.
    low, high : int or tuple of int, optional
        The box wanted: its first element, and the one beyond its last, as in a slice. The whole array
        by default.

    Returns
    -------
    array of the box's shape, and the axes of one draw behind it
        float64 or the law's own dtype. A box costs its own draws and the rest of the tiles that it
        cuts. In one axis a longer array begins with the shorter one.

    Raises
    ------
    BadParameter
        For negative extents, a box that is not in the array, a method that the law does not have, and
        a seed or streams beyond 64 bits.

    Examples
    --------
    >>> from seluutils.random import Isotropic, Normal
    >>> law = Normal(100, 15)
    >>> whole = draws(law, (70, 80, 90), seed=1)
    >>> part = draws(law, (70, 80, 90), seed=1, low=(60, 0, 10), high=(70, 80, 20))
    >>> bool((part == whole[60:70, 0:80, 10:20]).all())
    True
    >>> draws(Isotropic(), 1000, seed=1, method="directions_xyz").shape
    (1000, 3)
    """
    extents = _indices(shape, "shape")
    begin = (0,) * len(extents) if low is None else _indices(low, "low")
    end = extents if high is None else _indices(high, "high")
    if not len(begin) == len(end) == len(extents) or not all(
        0 <= b <= e <= extent for b, e, extent in zip(begin, end, extents)
    ):
        raise BadParameter(f"the box from {begin} to {end} is not in an array of {extents}")
    draw = _drawing(law, method)
    tiles = _tiles(extents)
    if not 0 <= seed < _MOST:
        raise BadParameter(f"the seed must be from 0 to 2**64 - 1, not {seed}")
    if not 0 <= first_stream <= _MOST - math.prod(tiles):
        raise BadParameter(f"the streams from {first_stream} on do not all have 64 bits")
    nothing = draw(0, None)
    out = np.empty(tuple(e - b for b, e in zip(begin, end)) + nothing.shape[1:], nothing.dtype)
    for number, first, last in _met(extents, begin, end):
        sides = [b - a for a, b in zip(first, last)]
        tile = draw(math.prod(sides), Source(seed, first_stream + number))
        tile = tile.reshape(*sides, *nothing.shape[1:])
        common = [(max(a, b), min(c, e)) for a, b, c, e in zip(first, begin, last, end)]
        here = tuple(slice(a - f, b - f) for (a, b), f in zip(common, first))
        there = tuple(slice(a - f, b - f) for (a, b), f in zip(common, begin))
        out[there] = tile[here]
    return out


def _drawing(law: Law, method: Method | None) -> Any:
    """The method of the law."""
    kinds = {Numbers: "sample", Points: "points_xyz", Rotations: "rotations"}
    for kind, usual in kinds.items():
        if isinstance(law, kind):
            others = ("directions_xyz", "quaternions", "euler") if kind is Rotations else ()
            if method in (None, usual, *others):
                return getattr(law, method or usual)
            raise BadParameter(f'{law!r} has no method "{method}"')
    raise BadParameter(f"{law!r} is no law of seluutils.random")


def _indices(given: int | Sequence[int], name: str) -> Index:
    try:
        numbers: Any = (given,) if np.ndim(given) == 0 else given
        index = tuple(map(operator.index, numbers))
    except TypeError:
        raise BadParameter(f"{name} must be integers, not {given!r}") from None
    if not index or min(index) < 0:
        raise BadParameter(f"{name} must be integers of at least 0, not {given!r}")
    return index


def _sides(ndim: int) -> Index:
    return (1,) * (ndim - 3) + _TILES[min(ndim, 3)]


def _tiles(extents: Index) -> Index:
    """How many tiles there are along each axis."""
    return tuple(-(-extent // side) for extent, side in zip(extents, _sides(len(extents))))


def _met(extents: Index, begin: Index, end: Index) -> Iterator[tuple[int, Index, Index]]:
    """Number, first element and the one beyond the last of each tile that the box meets."""
    if any(b >= e for b, e in zip(begin, end)):
        return
    sides, tiles = _sides(len(extents)), _tiles(extents)
    ranges = [range(b // s, -(-e // s)) for b, e, s in zip(begin, end, sides)]
    for index in itertools.product(*ranges):
        number = 0
        for place, count in zip(index, tiles):
            number = number * count + place
        first = tuple(i * s for i, s in zip(index, sides))
        yield number, first, tuple(min(f + s, e) for f, s, e in zip(first, sides, extents))
