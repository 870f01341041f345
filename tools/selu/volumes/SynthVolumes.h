// Sample images made from random numbers: the same seed gives the same voxels on every platform.
//
//   ORVA::CImage image = MakeLayers(ORVA::CSize(64, 64, 64), 7, &observer);
//   // its contrast along (1, -1, 0), inside a layer, is smallest; along (1, 1, 1), across, largest
#pragma once

#include <SeluBase/Algorithm.h>
#include <pxlib2image/Image.h>

namespace selu {

/// All make an 8-bit image, seed the random source, and advance the observer (may be null) once a
/// slice and pass (see the constants below). O(voxels).

/// Independent uniform gray values.
[[nodiscard]] ORVA::CImage MakeNoise(ORVA::CSize const& size, ORVA::uint64 seed,
                                     ORVA::IProgressObserver* observer);
/// A continuous random field: noise smoothed over about ten voxels, its mean at 128 and three
/// deviations at 0 and 255. Needs 4 more bytes per voxel.
[[nodiscard]] ORVA::CImage MakeBlobs(ORVA::CSize const& size, ORVA::uint64 seed,
                                     ORVA::IProgressObserver* observer);
/// Layers of random thickness and gray value, with a little noise, whose normal is (1, 1, 1) (in 2D
/// (1, 1)): gray values depend on x + y + z only. So the contrast along a direction grows with
/// |dx + dy + dz|: it is smallest in a layer's plane, where that is 0, and largest across.
[[nodiscard]] ORVA::CImage MakeLayers(ORVA::CSize const& size, ORVA::uint64 seed,
                                      ORVA::IProgressObserver* observer);

/// How often each of them advances the observer, divided by the slices.
inline constexpr int c_noisePasses = 1, c_blobPasses = 11, c_layerPasses = 1;

} // namespace selu
