#include <SeluUtils/CooccurrenceSum.h>

#include "Utils/Cooccurrence/PairTotals.h"
#include "Utils/Cooccurrence/TextureSums.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <span>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Cooccurrence";
constexpr uint64 c_mostPairs = uint64{1} << 46U;

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
  std::array<int64, 3> const d = {displacement.x, displacement.y, displacement.z};
  auto const block = Impl::BlockOfPairs(
      {access.Base(), access.Extents(), access.Strides(), static_cast<int>(type.Bytes())}, d,
      {low.x, low.y, low.z}, {high.x, high.y, high.z});
  double const pairs = Impl::PairsOf(block, d);
  if (pairs == 0) return;
  AddToTotal(pairs > static_cast<double>(c_mostPairs) ? c_mostPairs + 1
                                                      : static_cast<uint64>(pairs));
  // The opposite displacement counts the transposed matrix.
  Impl::AddPairs(block, {-d[0], -d[1], -d[2]}, {m_Counts.data(), Impl::c_nLevels, Impl::c_nLevels});
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
