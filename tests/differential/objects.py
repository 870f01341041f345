"""Features of labeled objects against the pairs of each object counted by itself."""
import math

import numpy as np
from seluutils import texture

from common import expect, expect_close, offset
from counting import counts, image_of, mask_of
from features import Matrix, tolerance_of
from windows import mean_features


def case(chance):
    n = chance.choice((1, 2, 5))
    image = image_of(chance, n + 1, (np.uint8, np.uint16), most=9)
    generator = np.random.default_rng(chance.getrandbits(64))
    kind = chance.choice((np.uint8, np.int16, np.uint32, np.int64))
    numbers = np.array([0, *chance.sample(range(1, 120), chance.choice((1, 1, 2, 4)))])
    labels = generator.choice(numbers, image.shape).astype(kind)
    mask, kept = mask_of(chance, image.shape)
    ways = [offset(chance, chance.choice((1, 1, 2)), image.ndim) for _ in range(chance.choice((1, 2, 3)))]
    names = chance.sample(texture.IBSI_FEATURES, 4)
    symmetric, aggregate = chance.random() < 0.5, chance.choice(("mean", "sum"))
    text = (f"{image.tolist()}, labels {labels.tolist()}, mask {None if mask is None else mask.tolist()}, "
            f"{ways}, {aggregate}, symmetric {symmetric}")
    given = texture.object_features(image, labels, names=names, offset=ways, aggregate=aggregate, levels=n,
                                    mask=mask, symmetric=symmetric)
    found = sorted(set(labels.ravel().tolist()) - {0})
    expect(given["label"].tolist(), found, f"labels of {text}")
    expect(given["voxels"].tolist(), [int((labels == label).sum()) for label in found], f"voxels of {text}")
    for k, label in enumerate(found):
        within = kept & (image > 0) & (labels == label)
        if aggregate == "sum":
            matrix = Matrix(sum(counts(image, way, within, n, symmetric, low=1) for way in ways))
            wanted = {name: matrix.of(name) if matrix.p else math.nan for name in names}
        else:
            wanted = mean_features(image, within, ways, names, symmetric, n)
        for name in names:
            expect_close(float(given[name][k]), wanted[name], tolerance_of(name), f"{name} of {label} in {text}")
