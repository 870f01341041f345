#include <SeluUtils/CooccurrenceSum.h>

#include "Utils/Cooccurrence/PairCounting.h"
#include "Utils/Cooccurrence/Strides.h"
#include "Utils/Cooccurrence/TextureSums.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Cooccurrence";
constexpr uint64 c_mostPairs = uint64{1} << 46U;

// Along one axis: the first voxel v in [low, high) with v and v + d inside, and how many there are.
// The part of the axis from the first to the last voxel of their pairs holds no other pair.
struct StRange {
  int64 first = 0, count = 0;
};

StRange PairRange(int64 extent, int64 d, int64 low, int64 high) noexcept {
  if (extent <= 0 || d >= extent || d <= -extent) return {};
  int64 const first = std::max({low, int64{0}, -d});
  int64 const end = std::min({high, extent, extent - d});
  return {first, std::max(int64{0}, end - first)};
}

// The pairs of a block, whose displacement is shorter than it.
double PairsOf(Impl::StGrayBlock const& block, std::array<int64, 3> const& d) noexcept {
  double pairs = 1;
  for (std::size_t axis = 0; axis < 3; ++axis)
    pairs *= static_cast<double>(block.extent[axis] - std::abs(d[axis]));
  return pairs;
}

// Adds the pairs (level at v + d, level at v) at a * 256 + b.
class CBlockCounter {
public:
  explicit CBlockCounter(std::vector<uint64>& totals) : m_Totals(totals) {}

  void Count(Impl::StGrayBlock const& block, std::array<int64, 3> const& d) {
    // One table of 32-bit counts holds as many.
    if (PairsOf(block, d) > std::numeric_limits<std::uint32_t>::max()) return CountHalves(block, d);
    (void)Impl::CountPairs(block, {-d[0], -d[1], -d[2]},
                           std::span<std::uint32_t, Impl::c_nCells>(m_Counts), m_Scratch);
    for (std::size_t k = 0; k < m_Totals.size(); ++k) m_Totals[k] += m_Counts[k];
  }

private:
  // The halves of the first voxels of the pairs, along the axis on which there are most of them.
  void CountHalves(Impl::StGrayBlock const& block, std::array<int64, 3> const& d) {
    auto const pairs = [&](std::size_t axis) { return block.extent[axis] - std::abs(d[axis]); };
    std::size_t axis = 0;
    for (std::size_t other : {1U, 2U})
      if (pairs(other) > pairs(axis)) axis = other;
    int64 const half = pairs(axis) / 2;
    Impl::StGrayBlock part = block;
    part.extent[axis] = half + std::abs(d[axis]);
    Count(part, d);
    part.base += half * block.stride[axis];
    part.extent[axis] = block.extent[axis] - half;
    Count(part, d);
  }

  std::vector<uint64>& m_Totals;
  std::vector<std::uint32_t> m_Counts = std::vector<std::uint32_t>(Impl::c_nCells);
  Impl::StPairScratch m_Scratch;
};

} // namespace

CCooccurrenceSum::CCooccurrenceSum() : m_Counts(Impl::c_nCells) {}

void CCooccurrenceSum::Count(IImage const& in, CTriple<int64> const& displacement) {
  constexpr int64 all = std::numeric_limits<int64>::max();
  Count(in, displacement, CPos(0, 0, 0), CPos(all, all, all));
}

void CCooccurrenceSum::Count(IImage const& in, CTriple<int64> const& displacement, CPos const& low,
                             CPos const& high) {
  auto const type = in.Type();
  if (type != IMAGE_GREY_8 && type != IMAGE_GREY_16 && type != IMAGE_GREY_32)
    Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "ORVA::CCooccurrenceSum::Count"),
        CString("an image of the type %1 has no gray levels").Arg(CString(type.ToString())));
  CImageAccess const access = in.CreateAccess(false);
  auto const& extents = access.Extents();
  std::array<int64, 3> const d = {displacement.x, displacement.y, displacement.z};
  std::array<StRange, 3> const ranges = {PairRange(extents[0], d[0], low.x, high.x),
                                         PairRange(extents[1], d[1], low.y, high.y),
                                         PairRange(extents[2], d[2], low.z, high.z)};
  for (auto const& range : ranges)
    if (range.count == 0) return;
  Impl::StGrayBlock block{access.Base(), {}, access.Strides(), static_cast<int>(type.Bytes())};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    block.base += std::min(ranges[axis].first, ranges[axis].first + d[axis]) * block.stride[axis];
    block.extent[axis] = ranges[axis].count + std::abs(d[axis]);
  }
  double const pairs = PairsOf(block, d);
  AddToTotal(pairs > static_cast<double>(c_mostPairs) ? c_mostPairs + 1
                                                      : static_cast<uint64>(pairs));
  auto sorted = d;
  Impl::SortAxes(block, sorted);
  CBlockCounter(m_Counts).Count(block, sorted);
}

void CCooccurrenceSum::AddToTotal(uint64 pairs) {
  if (pairs > c_mostPairs - m_Pairs)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CCooccurrenceSum::AddToTotal"),
                        "there are more than 2^46 pairs");
  m_Pairs += pairs;
}

CCooccurrenceSum& CCooccurrenceSum::operator+=(CCooccurrenceSum const& other) {
  AddToTotal(other.m_Pairs);
  for (std::size_t k = 0; k < m_Counts.size(); ++k) m_Counts[k] += other.m_Counts[k];
  return *this;
}

uint64 CCooccurrenceSum::operator()(int i, int j) const {
  for (int const level : {i, j})
    if (level < 0 || level >= Impl::c_nLevels)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CCooccurrenceSum::operator()"),
                          CString("level %1 is not from 0 to 255").Arg(level));
  return m_Counts[static_cast<std::size_t>(j) * Impl::c_nLevels + static_cast<std::size_t>(i)];
}

CCooccurrence::CFeatures CCooccurrenceSum::Features() const {
  if (m_Pairs == 0)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCooccurrenceSum::Features"),
                "there are no pairs to have features");
  Impl::StTextureArrays arrays;
  Impl::FillTextureArrays(
      arrays, Impl::StWideTransposedCounts{std::span<uint64 const, Impl::c_nCells>(m_Counts)},
      static_cast<double>(m_Pairs));
  return Impl::TextureFeatures(arrays);
}

void CCooccurrenceSum::Write(IImage& out, int64 slice) const {
  constexpr char c_function[] = "ORVA::CCooccurrenceSum::Write";
  CSize const size = out.Size();
  if (out.Type() != IMAGE_GREY_32 || size != CSize(size.x, Impl::c_nLevels, Impl::c_nLevels))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                        "the output is no IMAGE_GREY_32 of size (n, 256, 256)");
  if (slice < 0 || slice >= size.x)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_function),
                        CString("slice %1 is not from 0 to %2").Arg(slice).Arg(size.x - 1));
  if (std::ranges::max(m_Counts) > std::numeric_limits<std::uint32_t>::max())
    Impl::Raise(ORVA_LOCATION(c_module, c_function), "a co-occurrence count exceeds 4294967295");
  CImageAccess const access = out.CreateAccess(true);
  std::byte* const first = access.WritableBase() + slice * access.Stride(0);
  auto count = m_Counts.begin();
  for (int64 j = 0; j < Impl::c_nLevels; ++j)
    for (int64 i = 0; i < Impl::c_nLevels; ++i, ++count) {
      auto const pixel = static_cast<std::uint32_t>(*count);
      std::memcpy(first + i * access.Stride(1) + j * access.Stride(2), &pixel, sizeof pixel);
    }
}

} // namespace ORVA
