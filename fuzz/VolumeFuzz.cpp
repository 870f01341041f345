// Solids between digital edges: any path, any pairs of ends.
#include "Fuzzing.h"

#include <SeluUtils/VolumeVisitor.h>

using namespace ORVA;
using namespace fuzz;

namespace {

// Border points take memory: the library allows edges of 2^31 points, this target short ones.
constexpr uint64 c_mostSpread = 300;

struct StSolid {
  PointList from, to;
  int64 neighborhood;
  bool isPath, isWithBorder;

  [[nodiscard]] PointList All() const {
    PointList all = from;
    all.insert(all.end(), to.begin(), to.end());
    return all;
  }
};

StSolid TakeSolid(CInput& input) {
  StSolid solid{};
  solid.isPath = input.Flag();
  solid.isWithBorder = input.Flag();
  solid.neighborhood = input.Neighborhood();
  bool const isFar = input.Byte() % 8 == 0;
  int64 const reach = input.Flag() ? 8 : 60;
  auto const next = [&] {
    return isFar ? input.AnyPoint() : input.SmallPoint(reach) + Point(reach, 0, 0);
  };
  solid.from = input.List(12, next);
  if (!solid.isPath) {
    for (std::size_t k = 0; k < solid.from.size(); ++k) solid.to.push_back(next());
    if (input.Byte() == 255) solid.to.emplace_back();
  } else if (input.Flag() && !solid.from.empty()) {
    solid.from.push_back(solid.from.front());
  }
  return solid;
}

bool IsNumbered(Point const& p) {
  return p.x >= 0 && p.x <= std::numeric_limits<std::int32_t>::max();
}

// Four edges along x are enough for a cuboid, which must be filled to the last voxel.
void CheckCuboid(CInput& input) {
  Point const low = input.PointBetween(0, 9), high = low + input.PointBetween(2, 9);
  bool const isWithBorder = input.Flag();
  PointList from, to;
  for (int64 corner = 0; corner < 4; ++corner) {
    int64 const y = (corner & 1) != 0 ? high.y : low.y, z = (corner & 2) != 0 ? high.z : low.z;
    from.emplace_back(low.x, y, z);
    to.emplace_back(high.x, y, z);
  }
  CBresenhamVolumeVisitor const solid(from, to, input.Flag() ? NEIGHBORHOOD_6 : NEIGHBORHOOD_26,
                                      isWithBorder);
  int64 const margin = isWithBorder ? 0 : 1;
  PointList expected;
  for (int64 x = low.x + margin; x <= high.x - margin; ++x)
    for (int64 y = low.y + margin; y <= high.y - margin; ++y)
      for (int64 z = low.z + margin; z <= high.z - margin; ++z) expected.emplace_back(x, y, z);
  Require(Sorted(CheckWalk(solid)) == expected, "a cuboid is filled");
}

void CheckHull(CInput& input) {
  bool const isFar = input.Flag();
  PointList const points =
      input.List(20, [&] { return isFar ? input.AnyPoint() : input.SmallPoint(6); });
  auto const path = Try([&] { return CBresenhamVolumeVisitor::ConvertListToPath(points); });
  if (!path) return Require(points.empty() || isFar, "points have a hull");
  Require(!path->empty(), "a hull has a point");
  if (isFar) return;
  for (std::size_t k = 1; k < path->size(); ++k) {
    Point const& a = (*path)[k - 1];
    Point const& b = (*path)[k];
    for (auto const& p : points)
      Require((b.x - a.x) * (p.y - a.y) - (b.y - a.y) * (p.x - a.x) <= 0,
              "no point lies beyond a side of the hull");
  }
}

void CheckSolid(CInput& input) {
  StSolid const kept = TakeSolid(input);
  auto const all = kept.All();
  bool const isNumbered = std::ranges::all_of(all, IsNumbered);
  if (Spread(all) > c_mostSpread && isNumbered) return;
  StSolid taken = kept;
  auto const solid = Try([&] {
    return kept.isPath ? CBresenhamVolumeVisitor(taken.from, taken.neighborhood, taken.isWithBorder)
                       : CBresenhamVolumeVisitor(taken.from, taken.to, taken.neighborhood,
                                                 taken.isWithBorder);
  });
  if (!solid)
    return Require(taken.from == kept.from && taken.to == kept.to,
                   "a solid that is refused leaves its points alone");
  Require(taken.from.empty() && taken.to.empty(), "the points were taken over");
  Require(isNumbered, "slices are numbered from 0 to 2^31 - 1");
  PointList const points = CheckWalk(*solid);
  if (!all.empty()) RequireInside(points, BoxOf(all), "a solid lies in the box of its points");
  RequireDistinct(points, "a solid has each voxel once");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 5)) {
  case 0:
    CheckCuboid(input);
    break;
  case 1:
    CheckHull(input);
    break;
  default:
    CheckSolid(input);
  }
  return 0;
}
