// selu info: what an image holds, and what survives the quantization.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <limits>
#include <set>

namespace {

using Json = nlohmann::json;
using Arguments = std::vector<std::string>;

class SeluInfo : public test::CSeluTest {
protected:
  [[nodiscard]] Json Info(std::string const& file, std::string const& range = "") const {
    Arguments arguments = {"info", file, "--format", "json"};
    if (!range.empty()) arguments.insert(arguments.end(), {"--range", range});
    return Json::parse(Output(arguments));
  }

  // Random values of this type, some of them special; compared with counts made by hand.
  template <class T>
  void CompareWithHand(std::string const& type, std::vector<T> const& pixels) const {
    SCOPED_TRACE(type);
    WriteNrrd("a.nrrd", type, {static_cast<long>(pixels.size()) / 4, 2, 2}, pixels);
    Json const info = Info("a.nrrd", "-20,90");
    std::set<T> values;
    std::set<int> levels;
    long inside = 0, nan = 0;
    for (T const value : pixels) {
      auto const v = static_cast<double>(value);
      nan += v != v;
      if (v == v) values.insert(value);
      inside += v >= -20 && v <= 90;
      levels.insert(v >= 90 ? 255 : v > -20 ? static_cast<int>((v + 20) / 110 * 255 + 0.5) : 0);
    }
    EXPECT_EQ(info["pixel type"], type);
    EXPECT_EQ(info["distinct values"], values.size());
    EXPECT_EQ(info["least value"].get<T>(), *values.begin());
    EXPECT_EQ(info["greatest value"].get<T>(), *values.rbegin());
    EXPECT_EQ(info["surviving voxels"], inside);
    EXPECT_EQ(info["not a number"], nan);
    EXPECT_EQ(info["gray levels"], levels.size());
    EXPECT_EQ(info["voxels"], pixels.size());
  }
};

template <class T>
std::vector<T> RandomPixels(test::CRandomNumbers& random) {
  std::vector<T> pixels = {std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max(), T{0},
                           T{1}};
  while (pixels.size() < 4000) {
    int const low = std::is_signed_v<T> ? -120 : 0;
    T value = static_cast<T>(random.Between(low, 120));
    if constexpr (std::is_floating_point_v<T>) value = value / 4;
    pixels.push_back(value);
  }
  return pixels;
}

TEST_F(SeluInfo, CountsOfEveryPixelTypeMatchThoseByHand) {
  test::CRandomNumbers random;
  CompareWithHand("uint8", RandomPixels<std::uint8_t>(random));
  CompareWithHand("int8", RandomPixels<std::int8_t>(random));
  CompareWithHand("uint16", RandomPixels<std::uint16_t>(random));
  CompareWithHand("int16", RandomPixels<std::int16_t>(random));
  CompareWithHand("uint32", RandomPixels<std::uint32_t>(random));
  CompareWithHand("int32", RandomPixels<std::int32_t>(random));
  CompareWithHand("uint64", RandomPixels<std::uint64_t>(random));
  CompareWithHand("int64", RandomPixels<std::int64_t>(random));
}

TEST_F(SeluInfo, CountsOfFloatingPointTypesMatchThoseByHand) {
  test::CRandomNumbers random;
  auto floats = RandomPixels<float>(random);
  auto doubles = RandomPixels<double>(random);
  for (std::size_t i = 10; i < 30; ++i) {
    floats[i] = std::numeric_limits<float>::quiet_NaN();
    doubles[i] = std::numeric_limits<double>::quiet_NaN();
    floats[i + 100] = -0.0f;
  }
  WriteNrrd("f.nrrd", "float", {1000, 2, 2}, floats);
  WriteNrrd("d.nrrd", "double", {1000, 2, 2}, doubles);
  EXPECT_EQ(Info("f.nrrd")["pixel type"], "float32");
  EXPECT_EQ(Info("d.nrrd")["pixel type"], "float64");
  for (std::string const file : {"f.nrrd", "d.nrrd"}) {
    Json const info = Info(file, "-20,90");
    EXPECT_EQ(info["not a number"], 20) << file;
    EXPECT_EQ(info["voxels"], 4000) << file;
  }
  std::set<double> values;
  for (double const value : doubles)
    if (!std::isnan(value)) values.insert(value);
  EXPECT_EQ(Info("d.nrrd")["distinct values"], values.size());
  EXPECT_EQ(Info("d.nrrd")["greatest value"].get<double>(), std::numeric_limits<double>::max());
  EXPECT_EQ(Info("f.nrrd")["least value"].get<float>(), std::numeric_limits<float>::lowest());
}

TEST_F(SeluInfo, OnlyNaNHasNoRange) {
  std::vector<float> const pixels(16, std::numeric_limits<float>::quiet_NaN());
  WriteNrrd("a.nrrd", "float", {4, 4}, pixels);
  Json const info = Info("a.nrrd");
  EXPECT_TRUE(info["least value"].is_null());
  EXPECT_EQ(info["distinct values"], 0);
  ExpectFailure({"texture", "a.nrrd"}, "all its values are NaN");
}

TEST_F(SeluInfo, SixteenBitsSurviveByTheirHighByte) {
  // Lost: 5 and 255, which become level 0 with the zeros.
  WriteNrrd<std::uint16_t>("a.nrrd", "uint16", {4, 2}, {0, 0, 5, 255, 256, 511, 512, 65535});
  auto const result = Selu({"info", "a.nrrd", "--format", "json"});
  Json const info = Json::parse(result.out);
  EXPECT_EQ(info["surviving voxels"], 6);
  EXPECT_EQ(info["surviving share"], 0.75);
  EXPECT_EQ(info["gray levels"], 4);
  EXPECT_EQ(result.error,
            "selu: warning: \"a.nrrd\" keeps only 4 gray levels of its 16 bits, since the "
            "highest byte counts: give --range 0,65535 to spread its values over all "
            "256\n");
}

TEST_F(SeluInfo, NoWarningWhereNothingCollapses) {
  WriteNrrd<std::uint16_t>("two.nrrd", "uint16", {2, 2},
                           {0, 512, 0, 512}); // two values, two levels
  EXPECT_EQ(Selu({"info", "two.nrrd"}).error, "");
  std::vector<std::uint16_t> all(65536);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint16_t>(i);
  WriteNrrd("all.nrrd", "uint16", {256, 256}, all);
  EXPECT_EQ(Selu({"info", "all.nrrd"}).error, "");
  WriteNrrd<std::uint32_t>("deep.nrrd", "uint32", {2, 2}, {0, 1000, 2000, 3000});
  EXPECT_TRUE(Selu({"info", "deep.nrrd"}).error.find("--range 0,3000") != std::string::npos);
  EXPECT_EQ(Selu({"info", "deep.nrrd", "--range", "0,3000"}).error, "");
}

TEST_F(SeluInfo, TableNamesEverything) {
  WriteNrrd<std::int16_t>("a.nrrd", "int16", {2, 2, 2}, {-3, 0, 1, 2, 3, 4, 5, 300});
  auto const text = Output({"info", "a.nrrd", "--range", "0,255"});
  for (std::string const part : {"a.nrrd", "2 x 2 x 2", "signed 16-bit integer", "-3 to 300", "8\n",
                                 "6 of 8 (75 %)", "7 of 256"})
    EXPECT_TRUE(text.find(part) != std::string::npos) << text << "lacks " << part;
}

TEST_F(SeluInfo, ControlCharactersOfANameStayOutOfTheTable) {
  std::string const name = "a\x1b[31m\nb\x7f.nrrd";
  WriteNrrd<std::uint8_t>(name, "uint8", {2, 2}, {1, 2, 3, 4});
  EXPECT_TRUE(Output({"info", name}).starts_with("image             a?[31m?b?.nrrd\ndimension"));
  EXPECT_EQ(Info(name)["image"], name) << "JSON has escapes of its own";
}

TEST_F(SeluInfo, InfinitiesAreTextsInJson) {
  constexpr auto inf = std::numeric_limits<double>::infinity();
  WriteNrrd<double>("a.nrrd", "double", {2, 2}, {-inf, 0, 1, inf});
  WriteNrrd<float>("b.nrrd", "float", {2, 2}, {-2, 0, 1, static_cast<float>(inf)});
  EXPECT_EQ(Info("a.nrrd")["least value"], "-inf");
  EXPECT_EQ(Info("a.nrrd")["greatest value"], "inf");
  EXPECT_EQ(Info("b.nrrd")["least value"], -2);
  EXPECT_EQ(Info("b.nrrd", "0,1")["greatest value"], "inf");
}

TEST_F(SeluInfo, ExtentsOfOneAtTheEndDoNotCount) {
  std::vector<std::uint8_t> const pixels(12, 7);
  WriteNrrd("flat.nrrd", "uint8", {4, 3, 1}, pixels);
  WriteNrrd("four.nrrd", "uint8", {2, 3, 2, 1}, pixels);
  WriteNrrd("thin.nrrd", "uint8", {1, 3, 4}, pixels);
  EXPECT_EQ(Info("flat.nrrd")["dimension"], 2);
  EXPECT_EQ(Info("four.nrrd")["size"], (Json{2, 3, 2}));
  EXPECT_EQ(Info("thin.nrrd")["size"], (Json{1, 3, 4}));
}

} // namespace
