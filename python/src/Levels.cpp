#include "Levels.h"

#include "Boxes.h"
#include "Watch.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <utility>

namespace selu_python {
namespace {

using ORVA::CImageView;
using ORVA::CLevelImage;
using ORVA::CQuantizer;
using ORVA::CString;
using ORVA::int64;
using ORVA::StValueRange;

constexpr char c_module[] = "python/src/Levels";
// Matrices of more levels are not made unless they are asked for: a matrix has their square.
constexpr int c_mostUnasked = 1024;

[[noreturn]] void RaiseRecipe(char const* message) {
  ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "Recipe"), message);
}

int CheckedLevels(int64 levels, char const* name) {
  if (levels < 1 || levels > ORVA::c_mostLevels)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "Recipe"),
                              CString("%1 must be from 1 to 65535, not %2").Arg(name).Arg(levels));
  return static_cast<int>(levels);
}

CQuantizer WidthQuantizer(double width, py::object const& anchor) {
  if (anchor.is_none()) return CQuantizer::BinWidth(width);
  if (!py::isinstance<py::str>(anchor))
    return CQuantizer::BinWidthFrom(anchor.cast<double>(), width);
  auto const name = anchor.cast<std::string>();
  if (name == "least") return CQuantizer::BinWidth(width);
  if (name == "multiple") return CQuantizer::BinWidthAtMultiple(width);
  ORVA::Impl::RaiseBadParam(
      ORVA_LOCATION(c_module, "Recipe"),
      CString("anchor must be a number, \"least\" or \"multiple\", not \"%1\"").Arg(name.c_str()));
}

bool IsReal(CImageView const& image) {
  return image.Type() == ORVA::IMAGE_GREY_F || image.Type() == ORVA::IMAGE_DOUBLE;
}

// What fits the box of a mask to that of its image.
class CMaskBox {
public:
  CMaskBox(CMask const& mask, ORVA::CPos const& low, ORVA::CPos const& high) {
    if (mask.IsGiven()) m_View = mask.View().Box(low, high);
  }
  [[nodiscard]] ORVA::StMask Get() const noexcept {
    return {m_View ? &*m_View : nullptr, std::nullopt};
  }

private:
  std::optional<CImageView> m_View;
};

CLevelImage Quantized(CQuantizer const& quantizer, CImageView const& image, CMask const& mask) {
  ORVA::CSize const size = image.Size();
  if (size.IsEmpty() || Voxels({}, {size.x, size.y, size.z}) <= c_boxVoxels)
    return quantizer.Quantize(image, mask.Get());
  int const n = quantizer.Levels();
  ORVA::CImage levels(n <= 255 ? ORVA::IMAGE_GREY_8 : ORVA::IMAGE_GREY_16, size);
  auto const access = levels.CreateAccess(true);
  CImageView pixels(levels.Type(), size, static_cast<void*>(access.WritableBase()));
  CWatch watch;
  ForEachBox(size, [&](ORVA::CPos const& low, ORVA::CPos const& high) {
    CImageView part = pixels.Box(low, high);
    quantizer.QuantizeInto(part, image.Box(low, high), CMaskBox(mask, low, high).Get());
    watch.Advance();
  });
  return {levels, n};
}

// The range of the integers within; they must be levels from 0 to `most`.
StValueRange LevelRange(CImageView const& image, CMask const& mask, int most) {
  if (IsReal(image))
    RaiseRecipe("floating-point values are no gray levels: say how to make them by bin_width, "
                "bin_count, or levels and range");
  StValueRange const range = FindRange(image, mask);
  double const wrong = range.low < 0 ? range.low : range.high;
  if (range.voxels > 0 && (range.low < 0 || range.high > most))
    ORVA::Impl::RaiseBadParam(
        ORVA_LOCATION(c_module, "LevelsOf"),
        CString("the value %1 occurs, but values that are taken as they are must be from 0 to %2; "
                "bin_width, bin_count, or levels and range make levels of others")
            .Arg(static_cast<int64>(wrong))
            .Arg(most));
  return range;
}

// Value v becomes level v - first + 1; what is not from `first` to first + n - 1 is outside.
CLevelImage Shifted(CImageView const& image, int first, int n, CMask const& mask) {
  return Quantized(
      CQuantizer::Range(first - 0.5, first + n - 0.5, n).Beyond(CQuantizer::EnBeyond::Outside),
      image, mask);
}

CLevelImage PlainLevels(CImageView const& image, std::optional<int> levels, CMask const& mask) {
  bool const isReady = image.Type() == ORVA::IMAGE_GREY_8 || image.Type() == ORVA::IMAGE_GREY_16;
  int const most = levels.value_or(ORVA::c_mostLevels);
  if (isReady && !mask.IsGiven() && !levels) return CLevelImage(image);
  StValueRange const range = LevelRange(image, mask, most);
  int const n = levels.value_or(range.high < 1 ? 1 : static_cast<int>(range.high));
  if (isReady && !mask.IsGiven()) return {image, n};
  return Shifted(image, 1, n, mask);
}

} // namespace

CRecipe::CRecipe(std::optional<int64> levels, std::optional<double> binWidth,
                 std::optional<int64> binCount, std::optional<std::pair<double, double>> range,
                 py::object const& anchor) {
  if (levels.has_value() + binWidth.has_value() + binCount.has_value() > 1)
    RaiseRecipe("give one of levels, bin_width and bin_count");
  if (!anchor.is_none() && !binWidth) RaiseRecipe("anchor is for bin_width");
  if (range && binWidth) RaiseRecipe("range is for levels and bin_count; bin_width has an anchor");
  if (range && !levels && !binCount) RaiseRecipe("range needs levels or bin_count");
  if (binWidth) m_Quantizer = WidthQuantizer(*binWidth, anchor);
  if (levels) m_Levels = CheckedLevels(*levels, "levels");
  if (binCount) m_Levels = CheckedLevels(*binCount, "bin_count");
  if (range) m_Quantizer = CQuantizer::Range(range->first, range->second, *m_Levels);
  if (binCount && !range) m_Quantizer = CQuantizer::BinCount(*m_Levels);
}

CRecipe CRecipe::Fit(ORVA::StValueRange const& range) const {
  CRecipe fitted = *this;
  if (m_Quantizer) fitted.m_Quantizer = m_Quantizer->Fit(range);
  return fitted;
}

CMask::CMask(py::handle mask, ORVA::CSize const& image) {
  if (mask.is_none()) return;
  m_View.emplace(LabelViewOf(mask, "mask"));
  if (IsReal(*m_View))
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "CMask"),
                              "mask must be bool or integers, not floating-point numbers");
  if (m_View->Size() != image)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "CMask"),
                              "mask and image must have the same shape");
}

StValueRange FindRange(CImageView const& image, CMask const& mask) {
  StValueRange range;
  CWatch watch;
  ForEachBox(image.Size(), [&](ORVA::CPos const& low, ORVA::CPos const& high) {
    range += CQuantizer::FindRange(image.Box(low, high), CMaskBox(mask, low, high).Get());
    watch.Advance();
  });
  return range;
}

StLevels LevelsOf(CImageView const& image, CRecipe const& recipe, CMask const& mask) {
  if (recipe.IsPlain()) return {PlainLevels(image, recipe.Levels(), mask), {}};
  CQuantizer quantizer = recipe.Quantizer();
  if (quantizer.NeedsRange()) quantizer = quantizer.Fit(FindRange(image, mask));
  return {Quantized(quantizer, image, mask), quantizer.Edges()};
}

int CountValues(CImageView const& image, std::optional<int> levels, CMask const& mask) {
  bool const isByte = image.Type() == ORVA::IMAGE_GREY_8 || image.Type() == ORVA::IMAGE_SIGNED_8;
  int const most = levels.value_or(isByte ? 256 : c_mostUnasked) - 1;
  StValueRange const range = LevelRange(image, mask, most);
  return levels.value_or(isByte ? 256 : static_cast<int>(range.high) + 1);
}

CLevelImage ValuesAsLevels(CImageView const& image, std::optional<int> levels, CMask const& mask) {
  return Shifted(image, 0, CountValues(image, levels, mask), mask);
}

} // namespace selu_python
