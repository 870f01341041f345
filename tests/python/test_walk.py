"""Walks and drawing: against brute force and scikit-image."""

from __future__ import annotations

import inspect
import itertools
import threading

import numpy as np
import pytest
import skimage.draw
from hypothesis import given, settings, strategies as st

from seluutils import BadParameter, SeluError, draw, walk


def points_of(array: np.ndarray) -> set[tuple[int, ...]]:
    """As a set; no point may come twice."""
    result = set(map(tuple, array.tolist()))
    assert len(result) == len(array)
    return result


def grid(low: int, high: int, ndim: int) -> np.ndarray:
    return np.array(list(itertools.product(range(low, high), repeat=ndim)))


WALKS = {
    "line": lambda shape: walk.line((1, 2), (9, -20), shape=shape),
    "polygon": lambda shape: walk.polygon([(-3, 0), (5, 15), (20, 2)], shape=shape),
    "real polygon": lambda shape: walk.polygon([(-3.5, 0), (5, 15), (20, 2)], shape=shape),
    "area": lambda shape: walk.area([(-3, 0), (5, 15), (20, 2)], shape=shape),
    "window": lambda shape: walk.window((-2, 3), (8, 9), shape=shape),
    "line in space": lambda shape: walk.line((1, 2, 3), (-9, 20, 30), shape=shape),
    "polygon in space": lambda shape: walk.polygon([(0, 0, 0), (9, 0, 3), (9, 9, 6)], shape=shape),
    "area in space": lambda shape: walk.area([(0, 0, 0), (0, 9, 3), (0, 9, 9)], shape=shape),
    "solid": lambda shape: walk.solid(TETRAHEDRON, FACES, shape=shape),
    "ellipsoid": lambda shape: walk.ellipsoid((3, 4, 5), (6, 2.5, 9), shape=shape),
    "window in space": lambda shape: walk.window((-2, 3, 0), (8, 9, 7), shape=shape),
}
TETRAHEDRON = [(0, 0, -1), (0, 1, 9), (8, 9, 0), (9, -2, 3)]
FACES = [(0, 1, 2), (0, 1, 3), (0, 2, 3), (1, 2, 3)]


@pytest.mark.parametrize("name", WALKS)
def test_points_one_by_one_and_in_parts_are_those_in_bulk(name: str) -> None:
    whole = WALKS[name](None).points()
    assert whole.dtype == np.int64 and len(whole) > 5
    assert [tuple(p) for p in whole.tolist()] == list(WALKS[name](None))
    parts = WALKS[name](None)
    first, one, rest = parts.take(3), next(parts), parts.take(10**6)
    assert np.array_equal(np.concatenate([first, [one], rest]), whole)
    assert parts.remaining == 0 and len(parts.points()) == 0
    parts.rewind()
    assert len(parts) == len(whole) and np.array_equal(parts.points(), whole)


@pytest.mark.parametrize("name", WALKS)
def test_a_shape_leaves_out_what_lies_outside(name: str) -> None:
    whole = WALKS[name](None).points()
    shape = (6, 7, 8)[: whole.shape[1]]
    inside = whole[((whole >= 0) & (whole < shape)).all(axis=1)]
    clipped = WALKS[name](shape)
    assert clipped.ndim == whole.shape[1] and clipped.remaining == len(inside)
    assert 0 < len(inside) < len(whole)
    assert np.array_equal(clipped.points(), inside)


@pytest.mark.parametrize("name", sorted(set(draw.__all__) & set(walk.__all__)))
def test_draw_has_the_functions_of_walk(name: str) -> None:
    assert inspect.signature(getattr(draw, name)).parameters == (
        inspect.signature(getattr(walk, name)).parameters
    )


POINTS = st.tuples(*[st.integers(-20, 20)] * 2)


@given(POINTS, POINTS)
@settings(deadline=None)
def test_a_line_is_that_of_scikit_image_but_for_ties(start: tuple, end: tuple) -> None:
    ours = draw.line(start, end)
    theirs = np.transpose(skimage.draw.line(*start, *end))
    assert tuple(ours[0]) == start and tuple(ours[-1]) == end and len(ours) == len(theirs)
    span = np.subtract(end, start)
    major = int(np.argmax(np.abs(span)))
    n = abs(int(span[major]))
    for k, (our, their) in enumerate(zip(ours, theirs)):
        assert our[major] == their[major]
        twice = 2 * int(span[1 - major]) * k  # 2 n times the exact offset
        off = abs(twice - 2 * n * int(our[1 - major] - start[1 - major]))
        assert off <= n
        assert (our == their).all() or off == n


def test_ends_may_be_left_out_and_neighborhoods_chosen() -> None:
    assert draw.line((0, 0), (0, 3), ends=False).tolist() == [[0, 1], [0, 2]]
    corners = draw.line((0, 0), (3, 3), neighborhood=4)
    assert (np.abs(np.diff(corners, axis=0)).sum(axis=1) == 1).all()
    assert len(draw.line((0, 0, 0), (3, 3, 3))) == 4
    assert len(draw.line((0, 0, 0), (3, 3, 3), neighborhood=6)) == 10


def where_in(outlines: list[np.ndarray], p: np.ndarray) -> str:
    """Inside, outside or on the outline by whole numbers and the even-odd rule."""
    crossings = 0
    for outline in outlines:
        for (y0, x0), (y1, x1) in zip(outline, np.roll(outline, -1, axis=0)):
            cross = (x1 - x0) * (p[0] - y0) - (y1 - y0) * (p[1] - x0)
            if cross == 0 and min(x0, x1) <= p[1] <= max(x0, x1):
                if min(y0, y1) <= p[0] <= max(y0, y1):
                    return "on"
            if (y0 <= p[0]) != (y1 <= p[0]) and (cross > 0) == (y1 > y0):
                crossings += 1
    return "inside" if crossings % 2 else "outside"


@given(st.lists(POINTS, min_size=3, max_size=6))
@settings(deadline=None, max_examples=60)
def test_closed_and_open_polygons_are_exact(outline: list) -> None:
    outline = (np.array(outline) // 3).tolist()
    places = {tuple(p): where_in([np.array(outline)], p) for p in grid(-7, 8, 2).tolist()}
    inside = {p for p, place in places.items() if place == "inside"}
    closed = inside | {p for p, place in places.items() if place == "on"}
    assert points_of(draw.polygon(outline, boundary="open")) == inside
    assert points_of(draw.polygon(outline, boundary="closed")) == closed
    half = points_of(draw.polygon(outline, boundary="half_open"))
    assert inside <= half <= closed
    assert closed <= points_of(draw.polygon(outline)) or len(set(map(tuple, outline))) < 3
    theirs = set(zip(*(axis.tolist() for axis in skimage.draw.polygon(*np.transpose(outline)))))
    assert {p for p in inside if min(p) >= 0} <= theirs <= closed


def test_holes_are_left_out_and_corners_may_lie_between_pixels() -> None:
    outer, hole = [(0, 0), (0, 9), (9, 9), (9, 0)], [(2, 2), (2, 6), (6, 6), (6, 2)]
    points = points_of(draw.polygon(outer, holes=[hole], boundary="open"))
    assert points == {(y, x) for y in range(1, 9) for x in range(1, 9)} - {
        (y, x) for y in range(2, 7) for x in range(2, 7)
    }
    assert len(draw.polygon([(0.0, 0.0), (0.0, 2.0), (2.0, 0.0)])) == 6  # with the outline
    real = np.array(outer) + 0.5
    assert points_of(draw.polygon(real)) == {(y, x) for y in range(1, 10) for x in range(1, 10)}


@given(
    st.tuples(*[st.integers(-5, 5)] * 3).filter(any),
    st.integers(-30, 60),
    st.tuples(*[st.integers(1, 7)] * 3),
)
@settings(deadline=None, max_examples=60)
def test_a_plane_has_the_nearest_voxel_of_each_column(
    normal: tuple, distance: int, shape: tuple
) -> None:
    points = points_of(draw.plane(shape, normal, distance))
    main = int(np.argmax(np.abs(normal)))  # of equal ones the first axis, z
    expected = set()
    for p in itertools.product(*map(range, shape)):
        off = (int(np.dot(normal, p)) - distance) * (1 if normal[main] > 0 else -1)
        if -abs(normal[main]) < 2 * off <= abs(normal[main]):  # the upper of two as near
            expected.add(p)
    assert points == expected


def test_a_plane_through_points_is_the_one_by_its_normal() -> None:
    through = [(0, 0, 0), (0, 4, 9), (7, 2, 0)]
    normal = np.cross(through[1], through[2])
    ours = draw.plane((10, 11, 12), through=through)
    assert np.array_equal(ours, draw.plane((10, 11, 12), normal, 0)) and len(ours) > 20


def signed_volume(a: np.ndarray, b: np.ndarray, c: np.ndarray, p: np.ndarray) -> int:
    return round(np.linalg.det(np.array([b - a, c - a, p - a], float)))


def test_a_solid_has_the_points_on_the_inner_side_of_its_faces(rng: np.random.Generator) -> None:
    for _ in range(5):
        corners = rng.integers(-4, 5, (4, 3))
        if signed_volume(*corners) == 0:
            continue
        sides = {-1: set(), 0: set(), 1: set()}
        for p in grid(-4, 5, 3):
            signs = [
                np.sign(signed_volume(*corners[list(face)], p))
                * np.sign(signed_volume(*corners[list(face)], corners[6 - sum(face)]))
                for face in FACES
            ]
            sides[int(min(signs))].add(tuple(p.tolist()))
        assert points_of(draw.solid(corners, FACES, boundary="open")) == sides[1]
        closed = points_of(draw.solid(corners, np.array(FACES), boundary="closed"))
        assert closed == sides[0] | sides[1]
        assert sides[1] <= points_of(draw.solid(corners, FACES))


def test_an_ellipsoid_by_its_inequality() -> None:
    center, axes = np.array([3.5, 4, 5.25]), np.array([4.5, 2, 6])
    points = grid(-3, 13, 3)
    inside = (((points - center) / axes) ** 2).sum(axis=1) <= 1
    assert points_of(draw.ellipsoid(center, axes)) == points_of(points[inside])
    ball = ((points - 4) ** 2).sum(axis=1)
    assert points_of(draw.ellipsoid((4, 4, 4), 3)) == points_of(points[ball <= 9])
    assert points_of(draw.ellipsoid((4, 4, 4), 3, border=False)) == points_of(points[ball < 9])


def test_a_window_is_a_slice() -> None:
    index = np.indices((5, 6, 7)).reshape(3, 5, 6, 7)
    expected = index[:, 1:4, 0:2, 3:7].reshape(3, -1).T
    assert np.array_equal(draw.window((1, 0, 3), (4, 2, 7)), expected)
    assert draw.window((1, 1), (1, 5)).shape == (0, 2)


@pytest.mark.parametrize("shape", [(5, 7), (4, 5, 6), (1, 5, 1), (0, 3, 2)])
def test_a_sweep_has_every_voxel_once(shape: tuple, rng: np.random.Generator) -> None:
    everything = set(itertools.product(*map(range, shape)))
    for direction in grid(-1, 2, len(shape)):
        if direction.any():
            points = draw.sweep(shape, direction)
            assert points_of(points) == everything
            steps = np.diff(points, axis=0)
            if len(everything) > 1 and np.count_nonzero(direction) == 1 and max(shape) > 1:
                axis = int(np.argmax(np.abs(direction)))
                along = (steps == direction).all(axis=1).sum()
                assert along == len(everything) // shape[axis] * (shape[axis] - 1)
    assert points_of(draw.sweep(shape, rng.normal(size=len(shape)))) == everything


def test_profile_and_paint_take_walks_and_points() -> None:
    image = np.arange(30.0).reshape(5, 6)
    assert draw.profile(image, walk.line((0, 0), (4, 4))).tolist() == [0, 7, 14, 21, 28]
    assert draw.profile(image[::-1, ::-1], [(0, 0), (4, 5)]).tolist() == [29, 0]
    painted = np.zeros((5, 6), ">i8")
    assert draw.paint(painted, walk.window((1, 1), (3, 3)), [1, 2, 3, 4]) is painted
    assert painted[1:3, 1:3].tolist() == [[1, 2], [3, 4]] and painted.sum() == 10
    line = walk.line((-1, 0), (1, 0))
    assert draw.profile(image, line, outside="skip").tolist() == [0, 6]
    line.rewind()
    with pytest.raises(BadParameter, match=r"\(-1, 0\) lies outside"):
        draw.paint(painted, line, 9)
    assert painted.sum() == 10
    for beyond in ((5, 0), (0, 6)):
        with pytest.raises(BadParameter, match="lies outside"):
            draw.profile(image, [beyond])


def test_a_walk_serves_one_thread_at_a_time() -> None:
    box = walk.window((0, 0), (20000, 10000))
    started = threading.Event()
    errors: list[Exception] = []

    def take() -> None:
        started.set()
        try:
            box.points()
        except SeluError as error:
            errors.append(error)

    threads = [threading.Thread(target=take) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not errors or "in use by another thread" in str(errors[0])
    assert box.remaining == 0


REFUSED = [  # call, a part of the message
    (lambda: draw.line((0,), (1,)), "2 or 3"),
    (lambda: draw.line((0, 0), (1, 1, 1)), "end"),
    (lambda: draw.line((0, 0), (2**31, 0)), "longer"),
    (lambda: draw.line((-(2**63), 0), (2**63 - 1, 0)), "longer"),
    (lambda: draw.line((0, 0), (1, 1), neighborhood=26), "26"),
    (lambda: draw.line((0, 0), (1, 1), shape=(-1, 2)), "negative"),
    (lambda: draw.polygon([(0, 0, 0), (0, 9, 0), (9, 9, 0), (9, 0, 1)]), "plane"),
    (lambda: draw.polygon([(0, 0, 0.5), (0, 9, 0), (9, 9, 0)]), "integer"),
    (lambda: draw.polygon([(0, 0), (0, np.nan), (9, 9)]), "nan"),
    (lambda: draw.polygon([(0, 0), (0, 5), (5, 5)], boundary="x"), '"x"'),
    (lambda: draw.polygon([(0, 0), (0, 5), (5, 5)], holes=[[(8, 8), (8, 9), (9, 9)]]), "hole"),
    (lambda: draw.plane((4, 4, 4), (0, 0, 0), 1), "normal"),
    (lambda: draw.plane((4, 4, 4), (1, 0, 0)), "needs"),
    (lambda: draw.plane((4, 4, 4), through=[(0, 0, 0), (1, 1, 1)]), "3 points"),
    (lambda: draw.plane((4, 4, 4), (1, 0, 0), 1, through=[(0, 0, 0)] * 3), "not both"),
    (lambda: draw.plane((4, 4), (1, 0, 0), 1), "shape"),
    (lambda: draw.solid(TETRAHEDRON, FACES[:3]), "edge"),
    (lambda: draw.solid(TETRAHEDRON, [(0, 1, 9)]), "9"),
    (lambda: draw.solid(TETRAHEDRON, [(0, 1, -1)]), "below 0"),
    (lambda: draw.ellipsoid((0, 0, 0), -1), "-1"),
    (lambda: draw.ellipsoid((0, 0, np.inf), 1), "inf"),
    (lambda: draw.sweep((4, 4), (0, 0)), "0, 0"),
    (lambda: draw.sweep((4, 4), (2, 1)), "2"),
    (lambda: draw.sweep((4, 4), (np.nan, 1.0)), "nan"),
    (lambda: walk.window((0, 0), (1, 1)).take(-1), "-1"),
    (lambda: draw.profile(np.zeros((3, 3)), [(0, 0, 0)]), "shape"),
    (lambda: draw.profile(np.zeros((3, 3)), [(5, 0)], outside="x"), '"x"'),
]


@pytest.mark.parametrize("case", range(len(REFUSED)))
def test_what_is_refused(case: int) -> None:
    call, message = REFUSED[case]
    with pytest.raises(BadParameter, match=message):
        call()


def test_more_points_than_memory_holds_are_an_error() -> None:
    huge = walk.window((0, 0, 0), (2**20, 2**20, 2**20))
    with pytest.raises(MemoryError):
        huge.points()
    assert next(huge) == (0, 0, 0) and len(huge.take(5)) == 5
