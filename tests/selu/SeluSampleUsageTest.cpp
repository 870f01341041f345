// Samples from the command line: wrong parameters and wrong usage are refused by name, and whatever
// goes wrong leaves no file behind.
#include "support/SampleRun.h"

#include <filesystem>
#include <string>
#include <vector>

namespace {

using test::Arguments;

class SeluSampleUsage : public test::CSampleTest {};

TEST_F(SeluSampleUsage, WrongParametersAreRefusedByNameAndValue) {
  struct StCase {
    Arguments distribution;
    std::string text;
  };
  for (auto const& [distribution, text] :
       {StCase{{"normal", "sigma=0"}, "sigma to be a finite number of at least"},
        StCase{{"normal", "sigma=-1"}, "\"-1\""},
        StCase{{"normal", "mean=inf"}, "\"inf\""},
        StCase{{"normal", "mean=nan"}, "\"nan\""},
        StCase{{"normal", "mean="}, "\"\""},
        StCase{{"normal", "mean=1x"}, "\"1x\""},
        StCase{{"normal", "mu=1"}, "no parameter \"mu\""},
        StCase{{"normal", "mean=1", "mean=2"}, "mean twice"},
        StCase{{"normal", "3"}, "name=value, not \"3\""},
        StCase{{"normal,mean=1,", "sigma=1"}, "name=value"},
        StCase{{"uniform", "start=3", "end=2"}, "at least start = 3, not 2"},
        StCase{{"uniform", "start=-1e308", "end=1e308"}, "finite"},
        StCase{{"lognormal", "sigma=nan"}, "\"nan\""},
        StCase{{"lognormal", "expectation=3"}, "deviation"},
        StCase{{"lognormal", "expectation=-3", "deviation=1"}, "\"-3\""},
        StCase{{"exponential", "lambda=0"}, "lambda"},
        StCase{{"gamma"}, "needs the parameter shape"},
        StCase{{"gamma", "shape=0"}, "\"0\""},
        StCase{{"gamma", "shape=1", "rate=-2"}, "\"-2\""},
        StCase{{"poisson", "lambda=-2"}, "\"-2\""},
        StCase{{"poisson", "lambda=1e300"}, "\"1e300\""},
        StCase{{"rayleigh", "sigma=0"}, "\"0\""},
        StCase{{"discrete"}, "values with weights"},
        StCase{{"discrete", "2=0", "3=0"}, "whose sum is positive and finite, not 0"},
        StCase{{"exact-discrete", "2=1e308", "3=1e308"}, "positive and finite, not inf"},
        StCase{{"exact-poisson", "lambda=1e16"}, "\"1e16\""},
        StCase{{"exact-chordlength"}, "no distribution \"exact-chordlength\""},
        StCase{{"exact-fixed"}, "no distribution \"exact-fixed\""},
        StCase{{"exact-uniform", "start=2", "end=2"}, "above start = 2"},
        StCase{{"discrete", "0.5=0.5", "0.50=0.5"}, "0.5 twice"},
        StCase{{"discrete", "0.25=1.5", "0.75=-0.5"}, "not -0.5"},
        StCase{{"chordlength", "x=1"}, "\"x\""},
        StCase{{"pressed"}, "factor"},
        StCase{{"girdle", "beta=0"}, "beta"},
        StCase{{"girdle", "beta=1e200"}, "\"1e200\""},
        StCase{{"vmf", "kappa=0"}, "kappa"},
        StCase{{"vmf", "kappa=2", "theta=181deg"}, "\"181deg\""},
        StCase{{"vmf", "kappa=2", "phi=-1"}, "\"-1\""},
        StCase{{"watson", "kappa=inf"}, "\"inf\""},
        StCase{{"fixed", "phi=nan"}, "\"nan\""},
        StCase{{"mixture"}, "file"},
        StCase{{"flat"}, "no distribution \"flat\""}})
    ExpectFailure(Command(distribution, {"-n", "10", "-o", "a.csv", "--picture", "a.png"}), text,
                  2);
  ExpectFailure({"sample", "mixture", "file=none.json", "-n", "10", "-o", "a.csv"}, "none.json");
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluSampleUsage, WrongMixturesAreRefused) {
  struct StCase {
    std::string json, text;
  };
  for (auto const& [json, text] :
       {StCase{"{", "no JSON object"}, StCase{"[]", "no JSON object"},
        StCase{R"({"components": []})", "no JSON object"},
        StCase{R"({"components": [1]})", "weight"},
        StCase{R"({"components": [{"weight": 1}]})", "lacks its \"distribution\""},
        StCase{R"({"components": [{"distribution": "isotropic"}]})", "weight"},
        StCase{R"({"components": [{"weight": -1, "distribution": "isotropic"}]})", "weight"},
        StCase{R"({"components": [{"weight": 0.5, "distribution": "isotropic"}]})",
               "0.5, not to 1"},
        StCase{R"({"components": [{"weight": 1, "distribution": "vmf"}]})", "kappa"},
        StCase{R"({"components": [{"weight": 1, "distribution": "vmf", "kappa": [1]}]})", "kappa"},
        StCase{R"({"components": [{"weight": 1, "distribution": "normal"}]})", "\"normal\""},
        StCase{R"({"components": [{"weight": 1, "distribution": "constant"}]})", "fixed"},
        StCase{R"({"components": [{"weight": 1, "distribution": "mixture", "file": "m.json"}]})",
               "deeply"}}) {
    Write("m.json", json);
    ExpectFailure({"sample", "mixture", "file=m.json", "-n", "5"}, text);
  }
}

TEST_F(SeluSampleUsage, WeightsThatAddUpButForRoundingAreTaken) {
  Write("m.json", R"({"components": [{"weight": 0.1, "distribution": "isotropic"},
    {"weight": 0.2, "distribution": "isotropic"}, {"weight": 0.3, "distribution": "isotropic"},
    {"weight": 0.3, "distribution": "isotropic"}, {"weight": 0.1, "distribution": "isotropic"}]})");
  EXPECT_EQ(test::Lines(Output({"sample", "mixture", "file=m.json", "-n", "50"})).size(), 51u);
}

TEST_F(SeluSampleUsage, WrongUsageIsRefused) {
  for (std::string const count : {"0", "-1", "1.5", "ten", "99999999999999999999"})
    ExpectFailure({"sample", "normal", "-n", count}, "\"" + count + "\"", 2);
  ExpectFailure({"sample", "normal", "-n", "1", "--seed", "-1"}, "--seed", 2);
  ExpectFailure({"sample", "normal", "-n", "1", "--format", "xml"}, "--format", 2);
  ExpectFailure({"sample", "normal", "-n", "1", "--as", "matrix"}, "--as", 2);
  ExpectFailure({"sample", "normal"}, "--count", 2);
  ExpectFailure({"sample", "-n", "3"}, "DISTRIBUTION", 2);
  ExpectFailure({"sample", "normal", "-n", "1", "--picture", "a.bmp"}, ".png or .svg");
  ExpectFailure({"sample", "normal", "-n", "1", "-o", "none/a.csv"}, "there is no folder");
  EXPECT_TRUE(Files().empty());
}

TEST_F(SeluSampleUsage, CtrlCLeavesNothingBehind) {
  auto const result =
      Selu({"sample", "normal", "-n", "1000000000", "-o", "a.csv", "--picture", "a.png"},
           {.interruptAfter = 0.4});
  EXPECT_EQ(result.code, 130);
  EXPECT_EQ(result.error, "selu: interrupted\n");
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluSampleUsage, AFullDiskLeavesNothingBehind) {
  ExpectFailure({"sample", "normal", "-n", "1000000", "-o", "a.csv"}, "cannot write \"a.csv\"", 1,
                {.fileLimit = 3'000'000});
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluSampleUsage, SamplesAndPictureAppearTogetherOrNeither) {
  std::filesystem::create_symlink("/dev/full", Folder() / "full.png");
  ExpectFailure({"sample", "normal", "-n", "10", "-o", "a.csv", "--picture", "full.png"},
                "cannot write \"full.png\"");
  EXPECT_EQ(Files(), std::vector<std::string>{"full.png"});
}

TEST_F(SeluSampleUsage, ATerminalSeesABar) {
  if (!test::HasTerminals()) GTEST_SKIP() << "no terminal is to be had here";
  auto const result =
      Selu({"sample", "normal", "-n", "1000000", "-o", "a.csv"}, {.terminal = true});
  EXPECT_EQ(result.code, 0);
  EXPECT_NE(result.error.find("drawing samples ["), std::string::npos);
}

TEST_F(SeluSampleUsage, ThePictureDoesNotReplaceTheSamples) {
  for (std::string const picture : {"a.png", "./a.png"}) {
    ExpectFailure({"sample", "normal", "-n", "1", "-o", "a.png", "--picture", picture},
                  "--output and --picture name the same file, \"" + picture + "\"", 2);
    EXPECT_TRUE(Files().empty());
  }
  Write("a.png", "old");
  ExpectFailure({"sample", "normal", "-n", "1", "-o", "a.png", "--picture", "./a.png"},
                "name the same file", 2);
  EXPECT_EQ(Read("a.png"), "old");
}

TEST_F(SeluSampleUsage, TheDescriptionOfAMixtureIsNotOverwritten) {
  std::string const json = R"({"components": [{"weight": 1, "distribution": "isotropic"}]})";
  Write("m.json", json);
  ExpectFailure({"sample", "mixture", "file=m.json", "-n", "1", "-o", "./m.json"},
                "cannot write \"./m.json\": it is the input \"m.json\"");
  EXPECT_EQ(Read("m.json"), json);
}

} // namespace
