"""Sweeps and windows: each voxel once, along lines that fractions or comparisons give."""
import itertools
import math
from fractions import Fraction

from seluutils import draw

from common import Difference, expect, expect_points, inside, offset, point, size


def case(chance):
    return chance.choice((case_unit, case_real, case_window))(chance)


def case_unit(chance):
    """A line starts where the voxel before it is outside, and goes on to the last voxel inside."""
    ndim = chance.choice((2, 3))
    shape, direction = size(chance, 7, ndim), offset(chance, 1, ndim)
    given = [tuple(p) for p in draw.sweep(shape, direction).tolist()]
    text = f"sweep {shape} along {direction}"
    expect_points(given, set(itertools.product(*map(range, shape))), text)
    for p, q in zip(given, given[1:]):
        after = tuple(a + d for a, d in zip(p, direction))
        if inside(after, shape):
            expect(q, after, f"{text}, the point after {p}")
        else:
            before = tuple(a - d for a, d in zip(q, direction))
            if inside(before, shape):
                raise Difference(f"{text}: a line begins at {q}, inside")


def case_real(chance):
    """Step i along the main axis lies floor(i * slope + 1/2) to the side, around the borders."""
    ndim = chance.choice((2, 3))
    shape = size(chance, 7, ndim)
    direction = tuple(chance.choice((0.0, 0.5, -0.5, chance.uniform(-1, 1))) for _ in range(ndim))
    if not any(direction):
        return False
    given = [tuple(p)[::-1] for p in draw.sweep(shape, direction).tolist()]
    extents, along = shape[::-1], direction[::-1]
    text = f"sweep {shape} along {direction}"
    expect_points(given, set(itertools.product(*map(range, extents))), text)
    main = max(range(ndim), key=lambda axis: abs(along[axis]))  # of equal ones x before y before z
    length = extents[main]
    for start in range(0, len(given), length):
        first = given[start]
        for i in range(length):
            for axis in range(ndim):
                slope = Fraction(abs(along[axis]) / abs(along[main]))
                side = math.floor(i * slope + Fraction(1, 2)) * (-1 if along[axis] < 0 else 1)
                wanted = (first[axis] + side) % extents[axis]
                if axis == main:
                    wanted = first[axis] + (i if along[main] > 0 else -i)
                expect(given[start + i][axis], wanted, f"{text}, point {start + i}, axis {axis}")


def case_window(chance):
    ndim = chance.choice((2, 3))
    start = point(chance, 6, ndim)
    stop = tuple(a + chance.randint(-1, 6) for a in start)
    shape = size(chance, 8, ndim) if chance.random() < 0.5 else None
    wanted = [p for p in itertools.product(*map(range, start, stop)) if shape is None or inside(p, shape)]
    given = draw.window(start, stop, shape=shape)
    expect([tuple(p) for p in given.tolist()], wanted, f"window {start} to {stop} in {shape}")
