"""Maps and objects of volumes in chunks: bit for bit those of the whole array, at every seam."""

from __future__ import annotations

from pathlib import Path
from typing import Any, Iterator

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st
from skimage.measure import label, regionprops_table

dask = pytest.importorskip("dask")
import dask.array as da  # noqa: E402

from seluutils import BadParameter, texture  # noqa: E402
from seluutils import dask as chunked  # noqa: E402

NAMES = ["contrast", "corr", "joint_entr", "inv_diff_norm", "info_corr2"]
GRAY: list[dict[str, Any]] = [
    {},
    {"levels": 9},
    {"bin_width": 1.5},
    {"bin_count": 5},
    {"levels": 6, "range": (2, 7)},
]


@pytest.fixture(autouse=True)
def synchronous() -> Iterator[None]:
    with dask.config.set(scheduler="synchronous"):
        yield


@st.composite
def volumes(draw: Any) -> dict[str, Any]:
    ndim = draw(st.integers(2, 3))
    side = st.integers(1, 18 if ndim == 2 else 8)
    shape = tuple(draw(side) for _ in range(ndim))
    size = tuple(2 * draw(st.integers(0, 3)) + 1 for _ in shape)
    offset = st.tuples(*(st.integers(1 - extent, extent - 1) for extent in size))
    return {
        "shape": shape,
        "chunks": tuple(draw(side) for _ in shape),
        "mask": draw(st.booleans()),
        "size": size,
        "step": tuple(draw(st.integers(1, 3)) for _ in shape),
        "border": draw(st.sampled_from(["clipped", "valid"])),
        "offset": draw(st.lists(offset, min_size=1, max_size=4)),
        "symmetric": draw(st.booleans()),
        "gray": draw(st.sampled_from(GRAY)),
        "seed": draw(st.integers(0, 2**32 - 1)),
    }


@settings(max_examples=120, deadline=None)
@given(case=volumes(), dtype=st.sampled_from([np.float32, np.float64]))
def test_maps_are_those_of_the_whole_array(case: dict[str, Any], dtype: type) -> None:
    rng = np.random.default_rng(case["seed"])
    image = rng.integers(0, 10, case["shape"], np.uint8)
    mask = rng.random(image.shape) < 0.8 if case["mask"] else None
    given = {name: case[name] for name in ("step", "border", "offset", "symmetric")}
    given.update(case["gray"], names=NAMES, dtype=dtype)
    whole = texture.feature_maps(image, case["size"], mask=mask, **given)
    volume = da.from_array(image, case["chunks"])
    maps = chunked.feature_maps(volume, case["size"], mask=mask, **given)
    assert list(maps) == NAMES
    for name in NAMES:
        values = maps[name].compute()
        assert values.dtype == dtype and maps[name].shape == values.shape
        assert values.tobytes() == whole[name].tobytes()


def test_windows_wider_than_a_chunk_and_all_features(rng: np.random.Generator) -> None:
    image = rng.integers(1, 33, (40, 50), np.uint8)
    whole = texture.feature_maps(image, (31, 17))
    maps = dask.compute(chunked.feature_maps(image, (31, 17), chunks=(7, 9)))[0]
    for name in texture.IBSI_FEATURES:
        assert maps[name].tobytes() == whole[name].tobytes()


def test_maps_of_real_numbers_have_the_levels_of_the_whole(rng: np.random.Generator) -> None:
    image = rng.normal(size=(30, 20))
    image[3, 4:9] = np.nan
    whole = texture.feature_maps(image, 5, names=NAMES, bin_width=0.2)
    maps = chunked.feature_maps(image, 5, names=NAMES, bin_width=0.2, chunks=8)
    for name in NAMES:
        assert maps[name].compute().tobytes() == whole[name].tobytes()


def test_without_chunks_a_task_makes_maps_of_moderate_size(tmp_path: Path) -> None:
    volume = np.lib.format.open_memmap(tmp_path / "v.npy", "w+", np.uint8, (1024, 1024, 1024))
    maps = chunked.feature_maps(volume, 3, levels=4)
    assert maps["contrast"].shape == volume.shape
    assert 25 * 4 * np.prod(maps["contrast"].chunksize) <= 1 << 28


@pytest.mark.parametrize(
    "given", [dict(size=4), dict(size=3, step=0), dict(size=3, border="wrapped"),
              dict(size=3, names=["beauty"]), dict(size=3, dtype=int), dict(size=(3, 3, 3))],
)  # fmt: skip
def test_wrong_arguments_of_maps_are_refused_at_once(given: dict[str, Any]) -> None:
    with pytest.raises(BadParameter):
        chunked.feature_maps(np.ones((8, 9), np.uint8), **given)


def same_columns(ours: dict[str, np.ndarray], whole: dict[str, np.ndarray]) -> None:
    assert list(ours) == list(whole)
    for name, column in whole.items():
        assert ours[name].dtype == column.dtype
        assert ours[name].tobytes() == column.tobytes(), name


@settings(max_examples=120, deadline=None)
@given(case=volumes(), objects=st.integers(1, 40), is_sum=st.booleans(), blocky=st.booleans())
def test_objects_have_the_features_of_the_whole_array(
    case: dict[str, Any], objects: int, is_sum: bool, blocky: bool
) -> None:
    rng = np.random.default_rng(case["seed"])
    image = rng.integers(0, 10, case["shape"], np.uint8)
    labels = rng.integers(0, objects + 1, image.shape)
    if blocky:
        for axis in range(image.ndim):
            labels = np.repeat(labels, 4, axis).take(range(image.shape[axis]), axis)
    labels = labels.astype(np.uint32) * np.uint32(100_000_007)
    mask = rng.random(image.shape) < 0.8 if case["mask"] else None
    offset = [d for d in case["offset"] if any(d)] or [(1,) * image.ndim]
    given = dict(case["gray"], offset=offset, symmetric=case["symmetric"], names=NAMES)
    given.update(mask=mask, aggregate="sum" if is_sum else "mean")
    whole = texture.object_features(image, labels, **given)
    ours = chunked.object_features(da.from_array(image, case["chunks"]), labels, **given)
    same_columns(ours, whole)


def test_objects_of_a_segmentation_cut_by_chunks(tmp_path: Path, rng: np.random.Generator) -> None:
    noise = rng.normal(size=(60, 70, 80))
    for axis in range(3):
        for _ in range(4):
            noise = noise + np.roll(noise, 1, axis)
    image = (noise - noise.min()).astype(np.float32)
    labels = label(noise > noise.std()).astype(np.int32)
    np.save(tmp_path / "image.npy", image)
    np.save(tmp_path / "labels.npy", labels)
    whole = texture.object_features(image, labels, bin_count=300)
    ours = chunked.object_features(
        tmp_path / "image.npy", tmp_path / "labels.npy", bin_count=300, chunks=(13, 80, 17)
    )
    same_columns(ours, whole)
    regions = regionprops_table(labels, properties=("label", "area"))
    assert (ours["voxels"] == regions["area"]).all() and len(ours["label"]) > 20


def test_objects_of_chunks_larger_than_memory_are_counted_in_parts(
    monkeypatch: pytest.MonkeyPatch, rng: np.random.Generator
) -> None:
    image = rng.integers(1, 9, (20, 21, 22), np.uint8)
    labels = np.ones(image.shape, np.uint8)
    labels[3:5, 2:9, 4:8] = 2
    for module in (chunked._objects, chunked._cooccurrence):
        monkeypatch.setattr(module, "MOST_VOXELS", 500)
    ours = chunked.object_features(image, labels, chunks=-1, levels=8)
    same_columns(ours, texture.object_features(image, labels, levels=8))


def test_boxes_and_sizes_of_labels_are_those_of_regionprops(rng: np.random.Generator) -> None:
    labels = rng.integers(0, 30, (9, 10, 11)) * (rng.random((9, 10, 11)) < 0.1)
    objects = chunked._objects
    box = chunked._volume.Box((2, 3, 4), (11, 13, 15))
    found = objects._boxes(labels, box)
    regions = regionprops_table(labels, properties=("label", "bbox", "area"))
    assert (found.labels == regions["label"]).all() and (found.voxels == regions["area"]).all()
    for axis in range(3):
        assert (found.low[:, axis] == regions[f"bbox-{axis}"] + box.low[axis]).all()
        assert (found.high[:, axis] == regions[f"bbox-{axis + 3}"] + box.low[axis]).all()


@pytest.mark.parametrize(
    "labels, words",
    [
        (np.full((8, 9), -3), "label"),
        (np.ones((8, 9)), "label"),
        (np.ones((9, 8), int), "the same shape"),
    ],
)
def test_labels_that_are_none_are_refused(labels: np.ndarray, words: str) -> None:
    with pytest.raises(BadParameter, match=words):
        chunked.object_features(np.ones((8, 9), np.uint8), labels, chunks=4)


def test_no_objects_are_columns_without_rows() -> None:
    image = np.ones((8, 9), np.uint8)
    whole = texture.object_features(image, image * 0, names=NAMES)
    same_columns(chunked.object_features(image, image * 0, names=NAMES, chunks=4), whole)
