"""Features of the objects of label volumes in chunks.

A first pass finds the box of each object. Objects whose boxes are small are computed together, as
many as fit into two chunks. The matrices of a larger object are counted chunk by chunk and added.
"""

from __future__ import annotations

from dataclasses import dataclass, replace
from typing import Any, Iterator, Literal, NamedTuple, Sequence
from uuid import uuid4

import numpy as np
import numpy.typing as npt

from .. import _core
from .._errors import BadParameter
from ..texture import Anchor, Range, _names, _offsets
from ._cooccurrence import Counting, add_tables, count_pairs
from ._levels import MOST_VOXELS, Found, Gray, check, range_tasks, tree
from ._volume import Array, Box, Graph, Source, Volume, computed, read

#: Voxels of labels that are looked at at a time.
LABEL_VOXELS = 1 << 22


def object_features(
    volume: Any,
    labels: Any,
    *,
    definition: Literal["ibsi", "haralick"] = "ibsi",
    names: Sequence[str] | None = None,
    offset: npt.ArrayLike | None = None,
    distances: int | Sequence[int] | None = None,
    aggregate: Literal["mean", "sum"] = "mean",
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Any = None,
    symmetric: bool = True,
    chunks: Any = None,
) -> dict[str, Array]:
    """Features of each object of a label volume, wherever the chunks cut it.

    Computes at once, in two passes. An object larger than two chunks takes a task for each chunk
    that it meets.

    Parameters
    ----------
    volume : path, or Zarr, Dask or NumPy array of shape (z, y, x) or (y, x)
        As :func:`seluutils.texture.object_features` takes them.
    labels : path or array of the volume's shape
        Integers from 0 to 2**32 - 1, or bool; 0 is the background. Its chunks may be others.
    definition, names, offset, distances, aggregate, symmetric
        As those of :func:`seluutils.texture.object_features`.
    levels, bin_width, bin_count, range, anchor
        As those of :func:`seluutils.texture.object_features`; the levels are the whole volume's.
    mask : path or array of the volume's shape
        Bool or integers, 0 is off.
    chunks : as Dask takes them
        Extents of what a task reads; those of a Dask array, and Dask's choice for others.

    Returns
    -------
    dict
        Columns: "label", "voxels", and each feature by its name; NaN for an object without pairs.

    Raises
    ------
    BadParameter
        For arguments that do not go together, labels that are negative or no integers, and values
        that are no levels.

    Examples
    --------
    >>> import dask, numpy as np
    >>> image = np.array([[1, 2, 2, 1]], np.uint8)
    >>> objects = np.array([[7, 7, 9, 9]], np.int32)
    >>> with dask.config.set(scheduler="synchronous"):
    ...     object_features(image, objects, names=["contrast"], chunks=3)
    {'label': array([7, 9], dtype=uint32), 'voxels': array([2, 2]), 'contrast': array([1., 1.])}
    """
    if aggregate not in ("mean", "sum"):
        raise BadParameter(f'aggregate must be "mean" or "sum", not "{aggregate}"')
    image, ids = Volume(volume, "volume", chunks), Volume(labels, "labels")
    off = None if mask is None else Volume(mask, "mask")
    gray = Gray(image.dtype, levels, bin_width, bin_count, range, anchor)
    where = check(image, off, gray, _offsets(np.empty((0,) * len(image.shape)), offset, distances))
    if ids.shape != image.shape:
        raise BadParameter("labels and image must have the same shape")
    one = (1,) * len(image.shape)
    texture = Texture(gray, where, tuple(_names(definition, names)), symmetric, aggregate == "sum")
    texture.of_objects(np.zeros(one, np.uint8), 1, np.zeros(one, ids.dtype))
    return _in_two_passes(Volumes(image, ids, off), texture)


@dataclass(frozen=True)
class Texture:
    """What all tasks know."""

    gray: Gray
    offsets: Array
    names: tuple[str, ...]
    symmetric: bool
    is_sum: bool

    def of_objects(self, levels: Array, n: int, labels: Array) -> tuple[Array, Array, Array]:
        """Labels, voxels and features of the objects of a part that has them whole."""
        ids, voxels, table = _core.object_features(
            levels, labels, self.offsets, list(self.names), _core.Recipe(levels=n), None,
            self.symmetric, self.is_sum, None,
        )  # fmt: skip
        return ids, voxels, table

    def of_counts(self, counts: Array) -> Array:
        """The features of matrices (offsets, n, n) as (1, features)."""
        if self.is_sum:
            counts = counts.sum(axis=0, keepdims=True)
        if self.symmetric:
            counts = counts + counts.transpose(0, 2, 1)
        table = _core.count_features(np.ascontiguousarray(counts), list(self.names), 0)
        return np.array([_core.mean_rows(table)])


class Volumes(NamedTuple):
    """What a task reads."""

    image: Volume
    labels: Volume
    mask: Volume | None

    def sources(self, graph: Graph, name: tuple[Any, ...], boxes: Sequence[Box]) -> list[Any]:
        return [
            volume and volume.source(graph, (f"{name[0]}-{k}", *name[1:]), boxes)
            for k, volume in enumerate(self)
        ]


class Objects(NamedTuple):
    """A row for each label, in ascending order."""

    labels: Array
    voxels: Array
    low: Array
    high: Array

    def box(self) -> Box:
        """That of all objects."""
        low, high = self.low.min(axis=0).tolist(), self.high.max(axis=0).tolist()
        return Box(tuple(low), tuple(high))

    def rows(self, which: Any) -> Objects:
        return Objects(*(column[which] for column in self))

    def groups(self, most: int) -> Iterator[Objects]:
        """Objects near each other whose common box has at most `most` voxels, or single ones."""
        if len(self.labels) <= 1 or self.box().voxels <= most:
            if len(self.labels):
                yield self
            return
        middles = self.low + self.high
        axis = int(np.argmax(middles.max(axis=0) - middles.min(axis=0)))
        order = np.argsort(middles[:, axis], kind="stable")
        for half in np.array_split(order, 2):
            yield from self.rows(np.sort(half)).groups(most)


def _in_two_passes(volumes: Volumes, texture: Texture) -> dict[str, Array]:
    name = f"objects-{uuid4().hex}"
    graph: Graph = {}
    keys = []
    for index, core in volumes.image.cores().items():
        if core.voxels:
            keys.append((f"{name}-boxes", *index))
            graph[keys[-1]] = (
                find_objects, volumes.labels.source(graph, (f"{name}-labels", *index), [core]), core
            )  # fmt: skip
    ndim = len(volumes.image.shape)
    ends = [tree(graph, f"{name}-boxes", join_objects, keys)]
    if texture.gray.needs_range:
        ends.append(range_tasks(graph, name, volumes.image, volumes.mask))
    first = computed(graph, ends, *volumes)
    objects = first[0] if first[0] is not None else no_objects(ndim)
    found = first[1] if len(first) > 1 else None
    return _columns(_second_pass(volumes, texture, objects, found), texture.names)


def _second_pass(volumes: Volumes, texture: Texture, objects: Objects, found: Any) -> list[Any]:
    for end in (objects.labels[:1], objects.labels[-1:]):
        if len(end) and not 0 <= end[0] < 2**32:
            raise BadParameter(f"labels must be from 0 to 2**32 - 1, and {end[0]} is not")
    name = f"object-features-{uuid4().hex}"
    graph: Graph = {}
    keys: list[Any] = []
    cores = [core for core in volumes.image.cores().values() if core.voxels]
    most = 2 * min(MOST_VOXELS, max((core.voxels for core in cores), default=0))
    for k, group in enumerate(objects.groups(most)):
        box = group.box()
        keys.append((name, k))
        if box.voxels <= most:
            sources = volumes.sources(graph, (f"{name}-part", k), [box])
            graph[keys[-1]] = (small_objects, *sources, box, group.labels, texture, found)
        else:
            graph[keys[-1]] = _large_object(graph, (name, k), volumes, group, cores, texture, found)
    return computed(graph, keys, *volumes)


def _large_object(
    graph: Graph, name: tuple[Any, ...], volumes: Volumes, group: Objects, cores: list[Box],
    texture: Texture, found: Any,
) -> Any:  # fmt: skip
    """The task of an object that is counted chunk by chunk."""
    keys = []
    offsets = [tuple(offset) for offset in texture.offsets.tolist()]
    recipe = Counting(texture.gray, tuple(offsets), volumes.image.shape, False)
    for c, core in enumerate(cores):
        common = core.within(group.box())
        if common.voxels:
            keys.append((f"{name[0]}-count", *name[1:], c))
            sources = volumes.sources(graph, keys[-1], recipe.boxes(common))
            graph[keys[-1]] = (count_object, *sources, common, int(group.labels[0]), recipe, found)
    total = tree(graph, f"{name[0]}-sum-{name[1]}", add_tables, keys)
    return (large_object, total, group.labels, group.voxels, texture)


def no_objects(ndim: int) -> Objects:
    empty = np.empty((0, ndim), np.int64)
    return Objects(empty[:, 0], empty[:, 0], empty, empty)


def find_objects(labels: Source, core: Box) -> Objects | None:
    """The boxes and sizes of the labels but 0 within a core."""
    return join_objects([_boxes(labels.read(p), p) for p in core.pieces(LABEL_VOXELS)])


def _boxes(labels: Array, part: Box) -> Objects:
    flat = np.ascontiguousarray(labels).ravel()
    is_start = np.ones(flat.size, bool)
    np.not_equal(flat[1:], flat[:-1], out=is_start[1:])
    is_start[:: labels.shape[-1]] = True  # a run ends with its row
    starts = np.flatnonzero(is_start)
    lengths = np.diff(starts, append=flat.size)
    within = flat[starts] != 0
    starts, lengths = starts[within], lengths[within]
    low = np.stack(np.unravel_index(starts, labels.shape), axis=1) + np.array(part.low)
    high = low + 1
    high[:, -1] += lengths - 1
    return _merged(Objects(flat[starts].astype(np.int64), lengths, low, high))


def join_objects(parts: Sequence[Objects | None]) -> Objects | None:
    given = [part for part in parts if part is not None]
    if not given:
        return None
    return _merged(Objects(*(np.concatenate(columns) for columns in zip(*given))))


def _merged(rows: Objects) -> Objects:
    """One row for each label."""
    if not len(rows.labels):
        return rows
    rows = rows.rows(np.argsort(rows.labels, kind="stable"))
    first = np.flatnonzero(np.diff(rows.labels, prepend=rows.labels[0] - 1))
    return Objects(
        rows.labels[first],
        np.add.reduceat(rows.voxels, first),
        np.minimum.reduceat(rows.low, first, axis=0),
        np.maximum.reduceat(rows.high, first, axis=0),
    )


def small_objects(
    image: Source, labels: Source, mask: Source | None, box: Box, ids: Array, texture: Texture,
    found: Found | None,
) -> tuple[Array, Array, Array]:  # fmt: skip
    """Labels, voxels and features of some of the objects within a box."""
    levels, n = texture.gray.quantize(image.read(box), read(mask, box), found)
    objects = labels.read(box)
    own = np.where(np.isin(objects, ids), objects, np.zeros(1, objects.dtype))
    return texture.of_objects(levels, n, own)


@dataclass(frozen=True)
class ObjectLevels:
    """A source of the levels of one object, 0 outside."""

    image: Source
    labels: Source
    mask: Source | None
    label: int
    gray: Gray
    found: Found | None

    def read(self, box: Box) -> Array:
        return self.quantized(box)[0]

    def quantized(self, box: Box) -> tuple[Array, int]:
        levels, n = self.gray.quantize(self.image.read(box), read(self.mask, box), self.found)
        return np.where(self.labels.read(box) == self.label, levels, levels.dtype.type(0)), n


def count_object(
    image: Source, labels: Source, mask: Source | None, core: Box, label: int, recipe: Counting,
    found: Found | None,
) -> Array:  # fmt: skip
    """The pairs within an object whose first voxel lies in the core."""
    source = ObjectLevels(image, labels, mask, label, recipe.gray, found)
    corner = Box(core.low, tuple(low + 1 for low in core.low))
    levels, n = source.quantized(corner)
    # Levels as values: bytes are counted fastest with all 256.
    gray = Gray(levels.dtype, max(256, n + 1), None, None, None, None)
    counts = count_pairs(source, None, core, replace(recipe, gray=gray), None)
    return np.ascontiguousarray(counts[:, 1 : n + 1, 1 : n + 1])


def large_object(
    counts: Array, labels: Array, voxels: Array, texture: Texture
) -> tuple[Array, Array, Array]:
    return labels, voxels, texture.of_counts(counts)


def _columns(parts: Sequence[Any], names: Sequence[str]) -> dict[str, Array]:
    parts = [*parts, (np.empty(0, np.uint32), np.empty(0, np.int64), np.empty((0, len(names))))]
    ids, voxels, table = (np.concatenate(columns) for columns in zip(*parts))
    order = np.argsort(ids, kind="stable")
    columns = {"label": ids[order].astype(np.uint32), "voxels": voxels[order]}
    return {**columns, **dict(zip(names, table[order].T.copy()))}
