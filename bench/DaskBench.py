#!/usr/bin/env python3
"""Time of seluutils.dask.cooccurrence against chunks, workers and the size of the volume.

    . build/venv/bin/activate
    python bench/DaskBench.py                                  # seconds
    python bench/DaskBench.py --sides 512 1024 --folder /data  # up to 1024^3, minutes

The volume is a memory-mapped file of noise. Each row of the table, in Markdown, is the fastest of some
runs on worker processes of one thread on this machine; "whole" is texture.cooccurrence in one call.
"""

from __future__ import annotations

import argparse
import logging
import os
import tempfile
import time
from pathlib import Path
from typing import Any, Callable

import dask
import distributed
import numpy as np

from seluutils import dask as chunked
from seluutils import texture


def noise(path: Path, side: int) -> Path:
    """A file of side^3 bytes, a slice at a time."""
    volume = np.lib.format.open_memmap(path, "w+", np.uint8, (side, side, side))
    rng = np.random.default_rng(side)
    for z in range(side):
        volume[z] = rng.integers(0, 256, (side, side), np.uint8)
    volume.flush()
    return path


def fastest(run: Callable[[], Any], repetitions: int) -> float:
    seconds = []
    for _ in range(repetitions):
        start = time.perf_counter()
        run()
        seconds.append(time.perf_counter() - start)
    return min(seconds)


def row(side: int, chunk: str, workers: str, tasks: str, seconds: float) -> None:
    cost = seconds / side**3 * 1e9
    print(f"| {side}^3 | {chunk} | {workers} | {tasks} | {seconds:.3f} | {cost:.2f} |", flush=True)


def measure(path: Path, side: int, given: argparse.Namespace) -> None:
    offset = tuple(given.offset)
    whole = np.load(path, mmap_mode="r")
    expected = texture.cooccurrence(whole, offset)
    seconds = fastest(lambda: texture.cooccurrence(whole, offset), given.repetitions)
    row(side, "whole", "-", "-", seconds)
    for workers in given.workers:
        with distributed.LocalCluster(
            workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=None,
            silence_logs=logging.CRITICAL,
        ) as cluster, distributed.Client(cluster):  # fmt: skip
            for chunk in given.chunks:
                if chunk > side:
                    continue

                def count() -> None:  # a new graph each time: Dask keeps what it knows
                    counts = chunked.cooccurrence(path, offset, chunks=chunk).compute()
                    if not np.array_equal(counts, expected):
                        raise SystemExit(f"chunks of {chunk} give other counts")

                seconds = fastest(count, given.repetitions)
                tasks = str((-(-side // chunk)) ** 3)
                row(side, f"{chunk}^3", str(workers), tasks, seconds)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sides", type=int, nargs="+", default=[128, 256], help="of the volumes")
    parser.add_argument("--chunks", type=int, nargs="+", default=[64, 128, 256], help="sides")
    parser.add_argument("--workers", type=int, nargs="+", default=[1, 2], help="processes")
    parser.add_argument("--offset", type=int, nargs=3, default=[0, 0, 1], help="in z, y, x")
    parser.add_argument("--repetitions", type=int, default=3)
    parser.add_argument("--folder", type=Path, default=None, help="for the volumes; a temporary one")
    given = parser.parse_args()
    print(f"{os.cpu_count()} processors, dask {dask.__version__}\n")
    print("| Volume | Chunks | Workers | Tasks | Seconds | ns per voxel |\n|" + "---|" * 6)
    with tempfile.TemporaryDirectory(dir=given.folder) as folder:
        for side in given.sides:
            path = noise(Path(folder) / f"{side}.npy", side)
            measure(path, side, given)
            path.unlink()


if __name__ == "__main__":
    main()
