"""Matrices and features: against NumPy, published values and each other."""

from __future__ import annotations

import csv
import math
import os
import pickle
import subprocess
from pathlib import Path

import numpy as np
import pytest
from hypothesis import given, settings, strategies as st

from conftest import counts_of
from seluutils import BadParameter, SeluError, texture

PHANTOM = np.array(
    [
        [[1, 4, 4, 1, 1], [1, 4, 6, 1, 1], [4, 1, 6, 4, 1], [4, 4, 6, 4, 1]],
        [[1, 4, 4, 1, 1], [1, 1, 6, 1, 1], [1, 1, 3, 1, 1], [4, 4, 6, 1, 1]],
        [[1, 4, 4, 1, 1], [1, 1, 1, 1, 1], [1, 1, 9, 1, 1], [1, 1, 6, 1, 1]],
        [[1, 4, 4, 1, 1], [1, 1, 1, 1, 1], [1, 1, 1, 1, 1], [1, 1, 6, 1, 1]],
    ],
    np.uint8,
)
PHANTOM_MASK = np.ones(PHANTOM.shape, bool)
for outside in ((1, 2, 0), (2, 0, 3), (2, 0, 4), (2, 2, 2), (3, 0, 3), (3, 0, 4)):
    PHANTOM_MASK[outside] = False

OFFSETS = st.sampled_from([2, 3]).flatmap(
    lambda ndim: st.tuples(*[st.integers(-4, 4)] * ndim).map(np.array)
)
GRAY_DTYPES = ["u1", "u2", "u4", "i1", "i2", "i4", "f4", "f8"]


def layouts(array: np.ndarray) -> dict[str, np.ndarray]:
    """The same values in memory of other orders."""
    wide = np.zeros(tuple(2 * n + 1 for n in array.shape), array.dtype)
    inner = wide[tuple(slice(1, None, 2) for _ in array.shape)]
    inner[...] = array
    raw = np.zeros(array.nbytes + 1, np.uint8)
    unaligned = raw[1:].view(array.dtype).reshape(array.shape)
    unaligned[...] = array
    return {
        "rows": np.ascontiguousarray(array),
        "columns": np.asfortranarray(array),
        "every second": inner,
        "backwards": array[::-1, ..., ::-1].copy()[::-1, ..., ::-1],
        "turned": array.T.copy().T,
        "unaligned": unaligned,
    }


@given(st.data())
@settings(max_examples=200, deadline=None)
def test_counts_are_those_of_bincount_for_any_shape_and_layout(data: st.DataObject) -> None:
    offset = data.draw(OFFSETS)
    shape = data.draw(st.tuples(*[st.integers(0, 6)] * len(offset)))
    seed = data.draw(st.integers(0, 2**32 - 1))
    image = np.random.default_rng(seed).integers(0, 256, shape, np.uint8)
    expected = counts_of(image, offset, 256)
    for name, same in layouts(image).items():
        assert (texture.cooccurrence(same, offset)[0] == expected).all(), name


@given(st.data())
@settings(max_examples=100, deadline=None)
def test_small_values_of_any_integer_type_count_as_they_are(data: st.DataObject) -> None:
    offset = data.draw(OFFSETS)
    shape = data.draw(st.tuples(*[st.integers(0, 6)] * len(offset)))
    dtype = data.draw(st.sampled_from(["u1", "u2", "u4", "i1", "i2", "i4"]))
    seed = data.draw(st.integers(0, 2**32 - 1))
    image = np.random.default_rng(seed).integers(0, 7, shape).astype(dtype)
    for name, same in layouts(image).items():
        counts = texture.cooccurrence(same, offset, levels=7)
        assert (counts[0] == counts_of(image, offset, 7)).all(), name


def test_many_offsets_give_a_matrix_each(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (9, 10, 11), np.uint8)
    counts = texture.cooccurrence(image)
    assert counts.shape == (13, 256, 256) and counts.dtype == np.uint64
    for matrix, offset in zip(counts, texture.offsets(3)):
        assert (matrix == counts_of(image, offset, 256)).all()
    far = texture.cooccurrence(image, distances=[1, 2])
    assert (far[:13] == counts).all()
    assert (far[13:] == texture.cooccurrence(image, 2 * texture.offsets(3))).all()


def test_symmetric_counts_each_pair_in_both_orders(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (20, 20), np.uint8)
    counts = texture.cooccurrence(image, (1, -2))[0]
    assert (texture.cooccurrence(image, (1, -2), symmetric=True)[0] == counts + counts.T).all()


def test_a_mask_leaves_out_pairs_with_a_voxel_outside(rng: np.random.Generator) -> None:
    image = rng.integers(0, 8, (6, 7, 8), np.uint8)
    mask = rng.random(image.shape) < 0.7
    marked = np.where(mask, image, 8)
    for dtype in ("bool", "u1", "i4"):
        for offset in texture.offsets(3):
            counts = texture.cooccurrence(image, offset, levels=8, mask=mask.astype(dtype))
            assert (counts[0] == counts_of(marked, offset, 9)[:8, :8]).all()


def test_bins_count_like_the_levels_that_quantize_gives(rng: np.random.Generator) -> None:
    image = rng.normal(size=(12, 13))
    levels = texture.quantize(image, bin_count=5)
    counts = texture.cooccurrence(image, (0, 1), bin_count=5)
    assert counts.shape == (1, 5, 5)
    assert (counts == texture.cooccurrence(levels, (0, 1), levels=6)[:, 1:, 1:]).all()


def test_a_volume_that_is_counted_in_several_boxes(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (300, 400, 401), np.uint8)  # 48 million voxels
    for offset in ((1, -2, 3), (-250, 0, 390)):
        assert (texture.cooccurrence(image, offset)[0] == counts_of(image, offset, 256)).all()
        values = texture.features(image, offset)
        counts = counts_of(image, offset, 256)
        p = counts[counts > 0] / counts.sum()
        assert values["Entropy"] == pytest.approx(-(p * np.log(p)).sum(), rel=1e-12)


def test_out_takes_the_counts(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (5, 5), np.uint8)
    out = np.zeros((2, 4, 256, 256), np.uint64)[1]
    assert texture.cooccurrence(image, out=out) is out
    assert (out == texture.cooccurrence(image)).all()
    for wrong in (out[:3], out.astype(np.int64), [1]):
        with pytest.raises(BadParameter, match="out must be an array"):
            texture.cooccurrence(image, out=wrong)


def test_a_volume_that_is_quantized_in_several_boxes(rng: np.random.Generator) -> None:
    image = rng.integers(0, 60000, (300, 400, 301), np.uint16)[::-1]  # 36 million voxels
    mask = np.broadcast_to(rng.random(301) < 0.5, image.shape)
    image[0, 0, :2] = 7, 59999
    expected = np.where(mask, image // 300 + 1, 0)
    assert (texture.quantize(image, bin_width=300, anchor="multiple", mask=mask) == expected).all()
    with pytest.raises(BadParameter, match="value 59999"):
        texture.cooccurrence(image, levels=10000)


QUANTIZED = [  # arguments, levels of 0, 2, 5, 9.99, 10 and 30
    ({"bin_count": 3}, [1, 1, 1, 1, 2, 3]),
    ({"bin_width": 10}, [1, 1, 1, 1, 2, 4]),
    ({"bin_width": 10, "anchor": "least"}, [1, 1, 1, 1, 2, 4]),
    ({"bin_width": 4, "anchor": -2.0}, [1, 2, 2, 3, 4, 9]),
    ({"levels": 2, "range": (0, 10)}, [1, 1, 2, 2, 2, 2]),
    ({"bin_count": 2, "range": (0, 10)}, [1, 1, 2, 2, 2, 2]),
]


@pytest.mark.parametrize("arguments, expected", QUANTIZED, ids=lambda case: str(case))
def test_quantize(arguments: dict, expected: list[int]) -> None:
    image = np.array([[0, 2, 5, 9.99, 10, 30]])
    assert texture.quantize(image, **arguments).tolist() == [expected]


def test_bins_at_a_multiple_of_their_width() -> None:
    image = np.array([[-7, 12, 25]], np.int16)
    levels, edges = texture.quantize(image, bin_width=10, anchor="multiple", return_edges=True)
    assert levels.tolist() == [[1, 3, 4]]
    assert edges.tolist() == [-10, 0, 10, 20, 30]


def test_quantize_puts_what_is_off_the_mask_and_nan_outside() -> None:
    image = np.array([[0, np.nan, 1, 5]], np.float32)
    mask = np.array([[True, True, True, False]])
    assert texture.quantize(image, bin_count=2, mask=mask).tolist() == [[1, 0, 2, 0]]


def test_quantized_levels_outlive_all_else() -> None:
    levels = texture.quantize(np.full((500, 500), 3.0), bin_count=4)
    assert (levels == 1).all() and levels.sum() == 250000
    image = np.full((500, 500), 3, np.uint8)
    levels = texture.quantize(image)
    assert not np.shares_memory(levels, image)
    del image
    assert (levels == 3).all()


@pytest.mark.parametrize("dtype", GRAY_DTYPES)
def test_every_gray_type_is_quantized_alike(dtype: str, rng: np.random.Generator) -> None:
    image = rng.integers(0, 100, (6, 7)).astype(dtype)
    expected = image.astype(np.int64) // 7 + 1
    assert (texture.quantize(image, bin_width=7, anchor=0.0) == expected).all()


def table(name: str) -> list[dict[str, str]]:
    """The published values that the tests of the library have."""
    path = Path(os.environ["SELU_SOURCE_DIR"]) / "tests" / "texture" / "data" / name
    return list(csv.DictReader(path.read_text(encoding="utf-8").splitlines()))


@pytest.mark.parametrize("way", texture.AGGREGATES)
def test_the_published_features_of_the_phantom(way: str) -> None:
    """To half a unit of the third digit, which is the last that the manual prints."""
    rows = [row for row in table("ibsi_phantom_features.csv") if row["aggregation"] == way]
    values = texture.features(PHANTOM, definition="ibsi", aggregate=way, mask=PHANTOM_MASK)
    assert {row["feature"] for row in rows} == set(values) == set(texture.IBSI_FEATURES)
    for row in rows:
        value, published = values[row["feature"]], float(row["published"])
        unit = 10 ** (math.floor(math.log10(abs(published))) - 2)
        assert abs(value - published) <= 0.5 * unit * (1 + 1e-9), row
        assert value == pytest.approx(float(row["computed"]), rel=1e-12, abs=1e-12), row


def test_mean_and_sum_are_the_ways_in_space() -> None:
    given = dict(definition="ibsi", mask=PHANTOM_MASK)
    for aggregate, way in (("mean", "3D_avg"), ("sum", "3D_comb")):
        ours = texture.features(PHANTOM, aggregate=aggregate, **given)
        assert ours == texture.features(PHANTOM, aggregate=way, **given)


@pytest.mark.parametrize("definition", ["ibsi", "haralick"])
@pytest.mark.parametrize("symmetric", [False, True])
def test_features_are_those_of_the_counts(
    definition: str, symmetric: bool, rng: np.random.Generator
) -> None:
    image = rng.integers(0, 50, (20, 21), np.int16)
    given = dict(definition=definition, symmetric=symmetric)
    values = texture.features(image, bin_count=9, **given)
    counts = texture.cooccurrence(image, bin_count=9)
    for matrices in (counts, counts.astype(np.int32), counts.astype(np.float32)):
        again = texture.matrix_features(matrices, **given)
        assert {name: value.tolist() for name, value in values.items()} == {
            name: value.tolist() for name, value in again.items()
        }
    one = texture.matrix_features(counts[1], **given)
    assert one == {name: value[1] for name, value in values.items()}


def test_a_matrix_feature_from_its_formula(rng: np.random.Generator) -> None:
    counts = rng.integers(0, 5, (12, 12))
    p = (counts + counts.T) / (2 * counts.sum())
    i, j = np.mgrid[1:13, 1:13]
    values = texture.matrix_features(counts)
    assert values["contrast"] == pytest.approx(((i - j) ** 2 * p).sum(), rel=1e-12)
    assert values["joint_avg"] == pytest.approx((i * p).sum(), rel=1e-12)
    entropy = -(p[p > 0] * np.log2(p[p > 0])).sum()
    assert values["joint_entr"] == pytest.approx(entropy, rel=1e-12)


def test_nothing_to_count_is_nan() -> None:
    values = texture.features(np.zeros((4, 4), np.uint8), definition="ibsi", aggregate="mean")
    assert all(math.isnan(value) for value in values.values())
    values = texture.features(np.ones((0, 4), np.uint8), (0, 1), definition="ibsi")
    assert all(math.isnan(value) for value in values.values())


def test_the_library_says_where_an_offset_leaves_no_pair() -> None:
    with pytest.raises(SeluError) as caught:
        texture.features(np.zeros((4, 4), np.uint8), (0, 4))
    assert not isinstance(caught.value, BadParameter)
    assert caught.value.location.source == "src/Utils/Cooccurrence"


def test_errors_have_message_and_location_and_can_be_pickled() -> None:
    with pytest.raises(BadParameter) as caught:
        texture.offsets(2, 0)
    error = caught.value
    assert isinstance(error, ValueError) and isinstance(error, SeluError)
    assert error.location.line > 0 and "NeighborDisplacements" in error.location.function
    again = pickle.loads(pickle.dumps(error))
    assert (str(again), again.location) == (str(error), error.location)


SQUARE = np.zeros((4, 4), np.uint8)
REFUSED = [  # call, the error, a part of the message
    (lambda: texture.cooccurrence(SQUARE.astype(">u2")), BadParameter, ">u2"),
    (lambda: texture.cooccurrence(SQUARE.astype(complex)), BadParameter, "complex128"),
    (lambda: texture.cooccurrence(SQUARE.astype(object)), BadParameter, "object"),
    (lambda: texture.cooccurrence(SQUARE.astype("f2")), BadParameter, "float16"),
    (lambda: texture.cooccurrence(SQUARE.astype(np.int64)), BadParameter, "astype"),
    (lambda: texture.cooccurrence(SQUARE.astype(bool)), BadParameter, "boolean"),
    (lambda: texture.cooccurrence(SQUARE.astype("M8[s]")), BadParameter, "datetime64"),
    (lambda: texture.cooccurrence(np.ma.masked_equal(SQUARE, 0)), BadParameter, "masked array"),
    (lambda: texture.cooccurrence([[1, 2]]), TypeError, "NumPy array"),
    (lambda: texture.cooccurrence(SQUARE[0]), BadParameter, "1 axes"),
    (lambda: texture.cooccurrence(np.zeros((1, 1, 1, 1), "u1")), BadParameter, "4 axes"),
    (lambda: texture.cooccurrence(SQUARE.astype("f4")), BadParameter, "bin_width"),
    (lambda: texture.cooccurrence(SQUARE, (0, 0, 1)), BadParameter, "2 integers"),
    (lambda: texture.cooccurrence(SQUARE, (0, 1.5)), TypeError, "integers"),
    (lambda: texture.cooccurrence(SQUARE, np.array([0, 2**63], "u8")), BadParameter, "offset"),
    (lambda: texture.cooccurrence(SQUARE, (0, 1), distances=1), BadParameter, "not both"),
    (lambda: texture.cooccurrence(SQUARE, distances=0), BadParameter, "0"),
    (lambda: texture.cooccurrence(SQUARE + 9, levels=9), BadParameter, "value 9"),
    (lambda: texture.cooccurrence(SQUARE.astype("i2") - 3), BadParameter, "value -3"),
    (lambda: texture.cooccurrence(SQUARE.astype("u2") + 5000), BadParameter, "value 5000"),
    (lambda: texture.cooccurrence(SQUARE, levels=0), BadParameter, "levels"),
    (lambda: texture.cooccurrence(SQUARE, levels=20000), BadParameter, "20000"),
    (lambda: texture.cooccurrence(SQUARE, mask=SQUARE[:2]), BadParameter, "same shape"),
    (lambda: texture.cooccurrence(SQUARE, mask=SQUARE * 1.0), BadParameter, "mask"),
    (lambda: texture.cooccurrence(SQUARE, mask=[[1]]), TypeError, "mask"),
    (lambda: texture.cooccurrence(SQUARE, progress=3), TypeError, "progress"),
    (lambda: texture.quantize(SQUARE, bin_width=-1.0), BadParameter, "-1"),
    (lambda: texture.quantize(SQUARE, bin_width=1, bin_count=2), BadParameter, "one of"),
    (lambda: texture.quantize(SQUARE, anchor=0.0), BadParameter, "anchor"),
    (lambda: texture.quantize(SQUARE, bin_width=1, anchor="x"), BadParameter, '"x"'),
    (lambda: texture.quantize(SQUARE, range=(0, 1)), BadParameter, "range"),
    (lambda: texture.quantize(SQUARE, levels=2, range=(1, 1)), BadParameter, "1"),
    (lambda: texture.quantize(SQUARE * 1.0), BadParameter, "floating-point"),
    (lambda: texture.features(SQUARE, levels=4), BadParameter, "selu"),
    (lambda: texture.features(SQUARE, definition="x"), BadParameter, '"x"'),
    (lambda: texture.features(SQUARE, names=["x"]), BadParameter, '"x"'),
    (lambda: texture.features(SQUARE, definition="ibsi", names=["x"]), BadParameter, '"x"'),
    (lambda: texture.features(SQUARE, definition="ibsi", aggregate="x"), BadParameter, '"x"'),
    (lambda: texture.features(SQUARE, aggregate="sum"), BadParameter, '"sum"'),
    (lambda: texture.matrix_features(np.zeros((2, 3))), BadParameter, r"\(2, 3\)"),
    (lambda: texture.matrix_features(np.zeros(())), BadParameter, "shape"),
    (lambda: texture.matrix_features(np.full((2, 2), -1)), BadParameter, "-1"),
    (lambda: texture.matrix_features(np.full((2, 2), -1.0)), BadParameter, "-1"),
    (lambda: texture.matrix_features(np.full((2, 2), np.nan)), BadParameter, "nan"),
    (lambda: texture.matrix_features(np.zeros((2, 2), complex)), BadParameter, "complex"),
]


@pytest.mark.parametrize("case", range(len(REFUSED)))
def test_what_is_refused(case: int) -> None:
    call, error, message = REFUSED[case]
    with pytest.raises(error, match=message):
        call()


def test_progress_goes_from_little_to_all(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (300, 400, 401), np.uint8)
    told: list[tuple[int, int]] = []
    texture.cooccurrence(image, texture.offsets(3), progress=lambda *step: told.append(step))
    assert len(told) > 1 and told == sorted(told) and told[-1] == (13 * image.size,) * 2
    texture.cooccurrence(image[:2], progress=True)


def test_an_error_of_the_callable_ends_the_count(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (300, 400, 401), np.uint8)

    def stop(done: int, total: int) -> None:
        raise KeyError(done)

    out = np.zeros((13, 256, 256), np.uint64)
    with pytest.raises(KeyError):
        texture.cooccurrence(image, out=out, progress=stop)
    assert not out.any()


def selu_csv(image: Path, *arguments: str) -> list[dict[str, str]]:
    """What `selu texture` prints, the numbers as text."""
    binary = os.environ.get("SELU_BINARY")
    if not binary:
        pytest.skip("the application selu is not built")
    command = [binary, "texture", str(image), "--format", "csv", *arguments]
    text = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    return list(csv.DictReader(text.splitlines()))


def write_nrrd(path: Path, image: np.ndarray) -> Path:
    names = {"u1": "uint8", "u2": "uint16", "i2": "int16", "f8": "double"}
    sizes = " ".join(str(n) for n in reversed(image.shape))
    header = (
        f"NRRD0004\ntype: {names[image.dtype.str[1:]]}\ndimension: {image.ndim}\n"
        f"sizes: {sizes}\nendian: little\nencoding: raw\n\n"
    )
    path.write_bytes(header.encode() + image.tobytes())
    return path


BOTH = [  # of `selu texture`, of features()
    ([], {}),
    (["--features", "ibsi", "--bin-count", "16", "--symmetric"], {"definition": "ibsi", "bin_count": 16}),
    (
        ["--features", "haralick", "--bin-width", "9"],
        {"definition": "haralick", "bin_width": 9, "symmetric": False},
    ),
    (
        ["--features", "ibsi", "--levels", "8", "--range", "10,200"],
        {"definition": "ibsi", "levels": 8, "range": (10, 200), "symmetric": False},
    ),
]


@pytest.mark.parametrize("case", range(len(BOTH)))
@pytest.mark.parametrize("shape", [(40, 50), (12, 13, 14)])
@pytest.mark.parametrize("dtype", ["u1", "u2"])
def test_the_features_of_the_application_bit_for_bit(
    case: int, shape: tuple[int, ...], dtype: str, tmp_path: Path, rng: np.random.Generator
) -> None:
    options, arguments = BOTH[case]
    image = rng.integers(0, 256 if dtype == "u1" else 65536, shape).astype(dtype)
    image = image if case == 0 else image % 256
    rows = selu_csv(write_nrrd(tmp_path / "image.nrrd", image), *options)
    values = texture.features(image, **arguments)
    offsets = texture.offsets(len(shape)).tolist()
    assert len(rows) == len(offsets)
    for k, row in enumerate(rows):
        components = [int(n) for name in ("dz", "dy", "dx") if (n := row.get(name)) is not None]
        assert components[-len(shape) :] == offsets[k]
        for name, column in values.items():
            assert float(row[name]) == column[k], (name, offsets[k])


@pytest.mark.parametrize("way", texture.AGGREGATES)
def test_the_aggregates_of_the_application_bit_for_bit(
    way: str, tmp_path: Path, rng: np.random.Generator
) -> None:
    image = rng.normal(0, 300, (6, 20, 21)).astype(np.int16)
    path = write_nrrd(tmp_path / "image.nrrd", image)
    (row,) = selu_csv(path, "--bin-width", "100", "--aggregate", way, "--symmetric")
    values = texture.features(image, definition="ibsi", bin_width=100, aggregate=way)
    assert {name: float(row[name]) for name in values} == values
