// Gray levels of any values by any recipe: bulk as one by one, in the order of the values, and
// every voxel accounted for.
#include "Fuzzing.h"

#include <SeluUtils/Texture/Quantizer.h>
#include <pxlib2image/ImageView.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <vector>

using namespace ORVA;
using namespace fuzz;

namespace {

int Levels(CInput& input) {
  return static_cast<int>(input.Flag() ? input.Between(0, 300) : input.Integer() % 70000);
}

std::optional<CQuantizer> TakeQuantizer(CInput& input) {
  auto quantizer = Try([&] {
    double const a = input.Real(), b = input.Real();
    switch (input.Byte() % 6) {
    case 0:
      return CQuantizer::Range(a, b, Levels(input));
    case 1:
      return CQuantizer::BinCount(Levels(input));
    case 2:
      return CQuantizer::BinWidth(a);
    case 3:
      return CQuantizer::BinWidthFrom(a, b);
    case 4:
      return CQuantizer::BinWidthAtMultiple(a);
    default: {
      std::vector<double> edges(input.Count(20));
      for (double& edge : edges) edge = input.Real();
      if (input.Flag()) std::ranges::sort(edges);
      return CQuantizer::ByEdges(edges);
    }
    }
  });
  if (quantizer && input.Flag()) quantizer->Beyond(CQuantizer::EnBeyond::Outside);
  return quantizer;
}

void CheckReport(StLevelReport const& report, std::size_t voxels, int levels) {
  Require(report.Voxels() == voxels, "every voxel has a level");
  Require(report.histogram.size() == static_cast<std::size_t>(levels) + 1, "one place per level");
  Require(report.Greatest() <= levels && report.Occurring() <= levels, "no level above n");
  Require(report.offMask + report.notNumbers <= report.Outside(), "off the mask is outside");
}

// Equal values have equal levels, greater ones none that is lower.
void CheckOrder(CQuantizer const& quantizer, std::vector<double> values) {
  std::erase_if(values, [](double value) { return std::isnan(value); });
  std::ranges::sort(values);
  int before = 0;
  for (double const value : values) {
    int const level = quantizer.Level(value);
    Require(level >= 0 && level <= quantizer.Levels(), "a level is from 0 to n");
    Require(level == 0 || level >= before, "levels follow the values");
    before = std::max(before, level);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  CInput input(data, size);
  auto const quantizer = TakeQuantizer(input);
  if (!quantizer) return 0;
  std::vector<double> values(input.Count(60));
  for (double& value : values) value = input.Real();
  std::vector<std::int8_t> mask(values.size());
  for (auto& label : mask) label = static_cast<std::int8_t>(input.Byte() % 3 - 1);
  auto const n = static_cast<int64>(values.size());
  // The values backwards: the address is that of the last one.
  auto const* const last = values.empty() ? values.data() : values.data() + values.size() - 1;
  CImageView const image(IMAGE_DOUBLE, CSize(n), static_cast<void const*>(last), {-8, 0, 0});
  CImageView const maskView(IMAGE_SIGNED_8, CSize(n), static_cast<void const*>(mask.data()));
  StMask const within{input.Flag() ? &maskView : nullptr,
                      input.Flag() ? std::optional<int64>(input.Between(-2, 2)) : std::nullopt};
  StLevelReport report;
  auto const range = CQuantizer::FindRange(image, within);
  auto const fitted = Try([&] { return quantizer->Fit(range); });
  auto const levels = Try([&] { return quantizer->Quantize(image, within, &report); });
  Require(fitted.has_value() == levels.has_value(), "fitting is what can fail");
  if (!levels) return 0;
  Require(levels->Levels() == fitted->Levels(), "the same levels in one step or two");
  CheckReport(report, values.size(), levels->Levels());
  for (int64 x = 0; x < n; ++x) {
    auto const k = static_cast<std::size_t>(x);
    bool const isWithin =
        within.image == nullptr || (within.label ? mask[k] == *within.label : mask[k] != 0);
    double const value = values[values.size() - 1 - k];
    Require(levels->At({x, 0}) == (isWithin ? fitted->Level(value) : 0), "bulk as one by one");
  }
  CheckOrder(*fitted, values);
  return 0;
}
