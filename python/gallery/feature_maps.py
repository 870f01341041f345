"""A mosaic of three textures, and maps of features that show its parts."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure
from skimage import data, exposure

from seluutils import texture

NAMES = ["contrast", "joint_entr", "corr"]


def picture() -> Figure:
    # Each with the same share of every gray level, so that only the texture differs.
    brick, grass, gravel = (
        exposure.equalize_hist(image[:256, :256])
        for image in (data.brick(), data.grass(), data.gravel())
    )
    y, x = np.mgrid[-128:128, -128:128]
    mosaic = np.where(x < -30, brick, grass)
    mosaic[np.hypot(x - 30, y) < 70] = gravel[np.hypot(x - 30, y) < 70]
    maps = texture.feature_maps(mosaic, 21, names=NAMES, distances=[1, 2], bin_count=16)
    figure, axes = plt.subplots(1, 4, figsize=(14, 3.6), layout="constrained")
    axes[0].imshow(mosaic, cmap="gray")
    axes[0].set(title="brick, grass and gravel")
    for axis, (name, values) in zip(axes[1:], maps.items()):
        shown = axis.imshow(values, cmap="viridis")
        figure.colorbar(shown, ax=axis, shrink=0.8)
        axis.set(title=f"{name}, windows of 21 x 21")
    for axis in axes:
        axis.set(xticks=[], yticks=[])
    return figure


if __name__ == "__main__":
    picture().savefig("feature_maps.png")
