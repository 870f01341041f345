"""The co-occurrence features of PyRadiomics."""

from __future__ import annotations

import math
from typing import Any, Sequence

import numpy as np
import numpy.typing as npt

from .. import texture
from .._errors import BadParameter

__all__ = ["FEATURES", "glcm_features"]

#: The names there, and what they are called here.
FEATURES = {
    "Autocorrelation": "auto_corr",
    "ClusterProminence": "clust_prom",
    "ClusterShade": "clust_shade",
    "ClusterTendency": "clust_tend",
    "Contrast": "contrast",
    "Correlation": "corr",
    "DifferenceAverage": "diff_avg",
    "DifferenceEntropy": "diff_entr",
    "DifferenceVariance": "diff_var",
    "Id": "inv_diff",
    "Idm": "inv_diff_mom",
    "Idmn": "inv_diff_mom_norm",
    "Idn": "inv_diff_norm",
    "Imc1": "info_corr1",
    "Imc2": "info_corr2",
    "InverseVariance": "inv_var",
    "JointAverage": "joint_avg",
    "JointEnergy": "energy",
    "JointEntropy": "joint_entr",
    "MCC": "mcc",
    "MaximumProbability": "joint_max",
    "SumAverage": "sum_avg",
    "SumEntropy": "sum_entr",
    "SumSquares": "joint_var",
}

_NORMS = ("manhattan", "euclidean", "infinity", "no_weighting")


def glcm_features(
    image: npt.NDArray[Any],
    mask: npt.NDArray[Any],
    *,
    label: int = 1,
    binWidth: float = 25,
    binCount: int | None = None,
    symmetricalGLCM: bool = True,
    distances: Sequence[int] = (1,),
    force2D: bool = False,
    force2Ddimension: int = 0,
    weightingNorm: str | None = None,
    spacing: Sequence[float] | None = None,
) -> dict[str, float]:
    """Features of a region, each the mean over the directions.

    Parameters
    ----------
    image : (z, y, x) or (y, x) array
        Integers or floating-point numbers.
    mask : array of the image's shape
        Integers; the region has the value `label`.
    label : int
        Which region.
    binWidth : float
        Bins of this width from the multiple of it at or below the least value of the region.
        (IBSI's start at the least value, or at one that the study gives.)
    binCount : int
        Instead of it: so many bins of equal width over the values of the region.
    symmetricalGLCM : bool
        Whether each pair counts in both orders.
    distances : sequence of int
        All offsets at these Chebyshev distances: 13 at distance 1 in space, 49 at 2.
    force2D, force2Ddimension : bool, int
        Only the offsets across no slice along this axis.
    weightingNorm : {"manhattan", "euclidean", "infinity", "no_weighting"}
        The features of the sum of the matrices instead, each times ``exp(-length**2)`` of its
        offset in this norm.
    spacing : (d,) numbers
        The sizes of a voxel for `weightingNorm`, in the order of the array's axes; 1 by default.
        (There it comes with the image.)

    Returns
    -------
    dict
        By the names there; entropies differ by the 2.2e-16 that are added inside the logarithms
        there. What is done there before (resampling, normalization, filters) is not done here.

    Raises
    ------
    BadParameter
        For a region without voxels, and other settings than these.

    Examples
    --------
    >>> image = np.array([[10, 40], [40, 10]], np.int16)
    >>> glcm_features(image, np.ones((2, 2), np.uint8))["Contrast"]
    0.5
    """
    region = np.asarray(mask) == label
    if not region.any():
        raise BadParameter(f"the mask has no voxel of label {label}")
    offsets = np.concatenate([texture.offsets(image.ndim, d, shell=True) for d in distances])
    if force2D:
        offsets = offsets[offsets[:, force2Ddimension] == 0]
    bins: dict[str, Any] = (
        dict(bin_width=binWidth, anchor="multiple") if binCount is None else dict(bin_count=binCount)
    )
    if weightingNorm is None:
        values = texture.features(
            image, offsets, definition="ibsi", names=list(FEATURES.values()), aggregate="mean",
            mask=region, symmetric=symmetricalGLCM, **bins,
        )  # fmt: skip
    else:
        counts = texture.cooccurrence(
            image, offsets, mask=region, symmetric=symmetricalGLCM, **bins
        )
        weights = _weights(offsets, weightingNorm, spacing)
        matrix = np.einsum("k,kij->ij", weights, counts)
        names = list(FEATURES.values())
        values = texture.matrix_features(matrix, names=names, symmetric=False)
    return {theirs: values[ours] for theirs, ours in FEATURES.items()}


def _weights(
    offsets: npt.NDArray[np.int64], norm: str, spacing: Sequence[float] | None
) -> npt.NDArray[np.float64]:
    if norm not in _NORMS:
        raise BadParameter(f"weightingNorm must be one of {', '.join(_NORMS)}, not {norm!r}")
    steps = np.abs(offsets) * (1.0 if spacing is None else np.asarray(spacing, dtype=np.float64))
    if norm == "manhattan":
        lengths = steps.sum(axis=1)
    elif norm == "euclidean":
        lengths = np.sqrt((steps**2).sum(axis=1))
    elif norm == "infinity":
        lengths = steps.max(axis=1)
    else:
        lengths = np.zeros(len(steps))
    return np.array([math.exp(-length * length) for length in lengths])
