"""Distances against fractions, neighbor tables against the definition."""
import itertools
import math
from fractions import Fraction

from seluutils import metric

from common import Difference, expect


def root(square):
    """Of a fraction, right to some 60 bits."""
    if square == 0:
        return 0.0
    shift = 2 * max(0, 70 - (square.numerator.bit_length() - square.denominator.bit_length()) // 2)
    return math.ldexp(math.isqrt((square.numerator << shift) // square.denominator), -shift // 2)


def case(chance):
    if chance.random() < 0.05:
        return case_table(chance)
    n = chance.randint(1, 6)
    scale = 10.0 ** chance.randint(-5, 5)
    a, b = ([chance.uniform(-1, 1) * scale for _ in range(n)] for _ in range(2))
    period = None
    if n in (2, 3) and chance.random() < 0.6:
        period = [chance.uniform(2, 5) * scale for _ in range(n)]
    differences = [abs(Fraction(x) - Fraction(y)) for x, y in zip(a, b)]
    if period is not None:
        differences = [min(d, abs(Fraction(w) - d)) if d > Fraction(w) - d else d for d, w in zip(differences, period)]
    wanted = root(sum(d * d for d in differences))
    given = float(metric.distance(a, b, period=period))
    # Each difference is rounded by up to half a unit of the coordinates' own last place.
    if abs(given - wanted) > 4e-16 * (wanted + 2 * n * scale + sum(period or ())):
        raise Difference(f"distance {a} to {b}, period {period}: {given!r} instead of {wanted!r}")


def case_table(chance):
    n, ndim, periodic = chance.randint(1, 5), chance.choice((2, 3)), chance.random() < 0.5
    given = metric.neighbor_table(n, ndim, periodic=periodic).tolist()
    ways = [way for way in itertools.product((-1, 0, 1), repeat=ndim) if any(way)] + [(0,) * ndim]
    wanted = []
    for cell in itertools.product(range(n), repeat=ndim):
        row = []
        for way in ways:
            there = [c + d for c, d in zip(cell, way)]
            if periodic:
                there = [c % n for c in there]
            is_in = all(0 <= c < n for c in there)
            row.append(sum(c * n**k for k, c in enumerate(reversed(there))) if is_in else -1)
        wanted.append(row)
    expect(given, wanted, f"table {n}^{ndim}, periodic {periodic}")
