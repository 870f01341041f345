"""Balls and ellipsoids against their inequality in fractions, for every voxel of the box."""
import math
from fractions import Fraction

from seluutils import draw

from common import expect


def case(chance):
    bits = chance.choice((1, 2, 8, None))

    def number(low, high):
        return chance.uniform(low, high) if bits is None else chance.randint(low * bits, high * bits) / bits

    center = tuple(number(-9, 9) for _ in range(3))
    if chance.random() < 0.5:
        axes = (max(number(0, 5), 0.25),) * 3
    else:
        axes = tuple(max(number(0, 5), 0.25) for _ in range(3))
    border = chance.random() < 0.5
    exact, squares = [Fraction(c) for c in center], [Fraction(a) ** 2 for a in axes]
    wanted = []
    ranges = [range(math.ceil(c - a), math.floor(c + a) + 1) for c, a in zip(center, axes)]
    for z in ranges[0]:
        for y in ranges[1]:
            rest = 1 - (z - exact[0]) ** 2 / squares[0] - (y - exact[1]) ** 2 / squares[1]
            for x in ranges[2] if rest >= 0 else ():
                along = (x - exact[2]) ** 2 / squares[2]
                if along < rest or (border and along == rest):
                    wanted.append((z, y, x))
    given = draw.ellipsoid(center, axes, border=border)
    expect([tuple(p) for p in given.tolist()], wanted, f"ellipsoid {center}, {axes}, border {border}")
