#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"
#include "distributions/Distributions.h"
#include "distributions/SpecialFunctions.h"

#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/ExactGirdleRotation.h>
#include <SeluUtils/Random/ExactIsotropicRotation.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace selu {
namespace {

using ORVA::CEulerRotation;
using ORVA::CPolarCoordinates;
using std::numbers::pi;

constexpr double c_smallest = std::numeric_limits<double>::min();
constexpr StBounds c_theta = {.least = 0, .most = pi}, c_phi = {.least = 0, .below = 2 * pi};
constexpr char const* c_isConstant = "all rotations are the same";

// What a generator for a mixture needs beyond the common interface is that it can be copied.
struct StPart {
  std::unique_ptr<ORVA::IRotationGenerator> draw;
  StRotationTheory theory;
};

StRotationTheory AboutAxis(Vector const& m, double first, double second,
                           std::function<double(double)> beyond) {
  double const across = (1 - second) / 2, along = (3 * second - 1) / 2;
  return {m * first,
          {across + along * m.x * m.x, across + along * m.y * m.y, across + along * m.z * m.z,
           along * m.x * m.y, along * m.x * m.z, along * m.y * m.z},
          m,
          std::move(beyond),
          {}};
}

template <class Generator>
StPart PartOf(CParameters const& given, Generator const& generator, StRotationTheory theory) {
  given.Finish();
  if (!generator.IsValid()) given.Refuse("cannot be drawn from with these parameters");
  return {std::make_unique<Generator>(generator), std::move(theory)};
}

// The given distribution of these arguments or the exact one.
template <class Given, class Exact, class... Arguments>
StPart EitherOf(CParameters const& given, StRotationTheory theory, Arguments... arguments) {
  return IsExact(given.Distribution()) ? PartOf(given, Exact(arguments...), std::move(theory))
                                       : PartOf(given, Given(arguments...), std::move(theory));
}

CPolarCoordinates Axis(CParameters& given, double theta) {
  double const t = given.Angle("theta", theta, c_theta);
  return {t, given.Angle("phi", 0, c_phi)};
}

// Mean over [0, 1] of a smooth function, by Simpson's rule.
template <class Function>
double MeanOver01(Function const& f) {
  constexpr int pieces = 1000;
  double sum = f(0.0) + f(1.0);
  for (int i = 1; i < pieces; ++i) sum += (i % 2 == 0 ? 2 : 4) * f(i / (1.0 * pieces));
  return sum / (3 * pieces);
}

StPart MakeIsotropic(CParameters& given) {
  StRotationTheory const theory =
      AboutAxis({0, 0, 1}, 0, 1.0 / 3, [](double s) { return 1 - s / 2; });
  return EitherOf<ORVA::CIsotropicRotation, ORVA::CExactIsotropicRotation>(given, theory);
}

// Second moment of the cosine: of a uniform sphere's after stretching it across by beta.
double GirdleSecondMoment(double beta) {
  double const a = 1 - beta * beta;
  if (std::abs(a) < 0.1)
    return MeanOver01([=](double s) { return s * s / (beta * beta + a * s * s); });
  if (a > 0) return (1 - beta / std::sqrt(a) * std::acos(beta)) / a;
  return (beta / std::sqrt(-a) * std::acosh(beta) - 1) / -a;
}

StPart MakeGirdle(CParameters& given) {
  // Beyond, the square overflows.
  double const beta = given.Number("beta", {.least = c_smallest, .most = 1e150});
  CPolarCoordinates const axis = Axis(given, 0);
  StRotationTheory theory = AboutAxis(axis, 0, GirdleSecondMoment(beta), [beta](double s) {
    double const t = 1 - s;
    return 0.5 + beta * t / (2 * std::sqrt(1 + (beta * beta - 1) * t * t));
  });
  theory.isAxial = beta != 1;
  return EitherOf<ORVA::CGirdleRotation, ORVA::CExactGirdleRotation>(given, theory, beta, axis);
}

StPart MakeVonMisesFisher(CParameters& given) {
  double const kappa = given.Number("kappa", {.above = 0});
  CPolarCoordinates const mean = Axis(given, 0);
  double const first =
      kappa < 0.01 ? kappa / 3 * (1 - kappa * kappa / 15) : 1 / std::tanh(kappa) - 1 / kappa;
  StRotationTheory const theory = AboutAxis(mean, first, 1 - 2 * first / kappa, [kappa](double s) {
    return 1 - std::expm1(-kappa * s) / std::expm1(-2 * kappa);
  });
  return EitherOf<ORVA::CVonMisesFisher, ORVA::CExactVonMisesFisher>(given, theory, kappa, mean);
}

StRotationTheory WatsonTheory(double kappa, Vector const& mean) {
  if (kappa == 0) return AboutAxis(mean, 0, 1.0 / 3, [](double s) { return 1 - s / 2; });
  double const size = std::abs(kappa), root = std::sqrt(size);
  double first = 0, second = 0;
  if (size < 1) {
    double const all = MeanOver01([=](double t) { return std::exp(kappa * t * t); });
    first = MeanOver01([=](double t) { return t * std::exp(kappa * t * t); }) / all;
    second = MeanOver01([=](double t) { return t * t * std::exp(kappa * t * t); }) / all;
  } else if (kappa > 0) {
    first = -std::expm1(-kappa) / (2 * root * Dawson(root));
    second = (root / Dawson(root) - 1) / (2 * kappa);
  } else {
    double const all = std::sqrt(pi) * std::erf(root) / (2 * root);
    first = -std::expm1(kappa) / (2 * size * all);
    second = (all - std::exp(kappa)) / (2 * size * all);
  }
  auto const below = [=](double t) {
    if (kappa < 0) return std::erf(root * t) / std::erf(root);
    return std::exp(kappa * (t * t - 1)) * Dawson(root * t) / Dawson(root);
  };
  return AboutAxis(mean, first, second, [below](double s) { return below(1 - s); });
}

StPart MakeWatson(CParameters& given) {
  double const kappa = given.Number("kappa", {});
  CPolarCoordinates const mean = Axis(given, 0);
  StRotationTheory theory = WatsonTheory(kappa, mean);
  theory.isAxial = kappa != 0;
  if (!IsExact(given.Distribution()))
    return PartOf(given, ORVA::CWatsonRotation(kappa, mean), std::move(theory));
  // Both ends of the axis alike; the hemisphere's law holds for the size of the cosine.
  theory.mean = {0, 0, 0};
  if (kappa != 0)
    theory.beyond = [half = theory.beyond](double s) {
      return s <= 1 ? (1 + half(s)) / 2 : (1 - half(2 - s)) / 2;
    };
  return PartOf(given, ORVA::CExactWatsonRotation(kappa, mean), std::move(theory));
}

CEulerRotation GivenRotation(CParameters& given) {
  double const phi = given.Angle("phi", 0, {}), theta = given.Angle("theta", 0, {});
  return {phi, theta, given.Angle("psi", 0, {})};
}

StRotationTheory TheoryOfOne(CEulerRotation const& rotation) {
  StRotationTheory theory = AboutAxis(rotation.getDirectionVector(), 1, 1, {});
  theory.noTest = c_isConstant;
  return theory;
}

StPart MakeFixed(CParameters& given) {
  auto const rotation = GivenRotation(given);
  return PartOf(given, ORVA::CFixRotation(rotation), TheoryOfOne(rotation));
}

using Json = nlohmann::json;

// One component as parameters; numbers become texts that read back as the same.
CParameters FromJson(Json const& component, std::string const& file) {
  if (!component.is_object() || !component.contains("distribution") ||
      !component["distribution"].is_string())
    throw CAppError("a component in " + Quoted(file) + " lacks its \"distribution\"");
  CParameters::Pairs pairs;
  for (auto const& [name, value] : component.items()) {
    if (name == "distribution" || name == "weight") continue;
    if (value.is_number())
      pairs.emplace_back(name, Shortest(value.get<double>()));
    else if (value.is_string())
      pairs.emplace_back(name, value.get<std::string>());
    else
      throw CAppError("the parameter " + Quoted(name) + " in " + Quoted(file) +
                      " is neither a number nor a text");
  }
  return {component["distribution"].get<std::string>(), pairs};
}

double WeightOf(Json const& component, std::string const& file) {
  if (!component.is_object() || !component.contains("weight") || !component["weight"].is_number() ||
      !(component["weight"].get<double>() >= 0))
    throw CAppError("a component in " + Quoted(file) + " lacks a \"weight\" of at least 0");
  return component["weight"].get<double>();
}

Json ReadComponents(std::string const& file) {
  constexpr std::size_t most = 1 << 20;
  if (SizeOfReadable(file) > most)
    throw CAppError("the description " + Quoted(file) + " is larger than 1 MiB");
  Json const json = Json::parse(BeginningOf(file, most), nullptr, false);
  if (!json.is_object() || !json.contains("components") || !json["components"].is_array() ||
      json["components"].empty())
    throw CAppError("the description " + Quoted(file) +
                    " is no JSON object with a list of \"components\"");
  return json["components"];
}

// Weights as written add up to 1 only nearly; the last one is set so that they do exactly.
std::vector<double> WeightsOf(Json const& components, std::string const& file) {
  std::vector<double> weights;
  double sum = 0, before = 0;
  for (auto const& component : components) {
    weights.push_back(WeightOf(component, file));
    before = sum;
    sum += weights.back();
  }
  if (!(std::abs(sum - 1) <= 1e-9))
    throw CAppError("the weights in " + Quoted(file) + " add up to " + Shortest(sum) +
                    ", not to 1");
  weights.back() = std::max(0.0, 1 - before);
  return weights;
}

StPart MakePart(CParameters given, int depth);

StPart MakeMixture(CParameters& given, int depth) {
  constexpr int deepest = 8;
  std::string const file = given.Text("file");
  given.Finish();
  if (depth > deepest) given.Refuse("is nested too deeply at " + Quoted(file));
  Json const components = ReadComponents(file);
  auto const weights = WeightsOf(components, file);
  ORVA::CMixtureRotation mixture(weights.size());
  StRotationTheory theory = AboutAxis({0, 0, 1}, 0, 0, {});
  theory.tensor = {};
  for (std::size_t i = 0; i < weights.size(); ++i) {
    StPart part = MakePart(FromJson(components[i], file), depth + 1);
    mixture.Add(std::move(part.draw), weights[i]);
    theory.mean += part.theory.mean * weights[i];
    for (std::size_t k = 0; k < theory.tensor.size(); ++k)
      theory.tensor[k] += part.theory.tensor[k] * weights[i];
  }
  theory.noTest = "no closed form for a mixture";
  return PartOf(given, mixture, theory);
}

constexpr std::array<StDistributionName, 11> c_names = {{
    {"isotropic", "(none)"},
    {"girdle", "beta=B theta=0 phi=0; B < 1 near the axis, B > 1 across it"},
    {"vmf", "kappa=K theta=0 phi=0; von Mises-Fisher about the mean direction"},
    {"watson", "kappa=K theta=0 phi=0; K > 0 at the mean axis, K < 0 across it"},
    {"fixed", "phi=0 theta=0 psi=0; always this rotation"},
    {"constant", "phi=0 theta=0 psi=0; the same, but not for mixtures"},
    {"mixture", "file=FILE.json"},
    {"exact-isotropic", "(none)"},
    {"exact-girdle", "beta=B theta=0 phi=0; B < 1 near the axis, B > 1 across it"},
    {"exact-vmf", "kappa=K theta=0 phi=0; of any concentration"},
    {"exact-watson", "kappa=K theta=0 phi=0; at both ends of the axis, or across it"},
}};

bool HasExact(std::string const& name) {
  return std::any_of(c_names.begin(), c_names.end(),
                     [&](StDistributionName const& one) { return name == one.name; });
}

StPart MakePart(CParameters given, int depth) {
  std::string const& full = given.Distribution();
  std::string const name = IsExact(full) && !HasExact(full) ? full : PlainName(full);
  if (name == "isotropic") return MakeIsotropic(given);
  if (name == "girdle") return MakeGirdle(given);
  if (name == "vmf") return MakeVonMisesFisher(given);
  if (name == "watson") return MakeWatson(given);
  if (name == "fixed") return MakeFixed(given);
  if (name == "mixture") return MakeMixture(given, depth);
  if (name == "constant") given.Refuse("cannot be part of a mixture; fixed can");
  given.Raise("there is no distribution of rotations named " + Quoted(name));
}

} // namespace

std::span<StDistributionName const> RotationNames() noexcept { return c_names; }

StRotations MakeRotations(CParameters given) {
  if (given.Distribution() == "constant") {
    auto const rotation = GivenRotation(given);
    given.Finish();
    return {std::make_unique<ORVA::CConstantValue<CEulerRotation>>(rotation),
            [rotation](ORVA::CRandomSource&) { return rotation; }, TheoryOfOne(rotation)};
  }
  StPart part = MakePart(std::move(given), 0);
  // The function's generator lives as long as the other one.
  auto const from = [generator = part.draw.get()](ORVA::CRandomSource& source) {
    return (*generator)(source);
  };
  return {std::move(part.draw), from, std::move(part.theory)};
}

} // namespace selu
