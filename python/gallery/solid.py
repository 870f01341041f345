"""A solid given by its corners and faces, filled exactly, and cut open."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure

from seluutils import draw

# A square frame: the outer and the inner outline at the bottom, then the same at the top.
SQUARE = [(0, 0), (0, 20), (20, 20), (20, 0)]
INNER = [(6, 6), (6, 14), (14, 14), (14, 6)]
CORNERS = [(z, y, x) for z in (0, 7) for y, x in SQUARE + INNER]
SIDES = [[a, (a + 1) % 4 + a // 4 * 4, (a + 1) % 4 + a // 4 * 4 + 8, a + 8] for a in range(8)]
LIDS = [[k + t, (k + 1) % 4 + t, (k + 1) % 4 + 4 + t, k + 4 + t] for t in (0, 8) for k in range(4)]


def picture() -> Figure:
    frame = draw.solid(CORNERS, SIDES + LIDS)
    ball = draw.ellipsoid((3.5, 10, 10), 3)
    voxels = np.zeros((21, 21, 8), np.uint8)  # x, y, z, as Matplotlib has them
    draw.paint(voxels, frame[:, ::-1], 1)
    draw.paint(voxels, ball[:, ::-1], 2)
    cut = voxels.copy()
    cut[10:, :10] = 0
    colors = np.array(["none", "tab:blue", "tab:orange"])
    figure = plt.figure(figsize=(11, 5), layout="constrained")
    for k, (shown, title) in enumerate(((voxels, "a frame and a ball"), (cut, "cut open"))):
        axes = figure.add_subplot(1, 2, k + 1, projection="3d", title=title)
        axes.voxels(shown > 0, facecolors=colors[shown], edgecolor="k", linewidth=0.1)
        axes.set_box_aspect(shown.shape)
        axes.set(xlabel="x", ylabel="y", zlabel="z")
    return figure


if __name__ == "__main__":
    picture().savefig("solid.png")
