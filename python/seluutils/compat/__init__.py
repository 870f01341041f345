"""The functions of other packages, with their arguments and their numbers.

A program changes an import and keeps the rest:

======================  =================================  =================================
module                  in place of                        functions
======================  =================================  =================================
``compat.skimage``      ``skimage.feature``                ``graycomatrix``, ``graycoprops``
``compat.mahotas``      ``mahotas.features``               ``haralick``
``compat.pyradiomics``  ``radiomics.glcm.RadiomicsGLCM``   ``glcm_features``
======================  =================================  =================================

What differs stands in the docstring of each function.
"""

from __future__ import annotations

from . import mahotas, pyradiomics, skimage

__all__ = ["mahotas", "pyradiomics", "skimage"]
