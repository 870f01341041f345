"""The mean of the pixels inside an outline with a hole, and of those on a line."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure
from skimage import data

from seluutils import draw

OUTLINE = [(60, 150), (120, 330), (330, 420), (460, 260), (360, 230), (380, 90), (200, 60)]
HOLE = [(180, 160), (200, 260), (290, 250), (270, 150)]


def picture() -> Figure:
    image = data.gravel()
    points = draw.polygon(OUTLINE, holes=[HOLE])
    values = draw.profile(image, points)
    shown = np.stack([image] * 3, axis=-1)
    shown[tuple(points.T)] = shown[tuple(points.T)] * (0.55, 0.75, 0.55) + (90, 50, 0)
    figure, axes = plt.subplots(1, 2, figsize=(11, 4.8), layout="constrained")
    axes[0].imshow(shown)
    axes[0].set(title=f"{len(points)} pixels of a polygon with a hole", xticks=[], yticks=[])
    axes[1].hist(image.ravel(), bins=64, density=True, alpha=0.5, label="whole image")
    axes[1].hist(values, bins=64, density=True, alpha=0.5, label="polygon")
    axes[1].axvline(values.mean(), color="black", label=f"mean {values.mean():.2f}")
    axes[1].set(xlabel="gray value", ylabel="density")
    axes[1].legend()
    return figure


if __name__ == "__main__":
    picture().savefig("polygon.png")
