"""How the package behaves in a program: interruption, threads, memory, objects that go away."""

from __future__ import annotations

import gc
import os
import resource
import signal
import subprocess
import sys
import threading
import weakref

import numpy as np
import pytest

from seluutils import texture

# What runs longer than a minute, and what Ctrl-C must leave untouched.
LONG = {
    "cooccurrence": """
        image = np.broadcast_to(np.arange(256, dtype=np.uint8), (2048, 2048, 256))
        out = np.zeros((13, 256, 256), np.uint64)
        print("started", flush=True)
        try:
            for _ in range(100): texture.cooccurrence(image, out=out)
        finally:
            print("untouched", not out.any(), flush=True)
    """,
    "levels": """
        image = np.broadcast_to(np.arange(256, dtype=np.uint16), (4096, 2048, 256))
        print("started", flush=True)
        while True: texture.features(image[:1], definition="ibsi", distances=list(range(1, 90)))
    """,
    "maps": """
        image = np.random.default_rng(1).integers(1, 65, (4000, 4000), np.uint8)
        print("started", flush=True)
        texture.feature_maps(image, 63, names=["joint_entr"])
    """,
    "object": """
        image = np.broadcast_to(np.arange(1, 257).clip(1, 255).astype(np.uint8), (512, 1024, 256))
        labels = np.broadcast_to(np.uint8(1), image.shape)
        print("started", flush=True)
        texture.object_features(image, labels, distances=list(range(1, 60)))
    """,
}


@pytest.mark.parametrize("what", LONG)
def test_ctrl_c_ends_a_long_computation(what: str) -> None:
    lines = "\n".join(line[8:] for line in LONG[what].splitlines())
    program = f"import numpy as np\nfrom seluutils import texture\n{lines}"
    process = subprocess.Popen(
        [sys.executable, "-c", program], stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    )
    try:
        assert process.stdout is not None and process.stdout.readline() == "started\n"
        with pytest.raises(subprocess.TimeoutExpired):
            process.wait(timeout=0.5)  # at work
        process.send_signal(signal.SIGINT)
        printed, errors = process.communicate(timeout=60)  # of a loaded machine
    finally:
        process.kill()
    assert "KeyboardInterrupt" in errors
    if what == "cooccurrence":
        assert printed == "untouched True\n"


def test_other_threads_run_while_the_library_counts() -> None:
    image = np.broadcast_to(np.arange(256, dtype=np.uint8), (1024, 1024, 256))
    ticks = 0
    done = threading.Event()

    def count() -> None:
        texture.cooccurrence(image)
        done.set()

    thread = threading.Thread(target=count)
    thread.start()
    while not done.wait(0.001):
        ticks += 1
    thread.join()
    assert ticks > 1


def test_threads_count_the_same_at_a_time(rng: np.random.Generator) -> None:
    image = rng.integers(0, 256, (30, 40, 50), np.uint8)
    expected = texture.cooccurrence(image)
    results: list[bool] = []

    def count() -> None:
        for _ in range(20):
            results.append(bool((texture.cooccurrence(image) == expected).all()))

    threads = [threading.Thread(target=count) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert results == [True] * 80


def test_an_array_that_others_let_go_of_stays_while_it_is_counted() -> None:
    class Kept(np.ndarray):
        pass

    told: list[bool] = []
    image = np.zeros((300, 400, 401), np.uint8).view(Kept)
    alive = weakref.ref(image)
    arguments = [image]
    del image

    def progress(done: int, total: int) -> None:
        told.append(alive() is not None)

    texture.cooccurrence(arguments.pop(), texture.offsets(3), progress=progress)
    gc.collect()
    assert told and all(told) and alive() is None


def resident() -> int:
    """Bytes of memory that the process holds now."""
    with open("/proc/self/statm", encoding="ascii") as file:
        return int(file.read().split()[1]) * resource.getpagesize()


CALLS = {
    "cooccurrence": lambda image: texture.cooccurrence(image, (0, 1), levels=8),
    "features": lambda image: texture.features(image, (0, 1)),
    "ibsi": lambda image: texture.features(image, (0, 1), definition="ibsi", bin_count=3),
    "quantize": lambda image: texture.quantize(image, bin_count=3),
    "maps": lambda image: texture.feature_maps(image, 3, names=["contrast"], progress=print_not),
    "objects": lambda image: texture.object_features(image, image, names=["contrast"]),
    "error": lambda image: failing(image),
}


def print_not(done: int, total: int) -> None:
    pass


def failing(image: np.ndarray) -> None:
    with pytest.raises(ValueError):
        texture.cooccurrence(image, (0, 1), levels=2)


@pytest.mark.parametrize("name", CALLS)
@pytest.mark.skipif("LD_PRELOAD" in os.environ, reason="the sanitizer keeps what is freed")
def test_many_calls_need_no_more_memory_than_some(name: str) -> None:
    image = np.arange(8, dtype=np.uint8).reshape(2, 4)
    call = CALLS[name]
    for _ in range(2000):
        call(image)
    before = resident()
    for _ in range(15000):
        call(image)
    assert resident() - before < 1 << 20  # 70 bytes per call
