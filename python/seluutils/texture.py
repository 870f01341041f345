"""Co-occurrence matrices, texture features, and maps of them.

An offset is the way from the first voxel of a pair to the second, in the order of the array's axes:
``(0, 1)`` is one to the right in ``[y, x]``.

Gray levels
-----------
The functions share five arguments that say what the gray levels of an image are:

=====================================  =========================================================
none                                   integers as they are
``levels=n``                           the same, of n levels; greater values are refused
``levels=n, range=(lo, hi)``           n levels of equal width from lo to hi; values beyond get
                                       the nearest level
``bin_count=n``                        the same from the least to the greatest value found
``bin_width=w``                        levels of width w from the least value found, or from
                                       ``anchor``: a number, or ``"multiple"`` for the multiple of
                                       w at or below the least value
=====================================  =========================================================

Levels go from 1 to n; level 0 lies outside, as does what is off the ``mask`` (bool or integers, 0 is
off) or NaN. No pair has a voxel outside. Integers that are taken as they are include 0 as outside,
with one exception: in :func:`cooccurrence` 0 is a value as any other.
"""

from __future__ import annotations

from typing import Any, Literal, Optional, Sequence, Tuple, Union

import numpy as np
import numpy.typing as npt

from . import _core
from ._errors import BadParameter
from ._progress import Progress, watched

__all__ = [
    "AGGREGATES",
    "HARALICK_FEATURES",
    "IBSI_FEATURES",
    "SELU_FEATURES",
    "cooccurrence",
    "feature_maps",
    "features",
    "matrix_features",
    "object_features",
    "offsets",
    "quantize",
]

Array = npt.NDArray[Any]
Range = Optional[Tuple[float, float]]
Anchor = Union[None, float, Literal["least", "multiple"]]
Definition = Literal["selu", "ibsi", "haralick"]

#: The library's own thirteen features, in their order.
SELU_FEATURES: tuple[str, ...] = _core.SELU_FEATURES
#: The 25 of the Image Biomarker Standardisation Initiative, in the order of its manual.
IBSI_FEATURES: tuple[str, ...] = _core.IBSI_FEATURES
#: Haralick's fourteen, in the order of the paper.
HARALICK_FEATURES: tuple[str, ...] = _core.HARALICK_FEATURES
#: IBSI's ways to make one value of the matrices of slices and directions.
AGGREGATES = ("2D_avg", "2D_comb", "2_5D_avg", "2_5D_comb", "3D_avg", "3D_comb")


def offsets(ndim: int, distance: int = 1, *, shell: bool = False) -> npt.NDArray[np.int64]:
    """One offset of each opposite pair, to the neighbors of a voxel.

    Parameters
    ----------
    ndim : 2 or 3
        Axes of the image.
    distance : int
        The offsets are those to the neighbors times this.
    shell : bool
        All offsets at exactly that Chebyshev distance instead: 49 at distance 2 in space.

    Returns
    -------
    (n, ndim) int64
        4 offsets in a plane and 13 in space, in the order of the array's axes.

    Raises
    ------
    BadParameter
        For another number of axes, and a distance below 1.

    Examples
    --------
    >>> offsets(2).tolist()
    [[0, 1], [1, 1], [1, 0], [-1, 1]]
    """
    return _core.offsets(ndim, distance, shell)


def quantize(
    image: Array,
    *,
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Array | None = None,
    return_edges: bool = False,
) -> Any:
    """The gray levels of an image.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        Integers or floating-point numbers.
    levels, bin_width, bin_count, range, anchor, mask
        How values become levels; see the head of this module.
    return_edges : bool
        Whether to return the edges of the levels, too.

    Returns
    -------
    levels : array of the image's shape
        uint8, or uint16 for more than 255 levels. Level k holds the values from edge k - 1 up to but
        not including edge k, the last level its upper edge, too.
    edges : (n + 1,) float64
        With `return_edges`; empty where the values are taken as they are.

    Raises
    ------
    BadParameter
        For arguments that do not go together, and values that are no levels.

    Examples
    --------
    >>> import numpy as np
    >>> quantize(np.array([[0.0, 9.0], [10.0, np.nan]]), bin_count=2)
    array([[1, 2],
           [2, 0]], dtype=uint8)
    """
    recipe = _core.Recipe(levels, bin_width, bin_count, range, anchor)
    result, edges, _ = _core.quantize(image, recipe, mask)
    return (result, edges) if return_edges else result


def cooccurrence(
    image: Array,
    offset: npt.ArrayLike | None = None,
    *,
    distances: int | Sequence[int] | None = None,
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Array | None = None,
    symmetric: bool = False,
    out: npt.NDArray[np.uint64] | None = None,
    progress: Progress = None,
) -> npt.NDArray[np.uint64]:
    """How often gray level j stands an offset away from gray level i.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        Integers as they are, every value a level, 0 included; or anything that the other arguments
        make levels of.
    offset : (d,) or (n, d) integers
        In the order of the array's axes, of any sign and length; without it :func:`offsets`.
    distances : int or sequence
        The neighbors times each of these, instead of `offset`.
    levels : int
        Of integers as they are: 256 by default for 8 bits, the greatest value plus one for others
        (up to 1024).
    bin_width, bin_count, range, anchor, mask
        How values become levels; see the head of this module. Index k is level k + 1 then.
    symmetric : bool
        Whether each pair counts in both orders.
    out : (n, ng, ng) uint64
        Takes the counts; it is written when all are there.
    progress : callable(done, total) or True
        Hears of the progress; True shows a bar.

    Returns
    -------
    (n, ng, ng) uint64
        ``counts[k, i, j]`` pairs of values i and j at offset k; `out` where it is given. Exact for
        images of any size.

    Raises
    ------
    BadParameter
        For arguments that do not go together, and values that are no levels.

    Examples
    --------
    >>> import numpy as np
    >>> cooccurrence(np.array([[0, 1, 1]], np.uint8), (0, 1), levels=2)
    array([[[0, 1],
            [0, 1]]], dtype=uint64)
    """
    recipe = _core.Recipe(levels, bin_width, bin_count, range, anchor)
    where = _offsets(image, offset, distances)
    with watched(progress, "cooccurrence") as tell:
        counts = _core.cooccurrence(image, where, recipe, mask, symmetric, tell)
    return counts if out is None else _filled(out, counts)


def features(
    image: Array,
    offset: npt.ArrayLike | None = None,
    *,
    definition: Definition = "selu",
    names: Sequence[str] | None = None,
    aggregate: str | None = None,
    distances: int | Sequence[int] | None = None,
    levels: int | None = None,
    bin_width: float | None = None,
    bin_count: int | None = None,
    range: Range = None,
    anchor: Anchor = None,
    mask: Array | None = None,
    symmetric: bool = True,
    progress: Progress = None,
) -> dict[str, Any]:
    """Texture features of an image.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        For the definition "selu" unsigned integers, whose highest byte is the gray level; for the
        others integers as they are, 0 outside, or anything that the other arguments make levels of.
    offset : (d,) or (n, d) integers
        In the order of the array's axes; without it :func:`offsets`.
    definition : {"selu", "ibsi", "haralick"}
        :data:`SELU_FEATURES`, :data:`IBSI_FEATURES` or :data:`HARALICK_FEATURES`.
    names : sequence of str
        Some of these features; any of IBSI's and Haralick's go together.
    aggregate : str
        One value from all offsets: "mean" of the features; features of the "sum" of the matrices;
        or for levels one of :data:`AGGREGATES`, which take the slices along z apart or together.
    distances : int or sequence
        The neighbors times each of these, instead of `offset`.
    levels, bin_width, bin_count, range, anchor, mask
        How values become levels; see the head of this module.
    symmetric : bool
        Whether each pair counts in both orders, as IBSI does; the definition "selu" never does.
    progress : callable(done, total) or True
        Hears of the progress; True shows a bar.

    Returns
    -------
    dict
        By name a float, or without `aggregate` an array of one value for each of several offsets.
        NaN where no pair counts.

    Raises
    ------
    BadParameter
        For arguments that do not go together, and values that are no levels.
    SeluError
        For the definition "selu" at an offset that leaves no pair.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.array([[1, 2], [2, 1]], np.uint8)
    >>> features(image, (0, 1), definition="ibsi", names=["contrast", "joint_entr"])
    {'contrast': 1.0, 'joint_entr': 1.0}
    >>> features(image, definition="ibsi", names=["contrast"])["contrast"]
    array([1., 0., 1., 0.])
    """
    recipe = _core.Recipe(levels, bin_width, bin_count, range, anchor)
    if definition == "selu":
        quantizing = (levels, bin_width, bin_count, range, anchor, mask)
        if any(argument is not None for argument in quantizing):
            raise BadParameter(
                'the definition "selu" takes pixels as they are, without levels, bins and mask; '
                '"ibsi" and "haralick" take them'
            )
        return _selu_features(image, _offsets(image, offset, distances), names, aggregate, progress)
    wanted = _names(definition, names)
    with watched(progress, "texture features") as tell:
        if aggregate in AGGREGATES:
            where = _aggregate_offsets(image, offset, distances, str(aggregate))
            values = _core.aggregated_features(
                image, where, recipe, mask, wanted, symmetric, str(aggregate), tell
            )
            return dict(zip(wanted, values.tolist()))
        _check_aggregate(aggregate)
        where = _offsets(image, offset, distances)
        table = _core.level_features(
            image, where, recipe, mask, wanted, symmetric, aggregate == "sum", tell
        )
    return _by_name(wanted, table, aggregate, np.ndim(where) == 1)


def matrix_features(
    counts: Array,
    *,
    definition: Literal["ibsi", "haralick"] = "ibsi",
    names: Sequence[str] | None = None,
    symmetric: bool = True,
    normalizing_levels: int | None = None,
) -> dict[str, Any]:
    """Features of co-occurrence matrices, wherever they come from.

    Parameters
    ----------
    counts : (ng, ng) or (n, ng, ng) array
        Counts or weights of any real dtype, none negative; index k is level k + 1.
    definition, names
        As those of :func:`features`.
    symmetric : bool
        Whether the transposed matrix is added first.
    normalizing_levels : int
        Ng of the normalized inverse differences; the matrix' own by default.

    Returns
    -------
    dict
        By name a float, or an array of n values. NaN for an empty matrix.

    Raises
    ------
    BadParameter
        For another shape, and for weights that are negative, infinite or NaN.

    Examples
    --------
    >>> import numpy as np
    >>> matrix_features(np.array([[2, 1], [1, 4]]), names=["contrast"])
    {'contrast': 0.25}
    """
    array = np.asarray(counts)
    if array.ndim not in (2, 3) or array.shape[-1] != array.shape[-2] or not array.shape[-1]:
        raise BadParameter(f"counts must have the shape (ng, ng) or (n, ng, ng), not {array.shape}")
    if array.dtype.kind not in "uif" or array.dtype.itemsize > 8:
        raise BadParameter(f"counts have the dtype {array.dtype}, but real numbers are taken")
    wanted = _names(definition, names)
    matrices = array.reshape((-1,) + array.shape[-2:]) if array.ndim == 2 else array
    if array.size and array.min() < 0:  # adding the transposed matrix would hide some
        raise BadParameter(f"counts must not be negative, as {array.min()} is")
    ng = 0 if normalizing_levels is None else normalizing_levels
    if array.dtype.kind == "f":
        weights = matrices.astype(np.float64)
        if symmetric:
            weights += matrices.transpose(0, 2, 1)
        table = _core.weight_features(weights, wanted, ng)
    else:
        cells = matrices.astype(np.uint64)
        if symmetric:
            cells += cells.transpose(0, 2, 1).copy()
        table = _core.count_features(cells, wanted, ng)
    return _by_name(wanted, table, None, array.ndim == 2)


def feature_maps(
    image: Array,
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
    mask: Array | None = None,
    step: int | Sequence[int] = 1,
    border: Literal["clipped", "valid"] = "clipped",
    symmetric: bool = True,
    dtype: npt.DTypeLike = np.float32,
    out: Array | None = None,
    progress: Progress = None,
) -> dict[str, Array]:
    """The features of the window around every pixel or voxel.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        Integers as they are, 0 outside, or anything that the other arguments make levels of; up to
        4096 levels.
    size : int or tuple
        The sides of the window in the order of the array's axes, each odd; up to 2**20 voxels.
    names : sequence of str
        Features of IBSI and Haralick but the maximal correlations; IBSI's 25 by default.
    offset, distances
        As those of :func:`features`. A value is the mean over the offsets that have pairs in the
        window.
    levels, bin_width, bin_count, range, anchor, mask
        How values become levels; see the head of this module.
    step : int or tuple
        Voxels from one window to the next along each axis.
    border : {"clipped", "valid"}
        Windows around every voxel, clipped at the border of the image, or only those inside it.
    symmetric : bool
        Whether each pair counts in both orders.
    dtype : float32 or float64
        Of the maps, unless `out` is given.
    out : (n, ...) array of float32 or float64 without gaps
        Takes the n maps. An operation that fails or is interrupted leaves it filled with NaN.
    progress : callable(done, total) or True
        Hears of the progress, in lines of the maps; True shows a bar.

    Returns
    -------
    dict
        The map of each feature by its name; all are parts of one array. NaN where a window has no
        pair.

    Raises
    ------
    BadParameter
        For arguments that do not go together, windows and levels beyond the limits, and values that
        are no levels.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.array([[1, 2, 4, 4, 1]], np.uint8)
    >>> feature_maps(image, (1, 3), names=["contrast"], offset=(0, 1))["contrast"]
    array([[1. , 2.5, 2. , 4.5, 9. ]], dtype=float32)
    """
    recipe = _core.Recipe(levels, bin_width, bin_count, range, anchor)
    wanted = _names("ibsi", names)
    if out is not None and not isinstance(out, np.ndarray):
        raise BadParameter("out must be an array")
    kind = np.dtype(dtype if out is None else out.dtype)
    if kind not in (np.dtype(np.float32), np.dtype(np.float64)):
        raise BadParameter(f"maps are float32 or float64, not {kind}")
    where = _offsets(image, offset, distances)
    with watched(progress, "feature maps") as tell:
        maps = _core.feature_maps(
            image, size, where, wanted, recipe, mask, step, symmetric, border, out,
            kind == np.dtype(np.float64), tell,
        )  # fmt: skip
    return dict(zip(wanted, maps))


def object_features(
    image: Array,
    labels: Array,
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
    mask: Array | None = None,
    symmetric: bool = True,
    progress: Progress = None,
) -> dict[str, Array]:
    """Features of each object of a label image, over the pairs with both voxels in the object.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        Integers as they are, 0 outside, or anything that the other arguments make levels of: the
        same levels for all objects.
    labels : array of the image's shape
        Integers from 0 to 2**32 - 1, or bool; 0 is the background.
    definition, names, offset, distances, symmetric
        As those of :func:`features`.
    aggregate : {"mean", "sum"}
        The mean of the features over the offsets, or the features of the sum of the matrices.
    levels, bin_width, bin_count, range, anchor, mask
        How values become levels; see the head of this module.
    progress : callable(done, total) or True
        Hears of the progress, in objects; True shows a bar.

    Returns
    -------
    dict
        Columns: "label", "voxels", and each feature under its name; NaN for an object without
        pairs. ``pandas.DataFrame`` takes it.

    Raises
    ------
    BadParameter
        For labels that are negative or no integers, and as :func:`features`.

    Examples
    --------
    >>> import numpy as np
    >>> image = np.array([[1, 2, 2, 1]], np.uint8)
    >>> objects = np.array([[7, 7, 9, 9]], np.int32)
    >>> object_features(image, objects, names=["contrast"])
    {'label': array([7, 9], dtype=uint32), 'voxels': array([2, 2]), 'contrast': array([1., 1.])}
    """
    recipe = _core.Recipe(levels, bin_width, bin_count, range, anchor)
    wanted = _names(definition, names)
    if aggregate not in ("mean", "sum"):
        raise BadParameter(f'aggregate must be "mean" or "sum", not "{aggregate}"')
    where = _offsets(image, offset, distances)
    with watched(progress, "object features") as tell:
        ids, voxels, table = _core.object_features(
            image, labels, where, wanted, recipe, mask, symmetric, aggregate == "sum", tell
        )
    return {"label": ids, "voxels": voxels, **dict(zip(wanted, table.T.copy()))}


def _offsets(
    image: Array, offset: npt.ArrayLike | None, distances: int | Sequence[int] | None
) -> npt.ArrayLike:
    if offset is not None:
        if distances is not None:
            raise BadParameter("give offset or distances, not both")
        return np.asarray(offset)
    ndim = np.ndim(image)
    if ndim not in (2, 3):  # refused with a better message further on
        return np.zeros((0, 2), np.int64)
    if distances is None:
        return _core.offsets(ndim, 1, False)
    steps = [int(distance) for distance in np.atleast_1d(distances)]
    return np.concatenate([_core.offsets(ndim, step, False) for step in steps])


def _aggregate_offsets(
    image: Array,
    offset: npt.ArrayLike | None,
    distances: int | Sequence[int] | None,
    aggregate: str,
) -> npt.ArrayLike:
    """Those in the plane for the ways that stay in it; none are the neighbors of the way."""
    if offset is None and distances is None:
        return np.zeros((0, max(2, np.ndim(image))), np.int64)
    where = np.asarray(_offsets(image, offset, distances))
    if offset is None and where.shape[1] == 3 and not aggregate.startswith("3D"):
        where = where[where[:, 0] == 0]
    return where


def _names(definition: str, names: Sequence[str] | None) -> list[str]:
    if definition not in ("ibsi", "haralick"):
        raise BadParameter(f'there is no definition "{definition}" here')
    if names is not None:
        return [names] if isinstance(names, str) else list(names)
    return list(IBSI_FEATURES if definition == "ibsi" else HARALICK_FEATURES)


def _check_aggregate(aggregate: str | None) -> None:
    if aggregate not in (None, "mean", "sum"):
        ways = ", ".join(("mean", "sum") + AGGREGATES)
        raise BadParameter(f'aggregate must be one of {ways}, not "{aggregate}"')


def _selu_features(
    image: Array,
    where: npt.ArrayLike,
    names: Sequence[str] | None,
    aggregate: str | None,
    progress: Progress,
) -> dict[str, Any]:
    if aggregate not in (None, "mean"):
        raise BadParameter(f'the definition "selu" has the aggregate "mean" alone, not "{aggregate}"')
    with watched(progress, "texture features") as tell:
        table = _core.selu_features(image, where, tell)
    wanted = SELU_FEATURES if names is None else [names] if isinstance(names, str) else names
    columns = _by_name(SELU_FEATURES, table, aggregate, np.ndim(where) == 1)
    for name in wanted:
        if name not in columns:
            raise BadParameter(f'there is no feature "{name}" of the definition "selu"')
    return {name: columns[name] for name in wanted}


def _by_name(
    names: Sequence[str], table: npt.NDArray[np.float64], aggregate: str | None, is_one: bool
) -> dict[str, Any]:
    """A column for each name; numbers where there is one row."""
    if aggregate == "mean":
        return dict(zip(names, _core.mean_rows(table)))
    if aggregate == "sum" or is_one:
        return dict(zip(names, table[0].tolist()))
    return dict(zip(names, table.T.copy()))


def _filled(out: Array, values: Array) -> Array:
    if not isinstance(out, np.ndarray) or out.dtype != values.dtype or out.shape != values.shape:
        raise BadParameter(
            f"out must be an array of the dtype {values.dtype} and the shape {values.shape}"
        )
    if not out.flags.writeable:
        raise BadParameter("out is read-only")
    out[...] = values
    return out
