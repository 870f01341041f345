// A volume of straight fibers.
//
//   StRotations generator = MakeRotations(CParameters::FromText("vmf,kappa=20"));
//   ORVA::CRandom::Obj().Seed(7);
//   ORVA::CImage image = MakeFibers(ORVA::CSize(64, 64, 64), 100, 3.0, *generator.draw, &observer);
#pragma once

#include <SeluBase/Algorithm.h>
#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <pxlib2image/Image.h>

namespace selu {

/// An 8-bit image, 0 outside and 255 inside the fibers, with a soft edge of one voxel. Each fiber
/// is a cylinder of this radius in voxels that runs through the whole box; a point on its axis is
/// uniform in the box, its direction the rotation's direction vector. For each fiber first the
/// point is drawn, then the rotation. Fibers may cross. The observer (may be null) advances once a
/// fiber. O(voxels of the fibers' boxes).
[[nodiscard]] ORVA::CImage MakeFibers(ORVA::CSize const& size, ORVA::int64 count, double radius,
                                      ORVA::IRandomGenerator<ORVA::CEulerRotation>& generator,
                                      ORVA::IProgressObserver* observer);

} // namespace selu
