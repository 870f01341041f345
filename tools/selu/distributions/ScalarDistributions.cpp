#include "base/Errors.h"
#include "base/Texts.h"
#include "distributions/Distributions.h"
#include "distributions/SpecialFunctions.h"

#include <SeluUtils/Random/ExactDiscrete.h>
#include <SeluUtils/Random/ExactExponential.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactLogNormal.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactPressedDirections.h>
#include <SeluUtils/Random/ExactRayleigh.h>
#include <SeluUtils/Random/ExactUniform.h>
#include <SeluUtils/Random/PressedDirections.h>
#include <SeluUtils/Random/RandomChordlength.h>
#include <SeluUtils/Random/RandomCircleDiameter.h>
#include <SeluUtils/Random/RandomDiscrete.h>
#include <SeluUtils/Random/RandomExponential.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/RandomLogNormal.h>
#include <SeluUtils/Random/RandomNormal.h>
#include <SeluUtils/Random/RandomPoisson.h>
#include <SeluUtils/Random/RandomRayleigh.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <vector>

namespace selu {
namespace {

using std::numbers::pi;

constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double c_smallest = std::numeric_limits<double>::min();
constexpr StBounds c_any = {};
constexpr StBounds c_positive = {.least = c_smallest};
constexpr char const* c_isDiscrete = "the test is for continuous distributions";
constexpr char const* c_isConstant = "all values are the same";

template <class Generator>
StScalar Drawing(Generator const& generator, StScalarTheory theory) {
  return {
      [generator] { return static_cast<double>(generator()); },
      [generator](ORVA::CRandomSource& source) { return static_cast<double>(generator(source)); },
      false, std::move(theory)};
}

// The last guard before the first draw; the bounds of the parameters should have said it better.
template <class Generator>
StScalar ScalarOf(CParameters const& parameters, Generator const& generator,
                  StScalarTheory theory) {
  parameters.Finish();
  if (!generator.IsValid()) parameters.Refuse("cannot be drawn from with these parameters");
  return Drawing(generator, std::move(theory));
}

// The given distribution of these arguments or the exact one.
template <class Given, class Exact, class... Arguments>
StScalar EitherOf(CParameters const& parameters, StScalarTheory theory, Arguments... arguments) {
  return IsExact(parameters.Distribution())
             ? ScalarOf(parameters, Exact(arguments...), std::move(theory))
             : ScalarOf(parameters, Given(arguments...), std::move(theory));
}

// From the moments about zero.
StMoments FromRaw(double m1, double m2, double m3, double m4) {
  double const variance = m2 - m1 * m1, deviation = std::sqrt(variance);
  double const third = m3 - 3 * m1 * m2 + 2 * m1 * m1 * m1;
  double const fourth = m4 - 4 * m1 * m3 + 6 * m1 * m1 * m2 - 3 * m1 * m1 * m1 * m1;
  return {m1, deviation, third / (variance * deviation), fourth / (variance * variance) - 3};
}

StScalarTheory ConstantTheory(double value) {
  double const room = std::max(1.0, std::abs(value)) / 2;
  return {{value, 0, c_nan, c_nan},
          value - room,
          value + room,
          [value](double x) { return x < value ? 0.0 : 1.0; },
          {},
          c_isConstant};
}

StScalar MakeUniform(CParameters& given) {
  double const start = given.Number("start", 0, c_any);
  double const end = given.Number("end", std::max(1.0, start), c_any);
  if (end < start)
    given.Refuse("needs end to be at least start = " + Shortest(start) + ", not " + Shortest(end));
  double const width = end - start;
  if (std::isinf(width))
    given.Refuse("needs end - start to be a finite number, not " + Shortest(end) + " - (" +
                 Shortest(start) + ")");
  StScalarTheory theory = ConstantTheory(start);
  if (width > 0)
    theory = {{start + width / 2, width / std::sqrt(12), 0, -1.2},
              start,
              end,
              [=](double x) { return std::clamp((x - start) / width, 0.0, 1.0); },
              [=](double x) { return x >= start && x <= end ? 1 / width : 0; },
              {}};
  if (IsExact(given.Distribution()) && width == 0)
    given.Refuse("needs end to be above start = " + Shortest(start));
  return EitherOf<ORVA::CRandomUniform, ORVA::CExactUniform>(given, theory, start, end);
}

double NormalShare(double z) { return std::erfc(-z / std::numbers::sqrt2) / 2; }
double NormalDensity(double z) { return std::exp(-z * z / 2) / std::sqrt(2 * pi); }

StScalar MakeNormal(CParameters& given) {
  double const mean = given.Number("mean", 0, c_any), sigma = given.Number("sigma", 1, c_positive);
  return EitherOf<ORVA::CRandomNormal, ORVA::CExactNormal>(
      given,
      {{mean, sigma, 0, 0},
       mean - 4 * sigma,
       mean + 4 * sigma,
       [=](double x) { return NormalShare((x - mean) / sigma); },
       [=](double x) { return NormalDensity((x - mean) / sigma) / sigma; },
       {}},
      mean, sigma);
}

StScalarTheory LogNormalTheory(double mu, double sigma) {
  double const v = sigma * sigma, grown = std::expm1(v), e = std::exp(v);
  double const mean = std::exp(mu + v / 2);
  return {
      {mean, mean * std::sqrt(grown), (e + 2) * std::sqrt(grown),
       e * e * e * e + 2 * e * e * e + 3 * e * e - 6},
      sigma < 0.5 ? std::exp(mu - 3.2 * sigma) : 0,
      std::exp(mu + (sigma < 0.5 ? 3.2 : 2.2) * sigma),
      [=](double x) { return x > 0 ? NormalShare((std::log(x) - mu) / sigma) : 0; },
      [=](double x) { return x > 0 ? NormalDensity((std::log(x) - mu) / sigma) / (sigma * x) : 0; },
      {}};
}

StScalar MakeExactLogNormal(CParameters& given) {
  if (!given.Has("expectation") && !given.Has("deviation")) {
    double const mu = given.Number("mu", 0, c_any), sigma = given.Number("sigma", 1, c_positive);
    return ScalarOf(given, ORVA::CExactLogNormal(mu, sigma), LogNormalTheory(mu, sigma));
  }
  double const expectation = given.Number("expectation", c_positive);
  double const deviation = given.Number("deviation", c_positive);
  auto const generator = ORVA::CExactLogNormal::FromMeanAndDeviation(expectation, deviation);
  return ScalarOf(given, generator, LogNormalTheory(generator.Mu(), generator.Sigma()));
}

StScalar MakeLogNormal(CParameters& given) {
  if (IsExact(given.Distribution())) return MakeExactLogNormal(given);
  double mu = 0, sigma = 1;
  ORVA::CRandomLogNormal generator;
  if (given.Has("expectation") || given.Has("deviation")) {
    double const expectation = given.Number("expectation", c_positive);
    double const deviation = given.Number("deviation", c_positive);
    generator.SetLogNormalExpectationAndStDeviation(expectation, deviation);
    sigma = std::log(deviation * deviation / expectation / expectation + 1);
    mu = std::log(expectation) - sigma * sigma / 2;
    if (!std::isfinite(mu) || !(sigma > 0))
      given.Refuse("cannot have the expectation " + Shortest(expectation) + " with the deviation " +
                   Shortest(deviation));
  } else {
    mu = given.Number("mu", 0, c_any);
    sigma = given.Number("sigma", 1, c_positive);
    generator = ORVA::CRandomLogNormal(mu, sigma);
  }
  return ScalarOf(given, generator, LogNormalTheory(mu, sigma));
}

StScalar MakeExponential(CParameters& given) {
  double const lambda = given.Number("lambda", 1, {.above = c_smallest});
  return EitherOf<ORVA::CRandomExponential, ORVA::CExactExponential>(
      given,
      {{1 / lambda, 1 / lambda, 2, 6},
       0,
       7 / lambda,
       [=](double x) { return x > 0 ? -std::expm1(-lambda * x) : 0; },
       [=](double x) { return x >= 0 ? lambda * std::exp(-lambda * x) : 0; },
       {}},
      lambda);
}

StScalar MakeGamma(CParameters& given) {
  double const shape = given.Number("shape", {.least = c_smallest, .most = 1e12});
  double const rate = given.Number("rate", 1, c_positive);
  double const root = std::sqrt(shape);
  auto const density = [=](double x) {
    if (x <= 0) return 0.0;
    int sign = 0;
    return rate * std::exp((shape - 1) * std::log(rate * x) - rate * x - ::lgamma_r(shape, &sign));
  };
  return EitherOf<ORVA::CRandomGamma, ORVA::CExactGamma>(
      given,
      {{shape / rate, root / rate, 2 / root, 6 / shape},
       std::max(0.0, shape - 4 * root) / rate,
       (shape + (shape < 20 ? 6 : 4) * root) / rate,
       [=](double x) { return GammaShare(shape, rate * x); },
       density,
       {}},
      shape, rate);
}

StScalar MakeRayleigh(CParameters& given) {
  double const sigma = given.Number("sigma", 1, c_positive);
  double const twoMinus = 2 - pi / 2, fourMinus = 4 - pi;
  return EitherOf<ORVA::CRandomRayleigh, ORVA::CExactRayleigh>(
      given,
      {{sigma * std::sqrt(pi / 2), sigma * std::sqrt(twoMinus),
        2 * std::sqrt(pi) * (pi - 3) / std::pow(fourMinus, 1.5),
        -(6 * pi * pi - 24 * pi + 16) / (fourMinus * fourMinus)},
       0,
       4.4 * sigma,
       [=](double x) { return x > 0 ? -std::expm1(-(x / sigma) * (x / sigma) / 2) : 0; },
       [=](double x) {
         return x > 0 ? x / sigma / sigma * std::exp(-(x / sigma) * (x / sigma) / 2) : 0;
       },
       {}},
      sigma);
}

StScalar MakeChordlength(CParameters& given) {
  return ScalarOf(given, ORVA::CRandomChordlength(),
                  {FromRaw(2.0 / 3, 0.5, 0.4, 1.0 / 3),
                   0,
                   1,
                   [](double x) { return x <= 0   ? 0.0
                                         : x >= 1 ? 1.0
                                                  : x * x; },
                   [](double x) { return x >= 0 && x <= 1 ? 2 * x : 0; },
                   {}});
}

StScalar MakeCircleDiameter(CParameters& given) {
  return ScalarOf(given, ORVA::CRandomCircleDiameter(),
                  {FromRaw(pi / 4, 2.0 / 3, 3 * pi / 16, 8.0 / 15),
                   0,
                   1,
                   [](double x) { return x <= 0   ? 0
                                         : x >= 1 ? 1
                                                  : 1 - std::sqrt(1 - x * x); },
                   [](double x) { return x >= 0 && x < 1 ? x / std::sqrt(1 - x * x) : 0; },
                   {}});
}

// The moments are means over the plane's angle, which a sum over equal steps takes to rounding
// unless the factor is extreme.
StMoments PressedMoments(double factor) {
  constexpr int steps = 200'000;
  double second = 0, fourth = 0;
  for (int i = 0; i < steps; ++i) {
    double const t = (i + 0.5) / steps * pi;
    double const off = std::atan2(std::sin(t), factor * std::cos(t)) - pi / 2;
    second += off * off / steps;
    fourth += off * off * off * off / steps;
  }
  return {pi / 2, std::sqrt(second), 0, fourth / (second * second) - 3};
}

StScalar MakePressed(CParameters& given) {
  double const factor = given.Number("factor", c_any);
  bool const isExact = IsExact(given.Distribution());
  double const second = isExact ? 1 : given.Number("second", 1, c_any);
  given.Finish();
  StScalarTheory theory = ConstantTheory(pi / 2);
  double const f = std::abs(factor);
  if (f > 0)
    theory = {PressedMoments(f),
              0,
              pi,
              [=](double x) { return std::atan2(f * std::sin(x), std::cos(x)) / pi; },
              [=](double x) {
                double const c = std::cos(x), s = f * std::sin(x);
                return f / (pi * (c * c + s * s));
              },
              {}};
  if (isExact) return Drawing(ORVA::CExactPressedDirections(factor), theory);
  return Drawing(ORVA::CPressedDirections(factor, second), theory);
}

// Cells of counts, each of about a twentieth of the deviation or one count, within six deviations.
std::vector<double> CellsOfCounts(double mean) {
  double const root = std::sqrt(mean), step = std::max(1.0, std::floor(root / 20));
  std::vector<double> cells;
  // NOLINTNEXTLINE(clang-analyzer-security.FloatLoopCounter): exact, as counts are whole numbers
  for (double x = std::max(0.0, std::floor(mean - 6 * root)); x < mean + 6 * root + 6; x += step)
    cells.push_back(x);
  cells.push_back(std::numeric_limits<double>::infinity());
  return cells;
}

StScalar MakePoisson(CParameters& given) {
  // Counts have 31 bits, or so many that doubles still tell them apart.
  double const most = IsExact(given.Distribution()) ? 0x1p52 : 2e9;
  double const lambda = given.Number("lambda", 1, {.least = c_smallest, .most = most});
  double const root = std::sqrt(lambda);
  StScalar poisson = EitherOf<ORVA::CRandomPoisson, ORVA::CExactPoisson>(
      given,
      {{lambda, root, 1 / root, 1 / lambda},
       std::max(-1.0, std::floor(lambda - 5 * root)) + 0.5,
       std::ceil(lambda + 5 * root) + 2.5,
       [=](double x) { return x < 0 ? 0 : 1 - GammaShare(std::floor(x) + 1, lambda); },
       {},
       c_isDiscrete,
       CellsOfCounts(lambda)},
      lambda);
  if (poisson.theory.low < 1) poisson.theory.low = -0.5;
  poisson.isWhole = true;
  return poisson;
}

// Probability of each value, in proportion to the weights.
std::vector<std::pair<double, double>> DiscreteShares(std::map<double, double> const& weights) {
  double total = 0;
  for (auto const& entry : weights) total += entry.second;
  std::vector<std::pair<double, double>> shares;
  for (auto const& [value, weight] : weights) shares.emplace_back(value, weight / total);
  return shares;
}

// The values with weights, in order, for a chi-square test.
std::vector<double> CellsOfValues(std::map<double, double> const& weights) {
  std::vector<double> cells;
  for (auto const& entry : weights) cells.push_back(entry.first);
  cells.push_back(std::numeric_limits<double>::infinity());
  return cells;
}

StScalarTheory DiscreteTheory(std::map<double, double> const& weights) {
  auto const shares = DiscreteShares(weights);
  double mean = 0, second = 0, third = 0, fourth = 0;
  for (auto const& [value, share] : shares) mean += value * share;
  for (auto const& [value, share] : shares) {
    double const off = value - mean, square = off * off;
    second += share * square;
    third += share * square * off;
    fourth += share * square * square;
  }
  if (!(second > 0)) return ConstantTheory(mean);
  double const deviation = std::sqrt(second);
  double const room = (shares.back().first - shares.front().first) / 20;
  return {{mean, deviation, third / (second * deviation), fourth / (second * second) - 3},
          shares.front().first - room,
          shares.back().first + room,
          [shares](double x) {
            double sum = 0;
            for (auto const& [value, share] : shares) sum += value <= x ? share : 0;
            return sum;
          },
          {},
          c_isDiscrete,
          CellsOfValues(weights)};
}

// Values and weights of any sum.
StScalar ExactDiscrete(CParameters const& given, std::map<double, double> const& weights) {
  given.Finish();
  return Drawing(ORVA::CExactDiscrete<double>({weights.begin(), weights.end()}),
                 DiscreteTheory(weights));
}

StScalar MakeDiscrete(CParameters& given) {
  std::map<double, double> weights;
  double total = 0;
  for (auto const& [value, weight] : given.NumberPairs()) {
    if (weight < 0) given.Refuse("needs weights of at least 0, not " + Shortest(weight));
    if (!weights.emplace(value, weight).second)
      given.Refuse("is given the value " + Shortest(value) + " twice");
    total += weight;
  }
  if (weights.empty()) given.Refuse("needs values with weights, such as 0.25=0.5 0.75=0.5");
  if (!(total > 0) || std::isinf(total))
    given.Refuse("needs weights whose sum is positive and finite, not " + Shortest(total));
  // The given distribution demands that values and weights add up to 1, so dice take the exact one.
  ORVA::CRandomDiscrete const generator(weights);
  bool const isExact =
      IsExact(given.Distribution()) || !generator.IsValid() || std::abs(total - 1) > 1e-9;
  return isExact ? ExactDiscrete(given, weights)
                 : ScalarOf(given, generator, DiscreteTheory(weights));
}

struct StMaker {
  char const* name;
  StScalar (*make)(CParameters&);
};
constexpr std::array<StDistributionName, 20> c_names = {{
    {"uniform", "start=0 end=1"},
    {"normal", "mean=0 sigma=1"},
    {"lognormal", "mu=0 sigma=1, or expectation=E deviation=S (then sigma = ln(S^2/E^2 + 1))"},
    {"exponential", "lambda=1"},
    {"gamma", "shape=A rate=1"},
    {"poisson", "lambda=1; whole numbers, from a mean of 512 on logistic ones rounded"},
    {"rayleigh", "sigma=1"},
    {"discrete", "VALUE=WEIGHT ...; where values or weights do not add up to 1, exact-discrete"},
    {"chordlength", "(none)"},
    {"circlediameter", "(none)"},
    {"pressed", "factor=F second=1; angles in the plane after pressing it"},
    {"exact-uniform", "start=0 end=1"},
    {"exact-normal", "mean=0 sigma=1"},
    {"exact-lognormal", "mu=0 sigma=1, or expectation=E deviation=S"},
    {"exact-exponential", "lambda=1"},
    {"exact-gamma", "shape=A rate=1"},
    {"exact-poisson", "lambda=1; whole numbers of any mean up to 2^52"},
    {"exact-rayleigh", "sigma=1"},
    {"exact-discrete", "VALUE=WEIGHT ...; weights of any sum"},
    {"exact-pressed", "factor=F; angles in the plane after pressing it"},
}};
constexpr std::array<StMaker, 11> c_makers = {{
    {"uniform", MakeUniform},
    {"normal", MakeNormal},
    {"lognormal", MakeLogNormal},
    {"exponential", MakeExponential},
    {"gamma", MakeGamma},
    {"poisson", MakePoisson},
    {"rayleigh", MakeRayleigh},
    {"discrete", MakeDiscrete},
    {"chordlength", MakeChordlength},
    {"circlediameter", MakeCircleDiameter},
    {"pressed", MakePressed},
}};

} // namespace

std::span<StDistributionName const> ScalarNames() noexcept { return c_names; }

bool IsScalar(std::string const& name) noexcept {
  return std::any_of(c_names.begin(), c_names.end(),
                     [&](StDistributionName const& one) { return name == one.name; });
}

StScalar MakeScalar(CParameters parameters) {
  for (auto const& [name, make] : c_makers)
    if (IsScalar(parameters.Distribution()) && PlainName(parameters.Distribution()) == name)
      return make(parameters);
  parameters.Raise("there is no distribution of numbers named " +
                   Quoted(parameters.Distribution()));
}

} // namespace selu
