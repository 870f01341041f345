"""The scripts of the gallery are short and draw something."""

from __future__ import annotations

import os
import runpy
from pathlib import Path

import numpy as np
import pytest

matplotlib = pytest.importorskip("matplotlib")
pytest.importorskip("zarr")

SOURCE = Path(os.environ.get("SELU_SOURCE_DIR", Path(__file__).parents[2]))
SCRIPTS = sorted(path for path in (SOURCE / "python/gallery").glob("*.py") if path.stem != "make")


def test_there_are_ten_scripts_of_at_most_forty_lines() -> None:
    assert len(SCRIPTS) >= 10
    for script in SCRIPTS:
        assert len(script.read_text(encoding="utf-8").splitlines()) <= 40, script


@pytest.mark.parametrize("script", SCRIPTS, ids=lambda path: path.stem)
def test_a_script_draws_a_picture(script: Path) -> None:
    matplotlib.use("Agg")
    figure = runpy.run_path(str(script))["picture"]()
    figure.set_dpi(30)
    figure.canvas.draw()
    pixels = np.asarray(figure.canvas.buffer_rgba())[..., :3]
    assert len(figure.axes) >= 2
    assert (pixels < 250).any(axis=-1).mean() > 0.02
    assert len(np.unique(pixels.reshape(-1, 3), axis=0)) > 100
    matplotlib.pyplot.close(figure)
