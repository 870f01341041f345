"""Sources and laws: repeatable, and against the distributions of SciPy."""

from __future__ import annotations

import math
import pickle
import threading

import numpy as np
import pytest
import scipy.integrate
import scipy.special
import scipy.stats
from scipy.spatial.transform import Rotation

from seluutils import BadParameter, SeluError, random

SCALAR = [
    random.Uniform(-2, 5),
    random.Normal(3, 0.5),
    random.LogNormal(0.2, 0.7),
    random.Exponential(2.5),
    random.Gamma(2.5, 0.5),
    random.Gamma(0.3, 4),
    random.Poisson(0.4),
    random.Poisson(400),
    random.Rayleigh(1.5),
    random.ChordLength(),
    random.Discrete([0.5, 2, 7], [1, 3, 6]),
]
GIVEN = [type(law)(*law._arguments[:-1], False) for law in SCALAR if law._arguments[-1:] == (True,)]
OTHER = [random.Poisson(900), random.PressedDirections(0.5), random.PressedDirections(2.0, False), random.CircleDiameter()]
ROTATIONS = [
    random.Isotropic(),
    random.Isotropic(False),
    random.Watson(5, (1, 2, 2)),
    random.Watson(-5, (1, 2, 2), False),
    random.VonMisesFisher(5, (0, 1, -1)),
    random.VonMisesFisher(5, (0, 1, -1), False),
    random.Girdle(0.3, (1, 0, 0)),
    random.Girdle(3, (1, 0, 0), False),
    random.Fixed(1, 0.5, -2),
    random.Mixture([random.Isotropic(), random.VonMisesFisher(9)], [1, 2]),
]
POINTS = [
    random.Box((1, 2, 3), (4, 6, 8)),
    random.Ball((1, 2, 3), 2),
    random.Sphere((1, 2, 3), 2),
    random.Disc((1, 2, 3), 2, (1, 1, 0)),
]


def draw(law: object, n: int, source: random.Source | None) -> np.ndarray:
    for method in ("sample", "rotations", "points_xyz"):
        if hasattr(law, method):
            return getattr(law, method)(n, source)
    raise AssertionError(law)


@pytest.mark.parametrize("law", SCALAR + GIVEN + OTHER[:1], ids=repr)
def test_numbers_follow_the_law_of_scipy(law: random.Normal) -> None:
    values = law.sample(20000, random.Source(11))
    theirs = law.to_scipy()
    if isinstance(law, (random.Poisson, random.Discrete)):
        seen, counts = np.unique(values, return_counts=True)
        expected = theirs.pmf(seen) * len(values)
        often = expected >= 5
        statistic = ((counts - expected)[often] ** 2 / expected[often]).sum()
        assert scipy.stats.chi2.sf(statistic, often.sum() - 1) > 1e-4
    else:
        assert scipy.stats.kstest(values, theirs.cdf).pvalue > 1e-4


def test_angles_of_pressed_directions_and_circles() -> None:
    angles = random.PressedDirections(0.5).sample(20000, random.Source(3))
    turned = np.arctan2(np.sin(angles), np.cos(angles) / 0.5)
    assert scipy.stats.kstest(turned, "uniform", (0, math.pi)).pvalue > 1e-4
    circles = random.CircleDiameter().sample(20000, random.Source(3))
    assert scipy.stats.kstest(1 - np.sqrt(1 - circles**2), "uniform").pvalue > 1e-4


def test_cosines_to_the_mean_have_their_densities() -> None:
    mean = np.array([1, 2, 2]) / 3
    densities = [  # a law, the density of the cosine
        (random.Watson(3, mean), lambda t: np.exp(3 * t * t)),
        (random.Watson(-6, mean), lambda t: np.exp(-6 * t * t)),
        (random.VonMisesFisher(4, mean), lambda t: np.exp(4 * t)),
        (random.Girdle(0.4, mean), lambda t: (1 + (0.4**2 - 1) * t * t) ** -1.5),
        (random.Isotropic(), lambda t: np.ones_like(t)),
    ]
    grid = np.linspace(-1, 1, 4001)
    for law, density in densities:
        cumulated = scipy.integrate.cumulative_trapezoid(density(grid), grid, initial=0)
        cosines = law.directions_xyz(20000, random.Source(5)) @ mean
        cdf = lambda t: np.interp(t, grid, cumulated / cumulated[-1])  # noqa: E731
        assert scipy.stats.kstest(cosines, cdf).pvalue > 1e-4, law


@pytest.mark.parametrize("law", ROTATIONS, ids=repr)
def test_rotations_as_matrices_quaternions_and_angles_are_those_of_scipy(
    law: random.Isotropic,
) -> None:
    matrices = law.rotations(50, random.Source(1))
    assert np.allclose(matrices @ matrices.transpose(0, 2, 1), np.eye(3), atol=1e-12)
    assert np.allclose(np.linalg.det(matrices), 1)
    theirs = law.to_scipy(50, random.Source(1))
    assert np.allclose(theirs.as_matrix(), matrices, atol=1e-12)
    phi, theta, psi = law.euler(50, random.Source(1)).T
    by_angles = Rotation.from_euler("ZXZ", np.stack([-psi, -theta, -phi], axis=1))
    assert np.allclose(by_angles.as_matrix(), matrices, atol=1e-9)
    directions = law.directions_xyz(50, random.Source(1))
    assert np.allclose(np.linalg.norm(directions, axis=1), 1)
    w, x, y, z = law.quaternions(50, random.Source(1)).T
    assert np.allclose(Rotation.from_quat(np.stack([x, y, z, w], axis=1)).as_matrix(), matrices)


def test_a_turn_without_a_tilt_has_its_angle_in_phi() -> None:
    assert random.Fixed().euler(1).tolist() == [[0, 0, 0]]
    assert random.Fixed(0.5, 0, 0.25).euler(1) == pytest.approx(np.array([[0.75, 0, 0]]))


def test_a_mixture_has_the_shares_of_its_laws() -> None:
    laws = [random.Fixed(0, 0, 0), random.Fixed(0, 1, 0), random.Fixed(0, 2, 0)]
    mixture = random.Mixture(laws, [0.1, 0.7, 0.2])
    heights = np.round(mixture.rotations(20000, random.Source(9))[:, 2, 2], 6)
    _, counts = np.unique(heights, return_counts=True)
    assert scipy.stats.chisquare(counts, [4000, 14000, 2000]).pvalue > 1e-4


def test_points_lie_where_they_should() -> None:
    source = random.Source(4)
    box = POINTS[0].points_xyz(20000, source)
    for axis in range(3):
        low, high = box[:, axis].min(), box[:, axis].max()
        assert (1, 2, 3)[axis] <= low and high < (4, 6, 8)[axis]
    for law, power in zip(POINTS[1:], (3, None, 2)):
        offsets = law.points_xyz(20000, source) - (1, 2, 3)
        radii = np.linalg.norm(offsets, axis=1)
        if power is None:
            assert np.allclose(radii, 2)
        else:
            assert scipy.stats.kstest((radii / 2) ** power, "uniform").pvalue > 1e-4
    assert np.allclose(offsets @ (1, 1, 0), 0)


@pytest.mark.parametrize("law", SCALAR + GIVEN + OTHER + ROTATIONS + POINTS, ids=repr)
def test_draws_depend_on_the_source_alone(law: object) -> None:
    whole = draw(law, 20000, random.Source(42, 3))
    source = random.Source(42, 3)
    parts = [draw(law, n, source) for n in (1, 0, 7, 19992)]
    assert np.array_equal(np.concatenate(parts), whole)
    assert len(draw(law, 0, None)) == 0
    again = pickle.loads(pickle.dumps(law))
    assert again == law and repr(again) == repr(law) and hash(again) == hash(law)
    assert np.array_equal(draw(again, 100, random.Source(42, 3)), whole[:100])
    if not isinstance(law, random.Fixed):
        assert not np.array_equal(draw(law, 20000, random.Source(42, 4)), whole)
        assert not np.array_equal(draw(law, 20000, None), draw(law, 20000, None))
    with pytest.raises(BadParameter, match="-1"):
        draw(law, -1, None)


def test_a_source_is_saved_restored_pickled_and_jumps() -> None:
    source = random.Source(7, 8)
    copy = pickle.loads(pickle.dumps(source))
    assert (copy.words(100) == source.words(100)).all()
    source.jump()
    assert not (copy.words(100) == source.words(100)).any()
    state = source.save()
    with pytest.raises(BadParameter):
        source.restore("xoshiro256++ 1 2")
    assert source.save() == state
    assert not (random.Source().words(4) == random.Source().words(4)).any()


def test_streams_share_no_words() -> None:
    words = np.concatenate([random.Source(1, stream).words(1000) for stream in range(50)])
    assert len(np.unique(words)) == len(words)


def test_a_source_serves_one_thread_at_a_time() -> None:
    source = random.Source(1)
    errors: list[SeluError] = []

    def take() -> None:
        try:
            source.words(30_000_000)
        except SeluError as error:
            errors.append(error)

    threads = [threading.Thread(target=take) for _ in range(2)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert not errors or "in use by another thread" in str(errors[0])


@pytest.mark.parametrize("law", [random.Poisson(7), *ROTATIONS[:2], *POINTS[:2]], ids=repr)
@pytest.mark.parametrize("shape", [150_000, (300, 300), (70, 1, 90), (2, 3, 65, 2)], ids=repr)
def test_a_box_of_draws_is_that_of_the_whole(
    law: object, shape: object, rng: np.random.Generator
) -> None:
    whole = random.draws(law, shape, seed=5)
    extents = (shape,) if isinstance(shape, int) else shape
    assert whole.shape[: len(extents)] == extents
    for _ in range(5):
        ends = np.sort([rng.integers(0, extent + 1, 2) for extent in extents])
        box = tuple(slice(low, high) for low, high in ends)
        part = random.draws(law, shape, seed=5, low=ends[:, 0], high=ends[:, 1])
        assert np.array_equal(part, whole[box])


def test_tiles_take_a_stream_each_in_the_order_of_the_array() -> None:
    law = random.Normal()
    row = random.draws(law, 70_000, seed=5, first_stream=9)
    assert np.array_equal(row[:65536], law.sample(65536, random.Source(5, 9)))
    assert np.array_equal(row[65536:], law.sample(70_000 - 65536, random.Source(5, 10)))
    assert np.array_equal(row[:1000], random.draws(law, 1000, seed=5, first_stream=9))
    space = random.draws(law, (65, 64, 70), seed=5)
    fourth = law.sample(1 * 64 * 6, random.Source(5, 3)).reshape(1, 64, 6)
    assert np.array_equal(space[64:, :, 64:], fourth)
    assert len(np.unique(space)) == space.size
    turned = random.draws(random.Isotropic(), (2, 3), seed=5, method="euler")
    assert np.array_equal(turned.reshape(6, 3), random.Isotropic().euler(6, random.Source(5)))


REFUSED = [  # call, a part of the message
    (lambda: random.draws(random.Normal(), (3, -1), seed=1), "-1"),
    (lambda: random.draws(random.Normal(), 2.5, seed=1), "2.5"),
    (lambda: random.draws(random.Normal(), (), seed=1), "shape"),
    (lambda: random.draws(random.Normal(), 3, seed=1, low=2, high=4), "4"),
    (lambda: random.draws(random.Normal(), 3, seed=1, low=(0, 0)), "not in an array"),
    (lambda: random.draws(random.Normal(), 3, seed=-1), "-1"),
    (lambda: random.draws(random.Normal(), 3, seed=2**64), "seed"),
    (lambda: random.draws(random.Normal(), 70_000, seed=1, first_stream=2**64 - 1), "streams"),
    (lambda: random.draws(random.Normal(), 3, seed=1, method="euler"), "euler"),
    (lambda: random.draws(random.Ball(), 3, seed=1, method="sample"), "sample"),
    (lambda: random.draws("normal", 3, seed=1), "normal"),
    (lambda: random.Uniform(2, 1), "not 1"),
    (lambda: random.Uniform(2, 1, exact=False), "."),
    (lambda: random.Normal(0, -1), "-1"),
    (lambda: random.Normal(0, math.nan, exact=False), "no distribution"),
    (lambda: random.Exponential(0), "0"),
    (lambda: random.Gamma(-1, 1), "-1"),
    (lambda: random.Poisson(-3), "-3"),
    (lambda: random.Discrete([1, 2], [1]), "2 values"),
    (lambda: random.Discrete([1], [-1]), "-1"),
    (lambda: random.Discrete([], []), "."),
    (lambda: random.Watson(math.inf), "inf"),
    (lambda: random.Watson(math.nan, exact=False), "no distribution"),
    (lambda: random.Watson(1, (0, 0, 0)), "direction"),
    (lambda: random.Watson(1, (0, 0)), "three numbers"),
    (lambda: random.VonMisesFisher(-1), "-1"),
    (lambda: random.Girdle(0), "0"),
    (lambda: random.Mixture([], []), "0 laws"),
    (lambda: random.Mixture([random.Isotropic()], [-1]), "-1"),
    (lambda: random.Box((1, 0, 0), (0, 1, 1)), "lower"),
    (lambda: random.Box((1, 0, 0), (math.inf, 1, 1)), "inf"),
    (lambda: random.Ball((0, 0, 0), -1), "-1"),
]


@pytest.mark.parametrize("case", range(len(REFUSED)))
def test_what_is_refused(case: int) -> None:
    call, message = REFUSED[case]
    with pytest.raises(SeluError, match=message):
        call()


def test_laws_without_one_in_scipy_say_so() -> None:
    with pytest.raises(NotImplementedError, match="CircleDiameter"):
        random.CircleDiameter().to_scipy()
