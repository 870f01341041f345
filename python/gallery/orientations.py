"""Laws of directions on the sphere, two thousand draws of each."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure

from seluutils import random

LAWS = {
    "isotropic": random.Isotropic(),
    "Watson, kappa 8": random.Watson(8, (1, 0, 1)),
    "Watson, kappa -8": random.Watson(-8, (1, 0, 1)),
    "von Mises-Fisher, kappa 20": random.VonMisesFisher(20, (0, -1, 0.5)),
    "girdle, beta 0.2": random.Girdle(0.2, (0, 0, 1)),
    "girdle, beta 5": random.Girdle(5, (0, 0, 1)),
}


def picture() -> Figure:
    source = random.Source(2026)
    figure = plt.figure(figsize=(11, 7.6), layout="constrained")
    for k, (name, law) in enumerate(LAWS.items()):
        x, y, z = law.directions_xyz(2000, source).T
        axes = figure.add_subplot(2, 3, k + 1, projection="3d")
        front = x - y + z  # nearer to the eye is darker
        axes.scatter(x, y, z, c=front, s=3, cmap="Blues", vmin=-3)
        turn = np.linspace(0, 2 * np.pi, 100)
        axes.plot(np.cos(turn), np.sin(turn), 0 * turn, color="gray", linewidth=0.8)
        axes.set(title=name, xticks=[], yticks=[], zticks=[])
        for label, write in zip("xyz", (axes.set_xlabel, axes.set_ylabel, axes.set_zlabel)):
            write(label, labelpad=-12)
        axes.set_box_aspect((1, 1, 1))
        axes.set(xlim=(-1, 1), ylim=(-1, 1), zlim=(-1, 1))
    return figure


if __name__ == "__main__":
    picture().savefig("orientations.png")
