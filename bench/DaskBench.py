#!/usr/bin/env python3
"""Time and memory of seluutils.dask against chunks, workers and the size of the volume.

Usage: DaskBench.py REPETITIONS RESULT.json [--sides N...] [--chunks N...] [--workers N...]

The volumes are memory-mapped files of noise; the workers are processes of one thread on this
machine. The result has the form of Google Benchmark's, so that the same tables are made of it. Times
are real times. A row's memory is the most that a worker held beyond what it held before.
"""

from __future__ import annotations

import argparse
import contextlib
import datetime
import json
import logging
import platform
import tempfile
import time
from pathlib import Path
from typing import Any, Callable, Iterator

import dask
import distributed
import numpy as np

from seluutils import dask as chunked
from seluutils import texture

OFFSET = (0, 0, 1)
TABLE = 8 << 16  # bytes of the counts of 256 levels
OBJECT = 32  # side of an object
LONGEST = 512  # side of volumes whose objects and maps are measured: they cost 100 ns per voxel
PATIENCE = 20.0  # seconds for the repetitions of a row after the first two

Call = Callable[[], Any]


class Files:
    """The volume of a side, and its labels."""

    def __init__(self, folder: Path, side: int) -> None:
        self.side, self.volume, self.labels = side, folder / "volume.npy", folder / "labels.npy"
        shape = (side, side, side)
        volume = np.lib.format.open_memmap(self.volume, "w+", np.uint8, shape)
        rng = np.random.default_rng(side)
        for z in range(side):
            volume[z] = rng.integers(0, 256, (side, side), np.uint8)
        volume.flush()
        if side <= LONGEST:
            self.label(shape)

    def label(self, shape: tuple[int, int, int]) -> None:
        labels = np.lib.format.open_memmap(self.labels, "w+", np.int32, shape)
        blocks = -(-self.side // OBJECT)
        place = np.arange(self.side) // OBJECT
        for z in range(self.side):
            labels[z] = 1 + (place[z] * blocks + place[:, None]) * blocks + place
        labels.flush()


def counts(files: Files, chunk: int | None) -> Any:
    if chunk is None:
        return texture.cooccurrence(np.load(files.volume, "r"), OFFSET)
    return chunked.cooccurrence(files.volume, OFFSET, chunks=chunk).compute()


def objects(files: Files, chunk: int | None) -> Any:
    given: dict[str, Any] = dict(names=["contrast"], offset=OFFSET, levels=255)
    if chunk is None:
        volume, labels = np.load(files.volume, "r"), np.load(files.labels, "r")
        return texture.object_features(volume, labels, **given)["contrast"]
    return chunked.object_features(files.volume, files.labels, chunks=chunk, **given)["contrast"]


def maps(files: Files, chunk: int | None) -> Any:
    """Their sum, so that no process has to hold them all."""
    given: dict[str, Any] = dict(names=["contrast"], offset=OFFSET, levels=255)
    if chunk is None:
        made = texture.feature_maps(np.load(files.volume, "r"), 5, **given)["contrast"]
        return np.nansum(made, dtype=np.float64)
    made = chunked.feature_maps(files.volume, 5, chunks=chunk, **given)["contrast"]
    return dask.array.nansum(made, dtype=np.float64).compute()


#: What is measured, and the bytes of a voxel of its chunks: of the image, the labels and the maps.
FUNCTIONS = {"cooccurrence": (counts, 1), "objects": (objects, 1 + 4), "maps": (maps, 1 + 4)}


def mebibytes(size: float) -> str:
    return f"{size / (1 << 20):.3g} MiB"


def status(what: str) -> int:
    """Bytes of this process that are resident, or the most that ever were."""
    lines = Path("/proc/self/status").read_text(encoding="ascii").splitlines()
    return next(int(line.split()[1]) for line in lines if line.startswith(what)) << 10


def forget_most() -> int:
    """What is resident now; the most that ever was is so from now on."""
    Path("/proc/self/clear_refs").write_text("5", encoding="ascii")
    return status("VmRSS")


@contextlib.contextmanager
def cluster_of(workers: int) -> Iterator[distributed.Client]:
    with distributed.LocalCluster(
        workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=None,
        silence_logs=logging.CRITICAL,
    ) as cluster, distributed.Client(cluster) as client:  # fmt: skip
        yield client


class Result:
    """The runs so far."""

    def __init__(self, repetitions: int) -> None:
        self.repetitions = repetitions
        self.runs: list[dict[str, Any]] = []
        self.rows: dict[str, int] = {}

    def take(self, row: str, contestant: str, voxels: int, call: Call, client: Any = None) -> Any:
        """Repeats a call until it has taken its time; what it gives."""
        begin = time.perf_counter()
        for k in range(self.repetitions):
            before = client.run(forget_most) if client else {}
            start = time.perf_counter()
            found = call()
            seconds = time.perf_counter() - start
            most = client.run(status, "VmHWM") if client else {}
            held = max((most[worker] - before[worker] for worker in before), default=0)
            self.add(row, contestant, voxels, seconds, held)
            if k > 0 and time.perf_counter() - begin > PATIENCE:
                break
        return found

    def add(self, row: str, contestant: str, voxels: int, seconds: float, held: int) -> None:
        run = {
            "family_index": self.rows.setdefault(row, len(self.rows)),
            "run_type": "iteration",
            "run_name": f"{row}/{contestant}/manual_time",
            "real_time": seconds * 1e9,
            "time_unit": "ns",
            "items_per_second": voxels / seconds,
        }
        self.runs.append({**run, "held_bytes": held})

    def again(self, row: str, other: str, contestant: str) -> None:
        """The runs of a contestant in another row stand for those in this one."""
        name = f"{other}/{contestant}/manual_time"
        for run in [run for run in self.runs if run["run_name"] == name]:
            copy = {"run_name": f"{row}/{contestant}/manual_time"}
            self.runs.append({**run, **copy, "family_index": self.rows[row]})

    def tell(self, row: str, two: int) -> None:
        """Adds the memory to the row's table, and prints the row."""
        ours = [run for run in self.runs if run["run_name"] == f"{row}/SeluUtils/manual_time"]
        held = max(run["held_bytes"] for run in ours)
        columns = {"a worker held": mebibytes(held), "two chunks and a table": mebibytes(two)}
        for run in ours:
            run["columns"] = columns
        cost = 1e9 / max(run["items_per_second"] for run in ours)
        text = ", ".join(f"{name} {value}" for name, value in columns.items())
        print(f"{row:50} {cost:8.2f} ns per voxel, {text}", flush=True)

    def write(self, path: Path) -> None:
        compiler = f"Python {platform.python_version()}, Dask {dask.__version__}"
        context = {"date": datetime.date.today().isoformat(), "compiler": compiler}
        path.write_text(json.dumps({"context": context, "benchmarks": self.runs}), encoding="utf-8")


def measure(name: str, files: Files, given: argparse.Namespace, result: Result) -> None:
    function, bytes_per_voxel = FUNCTIONS[name]
    voxels = files.side**3
    whole = f"{name}, {files.side}^3"
    least = 1 if name == "cooccurrence" else files.side // 4  # smaller chunks take minutes
    chunks = [chunk for chunk in given.chunks if least <= chunk <= files.side]
    if not chunks:
        return
    expected = result.take(whole, "in one call", voxels, lambda: function(files, None))
    for workers in given.workers:
        with cluster_of(workers) as client:
            function(files, chunks[-1])  # what a process loads once is not of a task
            for chunk in chunks:
                row = f"{whole}, chunks of {chunk}^3, {workers} worker{'s'[: workers - 1]}"
                call = lambda: function(files, chunk)  # noqa: E731
                found = result.take(row, "SeluUtils", voxels, call, client)
                if not np.allclose(found, expected, rtol=1e-12 if name == "maps" else 0, atol=0):
                    raise SystemExit(f"{row}: other numbers than in one call")
                result.again(row, whole, "in one call")
                result.tell(row, 2 * chunk**3 * bytes_per_voxel + TABLE)


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("repetitions", type=int)
    parser.add_argument("result", type=Path, metavar="RESULT.json")
    parser.add_argument("--sides", type=int, nargs="+", default=[256, 512, 1024], help="of volumes")
    parser.add_argument("--chunks", type=int, nargs="+", default=[64, 128, 256, 512], help="sides")
    parser.add_argument("--workers", type=int, nargs="+", default=[1, 2], help="processes")
    parser.add_argument("--folder", type=Path, default=None, help="for the volumes; a temporary one")
    given = parser.parse_args()
    result = Result(given.repetitions)
    with tempfile.TemporaryDirectory(dir=given.folder) as folder:
        for side in given.sides:
            files = Files(Path(folder), side)
            for name in FUNCTIONS:
                if name == "cooccurrence" or side <= LONGEST:
                    measure(name, files, given, result)
    result.write(given.result)


if __name__ == "__main__":
    main()
