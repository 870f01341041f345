"""Plane sections against fractions, column by column."""
import math
from fractions import Fraction

from seluutils import draw

from common import expect, offset, point, size
from polygons import cross, dominant_axis


def section(shape_xyz, normal, distance):
    dominant = dominant_axis(normal)
    u, v = [axis for axis in range(3) if axis != dominant]
    normal, distance = [Fraction(n) for n in normal], Fraction(distance)
    points = []
    for b in range(shape_xyz[v]):
        for a in range(shape_xyz[u]):
            w = math.floor((distance - normal[u] * a - normal[v] * b) / normal[dominant] + Fraction(1, 2))
            if 0 <= w < shape_xyz[dominant]:
                p = [0, 0, 0]
                p[u], p[v], p[dominant] = a, b, w
                points.append(tuple(p))
    return points


def case(chance):
    shape = size(chance, chance.choice((3, 7, 12)), 3)
    kind = chance.random()
    if kind < 0.4:
        through = [point(chance, chance.choice((3, 10)), 3) for _ in range(3)]
        normal = cross(*[[b - a for a, b in zip(through[0], p)] for p in through[1:]])
        if not any(normal):
            return False
        distance = sum(n * c for n, c in zip(normal, through[0]))
        given = draw.plane(shape, through=[p[::-1] for p in through])
        text = f"plane through {through}"
    else:
        if kind < 0.7:  # whole numbers: ties
            normal, distance = offset(chance, 6, 3), chance.randint(-30, 60)
        else:  # at most 30 bits, so that they are taken as they are
            normal = tuple(chance.randint(-2**29, 2**29) / 2**29 for _ in range(3))
            distance = chance.randint(-2**29, 2**29) / 2**25
            if not any(normal) or max(map(abs, normal)) < 2**-20:
                return False
        given = draw.plane(shape, normal[::-1], distance)
        text = f"plane {normal} {distance}"
    expect([tuple(p[::-1]) for p in given.tolist()], section(shape[::-1], normal, distance), f"{text} in {shape}")
