"""Feature maps of volumes in chunks.

A task reads its windows whole, with level 0 where they lead out of the volume: pairs with such a
voxel do not count, so the windows at the border are as if clipped.
"""

from __future__ import annotations

import itertools
from dataclasses import dataclass
from typing import Any, Literal, Sequence
from uuid import uuid4

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter
from ..texture import Anchor, Range, _names, _offsets
from ._levels import Found, Gray, check, range_tasks
from ._volume import Array, Box, Graph, Index, Source, Volume, lazy, read

#: Bytes of the maps of a chunk, where the caller does not choose the chunks.
MAP_BYTES = 1 << 27


def feature_maps(
    volume: Any,
    size: int | Sequence[int],
    *,
    names: Sequence[str] | None = None,
    offset: npt.ArrayLike | None = None,
    distances: int | Sequence[int] | None = None,
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Any = None,
    step: int | Sequence[int] = 1,
    border: Literal["clipped", "valid"] = "clipped",
    symmetric: bool = True,
    dtype: npt.DTypeLike = np.float32,
    chunks: Any = None,
) -> dict[str, Any]:
    """The features of the window around every voxel of the volume.

    Parameters
    ----------
    volume : path, or Zarr, Dask or NumPy array of shape (z, y, x) or (y, x)
        As :func:`seluutils.texture.feature_maps` takes them.
    size, names, offset, distances, step, border, symmetric, dtype
        As those of :func:`seluutils.texture.feature_maps`.
    levels, bin_width, bin_count, range, anchor
        As those of :func:`seluutils.texture.feature_maps`; the levels are the whole volume's.
    mask : path or array of the volume's shape
        Bool or integers, 0 is off; its chunks may be others.
    chunks : as Dask takes them
        Extents of the voxels whose windows a task takes; those of a Dask array, and for others such
        that all maps of a chunk have some 128 MiB. Windows may be larger.

    Returns
    -------
    dict
        A lazy dask.array by the name of each feature. A task makes all maps of its chunk: compute
        or store them together, as in ``da.store(list(maps.values()), targets)``.

    Raises
    ------
    BadParameter
        At once for arguments that do not go together, when computed for values that are no levels.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.array([[1, 2, 4, 4, 1]], np.uint8)
    >>> maps = feature_maps(image, (1, 3), names=["contrast"], offset=(0, 1), chunks=2)
    >>> maps["contrast"].compute(scheduler="synchronous")
    array([[1. , 2.5, 2. , 4.5, 9. ]], dtype=float32)
    """
    wanted = _names("ibsi", names)
    kind = np.dtype(dtype)
    if kind not in (np.dtype(np.float32), np.dtype(np.float64)):
        raise BadParameter(f"maps are float32 or float64, not {kind}")
    image = Volume(volume, "volume", chunks, MAP_BYTES // (kind.itemsize * max(1, len(wanted))))
    off = None if mask is None else Volume(mask, "mask")
    gray = Gray(image.dtype, levels, bin_width, bin_count, range, anchor)
    ndim = len(image.shape)
    where = check(image, off, gray, _offsets(np.empty((0,) * ndim), offset, distances))
    sample = np.zeros((1,) * ndim, np.uint8)  # what else is wrong is told now
    _core.feature_maps(
        sample, size, where, wanted, _core.Recipe(), None, step, symmetric, border, None, True, None
    )
    sides, steps = (np.broadcast_to(given, ndim).tolist() for given in (size, step))
    windows = Windows(
        gray, where, tuple(wanted), tuple(sides), tuple(steps), symmetric, kind, border, image.shape
    )
    maps = _maps_array(image, off, windows)
    return {name: maps[k] for k, name in enumerate(wanted)}


@dataclass(frozen=True)
class Windows:
    """What all tasks know."""

    gray: Gray
    offsets: Array
    names: tuple[str, ...]
    sides: Index
    steps: Index
    symmetric: bool
    dtype: np.dtype[Any]
    border: str
    shape: Index

    def first(self, axis: int) -> int:
        """The middle of the first window."""
        return self.sides[axis] // 2 if self.border == "valid" else 0

    def parts(self, axis: int, chunks: Sequence[int]) -> list[tuple[int, int]]:
        """The numbers of the windows with their middles in each chunk that has some."""
        first, step = self.first(axis), self.steps[axis]
        room = self.shape[axis] - 2 * first  # of the middles
        count = max(0, -(-room // step))
        edges = [0, *itertools.accumulate(chunks)]
        numbers = [min(count, max(0, -(-(edge - first) // step))) for edge in edges]
        return [(a, b) for a, b in zip(numbers, numbers[1:]) if a < b] or [(0, 0)]

    def box(self, part: Sequence[tuple[int, int]]) -> Box:
        """All voxels of these windows, which may lie beyond the volume."""
        low, high = [], []
        for axis, (a, b) in enumerate(part):
            first, step, reach = self.first(axis), self.steps[axis], self.sides[axis] // 2
            low.append(first + a * step - reach)
            high.append(first + (b - 1) * step + reach + 1)
        return Box(tuple(low), tuple(high))


def _maps_array(image: Volume, mask: Volume | None, windows: Windows) -> Any:
    name = f"feature-maps-{uuid4().hex}"
    graph: Graph = {}
    found = range_tasks(graph, name, image, mask) if windows.gray.needs_range else None
    parts = [windows.parts(axis, chunks) for axis, chunks in enumerate(image.chunks)]
    for index in itertools.product(*(range(len(axis)) for axis in parts)):
        part = tuple(axis[i] for axis, i in zip(parts, index))
        box = windows.box(part).within(image.whole)
        key = (name, 0, *index)
        source = image.source(graph, (f"{name}-image", *index), [box])
        masks = mask and mask.source(graph, (f"{name}-mask", *index), [box])
        graph[key] = (compute_maps, source, masks, list(map(list, part)), windows, found)
    chunks = tuple(tuple(b - a for a, b in axis) for axis in parts)
    return lazy(graph, name, ((len(windows.names),), *chunks), windows.dtype, image, mask)


def compute_maps(
    image: Source, mask: Source | None, part: Any, windows: Windows, found: Found | None
) -> Array:
    """The maps of the windows of a chunk, of shape (features, ...)."""
    shape = tuple(b - a for a, b in part)
    if 0 in shape:
        return np.empty((len(windows.names), *shape), windows.dtype)
    box = windows.box(part)
    inside = box.within(Box((0,) * len(windows.shape), windows.shape))
    levels, n = windows.gray.quantize(image.read(inside), read(mask, inside), found)
    if inside != box:
        padded = np.zeros(box.shape, levels.dtype)
        padded[inside.slices(box.low)] = levels
        levels = padded
    maps: Array = _core.feature_maps(
        levels, windows.sides, windows.offsets, list(windows.names), _core.Recipe(levels=n), None,
        windows.steps, windows.symmetric, "valid", None, windows.dtype == np.float64, None,
    )  # fmt: skip
    return maps
