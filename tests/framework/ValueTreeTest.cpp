// Trees too deep for any stack: copied, compared, listed and destroyed without recursion.
#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include "support/Random.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

constexpr int c_deep = 100000;

using Wrap = std::function<CValue(CValue)>;

CValue InMap(CValue value) {
  CValueMap map;
  map.SetEntry("a", std::move(value));
  return map;
}

CValue InVector(CValue value) {
  CValueVector vector;
  vector.PushBack(std::move(value));
  return vector;
}

CValue InAnnotation(CValue value) {
  CValue leaf = CValueLong(1);
  leaf.Meta().SetEntry("a", std::move(value));
  return leaf;
}

// Between other values, and in a container that is annotated itself.
CValue AmongOthers(CValue value) {
  CValueMap map;
  map.SetEntry("a", CValueString("before"));
  map.SetEntry("b", InVector(CValueLong(1)));
  map.SetEntry("c", std::move(value));
  map.SetEntry("d", InMap(CValueLong(2)));
  CValue annotated = std::move(map);
  annotated.Meta().SetEntry("unit/name", CValueString("px"));
  return annotated;
}

struct StShape {
  char const* name;
  Wrap wrap;
  int depth = c_deep;
};

std::vector<StShape> const c_shapes = {
    {"maps", InMap},
    {"vectors", InVector},
    {"annotations", InAnnotation},
    {"maps with siblings", AmongOthers, c_deep / 5},
    {"maps and vectors", [](CValue value) { return InMap(InVector(std::move(value))); }}};

CValue Chain(Wrap const& wrap, int depth, CValue innermost) {
  for (int i = 0; i < depth; ++i) innermost = wrap(std::move(innermost));
  return innermost;
}

} // namespace

TEST(ValueTree, DeepTreesAreCopiedAndDestroyed) {
  for (auto const& shape : c_shapes) {
    SCOPED_TRACE(shape.name);
    auto const witness = std::make_shared<int>(1);
    {
      CValue const tree = Chain(shape.wrap, shape.depth, CValuePointer::Own(witness));
      EXPECT_EQ(witness.use_count(), 2);
      CValue copy = tree;
      EXPECT_EQ(witness.use_count(), 3);
      CValueMap map;
      map.SetEntry("copy", tree);
      CValueMap const mapCopy = map;
      EXPECT_EQ(witness.use_count(), 5);
      copy = CValueLong(1);
      map.Clear();
      EXPECT_EQ(witness.use_count(), 3);
    }
    EXPECT_EQ(witness.use_count(), 1);
  }
}

TEST(ValueTree, DeepTreesAreCompared) {
  for (auto const& shape : c_shapes) {
    SCOPED_TRACE(shape.name);
    CValue const tree = Chain(shape.wrap, shape.depth, CValueLong(1));
    CValue const other = Chain(shape.wrap, shape.depth, CValueLong(2));
    bool const isHidden = shape.name == std::string("annotations"); // these do not count
    EXPECT_TRUE(tree.Equal(CValue(tree)));
    EXPECT_EQ(tree.Equal(other), isHidden);
    CValueMap map, otherMap;
    map.SetEntry("a", tree);
    otherMap.SetEntry("a", other);
    EXPECT_TRUE(map.IsSubset(CValueMap(map)));
    EXPECT_EQ(map == otherMap, isHidden);
  }
}

TEST(ValueTree, DeepTreesAreListed) {
  for (auto const& shape : c_shapes) {
    if (shape.name == std::string("annotations")) continue; // no part of the tree
    SCOPED_TRACE(shape.name);
    constexpr int c_depth = 2000; // with leaves on every level, the paths grow with its square
    CValueMap map;
    map.SetEntry("root", Chain(shape.wrap, c_depth, CValueString("end")));
    std::vector<std::string> keys;
    ExtractKeys(map, keys, 1, {});
    bool const hasSiblings = shape.name == std::string("maps with siblings");
    EXPECT_EQ(keys.size(), hasSiblings ? 2u * c_depth : 0u);
  }
  CValueMap map;
  map.SetEntry("root", Chain(InMap, c_deep, CValueLong(1)));
  std::vector<std::string> keys;
  ExtractKeys(map, keys, 1, {});
  ASSERT_EQ(keys.size(), 1u);
  EXPECT_EQ(keys.front().size(), 4u + 2u * c_deep);
  EXPECT_EQ(map.Entry(keys.front()).Long(), 1);
  ExtractKeys(map, keys, 1, {std::string(keys.front())});
  EXPECT_TRUE(keys.empty());
}

// Every object of a random tree dies exactly once, however deep it lies and whatever lies beside.
TEST(ValueTree, RandomDeepTreesLeaveNothingBehind) {
  test::CRandomNumbers numbers;
  auto& random = numbers.Generator();
  auto const witness = std::make_shared<int>(1);
  std::function<CValue(int)> grow = [&](int levels) -> CValue {
    if (levels == 0 || random() % 4 == 0) return CValuePointer::Own(witness);
    CValue value;
    if (random() % 2 == 0) {
      CValueMap map;
      for (auto n = random() % 4; n > 0; --n) map.SetEntry(n, grow(levels - 1));
      value = std::move(map);
    } else {
      CValueVector vector;
      for (auto n = random() % 4; n > 0; --n) vector.PushBack(grow(levels - 1));
      value = std::move(vector);
    }
    if (random() % 4 == 0) value.Meta().SetEntry("note", grow(levels - 1));
    return value;
  };
  for (int round = 0; round < 20; ++round) {
    CValue tree = grow(3);
    for (int depth = 0; depth < 300; ++depth) {
      CValueMap map;
      map.SetEntry(static_cast<int>(random() % 5), std::move(tree));
      map.SetEntry(2, grow(3));
      tree = std::move(map);
      if (random() % 4 == 0) tree.Meta().SetEntry("note", grow(3));
    }
    long const objects = witness.use_count();
    CValue const copy = tree;
    EXPECT_EQ(witness.use_count() - 1, 2 * (objects - 1));
    EXPECT_TRUE(copy.Meta() == tree.Meta());
    tree = CValue();
    EXPECT_EQ(witness.use_count(), objects);
  }
  EXPECT_EQ(witness.use_count(), 1);
}
