// selu regions: the objects of a label image as a feature map.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <base/JsonValues.h>
#include <images/ImageFile.h>

#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/ValueHelper.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <map>

namespace {

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;
using Sizes = std::vector<long>;

// What an object measures, by hand: all its voxels kept, then looked at.
struct StByHand {
  std::vector<std::array<long, 3>> voxels;
  std::vector<double> values;

  [[nodiscard]] long Low(std::size_t axis) const {
    return (*std::ranges::min_element(voxels, {}, [&](auto& v) { return v[axis]; }))[axis];
  }
  [[nodiscard]] long High(std::size_t axis) const {
    return (*std::ranges::max_element(voxels, {}, [&](auto& v) { return v[axis]; }))[axis];
  }
  [[nodiscard]] double Centroid(std::size_t axis) const {
    double sum = 0;
    for (auto const& voxel : voxels) sum += static_cast<double>(voxel[axis]);
    return sum / static_cast<double>(voxels.size());
  }
  [[nodiscard]] double Mean() const {
    double sum = 0;
    for (double const value : values) sum += value;
    return sum / static_cast<double>(values.size());
  }
  [[nodiscard]] double Deviation() const {
    double sum = 0;
    for (double const value : values) sum += (value - Mean()) * (value - Mean());
    return std::sqrt(sum / static_cast<double>(values.size()));
  }
};

template <class L, class V>
std::map<long, StByHand> MeasureByHand(Sizes const& sizes, std::vector<L> const& labels,
                                       std::vector<V> const& values) {
  std::map<long, StByHand> objects;
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (labels[i] == 0) continue;
    auto const place = static_cast<long>(i);
    StByHand& object = objects[static_cast<long>(labels[i])];
    object.voxels.push_back(
        {place % sizes[0], place / sizes[0] % sizes[1], place / sizes[0] / sizes[1]});
    if (!values.empty()) object.values.push_back(static_cast<double>(values[i]));
  }
  return objects;
}

void ExpectObject(Json const& json, StByHand const& object, std::size_t dimension) {
  constexpr std::array<char const*, 3> axes = {"x", "y", "z"};
  EXPECT_EQ(json["volume [px]"], object.voxels.size());
  EXPECT_EQ(json["bounding box"].size(), 2 * dimension);
  EXPECT_EQ(json["centroid"].size(), dimension);
  for (std::size_t axis = 0; axis < dimension; ++axis) {
    std::string const letter = axes[axis];
    EXPECT_EQ(json["bounding box"][letter + " min"], object.Low(axis));
    EXPECT_EQ(json["bounding box"][letter + " max"], object.High(axis));
    EXPECT_DOUBLE_EQ(json["centroid"][letter].get<double>(), object.Centroid(axis));
  }
  EXPECT_EQ(json.contains("intensity"), !object.values.empty());
  if (object.values.empty()) return;
  double const scale = std::max(1.0, std::abs(object.Mean()));
  EXPECT_NEAR(json["intensity"]["mean"].get<double>(), object.Mean(), 1e-12 * scale);
  EXPECT_NEAR(json["intensity"]["deviation"].get<double>(), object.Deviation(), 1e-9 * scale);
}

class SeluRegions : public test::CSeluTest {
protected:
  [[nodiscard]] Json Regions(Arguments const& options) const {
    Arguments arguments = {"regions", "l.nrrd", "-o", "f.json"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    auto const result = Selu(arguments);
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_EQ(result.out, "");
    return result.code == 0 ? Json::parse(Read("f.json")) : Json();
  }

  template <class L, class V>
  void CompareWithHand(std::string const& labelType, std::string const& type, Sizes const& sizes,
                       int greatest) const {
    SCOPED_TRACE(labelType + " " + type);
    test::CRandomNumbers random;
    std::vector<L> labels(static_cast<std::size_t>(sizes[0] * sizes[1]) *
                          static_cast<std::size_t>(sizes.size() == 3 ? sizes[2] : 1));
    std::vector<V> values;
    for (L& label : labels) {
      label = static_cast<L>(random.Between(0, 2) == 0 ? random.Between(0, greatest) : 0);
      values.push_back(static_cast<V>(random.Between(0, 120)));
    }
    labels[labels.size() / 2] = static_cast<L>(greatest);
    WriteNrrd("l.nrrd", labelType, sizes, labels);
    WriteNrrd("i.nrrd", type, sizes, values);
    auto const objects = MeasureByHand(sizes, labels, values);
    Json const json = Regions({"--intensity", "i.nrrd", "--no-texture"});
    EXPECT_EQ(json["maximum label"], greatest);
    EXPECT_EQ(json["no. of objects"], objects.size());
    EXPECT_EQ(json.size(), objects.size() + 2);
    for (auto const& [label, object] : objects) {
      std::string name = std::to_string(label);
      name.insert(0, std::to_string(greatest).size() - name.size(), '0');
      ASSERT_TRUE(json.contains("object " + name)) << name;
      EXPECT_EQ(json["object " + name]["object"], std::to_string(label));
      ExpectObject(json["object " + name], object, sizes.size());
    }
    EXPECT_TRUE(ORVA::IsObjectBasedFeaturesMap(selu::ReadJsonMap(Path("f.json")), "object"));
  }
};

TEST_F(SeluRegions, EveryLabelAndPixelTypeMeasuresAsByHand) {
  CompareWithHand<std::uint8_t, std::int16_t>("uint8", "int16", {9, 7, 5}, 12);
  CompareWithHand<std::int8_t, std::uint8_t>("int8", "uint8", {9, 7, 5}, 100);
  CompareWithHand<std::uint16_t, float>("uint16", "float", {9, 7, 5}, 300);
  CompareWithHand<std::int16_t, double>("int16", "double", {20, 30}, 9);
  CompareWithHand<std::uint32_t, std::uint16_t>("uint32", "uint16", {20, 30}, 10);
  CompareWithHand<std::int32_t, std::uint32_t>("int32", "uint32", {1, 1, 40}, 7);
  CompareWithHand<std::uint64_t, std::int64_t>("uint64", "int64", {8, 9, 10}, 1 << 24);
  CompareWithHand<std::int64_t, std::uint64_t>("int64", "uint64", {50, 1}, 3);
}

TEST_F(SeluRegions, DeviationsFarFromZeroAreNotCanceled) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 1}, {1, 1, 1, 1});
  WriteNrrd<double>("i.nrrd", "double", {4, 1}, {1e9 + 1, 1e9 + 2, 1e9 + 3, 1e9 + 4});
  Json const object = Regions({"--intensity", "i.nrrd", "--no-texture"})["object 1"];
  EXPECT_EQ(object["intensity"]["mean"], 1e9 + 2.5);
  EXPECT_NEAR(object["intensity"]["deviation"].get<double>(), std::sqrt(1.25), 1e-6);
}

TEST_F(SeluRegions, NoNumberAmongTheIntensitiesShows) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 1}, {1, 1, 2, 2});
  WriteNrrd<float>("i.nrrd", "float", {4, 1}, {1, std::nanf(""), 3, 5});
  Json const json = Regions({"--intensity", "i.nrrd", "--no-texture"});
  EXPECT_EQ(json["object 1"]["intensity"]["mean"], (Json{{"$number", "NaN"}}));
  EXPECT_EQ(json["object 2"]["intensity"]["mean"], 4.0);
}

TEST_F(SeluRegions, WithoutIntensityOnlyPlaceAndExtentAreMeasured) {
  WriteNrrd<std::int16_t>("l.nrrd", "int16", {3, 2}, {0, 7, 0, 0, 7, 7});
  Json const expected = Json::parse(R"({"maximum label": 7, "no. of objects": 1, "object 7": {
      "object": "7", "status": "measured", "volume [px]": 3,
      "bounding box": {"x min": 1, "x max": 2, "y min": 0, "y max": 1},
      "centroid": {"x": 1.3333333333333333, "y": 0.6666666666666666}}})");
  EXPECT_EQ(Regions({}), expected);
}

// The box of object 2 cut out by hand and given to selu texture.
TEST_F(SeluRegions, TextureIsThatOfTheBoundingBox) {
  test::CRandomNumbers random;
  std::vector<std::uint8_t> values(10 * 8 * 6), labels(values.size()), box;
  for (auto& value : values) value = static_cast<std::uint8_t>(random.Between(0, 255));
  for (std::size_t i = 0; i < values.size(); ++i) {
    auto const x = i % 10, y = i / 10 % 8, z = i / 80;
    bool const isInside = x >= 2 && x <= 8 && y >= 1 && y <= 4 && z >= 3 && z <= 5;
    if (isInside) box.push_back(values[i]);
    if (isInside && (x + y + z) % 2 == 0) labels[i] = 2; // touches all faces of the box
  }
  labels[0] = 1;
  WriteNrrd("i.nrrd", "uint8", {10, 8, 6}, values);
  WriteNrrd("l.nrrd", "uint8", {10, 8, 6}, labels);
  WriteNrrd("box.nrrd", "uint8", {7, 4, 3}, box);
  for (std::string const direction : {"1,0,0", "1,-1,2", "0,0,1"}) {
    Json const object =
        Regions({"--intensity", "i.nrrd", "--box", "--direction", direction})["object 2"];
    Json const texture = Json::parse(Output(
        {"texture", "box.nrrd", "--format", "json", "--direction", direction}))["directions"][0];
    EXPECT_EQ(object["texture"], texture["features"]) << direction;
    EXPECT_EQ(object["texture"].size(), 13u);
    EXPECT_EQ(object["status"], "measured");
  }
  Json const mean = Regions({"--intensity", "i.nrrd", "--box"})["object 2"]["texture"];
  Json const all = Json::parse(Output({"texture", "box.nrrd", "--format", "json"}))["directions"];
  ASSERT_EQ(all.size(), 13u);
  for (auto const& [name, value] : mean.items()) {
    double sum = 0;
    for (auto const& one : all) sum += one["features"][name].get<double>();
    EXPECT_EQ(value.get<double>(), sum / 13) << name;
  }
}

TEST_F(SeluRegions, BoxesWithoutPairsHaveNoTexture) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 2}, {1, 0, 2, 2, 1, 0, 0, 0});
  WriteNrrd<std::uint8_t>("i.nrrd", "uint8", {4, 2}, {9, 8, 7, 6, 5, 4, 3, 2});
  Json const json = Regions({"--intensity", "i.nrrd", "--box", "--direction", "1,0"});
  EXPECT_EQ(json["object 1"]["status"], "too small for texture"); // it is one voxel wide
  EXPECT_EQ(json["object 1"]["texture"].size(), 13u);
  for (auto const& [name, value] : json["object 1"]["texture"].items())
    EXPECT_EQ(value, (Json{{"$number", "NaN"}})) << name;
  EXPECT_EQ(json["object 2"]["status"], "measured");
  EXPECT_EQ(json["object 2"]["texture"]["Contrast"].is_number_float(), true);
  EXPECT_EQ(Regions({"--intensity", "i.nrrd", "--box"})["object 1"]["status"], "measured")
      << "along 0,1";
}

// Labels of every pixel type, of which the library takes some alone.
TEST_F(SeluRegions, TextureIsThatOfTheObjectsPairs) {
  test::CRandomNumbers random;
  std::vector<std::uint8_t> values(10 * 8 * 6);
  std::vector<std::int64_t> labels(values.size());
  std::vector<std::uint32_t> objects;
  for (auto& value : values) value = static_cast<std::uint8_t>(random.Between(0, 255));
  for (auto& label : labels) label = random.Between(0, 3);
  labels[0] = 9; // a voxel alone
  objects.assign(labels.begin(), labels.end());
  WriteNrrd("i.nrrd", "uint8", {10, 8, 6}, values);
  WriteNrrd("l.nrrd", "int64", {10, 8, 6}, labels);
  ORVA::CSize const size(10, 8, 6);
  ORVA::CImageView const image(ORVA::IMAGE_GREY_8, size, static_cast<void const*>(values.data()));
  ORVA::CImageView const names(ORVA::IMAGE_GREY_32, size, static_cast<void const*>(objects.data()));
  ORVA::CObjectTexture const texture(ORVA::CQuantizer::BinCount(8).Quantize(image), names);
  auto const expected = texture.Compute();
  ASSERT_EQ(texture.Objects().size(), 4u);
  Json const json = Regions({"--intensity", "i.nrrd", "--symmetric", "--bin-count", "8"});
  for (std::size_t k = 0; k < 4; ++k) {
    auto const label = texture.Objects()[k].label;
    Json const& object = json["object " + std::to_string(label)];
    EXPECT_EQ(object["status"], label == 9 ? "too small for texture" : "measured");
    EXPECT_EQ(object["texture"].size(), 25u);
    for (std::size_t f = 0; f < 25; ++f) {
      Json const& value = object["texture"][std::string(ORVA::FeatureName(texture.Features()[f]))];
      if (label == 9)
        EXPECT_EQ(value, (Json{{"$number", "NaN"}}));
      else
        EXPECT_EQ(value.get<double>(), expected[k * 25 + f]) << label << ' ' << f;
    }
  }
  Json const one = Regions({"--intensity", "i.nrrd", "--features", "contrast", "--threads", "2"});
  EXPECT_EQ(one["object 1"]["texture"].size(), 1u);
}

TEST_F(SeluRegions, LengthsComeInTheUnitOfTheGridToo) {
  std::string const header = "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 4 3 2\n"
                             "space: left-posterior-superior\n"
                             "space directions: (0.5,0,0) (0,0,2) (0,-3,0)\n"
                             "space origin: (10,20,30)\nencoding: raw\n\n";
  std::string pixels(24, '\0');
  pixels[1] = pixels[2] = pixels[2 + 4] = pixels[2 + 4 + 12] = 5; // (1,0,0) (2,0,0) (2,1,0) (2,1,1)
  Write("l.nrrd", header + pixels);
  Json const object = Json::parse(Output({"regions", "l.nrrd", "-o", "-"}))["object 5"];
  Json const& physical = object["physical"];
  EXPECT_EQ(object["centroid"]["x"], 1.75);
  EXPECT_EQ(physical["centroid x"], 10 + 1.75 * 0.5);
  EXPECT_EQ(physical["centroid y"], 20 - 0.25 * 3); // z runs down the second axis of space
  EXPECT_EQ(physical["centroid z"], 30 + 0.5 * 2);
  EXPECT_EQ(physical["extent x"], 1);
  EXPECT_EQ(physical["extent y"], 4);
  EXPECT_EQ(physical["extent z"], 6);
  EXPECT_EQ(physical["volume"], 12);
  Write("p.nrrd", "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 4 3 2\nencoding: raw\n\n" + pixels);
  EXPECT_FALSE(
      Json::parse(Output({"regions", "p.nrrd", "-o", "-"}))["object 5"].contains("physical"));
}

TEST_F(SeluRegions, IntensitiesMayHave64Bits) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 1}, {1, 1, 1, 1});
  WriteNrrd<std::int64_t>("i.nrrd", "int64", {4, 1}, {-4000000000, 0, 0, 4000000000});
  auto const measure = [&](Arguments options) {
    options.insert(options.begin(), {"regions", "l.nrrd", "--intensity", "i.nrrd"});
    options.insert(options.end(), {"-o", "-"});
    return Json::parse(Output(options))["object 1"];
  };
  Json const object = measure({"--bin-count", "3", "--features", "contrast"});
  EXPECT_EQ(object["intensity"]["mean"], 0);
  EXPECT_EQ(object["texture"]["contrast"], 2.0 / 3); // levels 1 2 2 3
  WriteNrrd<std::int64_t>("i.nrrd", "int64", {4, 1}, {0, 0, 0, INT64_MAX});
  ExpectFailure({"regions", "l.nrrd", "--intensity", "i.nrrd", "--bin-count", "3", "-o", "-"},
                "has the value 9223372036854775807");
  EXPECT_TRUE(measure({"--no-texture"}).contains("intensity"));
}

TEST_F(SeluRegions, LabelsHave32Bits) {
  WriteNrrd<std::uint32_t>("l.nrrd", "uint32", {3, 1}, {4294967295u, 0, 16777217});
  Json const json = Regions({});
  EXPECT_EQ(json["maximum label"], 4294967295u);
  EXPECT_TRUE(json.contains("object 4294967295"));
  EXPECT_TRUE(json.contains("object 0016777217"));
  EXPECT_EQ(Output({"feature-image", "f.json", "--csv", "-", "--exclude", "bounding box",
                    "--exclude", "centroid", "--exclude", "status"}),
            "object,volume [px]\n16777217,1\n4294967295,1\n");
  ExpectFailure({"feature-image", "f.json", "-o", "x.nrrd"}, "the feature image of 4294967296 x ");
}

TEST_F(SeluRegions, LabelsMayBeWholeFloatingPointNumbers) {
  WriteNrrd<float>("l.nrrd", "float", {4, 1}, {0, 3, 3, 7});
  Json const json = Regions({});
  EXPECT_EQ(json["object 3"]["volume [px]"], 2);
  EXPECT_EQ(json["object 7"]["volume [px]"], 1);
}

TEST_F(SeluRegions, RelabelingNumbersFromOne) {
  WriteNrrd<std::uint32_t>("l.nrrd", "uint32", {4, 1}, {4000000000u, 0, 12, 500});
  Json const json = Regions({"--relabel"});
  EXPECT_EQ(json["maximum label"], 3);
  EXPECT_EQ(json["object 1"]["label"], 12);
  EXPECT_EQ(json["object 2"]["label"], 500);
  EXPECT_EQ(json["object 3"]["label"], 4000000000u);
  EXPECT_EQ(json["object 3"]["object"], "3");
  EXPECT_EQ(json["object 3"]["bounding box"]["x min"], 0);
}

TEST_F(SeluRegions, TableIsThatOfTheFeatureImage) {
  test::CRandomNumbers random;
  std::vector<std::uint16_t> labels(400);
  std::vector<float> values(400);
  for (auto& label : labels) label = static_cast<std::uint16_t>(random.Between(0, 12));
  for (auto& value : values) value = static_cast<float>(random.Between(-1000, 1000)) / 7;
  WriteNrrd("l.nrrd", "uint16", {10, 8, 5}, labels);
  WriteNrrd("i.nrrd", "float", {10, 8, 5}, values);
  for (std::string const texture : {"--no-texture", "--range=-150,150"}) {
    EXPECT_EQ(Output({"regions", "l.nrrd", "--intensity", "i.nrrd", texture, "-o", "f.json",
                      "--csv", "a.csv"}),
              "");
    EXPECT_EQ(Output({"feature-image", "f.json", "--csv", "b.csv"}), "");
    EXPECT_EQ(Read("a.csv"), Read("b.csv"));
    EXPECT_EQ(Output({"regions", "l.nrrd", "--intensity", "i.nrrd", texture, "--csv", "-"}),
              Read("a.csv"));
    EXPECT_EQ(test::Lines(Read("a.csv")).size(), 13u);
  }
}

TEST_F(SeluRegions, RangeMapsSignedIntensitiesForTheTexture) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {4, 1}, {1, 1, 1, 1});
  WriteNrrd<std::int16_t>("i.nrrd", "int16", {4, 1}, {-100, 0, 100, 50});
  Json const object =
      Regions({"--intensity", "i.nrrd", "--box", "--range", "-100,100"})["object 1"];
  EXPECT_EQ(object["intensity"]["mean"], 12.5); // the values as they are
  Json const texture = Json::parse(Output(
      {"texture", "i.nrrd", "--format", "json", "--range", "-100,100", "--direction", "1,0"}));
  EXPECT_EQ(object["texture"], texture["directions"][0]["features"]);
}

TEST_F(SeluRegions, AbsurdLabelsAreRefused) {
  Arguments const command = {"regions", "l.nrrd", "-o", "f.json"};
  WriteNrrd<std::int16_t>("l.nrrd", "int16", {2, 2}, {0, 1, -5, 1});
  ExpectFailure(
      command,
      "\"l.nrrd\" has the label -5, but labels are whole numbers from 0, the background, to "
      "4294967295");
  WriteNrrd<std::uint64_t>("l.nrrd", "uint64", {2, 2}, {0, 1, 4294967296, 1});
  ExpectFailure(command, "\"l.nrrd\" has the label 4294967296");
  WriteNrrd<std::uint64_t>("l.nrrd", "uint64", {2, 2}, {0, 1, ~std::uint64_t{0}, 1});
  ExpectFailure(command, "\"l.nrrd\" has the label 18446744073709551615");
  WriteNrrd<std::int64_t>("l.nrrd", "int64", {2, 2},
                          {0, 1, std::numeric_limits<std::int64_t>::min(), 1});
  ExpectFailure(command, "\"l.nrrd\" has the label -9223372036854775808");
  for (float const label : {1.5f, -1.0f, std::nanf(""), 4294967296.0f}) {
    WriteNrrd<float>("l.nrrd", "float", {2, 2}, {0, 1, label, 1});
    ExpectFailure(command, "but labels are whole numbers");
  }
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {2, 2}, {0, 0, 0, 0});
  ExpectFailure(command, "\"l.nrrd\" has no objects: all its labels are 0");
  EXPECT_EQ(Files(), std::vector<std::string>{"l.nrrd"});
}

TEST_F(SeluRegions, ImagesAndOptionsMustFit) {
  WriteNrrd<std::uint8_t>("l.nrrd", "uint8", {2, 2}, {0, 1, 1, 1});
  WriteNrrd<std::uint8_t>("i.nrrd", "uint8", {4, 1}, {0, 1, 2, 3});
  WriteNrrd<std::int16_t>("s.nrrd", "int16", {2, 2}, {0, 1, -2, 3});
  auto const with = [](Arguments const& options) {
    Arguments command = {"regions", "l.nrrd", "-o", "f.json"};
    command.insert(command.end(), options.begin(), options.end());
    return command;
  };
  ExpectFailure(with({"--intensity", "i.nrrd"}), "\"l.nrrd\" and \"i.nrrd\" have different sizes");
  ExpectFailure(with({"--intensity", "s.nrrd"}), "need --range LO,HI");
  ExpectFailure(with({"--intensity", "none.nrrd"}), "cannot read \"none.nrrd\"");
  ExpectFailure(with({"--intensity", "s.nrrd", "--range", "0,9", "--direction", "1,0,1"}),
                "needs dz = 0");
  ExpectFailure(with({"--intensity", "s.nrrd", "--range", "9,0"}), "--range", 2);
  ExpectFailure(with({"--intensity", "s.nrrd", "--direction", "1"}), "--direction", 2);
  ExpectFailure(with({"--range", "0,9"}), "which needs --intensity", 2);
  ExpectFailure(with({"--box"}), "which needs --intensity", 2);
  ExpectFailure(with({"--intensity", "s.nrrd", "--box", "--levels", "8"}), "leave out", 2);
  ExpectFailure({"regions", "l.nrrd"}, "--output", 2);
  ExpectFailure({"regions", "l.nrrd", "-o", "f", "--csv", "./f"}, "name the same file", 2);
  ExpectFailure({"regions", "l.nrrd", "-o", "no/f.json"}, "cannot write \"no/f.json\"");
  EXPECT_EQ(Files(), (std::vector<std::string>{"i.nrrd", "l.nrrd", "s.nrrd"}));
}

TEST_F(SeluRegions, RealLabelsMeasureAsByHand) {
  std::string const base = std::string(SELU_TEST_DATA) + "/prostate_phantom_subvolume";
  if (!std::filesystem::exists(base + "-label.nrrd")) GTEST_SKIP() << "no " << base << "-label";
  EXPECT_EQ(Output({"regions", base + "-label.nrrd", "--intensity", base + ".nrrd", "--range",
                    "0,2017", "-o", "f.json"}),
            "");
  Json const json = Json::parse(Read("f.json"));
  auto const labels = selu::ReadImage(base + "-label.nrrd"),
             image = selu::ReadImage(base + ".nrrd");
  std::vector<std::int64_t> names;
  std::vector<double> values;
  selu::VisitPixels(labels, [&](auto pixels) { names.assign(pixels.begin(), pixels.end()); });
  selu::VisitPixels(image, [&](auto pixels) { values.assign(pixels.begin(), pixels.end()); });
  auto const objects = MeasureByHand({82, 67, 13}, names, values);
  EXPECT_EQ(json["maximum label"], 9);
  EXPECT_EQ(json["no. of objects"], objects.size());
  for (auto const& [label, object] : objects) {
    Json const& entry = json["object " + std::to_string(label)];
    ExpectObject(entry, object, 3);
    EXPECT_GT(entry["texture"]["joint_entr"].get<double>(), 0);
  }
}

TEST_F(SeluRegions, NeitherImageIsOverwritten) {
  WriteNrrd("a.nrrd", "uint8", {2, 2}, std::vector<std::uint8_t>{0, 1, 1, 2});
  WriteNrrd("b.nrrd", "uint8", {2, 2}, std::vector<std::uint8_t>{5, 6, 7, 8});
  auto const labels = Read("a.nrrd"), intensity = Read("b.nrrd");
  ExpectFailure({"regions", "a.nrrd", "-o", "a.nrrd"}, "it is the input \"a.nrrd\"");
  ExpectFailure({"regions", "a.nrrd", "--intensity", "b.nrrd", "-o", "./b.nrrd"},
                "cannot write \"./b.nrrd\": it is the input \"b.nrrd\"");
  EXPECT_EQ(Read("a.nrrd"), labels);
  EXPECT_EQ(Read("b.nrrd"), intensity);
}

} // namespace
