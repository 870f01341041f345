"""Coins found in a photograph, each colored by the entropy of its texture."""

import matplotlib.pyplot as plt
import numpy as np
from matplotlib.figure import Figure
from scipy import ndimage
from skimage import data, filters, measure, morphology

from seluutils import texture


def picture() -> Figure:
    image = data.coins()
    edges = filters.sobel(image)
    seeds = np.where(image < 30, 1, np.where(image > 150, 2, 0))
    coins = ndimage.binary_fill_holes(ndimage.watershed_ift((edges * 255).astype("u1"), seeds) == 2)
    labels = measure.label(morphology.remove_small_objects(coins, 300))
    table = texture.object_features(image, labels, names=["joint_entr"], bin_count=32)
    entropy = np.full(labels.max() + 1, np.nan)
    entropy[table["label"]] = table["joint_entr"]
    figure, axes = plt.subplots(1, 2, figsize=(12, 4.8), layout="constrained")
    axes[0].imshow(image, cmap="gray")
    axes[0].set(title="coins", xticks=[], yticks=[])
    axes[1].imshow(image, cmap="gray")
    shown = axes[1].imshow(entropy[labels], cmap="plasma", alpha=0.8)
    axes[1].set(title=f"joint entropy of {len(table['label'])} objects", xticks=[], yticks=[])
    figure.colorbar(shown, ax=axes[1], shrink=0.8, label="bits")
    return figure


if __name__ == "__main__":
    picture().savefig("objects.png")
