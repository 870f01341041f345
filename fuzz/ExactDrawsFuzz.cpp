// Saved states of sources, and exact draws from any words: only a saved state is taken for one, and
// every draw ends and lies where its distribution does.
#include "Fuzzing.h"

#include <SeluUtils/Random/AliasTable.h>
#include <SeluUtils/Random/BallPoint.h>
#include <SeluUtils/Random/DiscPoint.h>
#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactGirdleRotation.h>
#include <SeluUtils/Random/ExactIsotropicRotation.h>
#include <SeluUtils/Random/ExactLogNormal.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactPressedDirections.h>
#include <SeluUtils/Random/ExactRayleigh.h>
#include <SeluUtils/Random/ExactUniform.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/Random/SpherePoint.h>
#include <pxlib2core/RandomSource.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <string>

using namespace ORVA;
using namespace fuzz;

namespace {

constexpr int c_draws = 4;

// The fuzzer's words first, and then those of a stream, so that no loop waits without end for a
// word that ends it.
class CWords {
public:
  using result_type = uint64;

  explicit CWords(CInput& input) : m_Stream(static_cast<uint64>(input.Integer())) {
    for (std::size_t k = input.Count(12); k > 0; --k)
      m_Words.push_back(static_cast<uint64>(input.Integer()));
  }
  uint64 operator()() { return m_Next < m_Words.size() ? m_Words[m_Next++] : m_Stream(); }
  static constexpr uint64 min() { return 0; }
  static constexpr uint64 max() { return ~uint64{0}; }

private:
  std::vector<uint64> m_Words;
  std::size_t m_Next = 0;
  CRandomSource m_Stream;
};

void CheckSavedState(CInput& input) {
  auto const bytes = input.Rest();
  std::string const text(bytes.begin(), bytes.end());
  CRandomSource source(1);
  if (!Done([&] { source.Restore(text); }))
    return Require(source == CRandomSource(1), "a state that is refused changes nothing");
  Require(source.Save() == text, "a state that is taken is that of the text");
  CRandomSource copy = source;
  Require(copy() == source() && copy == source, "a copy goes on alike");
}

template <class Make, class Property>
void CheckDraws(CInput& input, Make make, Property isPossible) {
  auto const distribution = Try(make);
  if (!distribution) return;
  CWords words(input);
  for (int draw = 0; draw < c_draws; ++draw)
    Require(isPossible((*distribution)(words)), "a draw lies where it can");
}

bool IsNotNegative(double value) { return value >= 0; }

void CheckReals(CInput& input) {
  double const a = input.Real(), b = input.Real();
  switch (input.Between(0, 7)) {
  case 0:
    return CheckDraws(
        input, [&] { return CExactUniform(a, b); },
        [&](double value) { return value >= a && value < b; });
  case 1:
    return CheckDraws(
        input, [&] { return CExactNormal(a, b); }, [](double value) { return !std::isnan(value); });
  case 2:
    return CheckDraws(
        input, [&] { return CExactExponential(a); }, IsNotNegative);
  case 3:
    return CheckDraws(
        input, [&] { return CExactRayleigh(a); }, IsNotNegative);
  case 4:
    return CheckDraws(
        input, [&] { return CExactLogNormal(a, b); }, IsNotNegative);
  case 5:
    return CheckDraws(
        input, [&] { return CExactLogNormal::FromMeanAndDeviation(a, b); }, IsNotNegative);
  case 6:
    return CheckDraws(
        input, [&] { return CExactPressedDirections(a); },
        [](double angle) { return angle >= 0 && angle <= std::numbers::pi; });
  default:
    return CheckDraws(
        input, [&] { return CExactGamma(a, b); }, IsNotNegative);
  }
}

void CheckCounts(CInput& input) {
  double const mean = input.Real();
  CheckDraws(
      input, [&] { return CExactPoisson(mean); },
      [&](int64 count) { return count >= 0 && (mean > 0 || count == 0); });
}

void CheckChoice(CInput& input) {
  std::vector<double> weights(input.Count(9));
  for (double& weight : weights) weight = input.Real();
  CheckDraws(
      input, [&] { return CAliasTable(weights); },
      [&](std::size_t index) { return index < weights.size() && weights[index] > 0; });
}

CPolarCoordinates TakeAxis(CInput& input) {
  auto const d = input.RealTriple();
  return {d.x, d.y, d.z};
}

bool IsUnit(double square) { return std::abs(square - 1) < 1e-12; }

template <class Make>
void CheckRotation(CInput& input, Make make) {
  auto const distribution = Try(make);
  if (!distribution) return;
  CWords words(input);
  for (int draw = 0; draw < c_draws; ++draw) {
    auto const d = distribution->Direction(words);
    Require(IsUnit(d.x * d.x + d.y * d.y + d.z * d.z), "a direction has length 1");
    auto const q = distribution->Quaternion(words);
    Require(IsUnit(q.w * q.w + q.x * q.x + q.y * q.y + q.z * q.z), "a quaternion has length 1");
    Require((*distribution)(words).IsValid(), "a draw is a rotation");
  }
}

void CheckRotations(CInput& input) {
  CPolarCoordinates const axis = TakeAxis(input);
  double const parameter = input.Real();
  switch (input.Between(0, 3)) {
  case 0:
    return CheckRotation(input, [&] { return CExactVonMisesFisher(parameter, axis); });
  case 1:
    return CheckRotation(input, [&] { return CExactWatsonRotation(parameter, axis); });
  case 2:
    return CheckRotation(input, [&] { return CExactGirdleRotation(parameter, axis); });
  default:
    return CheckRotation(input, [] { return CExactIsotropicRotation(); });
  }
}

void CheckPoints(CInput& input) {
  auto const center = input.RealTriple();
  double const radius = input.Real();
  CPolarCoordinates const axis = TakeAxis(input);
  auto const isNear = [&](CTriple<double> const& p) {
    auto const d = p - center;
    double const size = std::max({std::abs(center.x), std::abs(center.y), std::abs(center.z)});
    constexpr double tiniest = std::numeric_limits<double>::denorm_min();
    double const most = radius * (1 + 1e-12) + size * 1e-12 + 4 * tiniest;
    return std::abs(d.x) <= most && std::abs(d.y) <= most && std::abs(d.z) <= most;
  };
  CheckDraws(
      input, [&] { return CSpherePoint(center, radius); }, isNear);
  CheckDraws(
      input, [&] { return CBallPoint(center, radius); }, isNear);
  CheckDraws(
      input, [&] { return CDiscPoint(center, radius, axis); }, isNear);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static constexpr std::array<void (*)(CInput&), 6> checks = {
      CheckSavedState, CheckReals, CheckCounts, CheckChoice, CheckRotations, CheckPoints};
  CInput input(data, size);
  input.OneOf(checks)(input);
  return 0;
}
