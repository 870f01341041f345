#include <SeluUtils/Texture/Aggregation.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";

// By EnAggregation.
constexpr std::array<std::string_view, 6> c_names = {"2D_avg",    "2D_comb", "2_5D_avg",
                                                     "2_5D_comb", "3D_avg",  "3D_comb"};

bool IsBySlice(EnAggregation way) noexcept {
  return way == EnAggregation::Average2D || way == EnAggregation::Combine2D;
}

bool IsInSpace(EnAggregation way) noexcept {
  return way == EnAggregation::Average3D || way == EnAggregation::Combine3D;
}

bool IsCombined(EnAggregation way) noexcept {
  return way == EnAggregation::Combine2D || way == EnAggregation::Combine25D ||
         way == EnAggregation::Combine3D;
}

// The mean of vectors, one added after the other.
class CMean {
public:
  explicit CMean(std::size_t size) : m_Sums(size) {}

  void Add(std::span<double const> values) noexcept {
    for (std::size_t k = 0; k < m_Sums.size(); ++k) m_Sums[k] += values[k];
    ++m_Count;
  }
  [[nodiscard]] std::vector<double> Values() && {
    for (double& sum : m_Sums)
      sum = m_Count > 0 ? sum / m_Count : std::numeric_limits<double>::quiet_NaN();
    return std::move(m_Sums);
  }

private:
  std::vector<double> m_Sums;
  double m_Count = 0;
};

void CheckDisplacements(EnAggregation way, std::span<CTriple<int64> const> displacements) {
  for (auto const& d : displacements) {
    if (d == CTriple<int64>())
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAggregatedTexture::CAggregatedTexture"),
                          "a displacement is (0, 0, 0)");
    if (d.z != 0 && !IsInSpace(way))
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAggregatedTexture::CAggregatedTexture"),
                          CString("the displacement (%1, %2, %3) leads out of the slice")
                              .Arg(d.x)
                              .Arg(d.y)
                              .Arg(d.z));
  }
}

} // namespace

std::string_view AggregationName(EnAggregation way) noexcept {
  auto const index = static_cast<std::size_t>(way);
  return index < c_names.size() ? c_names[index] : std::string_view();
}

std::optional<EnAggregation> AggregationFromName(std::string_view name) noexcept {
  for (EnAggregation const way : c_aggregations)
    if (AggregationName(way) == name) return way;
  return std::nullopt;
}

CAggregatedTexture::CAggregatedTexture(EnAggregation way, int levels, CTextureFeatures features,
                                       StAggregationOptions options)
    : m_Way(way), m_Levels(levels), m_Features(std::move(features)), m_Options(std::move(options)) {
  if (AggregationName(way).empty())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAggregatedTexture::CAggregatedTexture"),
                        CString("there is no way %1 to aggregate").Arg(static_cast<int>(way)));
  if (m_Options.displacements.empty())
    m_Options.displacements = NeighborDisplacements(IsInSpace(way) ? 3 : 2);
  CheckDisplacements(way, m_Options.displacements);
  m_Matrices.assign(IsCombined(way) ? 1 : m_Options.displacements.size(), CPairCounter(levels));
}

void CAggregatedTexture::Count(CLevelImage const& levels) { Count(levels, 0, levels.Extents()[2]); }

void CAggregatedTexture::Count(CLevelImage const& slab, int64 first, int64 last, int64 offset) {
  first = std::max(first, int64{0});
  last = std::min(last, slab.Extents()[2]);
  if (IsBySlice(m_Way)) {
    for (int64 z = first; z < last; ++z) CountSlice(slab, z, z + offset);
  } else {
    CountSlices(slab, first, last);
  }
}

void CAggregatedTexture::CountSlices(CLevelImage const& slab, int64 first, int64 last) {
  constexpr int64 all = std::numeric_limits<int64>::max();
  for (std::size_t k = 0; k < m_Options.displacements.size(); ++k)
    m_Matrices[k % m_Matrices.size()].Count(slab, m_Options.displacements[k], CPos(0, 0, first),
                                            CPos(all, all, last));
}

void CAggregatedTexture::CountSlice(CLevelImage const& slab, int64 z, int64 slice) {
  CheckIsNew(slice);
  for (CPairCounter& matrix : m_Matrices) matrix.Clear();
  CountSlices(slab, z, z + 1);
  StSliceValues values{slice, {}};
  for (CPairCounter const& matrix : m_Matrices) {
    auto const ofMatrix = ValuesOf(matrix, m_Options.isSymmetric, m_Features);
    values.values.insert(values.values.end(), ofMatrix.begin(), ofMatrix.end());
  }
  Insert(std::move(values));
}

void CAggregatedTexture::CheckIsNew(int64 slice) const {
  auto const known = std::ranges::lower_bound(m_Slices, slice, {}, &StSliceValues::slice);
  if (known != m_Slices.end() && known->slice == slice)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAggregatedTexture::Count"),
                        CString("slice %1 is counted already").Arg(slice));
}

void CAggregatedTexture::Insert(StSliceValues values) {
  auto const place = std::ranges::lower_bound(m_Slices, values.slice, {}, &StSliceValues::slice);
  m_Slices.insert(place, std::move(values));
}

std::vector<double> CAggregatedTexture::ValuesOf(CPairCounter const& matrix, bool isSymmetric,
                                                 CTextureFeatures& features) {
  auto const evaluate = [&features](CPairCounter const& pairs) {
    auto const values = features.Of(pairs);
    return std::vector<double>(values.begin(), values.end());
  };
  if (!isSymmetric) return evaluate(matrix);
  CPairCounter symmetric = matrix;
  symmetric.Symmetrize();
  return evaluate(symmetric);
}

CAggregatedTexture& CAggregatedTexture::operator+=(CAggregatedTexture const& other) {
  if (other.m_Way != m_Way || other.m_Levels != m_Levels ||
      other.m_Options.isSymmetric != m_Options.isSymmetric ||
      other.m_Options.displacements != m_Options.displacements ||
      !std::ranges::equal(other.Features(), Features()))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAggregatedTexture::operator+="),
                        "textures of different ways, levels, features or displacements do not add "
                        "up");
  if (IsBySlice(m_Way)) {
    for (StSliceValues const& values : other.m_Slices) CheckIsNew(values.slice);
    for (StSliceValues const& values : other.m_Slices) Insert(values);
  } else {
    for (std::size_t k = 0; k < m_Matrices.size(); ++k) m_Matrices[k] += other.m_Matrices[k];
  }
  return *this;
}

std::vector<double> CAggregatedTexture::Values() const {
  std::size_t const size = m_Features.Features().size();
  CMean mean(size);
  auto const add = [&mean](std::span<double const> values) {
    if (!values.empty() && !std::isnan(values.front())) mean.Add(values);
  };
  for (StSliceValues const& slice : m_Slices)
    for (std::size_t first = 0; first < slice.values.size(); first += size)
      add(std::span(slice.values).subspan(first, size));
  if (!IsBySlice(m_Way)) {
    CTextureFeatures features = m_Features; // a const object may serve several threads
    for (CPairCounter const& matrix : m_Matrices)
      add(ValuesOf(matrix, m_Options.isSymmetric, features));
  }
  return std::move(mean).Values();
}

} // namespace ORVA
