#include <SeluUtils/Cooccurrence.h>

#include "Utils/Cooccurrence/PairCounting.h"
#include "Utils/Cooccurrence/Strides.h"
#include "Utils/Cooccurrence/TextureSums.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Cooccurrence";
constexpr char c_busy[] = "Busy...";

// The checks below take the location of the public operation that they guard.

void CheckDirection(CTriple<long> const* direction, char const* function) {
  if (direction == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function), "direction is null");
  for (long const component : {direction->x, direction->y, direction->z})
    if (component < std::numeric_limits<std::int32_t>::min() ||
        component > std::numeric_limits<std::int32_t>::max())
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                          CString("direction component %1 does not fit 32 bits")
                              .Arg(static_cast<int64>(component)));
}

void CheckFeatures(CValueMap const* features, char const* function) {
  if (features == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function), "feature map is null");
}

void CheckOutput(IImage const& out, int64 directions, char const* function) {
  if (out.Type() != IMAGE_GREY_32)
    Impl::Raise(ORVA_LOCATION(c_module, function), "output image type does not match");
  if (out.Size() != CSize(directions, CCooccurrence::m_cGreyLevels, CCooccurrence::m_cGreyLevels))
    Impl::Raise(ORVA_LOCATION(c_module, function), "output image size does not match");
}

void CheckDimension(IImage const& in, char const* function) {
  if (CCooccurrence::NumberOfDirections(in.Size().Dim()) == 0)
    Impl::Raise(ORVA_LOCATION(c_module, function), "image dimension does not match");
}

void CheckInPlane(IImage const& in, CTriple<long> const& direction, char const* function) {
  if (in.Size().Dim() == 2 && direction.z != 0)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("direction with dz = %1 leads out of a 2d image")
                            .Arg(static_cast<int64>(direction.z)));
}

int64 SaturatingProduct(int64 a, int64 b) {
  int64 product = 0;
  if (!__builtin_mul_overflow(a, b, &product)) return product;
  return (a < 0) == (b < 0) ? std::numeric_limits<int64>::max() : std::numeric_limits<int64>::min();
}

// Number of pairs that the displacement leaves; not positive where it is at least as long as the
// image along an axis.
double NumberOfPairs(CSize const& size, CTriple<long> const& d) {
  int64 pairs = size.x - std::abs(int64{d.x});
  if (size.Dim() >= 2) pairs = SaturatingProduct(pairs, size.y - std::abs(int64{d.y}));
  if (size.Dim() >= 3) pairs = SaturatingProduct(pairs, size.z - std::abs(int64{d.z}));
  return static_cast<double>(pairs);
}

} // namespace

struct CCooccurrence::StArrays {
  // C[i][j] at j * 256 + i, which is how an output image has it: writing it there is copying.
  std::vector<std::uint32_t> m_Counts = std::vector<std::uint32_t>(Impl::c_nCells);
  Impl::StPairScratch scratch;
  Impl::StTextureArrays texture;

  [[nodiscard]] std::span<std::uint32_t, Impl::c_nCells> Counts() {
    return std::span<std::uint32_t, Impl::c_nCells>(m_Counts);
  }
};

CCooccurrence::CCooccurrence(char const* name, IObject const* parent)
    : CAlgorithm(name, parent), m_Arrays(std::make_unique<StArrays>()) {}

CCooccurrence::CCooccurrence(CCooccurrence const& other)
    : CAlgorithm(other), m_Arrays(std::make_unique<StArrays>(*other.m_Arrays)) {}

CCooccurrence& CCooccurrence::operator=(CCooccurrence const& other) {
  CCooccurrence copy(other);
  CAlgorithm::operator=(std::move(static_cast<CAlgorithm&>(copy)));
  m_Arrays = std::move(copy.m_Arrays);
  return *this;
}

CCooccurrence::~CCooccurrence() = default;

void CCooccurrence::ComputeMatrix(IImage& out, IImage const& in, CTriple<long>* direction) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeMatrix";
  CheckDirection(direction, c_function);
  CheckOutput(out, 1, c_function);
  CheckDimension(in, c_function);
  CheckInPlane(in, *direction, c_function);
  CProgress progress(*this, 2, c_busy);
  ProcessMatrix(in, *direction);
  progress.Advance();
  DataToImage(out);
  progress.Finish();
}

void CCooccurrence::ComputeMatrixAllDirections(IImage& out, IImage const& in) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeMatrixAllDirections";
  CheckDimension(in, c_function);
  int64 const directions = NumberOfDirections(in.Size().Dim());
  if (in.Type() != IMAGE_GREY_8 && in.Type() != IMAGE_GREY_16)
    Impl::Raise(ORVA_LOCATION(c_module, c_function), "input image type not supported");
  CheckOutput(out, directions, c_function);
  CProgress progress(*this, directions, c_busy);
  for (int slice = 0; slice < directions; ++slice) {
    ProcessMatrix(in, m_cDirections[static_cast<std::size_t>(slice)]);
    DataToImage(out, slice);
    progress.Advance();
  }
  progress.Finish();
}

void CCooccurrence::ComputeFeatures(IImage const& in, CTriple<long>* direction,
                                    CValueMap* features) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeFeatures";
  CheckDirection(direction, c_function);
  CheckFeatures(features, c_function);
  CountFeatures(in, *direction, features, c_function);
}

void CCooccurrence::ComputeMatrixAndFeatures(IImage& out, IImage const& in,
                                             CTriple<long>* direction, CValueMap* features) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeMatrixAndFeatures";
  CheckDirection(direction, c_function);
  CheckFeatures(features, c_function);
  CountMatrixAndFeatures(out, in, *direction, features, c_function);
}

void CCooccurrence::ComputeMatrix(IImage& out, IImage const& in, CTriple<long> direction) {
  ComputeMatrix(out, in, &direction);
}

CCooccurrence::CFeatures CCooccurrence::ComputeFeatures(IImage const& in, CTriple<long> direction) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeFeatures";
  CheckDirection(&direction, c_function);
  return CountFeatures(in, direction, nullptr, c_function);
}

CCooccurrence::CFeatures CCooccurrence::ComputeMatrixAndFeatures(IImage& out, IImage const& in,
                                                                 CTriple<long> direction) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ComputeMatrixAndFeatures";
  CheckDirection(&direction, c_function);
  return CountMatrixAndFeatures(out, in, direction, nullptr, c_function);
}

CCooccurrence::CFeatures CCooccurrence::CountFeatures(IImage const& in, CTriple<long> direction,
                                                      CValueMap* map, char const* function) {
  CheckDimension(in, function);
  CheckInPlane(in, direction, function);
  CProgress progress(*this, 3, c_busy);
  ProcessMatrix(in, direction);
  progress.Advance();
  PrepareArrays(NumberOfPairs(in.Size(), direction));
  progress.Advance();
  CFeatures const features = ProcessMap(map);
  progress.Finish();
  return features;
}

CCooccurrence::CFeatures CCooccurrence::CountMatrixAndFeatures(IImage& out, IImage const& in,
                                                               CTriple<long> direction,
                                                               CValueMap* map,
                                                               char const* function) {
  CheckOutput(out, 1, function);
  CheckDimension(in, function);
  CheckInPlane(in, direction, function);
  CProgress progress(*this, 4, c_busy);
  ProcessMatrix(in, direction);
  progress.Advance();
  DataToImage(out);
  progress.Advance();
  PrepareArrays(NumberOfPairs(in.Size(), direction));
  progress.Advance();
  CFeatures const features = ProcessMap(map);
  progress.Finish();
  return features;
}

void CCooccurrence::ProcessMatrix(IImage const& in, CTriple<long> direction) {
  constexpr char c_function[] = "ORVA::CCooccurrence::ProcessMatrix";
  if (in.Size().Dim() != 3 && in.Size().Dim() != 2)
    Impl::Raise(ORVA_LOCATION(c_module, c_function), "Images must be 2d or 3d.");
  auto const type = in.Type();
  if (type != IMAGE_GREY_8 && type != IMAGE_GREY_16 && type != IMAGE_GREY_32)
    Impl::Raise(ORVA_LOCATION(c_module, c_function), "input image type does not match");
  CImageAccess const access = in.CreateAccess(false);
  Impl::StGrayBlock block{access.Base(), access.Extents(), access.Strides(),
                          static_cast<int>(type.Bytes())};
  // The opposite direction counts the transposed matrix.
  std::array<int64, 3> opposite{-direction.x, -direction.y, -direction.z};
  Impl::SortAxes(block, opposite);
  if (!Impl::CountPairs(block, opposite, m_Arrays->Counts(), m_Arrays->scratch)) {
    std::ranges::fill(m_Arrays->m_Counts, 0u);
    Impl::Raise(ORVA_LOCATION(c_module, c_function), "a co-occurrence count exceeds 4294967295");
  }
}

void CCooccurrence::DataToImage(IImage& out) const { DataToImage(out, 0); }

void CCooccurrence::DataToImage(IImage& out, int slice) const {
  if (out.Size().Dim() != 3 && out.Size().Dim() != 2)
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCooccurrence::DataToImage"),
                "Images must be 2d or 3d.");
  CImageAccess const access = out.CreateAccess(true);
  std::byte* const first = access.WritableBase() + slice * access.Stride(0);
  auto const& counts = m_Arrays->m_Counts;
  constexpr auto c_nCell = static_cast<int64>(sizeof(std::uint32_t));
  if (access.Stride(1) == c_nCell && access.Stride(2) == m_cGreyLevels * c_nCell) {
    std::memcpy(first, counts.data(), counts.size() * sizeof(std::uint32_t));
    return;
  }
  auto count = counts.begin();
  for (int64 j = 0; j < m_cGreyLevels; ++j)
    for (int64 i = 0; i < m_cGreyLevels; ++i, ++count)
      std::memcpy(first + i * access.Stride(1) + j * access.Stride(2), &*count, sizeof *count);
}

void CCooccurrence::PrepareArrays(double N) {
  if (std::abs(N) < std::numeric_limits<double>::epsilon())
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CCooccurrence::PrepareArrays"),
                "Cooccurrence::PrepareArrays: division by null/epsilon!");
  Impl::FillTextureArrays(m_Arrays->texture, {m_Arrays->Counts()}, N);
}

CCooccurrence::CFeatures CCooccurrence::ProcessMap(CValueMap* map) const {
  CFeatures const features = Impl::TextureFeatures(m_Arrays->texture);
  if (map == nullptr) return features;
  std::vector<std::pair<CValue_Key, CValue>> entries;
  for (std::size_t k = 0; k < features.size(); ++k)
    entries.emplace_back(m_cFeatureNames[k], CValueDouble(features[k]));
  map->SetEntries(std::move(entries)); // all of them or, where memory runs out, none
  return features;
}

} // namespace ORVA
