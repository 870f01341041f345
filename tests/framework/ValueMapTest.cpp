#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

constexpr char c_module[] = "framework/pxlib2core/ValueMap";
constexpr char c_setEntry[] = "ORVA::CValueMap::SetEntry";

// a = 1, b = {c = 2, v = [10, {d = 3}]}
CValueMap Tree() {
  CValueMap inner;
  inner.SetEntry("d", CValueLong(3));
  CValueMap map;
  map.SetEntry("a", CValueLong(1));
  map.SetEntry("b/c", CValueLong(2));
  map.SetEntry("b/v", CValueVector(CValueLong(10), CValue(std::move(inner))));
  return map;
}

std::vector<std::string> Names(CValueMap const& map) {
  std::vector<std::string> names;
  for (auto const& key : map.Keys()) names.push_back(key.ToString());
  return names;
}

} // namespace

static_assert(std::bidirectional_iterator<CValueMap::const_iterator>);

TEST(ValueMap, StartsEmpty) {
  CValueMap const map;
  EXPECT_TRUE(map.IsEmpty());
  EXPECT_EQ(map.Size(), 0u);
  EXPECT_EQ(map.begin(), map.end());
  EXPECT_TRUE(map.Keys().empty());
}

TEST(ValueMap, SetEntryStoresAndReplaces) {
  CValueMap map;
  map.SetEntry("a", CValueLong(1));
  map.SetEntry("a", CValueString("x"));
  EXPECT_EQ(map.Size(), 1u);
  EXPECT_EQ(map.Entry("a").String(), "x");
}

TEST(ValueMap, SetEntryGivesTheValueInItsPlace) {
  CValueMap map = Tree();
  for (char const* path :
       {"a", "x", "y/z", "b/x", "b/x2/y", "b/v/0", "b/v/1/x/y", "b/v/2", "b/v/3/x"}) {
    CValue const* const placed = &map.SetEntry(path, CValueLong(5));
    EXPECT_EQ(placed, map.Find(path)) << path;
  }
  map.Entry("i", true);
  CValue const* const set = &map.SetEntry("i/j/k", CValueLong(5));
  EXPECT_EQ(set, map.Find("i/j/k"));
  CValue const* const created = &map.Entry("n/m", true);
  EXPECT_EQ(created, map.Find("n/m"));
}

TEST(ValueMap, IteratesNumbersByValueThenTextsByBytes) {
  CValueMap map;
  std::vector<CValue_Key> const ascending = {std::numeric_limits<int64>::min(),
                                             -1,
                                             2,
                                             10,
                                             std::numeric_limits<int64>::max(),
                                             "",
                                             "Z",
                                             "a",
                                             "aa"};
  for (auto key = ascending.rbegin(); key != ascending.rend(); ++key)
    map.SetEntry(*key, CValueString(key->ToString()));
  EXPECT_EQ(map.Keys(), ascending);
  std::size_t i = 0;
  for (auto entry = map.begin(); entry != map.end(); ++entry, ++i) {
    EXPECT_EQ(entry.Key(), ascending[i]);
    EXPECT_EQ(entry.Value().String(), ascending[i].ToString());
  }
  EXPECT_EQ(i, ascending.size());
}

TEST(ValueMap, IteratorsStepAsTheirOwnType) {
  CValueMap const map = Tree();
  auto at = map.begin();
  EXPECT_EQ((++at).Key(), CValue_Key("b"));
  EXPECT_EQ((--at).Key(), CValue_Key("a"));
  EXPECT_EQ((at++).Key(), CValue_Key("a"));
  EXPECT_EQ((at--).Key(), CValue_Key("b"));
  EXPECT_EQ(at, map.begin());
  EXPECT_EQ(std::next(at).Key(), CValue_Key("b"));
  EXPECT_EQ(std::ranges::distance(map), 2);
  for (auto const& [key, value] : map) EXPECT_EQ(map.Find(key), &value);
}

TEST(ValueMap, PathsDescendThroughMapsAndVectors) {
  CValueMap map = Tree();
  CValueMap const& constMap = map;
  struct StCase {
    char const* path;
    std::int32_t expected;
  };
  std::vector<StCase> const cases = {
      {"a", 1},         {"/a", 1},     {"a/", 1},      {"b/c", 2},
      {"//b///c//", 2}, {"b/v/0", 10}, {"b/v/1/d", 3}, {"/b/v/1/d", 3},
  };
  for (auto const& c : cases) {
    EXPECT_TRUE(map.HasEntry(c.path)) << c.path;
    EXPECT_EQ(map.Entry(c.path).Long(), c.expected) << c.path;
    EXPECT_EQ(constMap.Entry(c.path).Long(), c.expected) << c.path;
    EXPECT_EQ(map.Find(c.path), constMap.Find(c.path)) << c.path;
    EXPECT_EQ(&map.Entry(c.path, true), map.Find(c.path)) << c.path;
  }
  EXPECT_EQ(map, Tree());
}

TEST(ValueMap, MissingPathsFindNothing) {
  CValueMap map = Tree();
  CValueMap const& constMap = map;
  for (char const* path : {"x",
                           "",
                           "/",
                           "///",
                           "A",
                           "a/x",
                           "a/0",
                           "b/x",
                           "b/c/d",
                           "b/v/2",
                           "b/v/-1",
                           "b/v/01",
                           "b/v/+1",
                           "b/v/ 1",
                           "b/v/-0",
                           "b/v/1.0",
                           "b/v/x",
                           "b/v/1/x",
                           "b/v/9223372036854775808",
                           "b/v/-9223372036854775808",
                           "b/v/99999999999999999999999",
                           "0",
                           "b/0"}) {
    EXPECT_FALSE(map.HasEntry(path)) << path;
    EXPECT_EQ(map.Find(path), nullptr) << path;
    EXPECT_FALSE(map.Entry(path).IsValid()) << path;
    EXPECT_FALSE(constMap.Entry(path).IsValid()) << path;
    EXPECT_FALSE(constMap.Entry(path, true).IsValid()) << path;
    EXPECT_FALSE(map.RemoveEntry(path)) << path;
    EXPECT_FALSE(map.Detach(path).IsValid()) << path;
  }
  EXPECT_EQ(map, Tree());
}

TEST(ValueMap, MissingEntryCannotBeWritten) {
  constexpr char c_message[] =
      "there is no such entry to write to: SetEntry makes one, and so does Entry with create";
  CValueMap map = Tree();
  CValue const seven = CValueLong(7);
  CValue other = seven;
  CValue& missing = map.Entry("x");
  struct StCase {
    char const* function;
    std::function<void()> write;
  };
  std::vector<StCase> const cases = {
      {"ORVA::CValue::operator =", [&] { map.Entry("x") = CValueLong(7); }},
      {"ORVA::CValue::operator =", [&] { map.Entry("b/x") = seven; }},
      {"ORVA::CValue::operator =", [&] { map.Entry("b/v/7/y").Copy(seven); }},
      {"ORVA::CValue::operator =", [&] { missing.Move(other); }},
      {"ORVA::CValue::operator =", [&] { missing = std::move(other); }},
      {"ORVA::CValue::Meta", [&] { map.Entry("x").Meta(); }},
      {"ORVA::swap", [&] { swap(missing, other); }},
      {"ORVA::swap", [&] { swap(other, missing); }},
  };
  for (auto const& c : cases) {
    test::ExpectError<CExBadParam>(c.write, c_message, c.function, "framework/pxlib2core/Value");
    EXPECT_EQ(map, Tree());
    EXPECT_EQ(other, seven);
    EXPECT_FALSE(missing.IsValid());
  }
}

TEST(ValueMap, MissingEntryCanBeReadAndTakenFrom) {
  CValueMap map;
  CValue const copied = map.Entry("x");
  CValue const moved = std::move(map.Entry("x"));
  EXPECT_FALSE(copied.IsValid());
  EXPECT_FALSE(moved.IsValid());
  EXPECT_TRUE(std::as_const(map).Entry("x").Meta().IsEmpty());
  EXPECT_EQ(map.Entry("x").Pointer<int>(), nullptr);
  map.SetEntry("y", map.Entry("x")); // a value of its own from now on
  map.Entry("y") = CValueLong(1);
  EXPECT_EQ(map.Entry("y").Long(), 1);
  EXPECT_FALSE(map.Entry("x").IsValid());
}

TEST(ValueMap, EntryCreatesTheSubMapsOnTheWay) {
  CValueMap map;
  EXPECT_FALSE(map.Entry("a/b/c", true).IsValid());
  EXPECT_TRUE(map.HasEntry("a/b/c"));
  EXPECT_EQ(map.Entry("a").Type(), CValue::EnType::Map);
  EXPECT_EQ(map.Entry("a/b").Map().Size(), 1u);
  map.Entry("a/b/c", true) = CValueLong(4);
  EXPECT_EQ(map.Entry("a/b/c").Long(), 4);
  map.Entry(7, true) = CValueLong(5);
  EXPECT_EQ(map.Entry(7).Long(), 5);
}

TEST(ValueMap, AnInvalidEntryOnTheWayBecomesAMap) {
  CValueMap map;
  map.Entry("a", true);
  map.SetEntry("a/b", CValueLong(1));
  EXPECT_EQ(map.Entry("a/b").Long(), 1);
}

TEST(ValueMap, SetEntryReplacesOrAppendsInVectors) {
  CValueMap map = Tree();
  map.SetEntry("b/v/0", CValueLong(11));
  map.SetEntry("b/v/2", CValueLong(12));
  map.SetEntry("b/v/3/e/f", CValueLong(13));
  map.SetEntry("b/v/1/d", CValueLong(14));
  EXPECT_EQ(map.Entry("b/v").Vector().Size(), 4u);
  EXPECT_EQ(map.Entry("b/v/0").Long(), 11);
  EXPECT_EQ(map.Entry("b/v/2").Long(), 12);
  EXPECT_EQ(map.Entry("b/v/3/e/f").Long(), 13);
  EXPECT_EQ(map.Entry("b/v/1/d").Long(), 14);
}

TEST(ValueMap, EntriesBelowALeafAreRefused) {
  struct StCase {
    char const* path;
    char const* message;
    char const* function;
    char const* module;
  };
  std::vector<StCase> const cases = {
      {"a/x", "no entry \"a/x\" can be made: \"x\" would have to be in a CValueLong", c_setEntry,
       c_module},
      {"a/x/y", "no entry \"a/x/y\" can be made: \"x\" would have to be in a CValueLong",
       c_setEntry, c_module},
      {"b/v/0/x", "no entry \"b/v/0/x\" can be made: \"x\" would have to be in a CValueLong",
       c_setEntry, c_module},
      {"b/v/x", "no entry \"b/v/x\" can be made: \"x\" would have to be in a CValueVector",
       c_setEntry, c_module},
      {"b/v/3", "index 3 does not fit a vector of 2 values", "ORVA::CValueVector::SetEntry",
       "framework/pxlib2core/ValueVector"},
      {"b/v/-1/x", "index -1 does not fit a vector of 2 values", "ORVA::CValueVector::SetEntry",
       "framework/pxlib2core/ValueVector"},
      {"/", "path \"/\" names no entry", c_setEntry, c_module},
      {"///", "path \"///\" names no entry", c_setEntry, c_module},
  };
  for (auto const& c : cases) {
    CValueMap map = Tree();
    test::ExpectError<CExBadParam>([&] { map.SetEntry(c.path, CValueLong(0)); }, c.message,
                                   c.function, c.module);
    EXPECT_EQ(map, Tree()) << c.path;
    test::ExpectError<CExBadParam>([&] { (void)map.Entry(c.path, true); }, c.message, c.function,
                                   c.module);
    EXPECT_EQ(map, Tree()) << c.path;
  }
}

TEST(ValueMap, PathsMayBeLong) {
  constexpr int c_parts = 20000;
  std::string path = "a";
  for (int part = 1; part < c_parts; ++part) path += "/a";
  CValueMap map;
  map.SetEntry(path, CValueLong(7));
  EXPECT_EQ(CValueMap(map).Entry(path).Long(), 7);
  EXPECT_EQ(map.Detach(path).Long(), 7);
  EXPECT_FALSE(map.HasEntry(path));
}

TEST(ValueMap, NumberAndTextAreTwoKeys) {
  CValueMap map;
  map.SetEntry("7", CValueString("text"));
  map.SetEntry(7, CValueString("number"));
  EXPECT_EQ(map.Size(), 2u);
  EXPECT_EQ(map.Entry("7").String(), "text");
  EXPECT_EQ(map.Entry(7).String(), "number");
  map.RemoveEntry("7");
  EXPECT_EQ(map.Entry(7).String(), "number");
}

TEST(ValueMap, TextFindsTheNumberWhereNoTextHasThatName) {
  CValueMap map;
  map.SetEntry(7, CValueLong(1));
  map.SetEntry(-3, CValue(Tree()));
  EXPECT_EQ(map.Entry("7").Long(), 1);
  EXPECT_EQ(map.Entry("/7").Long(), 1);
  EXPECT_EQ(map.Entry("-3/b/c").Long(), 2);
  for (char const* name : {"07", "+7", "7 ", " 7", "7.0", "-", "--3", "-03", "-0"})
    EXPECT_FALSE(map.HasEntry(name)) << name;
  map.SetEntry("/7", CValueLong(2));
  EXPECT_EQ(map.Size(), 2u);
  EXPECT_EQ(map.Entry(7).Long(), 2);
  EXPECT_TRUE(map.RemoveEntry("7"));
  EXPECT_FALSE(map.HasEntry(7));
}

TEST(ValueMap, SettingAPlainTextLeavesTheNumberAlone) {
  CValueMap map, copy;
  map.SetEntry(7, CValueLong(1));
  map.SetEntry("7", CValueLong(2));
  for (auto const& [key, value] : map) copy.SetEntry(key, value);
  EXPECT_EQ(copy, map);
  EXPECT_EQ(map.Entry(7).Long(), 1);
  EXPECT_EQ(map.Entry("7").Long(), 2);
}

TEST(ValueMap, NumberDoesNotFindTheText) {
  CValueMap map;
  map.SetEntry("7", CValueLong(1));
  EXPECT_FALSE(map.HasEntry(7));
  map.SetEntry("0", CValueLong(1));
  EXPECT_FALSE(map.HasEntry(0));
}

TEST(ValueMap, RemoveEntryTakesPaths) {
  CValueMap map = Tree();
  EXPECT_TRUE(map.RemoveEntry("b/v/0"));
  EXPECT_EQ(map.Entry("b/v/0/d").Long(), 3); // the rest moved up
  EXPECT_TRUE(map.RemoveEntry("/b/c"));
  EXPECT_FALSE(map.HasEntry("b/c"));
  EXPECT_TRUE(map.RemoveEntry("b"));
  EXPECT_EQ(Names(map), std::vector<std::string>{"a"});
  EXPECT_FALSE(map.RemoveEntry("b"));
}

TEST(ValueMap, RemovesTheEntryWhoseOwnKeyIsGiven) {
  CValueMap map = Tree();
  EXPECT_TRUE(map.RemoveEntry(map.begin().Key()));
  EXPECT_EQ(map.Detach(map.begin().Key()).Map().Size(), 2u);
  EXPECT_TRUE(map.IsEmpty());
}

TEST(ValueMap, DetachGivesTheEntryAway) {
  CValueMap map = Tree();
  EXPECT_EQ(map.Detach("b/v/1/d").Long(), 3);
  EXPECT_EQ(map.Detach("b/v/0").Long(), 10);
  EXPECT_EQ(map.Entry("b/v").Vector().Size(), 1u);
  CValue const rest = map.Detach("b");
  EXPECT_EQ(rest.Map().Entry("c").Long(), 2);
  EXPECT_EQ(Names(map), std::vector<std::string>{"a"});
}

TEST(ValueMap, DetachedEntryCanGoIntoTheSameMap) {
  CValueMap map = Tree();
  map.SetEntry("a", map.Detach("b/v/1"));
  EXPECT_EQ(map.Entry("a/d").Long(), 3);
}

TEST(ValueMap, EntrySetOverItselfStays) {
  CValueMap map = Tree();
  for (char const* path : {"a", "b", "b/c", "b/v", "b/v/1", "b/v/1/d"}) {
    map.SetEntry(path, *map.Find(path));
    EXPECT_EQ(map, Tree()) << path;
    map.SetEntry(path, std::move(*map.Find(path)));
    EXPECT_EQ(map, Tree()) << path;
    map.Entry(path) = map.Entry(path);
    EXPECT_EQ(map, Tree()) << path;
  }
}

TEST(ValueMap, EntryMovesUpAndDownItsOwnBranch) {
  CValueMap up = Tree();
  up.SetEntry("b", std::move(up.Entry("b/v/1")));
  EXPECT_EQ(up.Entry("b/d").Long(), 3);
  CValueMap down = Tree();
  down.SetEntry("b/below", std::move(down.Entry("b")));
  EXPECT_EQ(down.Entry("b/below/c").Long(), 2);
  EXPECT_EQ(down.Entry("b").Map().Size(), 1u);
  CValueMap copied = Tree();
  copied.SetEntry("b/v/1/b", copied.Entry("b"));
  EXPECT_EQ(copied.Entry("b/v/1/b/v/1/d").Long(), 3);
  EXPECT_FALSE(copied.HasEntry("b/v/1/b/v/1/b"));
}

TEST(ValueMap, MapGoesIntoItself) {
  CValueMap copied = Tree();
  copied.SetEntry("self", copied);
  EXPECT_EQ(copied.Entry("self").Map(), Tree());
  EXPECT_EQ(copied.Size(), 3u);
  CValueMap moved = Tree();
  moved.SetEntry("self", std::move(moved));
  EXPECT_EQ(moved.Entry("self").Map(), Tree()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(moved.Size(), 1u);
  CValueMap keyed = Tree();
  auto const first = keyed.begin();
  keyed.SetEntry(first.Key(), std::move(keyed)); // the key lives in the map that is moved
  EXPECT_EQ(keyed.Entry("a").Map(), Tree());     // NOLINT(bugprone-use-after-move)
}

TEST(ValueMap, AssignsFromItselfAndFromItsInside) {
  CValueMap map = Tree();
  CValueMap& alias = map;
  map = alias;
  EXPECT_EQ(map, Tree());
  map = std::move(alias);
  EXPECT_EQ(map, Tree());
  CValueMap copied = Tree();
  copied = copied.Entry("b").Map();
  EXPECT_EQ(Names(copied), (std::vector<std::string>{"c", "v"}));
  CValueMap moved = Tree();
  moved = std::move(moved.Entry("b/v/1").Map());
  EXPECT_EQ(moved.Entry("d").Long(), 3);
  EXPECT_EQ(moved.Size(), 1u);
}

TEST(ValueMap, CopiesShareNothing) {
  CValueMap const original = Tree();
  CValueMap copy = original;
  copy.Entry("b/v/1/d").Long() = 99;
  copy.SetEntry("b/c", CValueLong(98));
  copy.RemoveEntry("a");
  CValueMap assigned;
  assigned.SetEntry("old", CValueLong(1));
  assigned = original;
  assigned.Clear();
  EXPECT_EQ(original, Tree());
}

TEST(ValueMap, MovedFromIsEmpty) {
  CValueMap source = Tree();
  CValueMap taken = std::move(source);
  EXPECT_TRUE(source.IsEmpty()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(taken, Tree());
  source = std::move(taken);
  EXPECT_TRUE(taken.IsEmpty()); // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(source, Tree());
}

TEST(ValueMap, ClearEmptiesAndTheMapCanBeUsedAgain) {
  CValueMap map = Tree();
  map.Clear();
  EXPECT_TRUE(map.IsEmpty());
  map.SetEntry("a/b", CValueLong(1));
  EXPECT_EQ(map.Size(), 1u);
}

// All or nothing; otherwise as one SetEntry after the other.
TEST(ValueMap, SetEntriesDoesWhatSetEntryDoes) {
  struct StCase {
    char const* name;
    std::vector<CValue_Key> keys;
    bool isRefused;
  };
  std::vector<StCase> const cases = {
      {"none", {}, false},
      {"new", {"x", "y", 7}, false},
      {"replaced", {"a", "b"}, false},
      {"twice", {"x", "x", "b/c", "b/c"}, false},
      {"new paths", {"x/y", "x/z/z", "b/x/y"}, false},
      {"into a vector", {"b/v/0", "b/v/2", "b/v/1/d"}, false},
      {"below what is set", {"x/y", "b/x"}, false},
      {"number for a text", {7, "/7", "/7/", "7"}, false},
      {"text before number", {"7", 7, "/7"}, false},
      {"below a leaf", {"x", "b/c", "a/y"}, true},
      {"below a leaf just set", {"b/c", "b", "b/x"}, true},
      {"below a leaf just made", {"x", "x/y"}, true},
      {"beyond a vector", {"b/x", "b/v/5"}, true},
      {"no entry", {"b/x", "//"}, true},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<std::pair<CValue_Key, CValue>> entries;
    for (auto const& key : c.keys) entries.emplace_back(key, CValueDouble(double(entries.size())));
    CValueMap together = Tree(), singly = Tree();
    auto const setSingly = [&] {
      for (auto const& [key, value] : entries) singly.SetEntry(key, value);
    };
    if (c.isRefused) {
      EXPECT_THROW(setSingly(), CExBadParam);
      EXPECT_THROW(together.SetEntries(entries), CExBadParam);
      EXPECT_EQ(together, Tree());
    } else {
      setSingly();
      together.SetEntries(entries);
      EXPECT_EQ(together, singly);
    }
  }
}

TEST(ValueMap, SubsetComparesEntriesInDepth) {
  CValueMap const tree = Tree();
  CValueMap larger = Tree();
  larger.SetEntry("z", CValueLong(0));
  CValueMap changed = Tree();
  changed.Entry("b/v/1/d").Long() = 4;
  CValueMap number, text;
  number.SetEntry(7, CValueLong(1));
  text.SetEntry("7", CValueLong(1));
  EXPECT_TRUE(tree.IsSubset(tree));
  EXPECT_TRUE(tree.IsSubset(larger));
  EXPECT_FALSE(larger.IsSubset(tree));
  EXPECT_FALSE(tree.IsSubset(changed));
  EXPECT_FALSE(text.IsSubset(number));
  EXPECT_TRUE(CValueMap().IsSubset(tree));
  EXPECT_TRUE(CValueMap().IsSubset(CValueMap()));
  EXPECT_FALSE(tree.IsSubset(CValueMap()));
  EXPECT_NE(tree, larger);
  EXPECT_NE(tree, changed);
}

TEST(ValueMap, KeepsSliceFreeValuesOfDerivedMaps) {
  struct CNamedMap : CValueMap {
    std::string name;
  };
  CNamedMap named;
  named.SetEntry("a", CValueLong(1));
  named.name = "x";
  CNamedMap copy = named;
  copy.Entry("a").Long() = 2;
  CValueMap outer;
  outer.SetEntry("named", named);
  EXPECT_EQ(outer.Entry("named/a").Long(), 1);
  EXPECT_EQ(copy.name, "x");
  CValueMap const* const base = new CNamedMap(named);
  delete base; // through the base: its destructor is virtual
}

TEST(ValueMap, HoldsManyAndDeepEntries) {
  CValueMap map;
  for (int i = 0; i < 10000; ++i) map.SetEntry(i, CValueLong(i));
  EXPECT_EQ(map.Size(), 10000u);
  EXPECT_EQ(map.Entry("9999").Long(), 9999);
  std::string path = "0x";
  for (int i = 0; i < 500; ++i) path += "/x";
  map.SetEntry(path, CValueLong(1));
  CValueMap const copy = map;
  EXPECT_EQ(copy.Entry(path).Long(), 1);
  EXPECT_EQ(copy, map);
}
