"""The direction of a texture: the correlation at every offset, around the middle."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure
from skimage import data

from seluutils import texture

REACH = 40


def picture() -> Figure:
    images = {"brick": data.brick(), "grass": data.grass(), "gravel": data.gravel()}
    steps = np.arange(-REACH, REACH + 1, 2)
    offsets = np.stack(np.meshgrid(steps, steps, indexing="ij"), axis=-1).reshape(-1, 2)
    figure, axes = plt.subplots(2, 3, figsize=(10.5, 7), layout="constrained")
    for (above, below), (name, image) in zip(axes.T, images.items()):
        levels = texture.quantize(image, bin_count=16)
        found = texture.features(levels, offsets, definition="ibsi", names=["corr"])
        above.imshow(image, cmap="gray")
        above.set(title=name, xticks=[], yticks=[])
        shown = below.imshow(
            found["corr"].reshape(len(steps), -1), cmap="magma", vmax=0.7,
            extent=(-REACH, REACH, REACH, -REACH),
        )  # fmt: skip
        below.set(title="correlation by offset", xlabel="dx", ylabel="dy")
        figure.colorbar(shown, ax=below, shrink=0.8)
    return figure


if __name__ == "__main__":
    picture().savefig("directions.png")
