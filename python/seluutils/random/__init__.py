"""Random numbers, directions, rotations and points, the same from the same source.

Laws draw from a :class:`Source`. Where none is given, a call draws from the system's entropy, and
each call anew. What a source gives depends on its seed and stream alone, on every machine. Threads
and processes take a stream each; :func:`draws` does that for the parts of one large array.

Directions, rotations and points of space are Cartesian: (x, y, z). Angles are in radians.

The laws are exact to their tails. With ``exact=False`` they are those of the library's older
generators, from 32 random bits, for results that have to stay as they were.

>>> from seluutils import random
>>> random.Normal(10, 2).sample(3, random.Source(seed=42)).round(4)
array([12.1618,  9.0938,  7.1377])
"""

from __future__ import annotations

from ._blocks import draws
from ._numbers import (
    ChordLength,
    CircleDiameter,
    Discrete,
    Exponential,
    Gamma,
    LogNormal,
    Normal,
    Poisson,
    PressedDirections,
    Rayleigh,
    Uniform,
)
from ._points import Ball, Box, Disc, Sphere
from ._rotations import Fixed, Girdle, Isotropic, Mixture, VonMisesFisher, Watson
from ._source import Source

__all__ = [
    "Ball",
    "Box",
    "ChordLength",
    "CircleDiameter",
    "Disc",
    "Discrete",
    "Exponential",
    "Fixed",
    "Gamma",
    "Girdle",
    "Isotropic",
    "LogNormal",
    "Mixture",
    "Normal",
    "Poisson",
    "PressedDirections",
    "Rayleigh",
    "Source",
    "Sphere",
    "Uniform",
    "VonMisesFisher",
    "Watson",
    "draws",
]
