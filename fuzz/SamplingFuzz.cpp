// Random generators with any parameters: a few draws end, and lie where the distribution does.
#include "Fuzzing.h"

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/PressedDirections.h>
#include <SeluUtils/Random/RandomDiscrete.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomLogNormal.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomRayleigh.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/UniformPoint.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <pxlib2core/Random.h>

#include <cmath>
#include <map>
#include <memory>
#include <numbers>

using namespace ORVA;
using namespace fuzz;

namespace {

constexpr int c_draws = 5;

// Draws that a seed repeats, each of which `isPossible`.
template <class Generator, class Property>
void CheckDraws(CInput& input, Generator const& generator, Property isPossible) {
  auto const seed = static_cast<uint64>(input.Integer());
  std::array<double, c_draws> values{};
  CRandom::Obj().Seed(seed);
  for (auto& value : values) value = static_cast<double>(generator());
  for (double const value : values) Require(isPossible(value), "a draw lies where it can");
  CRandom::Obj().Seed(seed);
  for (double const value : values) {
    auto const again = static_cast<double>(Generator(generator)());
    if constexpr (!std::is_same_v<Generator, CRandomNormal> &&
                  !std::is_same_v<Generator, CRandomLogNormal>) // which draw in pairs
      Require(again == value || (std::isnan(again) && std::isnan(value)), "a seed repeats draws");
  }
}

bool Any(double) { return true; }
bool IsNotNegative(double value) { return value >= 0; }

void CheckUniform(CInput& input) {
  double const low = input.Real(), high = input.Real();
  auto const uniform = Try([&] { return CRandomUniform(low, high); });
  Require(uniform.has_value() == !(high < low), "an end before the start is refused");
  if (!uniform) return;
  bool const isPlain = std::isfinite(low) && std::isfinite(high - low);
  CheckDraws(input, *uniform,
             [&](double value) { return !isPlain || (low <= value && value <= high); });
  std::vector<double> many(input.Count(9));
  (*uniform)(many);
  std::vector<float> floats(input.Count(9));
  if (isPlain && std::abs(low) < 1e30 && std::abs(high) < 1e30) (*uniform)(floats);
  CUniformPoint const place({low, low, low}, {high, high, high});
  static_cast<void>(place());
}

void CheckPositive(CInput& input) {
  double const scale = input.Real();
  bool const isValid = std::isfinite(scale) && scale > std::numeric_limits<double>::min();
  CRandomExponential const exponential(scale);
  CheckDraws(input, exponential, isValid ? IsNotNegative : Any);
  CRandomRayleigh const rayleigh(scale);
  CheckDraws(input, rayleigh, isValid ? IsNotNegative : Any);
  Require(exponential.IsValid() == isValid && (rayleigh.IsValid() || !isValid),
          "positive normal numbers are valid");
}

void CheckNormal(CInput& input) {
  double const mean = input.Real(), sigma = input.Real();
  CheckDraws(input, CRandomNormal(mean, sigma), Any);
  auto logNormal = Try([&] { return CRandomLogNormal(mean, sigma); });
  Require(logNormal.has_value() == (std::isfinite(mean) && std::isfinite(sigma)),
          "parameters are finite");
  CRandomLogNormal other;
  if (Done([&] { other.SetLogNormalExpectationAndStDeviation(mean, sigma); }))
    CheckDraws(input, other, [&](double value) { return value >= 0 || !other.IsValid(); });
  if (logNormal) CheckDraws(input, *logNormal, IsNotNegative);
}

void CheckGamma(CInput& input) {
  double const shape = input.Real(), rate = input.Real();
  CRandomGamma const gamma(shape, rate);
  bool const isValid = shape > 0 && rate > 0 && gamma.IsValid();
  CheckDraws(input, gamma,
             [&](double value) { return isValid ? value >= 0 : shape >= 0 || std::isnan(value); });
}

void CheckPoisson(CInput& input) {
  double const mean = input.Real();
  CheckDraws(input, CRandomPoisson(mean), [&](double value) {
    return mean > 0 ? value >= 0 && value <= std::numeric_limits<std::int32_t>::max() : value == 0;
  });
}

// No NaN among the values: a map does not order it.
void CheckDiscrete(CInput& input) {
  std::map<double, double> weights;
  for (std::size_t k = input.Count(6); k > 0; --k) {
    double const value = input.Real(), weight = input.Real();
    if (!std::isnan(value)) weights[value] = weight;
  }
  CRandomDiscrete const discrete(weights);
  static_cast<void>(discrete.IsValid());
  if (weights.empty()) return Require(Throws<CException>([&] { discrete(); }), "nothing to draw");
  CheckDraws(input, discrete, [&](double value) { return weights.contains(value); });
}

void CheckPressed(CInput& input) {
  double const factor = input.Real();
  CheckDraws(input, CPressedDirections(factor, input.Real()), [&](double angle) {
    return std::isnan(angle) ? !std::isfinite(factor) : angle >= 0 && angle <= std::numbers::pi;
  });
}

CPolarCoordinates TakeAxis(CInput& input) {
  if (input.Flag()) {
    auto const d = input.RealTriple(); // angles that no one checks
    return {d.x, d.y, d.z};
  }
  double const theta = input.Real(), phi = input.Real();
  auto const axis = Try([&] { return CPolarCoordinates(theta, phi); });
  bool const isValid =
      theta >= 0 && theta <= std::numbers::pi && phi >= 0 && phi < 2 * std::numbers::pi;
  Require(axis.has_value() == isValid, "angles are checked");
  return axis.value_or(CPolarCoordinates(0.0, 0.0));
}

std::unique_ptr<IRotationGenerator> TakeGenerator(CInput& input) {
  CPolarCoordinates const axis = TakeAxis(input);
  double const parameter = input.Real();
  switch (input.Between(0, 4)) {
  case 0:
    return std::make_unique<CVonMisesFisher>(parameter, axis);
  case 1:
    return std::make_unique<CWatsonRotation>(parameter, axis);
  case 2:
    if (auto girdle = Try([&] { return CGirdleRotation(parameter, axis); }))
      return std::make_unique<CGirdleRotation>(*girdle);
    return nullptr;
  case 3: {
    auto fixed = Try([&] { return CFixRotation(CEulerRotation(axis, parameter)); });
    return fixed ? std::make_unique<CFixRotation>(*fixed) : nullptr;
  }
  default:
    return std::make_unique<CIsotropicRotation>();
  }
}

bool IsUnit(CTriple<double> const& d) {
  return std::abs(d.x * d.x + d.y * d.y + d.z * d.z - 1) < 1e-9;
}

// Rotations or the rotation's own error; a clone draws what the original does.
void CheckRotations(CInput& input, IRotationGenerator& generator) {
  auto const seed = static_cast<uint64>(input.Integer());
  std::unique_ptr<IRotationGenerator> const clone(generator.Clone());
  Require(clone->IsValid() == generator.IsValid(), "a clone is as valid as its original");
  for (uint64 draw = 0; draw < c_draws; ++draw) {
    CRandom::Obj().Seed(seed + draw);
    auto const rotation = Try([&] { return generator(); });
    CRandom::Obj().Seed(seed + draw);
    auto const same = Try([&] { return (*clone)(); });
    Require(rotation.has_value() == same.has_value(), "a clone fails like its original");
    if (!rotation) continue;
    Require(rotation->IsValid() && IsUnit(rotation->getDirectionVector()), "a draw is a rotation");
    Require(rotation->getRotationMatrix().Elements()[8] == same->getRotationMatrix().Elements()[8],
            "a clone draws what its original does");
  }
}

void CheckRotation(CInput& input) {
  auto const generator = TakeGenerator(input);
  if (generator) CheckRotations(input, *generator);
}

void CheckProduct(CInput& input) {
  CPolarCoordinates const first = TakeAxis(input), second = TakeAxis(input);
  double const kappa1 = input.Real(), kappa2 = input.Real();
  CVonMisesFisher fisher(1.0, CVonMisesFisher::zaxis);
  static_cast<void>(fisher.GenerateTheta(kappa1));
  for (int draw = 0; draw < c_draws; ++draw) {
    auto const rotation = Try([&] { return fisher(kappa1, first, kappa2, second); });
    Require(!rotation || rotation->IsValid(), "a draw is a rotation");
  }
}

void CheckMixture(CInput& input) {
  auto const slots = input.Count(4);
  CMixtureRotation mixture(slots);
  bool isWhole = true; // a clone has no slots without generator
  for (std::size_t k = input.Count(5), filled = 0; k > 0; --k, ++filled) {
    auto generator = TakeGenerator(input);
    double const weight = input.Real();
    isWhole &= generator != nullptr;
    bool const isAdded = Done([&] { mixture.Add(std::move(generator), weight); });
    Require(isAdded == (filled < slots), "a mixture takes as many generators as it has slots");
  }
  if (isWhole) return CheckRotations(input, mixture);
  for (int draw = 0; draw < c_draws; ++draw) static_cast<void>(Try([&] { return mixture(); }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static constexpr std::array<void (*)(CInput&), 10> checks = {
      CheckUniform,  CheckPositive, CheckNormal,   CheckGamma,   CheckPoisson,
      CheckDiscrete, CheckPressed,  CheckRotation, CheckProduct, CheckMixture};
  CInput input(data, size);
  input.OneOf(checks)(input);
  return 0;
}
