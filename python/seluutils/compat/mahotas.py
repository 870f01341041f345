"""``haralick`` as mahotas has it."""

from __future__ import annotations

import math
from typing import Any

import numpy as np
import numpy.typing as npt

from .. import texture
from ._narrow import narrow

__all__ = ["haralick"]

Reals = npt.NDArray[np.float64]

# One of each opposite pair of neighbors, in that package's order.
_OFFSETS = {
    2: [(0, 1), (1, 1), (1, 0), (1, -1)],
    3: [
        (1, 0, 0), (1, 1, 0), (0, 1, 0), (1, -1, 0), (0, 0, 1), (1, 0, 1), (0, 1, 1), (1, 1, 1),
        (1, -1, 1), (1, 0, -1), (0, 1, -1), (1, 1, -1), (1, -1, -1),
    ],
}  # fmt: skip


def haralick(
    f: npt.NDArray[Any],
    ignore_zeros: bool = False,
    preserve_haralick_bug: bool = False,
    compute_14th_feature: bool = False,
    return_mean: bool = False,
    return_mean_ptp: bool = False,
    use_x_minus_y_variance: bool = False,
    distance: int = 1,
) -> Reals:
    """Haralick's features in 4 or 13 directions.

    The matrices are symmetric, logarithms are to base 2, and levels count from 0. Features differ
    from those of :func:`seluutils.texture.features` with ``definition="haralick"`` in these:

    - 6, the sum average, is less by 2, since levels begin with 0 here;
    - 10, the difference variance, is by default the variance of the probabilities of the
      differences, all that there are up to the greatest level, whatever differences they belong to;
    - 12, the first measure of information, is not divided where there is one level;
    - 14 is the root of the second greatest eigenvalue of the correlations of the matrix' rows, not
      of Haralick's matrix Q. It is 0 where two levels or fewer occur, and NaN where a row holds one
      value throughout, so that it has no correlation.

    The tests compare features 1 to 14 of each direction with formulas of their own. They do not run
    mahotas, which the tests' system does not package. Two things are so taken over from what is
    known of that package, and not compared with it: the order of the 13 directions in space, and
    which matrix feature 14 is made of. Means over the directions do not depend on their order.

    Parameters
    ----------
    f : (y, x) or (z, y, x) array of integers
        None negative, up to 16382.
    ignore_zeros : bool
        Whether pairs with a voxel of value 0 are left out.
    preserve_haralick_bug : bool
        Whether the sum variance is taken about the sum entropy, as the paper prints it.
    compute_14th_feature : bool
        Whether there are 14 columns instead of 13.
    return_mean : bool
        The mean over the directions instead.
    return_mean_ptp : bool
        The mean and then the greatest less the least value over the directions instead.
    use_x_minus_y_variance : bool
        Whether feature 10 is the variance of the differences.
    distance : int
        The offsets are those to the neighbors times this.

    Returns
    -------
    (4 or 13, 13 or 14) float64, or of one axis for means

    Raises
    ------
    TypeError
        For an image that is not of integers.
    ValueError
        For another number of axes, negative values, and where no pair counts.

    Examples
    --------
    >>> haralick(np.array([[0, 1], [1, 0]]))[:, 1]
    array([1., 0., 1., 0.])
    """
    if f.dtype.kind not in "iub":
        raise TypeError(f"haralick takes integers, not {f.dtype}")
    if f.ndim not in _OFFSETS:
        raise ValueError(f"haralick takes images of 2 or 3 axes, not {f.ndim}")
    pixels = narrow(f)
    offsets = np.array(_OFFSETS[f.ndim]) * distance
    levels = int(pixels.max()) + 1
    rows = []
    for offset in offsets:
        counts = texture.cooccurrence(pixels, offset, levels=levels, symmetric=True)[0]
        if ignore_zeros:
            counts[0] = counts[:, 0] = 0
        if not counts.any():
            raise ValueError("no pair of voxels counts, and there are no features of none")
        p = counts / counts.sum()
        rows.append(_features(p, preserve_haralick_bug, use_x_minus_y_variance))
        if compute_14th_feature:
            rows[-1].append(_fourteenth(p))
    table = np.array(rows)
    if return_mean:
        return np.asarray(table.mean(axis=0))
    if return_mean_ptp:
        return np.concatenate([table.mean(axis=0), np.ptp(table, axis=0)])
    return table


def _entropy(p: Reals) -> float:
    occurring = p[p > 0]
    return -float((occurring * np.log2(occurring)).sum())


def _features(p: Reals, is_printed: bool, is_of_differences: bool) -> list[float]:
    n = len(p)
    level = np.arange(n, dtype=np.float64)
    px = p.sum(axis=0)
    i, j = np.nonzero(p)
    occurring = p[i, j]
    sums: Reals = np.bincount(i + j, occurring, minlength=2 * n).astype(np.float64)
    differences: Reals = np.bincount(np.abs(i - j), occurring, minlength=n).astype(np.float64)
    double = np.arange(2 * n, dtype=np.float64)
    mean = px @ level
    variance = px @ level**2 - mean**2
    sum_average = sums @ double
    about = _entropy(sums) if is_printed else float(sum_average)
    hx, hxy = _entropy(px), _entropy(p)
    # The matrix is symmetric: rows and columns have the same sums, and HXY1 = HXY2 = 2 HX.
    return [
        float((occurring**2).sum()),
        float(differences @ level**2),
        float(((i * j) @ occurring - mean**2) / variance) if variance > 0 else 1.0,
        float(variance),
        float((occurring / (1 + (i - j) ** 2.0)).sum()),
        float(sum_average),
        float(sums @ (double - about) ** 2),
        _entropy(sums),
        hxy,
        float(differences @ level**2 - (differences @ level) ** 2)
        if is_of_differences
        else float(differences.var()),
        _entropy(differences),
        (hxy - 2 * hx) / hx if hx > 0 else hxy - 2 * hx,
        float(np.sqrt(max(0.0, 1 - np.exp(-2 * (2 * hx - hxy))))),
    ]


def _fourteenth(p: Reals) -> float:
    occurs = p.sum(axis=0) > 0
    rows = p[occurs][:, occurs]
    if len(rows) <= 2:
        return 0.0
    if (np.ptp(rows, axis=1) == 0).any():
        return math.nan
    values = np.linalg.eigvalsh(np.corrcoef(rows))
    return math.sqrt(max(0.0, float(values[-2])))  # an eigenvalue of 0 may come out below it
