"""Random numbers in chunks, the same whatever the chunks and the workers."""

from __future__ import annotations

import itertools
from functools import partial
from typing import Any, Sequence
from uuid import uuid4

import dask.array
import numpy as np
import numpy.typing as npt

from .. import random
from ..random._blocks import Law, Method, _indices
from ._volume import Graph, Index, lazy

da: Any = dask.array


def draws(
    law: Law,
    shape: int | Sequence[int],
    *,
    seed: int,
    method: Method | None = None,
    first_stream: int = 0,
    chunks: Any = "auto",
) -> Any:
    """Draws for all elements of an array: those of :func:`seluutils.random.draws`, in chunks.

    The numbers depend on the law, the shape, the seed and the first stream. They depend neither on the
    chunks nor on how many workers draw them, in which order, and which of them die.

    Parameters
    ----------
    law, shape, seed, method, first_stream
        As those of :func:`seluutils.random.draws`.
    chunks : as Dask takes them
        Extents of what a task draws, by default Dask's choice. Cheapest are multiples of the tiles
        that have a stream each: 65536 draws in one axis, 256 x 256 in two, 64 x 64 x 64 in three.

    Returns
    -------
    dask.array of that shape, and the axes of one draw behind it
        Lazy. The axes of a draw are not cut.

    Raises
    ------
    BadParameter
        As :func:`seluutils.random.draws` does, at once.

    Examples
    --------
    >>> from seluutils import random
    >>> noise = draws(random.Normal(100, 15), (70, 80, 90), seed=1, chunks=50)
    >>> whole = random.draws(random.Normal(100, 15), (70, 80, 90), seed=1)
    >>> bool((noise.compute(scheduler="synchronous") == whole).all())
    True
    """
    extents = _indices(shape, "shape")
    box = partial(random.draws, law, extents, seed=seed, method=method, first_stream=first_stream)
    sample = box(low=(0,) * len(extents), high=(0,) * len(extents))  # what is wrong is told now
    item = sample.shape[len(extents) :]
    cut = da.core.normalize_chunks(chunks, extents, dtype=sample.dtype)
    cut = (*cut, *((extent,) for extent in item))
    return _drawn(box, extents, cut, sample.dtype)


def _drawn(box: partial[Any], extents: Index, cut: Any, dtype: np.dtype[Any]) -> Any:
    name = f"draws-{uuid4().hex}"
    graph: Graph = {}
    edges = [[0, *itertools.accumulate(axis)] for axis in cut[: len(extents)]]
    for index in itertools.product(*(range(len(edge) - 1) for edge in edges)):
        low = tuple(edge[i] for edge, i in zip(edges, index))
        high = tuple(edge[i + 1] for edge, i in zip(edges, index))
        key = (name, *index, *(0 for _ in cut[len(extents) :]))
        graph[key] = (_box, box, list(low), list(high))
    return lazy(graph, name, cut, dtype)


def _box(box: partial[Any], low: Sequence[int], high: Sequence[int]) -> npt.NDArray[Any]:
    numbers: npt.NDArray[Any] = box(low=low, high=high)
    return numbers
