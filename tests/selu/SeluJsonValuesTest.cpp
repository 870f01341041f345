// Value maps as JSON and back.
#include "support/Random.h"

#include <base/Errors.h>
#include <base/JsonValues.h>

#include <pxlib2core/ValueVector.h>

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <limits>

namespace {

using namespace ORVA;
using EnType = CValue::EnType;

CValue Parsed(std::string const& json) {
  return selu::ParseJsonMap("{\"a\": " + json + "}").Entry("a");
}

// The sentence of the error, or an empty text where there is none.
std::string Refusal(std::string const& json) {
  try {
    (void)selu::ParseJsonMap(json);
    return {};
  } catch (selu::CAppError const& error) {
    return error.what();
  }
}

std::string WriteRefusal(CValueMap const& map) {
  try {
    (void)selu::ToJsonText(map);
    return {};
  } catch (selu::CAppError const& error) {
    return error.what();
  }
}

void ExpectRoundTrip(CValueMap const& map) {
  std::string const text = selu::ToJsonText(map);
  EXPECT_EQ(selu::ParseJsonMap(text), map) << text;
}

TEST(JsonValues, EveryKindOfValueIsWhatItsTextSays) {
  EXPECT_EQ(Parsed("true"), CValueBool(true));
  EXPECT_EQ(Parsed("false"), CValueBool(false));
  EXPECT_EQ(Parsed("7"), CValueLong(7));
  EXPECT_EQ(Parsed("-2147483648"), CValueLong(std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(Parsed("2147483647"), CValueLong(std::numeric_limits<std::int32_t>::max()));
  EXPECT_EQ(Parsed("7.0"), CValueDouble(7));
  EXPECT_EQ(Parsed("7e0"), CValueDouble(7));
  EXPECT_EQ(Parsed("0.1"), CValueDouble(0.1));
  EXPECT_EQ(Parsed("\"a\\u0000\\n\""), CValueString("a\0\n", 3));
  EXPECT_EQ(Parsed("null").Type(), EnType::Invalid);
  EXPECT_EQ(Parsed("[]").Type(), EnType::Vector);
  EXPECT_EQ(Parsed("{}").Type(), EnType::Map);
  EXPECT_EQ(Parsed("[1, [2.5, {\"b\": 3}]]").Vector().Entry(1).Vector().Entry(1).Map().Entry("b"),
            CValueLong(3));
}

TEST(JsonValues, IntegersBeyond32BitsAreDoublesWhereTheseHoldThem) {
  EXPECT_EQ(Parsed("2147483648"), CValueDouble(2147483648.0));
  EXPECT_EQ(Parsed("-2147483649"), CValueDouble(-2147483649.0));
  EXPECT_EQ(Parsed("9007199254740992"), CValueDouble(9007199254740992.0));
  EXPECT_EQ(Parsed("-9223372036854775808"), CValueDouble(-9223372036854775808.0));
  EXPECT_EQ(Parsed("18446744073709549568"), CValueDouble(18446744073709549568.0));
  EXPECT_EQ(Parsed("100000000000000000000"), CValueDouble(1e20)); // beyond 64 bits
  for (std::string const& number : std::vector<std::string>{
           "9007199254740993", "-9007199254740993", "9223372036854775807", "18446744073709551615",
           "100000000000000000001", "1" + std::string(400, '0')})
    EXPECT_NE(Refusal("{\"a\": " + number + "}"), "") << number;
  EXPECT_EQ(Refusal("{\"a\": {\"b\": 9007199254740993}}"),
            "the entry \"a/b\" is an integer that neither 32 bits nor a double hold: "
            "9007199254740993");
}

TEST(JsonValues, DoublesComeBackToTheBit) {
  for (double const value :
       {0.0, -0.0, 1.0, 0.1, 1e300, -1e-300, 4.9e-324, 1.7976931348623157e308, 2147483648.0, 1e22,
        std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()}) {
    CValueMap map;
    map.SetEntry("a", CValueDouble(value));
    double const back = selu::ParseJsonMap(selu::ToJsonText(map)).Entry("a").Double();
    EXPECT_EQ(back, value);
    EXPECT_EQ(std::signbit(back), std::signbit(value)) << value;
  }
}

TEST(JsonValues, NumbersThatJsonLacksHaveAFormOfTheirOwn) {
  CValueMap map;
  map.SetEntry("a", CValueDouble(std::nan("")));
  std::string const text = selu::ToJsonText(map);
  EXPECT_EQ(text, "{\n  \"a\": {\n    \"$number\": \"NaN\"\n  }\n}\n");
  EXPECT_TRUE(std::isnan(selu::ParseJsonMap(text).Entry("a").Double()));
  // Neither texts nor maps are mistaken for them.
  CValueMap others;
  others.SetEntry("text", CValueString("NaN"));
  others.SetEntry("map/$number", CValueString("NaN"));
  others.SetEntry("two/$number", CValueString("NaN"));
  others.SetEntry("two/b", CValueLong(1));
  ExpectRoundTrip(others);
  EXPECT_EQ(Parsed("{\"$number\": 5}").Type(), EnType::Map);
  EXPECT_EQ(Parsed("{\"$number\": \"five\"}").Type(), EnType::Map);
}

TEST(JsonValues, KeysOfEveryKindComeBack) {
  CValueMap map;
  int count = 0;
  for (CValue_Key const& key :
       std::vector<CValue_Key>{7, "7", -3, "-3", "", "$", "$7", "$$7", "$-3", "$x", "$07",
                               "volume [px]", "\xc3\xa4\n\"", std::int64_t{1} << 62})
    map.SetEntry(key, CValueLong(++count));
  ASSERT_EQ(map.Size(), static_cast<std::size_t>(count));
  ExpectRoundTrip(map);
  EXPECT_TRUE(selu::ParseJsonMap("{\"$x\": 1}").HasEntry("$x")); // as others write it
}

// A tree with values and keys of every kind.
CValue RandomValue(test::CRandomNumbers& random, int depth) {
  int const kind = random.Between(0, depth > 0 ? 7 : 5);
  switch (kind) {
  case 0:
    return {};
  case 1:
    return CValueBool(random.Between(0, 1) == 1);
  case 2:
    return CValueLong(random.Between(-1000, 1000) * 2000000);
  case 3:
    return CValueDouble(std::ldexp(random.Between(-1000000, 1000000), random.Between(-1000, 900)));
  case 4:
    return CValueDouble(random.Between(-5, 5));
  case 5:
    return CValueString(std::string(static_cast<std::size_t>(random.Between(0, 5)),
                                    static_cast<char>(random.Between(0, 127))));
  case 6: {
    CValueVector vector;
    for (int i = random.Between(0, 4); i > 0; --i) vector.PushBack(RandomValue(random, depth - 1));
    return vector;
  }
  default: {
    CValueMap map;
    for (int i = random.Between(0, 6); i > 0; --i) {
      int const number = random.Between(-9, 9);
      std::string const text =
          std::string(random.Between(0, 2) == 0 ? "$" : "") + std::to_string(number);
      map.SetEntry(random.Between(0, 1) == 0 ? CValue_Key(number) : CValue_Key(text),
                   RandomValue(random, depth - 1));
    }
    return map;
  }
  }
}

TEST(JsonValues, RandomTreesComeBack) {
  test::CRandomNumbers random;
  for (int i = 0; i < 500; ++i) {
    CValueMap map;
    for (char const* const key : {"a", "b", "c"}) map.SetEntry(key, RandomValue(random, 5));
    ExpectRoundTrip(map);
  }
}

TEST(JsonValues, NothingIsReadAsSomethingElse) {
  std::vector<std::pair<std::string, std::string>> const cases = {
      {"", "the text is no JSON from line 1, column 1 on"},
      {"{", "the text is no JSON from line 1, column 2 on"},
      {"{\n  \"a\": 1,\n  b}", "the text is no JSON from line 3, column 3 on"},
      {"{} x", "the text is no JSON from line 1, column 4 on"},
      {"{\"a\": NaN}", "the text is no JSON from line 1, column 7 on"},
      {"{\"a\": \"\xff\"}", "the text is no JSON from line 1, column 8 on"},
      {"[1]", "the JSON text is no object with keys and values"},
      {"5", "the JSON text is no object with keys and values"},
      {"null", "the JSON text is no object with keys and values"},
      {"{\"$number\": \"NaN\"}", "the JSON text is no object with keys and values"},
      {"{\"a\": {\"b\": 1, \"b\": 2}}", "the entry \"a/b\" is there twice"},
      {"{\"a/b\": 1}", "the JSON text has the key \"a/b\", but / separates the keys of a path"},
      {"{\"a\": [1, 1e999]}", "the entry \"a/1\" is a number beyond the doubles"},
  };
  for (auto const& [json, sentence] : cases) EXPECT_EQ(Refusal(json), sentence) << json;
}

TEST(JsonValues, DepthHasALimitInBothDirections) {
  auto const nested = [](std::size_t depth) {
    return "{\"a\":" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
  };
  auto const limit = static_cast<std::size_t>(selu::c_jsonDepth);
  CValueMap const deepest = selu::ParseJsonMap(nested(limit));
  ExpectRoundTrip(deepest);
  EXPECT_TRUE(Refusal(nested(limit + 1)).ends_with("is nested deeper than 100 levels"));
  EXPECT_TRUE(Refusal("{\"a\":" + std::string(1000000, '[')).ends_with("deeper than 100 levels"));
  CValueMap deeper;
  deeper.SetEntry("a", deepest);
  EXPECT_TRUE(WriteRefusal(deeper).ends_with("is nested deeper than 100 levels"));
  CValueMap maps;
  for (std::size_t i = 0; i < limit; ++i) {
    CValueMap outer;
    outer.SetEntry("m", std::move(maps));
    maps = std::move(outer);
  }
  EXPECT_TRUE(WriteRefusal(maps).ends_with("is nested deeper than 100 levels"));
  ExpectRoundTrip(maps.Entry("m").Map());
}

TEST(JsonValues, WhatJsonCannotHoldIsRefused) {
  CValueMap object, text;
  object.SetEntry("a/b", CValuePointer::Own(5));
  EXPECT_EQ(WriteRefusal(object), "the entry \"a/b\" holds an object, which JSON cannot hold");
  text.SetEntry("a", CValueString("\xff"));
  EXPECT_EQ(WriteRefusal(text), "a text or key of the map is not UTF-8, which JSON has to be");
}

TEST(JsonValues, FilesAreNamedInErrors) {
  std::string const name = testing::TempDir() + "selu-json-values-test.json";
  std::ofstream(name) << "{\"a\": 1}";
  EXPECT_EQ(selu::ReadJsonMap(name).Entry("a"), CValueLong(1));
  std::ofstream(name) << "{\"a\": 1";
  try {
    (void)selu::ReadJsonMap(name);
    ADD_FAILURE() << "read";
  } catch (selu::CAppError const& error) {
    EXPECT_EQ(error.what(),
              "cannot read \"" + name + "\": the text is no JSON from line 1, column 8 on");
  }
  std::remove(name.c_str());
  EXPECT_THROW((void)selu::ReadJsonMap(name), selu::CAppError);
  EXPECT_THROW((void)selu::ReadJsonMap(testing::TempDir()), selu::CAppError);
}

} // namespace
