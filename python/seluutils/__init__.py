"""Texture, voxel walks, masks and random orientations for 2D and 3D images.

Arrays are ``[z, y, x]`` or ``[y, x]``, and every point, offset, size and corner is in the order of
the array's axes, so that ``image[tuple(p)]`` is right. Only names that end in ``_xyz`` are
Cartesian.

Arrays of bool, of integers of 8, 16 and 32 bits, of float32 and float64 are taken as they are,
whatever their strides; nothing is copied. The interpreter's lock is released while the library
works, and Ctrl-C ends it.

>>> import numpy as np
>>> from seluutils import texture
>>> image = np.arange(4096, dtype=np.uint8).reshape(64, 64)
>>> round(texture.features(image, (0, 1))["Entropy"], 6)
5.529429
"""

from ._core import __version__
from ._errors import BadParameter, Location, SeluError
from . import compat, draw, features, mask, metric, random, texture, walk

__all__ = [
    "BadParameter",
    "Location",
    "SeluError",
    "__version__",
    "compat",
    "draw",
    "features",
    "mask",
    "metric",
    "random",
    "texture",
    "walk",
]
