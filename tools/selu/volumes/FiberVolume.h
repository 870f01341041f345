// A volume of straight fibers, slab by slab.
//
//   StRotations generator = MakeRotations(CParameters::FromText("vmf,kappa=20"));
//   ORVA::CRandom::Obj().Seed(7);
//   MakeFibers({ORVA::CSize(64, 64, 64), 100, 3.0}, *generator.draw,
//              [&](auto voxels) { writer.Write(voxels); }, &observer);
#pragma once

#include <SeluBase/Algorithm.h>
#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Triple.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <functional>
#include <span>
#include <vector>

namespace selu {

using FiberGenerator = ORVA::IRandomGenerator<ORVA::CEulerRotation>;

struct StFibers {
  ORVA::CSize size;
  ORVA::int64 count = 0;
  double radius = 1; ///< in voxels
};

/// An 8-bit image, 0 outside and 255 inside the fibers, with a soft edge of one voxel, given to
/// `take` in parts, slices in ascending order. Each fiber is a cylinder that runs through the whole
/// box; a point on its axis is uniform in the box, its direction the rotation's direction vector.
/// For each fiber first the point is drawn, then the rotation, so that the same random numbers give
/// the same voxels whatever SlabBytes() is. Fibers may cross. The observer (may be null) advances
/// FiberSteps() times. O(voxels of the fibers' boxes); memory for a slab and, where there are
/// several, 48 bytes per fiber. Throws CAppError where these do not fit.
void MakeFibers(StFibers const& fibers, FiberGenerator& generator,
                std::function<void(std::span<std::byte const> voxels)> const& take,
                ORVA::IProgressObserver* observer);
/// Fibers times slabs.
[[nodiscard]] ORVA::int64 FiberSteps(StFibers const& fibers);

} // namespace selu
