"""Polygons against a test of every lattice point in exact integers, by vertical rays.

A ray goes up from a point that is moved by (epsilon, epsilon^2): no corner is above it then, and the
half-open polygon has the point where the moved one is inside.
"""
import math
from fractions import Fraction

from seluutils import draw

from common import expect_points, inside, point, size
from lines import plane_line

# Of the neighborhoods of space in the coordinate planes: (x, y), (x, z), (y, z).
SECTIONS = {6: (4, 4, 4), "14.1": ("6.1",) * 3, "14.2": ("6.1", "6.1", "6.2"), 26: (8, 8, 8)}


def turn(a, b, p):
    return (b[0] - a[0]) * (p[1] - a[1]) - (b[1] - a[1]) * (p[0] - a[0])


def edges_of(rings):
    return [(ring[k - 1], ring[k]) for ring in rings for k in range(len(ring))]


def is_on(edges, p):
    return any(turn(a, b, p) == 0 and min(a[0], b[0]) <= p[0] <= max(a[0], b[0])
               and min(a[1], b[1]) <= p[1] <= max(a[1], b[1]) for a, b in edges)


def is_beyond(edges, p):
    """Whether the moved point is inside, even-odd."""
    crossings = 0
    for a, b in edges:
        if a[0] > b[0]:
            a, b = b, a
        if not a[0] <= p[0] < b[0]:
            continue
        side = turn(a, b, p)  # positive: p is above the edge
        crossings += side < 0 or (side == 0 and b[1] > a[1])
    return crossings % 2 == 1


def lattice(rings):
    """The lattice points of the box around, as (x, y)."""
    xs, ys = [[c for ring in rings for c in (p[k] for p in ring)] for k in (0, 1)]
    if not xs:
        return []
    return [(x, y) for x in range(math.floor(min(xs)), math.ceil(max(xs)) + 1)
            for y in range(math.floor(min(ys)), math.ceil(max(ys)) + 1)]


def filled(rings, boundary):
    edges = edges_of(rings)
    points = set()
    for p in lattice(rings):
        on = is_on(edges, p)
        if boundary == "half_open":
            has = is_beyond(edges, p)
        else:
            has = boundary == "closed" if on else is_beyond(edges, p)
        if has:
            points.add(p)
    return points


def border_line(rings, neighborhood):
    points = set()
    for a, b in edges_of(rings):
        a, b = min(a, b), max(a, b)
        points.update((a[0] + x, a[1] + y) for x, y in plane_line(b[0] - a[0], b[1] - a[1], neighborhood))
    return points


def bordered(rings, neighborhood, border):
    """Inside or on the outline and its border lines, or strictly inside and off these."""
    if len(rings[0]) == 1:
        return {rings[0][0]} if border else set()
    lines = border_line(rings, neighborhood)
    return filled(rings, "closed") | lines if border else filled(rings, "open") - lines


def star(chance, reach, corners):
    """Corners by angle: simple, concave more often than not."""
    points = {point(chance, reach, 2) for _ in range(corners)}
    points.discard((0, 0))
    by_angle = {}
    for x, y in points:
        by_angle[(Fraction(y, abs(x) + abs(y)), x >= 0)] = (x, y)  # one for each direction
    return sorted(by_angle.values(), key=lambda p: math.atan2(p[1], p[0]))


def outline_of(chance, reach):
    """Any corners: they may cross themselves; or a star."""
    if chance.random() < 0.5:
        ring = star(chance, reach, chance.randint(3, 10))
        if len(ring) >= 3:
            return ring
    return [point(chance, reach, 2) for _ in range(chance.randint(1, 8))]


def flipped(points):
    return [tuple(reversed(p)) for p in points]


def case(chance):
    kind = chance.random()
    if kind < 0.4:
        return case_real(chance)
    return case_plane(chance) if kind < 0.8 else case_space(chance)


def case_real(chance):
    """Corners between the pixels, of few or of all bits."""
    scale = chance.choice((1, 2, 8, None))

    def number(reach):
        return chance.uniform(-reach, reach) if scale is None else chance.randint(-reach * scale, reach * scale) / scale

    reach = chance.choice((2, 4, 8))
    rings = [[(number(reach), number(reach)) for _ in range(chance.randint(1, 8))]
             for _ in range(chance.choice((1, 1, 2, 3)))]
    boundary = chance.choice(("closed", "half_open", "open"))
    given = draw.polygon([(y, x) for x, y in rings[0]], holes=[flipped(ring) for ring in rings[1:]],
                         boundary=boundary)
    exact = [[tuple(map(Fraction, p)) for p in ring] for ring in rings]
    most = math.lcm(*(c.denominator for ring in exact for p in ring for c in p))
    whole = [[tuple(int(c * most) for c in p) for p in ring] for ring in exact]
    edges, wanted = edges_of(whole), set()
    for p in lattice(exact):
        q = (p[0] * most, p[1] * most)
        on = boundary != "half_open" and is_on(edges, q)
        if (boundary == "closed" if on else is_beyond(edges, q)):
            wanted.add(p)
    expect_points(map(tuple, flipped(given.tolist())), wanted, f"outlines {rings}, {boundary}")


def case_plane(chance):
    """With border lines; with a hole where one fits."""
    ring = outline_of(chance, chance.choice((2, 5, 9)))
    shift = point(chance, 20, 2)
    ring = [(x + shift[0], y + shift[1]) for x, y in ring]
    holes = []
    if len(ring) >= 3 and chance.random() < 0.3:
        low = [min(p[k] for p in ring) for k in (0, 1)]
        high = [max(p[k] for p in ring) for k in (0, 1)]
        holes = [[tuple(chance.randint(low[k], high[k]) for k in (0, 1)) for _ in range(chance.randint(3, 5))]]
    neighborhood, border = chance.choice((4, "6.1", "6.2", 8)), chance.random() < 0.5
    shape = size(chance, 30, 2) if chance.random() < 0.2 else None
    given = draw.polygon(flipped(ring), holes=[flipped(hole) for hole in holes],
                         neighborhood=neighborhood, border=border, shape=shape)
    wanted = bordered([ring, *holes], neighborhood, border)
    if shape is not None:
        wanted = {p for p in wanted if inside(p[::-1], shape)}
    expect_points(map(tuple, flipped(given.tolist())), wanted,
                  f"outline {ring}, holes {holes}, {neighborhood}, border {border}, shape {shape}")


def laid(points, normal, distance, dominant):
    """Seen points (u, v) onto the plane: the nearest voxel, of two the upper."""
    u, v = [axis for axis in range(3) if axis != dominant]
    result = set()
    for p in points:
        above = Fraction(distance - normal[u] * p[0] - normal[v] * p[1], normal[dominant])
        q = [0, 0, 0]
        q[u], q[v], q[dominant] = p[0], p[1], math.floor(above + Fraction(1, 2))
        result.add(tuple(q))
    return result


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def dominant_axis(normal):
    """That of the largest component, of equal ones z before y before x."""
    return max((2, 1, 0), key=lambda axis: abs(normal[axis]))


def polygon_in_space(corners, neighborhood, border):
    """The voxels as (x, y, z), or None where the corners lie in a line."""
    normal = (0, 0, 0)
    for k in range(1, len(corners)):
        for m in range(k):
            normal = cross([b - a for a, b in zip(corners[0], corners[m])],
                           [b - a for a, b in zip(corners[0], corners[k])])
            if any(normal):
                break
        if any(normal):
            break
    if not any(normal):
        return None
    distance = sum(n * c for n, c in zip(normal, corners[0]))
    dominant = dominant_axis(normal)
    u, v = [axis for axis in range(3) if axis != dominant]
    seen = [(p[u], p[v]) for p in corners]
    flat = bordered([seen], SECTIONS[neighborhood][(0, 1, 2)[u + v - 1]], border)
    return laid(flat, normal, distance, dominant)


def case_space(chance):
    """Corners in a plane of space."""
    origin, first, second = (point(chance, reach, 3) for reach in (9, 3, 3))
    if not any(cross(first, second)):
        return False
    ring = outline_of(chance, chance.choice((2, 3)))
    corners = [tuple(o + i * a + j * b for o, a, b in zip(origin, first, second)) for i, j in ring]
    neighborhood, border = chance.choice(list(SECTIONS)), chance.random() < 0.5
    wanted = polygon_in_space(corners, neighborhood, border)
    if wanted is None:
        return False
    given = draw.polygon(flipped(corners), neighborhood=neighborhood, border=border)
    expect_points(flipped(given.tolist()), wanted, f"corners {corners}, {neighborhood}, border {border}")
