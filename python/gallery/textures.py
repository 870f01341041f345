"""Brick, grass and gravel, and what tells them apart: IBSI's features of 32 gray levels."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure
from skimage import data

from seluutils import texture

NAMES = ["contrast", "corr", "joint_entr", "energy", "inv_diff", "clust_shade"]


def picture() -> Figure:
    images = {"brick": data.brick(), "grass": data.grass(), "gravel": data.gravel()}
    figure, axes = plt.subplots(2, 3, figsize=(10, 7), layout="constrained")
    rows = []
    for axis, (name, image) in zip(axes[0], images.items()):
        axis.imshow(image, cmap="gray")
        axis.set(title=name, xticks=[], yticks=[])
        found = texture.features(
            image, definition="ibsi", names=NAMES, aggregate="mean", bin_count=32
        )
        rows.append([found[feature] for feature in NAMES])
    table = np.array(rows)
    scaled = table / np.abs(table).max(axis=0)
    for axis, values, shares in zip(axes[1], table, scaled):
        bars = axis.barh(NAMES, shares, color="tab:blue")
        axis.bar_label(bars, [f"{value:.3g}" for value in values], padding=3)
        axis.set(xlim=(-0.7, 2), xticks=[])
        axis.invert_yaxis()
        axis.axvline(0, color="black", linewidth=0.8)
    return figure


if __name__ == "__main__":
    picture().savefig("textures.png")
