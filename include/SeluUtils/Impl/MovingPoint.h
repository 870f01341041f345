// The position of a walker, which moves at every call.
//
//   Impl::StMovingPoint position(CTriple<int64>(5, 5, 0));
//   position.MoveBy({1, 0, 0});
//   CTriple<int64> const point = position.Get();       // (6, 5, 0)
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// Its coordinates stand apart in memory. Side by side, compilers would write two of them as a
/// vector and read them singly, or the other way round, and each step would wait until the store of
/// the step before has reached the cache: twice the time of a walk.
struct StMovingPoint {
  constexpr StMovingPoint() noexcept = default;
  constexpr explicit StMovingPoint(CTriple<int64> const& p) noexcept : x(p.x), y(p.y), z(p.z) {}

  [[nodiscard]] constexpr CTriple<int64> Get() const noexcept { return {x, y, z}; }
  constexpr void MoveBy(CTriple<int64> const& move) noexcept {
    x += move.x;
    y += move.y;
    z += move.z;
  }

  int64 x = 0, gapXY = 0;
  int64 y = 0, gapYZ = 0;
  int64 z = 0;
};

} // namespace ORVA::Impl
