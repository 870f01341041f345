"""The argument `progress` of the functions that may take long."""

from __future__ import annotations

from typing import Any, Callable, Iterator, Union
from contextlib import contextmanager

Progress = Union[None, bool, Callable[[int, int], Any]]


@contextmanager
def watched(progress: Progress, what: str) -> Iterator[Callable[[int, int], Any] | None]:
    """A callable(done, total) for the library, or None; `True` is a bar of tqdm's.

    Without tqdm, `True` shows nothing.
    """
    if progress is None or progress is False:
        yield None
        return
    if progress is not True:
        if not callable(progress):
            raise TypeError(f"progress must be a callable, True or None, not {progress!r}")
        yield progress
        return
    try:
        from tqdm.auto import tqdm
    except ImportError:
        yield None
        return
    with tqdm(desc=what, unit="", unit_scale=True, leave=False) as bar:

        def show(done: int, total: int) -> None:
            bar.total = total
            bar.update(done - bar.n)

        yield show
