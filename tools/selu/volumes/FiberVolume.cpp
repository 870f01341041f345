#include "volumes/FiberVolume.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/Random/UniformPoint.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CSize;
using ORVA::int64;
using Voxel = ORVA::CTriple<int64>;
using Vector = ORVA::CTriple<double>;

double Dot(Vector const& a, Vector const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// A voxel of a fiber's section relative to the axis, and its gray value.
struct StSectionVoxel {
  Voxel offset;
  std::uint8_t gray;
};

int DrivingAxis(Vector const& d) {
  double const x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
  return x >= y && x >= z ? 0 : y >= z ? 1 : 2;
}

// The section across the driving axis: an ellipse, of which the line has one point in each plane.
std::vector<StSectionVoxel> Section(Vector const& direction, double radius) {
  int const axis = DrivingAxis(direction);
  double const reach = radius + 0.5;
  auto const extent = static_cast<int64>(std::ceil(reach * std::sqrt(3.0)));
  std::vector<StSectionVoxel> section;
  for (int64 v = -extent; v <= extent; ++v)
    for (int64 u = -extent; u <= extent; ++u) {
      Voxel const offset = axis == 0 ? Voxel(0, u, v) : axis == 1 ? Voxel(u, 0, v) : Voxel(u, v, 0);
      Vector const o(static_cast<double>(offset.x), static_cast<double>(offset.y),
                     static_cast<double>(offset.z));
      double const along = Dot(o, direction);
      double const distance = std::sqrt(std::max(0.0, Dot(o, o) - along * along));
      double const share = std::clamp(reach - distance, 0.0, 1.0);
      if (share > 0)
        section.push_back({offset, static_cast<std::uint8_t>(std::lround(share * 255))});
    }
  return section;
}

// Extends how far the axis runs in one coordinate before it is `margin` outside the box.
void LimitRun(double from, double slope, double extent, double margin, double& low, double& high) {
  if (slope == 0) return;
  double const a = (-margin - from) / slope, b = (extent + margin - from) / slope;
  low = std::max(low, std::min(a, b));
  high = std::min(high, std::max(a, b));
}

class CFiberDrawer {
public:
  explicit CFiberDrawer(CImage& image)
      : m_Size(image.Size()),
        m_Pixels(reinterpret_cast<std::uint8_t*>(image.CreateAccess(true).WritableBase())) {}

  void Draw(Vector const& point, Vector const& direction, double radius) const {
    auto const section = Section(direction, radius);
    double const margin = std::sqrt(3.0) * (radius + 0.5) + 2;
    double low = -1e9, high = 1e9;
    LimitRun(point.x, direction.x, static_cast<double>(m_Size.x), margin, low, high);
    LimitRun(point.y, direction.y, static_cast<double>(m_Size.y), margin, low, high);
    LimitRun(point.z, direction.z, static_cast<double>(m_Size.z), margin, low, high);
    ORVA::CBresenhamVisitor line(VoxelOf(point + direction * low),
                                 VoxelOf(point + direction * high), 3, ORVA::NEIGHBORHOOD_26, true);
    while (line.MorePoints()) Stamp(line.NextPoint(), section);
  }

private:
  static Voxel VoxelOf(Vector const& p) {
    return {static_cast<int64>(std::floor(p.x)), static_cast<int64>(std::floor(p.y)),
            static_cast<int64>(std::floor(p.z))};
  }

  void Stamp(Voxel const& center, std::vector<StSectionVoxel> const& section) const {
    for (auto const& [offset, gray] : section) {
      Voxel const p = center + offset;
      bool const inside =
          p.x >= 0 && p.x < m_Size.x && p.y >= 0 && p.y < m_Size.y && p.z >= 0 && p.z < m_Size.z;
      if (!inside) continue;
      auto& pixel = m_Pixels[(p.z * m_Size.y + p.y) * m_Size.x + p.x];
      pixel = std::max(pixel, gray);
    }
  }

  CSize m_Size;
  std::uint8_t* m_Pixels; // of the image, which outlives the drawer
};

} // namespace

CImage MakeFibers(CSize const& size, int64 count, double radius,
                  ORVA::IRandomGenerator<ORVA::CEulerRotation>& generator,
                  ORVA::IProgressObserver* observer) {
  CImage image(ORVA::IMAGE_GREY_8, size);
  CFiberDrawer const drawer(image);
  ORVA::CUniformPoint const place(Vector(static_cast<double>(size.x), static_cast<double>(size.y),
                                         static_cast<double>(size.z)));
  for (int64 i = 0; i < count; ++i) {
    Vector const point = place();
    drawer.Draw(point, generator().getDirectionVector(), radius);
    if (observer != nullptr) observer->Advance();
  }
  return image;
}

} // namespace selu
