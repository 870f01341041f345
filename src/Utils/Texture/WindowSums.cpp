#include "Utils/Texture/WindowSums.h"

#include <SeluUtils/Impl/Int128.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <numbers>
#include <utility>

namespace ORVA::Impl {

namespace {

using enum EnTextureFeature;

// As many digits as let the sum of `units` units stay below 2^62, within what a double resolves.
int BitsFor(int64 units) noexcept {
  return std::min(52, 62 - static_cast<int>(std::bit_width(static_cast<uint64>(units))));
}

int64 LargestLogSum(int64 counts) noexcept {
  return counts * static_cast<int64>(std::bit_width(static_cast<uint64>(counts)));
}

std::array<int64, 5> InverseWeights(int64 difference, double normalizing, double scale) noexcept {
  auto const d = static_cast<double>(difference), relative = d / normalizing;
  auto const fixed = [scale](double weight) { return std::llround(weight * scale); };
  return {fixed(1 / (1 + d)), fixed(1 / (1 + relative)), fixed(1 / (1 + d * d)),
          fixed(1 / (1 + relative * relative)), difference == 0 ? 0 : fixed(1 / (d * d))};
}

// ---------------------------------------------------------------------------------------------
// The formulas

double Mean(int64 sum, StWindowSums const& w) noexcept {
  return static_cast<double>(sum) / static_cast<double>(w.pairs);
}

// The second moment about the mean. In integers, since of the difference of two means of squares
// too few digits may be left.
double Variance(int64 first, int64 second, StWindowSums const& w) noexcept {
  auto const n = static_cast<double>(w.pairs);
  return static_cast<double>(w.pairs * second - first * first) / (n * n);
}

double Entropy(int64 logs, StWindowSums const& w, StWindowUnits const& units) noexcept {
  return Mean(units.logs(w.pairs) - logs, w) * units.logUnit;
}

double CorrelationOf(StWindowSums const& w) noexcept {
  int64 const varianceX = w.pairs * w.x2 - w.x1 * w.x1, varianceY = w.pairs * w.y2 - w.y1 * w.y1;
  if (varianceX == 0 || varianceY == 0) return varianceX == varianceY ? 1 : 0;
  return static_cast<double>(w.pairs * w.xy - w.x1 * w.y1) /
         std::sqrt(static_cast<double>(varianceX) * static_cast<double>(varianceY));
}

double ClusterShadeOf(StWindowSums const& w) noexcept {
  int128 const n = w.pairs, s1 = w.s1;
  auto const moment = n * n * w.s3 - 3 * n * s1 * w.s2 + 2 * s1 * s1 * s1;
  auto const d = static_cast<double>(w.pairs);
  return static_cast<double>(moment) / (d * d * d);
}

double ClusterProminenceOf(StWindowSums const& w) noexcept {
  int128 const n = w.pairs, s1 = w.s1, square = s1 * s1;
  auto const moment =
      n * (n * (n * w.s4 - 4 * s1 * w.s3) + 6 * square * w.s2) - 3 * square * square;
  auto const d = static_cast<double>(w.pairs);
  return static_cast<double>(moment) / (d * d * (d * d));
}

double InformationCorrelation1Of(StWindowSums const& w, StWindowUnits const& units) noexcept {
  int64 const all = units.logs(w.pairs), most = all - std::min(w.rows, w.columns);
  if (most == 0) return 0;
  return static_cast<double>((w.rows - all) + (w.columns - w.joint)) / static_cast<double>(most);
}

// The mutual information of rows and columns in bits; rounding may leave it below 0.
double MutualInformation(StWindowSums const& w, StWindowUnits const& units) noexcept {
  return Mean((units.logs(w.pairs) - w.rows) + (w.joint - w.columns), w) * units.logUnit;
}

double InformationCorrelation2Of(double information) noexcept {
  return std::sqrt(-std::expm1(-2 * std::max(information, 0.0)));
}

double SumAverageOf(StWindowSums const& w, StWindowUnits const& units) noexcept {
  return Mean(w.s1 + w.pairs * (units.levels + 1), w);
}

template <EnTextureFeature Feature>
double Value(StWindowSums const& w, StWindowUnits const& units) noexcept {
  if constexpr (Feature == JointMaximum) return Mean(w.maximum, w);
  if constexpr (Feature == JointAverage) return Mean(w.x1, w);
  if constexpr (Feature == JointVariance) return Variance(w.x1, w.x2, w);
  if constexpr (Feature == JointEntropy) return Entropy(w.joint, w, units);
  if constexpr (Feature == DifferenceVariance) return Variance(w.d1, w.d2, w);
  if constexpr (Feature == DifferenceEntropy) return Entropy(w.differences, w, units);
  if constexpr (Feature == SumAverage) return SumAverageOf(w, units);
  if constexpr (Feature == SumVariance) return Variance(w.s1, w.s2, w);
  if constexpr (Feature == SumEntropy) return Entropy(w.sums, w, units);
  if constexpr (Feature == AngularSecondMoment) {
    auto const n = static_cast<double>(w.pairs);
    return static_cast<double>(w.energy) / (n * n);
  }
  if constexpr (Feature == Contrast) return Mean(w.d2, w);
  if constexpr (Feature == Dissimilarity) return Mean(w.d1, w);
  if constexpr (Feature == InverseDifference)
    return Mean(w.inverse[INVERSE_DIFFERENCE], w) * units.inverseUnit;
  if constexpr (Feature == InverseDifferenceNormalized)
    return Mean(w.inverse[INVERSE_NORMALIZED], w) * units.inverseUnit;
  if constexpr (Feature == InverseDifferenceMoment)
    return Mean(w.inverse[INVERSE_MOMENT], w) * units.inverseUnit;
  if constexpr (Feature == InverseDifferenceMomentNormalized)
    return Mean(w.inverse[INVERSE_MOMENT_NORMALIZED], w) * units.inverseUnit;
  if constexpr (Feature == InverseVariance)
    return Mean(w.inverse[INVERSE_VARIANCE], w) * units.inverseUnit;
  if constexpr (Feature == Correlation) return CorrelationOf(w);
  if constexpr (Feature == Autocorrelation) return Mean(w.xy, w);
  if constexpr (Feature == ClusterShade) return ClusterShadeOf(w);
  if constexpr (Feature == ClusterProminence) return ClusterProminenceOf(w);
  if constexpr (Feature == InformationCorrelation1) return InformationCorrelation1Of(w, units);
  if constexpr (Feature == InformationCorrelation2)
    return InformationCorrelation2Of(MutualInformation(w, units));
  if constexpr (Feature == HaralickSumEntropy) return Entropy(w.sums, w, units) * std::numbers::ln2;
  if constexpr (Feature == HaralickEntropy) return Entropy(w.joint, w, units) * std::numbers::ln2;
  if constexpr (Feature == HaralickDifferenceEntropy)
    return Entropy(w.differences, w, units) * std::numbers::ln2;
  if constexpr (Feature == HaralickInformationCorrelation2)
    return InformationCorrelation2Of(MutualInformation(w, units) * std::numbers::ln2);
  if constexpr (Feature == HaralickSumVariancePrinted) {
    double const off = SumAverageOf(w, units) - Entropy(w.sums, w, units) * std::numbers::ln2;
    return Variance(w.s1, w.s2, w) + off * off;
  }
}

template <EnTextureFeature Feature>
void AddValues(std::span<StWindowSums const> windows, StWindowUnits const& units, double* values) {
  for (StWindowSums const& window : windows) {
    if (window.pairs != 0) *values += Value<Feature>(window, units);
    ++values;
  }
}

// ---------------------------------------------------------------------------------------------

// The feature whose formula one has; itself for most.
constexpr EnTextureFeature FormulaOf(EnTextureFeature feature) noexcept {
  switch (feature) {
  case DifferenceAverage:
    return Dissimilarity;
  case ClusterTendency:
  case HaralickSumVariance:
    return SumVariance;
  case HaralickAngularSecondMoment:
    return AngularSecondMoment;
  case HaralickContrast:
    return Contrast;
  case HaralickCorrelation:
    return Correlation;
  case HaralickVariance:
    return JointVariance;
  case HaralickInverseDifferenceMoment:
    return InverseDifferenceMoment;
  case HaralickSumAverage:
    return SumAverage;
  case HaralickDifferenceVariance:
    return DifferenceVariance;
  case HaralickInformationCorrelation1:
    return InformationCorrelation1;
  case HaralickMaximalCorrelation:
    return MaximalCorrelation;
  default:
    return feature;
  }
}

template <std::size_t... K>
constexpr std::array<Finish, sizeof...(K)> AllFinishers(std::index_sequence<K...>) {
  return {[] {
    constexpr auto feature = FormulaOf(static_cast<EnTextureFeature>(K));
    if constexpr (feature == MaximalCorrelation)
      return Finish{nullptr};
    else
      return &AddValues<feature>;
  }()...};
}

constexpr auto c_finishers = AllFinishers(std::make_index_sequence<c_nTextureFeatures>());

} // namespace

StWindowUnits::StWindowUnits(int64 pairs, int64 counts, int levelCount, int normalizingLevels)
    : levels(levelCount), logBits(BitsFor(LargestLogSum(pairs))), inverseBits(BitsFor(pairs)),
      logUnit(std::ldexp(1, -logBits)), inverseUnit(std::ldexp(1, -inverseBits)),
      logs(counts, logBits) {
  double const scale = std::ldexp(1, inverseBits);
  for (int d = 0; d < levels; ++d) inverse.push_back(InverseWeights(d, normalizingLevels, scale));
}

Finish Finisher(EnTextureFeature feature) noexcept {
  return c_finishers[static_cast<std::size_t>(feature)];
}

StWindowNeeds NeedsOf(std::span<EnTextureFeature const> features) noexcept {
  StWindowNeeds needs;
  for (EnTextureFeature const feature : features) switch (FormulaOf(feature)) {
    case JointMaximum:
      needs.maximum = true;
      [[fallthrough]];
    case JointEntropy:
    case HaralickEntropy:
    case AngularSecondMoment:
      needs.joint = true;
      break;
    case InformationCorrelation1:
    case InformationCorrelation2:
    case HaralickInformationCorrelation2:
      needs.joint = needs.marginals = true;
      break;
    case DifferenceEntropy:
    case HaralickDifferenceEntropy:
      needs.differences = true;
      break;
    case SumEntropy:
    case HaralickSumEntropy:
    case HaralickSumVariancePrinted:
      needs.sums = true;
      break;
    default:
      break;
    }
  return needs;
}

} // namespace ORVA::Impl
