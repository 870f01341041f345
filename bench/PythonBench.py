#!/usr/bin/env python3
"""The Python package beside NumPy and scikit-image, and its threads beside one.

Usage: PythonBench.py REPETITIONS RESULT.json

The result has the form of Google Benchmark's, so that the same tables are made of it. Times are
real times; contestants of a row take turns.
"""

import datetime
import itertools
import json
import os
import sys
import threading
import time

import numpy as np
import skimage.feature

from seluutils import texture
from seluutils.compat import skimage as ours

noise = np.random.default_rng(1).integers(0, 256, (256, 256, 256), np.uint8)
tiny, small, plane = noise[:2, :2, :2], noise[:64, :64, :64], noise[0]
right = (0, 0, 1)


def bincount(image):
    codes = image[:, :, :-1].astype(np.intp) * 256 + image[:, :, 1:]
    return np.bincount(codes.ravel(), minlength=65536)


def count_all(image):
    texture.cooccurrence(image)  # 13 directions


def at_a_time(function, *arguments):
    """Each in a thread on a processor of its own: a system may leave short threads on one for a while."""

    def run(processor, part):
        os.sched_setaffinity(0, {processor})  # of this thread alone
        function(part)

    processors = itertools.cycle(sorted(os.sched_getaffinity(0)))
    threads = [threading.Thread(target=run, args=at) for at in zip(processors, arguments)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()


halves = noise[:128], noise[128:]
ROWS = {  # row: the contestants, and what is done how often
    "features of 8 voxels": {"SeluUtils": (lambda: texture.features(tiny, right), 1000)},
    "IBSI features of 8 voxels": {
        "SeluUtils": (lambda: texture.features(tiny, right, definition="ibsi"), 1000)
    },
    "matrix of 64^3 noise": {
        "SeluUtils": (lambda: texture.cooccurrence(small, right), 50),
        "NumPy's bincount": (lambda: bincount(small), 50),
    },
    "graycomatrix, 256^2 noise, 4 angles": {
        "SeluUtils": (lambda: ours.graycomatrix(plane, [1], [0, 0.8, 1.6, 2.4]), 20),
        "scikit-image": (lambda: skimage.feature.graycomatrix(plane, [1], [0, 0.8, 1.6, 2.4]), 20),
    },
    "two halves of 256^3 noise, 13 directions, by two threads": {
        "SeluUtils": (lambda: at_a_time(count_all, *halves), 3),
        "one after the other": (lambda: [count_all(half) for half in halves], 3),
    },
}


def measure(repetitions):
    for _ in range(repetitions):
        for index, (row, contestants) in enumerate(ROWS.items()):
            for name, (call, times) in contestants.items():
                call()
                start = time.perf_counter()
                for _ in range(times):
                    call()
                yield index, f"{row}/{name}", (time.perf_counter() - start) / times


def main():
    repetitions, path = int(sys.argv[1]), sys.argv[2]
    runs = [
        {
            "family_index": index,
            "run_type": "iteration",
            "run_name": f"{name}/manual_time",
            "real_time": seconds * 1e9,
            "time_unit": "ns",
        }
        for index, name, seconds in measure(repetitions)
    ]
    version = ".".join(map(str, sys.version_info[:3]))
    context = {
        "date": datetime.date.today().isoformat(),
        "compiler": f"Python {version}, NumPy {np.__version__}",
    }
    with open(path, "w", encoding="utf-8") as file:
        json.dump({"context": context, "benchmarks": runs}, file)
    for name in dict.fromkeys(run["run_name"] for run in runs):
        fastest = min(run["real_time"] for run in runs if run["run_name"] == name)
        print(f"{name.removesuffix('/manual_time'):60} {fastest / 1000:10.1f} µs")


if __name__ == "__main__":
    main()
