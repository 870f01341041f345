"""Texture of volumes beyond one machine's memory, with Dask, on whatever scheduler you run.

A volume is the path of a ``.npy`` file or of a Zarr folder, a Zarr array, a memory-mapped array,
any Dask array, or a NumPy array; masks and labels may be another of these, with other chunks. Files
travel to the workers as their paths, so all workers must see them; a Dask array's chunks travel as
Dask has them travel. The numbers are those of :mod:`seluutils.texture` for the whole array, bit for
bit, whatever the chunks.

Gray levels are made as in :mod:`seluutils.texture`, the same for all chunks: what depends on the
values found (``bin_count``, ``bin_width``, integers as they are without ``levels``) is found in a
first pass over the volume. Give ``levels`` or ``range`` to do without that pass.

A worker needs memory for about two chunks of each thread, and its tables. A worker that dies is
replaced by Dask, and its tasks run again; a task that kills every worker ends as an error.

:func:`draws` makes arrays of random numbers that are the same whatever the chunks and the workers.

>>> import numpy as np
>>> from seluutils import dask
>>> volume = np.arange(4096, dtype=np.uint8).reshape(16, 16, 16)
>>> counts = dask.cooccurrence(volume, (0, 0, 1), chunks=8)
>>> counts.shape, counts.dtype
((1, 256, 256), dtype('uint64'))
>>> int(counts.sum().compute(scheduler="synchronous"))
3840
"""

from __future__ import annotations

try:
    import dask as _dask  # noqa: F401
    import dask.array as _array  # noqa: F401
except ImportError as error:
    raise ImportError("seluutils.dask needs the package dask with its arrays") from error

from ._cooccurrence import cooccurrence
from ._draws import draws
from ._maps import feature_maps
from ._objects import object_features

__all__ = ["cooccurrence", "draws", "feature_maps", "object_features"]
