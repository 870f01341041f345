"""Cylinders, distances, value maps and feature images."""

from __future__ import annotations

import itertools

import numpy as np
import pandas
import pytest

from seluutils import BadParameter, SeluError, features, mask, metric, texture


@pytest.mark.parametrize("axis", [0, 1, 2])
def test_a_cylinder_has_the_voxels_nearer_than_its_radius(
    axis: int, rng: np.random.Generator
) -> None:
    shape = (5, 6, 7)
    center, radius = rng.uniform(0, 5, 2), 2.0
    section = mask.cylinder(shape, center, radius, axis=axis)
    extents = [n for k, n in enumerate(shape) if k != axis]
    first, second = np.indices(extents)
    inside = (first - center[0]) ** 2 + (second - center[1]) ** 2 < radius**2
    assert section.dtype == bool and np.array_equal(section, inside)
    image = rng.integers(1, 100, shape).astype(np.int16)
    kept = np.asfortranarray(image)[::-1]
    result = mask.keep_cylinder(kept, center, radius, axis=axis, value=-5)
    assert result is kept
    expected = np.where(np.expand_dims(inside, axis), image[::-1], -5)
    assert np.array_equal(kept, expected)


def test_a_voxel_on_the_circle_is_outside() -> None:
    assert mask.cylinder((1, 5, 5), (2, 2), 2).sum() == 9
    assert mask.cylinder((1, 0, 5), (2, 2), 2).shape == (0, 5)


def test_cylinders_that_are_refused() -> None:
    image = np.zeros((3, 3, 3), np.uint8)
    for call, message in [
        (lambda: mask.cylinder((3, 3), (1, 1), 1), "volume"),
        (lambda: mask.cylinder((3, 3, 3), (1, 1), 1, axis=3), "axis"),
        (lambda: mask.cylinder((3, 3, 3), (1,), 1), "two numbers"),
        (lambda: mask.cylinder((3, 3, 3), (1, np.nan), 1), "nan"),
        (lambda: mask.keep_cylinder(image, (1, 1), 1, value=300), "300"),
        (lambda: mask.keep_cylinder(image, (1, 1), 1, value=0.5), "0.5"),
        (lambda: mask.keep_cylinder(np.broadcast_to(image[0], (3, 3, 3)), (1, 1), 1), "read-only"),
    ]:
        with pytest.raises(BadParameter, match=message):
            call()


def test_distances_with_and_without_a_period(rng: np.random.Generator) -> None:
    a, b, period = rng.uniform(0, 5, (1000, 3)), rng.uniform(0, 5, (1000, 3)), (5, 6, 7)
    assert metric.distance(a, b) == pytest.approx(np.linalg.norm(a - b, axis=1), rel=1e-14)
    apart = np.abs(a - b)
    around = np.minimum(apart, np.array(period) - apart)
    expected = np.linalg.norm(around, axis=1)
    assert metric.distance(a, b, period=period) == pytest.approx(expected, rel=1e-13)
    assert metric.distance(a[0], b, period=period)[0] == pytest.approx(expected[0])
    assert metric.distance([1, 1, 1, 1], [2, 2, 2, 2]) == 2
    for call in (
        lambda: metric.distance([1, 2], [1, 2, 3]),
        lambda: metric.distance([1, 2], [1, 2], period=(5,)),
        lambda: metric.distance([1, 2, 3, 4], [1, 2, 3, 4], period=(5, 5, 5, 5)),
        lambda: metric.distance(1, 2),
    ):
        with pytest.raises(SeluError):
            call()


@pytest.mark.parametrize("ndim, n", [(2, 4), (3, 3), (2, 1), (3, 0)])
def test_neighbor_tables_by_numbers_of_ravel(ndim: int, n: int) -> None:
    numbers = np.arange(n**ndim).reshape((n,) * ndim)
    bounded, periodic = metric.neighbor_table(n, ndim), metric.neighbor_table(n, ndim, periodic=True)
    steps = [step for step in itertools.product((-1, 0, 1), repeat=ndim) if any(step)]
    assert bounded.shape == (n**ndim, 3**ndim)
    for cell, place in enumerate(np.ndindex(numbers.shape)):
        for k, step in enumerate(steps):
            other = np.add(place, step)
            is_inside = (other >= 0).all() and (other < n).all()
            assert bounded[cell, k] == (numbers[tuple(other)] if is_inside else -1)
            assert periodic[cell, k] == numbers[tuple(other % n)]
        assert bounded[cell, -1] == periodic[cell, -1] == cell
    with pytest.raises(BadParameter):
        metric.neighbor_table(3, 4)
    with pytest.raises(BadParameter):
        metric.neighbor_table(-1)


CELLS = {
    "maximum label": 3,
    "no. of objects": 2,
    "cell 1": {"cell": "1", "status": "inside", "volume [px]": 12, "box": [1, 2.5]},
    "cell 3": {"cell": "3", "status": "border", "volume [px]": 7, "box": [0, 4.5]},
}


def test_a_feature_image_has_a_row_for_each_feature() -> None:
    image = features.feature_image(CELLS, id_key="cell")
    assert image.keys == ["cell", "box/0", "box/1", "status", "volume [px]"]
    assert image.pixels.dtype == np.float32 and image.pixels.shape == (5, 4)
    assert image.pixels[0].tolist() == [0, 1, 2, 3]
    assert image.column("box/1").tolist() == [0, 2.5, 0, 4.5]
    assert image.types == ["numeric", "numeric", "numeric", "label", "numeric"]
    assert image.column("status") == ["", "inside", "", "border"]
    fewer = features.feature_image(CELLS, id_key="cell", excluded=["status", "box"])
    assert fewer.keys == ["cell", "volume [px]"]
    with pytest.raises(SeluError):
        features.feature_image({"maximum label": 3})
    with pytest.raises(BadParameter, match="x"):
        image.column("x")


def test_columns_of_maps_go_into_pandas_and_back(rng: np.random.Generator) -> None:
    columns = features.to_columns(CELLS, id_key="cell")
    assert columns["label"].tolist() == [1, 3] and columns["box/1"].tolist() == [2.5, 4.5]
    assert columns["status"].tolist() == ["inside", "border"]
    image = rng.integers(1, 9, (20, 20), np.uint8)
    labels = rng.integers(0, 12, (20, 20), np.uint8)
    table = texture.object_features(image, labels, names=["contrast"])
    as_map = features.from_columns(table)
    assert features.is_object_map(as_map)
    again = pandas.DataFrame(features.to_columns(as_map))
    assert np.array_equal(again["label"], table["label"])
    assert np.array_equal(again["no. of voxels"], table["voxels"])
    assert np.array_equal(again["contrast"], table["contrast"], equal_nan=True)
    pixels = features.feature_image(as_map).column("contrast")
    assert np.array_equal(pixels[table["label"]], table["contrast"].astype("f4"), equal_nan=True)


def test_maps_keep_what_they_hold_and_refuse_the_rest() -> None:
    value = {"a": True, "b": -3, "c": 2.5, "d": "ü", "e": [1, [2, "x"]], 7: {"f": 0}}
    assert features.paths(value, kind="all") == ["7/f", "a", "b", "c", "d", "e/0", "e/1/0", "e/1/1"]
    assert features.mean([{"n": np.int16(3), "x": np.float32(0.5)}]) == {"n": 3.0, "x": 0.5}
    circle: dict = {}
    circle["circle"] = circle
    for wrong, error in [
        ({"a": 2**31}, BadParameter),
        ({"a": 10**30}, BadParameter),
        ({"a": None}, TypeError),
        ({"a": np.zeros(3)}, TypeError),
        ({1.5: 1}, TypeError),
        (circle, RecursionError),
    ]:
        with pytest.raises(error):
            features.paths(wrong)
    with pytest.raises(BadParameter):
        features.mean([])
    with pytest.raises(BadParameter, match="kind"):
        features.paths({}, kind="x")


def test_means_of_maps() -> None:
    maps = [{"a": {"b": k, "t": "x"}, "n": [k, True]} for k in range(5)]
    assert features.mean(maps) == {"a": {"b": 2.0}, "n": {"0": 2.0, "1": 1.0}}
