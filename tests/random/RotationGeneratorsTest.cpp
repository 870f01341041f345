// Generators of rotations: each draw against its formula, and everything around the draws.
#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"
#include "support/Replay.h"
#include "support/Rotations.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using test::c_first;
using test::c_second;
using test::TwoFixed;

namespace {

// No rotation that can be made has a bad matrix. An explicit instantiation may name what is
// private, and so reaches the matrix to spoil it.
CMatrix<double>& MatrixOf(CEulerRotation& rotation);
template <CMatrix<double> CEulerRotation::*member>
struct StMatrixOf {
  friend CMatrix<double>& MatrixOf(CEulerRotation& rotation) { return rotation.*member; }
};
template struct StMatrixOf<&CEulerRotation::m_Matrix>;

constexpr double c_twoPi = 6.283185307179586;
constexpr double c_infinity = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
constexpr double c_smallest = 2.2250738585072014e-308;
constexpr double c_below = 2.2250738585072011e-308;
constexpr int c_draws = 500;

std::string const c_euler = "ORVA::CEulerRotation::CEulerRotation";
std::string const c_polar = "ORVA::CPolarCoordinates::CPolarCoordinates";

void ExpectSame(CEulerRotation const& a, CEulerRotation const& b, std::string const& what = "") {
  auto const x = a.getRotationMatrix(), y = b.getRotationMatrix();
  for (std::size_t i = 0; i < 9; ++i)
    ASSERT_NEAR(x.Elements()[i], y.Elements()[i], 1e-12) << what << ", element " << i;
}

CEulerRotation WithDirection(CTriple<double> const& d, double spin) {
  return {CPolarCoordinates(d.x, d.y, d.z), spin};
}

// Draws with any function that computes the expected rotation from the same words.
template <class Generator, class Formula>
void ExpectFormula(Generator& generator, Formula formula, std::string const& what = "") {
  test::CReplay words(test::Seed(), 20 * c_draws);
  for (int i = 0; i < c_draws; ++i) {
    CEulerRotation const expected = formula(words);
    ASSERT_NO_FATAL_FAILURE(ExpectSame(generator(), expected, what));
  }
  words.ExpectInStep();
}

CEulerRotation Isotropic(test::CReplay& words) {
  double const u1 = words.U(), u2 = words.U(), u3 = words.U();
  return {c_twoPi * u1, std::acos(2 * u2 - 1), c_twoPi * u3};
}

CEulerRotation VonMisesFisher(test::CReplay& words, double kappa, CPolarCoordinates const* mean) {
  double const u1 = words.U(), u2 = words.U(), e = std::exp(-2 * kappa);
  double const theta = 2 * std::asin(std::sqrt(-std::log((1 - e) * u1 + e) / (2 * kappa)));
  CPolarCoordinates const d(theta, c_twoPi * u2);
  double const spin = c_twoPi * words.U();
  if (mean == nullptr) return {d, spin};
  return WithDirection(CEulerRotation(*mean, 0).rotateVector(d), spin);
}

// The rotation that takes z to the mean, as a product with the turn about y and the turn about z.
CTriple<double> TurnToMean(CTriple<double> const& d, CPolarCoordinates const& mean) {
  double const ca = std::cos(mean.m_fTheta), sa = std::sin(mean.m_fTheta);
  double const cb = std::cos(mean.m_fPhi), sb = std::sin(mean.m_fPhi);
  double const x = ca * d.x + sa * d.z;
  return {cb * x - sb * d.y, sb * x + cb * d.y, -sa * d.x + ca * d.z};
}

CEulerRotation Watson(test::CReplay& words, double kappa, CPolarCoordinates const& mean) {
  double t = 0;
  for (bool accepted = false; !accepted;) {
    double const u = words.U(), v = words.U();
    if (kappa > 0) {
      double const c = 1 / (std::exp(kappa) - 1);
      t = std::log(u / c + 1) / kappa;
      accepted = std::exp(kappa * t * t - kappa * t) >= v;
    } else {
      double const s = std::sqrt(-kappa);
      t = std::tan(u * std::atan(s)) / s;
      accepted = std::exp(kappa * t * t) * (1 - kappa * t * t) >= v;
    }
  }
  double const f = c_twoPi * words.U(), sine = std::sqrt(1 - t * t);
  double const spin = c_twoPi * words.U();
  return WithDirection(TurnToMean({sine * std::cos(f), sine * std::sin(f), t}, mean), spin);
}

} // namespace

TEST(ConstantValue, GivesItsValue) {
  CConstantValue<CEulerRotation> identity;
  CConstantValue<CEulerRotation> constant(c_first);
  CConstantValue<CEulerRotation> const copy(constant);
  IRandomGenerator<CEulerRotation>& generator = constant;
  EXPECT_TRUE(identity() == CEulerRotation());
  EXPECT_TRUE(generator() == c_first);
  EXPECT_TRUE(generator.IsValid());
  identity = copy;
  EXPECT_TRUE(identity() == c_first);
}

TEST(FixRotation, GivesItsRotationThroughEveryBase) {
  CFixRotation fixed(c_first);
  test::CReplay words(test::Seed(), 5);
  IRandomGenerator<CEulerRotation>& generator = fixed;
  IRotationGenerator& rotations = fixed;
  CConstantValue<CEulerRotation>& constant = fixed;
  EXPECT_TRUE(fixed() == c_first);
  EXPECT_TRUE(generator() == c_first);
  EXPECT_TRUE(rotations() == c_first);
  EXPECT_TRUE(constant() == c_first);
  EXPECT_TRUE(fixed.IsValid() && generator.IsValid() && constant.IsValid());
  std::unique_ptr<IRotationGenerator> const clone(rotations.Clone());
  EXPECT_TRUE((*clone)() == c_first);
  words.ExpectInStep(); // no draw so far
  (void)fixed.Rand8();
  (void)words.Word();
  fixed.ReSeedThePseudoRandomGenerator(42);
  words.ExpectInStep();
  EXPECT_TRUE(CFixRotation()() == CEulerRotation());
  fixed = CFixRotation(c_second);
  EXPECT_TRUE(fixed() == c_second);
  EXPECT_TRUE((*clone)() == c_first);
}

TEST(FixRotation, AcceptsWhatARotationAccepts) {
  // Every rotation that can be made is valid, whatever its angles.
  EXPECT_NO_THROW(CFixRotation(CEulerRotation(1e22, -1e300, 1e100)));
}

TEST(FixRotation, RefusesARotationWhoseMatrixWasSpoilt) {
  CEulerRotation spoilt;
  MatrixOf(spoilt)(0, 1) = 1e-9;
  test::ExpectError([&] { (void)CFixRotation(spoilt); },
                    "CFixRotation::CFixRotation: Invalid Rotation.",
                    "ORVA::CFixRotation::CFixRotation", "src/Utils/Random/FixRotation", 37);
}

TEST(IsotropicRotation, FollowsItsFormula) {
  CIsotropicRotation generator;
  ExpectFormula(generator, Isotropic);
  EXPECT_TRUE(generator.IsValid());
}

TEST(GirdleRotation, FollowsItsFormulaAboutZ) {
  for (double const beta : {0.1, 0.999, 1.0, 1.0 + 2e-16, 5.0, 1e9}) {
    CGirdleRotation generator(beta);
    EXPECT_TRUE(generator.IsValid());
    ExpectFormula(
        generator,
        [&](test::CReplay& words) -> CEulerRotation {
          double t = 2 * words.U() - 1;
          if (beta != 1) t = t / std::sqrt(t * t - beta * beta * t * t + beta * beta);
          double const phi = c_twoPi * words.U(), psi = c_twoPi * words.U();
          return {phi, std::acos(t), psi};
        },
        std::to_string(beta));
  }
}

TEST(GirdleRotation, TurnsDirectionsToItsAxis) {
  CPolarCoordinates const axis(1.0, 2.5);
  CGirdleRotation generator(0.25, axis);
  ExpectFormula(generator, [&](test::CReplay& words) {
    double t = 2 * words.U() - 1;
    t = t / std::sqrt(t * t - 0.0625 * t * t + 0.0625);
    double const phi = c_twoPi * words.U(), psi = c_twoPi * words.U(), sine = std::sqrt(1 - t * t);
    auto const w =
        CEulerRotation(axis, 0).rotateVector({std::sin(psi) * sine, std::cos(psi) * sine, t});
    return WithDirection(w, phi);
  });
}

TEST(GirdleRotation, AxisWithinAMicroradianOfZIsZ) {
  CGirdleRotation atZ(2), nearZ(2, CPolarCoordinates(1e-8, 3));
  CRandom::Obj().Seed(1);
  CEulerRotation const first = atZ();
  CRandom::Obj().Seed(1);
  EXPECT_EQ(nearZ().getRotationMatrix(), first.getRotationMatrix());
}

TEST(GirdleRotation, RoundingLeavesTheCosineInRange) {
  for (double const beta : {1e8, 1e10, 1e100, 1e-8, 1e-100, c_smallest}) {
    CGirdleRotation generator(beta);
    for (uint64 const word : {uint64{0}, ~uint64{0}}) {
      auto words = test::WordsAfter(word);
      EXPECT_NO_THROW((void)generator(words)) << beta;
    }
  }
}

TEST(GirdleRotation, AnisotropyMustBePositiveAndFinite) {
  struct StCase {
    double beta;
    char const* text;
  };
  for (StCase const& bad :
       {StCase{0, "0"}, StCase{-1.5, "-1.5"}, StCase{c_infinity, "inf"}, StCase{c_nan, "nan"}}) {
    std::string const message = std::string("Invalid Anisotropyparameter beta. b=") + bad.text;
    std::string const where = "ORVA::CGirdleRotation::CGirdleRotation";
    std::string const source = "src/Utils/Random/GirdleRotation";
    test::ExpectError([&] { CGirdleRotation generator(bad.beta); }, message, where, source, 39);
    test::ExpectError([&] { CGirdleRotation generator(bad.beta, CPolarCoordinates(1, 1)); },
                      message, where, source, 49);
  }
  EXPECT_NO_THROW(CGirdleRotation{c_smallest});
  EXPECT_THROW(CGirdleRotation{c_below}, CException);
}

TEST(GirdleRotation, AxisWithoutDirectionFailsAtTheDraw) {
  CGirdleRotation generator(2, CPolarCoordinates(0, 0, 0));
  test::CReplay words(test::Seed(), 5);
  test::ExpectError([&] { (void)generator(); }, "Invalid Parameter! 0 or nan or nan.", c_euler);
  for (int i = 0; i < 3; ++i) (void)words.Word();
  words.ExpectInStep();
}

TEST(GirdleRotation, SquareThatOverflowsEndsInTheRotationsError) {
  CRandom::Obj().Seed(test::Seed());
  CGirdleRotation generator(1e200);
  EXPECT_THROW((void)generator(), CException);
}

TEST(VonMisesFisherRotation, FollowsItsFormula) {
  CPolarCoordinates const mean(1.0, 2.5);
  for (double const kappa : {1e-5, 0.5, 10.0, 300.0, 1e6}) {
    CVonMisesFisher about(kappa, mean), aboutZ(kappa, CVonMisesFisher::zaxis);
    EXPECT_TRUE(about.IsValid());
    ExpectFormula(
        about, [&](auto& words) { return VonMisesFisher(words, kappa, &mean); }, "mean");
    ExpectFormula(
        aboutZ, [&](auto& words) { return VonMisesFisher(words, kappa, nullptr); }, "z");
  }
}

TEST(VonMisesFisherRotation, AtTheEndsOfItsParameter) {
  double const infinity = std::numeric_limits<double>::infinity();
  CPolarCoordinates const mean(1.0, 0.5);
  CTriple<double> const axis = mean;
  CVonMisesFisher endless(infinity, mean);
  EXPECT_FALSE(endless.IsValid());
  for (int i = 0; i < 100; ++i) {
    CTriple<double> const d = endless().getDirectionVector();
    EXPECT_NEAR(d.x * axis.x + d.y * axis.y + d.z * axis.z, 1, 1e-15);
  }
  for (double const kappa : {0.0, -infinity, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_THROW(CVonMisesFisher(kappa, mean)(), CException) << kappa;
}

TEST(VonMisesFisherRotation, ParametersOfOneDraw) {
  CPolarCoordinates const mean(1.0, 2.5), other(2.0, 0.5);
  CVonMisesFisher generator(1, CVonMisesFisher::zaxis);
  auto const single = [&] { return generator(20, mean); };
  ExpectFormula(single, [&](auto& words) { return VonMisesFisher(words, 20, &mean); });
  auto const product = [&] { return generator(20, mean, 5, other); };
  CTriple<double> const m = 20.0 * CTriple<double>(mean) + 5.0 * CTriple<double>(other);
  double const kappa = std::hypot(m.x, m.y, m.z);
  CPolarCoordinates const between(m.x, m.y, m.z);
  ExpectFormula(product, [&](auto& words) { return VonMisesFisher(words, kappa, &between); });
}

TEST(VonMisesFisherRotation, AngleHelpersDrawFromTheSameSource) {
  CVonMisesFisher const generator(1, CVonMisesFisher::zaxis);
  test::CReplay words(test::Seed(), 2 * c_draws + 5);
  for (int i = 0; i < c_draws; ++i) {
    EXPECT_DOUBLE_EQ(generator.GenerateTheta(7),
                     std::acos(std::log(1 - words.U() * (1 - std::exp(-14.0))) / 7 + 1));
    EXPECT_EQ(generator.GeneratePhi(), c_twoPi * words.U());
  }
  words.ExpectInStep();
}

TEST(VonMisesFisherRotation, LargeConcentrationGivesTheMean) {
  CRandom::Obj().Seed(test::Seed());
  CVonMisesFisher generator(1e12, CVonMisesFisher::zaxis);
  for (int i = 0; i < c_draws; ++i) EXPECT_NEAR(generator().getDirectionVector().z, 1, 1e-10);
}

TEST(VonMisesFisherRotation, RoundingLeavesTheAnglesInRange) {
  for (double const kappa : {1e-16, 1e-12, 1e-3, 1.0, 400.0, 1e300}) {
    CVonMisesFisher generator(kappa, CVonMisesFisher::zaxis);
    for (uint64 const word : {uint64{0}, ~uint64{0}}) {
      auto words = test::WordsAfter(word);
      EXPECT_NO_THROW((void)generator(words)) << kappa;
      CReplaySource angle({word});
      EXPECT_FALSE(std::isnan(generator.GenerateTheta(kappa, angle))) << kappa;
    }
  }
}

TEST(VonMisesFisherRotation, VanishingConcentrationKeepsTheCosineUniform) {
  for (double const kappa : {1e-6, 1e-9, 1e-13, 1e-16, 1e-18, 1e-300, 5e-324}) {
    CVonMisesFisher generator(kappa, CVonMisesFisher::zaxis);
    test::CReplay words(test::Seed(), 4 * c_draws + 5);
    for (int i = 0; i < c_draws; ++i) {
      EXPECT_NEAR(generator().getDirectionVector().z, 2 * words.U() - 1, 2e-6) << kappa;
      (void)words.Word();
      (void)words.Word();
      EXPECT_NEAR(std::cos(generator.GenerateTheta(kappa)), 1 - 2 * words.U(), 2e-6) << kappa;
    }
    words.ExpectInStep();
  }
}

TEST(VonMisesFisherRotation, ConcentrationThatIsNoneEndsInTheAnglesError) {
  for (double const kappa : {0.0, c_nan, -c_infinity, -800.0}) {
    CVonMisesFisher generator(kappa, CVonMisesFisher::zaxis);
    EXPECT_FALSE(generator.IsValid());
    test::CReplay words(test::Seed(), 5);
    EXPECT_THROW((void)generator(), CException) << kappa;
    (void)words.Word(); // the spin is not drawn any more
    (void)words.Word();
    words.ExpectInStep();
  }
  EXPECT_FALSE(CVonMisesFisher(c_infinity, CVonMisesFisher::zaxis).IsValid());
  EXPECT_FALSE(CVonMisesFisher(-1, CVonMisesFisher::zaxis).IsValid());
  CVonMisesFisher product(1, CVonMisesFisher::zaxis);
  EXPECT_THROW((void)product(0, CVonMisesFisher::zaxis, 0, CVonMisesFisher::zaxis), CException);
}

TEST(WatsonRotation, FollowsItsFormula) {
  for (auto const& mean :
       {CPolarCoordinates(1.0, 2.5), CPolarCoordinates(0.0, 0.0), CWatsonRotation::xaxis})
    for (double const kappa : {1e-4, 0.5, 20.0, 600.0, -1e-4, -0.5, -20.0, -1e6}) {
      CWatsonRotation generator(kappa, mean);
      EXPECT_TRUE(generator.IsValid());
      ExpectFormula(
          generator, [&](auto& words) { return Watson(words, kappa, mean); },
          std::to_string(kappa));
    }
}

TEST(WatsonRotation, ZeroConcentrationIsIsotropic) {
  CWatsonRotation generator(0, CWatsonRotation::xaxis);
  ExpectFormula(generator, Isotropic);
  EXPECT_TRUE(generator.IsValid());
}

TEST(WatsonRotation, VanishingConcentrationKeepsTheCosineUniform) {
  for (double const kappa : {1e-5, 1e-9, 1e-16, 1e-18, 1e-300, 5e-324, -1e-9, -1e-300, -5e-324}) {
    CWatsonRotation generator(kappa, CPolarCoordinates(0.0, 0.0));
    test::CReplay words(test::Seed(), 5 * c_draws);
    for (int i = 0; i < c_draws; ++i) {
      double u = words.U(), v = words.U();
      while (v > std::exp(kappa * (u * u - u))) u = words.U(), v = words.U();
      EXPECT_NEAR(generator().getDirectionVector().z, u, 1e-5) << kappa;
      (void)words.Word();
      (void)words.Word();
    }
    words.ExpectInStep();
  }
}

TEST(WatsonRotation, HugeConcentrationNeitherLoopsNorOverflows) {
  CRandom::Obj().Seed(test::Seed());
  for (double const kappa : {708.0, 709.0, 710.0, 1e4, 1e300, 1.7e308}) {
    CWatsonRotation bipolar(kappa, CPolarCoordinates(0.0, 0.0));
    CWatsonRotation girdle(-kappa, CPolarCoordinates(0.0, 0.0));
    for (int i = 0; i < c_draws; ++i) {
      EXPECT_NEAR(bipolar().getDirectionVector().z, 1, 30 / kappa + 1e-15);
      EXPECT_NEAR(girdle().getDirectionVector().z, 0, 10 / std::sqrt(kappa) + 1e-15);
    }
  }
  for (double const kappa : {1.0, 1000.0, 1e300, -1.0, -1e300})
    for (uint64 const word : {uint64{0}, ~uint64{0}}) {
      CWatsonRotation generator(kappa, CPolarCoordinates(0.0, 0.0));
      auto words = test::WordsAfter(word);
      EXPECT_NO_THROW((void)generator(words)) << kappa;
    }
}

TEST(WatsonRotation, ProposalsMeetWhereTheirFormulasChange) {
  for (double const kappa : {1e-5, 709.0}) {
    CWatsonRotation below(std::nextafter(kappa, 0), CPolarCoordinates(0.0, 0.0));
    CWatsonRotation above(std::nextafter(kappa, 1e9), CPolarCoordinates(0.0, 0.0));
    CRandom::Obj().Seed(test::Seed());
    std::vector<double> cosines;
    for (int i = 0; i < c_draws; ++i) cosines.push_back(below().getDirectionVector().z);
    CRandom::Obj().Seed(test::Seed());
    for (double const cosine : cosines) EXPECT_NEAR(above().getDirectionVector().z, cosine, 1e-9);
  }
}

TEST(WatsonRotation, ConcentrationThatIsNotFiniteEndsInTheRotationsError) {
  for (double const kappa : {c_nan, c_infinity, -c_infinity}) {
    CWatsonRotation generator(kappa, CWatsonRotation::xaxis);
    EXPECT_FALSE(generator.IsValid());
    CRandom::Obj().Seed(test::Seed());
    try {
      (void)generator();
      ADD_FAILURE() << kappa;
    } catch (CException const& error) {
      EXPECT_EQ(error.Location().function, c_euler);
      EXPECT_EQ(error.Location().line, 58);
    }
  }
}

TEST(RotationGenerators, AxesAreConstants) {
  static_assert(CGirdleRotation::zaxis.m_fTheta == 0 && CGirdleRotation::zaxis.m_fPhi == 0);
  static_assert(CVonMisesFisher::zaxis.m_fTheta == 0 && CVonMisesFisher::zaxis.m_fPhi == 0);
  static_assert(CWatsonRotation::xaxis.m_fPhi == 0);
  CPolarCoordinates const x(1, 0, 0);
  EXPECT_EQ(CWatsonRotation::xaxis.m_fTheta, x.m_fTheta);
}

TEST(RotationGenerators, ClonesAndCopiesDrawAlike) {
  CPolarCoordinates const mean(1.0, 2.5);
  CIsotropicRotation isotropic;
  CGirdleRotation girdle(0.3, mean);
  CVonMisesFisher fisher(5, mean);
  CWatsonRotation watson(5, mean);
  CMixtureRotation mixture = TwoFixed(0.5, 0.5);
  auto const expectAlike = [](IRotationGenerator& a, IRotationGenerator& b) {
    CRandom::Obj().Seed(test::Seed());
    CEulerRotation const first = a();
    CRandom::Obj().Seed(test::Seed());
    EXPECT_EQ(b().getRotationMatrix(), first.getRotationMatrix());
    EXPECT_EQ(a.IsValid(), b.IsValid());
  };
  for (IRotationGenerator* const generator : std::initializer_list<IRotationGenerator*>{
           &isotropic, &girdle, &fisher, &watson, &mixture}) {
    std::unique_ptr<IRotationGenerator> const clone(generator->Clone());
    expectAlike(*generator, *clone);
  }
  CGirdleRotation otherGirdle(2);
  otherGirdle = girdle;
  expectAlike(girdle, otherGirdle);
  CVonMisesFisher otherFisher(1, CVonMisesFisher::zaxis);
  otherFisher = fisher;
  expectAlike(fisher, otherFisher);
  CWatsonRotation otherWatson(-1, CWatsonRotation::xaxis);
  otherWatson = watson;
  expectAlike(watson, otherWatson);
}

TEST(MixtureRotation, ChosenGeneratorDrawsAfterTheChoice) {
  CMixtureRotation mixture(1);
  mixture.Add(std::make_unique<CIsotropicRotation>(), 1);
  ExpectFormula(mixture, [](test::CReplay& words) {
    (void)words.Word();
    return Isotropic(words);
  });
}
