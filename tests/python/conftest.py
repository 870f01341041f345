"""What several test files use."""

from __future__ import annotations

import os

import numpy as np
import pytest
from hypothesis import settings

settings.register_profile("selu", database=None)  # nothing is written beside the tests
settings.load_profile("selu")


@pytest.fixture
def rng() -> np.random.Generator:
    """A source that SELU_TEST_SEED repeats; a failed test shows the seed."""
    seed = int(os.environ.get("SELU_TEST_SEED", 0)) or int(np.random.SeedSequence().entropy % 2**32)
    print(f"SELU_TEST_SEED={seed}")
    return np.random.default_rng(seed)


def pairs_of(image: np.ndarray, offset: np.ndarray) -> tuple[np.ndarray, np.ndarray]:
    """The first and the second voxels of all pairs, by slices of the array."""
    first, second = [], []
    for step, extent in zip(np.asarray(offset).tolist(), image.shape):
        step = max(-extent, min(extent, step))
        first.append(slice(max(0, -step), extent - max(0, step)))
        second.append(slice(max(0, step), extent + min(0, step)))
    return image[tuple(first)], image[tuple(second)]


def counts_of(image: np.ndarray, offset: np.ndarray, levels: int) -> np.ndarray:
    """The matrix by bincount; value v at index v."""
    first, second = pairs_of(image, offset)
    codes = first.astype(np.int64).ravel() * levels + second.astype(np.int64).ravel()
    return np.bincount(codes, minlength=levels * levels).reshape(levels, levels)
