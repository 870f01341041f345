// selu texture against the library's own values, in all its output formats.
#include "support/Matrix.h"
#include "support/SeluRun.h"

#include <SeluUtils/Cooccurrence.h>
#include <images/ImageFile.h>
#include <texture/Texture.h>

#include <nlohmann/json.hpp>

#include <cstdlib>

namespace {

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;
using selu::Direction;

class SeluTexture : public test::CSeluTest {
protected:
  void Make(std::string const& kind, std::string const& size, std::string const& file) const {
    ASSERT_EQ(Selu({"synth", kind, "--size", size, "--seed", "3", "-o", file}).code, 0);
  }
  [[nodiscard]] ORVA::CImage Image(std::string const& file) const {
    return selu::ReadImage(Path(file)).ToGray();
  }
};

std::vector<double> LibraryFeatures(ORVA::CImage const& image, Direction direction) {
  ORVA::CCooccurrence texture("texture", nullptr);
  ORVA::CValueMap map;
  texture.ComputeFeatures(image, &direction, &map);
  std::vector<double> values;
  for (char const* const name : selu::c_featureNames) values.push_back(map.Entry(name).Double());
  return values;
}

std::vector<Direction> Fixed(std::size_t count) {
  auto const& all = ORVA::CCooccurrence::m_cDirections;
  return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST_F(SeluTexture, JsonHoldsTheLibrarysValuesToTheLastBit) {
  Make("layers", "20,18,16", "a.nrrd");
  auto const image = Image("a.nrrd");
  Json const json = Json::parse(Output({"texture", "a.nrrd", "--format", "json"}));
  EXPECT_EQ(json["image"], "a.nrrd");
  EXPECT_EQ(json["size"], (Json{20, 18, 16}));
  EXPECT_TRUE(json["range"].is_null());
  auto const directions = Fixed(13);
  ASSERT_EQ(json["directions"].size(), directions.size());
  for (std::size_t s = 0; s < directions.size(); ++s) {
    auto const& entry = json["directions"][s];
    auto const& d = directions[s];
    EXPECT_EQ(entry["direction"], (Json{d.x, d.y, d.z}));
    EXPECT_EQ(entry["pairs"], (20 - std::abs(d.x)) * (18 - std::abs(d.y)) * (16 - std::abs(d.z)));
    auto const expected = LibraryFeatures(image, d);
    EXPECT_EQ(entry["features"].size(), expected.size());
    for (std::size_t f = 0; f < expected.size(); ++f)
      EXPECT_EQ(entry["features"][selu::c_featureNames[f]].get<double>(), expected[f]);
  }
}

TEST_F(SeluTexture, CsvHoldsTheLibrarysValuesToTheLastBit) {
  Make("blobs", "40,30", "a.png");
  auto const image = Image("a.png");
  auto const lines = test::Lines(Output({"texture", "a.png", "--format", "csv"}));
  ASSERT_EQ(lines.size(), 5u);
  auto const head = test::Fields(lines[0]);
  ASSERT_EQ(head.size(), 17u);
  for (std::size_t f = 0; f < 13; ++f) EXPECT_EQ(head[4 + f], selu::c_featureNames[f]);
  auto const directions = Fixed(4);
  for (std::size_t s = 0; s < directions.size(); ++s) {
    auto const fields = test::Fields(lines[1 + s]);
    ASSERT_EQ(fields.size(), head.size());
    EXPECT_EQ(std::stol(fields[0]), directions[s].x);
    EXPECT_EQ(std::stol(fields[1]), directions[s].y);
    EXPECT_EQ(std::stol(fields[2]), 0);
    auto const expected = LibraryFeatures(image, directions[s]);
    for (std::size_t f = 0; f < expected.size(); ++f)
      EXPECT_EQ(std::strtod(fields[4 + f].c_str(), nullptr), expected[f]) << head[4 + f];
  }
}

TEST_F(SeluTexture, TableIsAlignedAndHoldsEveryFeature) {
  Make("blobs", "20,20,20", "a.nrrd");
  auto const lines =
      test::Lines(Output({"texture", "a.nrrd", "--direction", "1,0,0", "--direction", "-1,2,-3"}));
  ASSERT_EQ(lines.size(), 16u);
  EXPECT_TRUE(lines[0].ends_with("-1,2,-3")) << lines[0];
  for (std::size_t i = 1; i < lines.size(); ++i)
    EXPECT_EQ(lines[i].size(), lines[0].size()) << lines[i];
  for (std::size_t f = 0; f < 13; ++f)
    EXPECT_TRUE(lines[3 + f].starts_with(selu::c_featureNames[f])) << lines[3 + f];
}

TEST_F(SeluTexture, TableOfAllDirectionsFitsThePage) {
  Make("blobs", "20,20,20", "a.nrrd");
  auto const lines = test::Lines(Output({"texture", "a.nrrd", "--all-directions"}));
  EXPECT_GT(lines.size(), 2 * 16u);
  for (auto const& line : lines) EXPECT_LE(line.size(), 120u);
}

TEST_F(SeluTexture, MatrixIsTheLibrarysCountsInItsLayout) {
  Make("layers", "20,18,16", "a.nrrd");
  auto const image = Image("a.nrrd");
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz"}) {
    (void)Output({"texture", "a.nrrd", "--matrix", "m." + ending});
    auto const matrix = Image("m." + ending);
    EXPECT_EQ(matrix.Type(), ORVA::IMAGE_GREY_32) << ending;
    ASSERT_EQ(matrix.Size(), ORVA::CSize(13, 256, 256)) << ending;
    auto const directions = Fixed(13);
    for (std::size_t s = 0; s < directions.size(); ++s)
      EXPECT_EQ(test::ReadMatrix(matrix, static_cast<ORVA::int64>(s)),
                test::CountWithLibrary(image, directions[s]));
  }
}

TEST_F(SeluTexture, OneDirectionHasOneMatrix) {
  Make("noise", "20,18", "a.png");
  (void)Output({"texture", "a.png", "--direction", "-2,3", "--matrix", "m.nrrd"});
  auto const matrix = Image("m.nrrd");
  ASSERT_EQ(matrix.Size(), ORVA::CSize(1, 256, 256));
  EXPECT_EQ(test::ReadMatrix(matrix), test::CountWithLibrary(Image("a.png"), {-2, 3, 0}));
}

TEST_F(SeluTexture, GivenDirectionsComeBeforeAllDirections) {
  Make("noise", "20,18", "a.png");
  Json const json = Json::parse(
      Output({"texture", "a.png", "--all-directions", "--direction", "5,0,0", "--format", "json"}));
  ASSERT_EQ(json["directions"].size(), 5u);
  EXPECT_EQ(json["directions"][0]["direction"], (Json{5, 0, 0}));
  EXPECT_EQ(json["directions"][1]["direction"], (Json{1, 0, 0}));
}

TEST_F(SeluTexture, ThirtyTwoBitsHaveAllDirectionsToo) {
  std::vector<std::uint32_t> pixels(6 * 5 * 4);
  for (std::size_t i = 0; i < pixels.size(); ++i)
    pixels[i] = static_cast<std::uint32_t>(i * 35791394);
  WriteNrrd("a.nrrd", "uint32", {6, 5, 4}, pixels);
  auto const image = Image("a.nrrd");
  Json const json = Json::parse(Output({"texture", "a.nrrd", "--format", "json"}));
  ASSERT_EQ(json["directions"].size(), 13u);
  EXPECT_EQ(json["directions"][12]["features"]["Entropy"].get<double>(),
            LibraryFeatures(image, {0, 0, 1})[4]);
}

TEST_F(SeluTexture, RangeMapsLinearlyRoundedAndClamped) {
  std::vector<float> const values = {
      -1e30f, -10, -9.9f, 0, 4.99f, 90, 89.8f, 1e30f, std::numeric_limits<float>::quiet_NaN(), 40};
  std::vector<std::uint8_t> const levels = {0, 0, 0, 26, 38, 255, 254, 255, 0, 128};
  auto rows = values; // the same twice: each value is paired with itself
  rows.insert(rows.end(), values.begin(), values.end());
  WriteNrrd("a.nrrd", "float", {10, 2}, rows);
  (void)Output(
      {"texture", "a.nrrd", "--range", "-10,90", "--direction", "0,1", "--matrix", "m.nrrd"});
  auto const matrix = test::ReadMatrix(Image("m.nrrd"));
  test::Matrix expected(test::c_cells);
  for (auto const level : levels) ++expected[level * 257u];
  EXPECT_EQ(matrix, expected);
}

TEST_F(SeluTexture, RangeIsAllowedForUnsignedPixels) {
  WriteNrrd<std::uint16_t>("a.nrrd", "uint16", {4, 2}, {100, 200, 300, 400, 100, 200, 300, 400});
  (void)Output(
      {"texture", "a.nrrd", "--range", "100,400", "--direction", "0,1", "--matrix", "m.nrrd"});
  auto const matrix = test::ReadMatrix(Image("m.nrrd"));
  for (std::size_t const level : {0u, 85u, 170u, 255u}) EXPECT_EQ(matrix[level * 257], 1u);
}

TEST_F(SeluTexture, SignedAndFloatingPointPixelsNeedARange) {
  WriteNrrd<std::int16_t>("s.nrrd", "int16", {2, 2}, {-5, 0, 7, 300});
  ExpectFailure(
      {"texture", "s.nrrd"},
      "\"s.nrrd\" has signed 16-bit integer pixels, which need --range LO,HI to map them to "
      "gray levels (its values range from -5 to 300)");
  WriteNrrd<double>("d.nrrd", "double", {2, 2}, {0.125, 0, 1, -2.5});
  ExpectFailure({"texture", "d.nrrd"}, "64-bit floating-point pixels, which need --range LO,HI");
  ExpectFailure({"texture", "d.nrrd"}, "range from -2.5 to 1");
  WriteNrrd<std::uint64_t>("u.nrrd", "uint64", {2, 2}, {0, 1, 2, UINT64_MAX});
  ExpectFailure({"texture", "u.nrrd"}, "0 to 18446744073709551615");
}

TEST_F(SeluTexture, DirectionsThatLeaveTheImageAreRefusedBeforeTheWork) {
  Make("noise", "20,18,16", "v.nrrd");
  Make("noise", "20,18", "f.png");
  std::vector<std::pair<Arguments, std::string>> const cases = {
      {{"v.nrrd", "--direction", "20,0,0"}, "20,0,0 is as long as the image or longer along x (20"},
      {{"v.nrrd", "--direction", "0,-18,0"}, "0,-18,0 is as long as the image or longer along y"},
      {{"v.nrrd", "--direction", "0,0,16"}, "0,0,16 is as long as the image or longer along z"},
      {{"v.nrrd", "--direction", "0,0,-2147483648"}, "along z"},
      {{"v.nrrd", "--direction", "1,0"}, "needs dz, since the image is 3D"},
      {{"f.png", "--direction", "1,0,1"}, "needs dz = 0, since the image is 2D"},
      {{"f.png", "--direction", "1,0", "--direction", "0,18"}, "0,18 is as long"},
  };
  for (auto [arguments, text] : cases) {
    arguments.insert(arguments.begin(), "texture");
    arguments.insert(arguments.end(), {"--matrix", "m.nrrd"});
    ExpectFailure(arguments, text);
  }
  EXPECT_EQ(Files(), (Arguments{"f.png", "v.nrrd"}));
}

TEST_F(SeluTexture, ThinImagesLeaveDirectionsOut) {
  WriteNrrd<std::uint8_t>("line.nrrd", "uint8", {20, 1}, std::vector<std::uint8_t>(20, 5));
  auto const line = Selu({"texture", "line.nrrd", "--format", "csv"});
  EXPECT_EQ(line.code, 0);
  EXPECT_EQ(line.error,
            "selu: note: the image is one voxel thin, so these directions are left out: "
            "1,1 0,1 1,-1\n");
  ASSERT_EQ(test::Lines(line.out).size(), 2u);
  EXPECT_TRUE(test::Lines(line.out)[1].starts_with("1,0,0,19,"));
  WriteNrrd<std::uint8_t>("flat.nrrd", "uint8", {1, 3, 4}, std::vector<std::uint8_t>(12, 5));
  EXPECT_EQ(test::Lines(Output({"texture", "flat.nrrd", "--format", "csv"})).size(), 1u + 4u);
  EXPECT_EQ(test::Lines(Output({"texture", "flat.nrrd", "--format", "csv", "--all-directions",
                                "--direction", "0,2,0"}))
                .size(),
            1u + 5u);
  ExpectFailure({"texture", "flat.nrrd", "--direction", "1,0,0"}, "as long as the image or longer");
  WriteNrrd<std::uint8_t>("dot.nrrd", "uint8", {1, 1}, {5});
  ExpectFailure({"texture", "dot.nrrd"}, "no two voxels that are neighbors");
}

// Width and height by the header of a PNG.
std::pair<unsigned, unsigned> PngSize(std::string const& bytes) {
  auto const number = [&](std::size_t place) {
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i)
      value = value << 8 | static_cast<unsigned char>(bytes.at(place + i));
    return value;
  };
  return {number(16), number(20)};
}

TEST_F(SeluTexture, PictureIsAPngOfAPageOrAnSvg) {
  Make("layers", "20,18,16", "a.nrrd");
  for (Arguments const& which : std::vector<Arguments>{
           {}, {"--direction", "1,0,0"}, {"--direction", "1,0,0", "--direction", "0,1,0"}}) {
    Arguments png = {"texture", "a.nrrd", "--picture", "p.png"};
    png.insert(png.end(), which.begin(), which.end());
    (void)Output(png);
    auto const bytes = Read("p.png");
    ASSERT_TRUE(bytes.starts_with("\x89PNG"));
    auto const [width, height] = PngSize(bytes);
    EXPECT_GE(width, 1000u);
    EXPECT_LE(width, 2400u);
    EXPECT_GE(height, 700u);
    EXPECT_LE(height, 1400u);
  }
  auto const alone = Read("p.png");
  (void)Output({"texture", "a.nrrd", "--direction", "1,0,0", "--direction", "0,1,0", "--picture",
                "p.SVG", "--picture", "again.png"});
  EXPECT_EQ(Read("again.png"), alone) << "of two pictures each is as if it were the only one";
  auto const svg = Read("p.SVG");
  EXPECT_TRUE(svg.starts_with("<?xml")) << svg.substr(0, 80);
  EXPECT_TRUE(svg.find("<svg") != std::string::npos);
  EXPECT_TRUE(svg.find("</svg>") != std::string::npos);
  auto const occurrences = [&](std::string const& part) {
    std::size_t count = 0;
    for (auto at = svg.find(part); at != std::string::npos; at = svg.find(part, at + 1)) ++count;
    return count;
  };
  EXPECT_EQ(occurrences("<g"), occurrences("</g>") + occurrences("<glyph"));
}

TEST_F(SeluTexture, PictureOfManyDirectionsAndOfAConstantImage) {
  WriteNrrd("a.nrrd", "uint8", {60, 60}, std::vector<std::uint8_t>(3600, 9));
  Arguments arguments = {"texture", "a.nrrd", "--picture", "p.png"};
  for (int i = 0; i < 50; ++i)
    arguments.insert(arguments.end(), {"--direction", std::to_string(i) + ",1"});
  (void)Output(arguments);
  EXPECT_LE(PngSize(Read("p.png")).first, 8000u);
  (void)Output({"texture", "a.nrrd", "--direction", "1,0", "--picture", "p.png"});
  EXPECT_TRUE(Read("p.png").starts_with("\x89PNG"));
}

TEST_F(SeluTexture, CollapseIsWarnedOf) {
  std::vector<std::uint16_t> pixels(64);
  for (std::size_t i = 0; i < pixels.size(); ++i) pixels[i] = static_cast<std::uint16_t>(i * 30);
  WriteNrrd("a.nrrd", "uint16", {8, 8}, pixels);
  auto const result = Selu({"texture", "a.nrrd"});
  EXPECT_EQ(result.code, 0);
  EXPECT_TRUE(result.error.find("keeps only 8 gray levels") != std::string::npos) << result.error;
  EXPECT_TRUE(result.error.find("--range 0,1890") != std::string::npos) << result.error;
}

} // namespace
