// Every allocation of an operation on feature maps fails once: the map is then as it was.
#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/ValueVector.h>

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <string>

using namespace ORVA;
using test::FailEveryAllocation;

namespace {

// Texts too long to be kept without an allocation.
constexpr char c_long[] = "a feature whose name is too long for the short string buffer";

CValueMap Features() {
  CValueMap map;
  map.SetEntry("a", CValueLong(1));
  map.SetEntry(std::string("b/") + c_long, CValueDouble(2.5));
  map.SetEntry("c", CValueString(c_long));
  map.SetEntry("list", CValueVector(CValueBool(true), CValueDouble(4)));
  return map;
}

} // namespace

TEST(ValueHelperAllocation, CopyingEntriesIsDoneOrNot) {
  struct StCase {
    char const* prefix;
    char const* inTheWay;
  };
  for (auto const& c : {StCase{"", "c"}, StCase{"x ", "x c"}, StCase{"sub/deep/", "sub/deep/c"},
                        StCase{"b/", "b/c"}, StCase{c_long, "a"}}) {
    SCOPED_TRACE(c.prefix);
    CValueMap const source = Features();
    CValueMap target = Features();
    target.SetEntry(c.inTheWay, CValueLong(7));
    CValueMap const before = target;
    EXPECT_GT(FailEveryAllocation([&] { CopyMapEntries(target, source, c.prefix); },
                                  [&] { EXPECT_EQ(target, before); }),
              5);
    EXPECT_EQ(target.Entry(std::string(c.prefix) + "a"), CValueLong(1));
    EXPECT_EQ(target.Entry(std::string(c.prefix) + "c").String(), c_long);
  }
}

TEST(ValueHelperAllocation, SumsAreDoneOrNot) {
  CValueMap const other = Features();
  CValueMapWithOperators sums(other, {});
  CValueMap before = sums;
  auto const isUnchanged = [&] { EXPECT_TRUE(static_cast<CValueMap const&>(sums) == before); };
  EXPECT_GT(FailEveryAllocation([&] { sums += other; }, isUnchanged), 0);
  EXPECT_EQ(sums.Entry("list/1"), CValueDouble(8));
  before = sums;
  EXPECT_GT(FailEveryAllocation([&] { sums /= 2; }, isUnchanged), 0);
  EXPECT_EQ(sums.Entry("list/1"), CValueDouble(4));
}

TEST(ValueHelperAllocation, SumsWithMissingEntriesAreDoneOrNot) {
  CValueMap const other = Features();
  CValueMapWithOperators sums(other, {});
  sums.RemoveEntry("list");
  sums.SetEntry("z", CValueString(c_long));
  sums.m_Keys = {"a", std::string("b/") + c_long, std::string("new/") + c_long};
  CValueMap before = sums;
  auto const isUnchanged = [&] { EXPECT_TRUE(static_cast<CValueMap const&>(sums) == before); };
  EXPECT_GT(FailEveryAllocation([&] { sums += other; }, isUnchanged), 5);
  EXPECT_EQ(sums.Entry("a"), CValueDouble(2));
  EXPECT_EQ(sums.Entry("z").String(), c_long);
  sums.RemoveEntry("new");
  before = sums;
  EXPECT_GT(FailEveryAllocation([&] { sums /= 2; }, isUnchanged), 5);
  EXPECT_EQ(sums.Entry("a"), CValueDouble(1));
}
