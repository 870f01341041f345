"""Maps of windows and features of objects: against the features of each window and object."""

from __future__ import annotations

import numpy as np
import pandas
import pytest
from skimage.measure import label, regionprops_table

from seluutils import BadParameter, texture

NAMES = ["contrast", "joint_entr", "corr", "energy"]


def window_around(center: tuple[int, ...], size: tuple[int, ...]) -> tuple[slice, ...]:
    return tuple(slice(max(0, c - s // 2), c + s // 2 + 1) for c, s in zip(center, size))


@pytest.mark.parametrize("shape, size", [((12, 15), (5, 3)), ((6, 7, 8), (3, 5, 3))])
@pytest.mark.parametrize("symmetric", [False, True])
def test_maps_are_the_features_of_each_window(
    shape: tuple[int, ...], size: tuple[int, ...], symmetric: bool, rng: np.random.Generator
) -> None:
    image = rng.integers(0, 5, shape, np.uint8)  # 0 is outside
    given = dict(names=NAMES, levels=4, symmetric=symmetric)
    maps = texture.feature_maps(image, size, dtype=np.float64, **given)
    for center in np.ndindex(shape):
        part = image[window_around(center, size)]
        values = texture.features(part, definition="ibsi", aggregate="mean", **given)
        for name in NAMES:
            assert maps[name][center] == pytest.approx(values[name], rel=1e-9, abs=1e-9, nan_ok=True)


def test_steps_borders_masks_and_layouts(rng: np.random.Generator) -> None:
    image = rng.integers(1, 9, (20, 30), np.uint8)
    whole = texture.feature_maps(image, 5, names=NAMES)
    valid = texture.feature_maps(image, 5, names=NAMES, border="valid", step=(3, 2))
    turned = np.asfortranarray(image[::-1])[::-1]
    again = texture.feature_maps(turned, (5, 5), names=NAMES)
    for name in NAMES:
        assert (valid[name] == whole[name][2:-2:3, 2:-2:2]).all()
        assert (again[name] == whole[name]).all()
    mask = rng.random(image.shape) < 0.6
    masked = texture.feature_maps(image, 5, names=NAMES, mask=mask, levels=8)
    outside = texture.feature_maps(np.where(mask, image, 0).astype("u1"), 5, names=NAMES, levels=8)
    for name in NAMES:
        assert np.array_equal(masked[name], outside[name], equal_nan=True)


@pytest.mark.parametrize("dtype", [np.float32, np.float64])
def test_out_takes_the_maps(dtype: type, rng: np.random.Generator) -> None:
    image = rng.integers(1, 9, (20, 30), np.uint8)
    out = np.empty((2, 20, 30), dtype)
    maps = texture.feature_maps(image, 5, names=["contrast", "energy"], out=out)
    plain = texture.feature_maps(image, 5, names=["contrast", "energy"], dtype=dtype)
    for k, name in enumerate(("contrast", "energy")):
        assert np.shares_memory(maps[name], out) and (out[k] == plain[name]).all()
    for wrong in (out[:1], out[:, ::-1], out.astype(np.int32), [0.0]):
        with pytest.raises(BadParameter):
            texture.feature_maps(image, 5, names=["contrast", "energy"], out=wrong)


def test_what_ends_early_leaves_no_half_written_maps(rng: np.random.Generator) -> None:
    image = rng.integers(1, 65, (400, 400), np.uint8)
    out = np.zeros((25, 400, 400), np.float32)

    def stop(done: int, total: int) -> None:
        raise KeyError(done)

    with pytest.raises(KeyError):
        texture.feature_maps(image, 15, out=out, progress=stop)
    assert np.isnan(out).all()


def test_progress_of_maps_counts_lines(rng: np.random.Generator) -> None:
    told: list[tuple[int, int]] = []
    image = rng.integers(1, 9, (50, 60), np.uint8)
    texture.feature_maps(image, 5, progress=lambda *step: told.append(step))
    assert told and told[-1][0] == told[-1][1] and told == sorted(told)


REFUSED = [  # arguments, a part of the message
    (dict(size=4), "4"),
    (dict(size=(3, 3, 3)), "size"),
    (dict(size=3, step=0), "0"),
    (dict(size=3, border="x"), '"x"'),
    (dict(size=3, names=["mcc"]), "(?i)maximal|mcc"),
    (dict(size=3, dtype=np.int32), "int32"),
    (dict(size=3, offset=(0, 9)), "9"),
    (dict(size=3, levels=5000), "5000"),
]


@pytest.mark.parametrize("case", range(len(REFUSED)))
def test_what_is_refused(case: int) -> None:
    arguments, message = REFUSED[case]
    with pytest.raises(BadParameter, match=message):
        texture.feature_maps(np.ones((8, 8), np.uint8), **arguments)


@pytest.mark.parametrize("shape", [(40, 50), (10, 20, 21)])
@pytest.mark.parametrize("dtype", ["u1", "i2", "u4", "i4"])
def test_objects_are_measured_as_if_alone(
    shape: tuple[int, ...], dtype: str, rng: np.random.Generator
) -> None:
    image = rng.normal(size=shape)
    labels = label(rng.random(shape) < 0.4)
    labels = np.where(labels <= 100, labels, 0).astype(dtype)
    columns = texture.object_features(image, labels, bin_count=8)
    levels = texture.quantize(image, bin_count=8)
    assert columns["label"].tolist() == [n for n in np.unique(labels).tolist() if n]
    for k, number in enumerate(columns["label"]):
        alone = texture.features(
            levels, definition="ibsi", levels=8, aggregate="mean", mask=labels == number
        )
        for name, value in alone.items():
            assert np.array_equal(columns[name][k], value, equal_nan=True), name


def test_columns_go_beside_those_of_scikit_image_into_pandas(rng: np.random.Generator) -> None:
    image = rng.integers(1, 9, (60, 60), np.uint8)
    labels = label(rng.random(image.shape) < 0.5)
    ours = pandas.DataFrame(texture.object_features(image, labels, aggregate="sum"))
    theirs = pandas.DataFrame(regionprops_table(labels, properties=("label", "area")))
    both = ours.merge(theirs, on="label")
    assert len(both) == len(ours) == len(theirs)
    assert (both["voxels"] == both["area"]).all()


def test_no_objects_give_empty_columns() -> None:
    columns = texture.object_features(np.ones((3, 3), np.uint8), np.zeros((3, 3), np.uint8))
    assert all(len(column) == 0 for column in columns.values())
    assert list(columns) == ["label", "voxels", *texture.IBSI_FEATURES]


@pytest.mark.parametrize("labels", [np.full((3, 3), -1), np.ones((3, 3)), np.ones((2, 3))])
def test_labels_that_are_refused(labels: np.ndarray) -> None:
    labels = labels.astype("i4" if labels.dtype.kind == "i" else labels.dtype)
    with pytest.raises(BadParameter):
        texture.object_features(np.ones((3, 3), np.uint8), labels)


@pytest.mark.parametrize("dtype", [np.int64, np.uint64, bool])
def test_labels_of_64_bits_are_taken_where_they_fit(dtype: type) -> None:
    image = np.array([[1, 2, 3, 1]], np.uint8)
    labels = np.array([[1, 1, 0, 0]], dtype)[:, ::-1][:, ::-1]
    assert texture.object_features(image, labels, names=["contrast"])["contrast"] == [1]
    if dtype is not bool:
        labels[0, 0] = 2**32 - 1
        assert texture.object_features(image, labels)["label"].tolist() == [1, 2**32 - 1]
        labels[0, 0] = 2**32
        with pytest.raises(BadParameter, match="2\\^32"):
            texture.object_features(image, labels)
        with pytest.raises(BadParameter, match="mask must be"):
            texture.quantize(image, mask=labels)


@pytest.mark.parametrize("dtype", ["?", "u1", "i1", "u2", "i2", "u4", "i4", "i8"])
def test_a_large_object_has_the_features_of_its_mask(dtype: str, rng: np.random.Generator) -> None:
    """From 2**22 voxels on an object is counted in another way."""
    image = rng.integers(0, 9, (2150, 2100), np.uint8)
    labels = np.ones(image.shape, dtype)
    labels[30:90, 40:70] = 0
    if dtype != "?":
        labels[5:8, 5:9], labels[2000:, :20] = 2, 3
    names = ["contrast", "joint_entr", "info_corr1"]
    given = dict(names=names, levels=8, symmetric=bool(rng.integers(2)))
    for aggregate in ("mean", "sum"):
        ours = texture.object_features(image, labels, aggregate=aggregate, **given)
        for row, number in enumerate(ours["label"]):
            mask = labels == number
            alone = texture.features(
                image, mask=mask, definition="ibsi", aggregate=aggregate, **given
            )
            assert {name: ours[name][row] for name in names} == alone
            assert ours["voxels"][row] == np.count_nonzero(mask)


def test_a_large_object_in_one_slice_and_of_300_levels(rng: np.random.Generator) -> None:
    image = rng.integers(0, 301, (3, 2100, 2050), np.uint16)
    labels = np.zeros(image.shape, np.uint16)
    labels[1] = 7
    ours = texture.object_features(image, labels, levels=300, names=["contrast"])
    alone = texture.object_features(image[1], labels[1], levels=300, names=["contrast"])
    assert ours["voxels"] == [2100 * 2050] and ours["label"] == [7]
    assert ours["contrast"] == pytest.approx(alone["contrast"], rel=1e-12)
