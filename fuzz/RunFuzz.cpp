// Walks by runs: the points of every walker, taken by points and runs in turns, and the voxels of a
// small image below them.
#include "Fuzzing.h"

#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/StraightLineVisitor.h>
#include <SeluUtils/UnitLineVisitor.h>
#include <SeluUtils/Voxels.h>
#include <SeluUtils/Walker.h>

#include <cstddef>
#include <utility>

using namespace ORVA;
using namespace fuzz;

namespace {

constexpr std::size_t c_most = 5000; // points of a walk

void Append(PointList& points, StRun const& run) {
  Point const step(run.axis == 0, run.axis == 1, run.axis == 2);
  for (int64 k = 0; k < run.length && points.size() <= c_most; ++k)
    points.push_back(run.first + step * k);
}

template <class W>
void CheckMixed(CInput& input, W walker, PointList const& all) {
  PointList points;
  while (walker.MorePoints() && points.size() < all.size()) {
    Require(walker.Remaining() == all.size() - points.size(), "a walker knows what is left");
    if (input.Flag()) {
      points.push_back(walker.NextPoint());
    } else {
      StRun const run = walker.NextRun();
      Require(run.length > 0 && run.axis >= 0 && run.axis <= 2, "a run has points along an axis");
      Append(points, run);
    }
  }
  Require(points == all, "runs are the points of the walk");
  Require(!walker.MorePoints() && walker.NextRun().length == 0, "no run after the last point");
  walker.Rewind();
  Require(walker.Remaining() == all.size(), "a rewind takes nothing off a walk");
}

template <class W>
void CheckVoxels(CImage const& image, W const& walker, PointList const& all) {
  CSize const size = image.Size();
  auto const pixels = image.CreateAccess(false).As<std::uint8_t const>();
  uint64 expected = 0, count = 0;
  for (Point const& p : all) {
    if (p.x < 0 || p.x >= size.x || p.y < 0 || p.y >= size.y || p.z < 0 || p.z >= size.z) continue;
    expected += pixels(p);
    ++count;
  }
  uint64 sum = 0, visited = 0;
  ForEachVoxel<std::uint8_t>(image, W(walker), [&](auto value, Point const& p) {
    Require(value == pixels(p), "a voxel stands at its position");
    sum += value;
    ++visited;
  });
  Require(sum == expected && visited == count, "each voxel below a walk is visited once");
  for (std::uint8_t const& value : Voxels<std::uint8_t>(image, W(walker))) sum -= value;
  Require(sum == 0, "the range has the same voxels");
}

template <class W>
void Check(CInput& input, W const& walker) {
  W counted = walker;
  PointList const all = Walk(counted, c_most + 1);
  if (all.size() > c_most) return;
  CheckMixed(input, walker, all);
  CImage image(IMAGE_GREY_8, CSize(13, 11, 5));
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  for (int64 k = 0; k < 13 * 11 * 5; ++k)
    pixels(k % 13, k / 13 % 11, k / 143) = static_cast<std::uint8_t>(k * 7 % 251);
  CheckVoxels(image, walker, all);
}

PointList TakeCorners(CInput& input) {
  PointList corners;
  for (int64 k = input.Between(1, 7); k > 0; --k) corners.push_back(input.PointBetween(-5, 25));
  return corners;
}

PointList Flat(PointList corners, int64 z) {
  for (Point& p : corners) p.z = z;
  return corners;
}

constexpr std::array c_flat{NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2, NEIGHBORHOOD_8};
constexpr std::array c_space{NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2, NEIGHBORHOOD_26};

void CheckLines(CInput& input) {
  Point const from = input.PointBetween(-20, 40), to = input.PointBetween(-300, 300);
  auto const code = static_cast<std::size_t>(input.Between(0, 3));
  int64 const dimension = input.Between(1, 3);
  int64 const neighborhood = dimension == 3 ? c_space[code] : c_flat[code];
  bool const ends = input.Flag();
  Check(input, CBresenhamVisitor(from, to, dimension, neighborhood, ends));
  CBresenhamVisitorSelect part(from, to, dimension, neighborhood, ends);
  if (input.Flag()) part.SetImageSize(input.PointBetween(1, 60));
  Check(input, part);
}

void CheckOutlines(CInput& input) {
  PointList const corners = TakeCorners(input), flat = Flat(corners, input.Between(-1, 5));
  auto const code = static_cast<std::size_t>(input.Between(0, 3));
  bool const border = input.Flag();
  Check(input, CPolygonVisitor(flat, 2, c_flat[code], border));
  if (auto const polygon = Try([&] { return CPolygonVisitor(corners, 3, c_space[code], border); }))
    Check(input, *polygon);
  for (PointList const& list : {flat, corners})
    if (auto const area =
            Try([&] { return CBresenhamAreaVisitor(PointList(list), 3, NEIGHBORHOOD_26, border); }))
      Check(input, *area);
}

void CheckSolid(CInput& input) {
  PointList path = TakeCorners(input);
  path.push_back(path.front());
  for (Point& p : path) p.x += 5;
  if (auto const solid = Try(
          [&] { return CBresenhamVolumeVisitor(PointList(path), NEIGHBORHOOD_26, input.Flag()); }))
    Check(input, *solid);
}

void CheckPlanes(CInput& input) {
  auto const normal = input.RealTriple();
  double const distance = static_cast<double>(input.Between(-40, 60));
  Point const size = input.PointBetween(1, 16);
  if (auto section = Try([&] { return CPlaneSection(normal, distance); })) {
    section->SetImageSize(size);
    Check(input, *section);
  }
  CCutSlice slice(normal, distance, c_space[static_cast<std::size_t>(input.Between(0, 3))]);
  if (Done([&] { slice.SetImageSize(size); })) Check(input, slice);
}

void CheckBoxes(CInput& input) {
  Point const low = input.PointBetween(-5, 15), high = input.PointBetween(-5, 20);
  Check(input, CWindowVisitor(low, high));
  Point const direction = input.PointBetween(-1, 1);
  if (direction == Point()) return;
  Check(input, CUnitLineVisitor(low, high, direction));
  CDirectionalVisitor lines(low, high, direction);
  lines.SetImageSize(input.PointBetween(0, 16));
  Check(input, lines);
}

void CheckParallel(CInput& input) {
  auto const direction = input.RealTriple();
  Point const size = input.PointBetween(0, 16);
  if (auto lines = Try([&] { return CParallelLineVisitor(direction); })) {
    lines->SetImageSize(size);
    Check(input, *lines);
  }
  if (auto lines = Try([&] { return CStraightLineVisitor(direction); })) {
    lines->SetImageSize(size);
    Check(input, *lines);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  switch (input.Between(0, 5)) {
  case 0:
    CheckLines(input);
    break;
  case 1:
    CheckOutlines(input);
    break;
  case 2:
    CheckSolid(input);
    break;
  case 3:
    CheckPlanes(input);
    break;
  case 4:
    CheckBoxes(input);
    break;
  default:
    CheckParallel(input);
  }
  return 0;
}
