// The two halves of a polygon walk: finding the plane, and filling the polygon seen in it.
#pragma once

#include "Utils/Exact.h"

#include <SeluUtils/PolygonVisitor.h>
#include <pxlib2core/Exception.h>

#include <span>
#include <vector>

namespace ORVA::Impl {

using Ring = std::vector<CTriple<int64>>;

inline constexpr char c_polygonModule[] = "src/Utils/PolygonVisitor";
inline constexpr char c_polygonConstructor[] = "ORVA::CPolygonVisitor::CPolygonVisitor";

/// The plane z = const of the corners; CExBadParam where they have none.
[[nodiscard]] StPolygonPlane FlatPlane(std::span<Ring const> rings);
/// The plane through all corners, in whatever direction; CExBadParam where they have none. Corners
/// in a line lie in a plane along it.
[[nodiscard]] StPolygonPlane ObliquePlane(std::span<Ring const> rings);

/// The runs of a polygon in the plane z = 0, in scan order, disjoint.
[[nodiscard]] std::vector<StPolygonRun> FillPolygon(std::span<Ring const> rings, int64 neighborhood,
                                                    bool border);

} // namespace ORVA::Impl
