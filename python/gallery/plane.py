"""An oblique plane through a volume: its voxels in place, and laid flat."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure

from seluutils import draw

SHAPE = (80, 80, 80)


def picture() -> Figure:
    z, y, x = np.indices(SHAPE) / 12.0
    volume = np.sin(x) * np.cos(y) + np.sin(y) * np.cos(z) + np.sin(z) * np.cos(x)  # a gyroid
    points = draw.plane(SHAPE, normal=(2, 1, 1), distance=160)
    values = draw.profile(volume, points)
    flat = np.full(SHAPE[1:], np.nan)  # along z, the largest part of the normal
    flat[points[:, 1], points[:, 2]] = values
    figure = plt.figure(figsize=(11, 5), layout="constrained")
    axes = figure.add_subplot(1, 2, 1, projection="3d")
    axes.scatter(*points[:, ::-1].T, c=values, s=4, cmap="coolwarm")
    axes.set(xlabel="x", ylabel="y", zlabel="z", title=f"{len(points)} voxels of a plane")
    for k, limits in enumerate((axes.set_xlim, axes.set_ylim, axes.set_zlim)):
        limits(0, SHAPE[2 - k])
    axes = figure.add_subplot(1, 2, 2)
    shown = axes.imshow(flat, cmap="coolwarm")
    axes.set(title="the same, seen along z", xlabel="x", ylabel="y")
    figure.colorbar(shown, ax=axes, shrink=0.8)
    return figure


if __name__ == "__main__":
    picture().savefig("plane.png")
