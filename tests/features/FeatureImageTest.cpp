#include <SeluUtils/ValueHelper.h>

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Printers.h"
#include "support/Random.h"

#include <pxlib2core/ValueVector.h>
#include <pxlib2image/HeaderTools.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <sys/resource.h>

using namespace ORVA;
using test::ExpectError;

namespace {

using Texts = std::vector<std::string>;
using Row = std::vector<float>;

char const c_source[] = "src/Utils/ValueHelper";
char const c_function[] = "ORVA::ConvertObjectBasedFeaturesIntoFeatureImage";

CValueMap Features(std::int32_t maximum) {
  CValueMap features;
  features.SetEntry("maximum label", CValueLong(maximum));
  return features;
}

CImage Image() { return {IMAGE_GREY_F, CSize(1, 1)}; }

CImage Convert(CValueMap const& features, Texts const& excluded = {},
               char const* idKey = "object") {
  CImage image = Image();
  ConvertObjectBasedFeaturesIntoFeatureImage("shape", features, idKey, image, excluded);
  return image;
}

std::vector<Row> Rows(CImage const& image) {
  auto const pixels = test::Pixels<float>(image);
  auto const width = image.Size().x;
  std::vector<Row> rows;
  for (auto row = pixels.begin(); row != pixels.end(); row += width)
    rows.emplace_back(row, row + width);
  return rows;
}

Texts TextsOf(CValue const& vector) {
  Texts texts;
  for (auto const& value : vector.Vector()) texts.push_back(value.String().Std());
  return texts;
}

Texts Attribute(CImage const& image, char const* key) {
  return TextsOf(image.Attributes().Entry(key));
}

std::pair<double, double> MinMax(CImage const& image) {
  CValue value;
  if (!CSeluHeaderTools::GetMetaInfo(image, CSeluHeaderTools::c_sMetaMinMax, value))
    return {-1, -1};
  return {value.Vector().Entry(0).Double(), value.Vector().Entry(1).Double()};
}

// Three objects of which the second is missing.
CValueMap Cells() {
  CValueMap features = Features(3);
  features.SetEntry("object 1/object", CValueString("object 1"));
  features.SetEntry("object 1/size/volume [px]", CValueLong(12));
  features.SetEntry("object 1/flat", CValueBool(true));
  features.SetEntry("object 1/mean", CValueDouble(2.5));
  features.SetEntry("object 1/status", CValueString("inside"));
  features.SetEntry("object 3/size/volume [px]", CValueLong(7));
  features.SetEntry("object 3/flat", CValueBool(false));
  features.SetEntry("object 3/status", CValueString("border"));
  features.SetEntry("object 3/unknown to the first", CValueLong(99));
  return features;
}

// The feature of an object as the image has it; invalid where the image has no such row.
CValue ReadBack(CImage const& image, std::string const& path, int64 label) {
  Texts const keys = Attribute(image, "Image/y-keys"), types = Attribute(image, "Image/y-types");
  for (std::size_t row = 1; row < keys.size(); ++row) {
    if (keys[row] != path) continue;
    float const pixel = Rows(image)[row][static_cast<std::size_t>(label)];
    if (types[row] == "numeric") return CValueDouble(pixel);
    CValueMap const& lookup = image.Attributes().Entry("Image/label-lookup").Map();
    return lookup.Entry(path).Vector().Entry(static_cast<int64>(pixel));
  }
  return {};
}

} // namespace

TEST(FeatureImage, HasAColumnALabelAndARowAFeature) {
  CImage const image = Convert(Cells());
  EXPECT_EQ(image.Size(), CSize(4, 5));
  EXPECT_EQ(Rows(image), (std::vector<Row>{{0, 1, 2, 3},    // labels
                                           {0, 1, 0, 0},    // flat
                                           {0, 2.5, 0, 0},  // mean
                                           {0, 12, 0, 7},   // size/volume [px]
                                           {0, 2, 0, 1}})); // status: "", "border", "inside"
}

TEST(FeatureImage, SaysWhatItsRowsMean) {
  CImage const image = Convert(Cells());
  CValueMap const& attributes = image.Attributes();
  EXPECT_EQ(attributes.Entry("Image/ContentType"), CValueString("FeatureImage"));
  EXPECT_EQ(attributes.Entry("Image/featurename"), CValueString("shape"));
  EXPECT_EQ(attributes.Entry("Image/unique-id-key"), CValueString("object"));
  EXPECT_EQ(Attribute(image, "Image/y-keys"),
            (Texts{"object", "flat", "mean", "size/volume [px]", "status"}));
  EXPECT_EQ(Attribute(image, "Image/y-types"),
            (Texts{"numeric", "numeric", "numeric", "numeric", "label"}));
  CValueMap const& lookup = attributes.Entry("Image/label-lookup").Map();
  EXPECT_EQ(lookup.Size(), 1u);
  EXPECT_EQ(TextsOf(lookup.Entry("status")), (Texts{"", "border", "inside"}));
  EXPECT_EQ(attributes.Entry("Features/shape").Map(), Cells());
  EXPECT_EQ(MinMax(image), (std::pair{0.0, 12.0}));
}

TEST(FeatureImage, LeavesOutWhatIsExcluded) {
  CImage const image = Convert(Cells(), {"size", "flat", "no such feature"});
  EXPECT_EQ(Attribute(image, "Image/y-keys"), (Texts{"object", "mean", "status"}));
  EXPECT_EQ(image.Size(), CSize(4, 3));
}

TEST(FeatureImage, MayHoldNothingButLabels) {
  CValueMap features = Features(2);
  features.SetEntry("object 2", CValueMap());
  CImage const image = Convert(features);
  EXPECT_EQ(Rows(image), (std::vector<Row>{{0, 1, 2}}));
  EXPECT_EQ(MinMax(image), (std::pair{0.0, 2.0}));
}

TEST(FeatureImage, PadsLabelsToTheDigitsOfTheMaximum) {
  struct StCase {
    std::int32_t maximum;
    char const* read;
    char const* passedOver;
    std::size_t label;
  };
  std::vector<StCase> const cases = {
      {9, "object 7", "object 07", 7},       {10, "object 07", "object 7", 7},
      {99, "object 07", "object 007", 7},    {100, "object 007", "object 07", 7},
      {250, "object 250", "object 25", 250}, {1000, "object 0007", "object 007", 7},
      {9, "object 0", "object x", 0},
  };
  for (auto const& c : cases) {
    CValueMap features = Features(c.maximum);
    features.SetEntry(std::string(c.read) + "/f", CValueLong(5));
    features.SetEntry(std::string(c.passedOver) + "/f", CValueLong(6));
    Row expected(static_cast<std::size_t>(c.maximum) + 1);
    expected[c.label] = 5;
    EXPECT_EQ(Rows(Convert(features))[1], expected) << c.read << " of " << c.maximum;
  }
}

TEST(FeatureImage, NumbersTextsInTheirSortedOrder) {
  CValueMap features = Features(3);
  features.SetEntry("cell 0/t", CValueString("pear"));
  features.SetEntry("cell 1/t", CValueString("apple"));
  features.SetEntry("cell 2/t", CValueString("pear"));
  features.SetEntry("cell 3/t", CValueString("Zebra"));
  CImage const image = Convert(features, {}, "cell");
  EXPECT_EQ(Rows(image)[1], (Row{2, 1, 2, 0}));
  // Every label has a text, so the empty one is not among them.
  EXPECT_EQ(TextsOf(image.Attributes().Entry("Image/label-lookup/t")),
            (Texts{"Zebra", "apple", "pear"}));
}

TEST(FeatureImage, FindsFeaturesInVectorsAndUnderNumbers) {
  CValueMap features = Features(2), numbered;
  numbered.SetEntry(7, CValueLong(70));
  numbered.SetEntry("v", CValueVector(CValueLong(1), CValueString("x")));
  features.SetEntry("object 1", numbered);
  features.SetEntry("object 2/v", CValueVector(CValueLong(2), CValueString("y")));
  features.SetEntry("object 2/7", CValueLong(71)); // a text this time
  CImage const image = Convert(features);
  EXPECT_EQ(Attribute(image, "Image/y-keys"), (Texts{"object", "7", "v/0", "v/1"}));
  EXPECT_EQ(Rows(image)[1], (Row{0, 70, 71}));
  EXPECT_EQ(Rows(image)[2], (Row{0, 1, 2}));
  EXPECT_EQ(Rows(image)[3], (Row{0, 1, 2}));
  EXPECT_EQ(ReadBack(image, "v/1", 2), CValueString("y"));
}

TEST(FeatureImage, ReadsNumbersOfAnyKind) {
  CValueMap features = Features(4);
  features.SetEntry("object 1/f", CValueDouble(0.5));
  features.SetEntry("object 2/f", CValueLong(3));
  features.SetEntry("object 3/f", CValueBool(true));
  features.SetEntry("object 4/f", CValue()); // as good as missing
  EXPECT_EQ(Rows(Convert(features))[1], (Row{0, 0.5, 3, 1, 0}));
}

TEST(FeatureImage, KeepsTheLargestPixelInItsHeader) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  struct StCase {
    double value, largest;
  };
  std::vector<StCase> const cases = {
      {-5, 2}, {2, 2}, {2.5, 2.5}, {NAN, 2}, {1e300, infinity}, {0.1 + 1e3, 1000.1F}};
  for (auto const& c : cases) {
    CValueMap features = Features(2);
    features.SetEntry("object 1/f", CValueDouble(c.value));
    EXPECT_EQ(MinMax(Convert(features)), (std::pair{0.0, c.largest})) << c.value;
  }
}

TEST(FeatureImage, ReadsBackIntoTheMapItCameFrom) {
  CValueMap const features = Cells();
  CImage const image = Convert(features);
  for (int64 const label : {1, 3})
    for (char const* const path : {"flat", "mean", "size/volume [px]", "status"}) {
      auto const key = "object " + std::to_string(label) + "/" + path;
      CValue const back = ReadBack(image, path, label);
      CValue const& original = features.Entry(key);
      if (original.Type() == CValue::EnType::String)
        EXPECT_EQ(back, original) << key;
      else if (original.Type() == CValue::EnType::Long)
        EXPECT_EQ(back.Double(), original.Long()) << key;
      else if (original.Type() == CValue::EnType::Bool)
        EXPECT_EQ(back.Double(), original.Bool()) << key;
      else
        EXPECT_EQ(back.Double(), original.IsValid() ? original.Double() : 0) << key;
    }
}

TEST(FeatureImage, ReadsRandomFeaturesBack) {
  test::CRandomNumbers random;
  for (int round = 0; round < 50; ++round) {
    auto const maximum = random.Between<std::int32_t>(1, 120);
    auto const digits = std::to_string(maximum).size();
    CValueMap features = Features(maximum);
    std::vector<std::pair<std::string, int64>> objects;
    for (int64 label = 0; label <= maximum; ++label) {
      if (label < maximum && random.Between(0, 2) == 0) continue;
      auto number = std::to_string(label);
      number.insert(0, digits - number.size(), '0');
      std::string const id = "cell " + number;
      objects.emplace_back(id, label);
      features.SetEntry(id + "/a/number", CValueDouble(random.Between(-100, 100)));
      features.SetEntry(id + "/a/text", CValueString(std::to_string(random.Between(0, 20))));
      features.SetEntry(id + "/b", CValueLong(random.Between(-100, 100)));
    }
    CImage const image = Convert(features, {}, "cell");
    for (auto const& [id, label] : objects) {
      EXPECT_EQ(ReadBack(image, "a/number", label), features.Entry(id + "/a/number"));
      EXPECT_EQ(ReadBack(image, "a/text", label), features.Entry(id + "/a/text"));
      EXPECT_EQ(ReadBack(image, "b", label).Double(), features.Entry(id + "/b").Long());
    }
  }
}

TEST(FeatureImage, ConvertsTheCopyThatItCarries) {
  CImage image = Convert(Cells());
  CImage const before = image;
  ConvertObjectBasedFeaturesIntoFeatureImage(
      "shape", image.Attributes().Entry("Features/shape").Map(), "object", image, {});
  EXPECT_EQ(image, before);
}

TEST(FeatureImage, TakesItsNamesFromTheImageThatItWrites) {
  CImage image = Convert(Cells());
  CImage const before = image;
  CValueMap const& attributes = image.Attributes();
  ConvertObjectBasedFeaturesIntoFeatureImage(attributes.Entry("Image/featurename").String().Std(),
                                             attributes.Entry("Features/shape").Map(),
                                             attributes.Entry("Image/unique-id-key").String().Std(),
                                             image, {});
  EXPECT_EQ(image, before);
}

TEST(FeatureImage, AMapGivenAwayMovesIntoTheImage) {
  CValueMap features = Cells();
  CImage image = Image();
  ConvertObjectBasedFeaturesIntoFeatureImage("shape", std::move(features), "object", image, {});
  EXPECT_EQ(image, Convert(Cells()));
  EXPECT_TRUE(features.IsEmpty());
}

TEST(FeatureImage, AnErrorLeavesAMapGivenAwayInPlace) {
  CValueMap features = Cells();
  features.SetEntry("maximum label", CValueLong(-1));
  CValueMap const before = features;
  CImage image = Image();
  EXPECT_THROW(
      ConvertObjectBasedFeaturesIntoFeatureImage("shape", std::move(features), "object", image, {}),
      CExBadParam);
  EXPECT_EQ(features, before);
  // Attributes that cannot take the rest of what is written, either.
  features = Cells();
  for (char const* const attribute : {"Image", "Header", "Features"}) {
    SCOPED_TRACE(attribute);
    image = Image();
    image.Attributes().SetEntry(attribute, CValueLong(1));
    EXPECT_THROW(ConvertObjectBasedFeaturesIntoFeatureImage("shape", std::move(features), "object",
                                                            image, {}),
                 CExBadParam);
    EXPECT_EQ(features, Cells());
  }
}

TEST(FeatureImage, RefusesMapsItCannotConvert) {
  CValueMap unlabeled = Cells(), zero = Cells(), text = Cells(), noObjects = Features(3);
  unlabeled.RemoveEntry("maximum label");
  zero.SetEntry("maximum label", CValueLong(0));
  text.SetEntry("maximum label", CValueString("3"));
  noObjects.SetEntry("object 1", CValueLong(1));
  noObjects.SetEntry("objects 1", CValueMap());
  noObjects.SetEntry("an object 1", CValueMap());
  char const* const noLabel = "no entry 'maximum label' found in object features value map!";
  struct StCase {
    CValueMap map;
    char const* message;
  };
  std::vector<StCase> const cases = {
      {unlabeled, noLabel},
      {zero, noLabel},
      {text, noLabel},
      {noObjects, "no objects found in object features value map!"},
      {{}, "no objects found in object features value map!"},
  };
  for (auto const& c : cases) {
    CImage image = Image();
    ExpectError(
        [&] { ConvertObjectBasedFeaturesIntoFeatureImage("shape", c.map, "object", image, {}); },
        c.message, c_function, c_source);
    EXPECT_EQ(image, Image());
  }
  CImage gray(IMAGE_GREY_32, CSize(1, 1));
  ExpectError([&] { ConvertObjectBasedFeaturesIntoFeatureImage("shape", {}, "object", gray, {}); },
              "Feature image type must be ORVA::IMAGE_GREY_F.", c_function, c_source);
}

TEST(FeatureImage, RefusesAMaximumLabelThatLies) {
  struct StCase {
    std::int32_t maximum;
    char const* message;
  };
  std::vector<StCase> const cases = {
      {-1, "maximum label -1 is negative"},
      {2, "\"object 3\" lies beyond the maximum label 2"},
      {2147483647, "maximum label 2147483647 is out of proportion to 2 objects"},
      {100000000, "maximum label 100000000 is out of proportion to 2 objects"},
  };
  for (auto const& c : cases) {
    CValueMap features = Cells();
    features.SetEntry("maximum label", CValueLong(c.maximum));
    CImage image = Image();
    ExpectError<CExBadParam>(
        [&] { ConvertObjectBasedFeaturesIntoFeatureImage("shape", features, "object", image, {}); },
        c.message, c_function, c_source);
    EXPECT_EQ(image, Image());
  }
  CValueMap endless = Cells();
  endless.SetEntry("object 99999999999999999999/mean", CValueDouble(1));
  ExpectError<CExBadParam>([&] { Convert(endless); },
                           "\"object 99999999999999999999\" lies beyond the maximum label 3",
                           c_function, c_source);
}

// In a process of its own, which may have 200 MiB: the image needs 229.
TEST(FeatureImageDeathTest, RefusesAnImageThatMemoryCannotHold) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "the sanitizer needs more address space than that for itself";
#endif
  auto const convert = [] {
    CValueMap features = Features(60000000);
    features.SetEntry("object 00000001", CValueMap());
    CImage image = Image();
    ExpectError<CExBadParam>(
        [&] { ConvertObjectBasedFeaturesIntoFeatureImage("shape", features, "object", image, {}); },
        "no memory for a feature image of 60000001 labels and 0 features", c_function, c_source);
    EXPECT_EQ(image, Image());
  };
  auto const limited = [&] {
    rlimit const limit = {200U << 20, 200U << 20};
    if (::setrlimit(RLIMIT_AS, &limit) != 0) std::exit(2);
    convert();
    std::exit(HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(limited(), testing::ExitedWithCode(0), "");
}

TEST(FeatureImage, RefusesTextsAmongNumbersAndNumbersAmongTexts) {
  CValueMap features = Cells();
  features.SetEntry("object 3/mean", CValueString("2.5"));
  ExpectError<CExBadParam>(
      [&] { Convert(features); },
      "\"object 3/mean\" is a CValueString, unlike the same feature of the first object",
      c_function, c_source);
  features = Cells();
  features.SetEntry("object 3/status", CValueLong(2));
  ExpectError<CExBadParam>(
      [&] { Convert(features); },
      "\"object 3/status\" is a CValueLong, unlike the same feature of the first object",
      c_function, c_source);
}

TEST(FeatureImage, RefusesAPathThatNamesSomethingElseThanItsLeaf) {
  // The number 7 is a leaf, but as a text its path names the map beside it.
  CValueMap object;
  object.SetEntry(7, CValueLong(1));
  object.SetEntry("7", CValueMap());
  CValueMap features = Features(1);
  features.SetEntry("object 1", object);
  CImage image = Image();
  ExpectError(
      [&] { ConvertObjectBasedFeaturesIntoFeatureImage("shape", features, "object", image, {}); },
      "Value type CValueMap not supported.", "ConvertObjectBasedFeaturesIntoFeatureImage");
  EXPECT_EQ(Rows(image), (std::vector<Row>{{0, 1}, {0, 0}})); // resized, the labels written
}
