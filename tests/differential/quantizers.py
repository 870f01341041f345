"""Gray levels against fractions, of values on edges and next to them."""
import math
from fractions import Fraction

import numpy as np
from seluutils import texture

from common import expect
from counting import mask_of


def ugly(chance):
    """A number of few bits, or of all, or far away."""
    kind = chance.random()
    if kind < 0.4:
        return chance.randint(-200, 200) / chance.choice((1, 2, 10, 3))
    if kind < 0.8:
        return chance.uniform(-100, 100)
    return chance.uniform(-1, 1) * 10.0 ** chance.randint(-8, 8)


def near(chance, exact):
    """The double nearest to a fraction, or a neighbor of it."""
    value = float(exact)
    return chance.choice((value, math.nextafter(value, math.inf), math.nextafter(value, -math.inf)))


def values_of(chance, edge, n):
    values = []
    for _ in range(chance.randint(1, 30)):
        kind = chance.random()
        if kind < 0.6:
            values.append(near(chance, edge(chance.randint(0, min(n, 1000)))))
        elif kind < 0.9:
            values.append(float(edge(0)) + chance.uniform(-0.1, 1.1) * (float(edge(n)) - float(edge(0))))
        else:
            values.append(chance.choice((math.nan, math.inf, -math.inf)))
    return values


def level(value, edge, n, position):
    """From 1 to n; `position` is how many bins a value lies beyond the first edge, as a fraction."""
    if math.isnan(value):
        return 0
    if math.isinf(value):
        return n if value > 0 else 1
    if Fraction(value) == edge(n):
        return n
    return min(max(math.floor(position(Fraction(value))) + 1, 1), n)


def case(chance):
    return chance.choice((case_range, case_count, case_width))(chance)


def image_from(chance, values):
    """float64 or float32, where the values are numbers of these."""
    kind = chance.choice((np.float64, np.float64, np.float32))
    with np.errstate(over="ignore"):
        image = np.array(values).astype(kind).reshape(1, -1)
    return image, [float(v) for v in image.ravel()]


def case_range(chance):
    low, high = sorted((ugly(chance), ugly(chance)))
    if low == high:
        return False
    n = chance.choice((1, 2, 3, 10, 255, 256, 65535))
    a, width = Fraction(low), Fraction(high) - Fraction(low)

    def edge(k):
        return a + width * k / n

    image, values = image_from(chance, values_of(chance, edge, n))
    mask, kept = mask_of(chance, image.shape)
    given = texture.quantize(image, levels=n, range=(low, high), mask=mask)
    wanted = [level(v, edge, n, lambda x: (x - a) * n / width) if k else 0 for v, k in zip(values, kept.ravel())]
    expect(given.ravel().tolist(), wanted, f"{n} levels of {(low, high)}: {values}")


def fitted(values, kept):
    return [v for v, k in zip(values, kept.ravel()) if k and math.isfinite(v)]


def case_count(chance):
    n, scale = chance.choice((1, 2, 3, 7, 64, 300)), ugly(chance)
    image, values = image_from(chance, [scale * chance.randint(-20, 20) / chance.choice((1, 3)) for _ in range(20)])
    mask, kept = mask_of(chance, image.shape)
    found = fitted(values, kept)
    given = texture.quantize(image, bin_count=n, mask=mask)
    text = f"{n} bins: {values}, mask {None if mask is None else mask.tolist()}"
    if not found or min(found) == max(found):
        expect(given.ravel().tolist(), [int(bool(k) and bool(found)) for k in kept.ravel()], text)
        return None
    a, width = Fraction(min(found)), Fraction(max(found)) - Fraction(min(found))
    wanted = [level(v, lambda k: a + width * k / n, n, lambda x: (x - a) * n / width) if k else 0
              for v, k in zip(values, kept.ravel())]
    expect(given.ravel().tolist(), wanted, text)


def case_width(chance):
    w = chance.choice((0.1, 0.3, 1.0, 25.0, 1 / 3, chance.uniform(0.01, 3)))
    width, start = Fraction(w), ugly(chance)
    if abs(start) > 1e4:
        return False
    anchor = chance.choice((None, "multiple", "least", start - chance.randint(0, 3) * w))
    origin = Fraction(start)
    raw = [near(chance, origin + width * chance.randint(0, 60)) for _ in range(chance.randint(1, 20))]
    image, values = image_from(chance, raw)
    mask, kept = mask_of(chance, image.shape)
    found = fitted(values, kept)
    if not found:
        return False
    least, greatest = Fraction(min(found)), Fraction(max(found))
    first = least if anchor in (None, "least") else Fraction(anchor) if anchor != "multiple" else (
        math.floor(least / width) * width)
    if greatest < first:
        return False
    text = f"bins of {w!r} from {anchor!r}: {values}, mask {None if mask is None else mask.tolist()}"
    given, edges = texture.quantize(image, bin_width=w, anchor=anchor, mask=mask, return_edges=True)
    n = math.floor((greatest - first) / width) + 1
    # A greatest value on an edge belongs to the last level, whose upper edge it is, or begins another.
    n = len(edges) - 1 if greatest == first + width * (len(edges) - 1) else n
    expect(len(edges) - 1, n, f"levels, {text}")
    wanted = [level(v, lambda k: first + width * k, n, lambda x: (x - first) / width) if k else 0
              for v, k in zip(values, kept.ravel())]
    expect(given.ravel().tolist(), wanted, text)
