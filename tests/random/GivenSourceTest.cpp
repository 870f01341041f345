// The given generators from a source of one's own: the same algorithms on the source's words, the
// shared source untouched, arrays as single draws.
#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
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
#include <SeluUtils/Random/UniformPoint.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <vector>

using namespace ORVA;

namespace {

constexpr int c_draws = 300;
constexpr uint64 c_seed = 77;

// What a seeded shared source gives is what stream 0 of that seed gives.
template <class Generator>
void ExpectSameWords(Generator generator, char const* what) {
  CRandom::Obj().Seed(c_seed);
  CRandomSource source(c_seed);
  for (int i = 0; i < c_draws; ++i) ASSERT_TRUE(generator() == generator(source)) << what;
  EXPECT_EQ(CRandom::Obj().Rand64(), source()) << what << " draws as many words";
}

// From a source no draw hangs on what came before, and the shared source stays where it is.
template <class T, class Generator>
void ExpectOwnStream(Generator generator, char const* what) {
  CRandom::Obj().Seed(1);
  CRandomSource source(c_seed), same(c_seed);
  std::mt19937_64 twister(5), sameTwister(5);
  std::vector<T> array(c_draws), twisted(c_draws);
  generator.Fill(array, source);
  generator.Fill(twisted, twister);
  Generator other = generator;
  for (std::size_t i = 0; i < array.size(); ++i) {
    ASSERT_TRUE(array[i] == other(same)) << what;
    ASSERT_TRUE(twisted[i] == other(sameTwister)) << what;
  }
  EXPECT_EQ(source, same) << what;
  EXPECT_EQ(CRandom::Obj().Rand64(), CRandomSource(1)()) << what << " leaves the shared source";
}

template <class T, class Generator>
void ExpectDrawsFromSources(Generator const& generator, char const* what) {
  ExpectSameWords(generator, what);
  ExpectOwnStream<T>(generator, what);
}

CPolarCoordinates const c_aslant(1.0, 2.5);

template <class Generator>
void ExpectRotationsFromSources(Generator generator, char const* what) {
  ExpectDrawsFromSources<CEulerRotation>(generator, what);
  CRandomSource a(3), b(3), c(3), same(3);
  std::vector<CTriple<double>> directions(100);
  std::vector<CQuaternion> quaternions(100);
  std::vector<std::array<double, 9>> matrices(100);
  IRotationGenerator& interface = generator;
  interface.Fill(directions, a);
  interface.Fill(quaternions, b);
  interface.Fill(matrices, c);
  for (std::size_t i = 0; i < 100; ++i) {
    CEulerRotation const rotation = interface(same);
    EXPECT_EQ(directions[i], rotation.getDirectionVector()) << what;
    EXPECT_EQ(quaternions[i], CQuaternion(rotation)) << what;
    EXPECT_EQ(quaternions[i].ToRotation(), rotation) << what;
    EXPECT_TRUE(std::ranges::equal(rotation.getRotationMatrix().Elements(), matrices[i])) << what;
  }
  EXPECT_EQ(a, same);
  EXPECT_EQ(b, same);
  EXPECT_EQ(c, same);
}

// As a user would write one before there were sources.
class CTwice : public IRandomGenerator<double> {
public:
  double operator()() const override { return 2 * m_Uniform(); }
  [[nodiscard]] bool IsValid() const override { return true; }

private:
  CRandomUniform m_Uniform;
};

class CHalfTurns : public IRotationGenerator {
public:
  CEulerRotation operator()() override { return {Rand64() % 2 == 0 ? 0 : 3.0, 0, 0}; }
  [[nodiscard]] bool IsValid() const override { return true; }
  [[nodiscard]] IRotationGenerator* Clone() const override { return new CHalfTurns(*this); }
};

} // namespace

TEST(GivenSource, ScalarsDrawFromIt) {
  ExpectDrawsFromSources<double>(CRandomUniform(-2, 3), "uniform");
  ExpectDrawsFromSources<double>(CRandomExponential(3), "exponential");
  ExpectDrawsFromSources<double>(CRandomRayleigh(3), "Rayleigh");
  for (double const shape : {0.3, 1.0, 2.5, 50.0})
    ExpectDrawsFromSources<double>(CRandomGamma(shape, 3), "gamma");
  ExpectDrawsFromSources<double>(CRandomDiscrete({{0.1, 0.5}, {0.2, 0.25}, {0.7, 0.25}}),
                                 "discrete");
  ExpectDrawsFromSources<double>(CRandomChordlength(), "chord length");
  ExpectDrawsFromSources<double>(CRandomCircleDiameter(), "circle diameter");
  ExpectDrawsFromSources<double>(CPressedDirections(0.5, 1), "pressed directions");
  ExpectDrawsFromSources<int64>(CRandomPoisson(5), "Poisson");
  ExpectOwnStream<int64>(CRandomPoisson(1000), "Poisson from 512 on");
  ExpectOwnStream<double>(CRandomNormal(1, 2), "normal");
  ExpectOwnStream<double>(CRandomLogNormal(1, 2), "log-normal");
  ExpectDrawsFromSources<CTriple<double>>(CUniformPoint({0, 0, 0}, {1, 2, 3}), "point");
}

TEST(GivenSource, RotationsDrawFromIt) {
  ExpectRotationsFromSources(CIsotropicRotation(), "isotropic");
  ExpectRotationsFromSources(CGirdleRotation(0.3, c_aslant), "girdle");
  ExpectRotationsFromSources(CVonMisesFisher(5, c_aslant), "von Mises-Fisher");
  for (double const kappa : {-5.0, 0.0, 5.0})
    ExpectRotationsFromSources(CWatsonRotation(kappa, c_aslant), "Watson");
  CMixtureRotation mixture(2);
  mixture.Add(std::make_unique<CVonMisesFisher>(5, c_aslant), 0.5);
  mixture.Add(std::make_unique<CIsotropicRotation>(), 0.5);
  ExpectRotationsFromSources(mixture, "mixture");
  ExpectRotationsFromSources(CFixRotation(CEulerRotation(1, 2, 3)), "fixed");
  ExpectDrawsFromSources<CEulerRotation>(CConstantValue<CEulerRotation>(CEulerRotation(1, 2, 3)),
                                         "constant");
}

TEST(GivenSource, ParametersOfOneDrawGoBeforeIt) {
  CRandomSource source(c_seed);
  CRandom::Obj().Seed(c_seed);
  CVonMisesFisher fisher(1, CVonMisesFisher::zaxis);
  CRandomPoisson const poisson;
  for (int i = 0; i < c_draws; ++i) {
    EXPECT_EQ(fisher(3, c_aslant), fisher(3, c_aslant, source));
    EXPECT_EQ(fisher(3, c_aslant, 2, CVonMisesFisher::zaxis),
              fisher(3, c_aslant, 2, CVonMisesFisher::zaxis, source));
    EXPECT_EQ(fisher.GenerateTheta(3), fisher.GenerateTheta(3, source));
    EXPECT_EQ(fisher.GeneratePhi(), fisher.GeneratePhi(source));
    EXPECT_EQ(poisson(7.5), poisson(7.5, source));
  }
}

TEST(GivenSource, NormalTakesTheFirstOfEachPairAndKeepsNone) {
  CRandomNormal const normal(5, 3);
  CRandomSource source(c_seed), other(2);
  CRandom::Obj().Seed(c_seed);
  for (int i = 0; i < c_draws; ++i) {
    EXPECT_EQ(normal(), normal(source));
    static_cast<void>(normal(other));
    static_cast<void>(normal()); // the second value, which draws from sources have left alone
  }
  CRandomSource same = source;
  EXPECT_EQ(normal(100, 10, source), (normal(same) - 5) / 3 * 10 + 100);
}

TEST(GivenSource, PoissonTakesItsFifteenBitsFromTheTopOfAWord) {
  // u = (16383 + 1) / 32767, just above a half, gives the mean; v decides nothing for it.
  CReplaySource words({uint64{16383} << 49, 0});
  EXPECT_EQ(CRandomPoisson(1000)(words), 1000);
  EXPECT_EQ(words.Remaining(), 0u);
}

TEST(GivenSource, GeneratorsOfOnesOwnDrawFromAStreamBegunWithIt) {
  CTwice const twice;
  IRandomGenerator<double> const& generator = twice;
  CRandomSource source(1), same(1);
  double const value = generator(source);
  EXPECT_EQ(value, generator(same));
  EXPECT_TRUE(value >= 0 && value < 2);
  EXPECT_NE(value, generator(source));
  CHalfTurns turns;
  IRotationGenerator& rotations = turns;
  CRandom::Obj().Seed(1);
  std::vector<CTriple<double>> directions(100);
  rotations.Fill(directions, source);
  for (auto const& d : directions) EXPECT_EQ(d.z, 1);
  EXPECT_EQ(CRandom::Obj().Rand64(), CRandomSource(1)());
}

TEST(GivenSource, OneObjectServesTwoSourcesInTurns) {
  CRandomGamma const gamma(2.5, 1);
  CRandomSource first(1), second(2), firstAlone(1), secondAlone(2);
  for (int i = 0; i < c_draws; ++i) {
    EXPECT_EQ(gamma(first), gamma(firstAlone));
    EXPECT_EQ(gamma(second), gamma(secondAlone));
  }
}
