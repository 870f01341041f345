// Sample images made from random numbers: the same seed gives the same voxels on every platform.
//
//   MakeLayers(ORVA::CSize(64, 64, 64), 7, [&](auto voxels) { writer.Write(voxels); }, &observer);
//   // its contrast along (1, -1, 0), inside a layer, is smallest; along (1, 1, 1), across, largest
#pragma once

#include <SeluBase/Algorithm.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <functional>
#include <span>

namespace selu {

/// Takes the next voxels of an 8-bit image, one slice along z or several.
using TakeVoxels = std::function<void(std::span<std::byte const> voxels)>;

/// All make an 8-bit image, seed the random source, and advance the observer (may be null) once a
/// slice and pass (see the constants below). O(voxels), and where nothing else is said memory for
/// one slice.

/// Independent uniform gray values.
void MakeNoise(ORVA::CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
               ORVA::IProgressObserver* observer);
/// A continuous random field: noise smoothed over about ten voxels, its mean at 128 and three
/// deviations at 0 and 255. Needs BlobBytes() of memory. A field that does not fit into SlabBytes()
/// is made three times: for its mean, its deviation and its gray values.
void MakeBlobs(ORVA::CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
               ORVA::IProgressObserver* observer);
/// Of the slices that are smoothed together: up to 149 bytes per voxel of a slice.
[[nodiscard]] double BlobBytes(ORVA::CSize const& size);
/// Layers of random thickness and gray value, with a little noise, whose normal is (1, 1, 1) (in 2D
/// (1, 1)): gray values depend on x + y + z only. So the contrast along a direction grows with
/// |dx + dy + dz|: it is smallest in a layer's plane, where that is 0, and largest across.
void MakeLayers(ORVA::CSize const& size, ORVA::uint64 seed, TakeVoxels const& take,
                ORVA::IProgressObserver* observer);

/// How often each of them advances the observer, divided by the slices.
inline constexpr int c_noisePasses = 1, c_blobPasses = 3, c_layerPasses = 1;

} // namespace selu
