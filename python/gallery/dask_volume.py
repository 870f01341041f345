"""A Zarr volume in chunks: a map of its texture without a seam, equal to that of the whole."""

import tempfile
from pathlib import Path

import matplotlib.pyplot as plt
import numpy as np
import zarr
from matplotlib.figure import Figure
from scipy import ndimage

from seluutils import dask, texture


def picture() -> Figure:
    rng = np.random.default_rng(3)
    noise = rng.normal(size=(48, 160, 160))
    fine, coarse = (ndimage.gaussian_filter(noise, sigma) for sigma in (0.8, 2.0))
    ball = sum((np.indices(noise.shape).T - (24, 80, 80)).T ** 2) < 50**2
    volume = np.where(ball, fine / fine.std(), coarse / coarse.std()).astype(np.float32)
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "volume.zarr"
        zarr.save_array(str(path), volume, chunks=(16, 40, 40))
        lazy = dask.feature_maps(path, 7, names=["contrast"], levels=16, range=(-3, 3), chunks=40)
        contrast = lazy["contrast"].compute()
    whole = texture.feature_maps(volume, 7, names=["contrast"], levels=16, range=(-3, 3))
    figure, axes = plt.subplots(1, 2, figsize=(11, 4.8), layout="constrained")
    axes[0].imshow(volume[24], cmap="gray")
    shown = axes[1].imshow(contrast[24], cmap="viridis")
    equal = "equal" if np.array_equal(contrast, whole["contrast"]) else "not equal"
    figure.colorbar(shown, ax=axes[1], shrink=0.8)
    axes[0].set(title="a slice of the volume and the chunks", xticks=[], yticks=[])
    axes[1].set(title=f"contrast, {equal} to the whole's", xticks=[], yticks=[])
    axes[0].hlines((40, 80, 120), 0, 159, color="tab:orange", linewidth=0.8)
    axes[0].vlines((40, 80, 120), 0, 159, color="tab:orange", linewidth=0.8)
    return figure


if __name__ == "__main__":
    picture().savefig("dask_volume.png")
