"""``graycomatrix`` and ``graycoprops`` as scikit-image has them."""

from __future__ import annotations

import math
from typing import Any, Literal

import numpy as np
import numpy.typing as npt

from .. import texture
from .._errors import SeluError
from ._narrow import narrow

__all__ = ["graycomatrix", "graycoprops"]

Property = Literal["contrast", "dissimilarity", "homogeneity", "ASM", "energy", "correlation"]


def graycomatrix(
    image: npt.ArrayLike,
    distances: npt.ArrayLike,
    angles: npt.ArrayLike,
    levels: int | None = None,
    symmetric: bool = False,
    normed: bool = False,
) -> npt.NDArray[Any]:
    """Co-occurrence matrices of a 2D image for distances and angles.

    Parameters
    ----------
    image : (y, x) array_like of integers
        None negative, all below `levels`.
    distances : (n,) array_like
        In pixels.
    angles : (m,) array_like
        In radians: 0 is right, pi/4 is one down and one right, pi/2 is down. The offset is
        ``(round(d sin a), round(d cos a))``, half rounded away from 0: at distance 2 and pi/4 it is
        (1, 1) again, while :func:`seluutils.texture.cooccurrence` takes any offset as it is.
    levels : int
        256 for 8 bits, to be given for other types.
    symmetric : bool
        Whether each pair counts in both orders.
    normed : bool
        Whether each matrix is divided by its sum.

    Returns
    -------
    (levels, levels, n, m) uint32, or float64 where normed

    Raises
    ------
    ValueError
        As scikit-image does; also for more than 16383 levels.
    SeluError
        For a count above 2**32 - 1, which scikit-image would let wrap around.

    Examples
    --------
    >>> image = np.array([[0, 0, 1], [2, 2, 1]], np.uint8)
    >>> graycomatrix(image, [1], [0], levels=3)[:, :, 0, 0]
    array([[1, 1, 0],
           [0, 0, 0],
           [0, 1, 1]], dtype=uint32)
    """
    pixels, n = _checked(np.asarray(image), levels)
    steps = np.asarray(distances, dtype=np.float64)
    turns = np.asarray(angles, dtype=np.float64)
    for name, numbers in (("distances", steps), ("angles", turns)):
        if numbers.ndim != 1:
            raise ValueError(f"The parameter `{name}` must be a 1-dimensional array")
    offsets = [(_round(d * math.sin(a)), _round(d * math.cos(a))) for d in steps for a in turns]
    where = np.array(offsets, dtype=np.int64).reshape(-1, 2)
    counts = texture.cooccurrence(pixels, where, levels=n, symmetric=symmetric)
    if pixels.size >= 2**31 and counts.size and counts.max() > np.iinfo(np.uint32).max:
        raise SeluError(f"the count {counts.max()} does not fit 32 bits")
    matrices = np.empty((n, n, len(steps), len(turns)), np.uint32)
    columns = matrices.reshape(n * n, len(where))
    for k, matrix in enumerate(counts):  # several times as fast as a transposition
        columns[:, k] = matrix.reshape(-1)
    return np.ascontiguousarray(_normed(matrices)) if normed else matrices


def graycoprops(P: npt.NDArray[Any], prop: Property = "contrast") -> npt.NDArray[np.float64]:
    """A property of co-occurrence matrices.

    Parameters
    ----------
    P : (levels, levels, n, m) array
        As :func:`graycomatrix` gives it.
    prop : {"contrast", "dissimilarity", "homogeneity", "ASM", "energy", "correlation"}
        The energy is the root of the angular second moment, ASM, while IBSI's energy is ASM itself.
        The correlation of a single level is 1.

    Returns
    -------
    (n, m) float64

    Raises
    ------
    ValueError
        As scikit-image does.

    Examples
    --------
    >>> image = np.array([[0, 0, 1], [2, 2, 1]], np.uint8)
    >>> graycoprops(graycomatrix(image, [1], [0], levels=3))
    array([[0.5]])
    """
    matrices = np.asarray(P)
    if matrices.ndim != 4:
        raise ValueError("The parameter `P` must be a 4-dimensional array")
    if matrices.shape[0] != matrices.shape[1]:
        raise ValueError("num_level and num_level2 must be equal.")
    for name, number in zip(("num_dist", "num_angle"), matrices.shape[2:]):
        if number == 0:
            raise ValueError(f"{name} must be positive.")
    p = _normed(matrices)
    level = np.arange(len(p), dtype=np.float64)
    difference = level[:, None] - level
    if prop in ("ASM", "energy"):
        asm = np.einsum("ij...,ij...->...", p, p)
        return np.asarray(np.sqrt(asm) if prop == "energy" else asm)
    if prop == "correlation":
        return _correlation(p, level)
    weights = {
        "contrast": difference**2,
        "dissimilarity": np.abs(difference),
        "homogeneity": 1 / (1 + difference**2),
    }
    if prop not in weights:
        raise ValueError(f"{prop} is an invalid property")
    return np.asarray(np.einsum("ij,ij...->...", weights[prop], p))


def _checked(image: npt.NDArray[Any], levels: int | None) -> tuple[npt.NDArray[Any], int]:
    if image.ndim != 2:
        raise ValueError("The parameter `image` must be a 2-dimensional array")
    if image.dtype.kind not in "iub":
        raise ValueError(f"images of {image.dtype} are not supported: convert them to integers")
    if image.dtype.itemsize > 1 and levels is None:
        raise ValueError("The levels argument is required for data types other than uint8.")
    n = 256 if levels is None else levels
    if image.size == 0:
        raise ValueError("the image has no pixels")
    if image.min() < 0:
        raise ValueError("Negative-valued images are not supported.")
    if image.max() >= n:
        raise ValueError(
            "The maximum grayscale value in the image should be smaller than the number of levels."
        )
    return narrow(image), n


def _round(x: float) -> int:
    """Half away from zero, as C has it."""
    return int(math.copysign(math.floor(abs(x) + 0.5), x))


def _normed(matrices: npt.NDArray[Any]) -> npt.NDArray[np.float64]:
    sums = matrices.sum(axis=(0, 1), dtype=np.float64)
    return np.asarray(matrices / np.where(sums == 0, 1, sums))


def _correlation(
    p: npt.NDArray[np.float64], level: npt.NDArray[np.float64]
) -> npt.NDArray[np.float64]:
    rows, columns = p.sum(axis=1), p.sum(axis=0)
    off_i = level[:, None, None] - np.einsum("i,i...->...", level, rows)
    off_j = level[:, None, None] - np.einsum("j,j...->...", level, columns)
    sigma_i = np.sqrt(np.einsum("i...,i...->...", rows, off_i**2))
    sigma_j = np.sqrt(np.einsum("j...,j...->...", columns, off_j**2))
    covariance = np.einsum("ij...,i...,j...->...", p, off_i, off_j)
    is_flat = (sigma_i < 1e-15) | (sigma_j < 1e-15)
    return np.where(is_flat, 1.0, covariance / np.where(is_flat, 1.0, sigma_i * sigma_j))
