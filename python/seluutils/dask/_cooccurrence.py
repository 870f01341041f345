"""Co-occurrence matrices of volumes in chunks.

A pair belongs to the chunk that has its first voxel: a task reads the chunk and as far as the
offsets lead, and counts the pairs whose first voxel lies in the chunk. So every pair counts once.
"""

from __future__ import annotations

from dataclasses import dataclass
from functools import reduce
from typing import Any, Sequence
from uuid import uuid4

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter
from ..texture import Anchor, Range, _offsets
from ._levels import MOST_VOXELS, Found, Gray, check, range_tasks, tree
from ._volume import Array, Box, Graph, Index, Source, Volume, lazy

Counts = npt.NDArray[np.uint64]
#: A matrix has the square of that many entries; 0 takes one of the 16383 that the library counts.
MOST_LEVELS = 16382


def cooccurrence(
    volume: Any,
    offset: npt.ArrayLike | None = None,
    *,
    distances: int | Sequence[int] | None = None,
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Any = None,
    symmetric: bool = False,
    chunks: Any = None,
) -> Any:
    """How often gray level j stands an offset away from gray level i in the whole volume.

    Parameters
    ----------
    volume : path, or Zarr, Dask or NumPy array of shape (z, y, x) or (y, x)
        Integers or floating-point numbers.
    offset : (d,) or (n, d) integers
        In the order of the array's axes, of any sign and length, longer than a chunk as well;
        without it the neighbors.
    distances, levels, bin_width, bin_count, range, anchor, symmetric
        As those of :func:`seluutils.texture.cooccurrence`; the levels are the whole volume's.
    mask : path or array of the volume's shape
        Bool or integers, 0 is off; its chunks may be others.
    chunks : as Dask takes them
        Extents of what a task counts; those of a Dask array, and Dask's choice for others. A task
        reads what is larger than 2**26 voxels in parts.

    Returns
    -------
    (n, ng, ng) dask.array of uint64
        Lazy, in one chunk; ``compute()`` counts. ng is unknown (NaN) until then where it depends on
        the values.

    Raises
    ------
    BadParameter
        At once for arguments that do not go together, when computed for values that are no levels.

    Examples
    --------
    >>> import numpy as np
    >>> counts = cooccurrence(np.eye(4, dtype=np.uint8), (1, 1), levels=2, chunks=2)
    >>> counts.compute(scheduler="synchronous")
    array([[[6, 0],
            [0, 3]]], dtype=uint64)
    """
    image, off = Volume(volume, "volume", chunks), None if mask is None else Volume(mask, "mask")
    gray = Gray(image.dtype, levels, bin_width, bin_count, range, anchor)
    given = _offsets(np.empty((0,) * len(image.shape)), offset, distances)
    where = check(image, off, gray, given)
    recipe = Counting(gray, tuple(map(tuple, where.tolist())), image.shape, symmetric)
    _checked(recipe.known_levels or 0)
    return counts_array(image, off, recipe, image.cores())


@dataclass(frozen=True)
class Counting:
    """What all tasks know."""

    gray: Gray
    offsets: tuple[Index, ...]
    shape: Index
    symmetric: bool

    @property
    def known_levels(self) -> int | None:
        """How many levels there are, if the values found do not matter."""
        gray = self.gray
        if gray.is_plain and gray.levels is None and gray.dtype in (np.uint8, np.int8):
            return 256
        return None if gray.needs_range else gray.levels or gray.bin_count

    def levels(self, found: Found | None) -> int:
        """How many there are; BadParameter for values that are no levels."""
        if self.known_levels is not None:
            return self.known_levels
        assert found is not None
        if self.gray.is_plain:
            ends = np.array([found[:2]]).astype(self.gray.dtype)
            zero = (0,) * 2
            return int(_core.cooccurrence(ends, zero, _core.Recipe(), None, False, None).shape[1])
        return int(_core.quantize(np.zeros((1, 1)), self.gray.recipe().fit(*found), None)[2])

    def near(self, core: Box) -> list[Index]:
        """The offsets whose pairs are read at once: those that lead out by an eighth of the core."""
        return [d for d in self.offsets if all(8 * abs(s) <= e for s, e in zip(d, core.shape))]

    def surroundings(self, core: Box) -> Box:
        """What the pairs of near offsets need."""
        steps = list(zip(*self.near(core), (0,) * len(self.shape)))
        return core.grown([-min(s) for s in steps], [max(s) for s in steps]).within(self._whole)

    def far(self, core: Box) -> list[tuple[int, Index, Box]]:
        """The number of each other offset, the offset, and the first voxels that have a second."""
        near = self.near(core)
        found = []
        for k, d in enumerate(self.offsets):
            if d not in near:
                back = tuple(-s for s in d)
                found.append((k, d, core.within(self._whole.moved(back))))
        return found

    @property
    def _whole(self) -> Box:
        return Box((0,) * len(self.shape), self.shape)

    def boxes(self, core: Box) -> list[Box]:
        """All that the task of a core reads."""
        return [self.surroundings(core)] + [first.moved(d) for _, d, first in self.far(core)]


def counts_array(
    image: Volume, mask: Volume | None, recipe: Counting, cores: dict[Index, Box]
) -> Any:
    """The counts of the pairs whose first voxels lie in the cores, as a lazy array of one chunk."""
    name = f"cooccurrence-{uuid4().hex}"
    graph: Graph = {}
    n = recipe.known_levels
    found = range_tasks(graph, name, image, mask) if n is None else None
    keys = []
    for index, core in cores.items():
        if core.voxels:
            key = (f"{name}-count", *index)
            boxes = recipe.boxes(core)
            source = image.source(graph, key, boxes)
            masks = mask and mask.source(graph, (f"{name}-mask", *index), boxes)
            graph[key] = (count_pairs, source, masks, core, recipe, found)
            keys.append(key)
    total = tree(graph, f"{name}-sum", add_tables, keys)
    graph[(name, 0, 0, 0)] = (finish, total, recipe, found)
    side = (float("nan") if n is None else n,)
    return lazy(graph, name, ((len(recipe.offsets),), side, side), np.uint64, image, mask)


def count_pairs(
    image: Source, mask: Source | None, core: Box, recipe: Counting, found: Found | None
) -> Counts:
    """The pairs whose first voxel lies in the core, in 64 bits, by offset."""
    n = _checked(recipe.levels(found))
    counts: Counts = np.zeros((len(recipe.offsets), n, n), np.uint64)

    def part(*boxes: Box) -> Part:
        off = None if mask is None else in_a_row(mask, boxes)
        return Part(recipe.gray, found, n, in_a_row(image, boxes), off)

    for piece in core.pieces(MOST_VOXELS):
        near = recipe.near(piece)
        if near:
            _count_near(counts, part(recipe.surroundings(piece)), piece, recipe)
        else:  # a value that is no level is refused, whether it has a partner or not
            part(piece).look()
        for k, d, firsts in recipe.far(piece):
            for first in firsts.pieces((piece.voxels + 3) // 4):
                # One after the other, equal places lie the first's extent apart.
                step = (first.shape[0],) + (0,) * (len(d) - 1)
                counts[k] += part(first, first.moved(d)).count(step)
    return counts


def _count_near(counts: Counts, part: Part, core: Box, recipe: Counting) -> None:
    box = recipe.surroundings(core)
    near = recipe.near(core)
    for k, d in enumerate(recipe.offsets):
        if d in near:
            reach = core.grown([max(0, -s) for s in d], [max(0, s) for s in d])
            counts[k] += part.count(d, reach.within(box).slices(box.low))


def in_a_row(source: Source, boxes: Sequence[Box]) -> Array:
    """Boxes of one shape along the first axis; a single box is not copied."""
    if len(boxes) == 1:
        return source.read(boxes[0])
    extent, *others = boxes[0].shape
    row = None
    for k, box in enumerate(boxes):
        voxels = source.read(box)
        if row is None:
            row = np.empty((len(boxes) * extent, *others), voxels.dtype)
        row[k * extent : (k + 1) * extent] = voxels
        del voxels  # its pages go before those of the next come
    assert row is not None
    return row


class Part:
    """The gray levels of voxels in memory."""

    def __init__(
        self, gray: Gray, found: Found | None, n: int, image: Any, mask: Array | None
    ) -> None:
        self._n, self._first = n, 0 if gray.is_plain else 1
        self._data, self._mask = image, mask
        if not gray.is_plain:
            self._data, self._mask = gray.quantize(image, mask, found)[0], None

    def count(self, offset: Index, where: Any = ...) -> Counts:
        """The pairs within a part of it."""
        data, mask = self._data[where], None if self._mask is None else self._mask[where]
        # As plain values all 256 of bytes are counted fastest; the levels start at 1.
        is_byte = self._first == 1 and data.dtype == np.uint8
        recipe = _core.Recipe(levels=None if is_byte else self._n + self._first)
        counts: Counts = _core.cooccurrence(data, offset, recipe, mask, False, None)[0]
        end = self._n + self._first
        return counts[self._first : end, self._first : end]

    def look(self) -> None:
        """BadParameter for values that are no levels."""
        self.count(tuple(self._data.shape))


def add_tables(tables: Sequence[Counts]) -> Counts | None:
    return reduce(np.add, tables) if tables else None


def finish(total: Counts | None, recipe: Counting, found: Found | None) -> Counts:
    if total is None:
        n = _checked(recipe.levels(found))
        return np.zeros((len(recipe.offsets), n, n), np.uint64)
    return total + total.transpose(0, 2, 1) if recipe.symmetric else total


def _checked(levels: int) -> int:
    if levels > MOST_LEVELS:
        raise BadParameter(f"matrices of {levels} levels are too large, more than {MOST_LEVELS}")
    return levels
