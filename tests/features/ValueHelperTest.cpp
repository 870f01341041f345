#include <SeluUtils/ValueHelper.h>

#include "support/Errors.h"

#include <pxlib2core/ValueVector.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

using Texts = std::vector<std::string>;

CValueMap Object(char const* sizeKey = "volume [px]") {
  CValueMap object;
  object.SetEntry("object", CValueString("1"));
  object.SetEntry("status", CValueString("inside"));
  object.SetEntry(sizeKey, CValueLong(5));
  return object;
}

CValueMap ObjectFeatures(char const* key = "cell 1") {
  CValueMap map;
  map.SetEntry("maximum label", CValueLong(1));
  map.SetEntry("no. of objects", CValueLong(1));
  map.SetEntry(key, Object());
  return map;
}

CValueMap GrayvalueFeatures(char const* key = "level 1") {
  CValueMap map, grayvalue;
  grayvalue.SetEntry("grayvalue", CValueString("1"));
  grayvalue.SetEntry("status", CValueString("inside"));
  map.SetEntry("no. of grayvalues", CValueLong(1));
  map.SetEntry(key, grayvalue);
  return map;
}

// A map with one entry changed, or taken out where the value is invalid.
CValueMap With(CValueMap map, char const* key, CValue value) {
  if (value.IsValid())
    map.SetEntry(key, std::move(value));
  else
    map.RemoveEntry(key);
  return map;
}

// a = 1, b = {c = 2.5, d = "text"}
CValueMap SmallTree() {
  CValueMap map;
  map.SetEntry("a", CValueLong(1));
  map.SetEntry("b/c", CValueDouble(2.5));
  map.SetEntry("b/d", CValueString("text"));
  return map;
}

Texts Keys(CValueMap const& map, int mode, Texts const& excluded = {}) {
  Texts keys = {"from before"};
  ExtractKeys(map, keys, mode, excluded);
  return keys;
}

// What the operation writes to the standard error stream.
template <class Operation>
std::string Diagnostics(Operation operation) {
  testing::internal::CaptureStderr();
  operation();
  return testing::internal::GetCapturedStderr();
}

} // namespace

TEST(ObjectBasedFeatures, AreKnownByTheirEntriesAndNothingNear) {
  CValueMap const good = ObjectFeatures();
  struct StCase {
    char const* what;
    CValueMap map;
    char const* prefix;
    bool expected;
  };
  std::vector<StCase> const cases = {
      {"complete", good, "cell", true},
      {"any sub-map", good, "", true},
      {"prefix cut short", good, "cel", false},
      {"another prefix", good, "nucleus", false},
      {"no blank behind the prefix", ObjectFeatures("cells"), "cell", false},
      {"prefix not at the front", ObjectFeatures("a cell 1"), "cell", false},
      {"no maximum", With(good, "maximum label", {}), "cell", false},
      {"maximum as a double", With(good, "maximum label", CValueDouble(1)), "cell", false},
      {"no number of objects", With(good, "no. of objects", {}), "cell", false},
      {"number as a text", With(good, "no. of objects", CValueString("1")), "cell", false},
      {"no object", With(good, "cell 1", {}), "cell", false},
      {"object is no map", With(good, "cell 1", CValueLong(1)), "cell", false},
      {"no name", With(good, "cell 1/object", {}), "cell", false},
      {"name as a number", With(good, "cell 1/object", CValueLong(1)), "cell", false},
      {"no status", With(good, "cell 1/status", {}), "cell", false},
      {"status as a Boolean", With(good, "cell 1/status", CValueBool(true)), "cell", false},
      {"no size", With(good, "cell 1/volume [px]", {}), "cell", false},
      {"size as a double", With(good, "cell 1/volume [px]", CValueDouble(5)), "cell", false},
      {"pixel", With(good, "cell 1", Object("pixel")), "cell", true},
      {"voxels", With(good, "cell 1", Object("no. of voxels")), "cell", true},
      {"pixels", With(good, "cell 1", Object("no. of pixels")), "cell", true},
      {"another size", With(good, "cell 1", Object("volume")), "cell", false},
      {"one size wrong, one right", With(good, "cell 1/pixel", CValueDouble(5)), "cell", true},
      {"only the first sub-map counts", With(good, "cell 0", CValueMap()), "cell", false},
      {"no sub-map is passed over", With(good, "cell 0", CValueLong(0)), "cell", true},
      {"empty map", {}, "", false},
  };
  for (auto const& c : cases)
    EXPECT_EQ(IsObjectBasedFeaturesMap(c.map, c.prefix), c.expected) << c.what;
}

TEST(GrayvalueBasedFeatures, AreKnownByTheirEntriesAndNothingNear) {
  CValueMap const good = GrayvalueFeatures();
  struct StCase {
    char const* what;
    CValueMap map;
    char const* prefix;
    bool expected;
  };
  std::vector<StCase> const cases = {
      {"complete", good, "level", true},
      {"prefix cut short", good, "lev", false},
      {"an empty prefix asks for a blank", good, "", false},
      {"and finds one", GrayvalueFeatures(" 1"), "", true},
      {"no number of grayvalues", With(good, "no. of grayvalues", {}), "level", false},
      {"number as a double", With(good, "no. of grayvalues", CValueDouble(1)), "level", false},
      {"no sub-map", With(good, "level 1", CValueLong(1)), "level", false},
      {"no grayvalue", With(good, "level 1/grayvalue", {}), "level", false},
      {"grayvalue as a number", With(good, "level 1/grayvalue", CValueLong(1)), "level", false},
      {"no status", With(good, "level 1/status", {}), "level", false},
      {"status as a number", With(good, "level 1/status", CValueLong(1)), "level", false},
      {"only the first sub-map counts", With(good, "level 0", CValueMap()), "level", false},
  };
  for (auto const& c : cases)
    EXPECT_EQ(IsGrayvalueBasedFeaturesMap(c.map, c.prefix), c.expected) << c.what;
}

TEST(CopyMapEntries, CopiesAllButMapsUnderThePrefix) {
  CValueMap source = SmallTree(), target;
  source.SetEntry(7, CValueVector(CValueLong(1), CValueLong(2)));
  source.SetEntry("nothing", CValue());
  target.SetEntry("p a", CValueString("replaced"));
  target.SetEntry("kept", CValueLong(3));
  CopyMapEntries(target, source, "p ");
  EXPECT_EQ(target.Size(), 4u);
  EXPECT_EQ(target.Entry("p a").Long(), 1);
  EXPECT_EQ(target.Entry("p 7").Vector().Size(), 2u);
  EXPECT_TRUE(target.HasEntry("p nothing"));
  EXPECT_EQ(target.Entry("kept").Long(), 3);
}

TEST(CopyMapEntries, ReadsTheSourceAsItWas) {
  CValueMap map = SmallTree();
  CopyMapEntries(map, map, "a");
  EXPECT_EQ(map.Size(), 3u);
  EXPECT_EQ(map.Entry("aa").Long(), 1);
  // The copied entry takes the place of the very map that it comes from.
  CValueMap outer;
  outer.SetEntry("bc", SmallTree().Entry("b"));
  CopyMapEntries(outer, outer.Entry("bc").Map(), "b");
  EXPECT_EQ(outer.Entry("bc").Double(), 2.5);
  EXPECT_EQ(outer.Entry("bd").String(), CString("text"));
}

TEST(KeyList, HoldsTheLeavesThatTheModeAsksFor) {
  CValueMap map = SmallTree();
  map.SetEntry("e", CValueMap());
  map.SetEntry("f", CValueVector());
  map.SetEntry("g", CValueVector(CValueBool(true), CValuePointer::Own(3)));
  struct StCase {
    int mode;
    Texts keys;
  };
  std::vector<StCase> const cases = {
      {0, {"a", "b/c", "b/d", "g/0", "g/1"}},
      {1, {"a", "b/c", "g/0"}},
      {2, {"a", "b/c", "b/d", "g/0"}},
      {3, {"a", "b/c", "b/d", "e", "f", "g/0", "g/1"}},
      {4, {"a", "b/c", "g/0"}}, // any other mode is as 1
      {-1, {"a", "b/c", "g/0"}},
  };
  for (auto const& c : cases) EXPECT_EQ(Keys(map, c.mode), c.keys) << "mode " << c.mode;
}

TEST(KeyList, LeavesOutExcludedPathsWithAllBelow) {
  CValueMap const map = SmallTree();
  EXPECT_EQ(Keys(map, 0, {"b"}), Texts{"a"});
  EXPECT_EQ(Keys(map, 0, {"b/c", "b/x", "c"}), (Texts{"a", "b/d"}));
  EXPECT_EQ(Keys(map, 0, {""}), Texts{}); // the root
  EXPECT_EQ(Keys(map, 0, {"/b"}), (Texts{"a", "b/c", "b/d"}));
}

TEST(KeyList, MayExcludeByTheListThatItReplaces) {
  Texts keys = {"b"};
  ExtractKeys(SmallTree(), keys, 0, keys);
  EXPECT_EQ(keys, Texts{"a"});
  keys.resize(1); // the next append moves the list
  CreateKeyListRecursivly(SmallTree(), keys[0], keys, 0, keys);
  EXPECT_EQ(keys, Texts{"a"});
}

TEST(KeyList, StartsBelowTheGivenPathAndAppends) {
  struct StCase {
    char const* path;
    Texts keys;
  };
  std::vector<StCase> const cases = {
      {"", {"a", "b/c", "b/d", "e"}},
      {"top", {"top/a", "top/b/c", "top/b/d", "top/e"}},
      {"/top", {"top/a", "top/b/c", "top/b/d", "/top/e"}}, // an empty map keeps its slash
      {"/", {"/a", "/b/c", "/b/d", "//e"}},
  };
  CValueMap map = SmallTree();
  map.SetEntry("e", CValueMap());
  for (auto const& c : cases) {
    Texts keys, ofValue = {"kept"};
    CreateKeyListRecursivly(map, c.path, keys, 3, {});
    EXPECT_EQ(keys, c.keys) << c.path;
    CreateKeyListRecursivly(CValue(map), c.path, ofValue, 3, {});
    keys.insert(keys.begin(), "kept");
    EXPECT_EQ(ofValue, keys) << c.path;
  }
}

TEST(KeyList, ListsAnEmptyRootOnlyUnderAPath) {
  for (char const* const path : {"", "/"}) {
    Texts keys;
    CreateKeyListRecursivly(CValueMap(), path, keys, 3, {});
    CreateKeyListRecursivly(CValue(CValueVector()), path, keys, 3, {});
    EXPECT_EQ(keys, Texts{}) << '"' << path << '"';
  }
  Texts keys;
  CreateKeyListRecursivly(CValueLong(1), "/leaf", keys, 1, {});
  EXPECT_EQ(keys, Texts{"leaf"});
}

TEST(KeyList, ReportsItemsWithoutAValueAndGoesOn) {
  CValueMap map = SmallTree();
  map.SetEntry("aa", CValue());
  Texts keys;
  EXPECT_EQ(Diagnostics([&] { keys = Keys(map, 0); }), "Error: could not get the iterator item!\n");
  EXPECT_EQ(keys, (Texts{"a", "b/c", "b/d"}));
  map = CValueMap();
  map.SetEntry("v", CValueVector(CValue(), CValueLong(1)));
  EXPECT_EQ(Diagnostics([&] { keys = Keys(map, 0); }),
            "Error: could not instantiate the ORVA::CValueVector::item!\n");
  EXPECT_EQ(keys, Texts{"v/1"});
}

TEST(CopyMapEntries, ARefusedEntryLeavesTheTargetAsItWas) {
  CValueMap source, target;
  source.SetEntry("a", CValueLong(1));
  source.SetEntry("z", CValueLong(2));
  target.SetEntry("x a/y", CValueLong(3));
  target.SetEntry("x z", CValueLong(4));
  CValueMap const before = target;
  CopyMapEntries(target, source, "x ");
  EXPECT_EQ(target.Entry("x a"), CValueLong(1));
  target = before;
  test::ExpectError<CExBadParam>([&] { CopyMapEntries(target, source, "x z/"); },
                                 "no entry \"x z/a\" can be made: \"a\" would have to be in a "
                                 "CValueLong");
  EXPECT_EQ(target, before);
}

TEST(MapWithOperators, TakesOverNumbersAsDoubles) {
  CValueMap map = SmallTree();
  map.SetEntry("flag", CValueBool(true));
  map.SetEntry("list", CValueVector(CValueLong(4), CValueLong(5)));
  CValueMapWithOperators const sums(map, {"b/x", "list/1"});
  EXPECT_EQ(sums.m_Keys, (Texts{"a", "b/c", "flag", "list/0"}));
  EXPECT_EQ(sums.m_Excluded, (Texts{"b/x", "list/1"}));
  EXPECT_EQ(sums.Entry("a"), CValueDouble(1));
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(2.5));
  EXPECT_EQ(sums.Entry("flag"), CValueDouble(1));
  EXPECT_EQ(sums.Entry("list/0"), CValueDouble(4));
  EXPECT_FALSE(sums.HasEntry("b/d"));
  EXPECT_FALSE(sums.HasEntry("list/1"));
}

TEST(MapWithOperators, AddsTheNumbersOfAnotherMap) {
  CValueMapWithOperators sums(SmallTree(), {});
  CValueMap other;
  other.SetEntry("a", CValueBool(true));
  other.SetEntry("b/c", CValueString("7"));
  other.SetEntry("z", CValueLong(3));
  EXPECT_EQ(&(sums += other), &sums);
  EXPECT_EQ(sums.Entry("a"), CValueDouble(2));
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(2.5));
  EXPECT_FALSE(sums.HasEntry("z"));
  sums += CValueMap();
  EXPECT_EQ(sums.Entry("a"), CValueDouble(2));
}

TEST(MapWithOperators, AddsItselfAndMapsInIt) {
  CValueMapWithOperators sums(SmallTree(), {});
  sums += sums;
  EXPECT_EQ(sums.Entry("a"), CValueDouble(2));
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(5));
  // A listed entry that has become a map reads as 0, and goes while it is added.
  CValueMap inner;
  inner.SetEntry("a", CValueLong(3));
  inner.SetEntry("b/c", CValueLong(4));
  sums.SetEntry("a", inner);
  sums += sums.Entry("a").Map();
  EXPECT_EQ(sums.Entry("a"), CValueDouble(3));
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(9));
}

TEST(MapWithOperators, MakesMissingEntries) {
  CValueMapWithOperators sums(SmallTree(), {});
  sums.Clear();
  sums /= 2;
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(0));
  sums.Clear();
  sums += SmallTree();
  EXPECT_EQ(sums.Entry("b/c"), CValueDouble(2.5));
}

TEST(MapWithOperators, RefusesAPathThroughAValueThatIsNoContainer) {
  CValueMapWithOperators sums(SmallTree(), {});
  sums.SetEntry("b", CValueLong(3));
  char const* const message =
      "no entry \"b/c\" can be made: \"c\" would have to be in a CValueLong";
  test::ExpectError<CExBadParam>([&] { sums += SmallTree(); }, message);
  test::ExpectError<CExBadParam>([&] { sums /= 2; }, message);
  EXPECT_EQ(sums.Entry("a"), CValueDouble(1)); // nothing is done, the paths before included
  EXPECT_EQ(sums.Entry("b"), CValueLong(3));
  test::ExpectError<CExBadParam>([&] { sums += SmallTree(); }, message);
  EXPECT_EQ(sums.Entry("a"), CValueDouble(1));
  CValueMap map; // the leaves have the paths "a/" and "a/b"
  map.SetEntry("a", CValueMap()).Map().SetEntry("", CValueLong(5));
  map.SetEntry("a/b", CValueLong(1));
  EXPECT_THROW(CValueMapWithOperators(map, {}), CExBadParam);
}

// The list of paths is open to its user: a path may be there twice, or lie in another one.
TEST(MapWithOperators, PathsMayMeet) {
  CValueMapWithOperators sums(SmallTree(), {});
  sums.m_Keys = {"a", "a"};
  sums += SmallTree();
  EXPECT_EQ(sums.Entry("a"), CValueDouble(3)); // 1 + 1 + 1
  sums.m_Keys = {"b/c", "b"};
  sums += SmallTree();
  EXPECT_EQ(sums.Entry("b"), CValueDouble(0)); // a map reads as 0
  CValueMapWithOperators other(SmallTree(), {});
  other.m_Keys = {"b", "b/c"};
  CValueMap const before = other;
  EXPECT_THROW(other /= 2, CExBadParam);
  EXPECT_TRUE(static_cast<CValueMap const&>(other) == before);
}

TEST(MapWithOperators, DividesAsIeeeDoes) {
  CValueMap map = SmallTree();
  map.SetEntry("zero", CValueLong(0));
  CValueMapWithOperators sums(map, {});
  EXPECT_EQ(&(sums /= 2), &sums);
  EXPECT_EQ(sums.Entry("b/c").Double(), 1.25);
  sums /= 0;
  EXPECT_EQ(sums.Entry("a").Double(), std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(sums.Entry("zero").Double()));
}

TEST(MapWithOperators, DefaultIsEmptyAndCopiesAreDeep) {
  CValueMapWithOperators none;
  EXPECT_TRUE(none.IsEmpty());
  none += SmallTree();
  EXPECT_TRUE(none.IsEmpty());
  CValueMapWithOperators const sums(SmallTree(), {"a"});
  CValueMapWithOperators copy = sums;
  copy += sums;
  EXPECT_EQ(sums.Entry("b/c").Double(), 2.5);
  none = copy;
  EXPECT_EQ(none.Entry("b/c").Double(), 5);
  EXPECT_EQ(none.m_Keys, Texts{"b/c"});
  EXPECT_EQ(none.m_Excluded, Texts{"a"});
}
