// Mixtures of rotation generators: the choice, its errors, and who owns the generators.
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <pxlib2core/ReplaySource.h>

#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"
#include "support/Replay.h"
#include "support/Rotations.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>

using namespace ORVA;
using test::c_first;
using test::c_second;
using test::TwoFixed;

namespace {

constexpr int c_draws = 500;
constexpr uint64 c_half = uint64{1} << 63;

// Counts how many of its kind live.
class CCounted : public IRotationGenerator {
public:
  explicit CCounted(int& alive) : m_Alive(&alive) { ++*m_Alive; }
  CCounted(CCounted const& other)
      : IRandomGenerator<CEulerRotation>(other), IRotationGenerator(other), m_Alive(other.m_Alive) {
    ++*m_Alive;
  }
  CCounted& operator=(CCounted const&) = delete;
  ~CCounted() override { --*m_Alive; }
  CEulerRotation operator()() override { return CEulerRotation(0.1 * ++m_Draws, 0, 0); }
  bool IsValid() const override { return true; }
  IRotationGenerator* Clone() const override { return new CCounted(*this); }

private:
  int* m_Alive;
  int m_Draws = 0;
};

void ExpectEmptySlot(CMixtureRotation& mixture, uint64 word, int n) {
  CReplaySource words({word});
  test::ExpectError([&] { (void)mixture(words); },
                    "Non-existing orientation generator. Be sure to call CMixtureRotation::Add n=" +
                        std::to_string(n) + " times!",
                    "ORVA::CMixtureRotation::operator ()", "src/Utils/Random/MixtureRotation", 64);
}

} // namespace

TEST(MixtureRotation, WeightsChooseTheGenerator) {
  auto mixture = TwoFixed(0.25, 0.75);
  EXPECT_TRUE(mixture.IsValid());
  test::CReplay words(test::Seed(), c_draws + 5);
  for (int i = 0; i < c_draws; ++i)
    EXPECT_TRUE(mixture() == (words.U() <= 0.25 ? c_first : c_second));
  words.ExpectInStep();
  CReplaySource onTheBorder({uint64{1} << 62});
  EXPECT_TRUE(mixture(onTheBorder) == c_first);
}

TEST(MixtureRotation, WeightsMustGiveExactlyOne) {
  EXPECT_TRUE(TwoFixed(0.5, 0.5).IsValid());
  EXPECT_FALSE(TwoFixed(0.5, 0.5 + 1e-15).IsValid());
  EXPECT_FALSE(CMixtureRotation(0).IsValid());
  EXPECT_FALSE(CMixtureRotation(2).IsValid());
  auto const three = [](double a, double b, double c) {
    CMixtureRotation mixture(3);
    for (double const weight : {a, b, c}) mixture.Add(new CIsotropicRotation, weight);
    return mixture.IsValid();
  };
  EXPECT_EQ(three(0.1, 0.2, 0.7), 0.1 + 0.2 + 0.7 == 1.0);
  EXPECT_NE(three(0.1, 0.2, 0.7), three(0.7, 0.2, 0.1)); // rounding depends on the order
}

TEST(MixtureRotation, MissingGeneratorIsAnError) {
  CMixtureRotation mixture(2);
  mixture.Add(new CFixRotation(c_first), 0.25);
  EXPECT_FALSE(mixture.IsValid());
  CReplaySource low({uint64{1} << 61});
  EXPECT_TRUE(mixture(low) == c_first);
  ExpectEmptySlot(mixture, c_half, 2);
  mixture.Add(static_cast<IRotationGenerator*>(nullptr), 0.75);
  ExpectEmptySlot(mixture, c_half, 2);
}

TEST(MixtureRotation, ScanPastAllGeneratorsIsAnError) {
  auto mixture = TwoFixed(0.125, 0.125);
  CReplaySource words({c_half});
  test::ExpectError([&] { (void)mixture(words); },
                    "The weights add up to 0.25 and leave no generator for 0.5.",
                    "ORVA::CMixtureRotation::operator ()", "src/Utils/Random/MixtureRotation");
  CMixtureRotation none(0);
  EXPECT_THROW((void)none(), CException);
}

TEST(MixtureRotation, OneGeneratorTooManyStaysTheCallers) {
  int alive = 0;
  {
    CMixtureRotation mixture(1);
    mixture.Add(new CCounted(alive), 1);
    auto extra = std::make_unique<CCounted>(alive);
    auto const add = [&] { mixture.Add(extra.get(), 1); };
    test::ExpectError<CExBadParam>(add, "All n=1 generators have been added.",
                                   "ORVA::CMixtureRotation::Add",
                                   "src/Utils/Random/MixtureRotation");
    EXPECT_EQ(alive, 2);
    std::unique_ptr<IRotationGenerator> owned = std::move(extra);
    EXPECT_THROW(mixture.Add(std::move(owned), 1), CExBadParam);
    EXPECT_NE(owned, nullptr); // NOLINT(bugprone-use-after-move)
  }
  EXPECT_EQ(alive, 0);
}

TEST(MixtureRotation, SlotsThatAreNeverFilledCostNothing) {
  CMixtureRotation mixture(std::numeric_limits<std::size_t>::max());
  mixture.Add(new CFixRotation(c_first), 1);
  EXPECT_TRUE(mixture() == c_first);
}

TEST(MixtureRotation, OwnsItsGeneratorsOnce) {
  int alive = 0;
  {
    CMixtureRotation mixture(3);
    mixture.Add(new CCounted(alive), 0.5);
    mixture.Add(static_cast<IRotationGenerator*>(nullptr), 0);
    mixture.Add(new CCounted(alive), 0.5);
    EXPECT_EQ(alive, 2);
    {
      CMixtureRotation copy(mixture);
      EXPECT_EQ(alive, 4);
      CMixtureRotation assigned(1);
      assigned.Add(new CCounted(alive), 1);
      assigned = mixture;
      EXPECT_EQ(alive, 6);
      CMixtureRotation const& itself = assigned;
      assigned = itself;
      EXPECT_EQ(alive, 6);
      CMixtureRotation const moved(std::move(copy));
      std::unique_ptr<IRotationGenerator> const clone(moved.Clone());
      EXPECT_EQ(alive, 8);
    }
    EXPECT_EQ(alive, 2);
    CMixtureRotation nested(1);
    nested.Add(mixture.Clone(), 1);
    EXPECT_EQ(alive, 4);
  }
  EXPECT_EQ(alive, 0);
}

TEST(MixtureRotation, CopiesDrawOnTheirOwn) {
  int alive = 0;
  CMixtureRotation mixture(1);
  mixture.Add(new CCounted(alive), 1);
  CMixtureRotation copy(mixture);
  (void)mixture();
  (void)mixture();
  EXPECT_TRUE(copy() == CEulerRotation(0.1, 0, 0));
}

TEST(MixtureRotation, CloneHasTheGeneratorsThatThereAre) {
  CMixtureRotation mixture(3);
  mixture.Add(static_cast<IRotationGenerator*>(nullptr), 0.5);
  mixture.Add(new CFixRotation(c_second), 0.5);
  std::unique_ptr<IRotationGenerator> const clone(mixture.Clone());
  CReplaySource low({uint64{1} << 62});
  EXPECT_TRUE((*clone)(low) == c_second);
  ExpectEmptySlot(mixture, uint64{1} << 62, 3);
}
