"""Fibers drawn about an axis, and the axis found again by the texture alone."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure

from seluutils import draw, random, texture

SHAPE = np.array((96, 96, 96))  # z, y, x
AXIS_XYZ = (0.8, 0.6, 0.0)


def volume_of_fibers() -> np.ndarray[tuple[int, ...], np.dtype[np.uint8]]:
    volume = np.ones(SHAPE, np.uint8)
    source = random.Source(7)
    directions = random.Watson(60, AXIS_XYZ).directions_xyz(600, source)
    middles = random.Box((0, 0, 0), SHAPE[::-1].tolist()).points_xyz(600, source)
    for middle, half in zip(middles[:, ::-1], directions[:, ::-1] * 25):
        ends = np.rint([middle - half, middle + half]).astype(np.int64)
        draw.paint(volume, draw.line(*ends), 2, outside="skip")
    return volume


def picture() -> Figure:
    volume = volume_of_fibers()
    angles = np.radians(np.arange(0, 180, 5))
    offsets = np.rint(np.stack([0 * angles, np.sin(angles), np.cos(angles)], 1) * 12)
    found = texture.features(volume, offsets.astype(int), definition="ibsi", names=["corr"])
    figure = plt.figure(figsize=(10, 4.6), layout="constrained")
    figure.add_subplot(1, 2, 1, title="all fibers, from above").imshow(volume.sum(0), cmap="bone")
    polar = figure.add_subplot(1, 2, 2, projection="polar", title="correlation at 12 voxels")
    polar.plot(np.append(angles, angles + np.pi), np.tile(found["corr"], 2))
    polar.axvline(np.arctan2(*AXIS_XYZ[1::-1]), color="tab:red", label="axis of the law")
    polar.legend(loc="lower left")
    polar.set_theta_direction(-1)  # y goes down, as in the picture
    return figure


if __name__ == "__main__":
    picture().savefig("fibers.png")
