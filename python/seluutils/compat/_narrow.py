"""Images of any integers for the library."""

from __future__ import annotations

from typing import Any

import numpy as np
import numpy.typing as npt


def narrow(image: npt.NDArray[Any]) -> npt.NDArray[Any]:
    """Integers of any width and byte order as those that the library takes, where they fit."""
    if image.dtype.kind == "b":
        return image.view(np.uint8)
    if image.dtype.isnative and image.dtype.itemsize <= 4:
        return image
    fits = image.size == 0 or (image.min() >= 0 and image.max() < 2**32)
    return image.astype(np.uint32) if fits else image
