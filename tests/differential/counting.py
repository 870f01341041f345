"""Co-occurrence matrices against slices of NumPy's, for every layout of the image in memory."""
import numpy as np
from seluutils import texture

from common import Difference, offset

KINDS = (np.uint8, np.uint16, np.uint32, np.int8, np.int16, np.int32)


def image_of(chance, values, kinds=KINDS, most=9, ndim=None):
    """Values below that number, in any type, with any strides."""
    ndim = ndim or chance.choice((2, 3))
    shape = tuple(0 if chance.random() < 0.01 else chance.randint(1, most) for _ in range(ndim))
    steps = [chance.choice((1, 1, 1, 2, -1, -2)) for _ in range(ndim)]
    order = chance.sample(range(ndim), ndim) if chance.random() < 0.3 else list(range(ndim))
    whole = np.empty([shape[axis] * abs(steps[axis]) for axis in order], chance.choice(kinds))
    generator = np.random.default_rng(chance.getrandbits(64))
    whole[...] = generator.integers(0, values, whole.shape)
    turned = whole.transpose([order.index(axis) for axis in range(ndim)])
    return turned[tuple(slice(None, None, step) for step in steps)]


def pairs(image, way, kept):
    """The values of first and second voxels that are both kept."""
    first = tuple(slice(max(0, -d), max(0, n - max(0, d))) for n, d in zip(image.shape, way))
    second = tuple(slice(max(0, d), max(0, n - max(0, -d))) for n, d in zip(image.shape, way))
    if any(abs(d) >= n for n, d in zip(image.shape, way)):
        return image[:0].ravel(), image[:0].ravel()
    both = kept[first] & kept[second]
    return image[first][both], image[second][both]


def counts(image, way, kept, levels, symmetric, low=0):
    first, second = (part.astype(np.int64) - low for part in pairs(image, way, kept))
    found = np.bincount(first * levels + second, minlength=levels * levels).reshape(levels, levels)
    return found + found.T if symmetric else found


def mask_of(chance, shape):
    """A mask or None, and which voxels it keeps."""
    if chance.random() < 0.6:
        return None, np.ones(shape, bool)
    generator = np.random.default_rng(chance.getrandbits(64))
    kept = generator.random(shape) < chance.choice((0.3, 0.8, 0.95))
    kind = chance.choice((bool, np.uint8, np.int32, np.uint16))
    return kept.astype(kind) * (1 if kind is bool else kind(chance.choice((1, 7, 100)))), kept


def expect_counts(given, wanted, text):
    if given.dtype != np.uint64 or not np.array_equal(given, np.asarray(wanted, np.uint64)):
        raise Difference(f"{text}: {given.tolist()} instead of {np.asarray(wanted).tolist()}"[:1500])


def case(chance):
    levels = chance.choice((1, 2, 3, 8, 40, 127))
    image = image_of(chance, levels)
    ways = [offset(chance, chance.choice((1, 2, 9)), image.ndim) for _ in range(chance.choice((1, 1, 2, 4)))]
    mask, kept = mask_of(chance, image.shape)
    symmetric = chance.random() < 0.3
    given = texture.cooccurrence(image, ways, levels=levels, mask=mask, symmetric=symmetric)
    wanted = [counts(image, way, kept, levels, symmetric) for way in ways]
    expect_counts(given, wanted, f"{image.dtype} {image.shape} {image.strides} {ways} of {image.tolist()}, "
                  f"mask {mask is not None}, symmetric {symmetric}")
