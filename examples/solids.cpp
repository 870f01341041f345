// The pieces of docs/guide/walks.md about solids and polygons with real corners, each in a function
// of its own.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>
#include <SeluUtils/Walker.h>
#include <pxlib2image/Image.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <vector>

using namespace ORVA;

static std::uint8_t& At(CImageAccess& access, CTriple<int64> const& p) {
  return *reinterpret_cast<std::uint8_t*>(access.WritableBase() + p.x * access.Stride(0) +
                                          p.y * access.Stride(1) + p.z * access.Stride(2));
}

static void PaintMesh(CImage& image) {
  std::vector<CTriple<int64>> const corners{{50, 30, 30}, {10, 30, 30}, {30, 50, 30},
                                            {30, 10, 30}, {30, 30, 50}, {30, 30, 10}};
  std::vector<CSolidVisitor::Triangle> const triangles{{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4},
                                                       {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}};
  CSolidVisitor solid(corners, triangles, NEIGHBORHOOD_26, true);
  solid.SetImageSize(image.Size());
  CImageAccess access = image.CreateAccess(true);
  while (solid.MorePoints()) {
    auto const [first, axis, length] = solid.NextRun(); // a row along x
    std::fill_n(&At(access, first), length, std::uint8_t{255});
  }
  std::cout << solid.Steps() << " voxels of an octahedron\n";
}

static void SumUnderPolygon(CImage& image) {
  CRealPolygonVisitor::Outline const outline{{2.5, 2.25, 30}, {60.1, 8, 30}, {31, 20.75, 30}};
  CImageAccess access = image.CreateAccess(true);
  int64 sum = 0;
  for (auto const& p : Points(CRealPolygonVisitor(outline))) sum += At(access, p);
  std::cout << "sum " << sum << '\n';
}

int main() {
  CImage image(IMAGE_GREY_8, CSize(64, 64, 64));
  PaintMesh(image);
  SumUnderPolygon(image);
}
