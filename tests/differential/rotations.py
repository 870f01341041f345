"""Rotations from words by formulas; matrices, quaternions and angles against each other."""
import math

import numpy as np
from seluutils import random as laws

from common import Difference, expect
from draws import Words

TOLERANCE = 1e-12


def expect_near(given, wanted, text):
    if not np.abs(np.asarray(given) - np.asarray(wanted)).max() <= TOLERANCE:
        raise Difference(f"{text}: {np.asarray(given).tolist()} instead of {np.asarray(wanted).tolist()}")


def about_z(angle):
    """Passive: the axes turn."""
    c, s = math.cos(angle), math.sin(angle)
    return np.array([[c, s, 0], [-s, c, 0], [0, 0, 1]])


def about_x(angle):
    c, s = math.cos(angle), math.sin(angle)
    return np.array([[1, 0, 0], [0, c, s], [0, -s, c]])


def matrix(phi, theta, psi):
    return about_z(psi) @ about_x(theta) @ about_z(phi)


def matrix_of_quaternion(q):
    """The columns are the turned unit vectors: q v q*."""
    w, v = q[0], np.array(q[1:])
    return np.stack([(w * w - v @ v) * e + 2 * (v @ e) * v + 2 * w * np.cross(v, e) for e in np.eye(3)], axis=1)


def isotropic(words):
    phi, t, psi = (words.unit() for _ in range(3))
    return matrix(2 * math.pi * phi, math.acos(2 * t - 1), 2 * math.pi * psi)


def axis(chance):
    while True:
        v = np.array([chance.uniform(-1, 1) for _ in range(3)])
        if 0.1 < np.linalg.norm(v) < 1:
            return tuple(v)


def law_of(chance):
    exact = chance.random() < 0.5
    concentration = chance.choice((0.01, 1.0, 20.0, 300.0))
    return chance.choice((
        lambda: laws.Isotropic(exact),
        lambda: laws.Watson(chance.choice((-1, 1)) * concentration, axis(chance), exact),
        lambda: laws.VonMisesFisher(concentration, axis(chance), exact),
        lambda: laws.Girdle(concentration, axis(chance), exact),
    ))()


def case(chance):
    kind = chance.random()
    seed, n = chance.getrandbits(64), chance.randint(1, 8)
    if kind < 0.3:
        angles = [chance.uniform(-4, 4) for _ in range(3)]
        given = laws.Fixed(*angles).rotations(1, laws.Source(seed))[0]
        expect_near(given, matrix(*angles), f"angles {angles}")
    elif kind < 0.6:
        source, words = laws.Source(seed), Words.stream(seed, 0)
        given = laws.Isotropic(exact=False).rotations(n, source)
        expect_near(given, [isotropic(words) for _ in range(n)], f"isotropic, seed {seed}")
        expect(source.save(), words.text(), f"isotropic, seed {seed}: state afterward")
    else:
        check_forms(law_of(chance), seed, n)


def check_forms(law, seed, n):
    """Orthogonal matrices that turn right-handed, and the same as quaternions and angles."""
    text = f"{law!r}, seed {seed}, {n} draws"
    matrices = law.rotations(n, laws.Source(seed))
    expect_near(matrices @ matrices.transpose(0, 2, 1), np.broadcast_to(np.eye(3), (n, 3, 3)), f"{text}, orthogonal")
    expect_near(np.linalg.det(matrices), np.ones(n), f"{text}, determinants")
    quaternions = law.quaternions(n, laws.Source(seed))
    expect_near([matrix_of_quaternion(q) for q in quaternions], matrices, f"{text}, quaternions")
    angles = law.euler(n, laws.Source(seed))
    again = np.array([matrix(*a) for a in angles])
    if not np.abs(again - matrices).max() <= 1e-9:  # a theta next to 0 has few digits
        raise Difference(f"{text}: angles {angles.tolist()} of {matrices.tolist()}")
    directions = law.directions_xyz(n, laws.Source(seed))
    expect_near(np.linalg.norm(directions, axis=1), np.ones(n), f"{text}, lengths")
    again = law.directions_xyz(n, laws.Source(seed))
    expect(directions.tolist(), again.tolist(), f"{text}, the same source")
