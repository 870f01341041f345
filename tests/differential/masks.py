"""Cylinders against their inequality in fractions."""
from fractions import Fraction

import numpy as np
from seluutils import mask

from common import Difference, expect, size


def case(chance):
    shape = size(chance, 9, 3)
    axis = chance.randrange(3)
    bits = chance.choice((1, 2, 16))  # squares and sums of these are exact in doubles
    center = [chance.randint(-2 * bits, 10 * bits) / bits for _ in range(2)]
    radius = chance.randint(-bits, 8 * bits) / bits
    across = [extent for k, extent in enumerate(shape) if k != axis]
    square = Fraction(radius) ** 2
    wanted = [[(u - Fraction(center[0])) ** 2 + (v - Fraction(center[1])) ** 2 < square
               for v in range(across[1])] for u in range(across[0])]
    text = f"cylinder {shape}, axis {axis}, {center}, {radius}"
    expect(mask.cylinder(shape, center, radius, axis=axis).tolist(), wanted, text)
    generator = np.random.default_rng(chance.getrandbits(64))
    image = generator.integers(0, 100, shape).astype(chance.choice((np.uint8, np.int32, np.float32)))
    kept = image.copy()
    outside = ~np.broadcast_to(np.expand_dims(np.array(wanted), axis), shape)
    kept[outside] = 7
    mask.keep_cylinder(image, center, radius, axis=axis, value=7)
    if not np.array_equal(image, kept):
        raise Difference(f"{text}: other voxels are kept")
