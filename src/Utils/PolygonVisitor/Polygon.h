// The two halves of a polygon walk: finding the plane, and filling the polygon seen in it.
#pragma once

#include <SeluUtils/PolygonVisitor.h>
#include <pxlib2core/Exception.h>

#include <span>
#include <vector>

namespace ORVA::Impl {

__extension__ using int128 = __int128;

using Ring = std::vector<CTriple<int64>>;

inline constexpr char c_polygonModule[] = "src/Utils/PolygonVisitor";
inline constexpr char c_polygonConstructor[] = "ORVA::CPolygonVisitor::CPolygonVisitor";

/// a / b rounded down, for b > 0.
template <class Integer>
[[nodiscard]] constexpr Integer FloorDivide(Integer a, Integer b) noexcept {
  return a / b - (a % b < 0 ? 1 : 0);
}

/// (u, v, w) of a triple: w is the component along the dominant axis, u and v are the others in
/// their order.
[[nodiscard]] constexpr CTriple<int64> SeenAlong(int dominantAxis,
                                                 CTriple<int64> const& p) noexcept {
  if (dominantAxis == 2) return p;
  if (dominantAxis == 1) return {p.x, p.z, p.y};
  return {p.y, p.z, p.x};
}

/// The plane z = const of the corners; CExBadParam where they have none.
[[nodiscard]] StPolygonPlane FlatPlane(std::span<Ring const> rings);
/// The plane through all corners, in whatever direction; CExBadParam where they have none. Corners
/// in a line lie in a plane along it.
[[nodiscard]] StPolygonPlane ObliquePlane(std::span<Ring const> rings);

/// The runs of a polygon in the plane z = 0, in scan order, disjoint.
[[nodiscard]] std::vector<StPolygonRun> FillPolygon(std::span<Ring const> rings, int64 neighborhood,
                                                    bool border);

} // namespace ORVA::Impl
