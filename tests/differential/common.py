"""What the families share: how a difference is told, and random shapes.

A family is a module with a function case(chance), which draws arguments from a random.Random, and
raises a Difference where the library does not give what the oracle gives. It returns False where the
arguments drawn say nothing, such as a plane through three points in a line; it is called again then.
"""
import math


class Difference(AssertionError):
    """The library and the oracle give different things."""


def expect(given, wanted, what):
    if given != wanted:
        raise Difference(f"{what}: {shortened(given)} instead of {shortened(wanted)}")


def expect_points(given, wanted, what):
    """The same set of points, none of them twice."""
    given = [tuple(p) for p in given]
    found = set(given)
    if len(found) != len(given):
        raise Difference(f"{what}: {len(given) - len(found)} points twice")
    if found != wanted:
        raise Difference(f"{what}: too many {shortened(sorted(found - wanted))}, "
                         f"missing {shortened(sorted(wanted - found))}")


def expect_close(given, wanted, tolerance, what):
    """Within the tolerance times the size of the wanted number, or that of 1 where it is small."""
    if math.isnan(given) and math.isnan(wanted):
        return
    if not abs(given - wanted) <= tolerance * max(1.0, abs(wanted)):
        raise Difference(f"{what}: {given!r} instead of {wanted!r}")


def shortened(thing):
    text = repr(thing)
    return text if len(text) <= 600 else text[:600] + "..."


def point(chance, reach, ndim):
    return tuple(chance.randint(-reach, reach) for _ in range(ndim))


def size(chance, most, ndim):
    return tuple(chance.randint(1, most) for _ in range(ndim))


def offset(chance, reach, ndim):
    """Any but the null offset."""
    while not any(result := point(chance, reach, ndim)):
        pass
    return result


def inside(p, shape):
    return all(0 <= c < extent for c, extent in zip(p, shape))
