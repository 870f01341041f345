// Filling solids, balls and polygons with real corners: a volume of 256^3 painted under a mesh of a
// ball, beside ITK's filter for such meshes; under a ball given by its inequality, beside loops by
// hand; and a mask under a polygon, beside OpenCV, whose corners have 8 bits after the point.
#include <SeluBase/Neighborhood.h>
#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>

#include <benchmark/benchmark.h>
#include <itkImage.h>
#include <itkMesh.h>
#include <itkTriangleMeshToBinaryImageFilter.h>
#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

namespace {

using namespace ORVA;

constexpr int64 c_extent = 256;
constexpr double c_middle = 127.5, c_radius = 126;

struct StMesh {
  std::vector<CTriple<int64>> corners;
  std::vector<CSolidVisitor::Triangle> triangles;
};

// A ball of rings of triangles, about as many as asked for, with corners on voxels.
StMesh BallMesh(double triangles) {
  int const rings = static_cast<int>(std::lround(std::sqrt(triangles / 4))) + 1, around = 2 * rings;
  StMesh mesh;
  auto const add = [&](double down, double along) {
    auto const place = [](double part) { return std::lround(c_middle + c_radius * part); };
    mesh.corners.emplace_back(place(std::sin(down) * std::cos(along)),
                              place(std::sin(down) * std::sin(along)), place(std::cos(down)));
  };
  auto const at = [&](int ring, int k) {
    if (ring == 0) return 0U;
    if (ring == rings) return static_cast<unsigned>(1 + (rings - 1) * around);
    return static_cast<unsigned>(1 + (ring - 1) * around + k % around);
  };
  add(0, 0);
  for (int ring = 1; ring < rings; ++ring)
    for (int k = 0; k < around; ++k)
      add(std::numbers::pi * ring / rings, 2 * std::numbers::pi * k / around);
  add(std::numbers::pi, 0);
  for (int ring = 0; ring < rings; ++ring)
    for (int k = 0; k < around; ++k) {
      if (ring > 0) mesh.triangles.push_back({at(ring, k), at(ring + 1, k), at(ring, k + 1)});
      if (ring < rings - 1)
        mesh.triangles.push_back({at(ring, k + 1), at(ring + 1, k), at(ring + 1, k + 1)});
    }
  return mesh;
}

using Volume = std::vector<unsigned char>;

Volume Black() { return Volume(c_extent * c_extent * c_extent); }

// The painted voxels.
int64 Paint(Volume& volume, CRunVisitor walk) {
  while (walk.MorePoints()) {
    auto const [first, axis, length] = walk.NextRun();
    std::fill_n(volume.begin() + ((first.z * c_extent + first.y) * c_extent + first.x), length, 1);
  }
  return static_cast<int64>(walk.Steps());
}

int64 PaintByPoints(Volume& volume, CRunVisitor walk) {
  while (walk.MorePoints()) {
    auto const p = walk.NextPoint();
    volume[static_cast<std::size_t>((p.z * c_extent + p.y) * c_extent + p.x)] = 1;
  }
  return static_cast<int64>(walk.Steps());
}

void Add(std::string const& name, std::function<int64()> const& run) {
  benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) {
    int64 voxels = 0;
    for (auto _ : state) benchmark::DoNotOptimize(voxels = run());
    state.SetItemsProcessed(state.iterations() * voxels);
  })->Unit(benchmark::kMillisecond);
}

// ---------------------------------------------------------------------------------------------
// Meshes

using ItkMesh = itk::Mesh<double, 3>;
using ItkImage = itk::Image<unsigned char, 3>;

ItkMesh::Pointer ToItk(StMesh const& mesh) {
  auto itk = ItkMesh::New();
  for (std::size_t k = 0; k < mesh.corners.size(); ++k) {
    ItkMesh::PointType point;
    point[0] = static_cast<float>(mesh.corners[k].x);
    point[1] = static_cast<float>(mesh.corners[k].y);
    point[2] = static_cast<float>(mesh.corners[k].z);
    itk->SetPoint(k, point);
  }
  using Cell = itk::TriangleCell<ItkMesh::CellType>;
  for (std::size_t k = 0; k < mesh.triangles.size(); ++k) {
    ItkMesh::CellAutoPointer cell;
    cell.TakeOwnership(new Cell); // NOLINT(cppcoreguidelines-owning-memory): ITK's way
    for (int i = 0; i < 3; ++i) cell->SetPointId(i, mesh.triangles[k][static_cast<std::size_t>(i)]);
    itk->SetCell(k, cell);
  }
  return itk;
}

int64 PaintByItk(ItkMesh::Pointer const& mesh) {
  auto filter = itk::TriangleMeshToBinaryImageFilter<ItkMesh, ItkImage>::New();
  mesh->Modified();
  filter->SetInput(mesh);
  filter->SetSize({{c_extent, c_extent, c_extent}});
  filter->SetInsideValue(1);
  filter->Update();
  auto const* const voxels = filter->GetOutput()->GetBufferPointer();
  return std::count(voxels, voxels + c_extent * c_extent * c_extent, 1);
}

void AddMesh(int exponent) {
  StMesh const mesh = BallMesh(std::pow(10, exponent));
  std::string const row = "10^" + std::to_string(exponent) + " triangles in 256^3";
  auto const exact = [mesh] {
    return CSolidVisitor(mesh.corners, mesh.triangles, EnBoundary::Closed);
  };
  auto const digital = [mesh] {
    return CSolidVisitor(mesh.corners, mesh.triangles, NEIGHBORHOOD_26, true);
  };
  auto const add = [&](std::string const& name, auto const& make, auto paint) {
    Add(row + name + "/SeluUtils",
        [make, paint, volume = Black()]() mutable { return paint(volume, make()); });
  };
  add(", painted", exact, Paint);
  Add(row + ", painted/ITK TriangleMeshToBinaryImageFilter",
      [itk = ToItk(mesh)] { return PaintByItk(itk); });
  add(", painted by points", exact, PaintByPoints);
  add(", digital faces too, painted", digital, Paint);
}

// ---------------------------------------------------------------------------------------------
// Balls

// Every voxel of the box, by the inequality in doubles.
int64 PaintEveryVoxel(Volume& volume) {
  int64 voxels = 0;
  std::size_t at = 0;
  for (int64 z = 0; z < c_extent; ++z)
    for (int64 y = 0; y < c_extent; ++y)
      for (int64 x = 0; x < c_extent; ++x, ++at) {
        double const dx = static_cast<double>(x) - c_middle, dy = static_cast<double>(y) - c_middle,
                     dz = static_cast<double>(z) - c_middle;
        if (dx * dx + dy * dy + dz * dz > c_radius * c_radius) continue;
        volume[at] = 1;
        ++voxels;
      }
  return voxels;
}

// The ends of each row by a square root, in doubles.
int64 PaintRows(Volume& volume) {
  int64 voxels = 0;
  for (int64 z = 0; z < c_extent; ++z)
    for (int64 y = 0; y < c_extent; ++y) {
      double const dy = static_cast<double>(y) - c_middle, dz = static_cast<double>(z) - c_middle;
      double const rest = c_radius * c_radius - dy * dy - dz * dz;
      if (rest < 0) continue;
      auto const low = static_cast<int64>(std::ceil(c_middle - std::sqrt(rest)));
      auto const high = static_cast<int64>(std::floor(c_middle + std::sqrt(rest)));
      if (low > high) continue;
      std::fill_n(volume.begin() + ((z * c_extent + y) * c_extent + low), high - low + 1, 1);
      voxels += high - low + 1;
    }
  return voxels;
}

void AddBalls() {
  std::string const row = "ball in 256^3, painted/";
  Add(row + "SeluUtils", [volume = Black()]() mutable {
    return Paint(volume, CEllipsoidVisitor({c_middle, c_middle, c_middle}, c_radius));
  });
  Add(row + "rows by square roots in doubles",
      [volume = Black()]() mutable { return PaintRows(volume); });
  Add(row + "every voxel by hand",
      [volume = Black()]() mutable { return PaintEveryVoxel(volume); });
}

// ---------------------------------------------------------------------------------------------
// Polygons

CRealPolygonVisitor::Outline RealDisc(double radius, int count) {
  CRealPolygonVisitor::Outline corners;
  for (int k = 0; k < count; ++k) {
    double const angle = 2 * std::numbers::pi * k / count;
    corners.emplace_back(radius * (1 + std::cos(angle)), radius * (1 + std::sin(angle)), 0);
  }
  return corners;
}

int64 PaintMask(cv::Mat& mask, CRealPolygonVisitor walk) {
  while (walk.MorePoints()) {
    auto const [first, axis, length] = walk.NextRun();
    std::fill_n(mask.ptr<unsigned char>(static_cast<int>(first.y)) + first.x, length, 1);
  }
  return static_cast<int64>(walk.Steps());
}

int64 PaintByOpenCv(cv::Mat& mask, std::vector<std::vector<cv::Point>> const& outline,
                    int64 pixels) {
  constexpr int c_bits = 8;
  cv::fillPoly(mask, outline, cv::Scalar(1), cv::LINE_8, c_bits);
  return pixels;
}

void AddPolygon(std::string const& size, double radius, int corners) {
  auto const outline = RealDisc(radius, corners);
  std::vector<std::vector<cv::Point>> fixed(1);
  for (auto const& p : outline)
    fixed[0].emplace_back(static_cast<int>(std::lround(p.x * 256)),
                          static_cast<int>(std::lround(p.y * 256)));
  int const extent = static_cast<int>(2 * radius) + 2;
  std::string const row =
      "real polygon of " + std::to_string(corners) + " corners, " + size + ", painted/";
  Add(row + "SeluUtils", [outline, mask = cv::Mat(extent, extent, CV_8UC1)]() mutable {
    return PaintMask(mask, CRealPolygonVisitor(outline));
  });
  auto const pixels = static_cast<int64>(CRealPolygonVisitor(outline).Steps());
  Add(row + "OpenCV fillPoly", [=, mask = cv::Mat(extent, extent, CV_8UC1)]() mutable {
    return PaintByOpenCv(mask, fixed, pixels);
  });
}

[[maybe_unused]] bool const c_isRegistered = [] {
  for (int exponent = 3; exponent <= 6; ++exponent) AddMesh(exponent);
  AddBalls();
  AddPolygon("10^5 px", 178, 24);
  AddPolygon("10^7 px", 1784, 24);
  AddPolygon("10^7 px", 1784, 10'000);
  return true;
}();

} // namespace
