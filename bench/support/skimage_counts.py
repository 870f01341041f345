"""Times skimage.feature.graycomatrix on a random image; prints the seconds of the fastest call.

usage: skimage_counts.py SIDE LEVELS
"""
import sys
import time

import numpy
from skimage.feature import graycomatrix

side, levels = int(sys.argv[1]), int(sys.argv[2])
image = numpy.random.default_rng(1).integers(0, levels, (side, side)).astype(numpy.uint16)
best = float("inf")
for _ in range(3):
    start = time.process_time()
    graycomatrix(image, [1], [0], levels=levels)
    best = min(best, time.process_time() - start)
print(best)
