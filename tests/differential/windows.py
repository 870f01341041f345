"""Feature maps against each window counted by itself, and its features in fractions."""
import itertools
import math

import numpy as np
from seluutils import texture

from common import expect, expect_close, offset, size
from counting import counts, image_of, mask_of
from features import Matrix, tolerance_of


def mean_features(levels, kept, ways, names, symmetric, n):
    """Over the offsets that have pairs; NaN where none has."""
    matrices = [Matrix(counts(levels, way, kept, n, symmetric, low=1)) for way in ways]
    matrices = [matrix for matrix in matrices if matrix.p]
    if not matrices:
        return {name: math.nan for name in names}
    return {name: math.fsum(matrix.of(name) for matrix in matrices) / len(matrices) for name in names}


def offset_within(chance, sides):
    """One that has pairs in a window."""
    while True:
        way = offset(chance, chance.choice((1, 1, 2)), len(sides))
        if all(abs(d) < side for d, side in zip(way, sides)):
            return way


def case(chance):
    n = chance.choice((1, 2, 4, 9))
    image = image_of(chance, n + 1, (np.uint8, np.uint16), most=9)
    if image.size == 0:
        return False
    sides = [2 * k - 1 for k in size(chance, 3, image.ndim)]
    if max(sides) == 1:
        return False
    step = size(chance, 2, image.ndim)
    border = chance.choice(("clipped", "valid"))
    ways = [offset_within(chance, sides) for _ in range(chance.choice((1, 2)))]
    names = chance.sample(texture.IBSI_FEATURES, 5)
    symmetric = chance.random() < 0.5
    mask, kept = mask_of(chance, image.shape)
    kept = kept & (image > 0)
    text = (f"{image.tolist()} {image.dtype}, windows {sides}, step {step}, {border}, {ways}, mask "
            f"{None if mask is None else mask.tolist()}, symmetric {symmetric}")
    maps = texture.feature_maps(image, sides, names=names, offset=ways, levels=n, mask=mask, step=step,
                                border=border, symmetric=symmetric, dtype=np.float64)
    halves = [side // 2 for side in sides]
    margins = halves if border == "valid" else [0] * image.ndim
    centers = [range(m, extent - m, by) for m, extent, by in zip(margins, image.shape, step)]
    for name in names:
        expect(maps[name].shape, tuple(map(len, centers)), f"shape of the maps of {text}")
    all_places = list(itertools.product(*map(enumerate, centers)))
    for place in chance.sample(all_places, min(4, len(all_places))):
        at, center = zip(*place)
        box = tuple(slice(max(0, c - h), c + h + 1) for c, h in zip(center, halves))
        wanted = mean_features(image[box], kept[box], ways, names, symmetric, n)
        for name in names:
            expect_close(float(maps[name][at]), wanted[name], tolerance_of(name), f"{name} at {center} of {text}")
