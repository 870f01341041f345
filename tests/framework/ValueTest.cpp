#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

using namespace ORVA;

namespace {

constexpr char c_module[] = "framework/pxlib2core/Value";

struct StPoint {
  int x, y;
  friend bool operator==(StPoint const&, StPoint const&) = default;
};

struct StOpaque {
  int content;
};

CValueMap SmallMap() {
  CValueMap map;
  map.SetEntry("a", CValueLong(1));
  map.SetEntry("b/c", CValueDouble(2.5));
  return map;
}

// One value of every kind.
std::vector<CValue> OneOfEachKind() {
  return {CValue(),
          CValueBool(true),
          CValueLong(-7),
          CValueDouble(0.25),
          CValueString("text"),
          CValue(SmallMap()),
          CValue(CValueVector(CValueLong(1), CValueLong(2))),
          CValuePointer::Own(StPoint{1, 2})};
}

} // namespace

TEST(Value, DefaultIsInvalid) {
  CValue const value;
  EXPECT_FALSE(value.IsValid());
  EXPECT_EQ(value.Type(), CValue::EnType::Invalid);
  EXPECT_EQ(value.GenericType(), CValue::EnGenericType::None);
  EXPECT_STREQ(value.TypeName(), "CValue");
}

TEST(Value, EveryKindTellsItsTypeAndName) {
  using Type = CValue::EnType;
  using Generic = CValue::EnGenericType;
  struct StCase {
    Type type;
    Generic generic;
    char const* name;
  };
  std::vector<StCase> const cases = {
      {Type::Invalid, Generic::None, "CValue"},
      {Type::Bool, Generic::Number, "CValueBool"},
      {Type::Long, Generic::Number, "CValueLong"},
      {Type::Double, Generic::Number, "CValueDouble"},
      {Type::String, Generic::Text, "CValueString"},
      {Type::Map, Generic::Container, "CValueMap"},
      {Type::Vector, Generic::Container, "CValueVector"},
      {Type::Pointer, Generic::Object, "CValuePointer"},
  };
  auto const values = OneOfEachKind();
  ASSERT_EQ(values.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(values[i].Type(), cases[i].type) << cases[i].name;
    EXPECT_EQ(values[i].GenericType(), cases[i].generic) << cases[i].name;
    EXPECT_STREQ(values[i].TypeName(), cases[i].name);
    EXPECT_EQ(values[i].IsValid(), i != 0);
  }
}

TEST(Value, LeavesHoldWhatTheyAreGiven) {
  EXPECT_TRUE(CValueBool(true).Bool());
  EXPECT_FALSE(CValueBool().Bool());
  EXPECT_EQ(CValueLong(-7).Long(), -7);
  EXPECT_EQ(CValueLong().Long(), 0);
  EXPECT_EQ(CValueLong(std::numeric_limits<std::int32_t>::min()).Long(),
            std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(CValueDouble(0.1).Double(), 0.1);
  EXPECT_EQ(CValueDouble().Double(), 0.0);
  EXPECT_EQ(CValueString("text").String(), "text");
  EXPECT_EQ(CValueString("text and more", 4).String(), "text");
  EXPECT_EQ(CValueString("a\0b", 3).String().Size(), 3u);
  EXPECT_TRUE(CValueString().String().IsEmpty());
}

TEST(Value, LongHas32Bits) {
  static_assert(std::is_same_v<decltype(std::declval<CValue&>().Long()), std::int32_t&>);
}

TEST(Value, LongRefusesWhat32BitsCannotHold) {
  EXPECT_EQ(CValueLong(2147483647L).Long(), 2147483647);
  EXPECT_EQ(CValueLong(-2147483648LL).Long(), -2147483648);
  EXPECT_EQ(CValueLong(2147483647ULL).Long(), 2147483647);
  EXPECT_EQ(CValueLong(7u).Long(), 7);
  EXPECT_EQ(CValueLong(true).Long(), 1);
  EXPECT_EQ(CValueLong(short{-3}).Long(), -3);
  EXPECT_EQ(CValueLong('a').Long(), 97);
  EXPECT_EQ(CValueLong(U'a').Long(), 97);
  EXPECT_EQ(CValueLong(2.9).Long(), 2);
  EXPECT_EQ(CValueLong(-2.9f).Long(), -2);
  EXPECT_EQ(CValueLong(2147483647.5).Long(), 2147483647);
  EXPECT_EQ(CValueLong(-2147483648.5).Long(), -2147483648);
  struct StCase {
    std::function<void()> make;
    char const* number;
  };
  double const nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<StCase> const cases = {
      {[] { (void)CValueLong(4294967301L); }, "4294967301"},
      {[] { (void)CValueLong(2147483648LL); }, "2147483648"},
      {[] { (void)CValueLong(-2147483649LL); }, "-2147483649"},
      {[] { (void)CValueLong(2147483648u); }, "2147483648"},
      {[] { (void)CValueLong(std::numeric_limits<int64>::min()); }, "-9223372036854775808"},
      {[] { (void)CValueLong(std::numeric_limits<uint64>::max()); }, "18446744073709551615"},
      {[] { (void)CValueLong(2147483648.0); }, "2147483648"},
      {[] { (void)CValueLong(-2147483649.0); }, "-2147483649"},
      {[] { (void)CValueLong(1e300); }, "1e+300"},
      {[=] { (void)CValueLong(nan); }, "nan"},
  };
  for (auto const& c : cases)
    test::ExpectError<CExBadParam>(
        c.make, std::string(c.number) + " does not fit into the 32 bits of a CValueLong",
        "ORVA::CValueLong::CValueLong", c_module);
}

TEST(Value, StringRefusesANullText) {
  EXPECT_TRUE(CValueString(nullptr, 0).String().IsEmpty());
  test::ExpectError<CExBadParam>([] { (void)CValueString(nullptr, 3); },
                                 "a text of 3 bytes is null", "ORVA::CValueString::CValueString",
                                 c_module);
  EXPECT_THROW(CValueString(static_cast<char const*>(nullptr)), CExBadParam);
}

TEST(Value, AccessorsWriteInPlace) {
  CValue flag = CValueBool(false), number = CValueLong(1), real = CValueDouble(1);
  CValue text = CValueString("a"), map = SmallMap(), vector = CValueVector();
  flag.Bool() = true;
  number.Long() += 4;
  real.Double() *= 0.5;
  text.String() = "b";
  map.Map().SetEntry("a", CValueLong(9));
  vector.Vector().PushBack(CValueLong(3));
  EXPECT_TRUE(flag.Bool());
  EXPECT_EQ(number.Long(), 5);
  EXPECT_EQ(real.Double(), 0.5);
  EXPECT_EQ(text.String(), "b");
  EXPECT_EQ(map.Map().Entry("a").Long(), 9);
  EXPECT_EQ(vector.Vector().Entry(0).Long(), 3);
}

TEST(Value, WrongAccessorNamesBothKinds) {
  struct StAccessor {
    char const* kind;
    char const* function;
    void (*readConst)(CValue const&);
    void (*read)(CValue&);
  };
  std::vector<StAccessor> const accessors = {
      {"CValueBool", "ORVA::CValue::Bool", [](CValue const& v) { (void)v.Bool(); },
       [](CValue& v) { (void)v.Bool(); }},
      {"CValueLong", "ORVA::CValue::Long", [](CValue const& v) { (void)v.Long(); },
       [](CValue& v) { (void)v.Long(); }},
      {"CValueDouble", "ORVA::CValue::Double", [](CValue const& v) { (void)v.Double(); },
       [](CValue& v) { (void)v.Double(); }},
      {"CValueString", "ORVA::CValue::String", [](CValue const& v) { (void)v.String(); },
       [](CValue& v) { (void)v.String(); }},
      {"CValueMap", "ORVA::CValue::Map", [](CValue const& v) { (void)v.Map(); },
       [](CValue& v) { (void)v.Map(); }},
      {"CValueVector", "ORVA::CValue::Vector", [](CValue const& v) { (void)v.Vector(); },
       [](CValue& v) { (void)v.Vector(); }},
  };
  int refused = 0;
  for (CValue value : OneOfEachKind())
    for (auto const& accessor : accessors) {
      if (std::string(accessor.kind) == value.TypeName()) {
        EXPECT_NO_THROW(accessor.read(value));
        EXPECT_NO_THROW(accessor.readConst(value));
        continue;
      }
      std::string const message =
          std::string("the value is a ") + value.TypeName() + ", not a " + accessor.kind;
      test::ExpectError([&] { accessor.read(value); }, message, accessor.function, c_module);
      test::ExpectError([&] { accessor.readConst(value); }, message, accessor.function, c_module);
      ++refused;
    }
  EXPECT_EQ(refused, 8 * 6 - 6);
}

TEST(Value, CopiesShareNothing) {
  for (CValue const& value : OneOfEachKind()) {
    CValue copy = value;
    EXPECT_TRUE(copy.Equal(value)) << value.TypeName();
    EXPECT_TRUE(value.Clone().Equal(value)) << value.TypeName();
    CValue target = CValueLong(99);
    target.Copy(value);
    EXPECT_TRUE(target.Equal(value)) << value.TypeName();
  }
  CValue const map = SmallMap();
  CValue copy = map;
  copy.Map().Entry("b/c").Double() = 7;
  EXPECT_EQ(map.Map().Entry("b/c").Double(), 2.5);
  CValue const vector = CValueVector(CValue(SmallMap()), CValueLong(2));
  copy = vector;
  copy.Vector().Entry(0).Map().Clear();
  EXPECT_EQ(vector.Vector().Entry(0).Map().Size(), 2u);
}

TEST(Value, MovingLeavesTheSourceInvalid) {
  for (CValue const& value : OneOfEachKind()) {
    CValue source = value;
    CValue taken = std::move(source);
    EXPECT_FALSE(source.IsValid()); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(taken.Equal(value)) << value.TypeName();
    CValue target = CValueString("old");
    target.Move(taken);
    EXPECT_FALSE(taken.IsValid());
    EXPECT_TRUE(target.Equal(value)) << value.TypeName();
  }
}

TEST(Value, AssignmentToItselfChangesNothing) {
  for (CValue const& value : OneOfEachKind()) {
    CValue self = value;
    CValue& alias = self;
    self = alias;
    EXPECT_TRUE(self.Equal(value)) << value.TypeName();
    self = std::move(alias);
    EXPECT_TRUE(self.Equal(value)) << value.TypeName();
    self.Move(alias);
    EXPECT_TRUE(self.Equal(value)) << value.TypeName();
  }
}

TEST(Value, TakesAValueFromItsOwnInside) {
  auto const nested = [] {
    CValueMap map;
    map.SetEntry("a/b/c", CValueLong(5));
    return CValue(std::move(map));
  };
  CValue copied = nested();
  copied = copied.Map().Entry("a/b");
  EXPECT_EQ(copied.Map().Entry("c").Long(), 5);
  CValue moved = nested();
  moved = std::move(moved.Map().Entry("a/b"));
  EXPECT_EQ(moved.Map().Entry("c").Long(), 5);
  CValue leaf = nested();
  leaf.Move(leaf.Map().Entry("a/b/c"));
  EXPECT_EQ(leaf.Long(), 5);
  CValue vector = CValueVector(CValue(CValueVector(CValueLong(1), CValueLong(2))), CValueLong(3));
  vector = vector.Vector().Entry(0);
  EXPECT_EQ(vector.Vector().Entry(1).Long(), 2);
}

TEST(Value, CanBePutIntoItself) {
  CValue value = SmallMap();
  value.Map().SetEntry("self", value);
  EXPECT_EQ(value.Map().Entry("self/b/c").Double(), 2.5);
  EXPECT_FALSE(value.Map().HasEntry("self/self"));
}

TEST(Value, EqualComparesKindAndContent) {
  auto const values = OneOfEachKind();
  for (std::size_t i = 0; i < values.size(); ++i)
    for (std::size_t k = 0; k < values.size(); ++k)
      EXPECT_EQ(values[i] == values[k], i == k) << values[i].TypeName() << values[k].TypeName();
  EXPECT_FALSE(CValueLong(1) == CValueLong(2));
  EXPECT_FALSE(CValueLong(1) == CValueDouble(1));
  EXPECT_FALSE(CValueLong(1) == CValueBool(true));
  EXPECT_FALSE(CValueString("a") == CValueString("b"));
  EXPECT_TRUE(CValueDouble(0.0) == CValueDouble(-0.0));
  double const nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(CValueDouble(nan) == CValueDouble(nan));
  EXPECT_TRUE(CValue() == CValue());
}

TEST(ValuePointer, OwnedObjectsAreCopiedInDepth) {
  CValue value = CValuePointer::Own(std::vector<int>{1, 2, 3});
  CValue const copy = value;
  EXPECT_TRUE(copy.Equal(value));
  value.Pointer<std::vector<int>>()->push_back(4);
  EXPECT_EQ(copy.Pointer<std::vector<int>>()->size(), 3u);
  EXPECT_FALSE(copy.Equal(value));
}

TEST(ValuePointer, OwnedObjectsDieWithTheLastOwner) {
  auto const witness = std::make_shared<int>(1);
  {
    CValue value = CValuePointer::Own(witness);
    CValue copy = value;
    EXPECT_EQ(witness.use_count(), 3);
    copy = CValueLong(1);
    EXPECT_EQ(witness.use_count(), 2);
    CValueMap map;
    map.SetEntry("p", std::move(value));
    EXPECT_EQ(witness.use_count(), 2);
    map.RemoveEntry("p");
    EXPECT_EQ(witness.use_count(), 1);
    map.SetEntry("p", CValuePointer::Own(witness));
  }
  EXPECT_EQ(witness.use_count(), 1);
}

TEST(ValuePointer, ReferredObjectsAreShared) {
  StPoint point{1, 2};
  CValue const value = CValuePointer::Refer(&point);
  CValue copy = value;
  copy.Pointer<StPoint>()->x = 9;
  EXPECT_EQ(point.x, 9);
  EXPECT_EQ(value.Pointer<StPoint>(), &point);
  EXPECT_TRUE(copy.Equal(value));
  StPoint other = point;
  EXPECT_FALSE(value.Equal(CValuePointer::Refer(&other)));
  EXPECT_FALSE(value.Equal(CValuePointer::Own(point)));
  EXPECT_FALSE(CValuePointer::Own(point).Equal(value));
  EXPECT_EQ(CValuePointer::Refer(static_cast<StPoint*>(nullptr)).Pointer<StPoint>(), nullptr);
}

TEST(ValuePointer, GivesNullForAnotherTypeOrKind) {
  CValue value = CValuePointer::Own(StPoint{1, 2});
  EXPECT_EQ(value.Pointer<StOpaque>(), nullptr);
  EXPECT_EQ(value.Pointer<int>(), nullptr);
  EXPECT_NE(value.Pointer<StPoint>(), nullptr);
  EXPECT_EQ(CValueLong(1).Pointer<std::int32_t>(), nullptr);
  EXPECT_EQ(CValue().Pointer<StPoint>(), nullptr);
  EXPECT_FALSE(value.Equal(CValuePointer::Own(StOpaque{1})));
}

TEST(ValuePointer, ObjectsWithoutComparisonEqualOnlyThemselves) {
  CValue const value = CValuePointer::Own(StOpaque{1});
  CValue const copy = value;
  EXPECT_TRUE(value.Equal(value));
  EXPECT_FALSE(value.Equal(copy));
}

TEST(ValueMeta, TravelsWithTheValue) {
  CValue value = CValueDouble(2);
  value.Meta().SetEntry("unit", CValueString("px"));
  CValue copy = value;
  copy.Meta().SetEntry("unit", CValueString("mm"));
  EXPECT_EQ(value.Meta().Entry("unit").String(), "px");
  CValue const taken = std::move(copy);
  EXPECT_EQ(taken.Meta().Entry("unit").String(), "mm");
  EXPECT_TRUE(copy.Meta().IsEmpty()); // NOLINT(bugprone-use-after-move)
  value = CValueDouble(3);
  EXPECT_TRUE(value.Meta().IsEmpty());
}

TEST(ValueMeta, IsEmptyWithoutOneAndDoesNotCount) {
  CValue const plain = CValueDouble(2);
  EXPECT_TRUE(plain.Meta().IsEmpty());
  CValue noted = CValueDouble(2);
  noted.Meta().SetEntry("unit", CValueString("px"));
  EXPECT_TRUE(noted.Equal(plain));
}

TEST(Value, NeverThrowsOnMove) {
  static_assert(std::is_nothrow_move_constructible_v<CValue>);
  static_assert(!std::is_constructible_v<CValue, double>, "a leaf names the kind of its number");
  static_assert(!std::is_convertible_v<std::int32_t, CValueLong>);
}
