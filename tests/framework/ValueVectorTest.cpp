#include <pxlib2core/ValueKey.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <string>
#include <vector>

using namespace ORVA;

namespace {

constexpr char c_module[] = "framework/pxlib2core/ValueVector";
constexpr int64 c_largest = std::numeric_limits<int64>::max();
constexpr int64 c_smallest = std::numeric_limits<int64>::min();

CValueVector Numbers(std::vector<std::int32_t> const& numbers) {
  CValueVector vector;
  for (auto const number : numbers) vector.PushBack(CValueLong(number));
  return vector;
}

std::vector<std::int32_t> Longs(CValueVector const& vector) {
  std::vector<std::int32_t> numbers;
  for (CValue const& value : vector) numbers.push_back(value.Long());
  return numbers;
}

} // namespace

TEST(ValueVector, StartsEmptyOrWithTwoValues) {
  EXPECT_TRUE(CValueVector().IsEmpty());
  EXPECT_EQ(CValueVector().Size(), 0u);
  CValueVector const pair(CValueDouble(0.0), CValueString("x"));
  EXPECT_EQ(pair.Size(), 2u);
  EXPECT_FALSE(pair.IsEmpty());
  EXPECT_EQ(pair.Entry(0).Double(), 0.0);
  EXPECT_EQ(pair.Entry(1).String(), "x");
}

TEST(ValueVector, KeepsTheOrderOfPushBack) {
  EXPECT_EQ(Longs(Numbers({3, 1, 2})), (std::vector<std::int32_t>{3, 1, 2}));
}

TEST(ValueVector, SetEntryReplacesOrAppends) {
  CValueVector vector = Numbers({1, 2});
  vector.SetEntry(0, CValueLong(7));
  vector.SetEntry(2, CValueLong(8));
  EXPECT_EQ(Longs(vector), (std::vector<std::int32_t>{7, 2, 8}));
}

TEST(ValueVector, FindGivesNullOutside) {
  CValueVector vector = Numbers({1, 2});
  CValueVector const& constVector = vector;
  for (int64 const index : {int64{-1}, int64{2}, c_largest, c_smallest}) {
    EXPECT_EQ(vector.Find(index), nullptr) << index;
    EXPECT_EQ(constVector.Find(index), nullptr) << index;
  }
  vector.Find(1)->Long() = 9;
  EXPECT_EQ(constVector.Find(1)->Long(), 9);
}

TEST(ValueVector, IndexOutsideIsRefused) {
  for (int64 const index : {int64{-1}, int64{3}, c_largest, c_smallest}) {
    CValueVector vector = Numbers({1, 2});
    CValueVector const& constVector = vector;
    std::string const message =
        "index " + std::to_string(index) + " does not fit a vector of 2 values";
    test::ExpectError<CExBadParam>([&] { (void)vector.Entry(index); }, message,
                                   "ORVA::CValueVector::Entry", c_module);
    test::ExpectError<CExBadParam>([&] { (void)constVector.Entry(index); }, message,
                                   "ORVA::CValueVector::Entry", c_module);
    test::ExpectError<CExBadParam>([&] { vector.SetEntry(index, CValueLong(0)); }, message,
                                   "ORVA::CValueVector::SetEntry", c_module);
    test::ExpectError<CExBadParam>([&] { vector.Detach(index); }, message,
                                   "ORVA::CValueVector::Detach", c_module);
    EXPECT_EQ(Longs(vector), (std::vector<std::int32_t>{1, 2}));
  }
  CValueVector vector = Numbers({1, 2});
  EXPECT_THROW((void)vector.Entry(2), CExBadParam);
  EXPECT_THROW(vector.Detach(2), CExBadParam);
}

TEST(ValueVector, DetachMovesTheRestUp) {
  CValueVector vector = Numbers({1, 2, 3});
  EXPECT_EQ(vector.Detach(0).Long(), 1);
  EXPECT_EQ(Longs(vector), (std::vector<std::int32_t>{2, 3}));
  EXPECT_EQ(vector.Detach(1).Long(), 3);
  EXPECT_EQ(vector.Detach(0).Long(), 2);
  EXPECT_TRUE(vector.IsEmpty());
}

TEST(ValueVector, CopiesShareNothing) {
  CValueVector const original(CValue(Numbers({1, 2})), CValueLong(3));
  CValueVector copy = original;
  copy.Entry(0).Vector().Entry(0).Long() = 99;
  CValueVector assigned;
  assigned = original;
  assigned.Entry(1).Long() = 98;
  EXPECT_EQ(original.Entry(0).Vector().Entry(0).Long(), 1);
  EXPECT_EQ(original.Entry(1).Long(), 3);
}

TEST(ValueVector, MovedFromIsEmpty) {
  CValueVector source = Numbers({1, 2});
  CValueVector taken = std::move(source);
  EXPECT_TRUE(source.IsEmpty()); // NOLINT(bugprone-use-after-move)
  source = std::move(taken);
  EXPECT_TRUE(taken.IsEmpty()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(Longs(source), (std::vector<std::int32_t>{1, 2}));
}

TEST(ValueVector, TakesItselfAndItsInside) {
  CValueVector vector = Numbers({1, 2});
  CValueVector& alias = vector;
  vector = alias;
  EXPECT_EQ(vector.Size(), 2u);
  vector = std::move(alias);
  EXPECT_EQ(vector.Size(), 2u);
  vector.PushBack(vector);
  EXPECT_EQ(vector.Entry(2).Vector(), Numbers({1, 2}));
  for (int i = 0; i < 20; ++i) vector.PushBack(vector.Entry(0)); // over several reallocations
  EXPECT_EQ(vector.Entry(22).Long(), 1);
  vector.SetEntry(0, vector.Entry(2));
  CValueVector copied = vector;
  copied = copied.Entry(0).Vector();
  EXPECT_EQ(copied, Numbers({1, 2}));
  vector = std::move(vector.Entry(0).Vector());
  EXPECT_EQ(vector, Numbers({1, 2}));
}

TEST(ValueVector, ComparesInDepth) {
  EXPECT_EQ(Numbers({1, 2}), Numbers({1, 2}));
  EXPECT_NE(Numbers({1, 2}), Numbers({2, 1}));
  EXPECT_NE(Numbers({1, 2}), Numbers({1, 2, 3}));
  EXPECT_EQ(CValueVector(), CValueVector());
}

TEST(ValueKey, NumberOrText) {
  CValue_Key const number(7), text("7");
  EXPECT_FALSE(number.IsText());
  EXPECT_EQ(number.Number(), 7);
  EXPECT_TRUE(number.Text().empty());
  EXPECT_EQ(number.ToString(), "7");
  EXPECT_TRUE(text.IsText());
  EXPECT_EQ(text.Text(), "7");
  EXPECT_EQ(text.Number(), 0);
  EXPECT_EQ(text.ToString(), "7");
  EXPECT_NE(number, text);
  EXPECT_NE(CValue_Key(0), CValue_Key(""));
}

TEST(ValueKey, EveryIntegerTypeMakesTheSameKey) {
  EXPECT_EQ(CValue_Key(7), CValue_Key(int64{7}));
  EXPECT_EQ(CValue_Key(7), CValue_Key(7u));
  EXPECT_EQ(CValue_Key(7), CValue_Key(std::size_t{7}));
  EXPECT_EQ(CValue_Key(-1).ToString(), "-1");
  EXPECT_EQ(CValue_Key(4294967295u).Number(), 4294967295);
  EXPECT_EQ(CValue_Key(c_smallest).ToString(), "-9223372036854775808");
  EXPECT_EQ(CValue_Key(uint64{9223372036854775807u}).Number(), c_largest);
  EXPECT_FALSE(CValue_Key(0).IsText()); // not a null text
}

TEST(ValueKey, EveryTextTypeMakesTheSameKey) {
  EXPECT_EQ(CValue_Key("a"), CValue_Key(std::string("a")));
  EXPECT_EQ(CValue_Key("a"), CValue_Key(CString("a")));
}

TEST(ValueKey, FixedKeysAreTexts) {
  std::vector<std::pair<EnFixedKey, char const*>> const cases = {
      {EnFixedKey::MaximumLabel, "maximum label"},
      {EnFixedKey::NumberOfObjects, "no. of objects"},
      {EnFixedKey::NumberOfGrayvalues, "no. of grayvalues"},
      {EnFixedKey::Object, "object"},
      {EnFixedKey::Status, "status"},
  };
  for (auto const& [key, text] : cases) EXPECT_EQ(CValue_Key(key), CValue_Key(text));
}

TEST(ValueKey, SortsNumbersByValueThenTextsByBytes) {
  std::vector<CValue_Key> const ascending = {c_smallest, -1,  0,   9,    10,  c_largest, "", "10",
                                             "9",        "Z", "a", "aa", "b", "\xC3\xA4"};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t k = 0; k < ascending.size(); ++k) {
      EXPECT_EQ(ascending[i] < ascending[k], i < k) << i << ' ' << k;
      EXPECT_EQ(ascending[i] == ascending[k], i == k) << i << ' ' << k;
    }
}

TEST(ValueKey, RefusesWhatIsNoKey) {
  constexpr char module[] = "framework/pxlib2core/ValueKey";
  constexpr char function[] = "ORVA::CValue_Key::CValue_Key";
  char const* const null = nullptr;
  test::ExpectError<CExBadParam>([&] { CValue_Key key(null); }, "key text is null", function,
                                 module);
  test::ExpectError<CExBadParam>(
      [] { CValue_Key key(uint64{9223372036854775808u}); },
      "key 9223372036854775808 is larger than the largest 64-bit signed integer", function, module);
  test::ExpectError<CExBadParam>(
      [] { CValue_Key key(std::numeric_limits<uint64>::max()); },
      "key 18446744073709551615 is larger than the largest 64-bit signed integer", function,
      module);
  test::ExpectError<CExBadParam>([] { CValue_Key key(static_cast<EnFixedKey>(5)); },
                                 "there is no fixed key 5", function, module);
  test::ExpectError<CExBadParam>([] { CValue_Key key(static_cast<EnFixedKey>(-1)); },
                                 "there is no fixed key -1", function, module);
  static_assert(!std::is_constructible_v<CValue_Key, bool>);
  static_assert(!std::is_constructible_v<CValue_Key, char>);
}
