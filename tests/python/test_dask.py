"""Volumes in chunks against the whole array, with any chunks, offsets and kinds of volume."""

from __future__ import annotations

import pickle
from pathlib import Path
from typing import Any, Iterator

import numpy as np
import pytest
from hypothesis import given, settings
from hypothesis import strategies as st

dask = pytest.importorskip("dask")
zarr = pytest.importorskip("zarr")
import dask.array as da  # noqa: E402

from seluutils import BadParameter, random, texture  # noqa: E402
from seluutils import dask as chunked  # noqa: E402

GRAY: list[dict[str, Any]] = [
    {},
    {"levels": 256},
    {"levels": 300},
    {"bin_width": 7.5},
    {"bin_width": 9, "anchor": "multiple"},
    {"bin_width": 20, "anchor": -3.0},
    {"bin_count": 12},
    {"bin_count": 300},
    {"levels": 9, "range": (30, 200)},
]


@pytest.fixture(autouse=True)
def synchronous() -> Iterator[None]:
    with dask.config.set(scheduler="synchronous"):
        yield


@st.composite
def volumes(draw: Any) -> dict[str, Any]:
    """Shape, chunks of volume and mask, offsets that lead up to far beyond the volume."""
    ndim = draw(st.integers(2, 3))
    shape = tuple(draw(st.integers(0 if draw(st.booleans()) else 1, 12)) for _ in range(ndim))
    step = st.integers(-14, 14) if draw(st.booleans()) else st.integers(-1, 1)
    return {
        "shape": shape,
        "chunks": tuple(draw(st.integers(1, 13)) for _ in shape),
        "mask": tuple(draw(st.integers(1, 13)) for _ in shape) if draw(st.booleans()) else None,
        "offset": draw(st.lists(st.tuples(*[step] * ndim), min_size=1, max_size=4)),
        "gray": draw(st.sampled_from(GRAY)),
        "symmetric": draw(st.booleans()),
        "seed": draw(st.integers(0, 2**32 - 1)),
    }


@settings(max_examples=150, deadline=None)
@given(case=volumes(), is_dask=st.booleans())
def test_counts_are_those_of_the_whole_array(case: dict[str, Any], is_dask: bool) -> None:
    rng = np.random.default_rng(case["seed"])
    image = rng.integers(0, 256, case["shape"], np.uint8)
    mask = None if case["mask"] is None else rng.random(image.shape) < 0.7
    given = dict(symmetric=case["symmetric"], **case["gray"])
    whole = texture.cooccurrence(image, case["offset"], mask=mask, **given)
    volume = da.from_array(image, case["chunks"]) if is_dask else image
    masks = None if mask is None else da.from_array(mask, case["mask"])
    chunks = None if is_dask else case["chunks"]
    counts = chunked.cooccurrence(volume, case["offset"], mask=masks, chunks=chunks, **given)
    assert counts.dtype == np.uint64
    assert np.array_equal(counts.compute(), whole)


@pytest.mark.parametrize("dtype", ["i1", "u2", "i2", "u4", "i4"])
def test_integers_of_all_kinds_are_counted(dtype: str, rng: np.random.Generator) -> None:
    image = rng.integers(0, 99, (9, 10, 11)).astype(dtype)
    whole = texture.cooccurrence(image, (0, -1, 2))
    assert np.array_equal(chunked.cooccurrence(image, (0, -1, 2), chunks=4).compute(), whole)


def test_real_numbers_get_the_levels_of_the_whole_volume(rng: np.random.Generator) -> None:
    image = rng.normal(size=(20, 30)).astype(np.float32)
    image[3, 4:9] = np.nan
    image[5, 5] = np.inf
    for gray in ({"bin_count": 8}, {"bin_width": 0.3}, {"bin_width": 0.3, "anchor": 0.0}):
        whole = texture.cooccurrence(image, **gray)
        assert np.array_equal(chunked.cooccurrence(image, chunks=7, **gray).compute(), whole)


def test_volumes_without_a_value_and_without_a_voxel() -> None:
    nothing = np.full((6, 7), np.nan)
    assert not chunked.cooccurrence(nothing, (0, 1), bin_count=4, chunks=3).compute().any()
    empty = np.zeros((0, 7), np.uint8)
    assert chunked.cooccurrence(empty, (0, 1)).compute().shape == (1, 256, 256)


def kinds(image: np.ndarray, folder: Path) -> dict[str, Any]:
    """The same voxels in every kind of volume."""
    np.save(folder / "v.npy", image)
    stored = zarr.open(str(folder / "v.zarr"), "w", shape=image.shape, dtype="u1", chunks=(4, 7, 5))
    stored[:] = image
    raw = np.memmap(folder / "raw", np.uint8, "w+", offset=17, shape=(30,) + image.shape[1:])
    raw[2 : 2 + 2 * len(image) : 2] = image[:, ::-1, ::-1]
    raw.flush()
    return {
        "array": image,
        "file": folder / "v.npy",
        "name": str(folder / "v.npy"),
        "mapped": np.load(folder / "v.npy", mmap_mode="r"),
        "view": raw[2 : 2 + 2 * len(image) : 2, ::-1, ::-1],
        "zarr": stored,
        "folder": folder / "v.zarr",
        "dask": da.from_array(image, (3, 5, 20)),
        "lazy": da.from_zarr(stored) + np.uint8(0),
    }


def test_every_kind_of_volume_gives_the_same(tmp_path: Path, rng: np.random.Generator) -> None:
    image = rng.integers(0, 8, (11, 12, 13), np.uint8)
    mask = (image > 2).astype(np.uint8)
    offsets = [(0, 0, 1), (-4, 3, 0), (0, -11, 12)]
    whole = texture.cooccurrence(image, offsets, mask=mask, levels=8)
    for name, volume in kinds(image, tmp_path).items():
        counts = chunked.cooccurrence(volume, offsets, mask=mask, levels=8)
        assert np.array_equal(counts.compute(), whole), name
        counts = chunked.cooccurrence(volume, offsets, mask=mask, levels=8, chunks=(5, 4, 13))
        assert np.array_equal(counts.compute(), whole), name


def test_files_travel_as_paths(tmp_path: Path, rng: np.random.Generator) -> None:
    np.save(tmp_path / "v.npy", rng.integers(0, 8, (64, 64, 64), np.uint8))
    mapped = np.load(tmp_path / "v.npy", mmap_mode="r")[1:]
    for volume in (mapped, str(tmp_path / "v.npy")):
        counts = chunked.cooccurrence(volume, chunks=32)
        assert len(pickle.dumps(dict(counts.dask))) < 20_000


def test_chunks_larger_than_memory_are_read_in_parts(
    monkeypatch: pytest.MonkeyPatch, tmp_path: Path, rng: np.random.Generator
) -> None:
    image = rng.integers(0, 256, (20, 21, 22), np.uint8)
    np.save(tmp_path / "v.npy", image)
    read: list[int] = []
    plain = chunked._volume.MappedFile.read

    def counted(self: Any, box: Any) -> Any:
        read.append(box.voxels)
        return plain(self, box)

    monkeypatch.setattr(chunked._volume.MappedFile, "read", counted)
    monkeypatch.setattr(chunked._cooccurrence, "MOST_VOXELS", 500)
    for offset in ((1, 0, 0), (3, -9, 0)):
        read.clear()
        counts = chunked.cooccurrence(tmp_path / "v.npy", offset, chunks=-1).compute()
        assert np.array_equal(counts, texture.cooccurrence(image, offset))
        assert max(read) <= 1000


def test_a_lazy_array_knows_its_shape_when_the_arguments_say_it() -> None:
    image = np.zeros((8, 9), np.uint16)
    assert chunked.cooccurrence(image, levels=7).shape == (4, 7, 7)
    assert chunked.cooccurrence(image.astype(np.uint8), (0, 1)).shape == (1, 256, 256)
    assert np.isnan(chunked.cooccurrence(image, (0, 1)).shape[1])
    assert texture.matrix_features(chunked.cooccurrence(image, (0, 1)))["contrast"].tolist() == [0]


@pytest.mark.parametrize(
    "given, words",
    [
        (dict(levels=3, bin_count=4), "one of levels"),
        (dict(offset=(1, 2, 3)), "offset"),
        (dict(offset=(0, 1), distances=2), "not both"),
        (dict(mask=np.ones((9, 8), bool)), "the same shape"),
        (dict(mask=np.ones((8, 9))), "mask must be bool"),
        (dict(levels=20_000), "20000"),
    ],
)
def test_wrong_arguments_are_refused_at_once(given: dict[str, Any], words: str) -> None:
    with pytest.raises(BadParameter, match=words):
        chunked.cooccurrence(np.zeros((8, 9), np.uint8), **given)


@pytest.mark.parametrize(
    "volume, words",
    [
        (np.zeros((8, 9)), "floating-point"),
        (np.zeros((8, 9), ">u2"), "volume|image"),
        (np.zeros((8, 9), complex), "complex"),
        (np.zeros((2, 2, 2, 2), np.uint8), "axes|shape|dimension"),
        ("nowhere.tif", "nowhere.tif"),
        ([[1, 2]], "list"),
    ],
)
def test_what_is_no_volume_is_refused_at_once(volume: Any, words: str) -> None:
    with pytest.raises(BadParameter, match=words):
        chunked.cooccurrence(volume)


@pytest.mark.parametrize("offset", [(0, 1), (5, 0), (40, 0)])
def test_a_value_that_is_no_level_is_an_error_wherever_it_lies(offset: tuple[int, int]) -> None:
    image = np.ones((20, 20), np.int16)
    for value, levels in ((-1, None), (7, 7), (2000, None)):
        for where in ((0, 0), (19, 19), (10, 3)):
            bad = image.copy()
            bad[where] = value
            with pytest.raises(BadParameter, match=str(value)):
                chunked.cooccurrence(bad, offset, levels=levels, chunks=6).compute()


@settings(max_examples=40, deadline=None)
@given(case=st.data())
def test_draws_do_not_depend_on_the_chunks(case: st.DataObject) -> None:
    ndim = case.draw(st.integers(1, 3))
    shape = tuple(case.draw(st.integers(0, [100_000, 300, 70][ndim - 1])) for _ in range(ndim))
    chunks = tuple(case.draw(st.integers(max(1, n // 3), n + 1)) for n in shape)
    law = case.draw(st.sampled_from([random.Exponential(2), random.Watson(3), random.Sphere()]))
    numbers = chunked.draws(law, shape, seed=11, first_stream=4, chunks=chunks)
    expected = random.draws(law, shape, seed=11, first_stream=4)
    assert numbers.shape == expected.shape and numbers.dtype == expected.dtype
    assert np.array_equal(numbers.compute(), expected)
    again = chunked.draws(law, shape, seed=11, first_stream=4)
    assert np.array_equal(again.compute(scheduler="threads"), expected)


def test_draws_are_checked_at_once() -> None:
    with pytest.raises(BadParameter, match="euler"):
        chunked.draws(random.Normal(), 10, seed=1, method="euler")
    with pytest.raises(BadParameter, match="-3"):
        chunked.draws(random.Normal(), -3, seed=1)
