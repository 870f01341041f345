#!/usr/bin/env python3
"""Times one of the draws of NumPy's Generator that bench/ExactDrawsBench.cpp times beside it.

Usage: numpy_draws.py ROW [SECONDS]

Prints the nanoseconds per draw, the fastest of many repetitions that take SECONDS (default 0.5) in
all. A single draw is a call from Python, so only arrays are timed. Rows are called as in the
benchmark, and arrays have as many elements.
"""
import sys
import time

import numpy as np

N = 4096  # as in the benchmark


def on_sphere(rng):
    v = rng.standard_normal((N, 3))
    return v / np.sqrt(np.einsum("ij,ij->i", v, v))[:, None]


def rows(rng):
    buffer = np.empty(N)
    yield "uniform", lambda: rng.random(out=buffer)
    yield "normal", lambda: rng.standard_normal(out=buffer)
    yield "exponential", lambda: rng.standard_exponential(out=buffer)
    yield "log-normal", lambda: rng.lognormal(0.0, 1.0, N)
    yield "Rayleigh", lambda: rng.rayleigh(1.0, N)
    for shape in (0.5, 2.5, 100):
        yield f"gamma {shape}", lambda shape=shape: rng.standard_gamma(shape, out=buffer)
    for mean in (1, 9, 10, 100, 1000, 1000000):
        yield f"Poisson {mean}", lambda mean=mean: rng.poisson(mean, N)
    for n in (6, 1000):
        weights = 1 + np.arange(n) % 7
        p = weights / weights.sum()
        yield f"one of {n} weights", lambda n=n, p=p: rng.choice(n, N, p=p)
    yield "point on a sphere", lambda: on_sphere(rng)


def nanoseconds(draw, seconds):
    best = float("inf")
    end = time.perf_counter() + seconds
    while time.perf_counter() < end:
        begin = time.perf_counter_ns()
        draw()
        best = min(best, time.perf_counter_ns() - begin)
    return best / N


def main():
    seconds = float(sys.argv[2]) if len(sys.argv) > 2 else 0.5
    for row, draw in rows(np.random.default_rng(1)):
        if row == sys.argv[1]:
            print(f"{nanoseconds(draw, seconds):.3f}")
            return
    sys.exit(f"no row {sys.argv[1]}")


main()
