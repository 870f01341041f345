// The pieces of docs/guide/walks.md, each in a function of its own.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Voxels.h>
#include <SeluUtils/Walker.h>
#include <pxlib2image/Image.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <ranges>
#include <vector>

using namespace ORVA;

static void Profile(CImage const& image) {
  auto const pixels = image.CreateAccess(false).As<std::uint8_t const>();
  CTriple<int64> const from(-20, 0, 3), to(200, 90, 40);
  CBresenhamVisitorSelect line(from, to, 3, NEIGHBORHOOD_26, true);
  line.SetImageSize(image.Size()); // from here on its first run of points inside the image
  int64 sum = 0;
  for (CTriple<int64> const& p : line) sum += pixels(p);
  std::cout << line.Steps() + 1 << " voxels, their sum " << sum << '\n';
}

static void Ranges() {
  CTriple<int64> const from(0, 0, 0), to(30, 12, 0);
  CBresenhamVisitor line(from, to, 2, NEIGHBORHOOD_4, true);
  auto const isEven = [](CTriple<int64> const& p) { return p.x % 2 == 0; };
  auto const even = std::ranges::count_if(Points(line), isEven);
  line.Reset();
  std::cout << even << " of " << std::ranges::distance(Points(line)) << " points\n";
}

static void Areas(CImage const& image) {
  std::vector<CTriple<int64>> const outline{
      {2, 2, 0}, {60, 2, 0}, {60, 50, 0}, {31, 20, 0}, {2, 50, 0}};
  auto const pixels = image.CreateAccess(false).As<std::uint8_t const>();
  CPolygonVisitor area(outline, 2, NEIGHBORHOOD_8, true);
  double sum = 0;
  for (auto const& p : area) sum += pixels(p);
  std::cout << "mean " << sum / static_cast<double>(area.Steps()) << '\n';

  CPlaneSection section(CTriple<double>(1, 2, 2), 150.0); // x + 2y + 2z = 150
  section.SetImageSize(image.Size());
  std::cout << section.Steps() << " voxels in the section\n";
}

static void VoxelsBelow(CImage const& image) {
  std::vector<CTriple<int64>> const outline{{2, 2, 0}, {60, 2, 0}, {31, 50, 0}};
  CPolygonVisitor area(outline, 2, NEIGHBORHOOD_8, true);
  uint64 sum = 0;
  ForEachVoxel(image, area, [&](auto value) { sum += static_cast<uint64>(value); });
  std::cout << "sum " << sum << '\n';
}

static void Rows() {
  CWindowVisitor window({10, 10, 10}, {19, 19, 12});
  int64 rows = 0;
  for (auto const& [first, axis, length] : Runs(window)) rows += length == 10 ? 1 : 0;
  std::cout << rows << " rows of 10 voxels\n";
}

static void Boxes(CImage const& image) {
  CWindowVisitor window({10, 10, 10}, {19, 19, 1000});
  window.SetImageSize(image.Size());
  std::cout << window.Steps() << " voxels up to z = " << window.High().z << '\n';

  CDirectionalVisitor lines({0, 0, 0}, {99, 99, 99}, {1, 1, 0}); // every voxel, line by line
  lines.SetImageSize(image.Size());
  std::cout << std::ranges::distance(Points(lines)) << " voxels\n";
}

int main() {
  CImage image(IMAGE_GREY_8, CSize(64, 64, 64));
  auto const access = image.CreateAccess(true);
  for (std::size_t i = 0; i < image.Bytes(); ++i) access.WritableBase()[i] = std::byte(i * 7);
  Profile(image);
  Ranges();
  Areas(image);
  VoxelsBelow(image);
  Rows();
  Boxes(image);
}
