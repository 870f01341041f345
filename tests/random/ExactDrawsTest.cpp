// The exact distributions: what they refuse, single draws and arrays alike from any source, the
// layers behind them, and the ends of their ranges.
#include <SeluUtils/Impl/Ziggurat.h>
#include <SeluUtils/Random/AliasTable.h>
#include <SeluUtils/Random/BallPoint.h>
#include <SeluUtils/Random/DiscPoint.h>
#include <SeluUtils/Random/ExactDiscrete.h>
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
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/SpherePoint.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Errors.h"
#include "support/FailingAllocation.h"
#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <memory>
#include <numbers>
#include <random>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double c_greatest = std::numeric_limits<double>::max();
constexpr uint64 c_ones = ~uint64{0};

CPolarCoordinates const c_up(0.0, 0.0), c_aslant(1.0, 2.5);

// Draws one after the other, an array of them, and both by way of other sources are the same.
template <class T, class Distribution>
void ExpectArrayIsSingleDraws(Distribution const& distribution, char const* what) {
  auto const expect = [&](auto const& fresh, char const* from) {
    auto source = fresh, same = fresh;
    std::vector<T> array(1000), singles;
    distribution.Fill(array, source);
    for (std::size_t i = 0; i < array.size(); ++i) singles.push_back(distribution(same));
    EXPECT_TRUE(array == singles) << what << " from " << from;
    EXPECT_EQ(source(), same()) << what << " from " << from;
  };
  expect(CRandomSource(1, 2), "a source of random bits");
  expect(std::mt19937_64(5), "the standard library");
  CRandomSource words(7);
  std::vector<uint64> list(200'000);
  for (uint64& word : list) word = words();
  expect(CReplaySource(list), "given words");

  // The shared source gives the words of stream 0.
  CRandom::Obj().Seed(3);
  CRandomSource source(3);
  for (int i = 0; i < 100; ++i) ASSERT_TRUE(distribution() == distribution(source)) << what;
}

// By the interface, too.
template <class T, class Distribution>
void ExpectInterchangeable(Distribution const& distribution, char const* what) {
  ExpectArrayIsSingleDraws<T>(distribution, what);
  IRandomGenerator<T> const& generator = distribution;
  EXPECT_TRUE(generator.IsValid());
  CRandomSource source(4), same(4);
  std::vector<T> array(100);
  generator.Fill(array, source);
  for (T const& value : array) EXPECT_TRUE(value == distribution(same)) << what;
  EXPECT_TRUE(generator(source) == distribution(same)) << what;
}

template <class Form>
std::vector<Form> Filled(IRotationGenerator& generator, CRandomSource source) {
  std::vector<Form> out(100);
  generator.Fill(out, source);
  return out;
}

template <class Distribution>
void ExpectFormsAgree(Distribution const& distribution, char const* what) {
  CRandomSource const fresh(8);
  std::vector<CEulerRotation> rotations(100);
  std::vector<std::array<double, 9>> matrices(100);
  std::vector<CQuaternion> quaternions(100);
  std::vector<CTriple<double>> directions(100);
  CRandomSource a = fresh, b = fresh, c = fresh, d = fresh, e = fresh, f = fresh, g = fresh;
  distribution.Fill(rotations, a);
  distribution.Fill(matrices, b);
  distribution.Fill(quaternions, c);
  distribution.Fill(directions, d);
  for (std::size_t i = 0; i < 100; ++i) {
    CEulerRotation const rotation = distribution(e);
    EXPECT_TRUE(rotation.IsValid()) << what;
    EXPECT_TRUE(std::ranges::equal(rotation.getRotationMatrix().Elements(), matrices[i])) << what;
    EXPECT_TRUE(std::ranges::equal(rotations[i].getRotationMatrix().Elements(), matrices[i]));
    EXPECT_EQ(distribution.Quaternion(f), quaternions[i]) << what;
    EXPECT_EQ(quaternions[i].Matrix(), matrices[i]) << what;
    EXPECT_EQ(distribution.Direction(g), directions[i]) << what;
  }
  EXPECT_EQ(a, e);
  EXPECT_EQ(b, e);
  EXPECT_EQ(c, f);
  EXPECT_EQ(d, g);
  std::unique_ptr<IRotationGenerator> const clone(distribution.Clone());
  EXPECT_EQ(Filled<CTriple<double>>(*clone, fresh), directions) << what;
  EXPECT_EQ(Filled<CQuaternion>(*clone, fresh), quaternions) << what;
  EXPECT_EQ((Filled<std::array<double, 9>>(*clone, fresh)), matrices) << what;
  EXPECT_EQ(Filled<CEulerRotation>(*clone, fresh), rotations) << what;
  CRandom::Obj().Seed(8);
  EXPECT_EQ((*clone)(), rotations[0]) << what << ", from the shared source";
}

void ExpectUnit(CTriple<double> const& d) {
  EXPECT_NEAR(d.x * d.x + d.y * d.y + d.z * d.z, 1, 1e-15);
}

template <class Make>
void ExpectRefused(Make make, std::string const& message) {
  test::ExpectError<CExBadParam>(make, message);
}

} // namespace

TEST(ExactDraws, ArraysAreSingleDraws) {
  ExpectInterchangeable<double>(CExactUniform(-2, 3), "uniform");
  ExpectInterchangeable<double>(CExactNormal(1, 2), "normal");
  ExpectInterchangeable<double>(CExactExponential(3), "exponential");
  ExpectInterchangeable<double>(CExactRayleigh(3), "Rayleigh");
  ExpectInterchangeable<double>(CExactLogNormal(1, 2), "log-normal");
  ExpectInterchangeable<double>(CExactGamma(0.3, 2), "gamma below 1");
  ExpectInterchangeable<double>(CExactGamma(2.3, 2), "gamma");
  ExpectInterchangeable<double>(CExactPressedDirections(0.3), "pressed directions");
  ExpectInterchangeable<int64>(CExactPoisson(3), "Poisson below 10");
  ExpectInterchangeable<int64>(CExactPoisson(30), "Poisson");
  ExpectArrayIsSingleDraws<std::size_t>(CAliasTable(std::vector{1.0, 2.0, 3.0}), "alias table");
  ExpectArrayIsSingleDraws<std::string>(CExactDiscrete<std::string>({{"a", 1}, {"b", 2}, {"c", 3}}),
                                        "discrete");
  ExpectArrayIsSingleDraws<CTriple<double>>(CSpherePoint({1, 2, 3}, 4), "sphere");
  ExpectArrayIsSingleDraws<CTriple<double>>(CBallPoint({1, 2, 3}, 4), "ball");
  ExpectArrayIsSingleDraws<CTriple<double>>(CDiscPoint({1, 2, 3}, 4, c_aslant), "disc");
}

TEST(ExactDraws, RotationsAgreeInAllForms) {
  ExpectFormsAgree(CExactIsotropicRotation(), "isotropic");
  for (auto const& axis : {c_up, c_aslant, CPolarCoordinates(std::numbers::pi, 0.0)}) {
    ExpectFormsAgree(CExactGirdleRotation(0.2, axis), "girdle");
    ExpectFormsAgree(CExactVonMisesFisher(20, axis), "von Mises-Fisher");
    ExpectFormsAgree(CExactVonMisesFisher(0.5, axis), "von Mises-Fisher, wide");
    ExpectFormsAgree(CExactWatsonRotation(20, axis), "Watson, clusters");
    ExpectFormsAgree(CExactWatsonRotation(-20, axis), "Watson, girdle");
  }
}

// The third column of a rotation is the direction that its spin turns about.
TEST(ExactDraws, RotationsPointInTheirDirection) {
  CExactVonMisesFisher const bundle(1e20, c_aslant);
  CTriple<double> const aslant = c_aslant, down = CPolarCoordinates(std::numbers::pi, 0.0);
  CRandomSource source(9);
  for (int i = 0; i < 100; ++i) {
    auto const off = bundle(source).getDirectionVector() - aslant;
    EXPECT_LT(std::hypot(off.x, off.y, off.z), 1e-9);
  }
  CExactVonMisesFisher const below(1e30, CPolarCoordinates(std::numbers::pi, 0.0));
  for (int i = 0; i < 100; ++i) EXPECT_NEAR(below(source).getDirectionVector().z, down.z, 1e-15);
}

TEST(ExactDraws, MixWithTheGivenRotations) {
  CMixtureRotation mixture(2);
  mixture.Add(std::make_unique<CExactWatsonRotation>(1e6, c_aslant), 0.5);
  mixture.Add(std::make_unique<CExactVonMisesFisher>(1e6, c_up), 0.5);
  CRandomSource source(10), same(10);
  int upwards = 0;
  for (int i = 0; i < 1000; ++i) {
    CEulerRotation const rotation = mixture(source);
    EXPECT_EQ(rotation, mixture(same));
    upwards += rotation.getDirectionVector().z > 0.99 ? 1 : 0;
  }
  EXPECT_NEAR(upwards, 500, 80);
  EXPECT_EQ(source, same);
}

TEST(ExactDraws, ParametersAreChecked) {
  std::string const sigma = "The standard deviation has to be finite and at least 0, not ";
  ExpectRefused([] { CExactUniform(c_nan, 1); }, "The lower end has to be finite, not nan.");
  ExpectRefused([] { CExactUniform(1, 1); },
                "The upper end has to be finite and above the lower one, not 1.");
  ExpectRefused([] { CExactUniform(0, c_infinity); },
                "The upper end has to be finite and above the lower one, not inf.");
  ExpectRefused([] { CExactUniform(-c_greatest, c_greatest); },
                "The difference of the ends has to be finite, not inf.");
  ExpectRefused([] { CExactNormal(c_infinity, 1); }, "The mean has to be finite, not inf.");
  ExpectRefused([] { CExactNormal(0, -1); }, sigma + "-1.");
  ExpectRefused([] { CExactNormal(0, c_nan); }, sigma + "nan.");
  for (auto const& [rate, shown] :
       {std::pair(0.0, "0"), {-1.0, "-1"}, {c_infinity, "inf"}, {5e-324, "5e-324"}})
    ExpectRefused([rate = rate] { CExactExponential{rate}; },
                  std::string("The rate has to be finite and positive, with a finite reciprocal, "
                              "not ") +
                      shown + ".");
  ExpectRefused([] { CExactRayleigh(0); }, "The scale has to be finite and positive, not 0.");
  ExpectRefused([] { CExactLogNormal(c_nan, 1); },
                "The mean of the logarithm has to be finite, not nan.");
  ExpectRefused([] { CExactLogNormal(0, -1); },
                "The standard deviation of the logarithm has to be finite and at least 0, not -1.");
  ExpectRefused([] { (void)CExactLogNormal::FromMeanAndDeviation(0, 1); },
                "The mean has to be finite and positive, not 0.");
  ExpectRefused([] { (void)CExactLogNormal::FromMeanAndDeviation(1, c_nan); }, sigma + "nan.");
  ExpectRefused([] { CExactGamma(0, 1); }, "The shape has to be finite and positive, not 0.");
  ExpectRefused([] { CExactGamma(1e10, 1e-300); },
                "The rate has to be finite and positive, with a finite quotient of the shape, not "
                "1e-300.");
  for (auto const& [mean, shown] :
       {std::pair(-0.5, "-0.5"), {c_nan, "nan"}, {c_infinity, "inf"}, {1e19, "1e+19"}})
    ExpectRefused([mean = mean] { CExactPoisson{mean}; },
                  std::string("The mean has to be from 0 to 2^62, not ") + shown + ".");
  ExpectRefused([] { CExactPressedDirections(-1); },
                "The pressing factor has to be finite and at least 0, not -1.");
  ExpectRefused([] { CAliasTable(std::vector<double>{}); }, "There is no weight.");
  ExpectRefused([] { CAliasTable(std::vector<double>{0, 0}); }, "All weights are 0.");
  ExpectRefused(
      [] {
        CAliasTable(std::vector<double>{1, -2});
      },
      "Weight 1 has to be finite and at least 0, not -2.");
  ExpectRefused(
      [] {
        CExactDiscrete<int>({{5, c_infinity}});
      },
      "Weight 0 has to be finite and at least 0, not inf.");
}

TEST(ExactDraws, ParametersOfRotationsAndPointsAreChecked) {
  CPolarCoordinates const none(0.0, 0.0, 0.0); // the zero vector: no angles
  ExpectRefused([] { CExactGirdleRotation(0); },
                "The anisotropy beta has to be finite and positive, not 0.");
  ExpectRefused([] { CExactVonMisesFisher(-1, c_up); },
                "The concentration kappa has to be finite and at least 0, not -1.");
  ExpectRefused([] { CExactWatsonRotation(c_nan, c_up); },
                "The concentration kappa has to be finite, not nan.");
  std::string const axis = "The angles of the axis have to be finite, not nan.";
  ExpectRefused([&] { CExactGirdleRotation(1, none); }, axis);
  ExpectRefused([&] { CExactVonMisesFisher(1, none); }, axis);
  ExpectRefused([&] { CExactWatsonRotation(1, none); }, axis);
  ExpectRefused([&] { CDiscPoint({0, 0, 0}, 1, none); }, axis);
  test::ExpectError<CExBadParam>([&] { CExactWatsonRotation(1, none); }, axis,
                                 "ORVA::CExactWatsonRotation::CExactWatsonRotation",
                                 "src/Utils/Random/ExactRotations");
  std::string const center = "The coordinates of the center have to be finite, not ";
  ExpectRefused([] { CSpherePoint({0, c_nan, 0}, 1); }, center + "nan.");
  ExpectRefused([] { CBallPoint({c_infinity, 0, 0}, 1); }, center + "inf.");
  ExpectRefused([] { CDiscPoint({0, 0, c_nan}, 1); }, center + "nan.");
  ExpectRefused(
      [] {
        CBallPoint({0, 0, 0}, -1);
      },
      "The radius has to be finite and at least 0, not -1.");
  ExpectRefused(
      [] {
        CSpherePoint({0, -1e308, 0}, 1e308);
      },
      "The radius has to leave all coordinates finite, not 1e+308.");
}

TEST(ExactDraws, PointsAboutTheGreatestRadiusAreFinite) {
  CRandomSource source(13);
  for (int i = 0; i < 1000; ++i)
    for (auto const& p :
         {CBallPoint({0, 0, 0}, c_greatest)(source), CSpherePoint({0, 0, 0}, c_greatest)(source),
          CDiscPoint({0, 0, 0}, c_greatest, c_aslant)(source)})
      EXPECT_LE(std::max({std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)}), c_greatest);
}

// The papers' construction, in other words: all layers have one area, each begins at the height
// where the one below ends, and the last ends at the density's top.
TEST(Ziggurat, LayersHaveOneArea) {
  auto const expectLayers = [](auto const& layers, auto const& heights, double r, double area,
                               auto density, auto inverse) {
    EXPECT_NEAR(std::ldexp(layers[0].step, 53) * density(r), area, 4e-16);
    EXPECT_DOUBLE_EQ(std::ldexp(layers[1].step, 53), r);
    for (std::size_t i = 1; i < 256; ++i) {
      double const x = std::ldexp(layers[i].step, 53);
      EXPECT_NEAR(heights[i - 1], density(x), 1e-15) << i;
      EXPECT_NEAR(x * (heights[i] - heights[i - 1]), area, 4e-15) << i;
      EXPECT_NEAR(x, inverse(heights[i - 1]), 1e-13) << i;
    }
    for (std::size_t i = 0; i < 255; ++i)
      EXPECT_NEAR(static_cast<double>(layers[i].inside),
                  layers[i + 1].step / layers[i].step * 0x1p53, 8)
          << i;
    EXPECT_EQ(layers[255].inside, 0u) << "nothing lies above the last layer";
    EXPECT_EQ(heights[255], 1);
  };
  double const r = Impl::c_normalTail, pi = std::numbers::pi;
  expectLayers(
      Impl::c_normalLayers, Impl::c_normalHeights, r,
      r * std::exp(-r * r / 2) + std::sqrt(pi / 2) * std::erfc(r / std::sqrt(2)),
      [](double x) { return std::exp(-x * x / 2); },
      [](double y) { return std::sqrt(-2 * std::log(y)); });
  double const e = Impl::c_exponentialTail;
  expectLayers(
      Impl::c_exponentialLayers, Impl::c_exponentialHeights, e, (e + 1) * std::exp(-e),
      [](double x) { return std::exp(-x); }, [](double y) { return -std::log(y); });
}

TEST(Ziggurat, AWordIsSignLayerAndPlace) {
  // 53 bits of place, one of sign, eight of layer; a place well inside is the number at once.
  for (std::size_t const layer : {1u, 2u, 100u, 254u})
    for (uint64 const place : {uint64{0}, uint64{1}, uint64{1} << 52}) {
      double const expected = static_cast<double>(place) * Impl::c_normalLayers[layer].step;
      CReplaySource positive({place << 11 | layer}), negative({place << 11 | 256 | layer});
      EXPECT_EQ(Impl::StandardNormal(positive), expected);
      EXPECT_EQ(Impl::StandardNormal(negative), -expected);
      CReplaySource words({place << 11 | layer});
      EXPECT_EQ(Impl::StandardExponential(words),
                static_cast<double>(place) * Impl::c_exponentialLayers[layer].step);
    }
}

// Between what is inside a layer for certain and its end a second word decides: whether a uniform
// height within the layer lies below the density.
TEST(Ziggurat, WedgesAreTakenBelowTheDensity) {
  test::CRandomNumbers random;
  auto const expect = [&](auto const& layers, auto const& heights, auto density, auto draw) {
    for (std::size_t layer = 1; layer < 256; ++layer)
      for (int trial = 0; trial < 20; ++trial) {
        auto const steps =
            static_cast<uint64>(random.Real(static_cast<double>(layers[layer].inside), 0x1p53 - 1));
        double const x = static_cast<double>(steps) * layers[layer].step;
        double const low = heights[layer - 1], high = heights[layer];
        double const share = (density(x) - low) / (high - low);
        for (double const u : {share - 1e-6, share + 1e-6}) {
          if (u < 0 || u >= 1) continue;
          // What is rejected is drawn again: from here the number 0.
          CReplaySource words({steps << 11 | layer, static_cast<uint64>(u * 0x1p53) << 11, 7});
          EXPECT_EQ(draw(words), u < share ? x : 0) << layer << ", " << x << ", height " << u;
        }
      }
  };
  expect(
      Impl::c_normalLayers, Impl::c_normalHeights, [](double x) { return std::exp(-x * x / 2); },
      [](auto& words) { return Impl::StandardNormal(words); });
  expect(
      Impl::c_exponentialLayers, Impl::c_exponentialHeights, [](double x) { return std::exp(-x); },
      [](auto& words) { return Impl::StandardExponential(words); });
}

TEST(Ziggurat, TailsGoOnWithoutEnd) {
  // The highest place of layer 0 is beyond the tail's beginning; three such words, then one inside.
  uint64 const beyond = c_ones << 11;
  CReplaySource exponential({beyond, beyond, beyond, uint64{1} << 62 | 7});
  double const rest = static_cast<double>(uint64{1} << 51) * Impl::c_exponentialLayers[7].step;
  EXPECT_DOUBLE_EQ(Impl::StandardExponential(exponential), 3 * Impl::c_exponentialTail + rest);
  // For the normal tail: beyond r by E / r where a second E is large enough.
  uint64 const small = uint64{1} << 61 | 7;
  double const e = static_cast<double>(uint64{1} << 50) * Impl::c_exponentialLayers[7].step;
  CReplaySource normal({beyond | 256, small, small});
  EXPECT_DOUBLE_EQ(Impl::StandardNormal(normal), -(Impl::c_normalTail + e / Impl::c_normalTail));
  EXPECT_EQ(normal.Remaining(), 0u);
}

// Words that are all zeros or all ones lead to the ends of the ranges, not beyond, and nowhere
// else.
TEST(ExactDraws, EndsOfTheRangesAreSafe) {
  auto const all = [](uint64 word) { return CReplaySource(std::vector<uint64>(1000, word)); };
  CReplaySource zeros = all(0), ones = all(c_ones);
  EXPECT_EQ(CExactUniform(2, 3)(zeros), 2);
  EXPECT_EQ(CExactUniform(2, 3)(ones), std::nextafter(3.0, 0.0));
  EXPECT_LT(CExactUniform(-1, 1e-300)(ones), 1e-300);
  EXPECT_LT(CExactUniform(1, std::nextafter(1.0, 2.0))(ones), std::nextafter(1.0, 2.0));
  EXPECT_EQ(CExactNormal(5, 2)(zeros), 5);
  EXPECT_EQ(CExactExponential()(zeros), 0);
  EXPECT_EQ(CAliasTable(std::vector{1.0, 2.0})(zeros), 0u);
  EXPECT_EQ(CAliasTable(std::vector{1.0, 2.0})(ones), 1u);
  EXPECT_EQ(CExactPoisson(5)(ones), 0) << "the smallest factor, 2^-53, is below exp(-5)";
  // Vectors of length 0 have no direction; the draws give one all the same.
  EXPECT_EQ(CExactIsotropicRotation().Direction(zeros), CTriple<double>(0, 0, 1));
  EXPECT_EQ(CExactIsotropicRotation().Quaternion(zeros), CQuaternion());
  EXPECT_EQ(CSpherePoint()(zeros), CTriple<double>(0, 0, 1));
  EXPECT_EQ(CBallPoint()(zeros), CTriple<double>(0, 0, 0));
  EXPECT_TRUE(CExactVonMisesFisher(5, c_up)(zeros).IsValid());
  // Nor has an azimuth from two zeros, whatever the cosine that was drawn before them.
  for (uint64 const first : {uint64{1} << 63 | 7, uint64{3} << 62 | 7}) {
    CReplaySource fisher({first, 0, 0}), wide({first, 0, 0}), across({first, 0, 0}),
        any({first, 0, 0, 0}), ends({first, first, 0, 0, 0});
    ExpectUnit(CExactVonMisesFisher(5, c_aslant).Direction(fisher));
    ExpectUnit(CExactVonMisesFisher(0.5, c_aslant).Direction(wide));
    ExpectUnit(CExactWatsonRotation(-5, c_aslant).Direction(across));
    ExpectUnit(CExactWatsonRotation(0, c_aslant).Direction(any));
    ExpectUnit(CExactWatsonRotation(5, c_aslant).Direction(ends));
  }
  EXPECT_EQ(CExactPressedDirections(0.5)(zeros), 0);
}

TEST(ExactDraws, PressedDirectionsOfHugeFactorsAreTheEnds) {
  CRandomSource source(11);
  int ends = 0;
  for (int i = 0; i < 1000; ++i) {
    double const angle = CExactPressedDirections(c_greatest)(source);
    EXPECT_TRUE(angle < 1e-290 || angle == std::numbers::pi) << angle;
    ends += angle > 1 ? 1 : 0;
    EXPECT_EQ(CExactPressedDirections(0)(source), std::numbers::pi / 2);
  }
  EXPECT_NEAR(ends, 500, 80);
}

TEST(ExactDraws, LogNormalOfAnyMeanAndDeviation) {
  struct StCase {
    double mean, deviation, mu, sigma;
  };
  double const ln2 = std::numbers::ln2;
  StCase const cases[] = {
      {1, 0, 0, 0},
      {1, 1, -ln2 / 2, std::sqrt(ln2)},
      {2, 2 * std::sqrt(3.0), 0, std::sqrt(2 * ln2)},
      {1, 1e-20, 0, 1e-20},
      {1e-100, 1e200, -400 * std::log(10.0), std::sqrt(600 * std::log(10.0))},
  };
  for (auto const& [mean, deviation, mu, sigma] : cases) {
    auto const given = CExactLogNormal::FromMeanAndDeviation(mean, deviation);
    EXPECT_NEAR(given.Mu(), mu, 1e-15 + 1e-15 * std::fabs(mu)) << mean << ", " << deviation;
    EXPECT_DOUBLE_EQ(given.Sigma(), sigma) << mean << ", " << deviation;
  }
}

TEST(ExactDraws, GammaOfTheSmallestAndGreatestShapes) {
  CRandomSource source(12);
  for (int i = 0; i < 1000; ++i) {
    double const tiny = CExactGamma(1e-300, 1)(source);
    EXPECT_TRUE(tiny >= 0 && tiny < 1e-3);
    EXPECT_NEAR(CExactGamma(1e300, 1)(source), 1e300, 1e286);
    // A scale so great that the number of shape 1 + 1e-12 is infinite, and nearly 0 as a factor.
    EXPECT_EQ(CExactGamma(1e-12, 5e-309)(source), 0);
  }
}

TEST(ExactDraws, LogRestIsTheLogarithmWithoutItsFirstTerms) {
  for (double const y : {-0.9, -0.5, -0.11, -0.1, -0.05, -1e-3, 0.0, 1e-3, 0.05, 0.1, 0.11, 2.0}) {
    long double const x = y;
    long double const exact = std::log1p(x) - (x - x * x / 2 + x * x * x / 3);
    EXPECT_NEAR(Impl::LogRest(y), static_cast<double>(exact), 1e-17 + 2e-12 * y * y * y * y) << y;
  }
  EXPECT_DOUBLE_EQ(Impl::LogRest(1e-8), -0.25e-32 + 0.2e-40);
}

TEST(ExactDraws, DrawsNeedNoHeap) {
  CExactGamma const gamma(0.5, 1);
  CExactPoisson const poisson(1000);
  CAliasTable const table(std::vector{1.0, 2.0});
  CExactWatsonRotation const watson(5, c_aslant);
  CBallPoint const ball;
  std::array<double, 1000> values{};
  std::array<CTriple<double>, 1000> directions{};
  auto const draw = [&] {
    CRandomSource source(1);
    gamma.Fill(values, source);
    watson.Fill(directions, source);
    for (int i = 0; i < 1000; ++i) {
      (void)poisson(source);
      (void)table(source);
      (void)ball();
      (void)watson(source);
    }
  };
  EXPECT_EQ(test::FailEveryAllocation(draw, [] {}), 0);
}
