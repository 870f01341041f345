// Key lists of random trees against a walk that knows the paths from building the tree.

#include <SeluUtils/ValueHelper.h>

#include "support/Random.h"

#include <pxlib2core/ValueVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;

namespace {

using Texts = std::vector<std::string>;

enum class EnKind { Number, Text, Object, Empty };

struct StLeaf {
  std::vector<std::string> parts;
  EnKind kind;

  [[nodiscard]] std::string Path() const {
    std::string path;
    for (auto const& part : parts) path += (path.empty() ? "" : "/") + part;
    return path;
  }
};

// Builds a random tree and notes its leaves in order as it goes.
class CTreeBuilder {
public:
  explicit CTreeBuilder(test::CRandomNumbers& random) : m_Random(random) {}

  CValueMap Map(int depth) {
    CValueMap map;
    int const entries = m_Random.Between(depth == 4 ? 1 : 0, 4);
    if (entries == 0) Note(EnKind::Empty);
    for (int k = 0; k < entries; ++k) {
      std::string const key = std::string(1, static_cast<char>('a' + k)) + (k % 2 ? " [px]" : "");
      map.SetEntry(key, Below(key, depth));
    }
    return map;
  }

  std::vector<StLeaf> leaves;

private:
  CValue Vector(int depth) {
    CValueVector vector;
    int const entries = m_Random.Between(0, 3);
    if (entries == 0) Note(EnKind::Empty);
    for (int k = 0; k < entries; ++k) vector.PushBack(Below(std::to_string(k), depth));
    return vector;
  }

  CValue Below(std::string const& key, int depth) {
    m_Parts.push_back(key);
    CValue value = Value(depth);
    m_Parts.pop_back();
    return value;
  }

  CValue Value(int depth) {
    int const choice = m_Random.Between(depth == 0 ? 2 : 0, 6);
    if (choice == 0) return Map(depth - 1);
    if (choice == 1) return Vector(depth - 1);
    Note(choice <= 4 ? EnKind::Number : choice == 5 ? EnKind::Text : EnKind::Object);
    if (choice == 2) return CValueLong(1);
    if (choice == 3) return CValueDouble(1);
    if (choice == 4) return CValueBool(true);
    if (choice == 5) return CValueString("text");
    return CValuePointer::Own(1);
  }

  void Note(EnKind kind) { leaves.push_back({m_Parts, kind}); }

  test::CRandomNumbers& m_Random;
  std::vector<std::string> m_Parts;
};

bool IsListed(EnKind kind, int mode) {
  switch (kind) {
  case EnKind::Number:
    return true;
  case EnKind::Text:
    return mode == 0 || mode == 2 || mode == 3;
  case EnKind::Object:
    return mode == 0 || mode == 3;
  default:
    return mode == 3;
  }
}

// Whether a leaf or a container on the way to it is excluded.
bool IsExcluded(StLeaf leaf, Texts const& excluded) {
  for (; !leaf.parts.empty(); leaf.parts.pop_back())
    if (std::ranges::find(excluded, leaf.Path()) != excluded.end()) return true;
  return false;
}

Texts SomePaths(test::CRandomNumbers& random, std::vector<StLeaf> const& leaves) {
  Texts paths = {"no such path"};
  for (StLeaf leaf : leaves)
    if (random.Between(0, 4) == 0) {
      leaf.parts.resize(random.Between<std::size_t>(1, leaf.parts.size()));
      paths.push_back(leaf.Path());
    }
  return paths;
}

} // namespace

TEST(KeyListProperty, IsWhatTheTreeWasBuiltOf) {
  test::CRandomNumbers random;
  for (int round = 0; round < 500 && !testing::Test::HasFailure(); ++round) {
    CTreeBuilder builder(random);
    CValueMap const map = builder.Map(4);
    Texts const excluded = SomePaths(random, builder.leaves);
    for (int const mode : {0, 1, 2, 3}) {
      Texts keys, expected;
      ExtractKeys(map, keys, mode, excluded);
      for (auto const& leaf : builder.leaves)
        if (IsListed(leaf.kind, mode) && !IsExcluded(leaf, excluded))
          expected.push_back(leaf.Path());
      EXPECT_EQ(keys, expected) << "mode " << mode;
      for (auto const& key : keys) EXPECT_TRUE(map.HasEntry(key)) << key;
    }
  }
}
