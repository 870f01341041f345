#include "volumes/FiberVolume.h"

#include "base/Memory.h"
#include "images/VolumeSource.h"

#include <SeluUtils/Random/UniformPoint.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

namespace selu {
namespace {

using ORVA::CSize;
using ORVA::int64;
using Voxel = ORVA::CTriple<int64>;
using Vector = ORVA::CTriple<double>;

double Dot(Vector const& a, Vector const& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

int DrivingAxis(Vector const& d) {
  double const x = std::abs(d.x), y = std::abs(d.y), z = std::abs(d.z);
  return x >= y && x >= z ? 0 : y >= z ? 1 : 2;
}

// A voxel of a fiber's section relative to the axis, and its gray value.
struct StSectionVoxel {
  Voxel offset;
  std::uint8_t gray;
};

// The section across the driving axis: an ellipse, of which the line has one point in each plane.
class CSection {
public:
  CSection(Vector const& direction, double radius) {
    int const axis = DrivingAxis(direction);
    double const reach = radius + 0.5;
    auto const extent = static_cast<int64>(std::ceil(reach * std::sqrt(3.0)));
    for (int64 v = -extent; v <= extent; ++v)
      for (int64 u = -extent; u <= extent; ++u) {
        Voxel const offset = axis == 0   ? Voxel(0, u, v)
                             : axis == 1 ? Voxel(u, 0, v)
                                         : Voxel(u, v, 0);
        Vector const o(static_cast<double>(offset.x), static_cast<double>(offset.y),
                       static_cast<double>(offset.z));
        double const along = Dot(o, direction);
        double const distance = std::sqrt(std::max(0.0, Dot(o, o) - along * along));
        double const share = std::clamp(reach - distance, 0.0, 1.0);
        if (share > 0)
          m_Voxels.push_back({offset, static_cast<std::uint8_t>(std::lround(share * 255))});
      }
  }

  /// The voxels whose offset along z is at least `low` and below `high`.
  [[nodiscard]] std::span<StSectionVoxel const> Between(int64 low, int64 high) const {
    auto const z = [](StSectionVoxel const& voxel) { return voxel.offset.z; }; // ascending
    auto const first = std::ranges::lower_bound(m_Voxels, low, {}, z);
    return {first, std::ranges::lower_bound(first, m_Voxels.end(), high, {}, z)};
  }
  [[nodiscard]] int64 LowZ() const { return m_Voxels.front().offset.z; }
  [[nodiscard]] int64 HighZ() const { return m_Voxels.back().offset.z; }

private:
  std::vector<StSectionVoxel> m_Voxels;
};

// The digital line of NEIGHBORHOOD_26 between two voxels, any point of which is known at once.
class CFiberLine {
public:
  CFiberLine(Voxel const& from, Voxel const& to)
      : m_From(from), m_Difference(to - from),
        m_Moves(std::max(
            {std::abs(m_Difference.x), std::abs(m_Difference.y), std::abs(m_Difference.z)})) {}

  [[nodiscard]] int64 Points() const noexcept { return m_Moves + 1; }
  [[nodiscard]] Voxel operator[](int64 i) const noexcept {
    return {m_From.x + Steps(m_Difference.x, i), m_From.y + Steps(m_Difference.y, i), Z(i)};
  }
  /// The first point from which on z is at least `low` where the line rises, at most `high` where
  /// it falls, and the first one after it beyond the other.
  struct StPart {
    int64 first, last;
  };
  [[nodiscard]] StPart Between(int64 low, int64 high) const {
    auto const isBefore = [&](int64 z) { return m_Difference.z >= 0 ? z < low : z > high; };
    auto const isNotBeyond = [&](int64 z) { return m_Difference.z >= 0 ? z <= high : z >= low; };
    return {FirstPointNot(isBefore), FirstPointNot(isNotBeyond)};
  }

private:
  // Of `difference` steps over all moves those up to move i, as evenly as can be: |difference| * i
  // / moves rounded half up. No product leaves 64 bits: lines are shorter than 2^31.
  [[nodiscard]] int64 Steps(int64 difference, int64 i) const noexcept {
    if (difference == 0) return 0;
    int64 const steps = (2 * std::abs(difference) * i + m_Moves) / (2 * m_Moves);
    return difference < 0 ? -steps : steps;
  }
  // The first point whose z is not so, where those before it are; else the number of points.
  template <class IsSo>
  [[nodiscard]] int64 FirstPointNot(IsSo isSo) const noexcept {
    int64 low = 0, high = Points();
    while (low < high) {
      int64 const middle = low + (high - low) / 2;
      if (isSo(Z(middle)))
        low = middle + 1;
      else
        high = middle;
    }
    return low;
  }
  [[nodiscard]] int64 Z(int64 i) const noexcept { return m_From.z + Steps(m_Difference.z, i); }

  Voxel m_From, m_Difference;
  int64 m_Moves;
};

// Extends how far the axis runs in one coordinate before it is `margin` outside the box.
void LimitRun(double from, double slope, double extent, double margin, double& low, double& high) {
  if (slope == 0) return;
  double const a = (-margin - from) / slope, b = (extent + margin - from) / slope;
  low = std::max(low, std::min(a, b));
  high = std::min(high, std::max(a, b));
}

struct StFiber {
  Vector point, direction;
};

Voxel VoxelOf(Vector const& p) {
  return {static_cast<int64>(std::floor(p.x)), static_cast<int64>(std::floor(p.y)),
          static_cast<int64>(std::floor(p.z))};
}

CFiberLine LineOf(StFiber const& fiber, StFibers const& fibers) {
  auto const& [point, direction] = fiber;
  double const margin = std::sqrt(3.0) * (fibers.radius + 0.5) + 2;
  double low = -1e9, high = 1e9;
  LimitRun(point.x, direction.x, static_cast<double>(fibers.size.x), margin, low, high);
  LimitRun(point.y, direction.y, static_cast<double>(fibers.size.y), margin, low, high);
  LimitRun(point.z, direction.z, static_cast<double>(fibers.size.z), margin, low, high);
  return {VoxelOf(point + direction * low), VoxelOf(point + direction * high)};
}

// The slices of a slab, into which fibers are drawn.
class CFiberSlab {
public:
  CFiberSlab(StFibers const& fibers, StSlab const& slab)
      : m_Fibers(fibers), m_Slab(slab),
        m_Voxels(
            static_cast<std::size_t>(fibers.size.x * fibers.size.y * (slab.last - slab.first))) {}

  void Draw(StFiber const& fiber) {
    auto const line = LineOf(fiber, m_Fibers);
    // No section reaches farther than this; most fibers need none to be found outside.
    auto const most = static_cast<int64>(std::ceil((m_Fibers.radius + 0.5) * std::sqrt(3.0)));
    auto const near = line.Between(m_Slab.first - most, m_Slab.last - 1 + most);
    if (near.first >= near.last) return;
    CSection const section(fiber.direction, m_Fibers.radius);
    auto const [first, last] =
        line.Between(m_Slab.first - section.HighZ(), m_Slab.last - 1 - section.LowZ());
    for (int64 i = first; i < last; ++i) Stamp(line[i], section);
  }
  [[nodiscard]] std::span<std::byte const> Bytes() const {
    return std::as_bytes(std::span(m_Voxels));
  }

private:
  void Stamp(Voxel const& center, CSection const& section) {
    CSize const& size = m_Fibers.size;
    for (auto const& [offset, gray] :
         section.Between(m_Slab.first - center.z, m_Slab.last - center.z)) {
      Voxel const p = center + offset;
      if (p.x < 0 || p.x >= size.x || p.y < 0 || p.y >= size.y) continue;
      auto& voxel =
          m_Voxels[static_cast<std::size_t>(((p.z - m_Slab.first) * size.y + p.y) * size.x + p.x)];
      voxel = std::max(voxel, gray);
    }
  }

  StFibers const& m_Fibers;
  StSlab m_Slab;
  std::vector<std::uint8_t> m_Voxels;
};

std::vector<StSlab> SlabsOfFibers(StFibers const& fibers) {
  return SlabsOf(fibers.size,
                 static_cast<double>(fibers.size.x) * static_cast<double>(fibers.size.y));
}

// Draws the fibers' places and directions, one after the other.
class CFiberDraws {
public:
  CFiberDraws(CSize const& size, FiberGenerator& generator)
      : m_Place(Vector(static_cast<double>(size.x), static_cast<double>(size.y),
                       static_cast<double>(size.z))),
        m_Generator(generator) {}
  StFiber operator()() {
    Vector const point = m_Place();
    return {point, m_Generator().getDirectionVector()};
  }

private:
  ORVA::CUniformPoint m_Place;
  FiberGenerator& m_Generator;
};

std::vector<StFiber> DrawAll(StFibers const& fibers, CFiberDraws& draw) {
  RefuseBeyondMemory(static_cast<double>(fibers.count) * sizeof(StFiber),
                     "the list of " + std::to_string(fibers.count) + " fibers");
  std::vector<StFiber> all;
  all.reserve(static_cast<std::size_t>(fibers.count));
  for (int64 i = 0; i < fibers.count; ++i) all.push_back(draw());
  return all;
}

} // namespace

int64 FiberSteps(StFibers const& fibers) {
  auto const slabs = static_cast<int64>(SlabsOfFibers(fibers).size());
  constexpr int64 most = std::numeric_limits<int64>::max();
  return fibers.count > most / slabs ? most : fibers.count * slabs;
}

void MakeFibers(StFibers const& fibers, FiberGenerator& generator,
                std::function<void(std::span<std::byte const> voxels)> const& take,
                ORVA::IProgressObserver* observer) {
  auto const slabs = SlabsOfFibers(fibers);
  CFiberDraws draw(fibers.size, generator);
  // A single slab needs no list: each fiber is drawn as it comes.
  auto const all = slabs.size() == 1 ? std::vector<StFiber>() : DrawAll(fibers, draw);
  for (StSlab const& slab : slabs) {
    CFiberSlab image(fibers, slab);
    for (int64 i = 0; i < fibers.count; ++i) {
      image.Draw(all.empty() ? draw() : all[static_cast<std::size_t>(i)]);
      if (observer != nullptr) observer->Advance();
    }
    take(image.Bytes());
  }
}

} // namespace selu
