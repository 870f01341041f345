// The bulk work of CQuantizer: from pixels to levels, block by block.
#include <SeluUtils/Texture/Quantizer.h>

#include "Utils/Cooccurrence/Strides.h"
#include "Utils/Texture/Binning.h"
#include "Utils/Texture/PixelBlocks.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

namespace ORVA {

namespace {

using Impl::c_nPixelBlock;
using Impl::CBinning;

constexpr char c_module[] = "src/Utils/Texture";

CString Text(std::array<int64, 3> const& extents) {
  return CString("(%1, %2, %3)").Arg(extents[0]).Arg(extents[1]).Arg(extents[2]);
}

// An image and the mask over it, if any, ready to be read together.
class CMaskedPixels {
public:
  CMaskedPixels(IImage const& image, StMask const& mask, char const* function)
      : m_Image(image.CreateAccess(false)), m_Load(Impl::LoaderOf(image.Type())), m_Mask(mask) {
    if (m_Load == nullptr)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                          CString("an image of the type %1 has no values to quantize")
                              .Arg(CString(image.Type().ToString())));
    if (mask.image == nullptr) return;
    m_MaskAccess = mask.image->CreateAccess(false);
    m_LoadMask = Impl::MaskLoaderOf(mask.image->Type());
    if (m_LoadMask == nullptr)
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                          CString("a mask of the type %1 has no integer labels")
                              .Arg(CString(mask.image->Type().ToString())));
    if (m_MaskAccess->Extents() != m_Image.Extents())
      Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                          CString("a mask of extents %1 does not fit an image of extents %2")
                              .Arg(Text(m_MaskAccess->Extents()))
                              .Arg(Text(m_Image.Extents())));
  }

  [[nodiscard]] CImageAccess const& Image() const noexcept { return m_Image; }
  [[nodiscard]] std::array<int64, 3> MaskStrides() const noexcept {
    return m_MaskAccess ? m_MaskAccess->Strides() : std::array<int64, 3>{};
  }

  // Fills the buffers with n voxels at these offsets, n up to the size of a block.
  void Load(int64 pixel, int64 pixelStride, int64 mask, int64 maskStride, std::size_t n) {
    m_Load(m_Image.Base() + pixel, n, pixelStride, values.data());
    if (m_LoadMask != nullptr)
      m_LoadMask(m_MaskAccess->Base() + mask, n, maskStride, m_Mask.label.has_value(),
                 m_Mask.label.value_or(0), isWithin.data());
  }

  [[nodiscard]] bool HasMask() const noexcept { return m_LoadMask != nullptr; }

  std::array<double, c_nPixelBlock> values;
  std::array<std::uint8_t, c_nPixelBlock> isWithin; // with a mask only

private:
  CImageAccess m_Image;
  Impl::PixelLoader m_Load;
  StMask m_Mask;
  std::optional<CImageAccess> m_MaskAccess;
  Impl::MaskLoader m_LoadMask = nullptr;
};

// Calls use(offset of each box, n) for pieces of at most a block of a box's rows.
template <std::size_t N, class Use>
void ForEachBlock(Impl::StJointBox<N> const& box, Use use) {
  box.ForEachRow([&](std::array<int64, N> at) {
    for (int64 left = box.extent[0]; left > 0;) {
      auto const n = std::min(left, static_cast<int64>(c_nPixelBlock));
      use(at, static_cast<std::size_t>(n));
      for (std::size_t k = 0; k < N; ++k) at[k] += n * box.stride[k][0];
      left -= n;
    }
  });
}

// What became of the values of one image.
class CLeveler {
public:
  CLeveler(CBinning const& bins, int n, bool hasNone, bool clamps)
      : m_Bins(bins), m_HasNone(hasNone), m_Below(clamps ? 1 : 0), m_Above(clamps ? n : 0) {
    report.histogram.resize(static_cast<std::size_t>(n) + 1);
  }

  void Run(CMaskedPixels const& pixels, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) levels[i] = LevelOf(m_Bins.Find(pixels.values[i]));
    CountRuns(n);
  }

  void RunMasked(CMaskedPixels const& pixels, std::size_t n) {
    std::size_t off = 0;
    for (std::size_t i = 0; i < n; ++i) {
      levels[i] = pixels.isWithin[i] != 0 ? LevelOf(m_Bins.Find(pixels.values[i])) : 0;
      off += pixels.isWithin[i] == 0;
    }
    report.offMask += off;
    CountRuns(n);
  }

  std::array<std::uint16_t, c_nPixelBlock> levels;
  StLevelReport report;

private:
  [[nodiscard]] std::uint16_t LevelOf(int bin) noexcept {
    return bin > 0 && !m_HasNone ? static_cast<std::uint16_t>(bin) : LevelBeyond(bin);
  }

  [[nodiscard]] std::uint16_t LevelBeyond(int bin) noexcept {
    if (bin == CBinning::c_none) {
      ++report.notNumbers;
      return 0;
    }
    // Without a single finite value, what is left are infinities of either sign.
    bool const isBelow = bin == CBinning::c_below;
    ++(isBelow ? report.below : report.above);
    if (m_HasNone) return 0;
    return static_cast<std::uint16_t>(isBelow ? m_Below : m_Above);
  }

  // Neighbors often share a level: one addition for each run.
  void CountRuns(std::size_t n) noexcept {
    std::size_t first = 0;
    for (std::size_t i = 1; i <= n; ++i)
      if (i == n || levels[i] != levels[first]) {
        report.histogram[levels[first]] += i - first;
        first = i;
      }
  }

  CBinning m_Bins;
  bool m_HasNone;
  int m_Below, m_Above;
};

template <class T>
void Store(std::uint16_t const* levels, std::size_t n, std::byte* first, int64 stride) noexcept {
  for (std::size_t i = 0; i < n; ++i) {
    auto const level = static_cast<T>(levels[i]);
    std::memcpy(first + static_cast<int64>(i) * stride, &level, sizeof level);
  }
}

} // namespace

StValueRange CQuantizer::FindRange(IImage const& image, StMask const& mask) {
  CMaskedPixels pixels(image, mask, "ORVA::CQuantizer::FindRange");
  Impl::StJointBox<2> box{
      pixels.Image().Extents(), {pixels.Image().Strides(), pixels.MaskStrides()}, {}};
  box.Normalize();
  StValueRange range;
  ForEachBlock(box, [&](std::array<int64, 2> const& at, std::size_t n) {
    pixels.Load(at[0], box.stride[0][0], at[1], box.stride[1][0], n);
    StValueRange block{HUGE_VAL, -HUGE_VAL, 0};
    for (std::size_t i = 0; i < n; ++i) {
      double const value = pixels.values[i];
      if (!std::isfinite(value) || (pixels.HasMask() && pixels.isWithin[i] == 0)) continue;
      block.low = std::min(block.low, value);
      block.high = std::max(block.high, value);
      ++block.voxels;
    }
    range += block;
  });
  return range;
}

CLevelImage CQuantizer::Quantize(IImage const& image, StMask const& mask,
                                 StLevelReport* report) const {
  CQuantizer const fitted = m_IsFitted ? *this : Fit(FindRange(image, mask));
  CImage pixels(fitted.m_Levels <= 255 ? IMAGE_GREY_8 : IMAGE_GREY_16, image.Size());
  fitted.QuantizeInto(pixels, image, mask, report);
  return {pixels, fitted.m_Levels, CLevelImage::StUnchecked()};
}

void CQuantizer::QuantizeInto(IImage& levels, IImage const& image, StMask const& mask,
                              StLevelReport* report) const {
  if (!m_IsFitted) return Fit(FindRange(image, mask)).QuantizeInto(levels, image, mask, report);
  char const* const function = "ORVA::CQuantizer::QuantizeInto";
  if (levels.Type() != IMAGE_GREY_16 && (levels.Type() != IMAGE_GREY_8 || m_Levels > 255))
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("%1 levels do not fit an image of the type %2")
                            .Arg(m_Levels)
                            .Arg(CString(levels.Type().ToString())));
  CMaskedPixels pixels(image, mask, function);
  CImageAccess const out = levels.CreateAccess(true);
  if (out.Extents() != pixels.Image().Extents())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("levels of extents %1 do not fit an image of extents %2")
                            .Arg(Text(out.Extents()))
                            .Arg(Text(pixels.Image().Extents())));
  Impl::StJointBox<3> box{
      out.Extents(), {pixels.Image().Strides(), pixels.MaskStrides(), out.Strides()}, {}};
  box.Normalize();
  CLeveler leveler(Binning(), m_Levels, m_HasNone, m_Beyond == EnBeyond::Clamp);
  auto const store = levels.Type() == IMAGE_GREY_8 ? Store<std::uint8_t> : Store<std::uint16_t>;
  std::byte* const first = out.WritableBase();
  ForEachBlock(box, [&](std::array<int64, 3> const& at, std::size_t n) {
    pixels.Load(at[0], box.stride[0][0], at[1], box.stride[1][0], n);
    pixels.HasMask() ? leveler.RunMasked(pixels, n) : leveler.Run(pixels, n);
    store(leveler.levels.data(), n, first + at[2], box.stride[2][0]);
  });
  if (report != nullptr) *report = std::move(leveler.report);
}

} // namespace ORVA
