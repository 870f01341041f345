"""Volumes restricted to an upright circular cylinder."""

from __future__ import annotations

from typing import Any, Sequence, TypeVar

import numpy as np
import numpy.typing as npt

from . import _core
from ._errors import BadParameter

__all__ = ["cylinder", "keep_cylinder"]

Image = TypeVar("Image", bound="npt.NDArray[Any]")


def cylinder(
    shape: Sequence[int], center: Sequence[float], radius: float, *, axis: int = 0
) -> npt.NDArray[np.bool_]:
    """The cross section of a cylinder along an axis of a volume.

    Parameters
    ----------
    shape : (3,) integers
        The extents of the volume.
    center : (2,) numbers
        In voxels, in the order of the two other axes.
    radius : float
        In voxels. A voxel whose distance to the center is less lies inside; one exactly on the
        circle does not.
    axis : int
        The axis of the array along which the cylinder lies: 0 is z.

    Returns
    -------
    (2,) axes of bool
        True inside, of the extents of the two other axes.

    Raises
    ------
    BadParameter
        For another number of axes, and numbers that are not finite.

    Examples
    --------
    >>> cylinder((9, 3, 4), center=(1, 1.5), radius=1.2).astype(int)
    array([[0, 1, 1, 0],
           [0, 1, 1, 0],
           [0, 1, 1, 0]])
    """
    extents, middle = _across(shape, axis), list(center)
    if len(middle) != 2:
        raise BadParameter(f"center must be two numbers, not {len(middle)}")
    return _core.cylinder_section(extents, middle[0], middle[1], radius)


def keep_cylinder(
    image: Image, center: Sequence[float], radius: float, *, axis: int = 0, value: float = 0
) -> Image:
    """Sets every voxel outside a cylinder to a value, and leaves the others alone.

    Parameters
    ----------
    image : writable (z, y, x) array
        Of any dtype that holds the value, of any strides.
    center, radius, axis
        As those of :func:`cylinder`.
    value : number
        What the voxels outside become.

    Returns
    -------
    array
        The image.

    Raises
    ------
    BadParameter
        As :func:`cylinder`, for a read-only image, and for a value that its dtype does not hold.

    Examples
    --------
    >>> keep_cylinder(np.full((1, 3, 4), 7), (1, 1.5), 1.2)[0]
    array([[0, 7, 7, 0],
           [0, 7, 7, 0],
           [0, 7, 7, 0]])
    """
    section = cylinder(image.shape, center, radius, axis=axis)
    if not image.flags.writeable:
        raise BadParameter("image is read-only")
    stored = np.array(value).astype(image.dtype)
    if image.dtype.kind in "iub" and stored != value:
        raise BadParameter(f"pixels of {image.dtype} do not hold the value {value}")
    np.moveaxis(image, axis, 0)[:, ~section] = stored
    return image


def _across(shape: Sequence[int], axis: int) -> list[int]:
    extents = list(shape)
    if len(extents) != 3 or axis not in (0, 1, 2):
        raise BadParameter(
            f"a cylinder lies along axis 0, 1 or 2 of a volume, not {axis} of {tuple(extents)}"
        )
    del extents[axis]
    return extents
