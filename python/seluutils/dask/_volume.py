"""Volumes in chunks: where they lie, and how a task reads a box of one.

A source is what a task gets: it reads any box of the volume. That of a file holds the path; that of
a Dask array holds the slabs of chunks that the task asked for.
"""

from __future__ import annotations

import itertools
import math
import os
from dataclasses import dataclass
from functools import cached_property
from importlib import import_module
from pathlib import Path
from typing import Any, Iterable, Iterator, NamedTuple, Protocol, Sequence, Tuple
from uuid import uuid4

import dask.array
import numpy as np
import numpy.typing as npt

from .._errors import BadParameter

# Dask's functions have no types.
da: Any = dask.array

Array = npt.NDArray[Any]
Index = Tuple[int, ...]
Graph = dict[Any, Any]


class Box(NamedTuple):
    """Voxels from `low` up to but not including `high`."""

    low: Index
    high: Index

    @property
    def shape(self) -> Index:
        return tuple(max(0, h - l) for l, h in zip(self.low, self.high))

    @property
    def voxels(self) -> int:
        return math.prod(self.shape)

    def moved(self, offset: Sequence[int]) -> Box:
        return Box(
            tuple(l + d for l, d in zip(self.low, offset)),
            tuple(h + d for h, d in zip(self.high, offset)),
        )

    def grown(self, below: Sequence[int], above: Sequence[int]) -> Box:
        return Box(
            tuple(l - b for l, b in zip(self.low, below)),
            tuple(h + a for h, a in zip(self.high, above)),
        )

    def within(self, other: Box) -> Box:
        """What both have; without voxels where they do not meet."""
        low = tuple(max(a, b) for a, b in zip(self.low, other.low))
        return Box(low, tuple(max(l, min(a, b)) for l, a, b in zip(low, self.high, other.high)))

    def slices(self, origin: Index) -> tuple[slice, ...]:
        """The box in an array whose first voxel is `origin`."""
        return tuple(slice(l - o, h - o) for l, h, o in zip(self.low, self.high, origin))

    def pieces(self, most: int) -> Iterator[Box]:
        """Boxes of at most `most` voxels, halved along the longest axis as long as it takes."""
        if self.voxels <= max(1, most):
            if self.voxels:
                yield self
            return
        axis = int(np.argmax(self.shape))
        middle = (self.low[axis] + self.high[axis]) // 2
        yield from Box(self.low, _with(self.high, axis, middle)).pieces(most)
        yield from Box(_with(self.low, axis, middle), self.high).pieces(most)


def _with(index: Index, axis: int, value: int) -> Index:
    return index[:axis] + (value,) + index[axis + 1 :]


class Source(Protocol):
    """What a task reads a volume from."""

    def read(self, box: Box) -> Array:
        """The voxels of a box, which must not be changed."""


def read(source: Source | None, box: Box) -> Array | None:
    """The voxels of a box of a volume that may not be given."""
    return None if source is None else source.read(box)


@dataclass(frozen=True)
class MappedFile:
    """Numbers in a file at any strides; the pages that a box touches are read."""

    path: str
    dtype: np.dtype[Any]
    shape: Index
    offset: int
    strides: Index

    def read(self, box: Box) -> Array:
        data = np.memmap(self.path, np.uint8, "r")
        whole: Array = np.ndarray(self.shape, self.dtype, data, self.offset, self.strides)
        return whole[box.slices((0,) * len(self.shape))]


@dataclass(frozen=True)
class ZarrFile:
    """A Zarr array, which pickles as its store and path."""

    array: Any

    def read(self, box: Box) -> Array:
        return np.asarray(self.array[box.slices((0,) * self.array.ndim)])


class Slabs:
    """Parts of a volume in memory."""

    def __init__(self, dtype: np.dtype[Any], boxes: Sequence[Box], arrays: Sequence[Array]) -> None:
        self._dtype = dtype
        self._parts = list(zip(boxes, arrays))

    def read(self, box: Box) -> Array:
        for part, array in self._parts:
            if box.within(part) == box:
                return np.asarray(array)[box.slices(part.low)]
        whole = np.empty(box.shape, self._dtype)
        for part, array in self._parts:
            common = box.within(part)
            if common.voxels:
                whole[common.slices(box.low)] = array[common.slices(part.low)]
        return whole


class Volume:
    """A volume of any kind, and the boxes of its chunks."""

    def __init__(self, given: Any, name: str, chunks: Any = None, most: int | None = None) -> None:
        """Chunks of `most` voxels or so, where neither the caller nor a Dask array has its own."""
        opened = _opened(given, name)
        self.shape: Index = tuple(opened.shape)
        self.dtype: np.dtype[Any] = np.dtype(opened.dtype)
        self._file: Source | None = None
        self._array: Any = None
        if isinstance(opened, (np.ndarray, da.Array)):
            self._file = _mapped(opened) if isinstance(opened, np.memmap) else None
            own = opened.chunks if isinstance(opened, da.Array) else None
            if self._file is None:
                self._array = opened if own else da.from_array(opened, chunks or "auto")
        else:
            self._file, own = ZarrFile(opened), None
        if any(isinstance(n, float) for n in self.shape):
            raise BadParameter(f"{name} has chunks of unknown sizes (see compute_chunk_sizes)")
        previous = getattr(opened, "chunks", None)
        if chunks is None and own:
            self.chunks = own
        elif self.shape:
            limit = None if most is None else most * self.dtype.itemsize
            self.chunks = da.core.normalize_chunks(
                chunks or "auto", self.shape, limit, self.dtype, previous
            )
        else:
            self.chunks = ()

    @property
    def whole(self) -> Box:
        return Box((0,) * len(self.shape), self.shape)

    def cores(self) -> dict[Index, Box]:
        """The boxes of the chunks by their index."""
        edges = _edges_of(self.chunks)
        indices = itertools.product(*(range(len(axis)) for axis in self.chunks))
        return {index: _chunk(edges, index) for index in indices}

    def source(self, graph: Graph, name: Any, boxes: Iterable[Box]) -> Any:
        """What reads these boxes, for a task of a graph; adds the tasks it needs."""
        if self._file is not None:
            return self._file
        parts: dict[Box, Any] = {}
        for box in boxes:
            for index, part in self._slabs(box):
                if part not in parts:
                    key = (self._array.name, *index)
                    chunk = _chunk(self._edges, index)
                    if part != chunk:
                        slab = (f"{name[0]}-slab", *name[1:], len(parts))
                        graph[slab] = (_part, key, part.slices(chunk.low))
                        key = slab
                    parts[part] = key
        return (Slabs, self.dtype, list(parts), list(parts.values()))

    @cached_property
    def _edges(self) -> list[Array]:
        return _edges_of(self._array.chunks)

    def _slabs(self, box: Box) -> Iterator[tuple[Index, Box]]:
        """The chunks that a box meets, and where."""
        if not box.voxels:
            return
        ranges = []
        for edge, low, high in zip(self._edges, box.low, box.high):
            first = int(np.searchsorted(edge, low, "right")) - 1
            ranges.append(range(first, int(np.searchsorted(edge, high, "left"))))
        for index in itertools.product(*ranges):
            part = box.within(_chunk(self._edges, index))
            if part.voxels:
                yield index, part


def computed(graph: Graph, keys: Sequence[Any], *read: Volume | None) -> list[Any]:
    """The values of keys of a graph that reads these volumes, by whatever scheduler runs."""
    name = f"all-{uuid4().hex}"
    graph[name] = (list, list(keys))
    layers = _layers(graph, name, read)
    return list(import_module("dask.delayed").Delayed(name, layers, layer=name).compute())


def lazy(graph: Graph, name: str, chunks: Any, dtype: Any, *read: Volume | None) -> Any:
    """A Dask array of a graph that reads these volumes."""
    return da.Array(_layers(graph, name, read), name, chunks, dtype=dtype)


def _layers(graph: Graph, name: str, read: Sequence[Volume | None]) -> Any:
    needed = [volume._array for volume in read if volume is not None and volume._array is not None]
    layers: Any = import_module("dask.highlevelgraph").HighLevelGraph
    return layers.from_collections(name, graph, dependencies=needed)


def _edges_of(chunks: Any) -> list[Array]:
    return [np.concatenate([[0], np.cumsum(axis)]).astype(np.int64) for axis in chunks]


def _chunk(edges: list[Array], index: Index) -> Box:
    low = tuple(int(edge[i]) for edge, i in zip(edges, index))
    return Box(low, tuple(int(edge[i + 1]) for edge, i in zip(edges, index)))


def _part(chunk: Array, slices: tuple[slice, ...]) -> Array:
    """A copy, so that the chunk can go."""
    return np.array(chunk[slices])


def _opened(given: Any, name: str) -> Any:
    if isinstance(given, (str, os.PathLike)):
        path = Path(given).resolve()
        if path.suffix == ".npy":
            return np.load(path, mmap_mode="r")
        if not path.is_dir():
            raise BadParameter(f"{name} is {str(given)!r}, neither a .npy file nor a Zarr folder")
        zarr: Any = import_module("zarr")
        given = zarr.open(str(path), mode="r")
    if isinstance(given, (np.ndarray, da.Array)):
        return given
    if type(given).__module__.partition(".")[0] == "zarr" and hasattr(given, "shape"):
        return given
    raise BadParameter(
        f"{name} must be the path of a .npy file or of a Zarr array, a Zarr, Dask or NumPy array, "
        f"not {type(given).__name__}"
    )


def _mapped(array: Any) -> MappedFile | None:
    """Where in its file a memory-mapped array or a view of one lies; None for private pages."""
    root = array
    while isinstance(root.base, np.ndarray):
        root = root.base
    if not isinstance(root, np.memmap) or root.filename is None or root.mode == "c":
        return None
    start = root.ctypes.data - root.offset
    return MappedFile(
        str(Path(root.filename).resolve()), array.dtype, array.shape,
        array.ctypes.data - start, array.strides,
    )  # fmt: skip
