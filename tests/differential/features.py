"""Features against their formulas, in fractions where they are rational, of one cell after the other."""
import math
from fractions import Fraction

import numpy as np
from seluutils import texture

from common import expect_close

TOLERANCE = 1e-11
MAXIMAL = ("mcc", "haralick_maximal_correlation")


def entropy(weights, base=2.0):
    """Of exact shares, each logarithm rounded once."""
    return -math.fsum(float(p) * (math.log(p.numerator) - math.log(p.denominator)) for p in weights if p) / math.log(base)


def summed(pairs):
    sums = {}
    for key, weight in pairs:
        sums[key] = sums.get(key, 0) + weight
    return sums


class Matrix:
    """p(i, j) as fractions by levels from 1 on."""

    def __init__(self, counts, ng=None):
        cells = {(i + 1, j + 1): int(n) for i, row in enumerate(np.asarray(counts).tolist())
                 for j, n in enumerate(row) if n}
        self.total = sum(cells.values())
        self.ng = ng or len(counts)
        self.p = {cell: Fraction(n, self.total) for cell, n in cells.items()} if self.total else {}
        self.x = summed((i, p) for (i, j), p in self.p.items())
        self.y = summed((j, p) for (i, j), p in self.p.items())
        self.d = summed((abs(i - j), p) for (i, j), p in self.p.items())
        self.s = summed((i + j, p) for (i, j), p in self.p.items())

    def sum(self, term):
        return sum((term(i, j) * p for (i, j), p in self.p.items()), Fraction(0))

    @staticmethod
    def moment(weights, power=1, about=0):
        return sum(((k - about) ** power * p for k, p in weights.items()), Fraction(0))

    def variance(self, weights):
        return self.moment(weights, 2, self.moment(weights))

    def correlation(self):
        vx, vy = self.variance(self.x), self.variance(self.y)
        if not vx or not vy:
            return 1.0 if vx == vy else 0.0
        covariance = self.sum(lambda i, j: i * j) - self.moment(self.x) * self.moment(self.y)
        square = covariance * covariance / (vx * vy)
        return math.copysign(math.sqrt(square), covariance)

    def mutual(self):
        """In nats, from the ratios, so that digits stay where levels hardly depend on each other."""
        return math.fsum(float(p) * math.log1p(float(p / (self.x[i] * self.y[j]) - 1))
                         for (i, j), p in self.p.items())

    def information1(self):
        hx, hy = entropy(self.x.values()), entropy(self.y.values())
        return -self.mutual() / math.log(2) / max(hx, hy) if max(hx, hy) > 0 else 0.0

    def information2(self, base):
        return math.sqrt(max(0.0, -math.expm1(-2 * self.mutual() / math.log(base))))

    def of(self, name):
        if not self.p:
            return math.nan
        mx, my, ng = self.moment(self.x), self.moment(self.y), self.ng
        values = {
            "joint_max": lambda: max(self.p.values()),
            "joint_avg": lambda: mx,
            "joint_var": lambda: self.variance(self.x),
            "joint_entr": lambda: entropy(self.p.values()),
            "diff_avg": lambda: self.moment(self.d),
            "diff_var": lambda: self.variance(self.d),
            "diff_entr": lambda: entropy(self.d.values()),
            "sum_avg": lambda: self.moment(self.s),
            "sum_var": lambda: self.variance(self.s),
            "sum_entr": lambda: entropy(self.s.values()),
            "energy": lambda: sum(p * p for p in self.p.values()),
            "contrast": lambda: self.sum(lambda i, j: (i - j) ** 2),
            "dissimilarity": lambda: self.sum(lambda i, j: abs(i - j)),
            "inv_diff": lambda: self.sum(lambda i, j: Fraction(1, 1 + abs(i - j))),
            "inv_diff_norm": lambda: self.sum(lambda i, j: 1 / (1 + Fraction(abs(i - j), ng))),
            "inv_diff_mom": lambda: self.sum(lambda i, j: Fraction(1, 1 + (i - j) ** 2)),
            "inv_diff_mom_norm": lambda: self.sum(lambda i, j: 1 / (1 + Fraction((i - j) ** 2, ng * ng))),
            "inv_var": lambda: self.sum(lambda i, j: Fraction(1, (i - j) ** 2) if i != j else 0),
            "corr": self.correlation,
            "auto_corr": lambda: self.sum(lambda i, j: i * j),
            "clust_tend": lambda: self.sum(lambda i, j: (i + j - mx - my) ** 2),
            "clust_shade": lambda: self.sum(lambda i, j: (i + j - mx - my) ** 3),
            "clust_prom": lambda: self.sum(lambda i, j: (i + j - mx - my) ** 4),
            "info_corr1": self.information1,
            "info_corr2": lambda: self.information2(2),
        }
        return float(values[name]())

    def haralick(self):
        natural = math.e
        return [self.of("energy"), self.of("contrast"), self.of("corr"), self.of("joint_var"), self.of("inv_diff_mom"),
                self.of("sum_avg"), self.of("sum_var"), entropy(self.s.values(), natural),
                entropy(self.p.values(), natural), self.of("diff_var"), entropy(self.d.values(), natural),
                self.of("info_corr1"), self.information2(natural)] if self.p else [math.nan] * 13


def tolerance_of(name):
    # Roots of small differences have half of the digits.
    return 1e-7 if "info_corr2" in name or name.endswith("information_correlation_2") else TOLERANCE


def random_counts(chance):
    levels = chance.choice((1, 2, 3, 5, 8, 12))
    generator = np.random.default_rng(chance.getrandbits(64))
    most = chance.choice((1, 2, 10, 10, 10**6, 10**12))
    counts = generator.integers(0, most, (levels, levels), dtype=np.uint64, endpoint=True)
    counts[generator.random((levels, levels)) < chance.choice((0, 0.2, 0.7))] = 0
    return counts


def case(chance):
    counts = random_counts(chance)
    symmetric = chance.random() < 0.5
    ng = chance.choice((None, None, 5, 100))
    matrix = Matrix((counts + counts.T if symmetric else counts), ng)
    text = f"of {counts.tolist()}, symmetric {symmetric}, ng {ng}"
    given = texture.matrix_features(counts, symmetric=symmetric, normalizing_levels=ng)
    for name in texture.IBSI_FEATURES:
        expect_close(given[name], matrix.of(name), tolerance_of(name), f"{name} {text}")
    weights = counts.astype(float) * 0.125  # exact: the same features
    again = texture.matrix_features(weights, symmetric=symmetric, normalizing_levels=ng)
    given_haralick = texture.matrix_features(counts, definition="haralick", symmetric=symmetric)
    for name in texture.IBSI_FEATURES:
        expect_close(again[name], given[name], 1e-13 if tolerance_of(name) == TOLERANCE else 1e-7, f"{name} by weights {text}")
    for name, wanted in zip(texture.HARALICK_FEATURES, matrix.haralick()):
        expect_close(given_haralick[name], wanted, tolerance_of(name), f"{name} {text}")
    check_maximal(matrix, given_haralick[texture.HARALICK_FEATURES[-1]], text)


def check_maximal(matrix, given, text):
    """The second singular value of p / sqrt(px py), by NumPy."""
    if not matrix.p:
        wanted = math.nan
    else:
        rows, columns = sorted(matrix.x), sorted(matrix.y)
        q = np.zeros((len(rows), len(columns)))
        for (i, j), p in matrix.p.items():
            q[rows.index(i), columns.index(j)] = float(p) / math.sqrt(float(matrix.x[i]) * float(matrix.y[j]))
        singular = np.linalg.svd(q, compute_uv=False)
        wanted = 1.0 if q.size == 1 else 0.0 if min(q.shape) == 1 else float(singular[1])
    expect_close(given, wanted, 1e-7, f"maximal correlation {text}")
