"""Solids against the parity of tetrahedra, for every lattice point of the box.

The cone of each triangle of the surface to a point far away covers the points inside an odd number
of times. Determinants of coordinates up to 16 are right in doubles, also where the point is moved by
(2^-10, 2^-20, 2^-30): that decides where a half-open solid has a point of its surface.
"""
import numpy as np
from seluutils import draw

from common import expect_points, point
from polygons import (cross, dominant_axis, edges_of, is_beyond, is_on, outline_of, polygon_in_space, SECTIONS)

APEX = np.array([913.218763, 1203.87126, 577.3981123])
MOVED = np.array([2.0**-10, 2.0**-20, 2.0**-30])


def determinants(a, b, c, points):
    """Six times the volumes of the tetrahedra (a, b, c, p)."""
    u, v = np.subtract(b, a), np.subtract(c, a)
    return (points - a) @ np.cross(u, v)


def parity(triangles, points):
    """Whether each point is inside, even-odd."""
    inside = np.zeros(len(points), bool)
    for a, b, c in triangles:
        a, b, c = (np.array(p, float) for p in (a, b, c))
        if not np.cross(b - a, c - a).any():
            continue
        far = determinants(a, b, c, APEX[None])[0]
        is_in = determinants(a, b, c, points) * far > 0
        for p, q, r in ((a, b, c), (b, c, a), (c, a, b)):  # beside the opposite corner
            is_in &= determinants(APEX, p, q, points) * determinants(APEX, p, q, r[None])[0] > 0
        inside ^= is_in
    return inside


def fans(corners, faces):
    return [(corners[f[0]], corners[f[k]], corners[f[k + 1]]) for f in faces for k in range(1, len(f) - 1)]


def on_segment(a, b, points):
    beside = np.cross(points - np.array(a), np.subtract(b, a)).any(axis=1)
    return ~beside & (points >= np.minimum(a, b)).all(axis=1) & (points <= np.maximum(a, b)).all(axis=1)


def on_surface(corners, faces, points):
    found = np.zeros(len(points), bool)
    for face in faces:
        ring = [corners[k] for k in face]
        normal = (0, 0, 0)
        for k in range(2, len(ring)):
            normal = normal if any(normal) else cross(*[[b - a for a, b in zip(ring[0], ring[m])] for m in (k - 1, k)])
        if not any(normal):  # a face in a line
            for a, b in edges_of([ring]):
                found |= on_segment(a, b, points)
            continue
        level = (points - np.array(ring[0])) @ np.array(normal) == 0
        dominant = dominant_axis(normal)
        u, v = [axis for axis in range(3) if axis != dominant]
        edges = edges_of([[(p[u], p[v]) for p in ring]])
        for k in np.flatnonzero(level & ~found):
            seen = (int(points[k][u]), int(points[k][v]))
            found[k] = is_on(edges, seen) or is_beyond(edges, seen)
    return found


def tetrahedron(chance):
    return [point(chance, 5, 3) for _ in range(4)], [(0, 2, 1), (0, 1, 3), (1, 2, 3), (2, 0, 3)]


def prism(chance):
    """An outline, which may be concave or cross itself, moved along a line."""
    ring, up = outline_of(chance, 4), point(chance, 4, 3)
    while len(ring) < 3:
        ring = outline_of(chance, 4)
    n = len(ring)
    bottom = [(x, y, 0) for x, y in ring]
    corners = bottom + [tuple(a + b for a, b in zip(p, up)) for p in bottom]
    faces = [(k, (k + 1) % n, (k + 1) % n + n, k + n) for k in range(n)]
    faces += [tuple(range(n)), tuple(range(n, 2 * n))]
    turned = chance.randrange(3)
    return [p[turned:] + p[:turned] for p in corners], faces


def octahedron(chance):
    """Moved corners: they may cross each other."""
    corners = [point(chance, 5, 3) for _ in range(6)]
    faces = [(a, b, c) for a in (0, 1) for b in (2, 3) for c in (4, 5)]
    return corners, faces


def both(chance):
    (a, f), (b, g) = (chance.choice((tetrahedron, prism, octahedron))(chance) for _ in range(2))
    return a + b, f + [tuple(k + len(a) for k in face) for face in g]


def box(corners):
    low, high = np.min(corners, axis=0) - 1, np.max(corners, axis=0) + 2
    return np.stack(np.meshgrid(*[np.arange(a, b) for a, b in zip(low, high)], indexing="ij"), -1).reshape(-1, 3)


def case(chance):
    corners, faces = chance.choice((tetrahedron, prism, octahedron, both))(chance)
    faces = [face if chance.random() < 0.5 else face[::-1] for face in faces]
    points = box(corners)
    boundary = chance.choice(("closed", "half_open", "open", None))
    text = f"solid {corners}, {faces}, {boundary}"
    zyx = [p[::-1] for p in corners]
    if boundary is not None:
        given = draw.solid(zyx, faces, boundary=boundary)
        if boundary == "half_open":
            has = parity(fans(corners, faces), points + MOVED)
        else:
            surface = on_surface(corners, faces, points)
            has = parity(fans(corners, faces), points + MOVED) & ~surface
            has |= surface if boundary == "closed" else False
        wanted = set(map(tuple, points[has].tolist()))
    else:
        neighborhood, border = chance.choice(list(SECTIONS)), chance.random() < 0.5
        text += f", {neighborhood}, border {border}"
        given = draw.solid(zyx, faces, neighborhood=neighborhood, border=border)
        has = parity(fans(corners, faces), points + MOVED) & ~on_surface(corners, faces, points)
        wanted = set(map(tuple, points[has].tolist()))
        for face in faces if border else []:
            drawn = polygon_in_space([corners[k] for k in face], neighborhood, True)
            if drawn is None:  # a face in a line: its polygon is that line, by the library alone
                drawn = {tuple(p[::-1]) for p in draw.polygon([zyx[k] for k in face], neighborhood=neighborhood).tolist()}
            wanted |= drawn
    expect_points([p[::-1] for p in given.tolist()], wanted, text)
