#include "objects/Regions.h"

#include "base/Texts.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <utility>

namespace selu {
namespace {

using ORVA::int64;

// A run of voxels of one label along x.
struct StRun {
  int64 first, last, y, z;
};

void AddRun(StRegion& region, StRun const& run) {
  std::array<int64, 3> const low = {run.first, run.y, run.z};
  std::array<int64, 3> const high = {run.last, run.y, run.z};
  int64 const length = run.last - run.first + 1;
  for (std::size_t axis = 0; axis < 3; ++axis) {
    region.low[axis] = region.voxels == 0 ? low[axis] : std::min(region.low[axis], low[axis]);
    region.high[axis] = region.voxels == 0 ? high[axis] : std::max(region.high[axis], high[axis]);
    region.sum[axis] +=
        static_cast<double>(length) * static_cast<double>(low[axis] + high[axis]) / 2;
  }
  region.voxels += length;
}

// B. P. Welford, "Note on a Method for Calculating Corrected Sums of Squares and Products",
// Technometrics 4 (1962) 419-420: no cancellation, however far the values are from 0.
struct StMoments {
  double count, mean, squares;
  void Add(double value) {
    count += 1;
    double const distance = value - mean;
    mean += distance / count;
    squares += distance * (value - mean);
  }
};

struct StNoIntensity {
  void operator()(StRegion&, int64, int64) const {}
};

// Adds the intensities of the voxels with the indices begin .. end - 1 to a region, before the
// region counts them.
template <class T>
struct StIntensity {
  std::span<T const> pixels;
  void operator()(StRegion& region, int64 begin, int64 end) const {
    StMoments moments{static_cast<double>(region.voxels), region.mean, region.squares};
    for (int64 i = begin; i < end; ++i)
      moments.Add(static_cast<double>(pixels[static_cast<std::size_t>(i)]));
    region.mean = moments.mean;
    region.squares = moments.squares;
  }
};

class CRegions {
public:
  explicit CRegions(std::filesystem::path const& path) : m_Path(path) {}

  /// Refuses what is no label.
  template <class T>
  int64 LabelOf(T value) const {
    if constexpr (std::is_floating_point_v<T>) {
      bool const isLabel =
          value >= 0 && value <= static_cast<T>(c_greatestLabel) && std::trunc(value) == value;
      if (!isLabel || static_cast<int64>(value) > c_greatestLabel) Refuse(Shortest(value));
    } else if (std::cmp_less(value, 0) || std::cmp_greater(value, c_greatestLabel)) {
      Refuse(std::to_string(value));
    }
    return static_cast<int64>(value);
  }

  StRegion& Of(int64 label) {
    auto const [known, isNew] = m_Places.try_emplace(label, m_Regions.size());
    if (isNew) m_Regions.push_back({label});
    return m_Regions[known->second];
  }

  std::vector<StRegion> Sorted() && {
    std::ranges::sort(m_Regions, {}, &StRegion::label);
    return std::move(m_Regions);
  }

private:
  [[noreturn]] void Refuse(std::string const& label) const {
    throw CAppError(Quoted(m_Path) + " has the label " + label +
                    ", but labels are whole numbers from 0, the background, to " +
                    std::to_string(c_greatestLabel));
  }

  std::filesystem::path const& m_Path;
  std::unordered_map<int64, std::size_t> m_Places; // of a label in the list
  std::vector<StRegion> m_Regions;
};

// Of a slab that begins with slice `slice` of the whole.
template <class T, class Intensity>
void MeasureRows(CRegions& regions, std::span<T const> labels, ORVA::CSize const& size, int64 slice,
                 Intensity const& intensity) {
  int64 const firstY = size.Dim() == 2 ? slice : 0, firstZ = size.Dim() == 2 ? 0 : slice;
  int64 row = 0; // index of its first voxel
  for (int64 z = 0; z < size.z; ++z)
    for (int64 y = 0; y < size.y; ++y, row += size.x)
      for (int64 x = 0; x < size.x;) {
        T const* const line = labels.data() + row;
        int64 const first = x;
        T const value = line[x];
        int64 const label = regions.LabelOf(value);
        while (x < size.x && line[x] == value) ++x;
        if (label == 0) continue;
        StRegion& region = regions.Of(label);
        intensity(region, row + first, row + x);
        AddRun(region, {first, x - 1, y + firstY, z + firstZ});
      }
}

template <class Intensity>
void Measure(CRegions& regions, CRawImage const& labels, int64 slice, Intensity const& intensity) {
  VisitPixels(labels,
              [&](auto pixels) { MeasureRows(regions, pixels, labels.Size(), slice, intensity); });
}

} // namespace

double StRegion::Deviation() const { return std::sqrt(squares / static_cast<double>(voxels)); }

std::vector<StRegion> MeasureRegions(CVolumeSource& labels, CVolumeSource* intensity) {
  CRegions regions(labels.Path());
  double const bytes =
      labels.BytesPerSlice() + (intensity == nullptr ? 0 : intensity->BytesPerSlice());
  for (StSlab const& slab : SlabsOf(labels.Size(), bytes)) {
    CRawImage const some = labels.Slab(slab.first, slab.last);
    if (intensity == nullptr) {
      Measure(regions, some, slab.first, StNoIntensity());
      continue;
    }
    CRawImage const values = intensity->Slab(slab.first, slab.last);
    VisitPixels(values, [&]<class T>(std::span<T const> pixels) {
      Measure(regions, some, slab.first, StIntensity<T>{pixels});
    });
  }
  auto sorted = std::move(regions).Sorted();
  if (sorted.empty())
    throw CAppError(Quoted(labels.Path()) + " has no objects: all its labels are 0");
  return sorted;
}

} // namespace selu
