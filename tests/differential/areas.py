"""Convex areas: every lattice point in or on the outline, none twice, none beyond the border lines."""
from seluutils import draw

from common import Difference, point
from polygons import border_line, filled, turn


def hull(points):
    """Counter-clockwise, without points on its sides; or what there is."""
    ordered = sorted(set(points))
    if len(ordered) < 3:
        return ordered

    def chain(points):
        kept = []
        for p in points:
            while len(kept) > 1 and turn(kept[-2], kept[-1], p) <= 0:
                kept.pop()
            kept.append(p)
        return kept[:-1]

    return chain(ordered) + chain(reversed(ordered))


def case(chance):
    reach = chance.choice((2, 5, 12))
    shift = point(chance, 15, 2)
    ring = hull([point(chance, reach, 2) for _ in range(chance.randint(3, 10))])
    if len(ring) < 3:
        return False
    ring = [(x + shift[0], y + shift[1]) for x, y in ring]
    start = chance.randrange(len(ring))
    ring = ring[start:] + ring[:start]
    if chance.random() < 0.5:
        ring.reverse()
    neighborhood, border = chance.choice((4, "6.1", "6.2", 8)), chance.random() < 0.5
    given = [tuple(reversed(p)) for p in
             draw.area([(y, x) for x, y in ring], neighborhood=neighborhood, border=border).tolist()]
    text = f"area {ring}, {neighborhood}, border {border}"
    found = set(given)
    if len(found) != len(given):
        raise Difference(f"{text}: {len(given) - len(found)} points twice")
    # The border lines of the area go either way along an edge.
    lines = border_line([ring], neighborhood) | {
        (-x, -y) for x, y in border_line([[(-x, -y) for x, y in ring]], neighborhood)}
    closed, inner = filled([ring], "closed"), filled([ring], "open")
    least, most = (closed, closed | lines) if border else (inner - lines, closed | lines)
    if not least <= found:
        raise Difference(f"{text}: missing {sorted(least - found)[:20]}")
    if not found <= most:
        raise Difference(f"{text}: too many {sorted(found - most)[:20]}")
