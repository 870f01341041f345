"""Digital lines against closed forms, the fewest moves by search, and distances in fractions."""
import functools
import itertools
from fractions import Fraction

from seluutils import draw, walk

from common import Difference, expect, inside, point, size

PLANE = {4: (), "6.1": ((1, 1),), "6.2": ((1, -1),), 8: ((1, 1), (1, -1))}
SPACE = {
    6: (),
    "14.1": ((1, 1, 0), (1, 0, 1), (0, 1, 1), (1, 1, 1)),
    "14.2": ((1, 1, 0), (1, 0, 1), (0, 1, -1), (1, 1, 1)),
    26: tuple(itertools.product((-1, 0, 1), repeat=3)),
}


def rounded(i, b, a):
    """i * b / a to the nearest integer, halves up; a and b are no less than 0."""
    return (2 * i * b + a) // (2 * a) if a else 0


def sign(x):
    return -1 if x < 0 else 1


def plane_line(dx, dy, neighborhood):
    """The points from (0, 0) to (dx, dy): (x, y), x first."""
    a, b, sx, sy = abs(dx), abs(dy), sign(dx), sign(dy)
    has_diagonal = any((sx, sy) in ((u, v), (-u, -v)) for u, v in PLANE[neighborhood])
    drives = a >= b
    longer, shorter = max(a, b), min(a, b)
    points = []
    if has_diagonal:
        for i in range(longer + 1):
            j = rounded(i, shorter, longer)
            points.append((i * sx, j * sy) if drives else (j * sx, i * sy))
    else:
        for k in range(longer + shorter + 1):
            j = rounded(k, shorter, longer + shorter)
            points.append(((k - j) * sx, j * sy) if drives else (j * sx, (k - j) * sy))
    return points


def classic_line(d):
    """The line in space with all moves: each coordinate along the longest, halves up."""
    longest = max(map(abs, d))
    return [tuple(sign(c) * rounded(i, abs(c), longest) for c in d) for i in range(longest + 1)]


def octant_moves(d, neighborhood):
    """The moves by absolute coordinates that go nowhere backward."""
    signs = [sign(c) for c in d]
    moves = {(1, 0, 0), (0, 1, 0), (0, 0, 1)}
    for move in SPACE[neighborhood]:
        for turned in (move, tuple(-c for c in move)):
            if any(turned) and all(c in (0, s) for c, s in zip(turned, signs)):
                moves.add(tuple(map(abs, turned)))
    return tuple(sorted(moves))


@functools.lru_cache(maxsize=None)
def fewest(moves, lengths):
    if not any(lengths):
        return 0
    rests = [tuple(c - m for c, m in zip(lengths, move)) for move in moves]
    return 1 + min(fewest(moves, rest) for rest in rests if min(rest) >= 0)


def is_near(p, d, reach):
    """Whether the segment from 0 to d has a point at most so far away along every axis."""
    low, high = Fraction(0), Fraction(1)
    for c, length in zip(p, d):
        if length == 0:
            if abs(c) > reach:
                return False
            continue
        ends = sorted(((c - reach) / length, (c + reach) / length))
        low, high = max(low, ends[0]), min(high, ends[1])
    return low <= high


def check_small_neighborhood(points, d, neighborhood):
    moves = octant_moves(d, neighborhood)
    taken = [tuple(abs(b - a) for a, b in zip(p, q)) for p, q in zip(points, points[1:])]
    wrong = [move for move in taken if move not in moves]
    if wrong:
        raise Difference(f"moves {wrong} are not permitted")
    expect(points[-1], d, "last point")
    if max(map(abs, d)) <= 40:
        expect(len(taken), fewest(moves, tuple(map(abs, d))), "number of moves")
    reach = Fraction(1) if len(moves) == 3 else Fraction(3, 2)
    far = [p for p in points if not is_near(p, d, reach)]
    if far:
        raise Difference(f"points {far} are more than {reach} from the segment")


def case(chance):
    ndim = chance.choice((2, 3))
    reach = chance.choice((3, 8, 8, 30) if ndim == 3 else (3, 8, 30, 300))
    start, d = point(chance, 50, ndim), point(chance, reach, ndim)
    end = tuple(a + b for a, b in zip(start, d))
    neighborhood = chance.choice(list(PLANE if ndim == 2 else SPACE))
    text = f"line {start} to {end}, {neighborhood}"
    points = [tuple(p) for p in draw.line(start, end, neighborhood=neighborhood).tolist()]
    origin = [tuple(a - b for a, b in zip(p, start))[::-1] for p in points]
    expect(origin[0], (0,) * ndim, text)
    xyz = d[::-1]
    if ndim == 2:
        expect(origin, plane_line(*xyz, neighborhood), text)
    elif neighborhood == 26:
        expect(origin, classic_line(xyz), text)
    else:
        try:
            check_small_neighborhood(origin, xyz, neighborhood)
        except Difference as difference:
            raise Difference(f"{text}: {difference}") from None
    check_selections(chance, points, start, end, neighborhood, text)


def check_selections(chance, points, start, end, neighborhood, text):
    """Without ends, in an image, in parts, backward to the beginning."""
    given = draw.line(start, end, neighborhood=neighborhood, ends=False).tolist()
    expect([tuple(p) for p in given], points[1:-1], text + " without ends")
    shape = size(chance, 60, len(start))
    clipped = walk.line(start, end, neighborhood=neighborhood, shape=shape)
    kept = [p for p in points if inside(p, shape)]
    expect(clipped.remaining, len(kept), f"{text} in {shape}")
    first = chance.randint(0, len(kept))
    parts = clipped.take(first).tolist() + clipped.points().tolist()
    expect([tuple(p) for p in parts], kept, f"{text} in {shape}")
    clipped.rewind()
    expect(list(clipped), kept, f"{text} in {shape}, again")
