#include <SeluBase/Algorithm.h>
#include <pxlib2core/Exception.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr char c_module[] = "framework/SeluBase/Algorithm";

// Counts to `steps`, reporting each step.
class CCounting : public CAlgorithm {
public:
  explicit CCounting(IObject const* parent = nullptr) : CAlgorithm("counting", parent) {}
  int64 Count(int64 steps, int64 failAt = -1) {
    CProgress progress(*this, steps, "counting");
    for (int64 i = 0; i < steps; ++i) {
      if (i == failAt) throw std::runtime_error("failed");
      done = i + 1;
      progress.Advance();
    }
    progress.Finish();
    return done;
  }
  int64 done = 0;
};

class CRecorder : public IProgressObserver {
public:
  void Start(int64 steps, char const* text) override {
    events.push_back("start " + std::to_string(steps) + " " + text);
  }
  void Advance() override { events.push_back("advance"); }
  void Finish(bool complete) noexcept override {
    events.push_back(complete ? "finish" : "broken off");
  }
  bool IsCancelled() override { return ++asked == cancelAt; }

  std::vector<std::string> events;
  int asked = 0;
  int cancelAt = -1;
};

} // namespace

TEST(Algorithm, HasNameInstanceAndParent) {
  CAlgorithm const parent("parent", nullptr);
  CAlgorithm algorithm("texture", &parent);
  EXPECT_EQ(algorithm.Name(), "texture");
  EXPECT_EQ(algorithm.Instance(), "");
  EXPECT_EQ(algorithm.Parent(), &parent);
  EXPECT_EQ(parent.Parent(), nullptr);
  algorithm.SetInstance("liver");
  EXPECT_EQ(algorithm.Instance(), "liver");
}

TEST(Algorithm, NullNamesAreRefused) {
  char const* const null = nullptr;
  test::ExpectError<CExBadParam>([&] { CAlgorithm algorithm(null, nullptr); }, "name is null",
                                 "ORVA::CAlgorithm::CAlgorithm", c_module);
  CAlgorithm algorithm("texture", nullptr);
  algorithm.SetInstance("liver");
  test::ExpectError<CExBadParam>([&] { algorithm.SetInstance(null); }, "name is null",
                                 "ORVA::CAlgorithm::SetInstance", c_module);
  EXPECT_EQ(algorithm.Instance(), "liver");
}

TEST(Algorithm, SetupGivesBackWhatInitTook) {
  CValueMap given;
  given.SetEntry("levels", CValueLong(16));
  given.SetEntry("a/b", CValueDouble(0.5));
  CAlgorithm algorithm("texture", nullptr);
  algorithm.SetInstance("liver");
  algorithm.Init(&given);
  given.Clear(); // Init kept a copy
  CValueMap setup;
  setup.SetEntry("other", CValueLong(1));
  setup.SetEntry("levels", CValueLong(1));
  CAlgorithm const& constAlgorithm = algorithm;
  constAlgorithm.GetPluginSetup(setup);
  EXPECT_EQ(setup.Size(), 5u);
  EXPECT_EQ(setup.Entry("name").String(), "texture");
  EXPECT_EQ(setup.Entry("instance").String(), "liver");
  EXPECT_EQ(setup.Entry("levels").Long(), 16);
  EXPECT_EQ(setup.Entry("a/b").Double(), 0.5);
  EXPECT_EQ(setup.Entry("other").Long(), 1);
}

TEST(Algorithm, InitWithoutASetupGoesBackToTheDefaults) {
  CValueMap given;
  given.SetEntry("levels", CValueLong(16));
  CAlgorithm algorithm("texture", nullptr);
  algorithm.Init(&given);
  algorithm.Init(nullptr);
  CValueMap setup;
  algorithm.GetPluginSetup(setup);
  EXPECT_FALSE(setup.HasEntry("levels"));
  EXPECT_EQ(setup.Size(), 2u);
}

TEST(Algorithm, IsDestroyedThroughItsBases) {
  std::unique_ptr<IObject> object = std::make_unique<CCounting>();
  object->SetInstance("a");
  object.reset();
  std::unique_ptr<IPluginObject> const plugin = std::make_unique<CCounting>();
  plugin->Init(nullptr);
}

TEST(Algorithm, CopiesAreApart) {
  CAlgorithm algorithm("texture", nullptr);
  CAlgorithm copy = algorithm;
  copy.SetInstance("liver");
  EXPECT_EQ(algorithm.Instance(), "");
  algorithm = std::move(copy);
  EXPECT_EQ(algorithm.Instance(), "liver");
}

TEST(Progress, NothingHappensWithoutAnObserver) { EXPECT_EQ(CCounting().Count(3), 3); }

TEST(Progress, ObserverSeesStartStepsAndEnd) {
  CRecorder recorder;
  CCounting counting;
  counting.SetProgressObserver(&recorder);
  counting.Count(2);
  EXPECT_EQ(recorder.events,
            (std::vector<std::string>{"start 2 counting", "advance", "advance", "finish"}));
  EXPECT_EQ(recorder.asked, 2);
}

TEST(Progress, WorkOfNoStepsStartsAndFinishes) {
  CRecorder recorder;
  CCounting counting;
  counting.SetProgressObserver(&recorder);
  counting.Count(0);
  EXPECT_EQ(recorder.events, (std::vector<std::string>{"start 0 counting", "finish"}));
}

TEST(Progress, CancellingStopsAtTheNextStep) {
  CRecorder recorder;
  recorder.cancelAt = 2;
  CCounting counting;
  counting.SetProgressObserver(&recorder);
  test::ExpectError([&] { counting.Count(5); }, "operation cancelled",
                    "ORVA::CAlgorithm::CProgress::Advance", c_module);
  EXPECT_EQ(counting.done, 2);
  EXPECT_EQ(recorder.events,
            (std::vector<std::string>{"start 5 counting", "advance", "advance", "broken off"}));
}

TEST(Progress, ErrorOfTheOperationEndsItOnce) {
  CRecorder recorder;
  CCounting counting;
  counting.SetProgressObserver(&recorder);
  EXPECT_THROW(counting.Count(5, 1), std::runtime_error);
  EXPECT_EQ(recorder.events,
            (std::vector<std::string>{"start 5 counting", "advance", "broken off"}));
}

TEST(Progress, ErrorOfTheObserverStopsTheOperation) {
  struct CThrowing : CRecorder {
    void Advance() override { throw std::runtime_error("observer"); }
  } observer;
  CCounting counting;
  counting.SetProgressObserver(&observer);
  EXPECT_THROW(counting.Count(5), std::runtime_error);
  EXPECT_EQ(observer.events, (std::vector<std::string>{"start 5 counting", "broken off"}));
}

TEST(Progress, ObserverMayLeaveEverythingOut) {
  struct CSilent : IProgressObserver {
  } silent;
  CCounting counting;
  counting.SetProgressObserver(&silent);
  EXPECT_EQ(counting.Count(3), 3);
}

TEST(Progress, ObserverCanBeTakenAwayAndIsSharedByCopies) {
  CRecorder recorder;
  CCounting counting;
  counting.SetProgressObserver(&recorder);
  CCounting copy = counting;
  copy.Count(1);
  EXPECT_EQ(recorder.events.size(), 3u);
  counting.SetProgressObserver(nullptr);
  counting.Count(1);
  EXPECT_EQ(recorder.events.size(), 3u);
}
