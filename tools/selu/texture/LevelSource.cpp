#include "texture/LevelSource.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>

namespace selu {
namespace {

using ORVA::CImage;
using ORVA::CQuantizer;
using ORVA::int64;

// Of the types that the framework has.
ORVA::IImage::CType TypeOf(EnPixel pixel) {
  switch (pixel) {
  case EnPixel::UInt8:
    return ORVA::IMAGE_GREY_8;
  case EnPixel::Int8:
    return ORVA::IMAGE_SIGNED_8;
  case EnPixel::UInt16:
    return ORVA::IMAGE_GREY_16;
  case EnPixel::Int16:
    return ORVA::IMAGE_SIGNED_16;
  case EnPixel::UInt32:
    return ORVA::IMAGE_GREY_32;
  case EnPixel::Int32:
    return ORVA::IMAGE_SIGNED_32;
  case EnPixel::Float:
    return ORVA::IMAGE_GREY_F;
  default:
    return ORVA::IMAGE_DOUBLE;
  }
}

bool Has64BitIntegers(EnPixel pixel) { return pixel == EnPixel::UInt64 || pixel == EnPixel::Int64; }

// A copy whose pixels are what the function makes of each value.
template <class Out, class Convert>
std::unique_ptr<ORVA::IImage> Converted(CRawImage const& image, ORVA::IImage::CType type,
                                        Convert convert) {
  auto copy = std::make_unique<CImage>(type, image.Size());
  auto const access = copy->CreateAccess(true);
  auto* out = reinterpret_cast<Out*>(access.WritableBase());
  VisitPixels(image, [&](auto pixels) {
    for (auto const value : pixels) *out++ = convert(value);
  });
  return copy;
}

std::unique_ptr<ORVA::IImage> Viewed(CRawImage const& image) {
  return std::make_unique<ORVA::CImageView>(TypeOf(image.Pixel()), image.Size(),
                                            static_cast<void const*>(image.Bytes().data()));
}

template <class T>
std::string ValueText(T value) {
  if constexpr (std::is_floating_point_v<T>)
    return Shortest(value);
  else
    return std::to_string(value);
}

// The range of all values of a pixel type.
StRange OwnRange(EnPixel pixel, std::filesystem::path const& path) {
  if (!HasOwnGrayLevels(pixel))
    throw CAppError(Quoted(path) + " has " + PixelText(pixel) +
                    " pixels, which need --range LO,HI, --bin-width or --bin-count to map them to "
                    "levels");
  return {0, std::ldexp(1.0, static_cast<int>(PixelBytes(pixel)) * 8)};
}

CQuantizer QuantizerOf(StLevelRecipe const& recipe, EnPixel pixel,
                       std::filesystem::path const& path) {
  switch (recipe.kind) {
  case StLevelRecipe::EnKind::Width:
    return CQuantizer::BinWidth(recipe.width);
  case StLevelRecipe::EnKind::WidthFrom:
    return CQuantizer::BinWidthFrom(recipe.start, recipe.width);
  case StLevelRecipe::EnKind::WidthAtMultiple:
    return CQuantizer::BinWidthAtMultiple(recipe.width);
  case StLevelRecipe::EnKind::Count:
    return CQuantizer::BinCount(recipe.levels);
  case StLevelRecipe::EnKind::Range:
    break;
  }
  StRange const range = recipe.range ? *recipe.range : OwnRange(pixel, path);
  return CQuantizer::Range(range.low, range.high, recipe.levels);
}

} // namespace

std::unique_ptr<ORVA::IImage> ValuesOf(CRawImage const& image, std::filesystem::path const& path) {
  if (!Has64BitIntegers(image.Pixel())) return Viewed(image);
  constexpr auto most = int64{1} << 53U; // beyond it not every integer is a double
  return Converted<double>(image, ORVA::IMAGE_DOUBLE, [&]<class T>(T value) {
    bool isExact = true;
    if constexpr (std::is_integral_v<T>)
      isExact = std::cmp_less_equal(value, most) && std::cmp_greater_equal(value, -most);
    if (!isExact)
      throw CAppError(Quoted(path) + " has the value " + ValueText(value) +
                      ", but levels are made of integers up to 9007199254740992 (2^53)");
    return static_cast<double>(value);
  });
}

std::unique_ptr<ORVA::IImage> LabelsOf(CRawImage const& mask, std::filesystem::path const& path) {
  bool const isReal = mask.Pixel() == EnPixel::Float || mask.Pixel() == EnPixel::Double;
  if (!isReal && !Has64BitIntegers(mask.Pixel())) return Viewed(mask);
  return Converted<std::int32_t>(mask, ORVA::IMAGE_SIGNED_32, [&]<class T>(T value) {
    constexpr T low = std::is_signed_v<T> ? static_cast<T>(INT32_MIN) : T{0};
    constexpr T beyond = static_cast<T>(int64{INT32_MAX} + 1);
    bool isLabel = value >= low && value < beyond;
    if constexpr (std::is_floating_point_v<T>) isLabel = isLabel && std::trunc(value) == value;
    if (!isLabel)
      throw CAppError(Quoted(path) + " has the value " + ValueText(value) +
                      ", but a mask has whole numbers, up to 2147483647 in such pixels");
    return static_cast<std::int32_t>(value);
  });
}

// Calls use(values, mask) for the slices from `from` up to but not including `to`.
template <class Use>
auto CLevelSource::UseSlices(int64 from, int64 to, Use use) {
  CRawImage const pixels = m_Image.Slab(from, to);
  auto const values = ValuesOf(pixels, m_Image.Path());
  if (m_Mask == nullptr) return use(*values, ORVA::StMask{});
  CRawImage const maskPixels = m_Mask->Slab(from, to);
  auto const labels = LabelsOf(maskPixels, m_Mask->Path());
  return use(*values, ORVA::StMask{labels.get(), m_Label});
}

CLevelSource::CLevelSource(CVolumeSource& image, CVolumeSource* mask, StLevelRecipe const& recipe)
    : m_Image(image), m_Mask(mask), m_Label(recipe.label),
      m_Quantizer(QuantizerOf(recipe, image.Pixel(), image.Path())) {
  if (!m_Quantizer.NeedsRange()) return;
  ORVA::StValueRange range;
  for (StSlab const& slab : Slabs({}))
    range += UseSlices(slab.first, slab.last, [](auto const& values, auto const& masked) {
      return CQuantizer::FindRange(values, masked);
    });
  m_Quantizer = m_Quantizer.Fit(range);
}

double CLevelSource::BytesPerSlice() const noexcept {
  constexpr double bytesPerLevel = 2;
  double const image = m_Image.BytesPerSlice();
  double const voxels = image / static_cast<double>(PixelBytes(m_Image.Pixel()));
  return image + (m_Mask == nullptr ? 0 : m_Mask->BytesPerSlice()) + voxels * bytesPerLevel;
}

std::vector<StSlab> CLevelSource::Slabs(StHalo const& halo) const {
  return SlabsOf(Size(), BytesPerSlice(), halo);
}

ORVA::CLevelImage CLevelSource::Levels(StSlab const& slab) {
  return UseSlices(slab.from, slab.to, [&](auto const& values, auto const& masked) {
    ORVA::StLevelReport report;
    auto levels = m_Quantizer.Quantize(values, masked, &report);
    m_HasVoxels = m_HasVoxels || report.Outside() < report.Voxels();
    m_IsMasked = m_IsMasked || report.offMask > 0;
    return levels;
  });
}

void CLevelSource::RequireVoxels() const {
  if (m_HasVoxels) return;
  throw CAppError(Quoted(m_Image.Path()) + " has no voxel to measure: all are " +
                  (m_IsMasked ? "off the mask or NaN" : "NaN"));
}

} // namespace selu
