"""The thirteen features of whole images against their formulas, with moments in fractions."""
import math
from fractions import Fraction

import numpy as np
from seluutils import texture

from common import expect_close, offset
from counting import image_of, pairs
from features import entropy, summed

EPSILON = 2.0**-52


def moments(weights, mean, divisor):
    return sum(((k - mean) ** 2 * p for k, p in weights.items()), Fraction(0)) / divisor


def oracle(first, second):
    """By name; levels from 0 to 255."""
    cells = summed(((int(i), int(j)), Fraction(1, len(first))) for i, j in zip(first, second))
    x, y, s, d = (summed((key(*cell), p) for cell, p in cells.items())
                  for key in (lambda i, j: i, lambda i, j: j, lambda i, j: i + j, lambda i, j: abs(i - j)))
    mean = {name: sum(k * p for k, p in part.items()) / extent
            for name, part, extent in (("x", x, 256), ("y", y, 256), ("d", d, 256), ("s", s, 511))}

    def total(term):
        return sum((term(i, j) * p for (i, j), p in cells.items()), Fraction(0))

    sigma_x = math.sqrt(moments(x, mean["x"], 1))
    # The squares of all 256 column sums less their mean: those of empty columns, too.
    sigma_y = math.sqrt(sum((y.get(k, 0) - mean["y"]) ** 2 for k in range(256)))
    varies = sigma_x > EPSILON and sigma_y > EPSILON
    hx, hy, hxy = (entropy(part.values(), math.e) for part in (x, y, cells))
    divisor = hx if hx - hy > EPSILON and abs(hx) > EPSILON else hy if abs(hy) > EPSILON else 0
    mutual = math.fsum(float(p) * math.log1p(float(p / (x[i] * y[j]) - 1)) for (i, j), p in cells.items())
    h1 = -math.fsum(float(p) * math.log(x[i] * y[j]) for (i, j), p in cells.items())
    square = -math.expm1(-2 * mutual)
    return {
        "contrast": total(lambda i, j: (i - j) ** 2) / 65536,
        "correlation": float(total(lambda i, j: i * j) - mean["x"] * mean["y"]) / (sigma_y * sigma_x) if varies else 0,
        "differencevariance": moments(d, mean["d"], 65536),
        "differenceentropy": entropy(d.values(), math.e),
        "entropy": hxy,
        "inversedifferencemoment": total(lambda i, j: Fraction(1, 1 + (i - j) ** 2)),
        "informationmeasureofcorrelation1": hxy - h1 / divisor if divisor else 0,
        "informationmeasureofcorrelation2": math.sqrt(square) if square > 0 else 0,
        "secondangularmoment": total(lambda i, j: cells[i, j]),
        "sumaverage": mean["s"],
        "sumentropy": entropy(s.values(), math.e),
        "sumvariance": moments(s, mean["s"], 511 * 511),
        "variance": total(lambda i, j: (i - mean["x"]) ** 2) / 65536,
    }


def case(chance):
    image = image_of(chance, chance.choice((1, 2, 5, 200)), (np.uint8, np.uint8, np.uint16), most=6)
    if image.dtype == np.uint16 and image.size:  # the highest byte is the level
        image = image * np.uint16(256) + np.uint16(chance.choice((0, 255)))
    way = offset(chance, 2, image.ndim)
    levels = image >> 8 if image.dtype == np.uint16 else image
    first, second = pairs(levels, way, np.ones(image.shape, bool))
    if len(first) == 0:
        return False
    wanted = oracle(first.tolist(), second.tolist())
    for name, value in texture.features(image, way).items():
        plain = "".join(c for c in name.lower() if c.isalnum())
        tolerance = 1e-7 if plain.endswith("correlation2") else 1e-11
        expect_close(value, float(wanted[plain]), tolerance, f"{name} of {image.tolist()} at {way}")
