// selu texture with levels made on purpose: against published values and the library's own.
#include "support/Images.h"
#include "support/SeluRun.h"

#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>

#include <images/ImageFile.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <map>
#include <utility>

namespace {

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

// The digital phantom of IBSI and its region, slice by slice.
std::vector<std::uint8_t> const c_phantom = {
    1, 4, 4, 1, 1, 1, 4, 6, 1, 1, 4, 1, 6, 4, 1, 4, 4, 6, 4, 1, //
    1, 4, 4, 1, 1, 1, 1, 6, 1, 1, 1, 1, 3, 1, 1, 4, 4, 6, 1, 1, //
    1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 9, 1, 1, 1, 1, 6, 1, 1, //
    1, 4, 4, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 6, 1, 1};
std::vector<std::uint8_t> const c_phantomMask = {
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 0, 1, 1, 1, 1, 1, 1, 1, //
    1, 1, 1, 0, 0, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};

class SeluLevelTexture : public test::CSeluTest {
protected:
  void WritePhantom() const {
    WriteNrrd("phantom.nrrd", "uint8", {5, 4, 4}, c_phantom);
    WriteNrrd("mask.nrrd", "uint8", {5, 4, 4}, c_phantomMask);
  }
  [[nodiscard]] Json Texture(std::string const& image, Arguments const& options) const {
    Arguments arguments = {"texture", image, "--format", "json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return Json::parse(Output(arguments));
  }
};

TEST_F(SeluLevelTexture, PhantomHasThePublishedFeaturesInAllAggregations) {
  WritePhantom();
  std::map<std::string, Json> found;
  for (auto const way : ORVA::c_aggregations) {
    std::string const name(ORVA::AggregationName(way));
    Json const json =
        Texture("phantom.nrrd", {"--mask", "mask.nrrd", "--bin-width", "1", "--symmetric",
                                 "--features", "ibsi", "--aggregate", name});
    EXPECT_EQ(json["levels"], 6);
    EXPECT_EQ(json["edges"], (Json{1.0, 7.0}));
    EXPECT_EQ(json["aggregation"], name);
    EXPECT_EQ(json["features"].size(), 25u);
    found[name] = json["features"];
  }
  std::ifstream file(SELU_SOURCE_DIR "/tests/texture/data/ibsi_phantom_features.csv");
  std::string line;
  int values = 0;
  for (std::getline(file, line); std::getline(file, line); ++values) {
    auto const fields = test::Fields(line);
    double const value = found.at(fields[0]).at(fields[1]).get<double>();
    double const published = std::stod(fields[2]), computed = std::stod(fields[3]);
    double const unit = std::pow(10, std::floor(std::log10(std::abs(published))) - 2);
    EXPECT_NEAR(value, published, unit / 2 * (1 + 1e-9)) << line;
    EXPECT_NEAR(value, computed, 1e-12 * std::max(1.0, std::abs(computed))) << line;
  }
  EXPECT_EQ(values, 150);
}

TEST_F(SeluLevelTexture, DirectionsAreThoseOfTheCounterAtEachDistance) {
  WriteNrrd("phantom.nrrd", "uint8", {5, 4, 4}, c_phantom);
  ORVA::CImageView const image(ORVA::IMAGE_GREY_8, ORVA::CSize(5, 4, 4),
                               static_cast<void const*>(c_phantom.data()));
  auto const levels = ORVA::CQuantizer::BinCount(4).Quantize(image);
  Json const json = Texture("phantom.nrrd", {"--bin-count", "4", "--features", "haralick",
                                             "--direction", "1,-1,1", "--distance", "1,3"});
  ASSERT_EQ(json["directions"].size(), 2u);
  for (std::size_t k = 0; k < 2; ++k) {
    ORVA::int64 const d = k == 0 ? 1 : 3;
    ORVA::CPairCounter pairs(4);
    pairs.Count(levels, {d, -d, d});
    ORVA::CTextureFeatures features(ORVA::c_haralickFeatures);
    auto const values = features.Of(pairs);
    Json const& entry = json["directions"][k];
    EXPECT_EQ(entry["direction"], (Json{d, -d, d}));
    EXPECT_EQ(entry["pairs"], pairs.Pairs());
    for (std::size_t f = 0; f < values.size(); ++f)
      EXPECT_EQ(entry["features"][std::string(ORVA::FeatureName(features.Features()[f]))],
                values[f]);
  }
}

TEST_F(SeluLevelTexture, AnyNumberOfThreadsGivesTheSame) {
  ASSERT_EQ(Selu({"synth", "blobs", "--size", "90,80,100", "--seed", "3", "-o", "a.nrrd"}).code, 0);
  for (Arguments const& options :
       {Arguments{"--direction", "1,2,0", "--direction", "0,0,1"},
        Arguments{"--levels", "16", "--direction", "1,-1,2", "--features", "contrast"},
        Arguments{"--levels", "16", "--aggregate", "2D_avg"}}) {
    auto with = [&](std::string const& threads) {
      Arguments all = options;
      all.insert(all.end(), {"--threads", threads});
      return Texture("a.nrrd", all);
    };
    Json const one = with("1");
    EXPECT_EQ(with("2"), one);
    EXPECT_EQ(with("7"), one);
  }
}

TEST_F(SeluLevelTexture, MaskOfALabelTakesItsVoxelsAlone) {
  WriteNrrd<std::int16_t>("i.nrrd", "int16", {6, 1}, {-5, 5, 9, 9, 9, 7});
  WriteNrrd<std::uint8_t>("m.nrrd", "uint8", {6, 1}, {2, 2, 1, 1, 1, 0});
  auto const pairs = [&](Arguments options) {
    options.insert(options.end(), {"--mask", "m.nrrd", "--bin-width", "1", "--direction", "1,0"});
    return Texture("i.nrrd", options)["directions"][0]["pairs"].get<int>();
  };
  EXPECT_EQ(pairs({}), 4);
  EXPECT_EQ(pairs({"--label", "1"}), 2);
  EXPECT_EQ(pairs({"--label", "2"}), 1);
  EXPECT_EQ(pairs({"--label", "2", "--symmetric"}), 2);
  ExpectFailure({"texture", "i.nrrd", "--mask", "m.nrrd", "--label", "9", "--bin-width", "1",
                 "--direction", "1,0"},
                "no voxel to measure");
}

TEST_F(SeluLevelTexture, MasksMayHaveWholeNumbersOfAnyType) {
  WriteNrrd<std::int16_t>("i.nrrd", "int16", {6, 1}, {-5, 5, 9, 9, 9, 7});
  WriteNrrd<float>("float.nrrd", "float", {6, 1}, {2, 2, 1, 1, 1, 0});
  WriteNrrd<double>("double.nrrd", "double", {6, 1}, {-2, -2, 1, 1, 1, -0.0});
  WriteNrrd<std::int64_t>("long.nrrd", "int64", {6, 1}, {2, 2, 1, 1, 1, 0});
  auto const pairs = [&](std::string const& mask, std::string const& label) {
    return Texture("i.nrrd", {"--mask", mask, "--label", label, "--bin-width", "1", "--direction",
                              "1,0"})["directions"][0]["pairs"]
        .get<int>();
  };
  for (std::string const mask : {"float.nrrd", "double.nrrd", "long.nrrd"})
    EXPECT_EQ(pairs(mask, "1"), 2) << mask;
  EXPECT_EQ(pairs("double.nrrd", "-2"), 1);
  WriteNrrd<float>("half.nrrd", "float", {6, 1}, {2, 2, 0.5F, 1, 1, 0});
  WriteNrrd<float>("nan.nrrd", "float", {6, 1}, {2, 2, NAN, 1, 1, 0});
  WriteNrrd<std::uint64_t>("large.nrrd", "uint64", {6, 1}, {2, 2, 1ULL << 31U, 1, 1, 0});
  for (auto const& [mask, value] : std::map<std::string, std::string>{
           {"half.nrrd", "0.5"}, {"nan.nrrd", "nan"}, {"large.nrrd", "2147483648"}})
    ExpectFailure({"texture", "i.nrrd", "--mask", mask, "--bin-width", "1", "--direction", "1,0"},
                  "has the value " + value + ", but a mask has whole numbers");
}

TEST_F(SeluLevelTexture, IntegersOf64BitsAreMeasuredWhereTheyAreExact) {
  WriteNrrd<std::int32_t>("i.nrrd", "int32", {3, 2}, {-900000, 5, 9, 70000, -3, 12});
  WriteNrrd<std::int64_t>("long.nrrd", "int64", {3, 2}, {-900000, 5, 9, 70000, -3, 12});
  auto const features = [&](std::string const& image) {
    return Texture(image, {"--bin-count", "7", "--direction", "1,0"})["directions"];
  };
  EXPECT_EQ(features("long.nrrd"), features("i.nrrd"));
  WriteNrrd<std::uint64_t>("large.nrrd", "uint64", {2, 1}, {1, (1ULL << 53U) + 1});
  ExpectFailure({"texture", "large.nrrd", "--bin-count", "7", "--direction", "1,0"},
                "has the value 9007199254740993");
}

TEST_F(SeluLevelTexture, BinsBeginWhereTheyAreToldTo) {
  WriteNrrd<std::int16_t>("i.nrrd", "int16", {4, 1}, {-13, 5, 9, 22});
  auto const edges = [&](Arguments options) {
    options.insert(options.end(), {"--bin-width", "10", "--direction", "1,0"});
    Json const json = Texture("i.nrrd", options);
    return Json{json["edges"][0], json["edges"][1], json["levels"]};
  };
  EXPECT_EQ(edges({}), (Json{-13.0, 27.0, 4}));
  EXPECT_EQ(edges({"--bin-start", "minimum"}), (Json{-13.0, 27.0, 4}));
  EXPECT_EQ(edges({"--bin-start", "multiple"}), (Json{-20.0, 30.0, 5}));
  EXPECT_EQ(edges({"--bin-start", "-15.5"}), (Json{-15.5, 24.5, 4}));
}

// The matrices that an aggregation adds up are the whole story of its features.
TEST_F(SeluLevelTexture, MatricesOfAnAggregationAreThoseThatItTakes) {
  WritePhantom();
  auto const image = [&](std::string const& way) {
    Arguments const arguments = {
        "texture",     "phantom.nrrd", "--mask",   "mask.nrrd", "--bin-width", "1",
        "--symmetric", "--aggregate",  way,        "--matrix",  "m.nrrd",      "--picture",
        "p.svg",       "--features",   "contrast", "--format",  "json"};
    double const contrast = Json::parse(Output(arguments))["features"]["contrast"].get<double>();
    EXPECT_NE(Read("p.svg").find("<svg"), std::string::npos);
    return std::pair(selu::ReadImage(Path("m.nrrd")).ToGray(), contrast);
  };
  for (std::string const way : {"3D_comb", "2_5D_comb", "3D_avg", "2_5D_avg", "2D_avg"}) {
    SCOPED_TRACE(way);
    auto const [matrices, contrast] = image(way);
    bool const isCombined = way.ends_with("comb"), isFlat = way.starts_with("2");
    EXPECT_EQ(matrices.Size(), ORVA::CSize(isCombined ? 1 : isFlat ? 4 : 13, 6, 6));
    auto const counts = test::Pixels<std::uint32_t>(matrices);
    auto const n = static_cast<std::size_t>(matrices.Size().x);
    double mean = 0;
    for (std::size_t s = 0; s < n; ++s) {
      double sum = 0, pairs = 0;
      for (std::size_t j = 0; j < 6; ++j)
        for (std::size_t i = 0; i < 6; ++i) {
          double const count = counts[(j * 6 + i) * n + s];
          double const d = static_cast<double>(i) - static_cast<double>(j);
          sum += d * d * count;
          pairs += count;
        }
      mean += sum / pairs / static_cast<double>(n);
    }
    if (way == "2D_avg") continue; // its matrices do not tell the slices apart
    EXPECT_NEAR(mean, contrast, 1e-12);
  }
}

TEST_F(SeluLevelTexture, MatrixAndPictureShowTheLevels) {
  WritePhantom();
  (void)Output({"texture", "phantom.nrrd", "--bin-width", "1", "--matrix", "m.nrrd", "--picture",
                "p.svg", "--picture", "p.png"});
  EXPECT_NE(Read("m.nrrd").find("sizes: 13 9 9"), std::string::npos);
  EXPECT_NE(Read("p.svg").find("<svg"), std::string::npos);
  ExpectFailure({"texture", "phantom.nrrd", "--levels", "257", "--picture", "q.svg"},
                "--picture shows up to 256 levels, not 257");
  EXPECT_FALSE(std::filesystem::exists(Path("q.svg")));
}

TEST_F(SeluLevelTexture, WordsThatDoNotFitAreNamed) {
  WritePhantom();
  struct StCase {
    Arguments options;
    std::string text;
    int code;
  };
  std::vector<StCase> const cases = {
      {{"--levels", "0"}, "\"0\"", 2},
      {{"--levels", "65536"}, "\"65536\"", 2},
      {{"--bin-width", "-1"}, "\"-1\"", 2},
      {{"--bin-width", "nan"}, "\"nan\"", 2},
      {{"--bin-count", "x"}, "\"x\"", 2},
      {{"--levels", "8", "--bin-width", "1"}, "give one of", 2},
      {{"--range", "0,9", "--bin-width", "1"}, "--range goes with --levels", 2},
      {{"--label", "1"}, "needs --mask", 2},
      {{"--features", "contrst"}, "contrst", 2},
      {{"--features", "contrast,contrast"}, "twice", 2},
      {{"--features", "selu", "--symmetric"}, "--features selu", 2},
      {{"--aggregate", "4D"}, "4D", 2},
      {{"--bin-start", "0"}, "need --bin-width", 2},
      {{"--bin-width", "1", "--bin-start", "middle"}, "\"middle\"", 2},
      {{"--bin-width", "1", "--bin-start", "inf"}, "\"inf\"", 2},
      {{"--distance", "0"}, "\"0\"", 2},
      {{"--threads", "0"}, "\"0\"", 2},
      {{"--mask", "none.nrrd"}, "none.nrrd", 1},
      {{"--distance", "9"}, "as far apart", 1},
      {{"--direction", "2,0,0", "--distance", "4"}, "8,0,0", 1},
      {{"--direction", "0,0,1", "--aggregate", "2D_avg"}, "leaves the slice", 1}};
  for (auto const& one : cases) {
    Arguments arguments = {"texture", "phantom.nrrd"};
    arguments.insert(arguments.end(), one.options.begin(), one.options.end());
    ExpectFailure(arguments, one.text, one.code);
  }
  WriteNrrd<float>("f.nrrd", "float", {2, 1}, {0.5f, 1});
  ExpectFailure({"texture", "f.nrrd", "--symmetric", "--direction", "1,0"},
                "--bin-width or --bin-count");
  ExpectFailure({"texture", "phantom.nrrd", "--mask", "f.nrrd"}, "different sizes");
}

} // namespace
