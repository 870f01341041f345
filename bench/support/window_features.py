#!/usr/bin/env python3
"""Texture around pixels, cut-out by cut-out with scikit-image; prints the seconds for one pixel.

Usage: window_features.py FILE SIDE LEVELS WINDOW PIXELS

FILE has SIDE x SIDE bytes, levels from 0 on. The six properties of graycoprops are computed from
matrices of four angles, for PIXELS windows that lie in the image, spread evenly.
"""
import sys
import time

import numpy
from skimage.feature import graycomatrix, graycoprops

PROPERTIES = ("contrast", "dissimilarity", "homogeneity", "energy", "correlation", "ASM")
ANGLES = (0, numpy.pi / 4, numpy.pi / 2, 3 * numpy.pi / 4)


def main():
    path, side, levels, window, pixels = sys.argv[1], *map(int, sys.argv[2:6])
    image = numpy.fromfile(path, dtype=numpy.uint8).reshape(side, side)
    centers = numpy.linspace(window // 2, side - window // 2 - 1, pixels).astype(int)
    start = time.process_time()
    for x in centers:
        y = (x * 7919) % (side - window + 1)
        cut = image[y : y + window, x - window // 2 : x + window // 2 + 1]
        matrix = graycomatrix(cut, [1], ANGLES, levels=levels)
        for name in PROPERTIES:
            graycoprops(matrix, name).mean()
    print((time.process_time() - start) / pixels)


if __name__ == "__main__":
    main()
