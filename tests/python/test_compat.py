"""The functions of other packages: against scikit-image itself, formulas and published values."""

from __future__ import annotations

import csv
import os
from pathlib import Path

import numpy as np
import pytest
import skimage.feature

from seluutils import BadParameter, texture
from seluutils.compat import mahotas, pyradiomics, skimage as ours

PROPERTIES = ["contrast", "dissimilarity", "homogeneity", "ASM", "energy", "correlation"]


def random_call(rng: np.random.Generator) -> tuple[np.ndarray, dict]:
    levels = int(rng.integers(1, 17))
    dtype = rng.choice(["u1", "i1", "u2", "i2", "i4", "i8", "u8"])
    image = rng.integers(0, levels, rng.integers(1, 9, 2)).astype(dtype)
    if rng.random() < 0.3:
        image = np.asfortranarray(image)[::-1]
    angles = rng.choice(np.arange(8) * np.pi / 4, rng.integers(1, 4))
    if rng.random() < 0.3:
        angles = rng.uniform(-7, 7, 2)
    return image, dict(
        distances=rng.integers(0, 9, rng.integers(1, 3)) / rng.choice([1, 2]),
        angles=angles,
        levels=levels,
        symmetric=bool(rng.random() < 0.5),
        normed=bool(rng.random() < 0.5),
    )


def test_ten_thousand_calls_of_graycomatrix_and_graycoprops(rng: np.random.Generator) -> None:
    for k in range(10_000):
        image, arguments = random_call(rng)
        matrices = ours.graycomatrix(image, **arguments)
        theirs = skimage.feature.graycomatrix(image, **arguments)
        assert matrices.dtype == theirs.dtype and matrices.flags.c_contiguous
        assert np.array_equal(matrices, theirs), arguments
        if k % 10 == 0:
            for name in PROPERTIES:
                values = ours.graycoprops(matrices, name)
                expected = skimage.feature.graycoprops(theirs, name)
                # A spread of rounding errors alone is none there, and may be one here.
                assert np.allclose(values, expected, rtol=1e-9, atol=1e-9), (name, arguments)


def test_the_properties_of_a_real_size(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (100, 120), np.uint8)
    matrices = ours.graycomatrix(image, [1, 3], [0, 1, 2])
    assert np.array_equal(matrices, skimage.feature.graycomatrix(image, [1, 3], [0, 1, 2]))
    for name in PROPERTIES:
        expected = skimage.feature.graycoprops(matrices, name)
        assert ours.graycoprops(matrices, name) == pytest.approx(expected, rel=1e-12)


SQUARE = np.ones((4, 4), np.uint8)
WRONG = [
    lambda module: module.graycomatrix(SQUARE * 1.0, [1], [0]),
    lambda module: module.graycomatrix(SQUARE.astype(np.uint16), [1], [0]),
    lambda module: module.graycomatrix(SQUARE, [1], [0], levels=1),
    lambda module: module.graycomatrix(SQUARE.astype(np.int8) - 2, [1], [0]),
    lambda module: module.graycomatrix(SQUARE[0], [1], [0]),
    lambda module: module.graycomatrix(SQUARE, 1, [0]),
    lambda module: module.graycomatrix(SQUARE, [1], 0),
    lambda module: module.graycomatrix(SQUARE[:0], [1], [0]),
    lambda module: module.graycoprops(np.ones((2, 3, 1, 1))),
    lambda module: module.graycoprops(np.ones((2, 2))),
    lambda module: module.graycoprops(np.ones((2, 2, 0, 1))),
    lambda module: module.graycoprops(np.ones((2, 2, 1, 1)), "x"),
]


@pytest.mark.parametrize("case", range(len(WRONG)))
def test_what_scikit_image_refuses_is_refused_alike(case: int) -> None:
    for module in (ours, skimage.feature):
        with pytest.raises(ValueError):
            WRONG[case](module)


def dense_haralick(counts: np.ndarray, **options: bool) -> np.ndarray:
    """Thirteen features from their formulas, on the dense matrix, levels from 0."""
    p = counts / counts.sum()
    n = len(p)
    i, j = np.mgrid[:n, :n]
    px, py = p.sum(axis=1), p.sum(axis=0)
    ps = np.array([p[i + j == k].sum() for k in range(2 * n)])
    pd = np.array([p[abs(i - j) == k].sum() for k in range(n)])
    h = lambda q: -(q[q > 0] * np.log2(q[q > 0])).sum()  # noqa: E731
    k, ks = np.arange(n), np.arange(2 * n)
    mx, my = (i * p).sum(), (j * p).sum()
    sx, sy = np.sqrt(((i - mx) ** 2 * p).sum()), np.sqrt(((j - my) ** 2 * p).sum())
    outer = np.outer(px, py)
    hxy1 = -(p[p > 0] * np.log2(outer[p > 0])).sum()
    center = h(ps) if options.get("preserve_haralick_bug") else (ks * ps).sum()
    mean = (k * pd).sum()
    spread = ((k - mean) ** 2 * pd).sum()
    return np.array(
        [
            (p**2).sum(),
            ((i - j) ** 2 * p).sum(),
            ((i - mx) * (j - my) * p).sum() / (sx * sy) if sx * sy > 0 else 1,
            sx**2,
            (p / (1 + (i - j) ** 2)).sum(),
            (ks * ps).sum(),
            ((ks - center) ** 2 * ps).sum(),
            h(ps),
            h(p),
            spread if options.get("use_x_minus_y_variance") else np.var(pd),
            h(pd),
            (h(p) - hxy1) / max(h(px), h(py)) if max(h(px), h(py)) > 0 else h(p) - hxy1,
            np.sqrt(max(0, 1 - np.exp(-2 * (h(outer) - h(p))))),
        ]
    )


@pytest.mark.parametrize("shape", [(20, 30), (7, 8, 9)])
@pytest.mark.parametrize("options", [{}, {"preserve_haralick_bug": True}, {"use_x_minus_y_variance": True}])
def test_haralick_has_the_values_of_its_formulas(
    shape: tuple, options: dict, rng: np.random.Generator
) -> None:
    image = rng.integers(0, 12, shape)
    table = mahotas.haralick(image, **options)
    assert table.shape == (4 if len(shape) == 2 else 13, 13)
    offsets = [(0, 1), (1, 1), (1, 0), (1, -1)] if len(shape) == 2 else mahotas._OFFSETS[3]
    for offset, row in zip(offsets, table):
        counts = texture.cooccurrence(image.astype("u1"), offset, levels=12, symmetric=True)[0]
        used = counts[: image.max() + 1, : image.max() + 1].astype(float)
        assert row == pytest.approx(dense_haralick(used, **options), rel=1e-9, abs=1e-12)


def test_haralick_of_offsets_in_every_direction_once() -> None:
    for ndim in (2, 3):
        both = {tuple(d) for d in mahotas._OFFSETS[ndim]} | {
            tuple(-n for n in d) for d in mahotas._OFFSETS[ndim]
        }
        assert len(both) == 3**ndim - 1


def test_haralick_means_zeros_and_the_fourteenth(rng: np.random.Generator) -> None:
    image = rng.integers(0, 6, (20, 20), np.uint8)
    table = mahotas.haralick(image, compute_14th_feature=True)
    assert table.shape == (4, 14) and (table[:, 13] > 0).all() and (table[:, 13] < 3).all()
    mean = mahotas.haralick(image, return_mean=True)
    assert mean == pytest.approx(table[:, :13].mean(axis=0))
    both = mahotas.haralick(image, return_mean_ptp=True)
    assert both == pytest.approx(np.concatenate([mean, np.ptp(table[:, :13], axis=0)]))
    ignored = mahotas.haralick(image, ignore_zeros=True)[0]
    counts = texture.cooccurrence(image, (0, 1), levels=6, mask=image, symmetric=True)[0]
    assert ignored == pytest.approx(dense_haralick(counts.astype(float)), rel=1e-9)
    far = mahotas.haralick(image, distance=2)[0]
    counts = texture.cooccurrence(image, (0, 2), levels=6, symmetric=True)[0]
    assert far == pytest.approx(dense_haralick(counts.astype(float)), rel=1e-9)
    with pytest.raises(ValueError, match="no pair"):
        mahotas.haralick(np.zeros((3, 3), int), ignore_zeros=True)
    with pytest.raises(TypeError):
        mahotas.haralick(np.zeros((3, 3)))
    with pytest.raises(ValueError, match="axes"):
        mahotas.haralick(np.zeros(3, int))


def fourteenth_by_singular_values(counts: np.ndarray) -> float:
    """The eigenvalues of the rows' correlations as squares of singular values."""
    used = counts[counts.any(axis=1)][:, counts.any(axis=0)].astype(float)
    centered = used - used.mean(axis=1, keepdims=True)
    scaled = centered / np.linalg.norm(centered, axis=1, keepdims=True)
    return float(np.linalg.svd(scaled, compute_uv=False)[1])


@pytest.mark.parametrize("shape", [(20, 30), (8, 9, 10)])
def test_the_fourteenth_of_each_direction(shape: tuple, rng: np.random.Generator) -> None:
    image = rng.binomial(8, 0.4, shape).astype(np.uint8) * 2  # odd levels do not occur
    rows = mahotas.haralick(image, compute_14th_feature=True)
    for offset, row in zip(mahotas._OFFSETS[image.ndim], rows):
        counts = texture.cooccurrence(image, offset, levels=256, symmetric=True)[0]
        assert row[13] == pytest.approx(fourteenth_by_singular_values(counts), rel=1e-9)


def test_the_fourteenth_of_few_levels_and_of_rows_of_one_value() -> None:
    two = mahotas.haralick(np.array([[0, 1, 1], [1, 0, 1]]), compute_14th_feature=True)
    assert (two[:, 13] == 0).all()
    every_pair_once = np.array([[0, 1, 2, 0, 0, 1, 1, 2, 2, 0]])
    flat = mahotas.haralick(np.concatenate([every_pair_once] * 2), compute_14th_feature=True)
    assert np.isnan(flat[0, 13]) and np.isfinite(flat[:, :13]).all()
    alike = mahotas._fourteenth(np.array([[2, 1, 1], [2, 1, 1], [2, 1, 1]]) / 12)
    assert alike == pytest.approx(0, abs=1e-7)


def test_haralick_of_one_level() -> None:
    row = mahotas.haralick(np.full((4, 4), 3))[0]
    assert row.tolist() == [1, 0, 1, 0, 1, 6, 0, 0, 0, pytest.approx(0.1875), 0, 0, 0]


DATA = Path(os.environ["SELU_SOURCE_DIR"]) / "tests" / "texture" / "data"


def region(name: str) -> tuple[np.ndarray, np.ndarray]:
    """The values, and where they belong to the region."""
    first, *lines = (DATA / f"{name}.txt").read_text(encoding="utf-8").splitlines()
    shape = [int(n) for n in first.split()][::-1]
    values, mask = np.zeros(shape, np.int16), np.zeros(shape, np.uint8)
    for line in lines:
        z, y, x, *row = map(int, line.split())
        values[z, y, x : x + len(row)] = row
        mask[z, y, x : x + len(row)] = 1
    return values, mask


RECIPES = {
    "": {},
    "FBN": dict(binCount=64),
    "2d": dict(force2D=True),
}


@pytest.mark.parametrize("name", ["brain1", "brain2", "breast1"])
@pytest.mark.parametrize("recipe", RECIPES)
def test_the_baseline_of_pyradiomics(name: str, recipe: str) -> None:
    text = (DATA / "pyradiomics_features.csv").read_text(encoding="utf-8").splitlines()
    rows = [r for r in csv.DictReader(text) if r["region"] == name and r["recipe"] == recipe]
    values = pyradiomics.glcm_features(*region(name), **RECIPES[recipe])
    by_name = {pyradiomics.FEATURES[theirs]: value for theirs, value in values.items()}
    assert {row["feature"] for row in rows} == set(by_name) and len(rows) == 24
    for row in rows:
        assert by_name[row["feature"]] == pytest.approx(float(row["value"]), rel=1e-10), row


def test_settings_of_pyradiomics() -> None:
    image, mask = region("breast1")
    plain = pyradiomics.glcm_features(image, mask)
    assert pyradiomics.glcm_features(image, mask * 7, label=7) == plain
    far = pyradiomics.glcm_features(image, mask, distances=[2])
    offsets = texture.offsets(3, 2, shell=True)
    assert len(offsets) == 49 and far["Contrast"] == texture.features(
        image, offsets, definition="ibsi", bin_width=25, anchor="multiple", mask=mask,
        aggregate="mean",
    )["contrast"]  # fmt: skip
    summed = pyradiomics.glcm_features(image, mask, weightingNorm="no_weighting")
    assert summed["Contrast"] == pytest.approx(
        texture.features(
            image, definition="ibsi", bin_width=25, anchor="multiple", mask=mask, aggregate="sum"
        )["contrast"]
    )
    flat = pyradiomics.glcm_features(image, mask, weightingNorm="euclidean", spacing=(9, 1, 1))
    level = pyradiomics.glcm_features(image, mask, weightingNorm="euclidean", force2D=True)
    assert flat["Contrast"] == pytest.approx(level["Contrast"], rel=1e-9)
    with pytest.raises(BadParameter, match="label 9"):
        pyradiomics.glcm_features(image, mask, label=9)
    with pytest.raises(BadParameter, match="weightingNorm"):
        pyradiomics.glcm_features(image, mask, weightingNorm="x")
    with pytest.raises(TypeError, match="interpolator"):
        pyradiomics.glcm_features(image, mask, interpolator="x")
