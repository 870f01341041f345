"""Gray levels that are the same in all parts of a volume."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, Iterable, Tuple

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter
from ._volume import Box, Graph, Source, Volume, read

Array = npt.NDArray[Any]
#: Least and greatest value found, and how many there are.
Found = Tuple[float, float, int]

#: Voxels that a task reads at a time: chunks may be larger than memory.
MOST_VOXELS = 1 << 26
#: Tables that are added at a time.
FAN_IN = 8


@dataclass(frozen=True)
class Gray:
    """The arguments that make gray levels, and what a task makes of them."""

    dtype: np.dtype[Any]
    levels: int | None
    bin_width: float | None
    bin_count: int | None
    range: tuple[float, float] | None
    anchor: float | str | None

    @property
    def is_plain(self) -> bool:
        """Whether integers are taken as they are."""
        return self.bin_width is None and self.bin_count is None and self.range is None

    def recipe(self) -> Any:
        return _core.Recipe(self.levels, self.bin_width, self.bin_count, self.range, self.anchor)

    @property
    def needs_range(self) -> bool:
        return self.levels is None if self.is_plain else bool(self.recipe().needs_range)

    def quantize(self, image: Array, mask: Array | None, found: Found | None) -> tuple[Array, int]:
        """Levels 1 .. n of a part, 0 outside, and n."""
        if self.is_plain:
            high = found[1] if found is not None and found[2] else 1
            recipe = _core.Recipe(levels=max(1, int(high)) if self.levels is None else self.levels)
        else:
            recipe = self.recipe()
            if recipe.needs_range:
                recipe = recipe.fit(*(found or (0.0, 0.0, 0)))
        levels, _, n = _core.quantize(image, recipe, mask)
        return levels, n


def range_tasks(graph: Graph, name: str, image: Volume, mask: Volume | None) -> Any:
    """The key of the range that all voxels within have."""
    keys = []
    for index, core in image.cores().items():
        if core.voxels:
            key = (f"{name}-range", *index)
            source = image.source(graph, key, [core])
            masks = mask and mask.source(graph, (f"{name}-range-mask", *index), [core])
            graph[key] = (value_range, source, masks, core)
            keys.append(key)
    return tree(graph, f"{name}-range", join_ranges, keys)


def value_range(image: Source, mask: Source | None, core: Box) -> Found:
    parts = core.pieces(MOST_VOXELS)
    return join_ranges(_core.value_range(image.read(p), read(mask, p)) for p in parts)


def join_ranges(ranges: Iterable[Found]) -> Found:
    found = [part for part in ranges if part[2]]
    lows, highs = [part[0] for part in found], [part[1] for part in found]
    return min(lows, default=0.0), max(highs, default=0.0), sum(part[2] for part in found)


def tree(graph: Graph, name: str, join: Any, keys: list[Any]) -> Any:
    """The key of all values joined, a few at a time; tasks near each other are joined first."""
    level = 0
    while len(keys) > 1 or level == 0:
        joined = []
        for k in range(0, max(1, len(keys)), FAN_IN):
            joined.append((f"{name}-join", level, k // FAN_IN))
            graph[joined[-1]] = (join, keys[k : k + FAN_IN])
        keys = joined
        level += 1
    return keys[0]


def check(image: Volume, mask: Volume | None, gray: Gray, offset: Any) -> Array:
    """The offsets as (n, d); what is wrong with the arguments is told before any task runs."""
    if mask is not None and mask.shape != image.shape:
        raise BadParameter("mask and image must have the same shape")
    recipe = gray.recipe()
    if not gray.is_plain:  # fitted to whatever may come
        recipe = _core.Recipe(levels=2, range=(0.0, 2.0))
    one = (1,) * len(image.shape)
    masks = None if mask is None else np.zeros(one, mask.dtype)
    _core.cooccurrence(np.zeros(one, image.dtype), offset, recipe, masks, False, None)
    return np.asarray(offset).reshape(-1, len(image.shape))
