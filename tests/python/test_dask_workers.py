"""Volumes in chunks on processes: exact though one is killed, small, and never stuck."""

from __future__ import annotations

import contextlib
import logging
import os
import signal
from pathlib import Path
from typing import Any, Iterator

import numpy as np
import pytest

dask = pytest.importorskip("dask")
distributed = pytest.importorskip("distributed")
import dask.array as da  # noqa: E402

from seluutils import dask as chunked  # noqa: E402
from seluutils import random, texture  # noqa: E402

pytestmark = pytest.mark.filterwarnings("ignore:make_current:DeprecationWarning")
PATIENCE = 120  # seconds until what hangs is a failure


@contextlib.contextmanager
def workers(**settings: Any) -> Iterator[Any]:
    """Two processes of one thread each on this machine's loopback, without a dashboard."""
    with dask.config.set({"distributed.scheduler.allowed-failures": 3, **settings}):
        with distributed.LocalCluster(
            2, threads_per_worker=1, host="127.0.0.1", dashboard_address=None,
            silence_logs=logging.CRITICAL,
        ) as cluster, distributed.Client(cluster) as client:  # fmt: skip
            yield client


def killing(block: np.ndarray, marks: str, block_info: Any = None) -> np.ndarray:
    """The block; but that in the middle kills its process, once or, without a folder, always."""
    if block_info[0]["chunk-location"] == (1, 1, 1):
        if not marks:
            os.kill(os.getpid(), signal.SIGKILL)
        with contextlib.suppress(FileExistsError):
            os.close(os.open(Path(marks) / "killed", os.O_CREAT | os.O_EXCL))
            os.kill(os.getpid(), signal.SIGKILL)
    return block


def test_counts_are_exact_though_a_worker_is_killed(
    tmp_path: Path, rng: np.random.Generator
) -> None:
    image = rng.integers(0, 256, (50, 60, 70), np.uint8)
    offsets = [(0, 0, 1), (-3, 2, 0), (25, 0, -30)]
    volume = da.from_array(image, 20).map_blocks(killing, str(tmp_path), meta=image[:0])
    with workers() as client:
        before = client.run(os.getpid)
        counts = client.compute(chunked.cooccurrence(volume, offsets)).result(PATIENCE)
        after = client.run(os.getpid)
    assert (tmp_path / "killed").exists()
    assert set(before.values()) != set(after.values())
    assert np.array_equal(counts, texture.cooccurrence(image, offsets))


def test_draws_are_the_same_though_a_worker_is_killed(tmp_path: Path) -> None:
    law, shape = random.Poisson(30), (150, 100, 140)
    expected = random.draws(law, shape, seed=3)
    numbers = chunked.draws(law, shape, seed=3, chunks=50)
    assert numbers.numblocks == (3, 2, 3)
    with workers() as client:
        before = client.run(os.getpid)
        dying = numbers.map_blocks(killing, str(tmp_path), meta=expected[:0])
        found = client.compute(dying).result(PATIENCE)
        after = client.run(os.getpid)
        other = client.compute(numbers.rechunk(70)).result(PATIENCE)
    assert (tmp_path / "killed").exists()
    assert set(before.values()) != set(after.values())
    assert np.array_equal(found, expected) and np.array_equal(other, expected)


def test_a_task_that_always_dies_ends_as_an_error() -> None:
    image = np.zeros((50, 60, 70), np.uint8)
    volume = da.from_array(image, 20).map_blocks(killing, "", meta=image[:0])
    with workers(**{"distributed.scheduler.allowed-failures": 1}) as client:
        future = client.compute(chunked.cooccurrence(volume, (0, 0, 1)))
        with pytest.raises(distributed.KilledWorker):
            future.result(PATIENCE)


def memory(what: str) -> int:
    """Bytes of this process that are resident, or the most that ever were."""
    status = Path("/proc/self/status").read_text(encoding="ascii")
    return next(int(line.split()[1]) for line in status.splitlines() if line.startswith(what)) << 10


def forget_most() -> int:
    """What is resident now; the most that ever was is so from now on."""
    Path("/proc/self/clear_refs").write_text("5", encoding="ascii")
    return memory("VmRSS")


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""), reason="ASan needs more")
def test_a_worker_holds_two_chunks_and_its_tables(tmp_path: Path) -> None:
    shape, chunks = (256, 512, 1024), (64, 512, 1024)
    chunk, table = 1 << 25, 8 << 16
    file = np.lib.format.open_memmap(tmp_path / "v.npy", "w+", np.uint8, shape)
    file[:] = np.random.default_rng(5).integers(0, 256, (1, 512, 1024), np.uint8)
    file.flush()
    slack = 8 << 20  # of the interpreter
    with workers() as client:
        warm = chunked.cooccurrence(np.zeros((8, 8, 8), np.uint8), (0, 0, 1), chunks=4)
        client.compute(warm).result(PATIENCE)
        for offset in ((0, 1, -1), (100, 100, -200)):  # near, and farther than a chunk
            before = client.run(forget_most)
            counts = chunked.cooccurrence(tmp_path / "v.npy", offset, chunks=chunks)
            total = int(client.compute(counts).result(PATIENCE).sum())
            most = client.run(memory, "VmHWM")
            assert total == np.prod(np.array(shape) - np.abs(offset))
            for worker, resident in before.items():
                assert most[worker] - resident <= 2 * chunk + 12 * table + slack
