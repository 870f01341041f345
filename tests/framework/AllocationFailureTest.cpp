// Every allocation of an operation fails once: what was there before must be there unchanged.
#include <SeluBase/Algorithm.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/HeaderTools.h>
#include <pxlib2image/Image.h>

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

using namespace ORVA;
using test::FailEveryAllocation;

namespace {

// Texts too long to be kept without an allocation.
constexpr char c_long[] = "a text that is too long for the short string buffer";

CValueMap Tree() {
  CValueMap inner;
  inner.SetEntry(std::string("d ") + c_long, CValueString(c_long));
  inner.SetEntry(7, CValuePointer::Own(std::string(c_long)));
  CValueMap map;
  map.SetEntry("a", CValueString(c_long));
  map.SetEntry("b/c", CValueLong(2));
  map.SetEntry("b/v", CValueVector(CValueLong(10), CValue(std::move(inner))));
  map.Entry("a").Meta().SetEntry("unit", CValueString(c_long));
  return map;
}

CImage Picture() {
  CImage image(IMAGE_GREY_8, CSize(3, 2));
  *image.CreateAccess(true).WritableBase() = std::byte{5};
  image.Attributes().SetEntry("Header/minmax", CValueString(c_long));
  return image;
}

} // namespace

TEST(AllocationFailure, MapIsUnchanged) {
  struct StCase {
    char const* name;
    std::function<void(CValueMap&)> operation;
  };
  CValueMap const tree = Tree();
  std::string const longPath = std::string("new/") + c_long + "/x/" + c_long;
  CValue_Key const longKey(c_long);
  CValueMap other = Tree();
  other.RemoveEntry("a");
  std::vector<StCase> const cases = {
      {"new entry", [](CValueMap& map) { map.SetEntry("z", CValueString(c_long)); }},
      {"long key", [&](CValueMap& map) { map.SetEntry(longKey, CValueLong(1)); }},
      {"replaced entry", [&](CValueMap& map) { map.SetEntry("a", CValue(tree)); }},
      {"new path", [&](CValueMap& map) { map.SetEntry(longPath, CValue(tree)); }},
      {"path into a map", [](CValueMap& map) { map.SetEntry("b/x/y/z", CValueString(c_long)); }},
      {"path into a vector", [](CValueMap& map) { map.SetEntry("b/v/2/y", CValueLong(1)); }},
      {"vector entry", [](CValueMap& map) { map.SetEntry("b/v/0", CValueString(c_long)); }},
      {"created entry", [&](CValueMap& map) { map.Entry(longPath, true); }},
      {"created in a vector", [](CValueMap& map) { map.Entry("b/v/1/x/y", true); }},
      {"map into itself", [](CValueMap& map) { map.SetEntry("b/self", map); }},
      {"entry over its parent", [](CValueMap& map) { map.SetEntry("b", map.Entry("b/v/1")); }},
      {"copy assignment", [&](CValueMap& map) { map = other; }},
      {"assignment from inside", [](CValueMap& map) { map = map.Entry("b").Map(); }},
      {"detach by path", [](CValueMap& map) { map.Detach("b/v/1/7"); }},
      {"remove by path", [](CValueMap& map) { map.RemoveEntry("b/v/0"); }},
  };
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    CValueMap map = Tree();
    EXPECT_GT(FailEveryAllocation([&] { c.operation(map); }, [&] { EXPECT_EQ(map, tree); }), 0);
    EXPECT_NE(map, tree); // the last try passed
  }
}

TEST(AllocationFailure, CopyingAMapLeaksNothingAndTouchesNothing) {
  CValueMap const tree = Tree();
  EXPECT_GT(
      FailEveryAllocation([&] { CValueMap const copy(tree); }, [&] { EXPECT_EQ(tree, Tree()); }),
      10);
}

TEST(AllocationFailure, LookingUpChangesNothing) {
  CValueMap map = Tree();
  std::string const path = std::string("b/v/1/d ") + c_long;
  FailEveryAllocation([&] { (void)map.Entry(path); }, [&] { EXPECT_EQ(map, Tree()); });
  FailEveryAllocation([&] { (void)map.Keys(); }, [&] { EXPECT_EQ(map, Tree()); });
  EXPECT_TRUE(map.HasEntry(path));
}

TEST(AllocationFailure, ValueIsUnchanged) {
  CValue const tree = Tree();
  CValue value = CValueString(c_long);
  auto const unchanged = [&] { EXPECT_EQ(value.String(), c_long); };
  EXPECT_GT(FailEveryAllocation([&] { value = tree; }, unchanged), 10);
  EXPECT_TRUE(value.Equal(tree));
  value = CValueString(c_long);
  EXPECT_GT(FailEveryAllocation([&] { value.Copy(tree); }, unchanged), 10);
  value = tree;
  EXPECT_GT(FailEveryAllocation([&] { value = value.Map().Entry("b"); },
                                [&] { EXPECT_TRUE(value.Equal(tree)); }),
            5);
  EXPECT_EQ(value.Map().Entry("c").Long(), 2);
}

TEST(AllocationFailure, VectorIsUnchanged) {
  CValueVector const before{CValueString(c_long), CValue(Tree())};
  CValueVector vector = before;
  auto const unchanged = [&] { EXPECT_EQ(vector, before); };
  EXPECT_GT(FailEveryAllocation([&] { vector.PushBack(vector.Entry(1)); }, unchanged), 10);
  EXPECT_EQ(vector.Size(), 3u);
  vector = before;
  EXPECT_GT(FailEveryAllocation([&] { vector.SetEntry(0, vector.Entry(1)); }, unchanged), 10);
  EXPECT_EQ(vector.Entry(0), before.Entry(1));
  vector = before;
  EXPECT_GT(FailEveryAllocation([&] { vector.SetEntry(2, CValueString(c_long)); }, unchanged), 0);
  EXPECT_EQ(vector.Size(), 3u);
  vector = before;
  EXPECT_GT(FailEveryAllocation([&] { vector.PushBack(vector); }, unchanged), 10);
}

TEST(AllocationFailure, TextKeepsItsPlaceholders) {
  CString const argument(c_long);
  std::vector<std::function<void(CString&)>> const operations = {
      [&](CString& text) { text.Arg(argument); },
      [](CString& text) { text.Arg(1234567890123456789, 40); },
      [](CString& text) { text.Arg(-1.2345678901234567e-300); },
      [](CString& text) { text.Arg(1.0 / 3.0, 60); },
      [](CString& text) { text.Arg(text); },
  };
  for (auto const& operation : operations) {
    CString text("%2 %1 %2 and %3");
    text.Arg("%3");
    CString const before = text;
    EXPECT_GT(FailEveryAllocation([&] { operation(text); }, [&] { EXPECT_EQ(text, before); }), 0);
    EXPECT_NE(text, before);
    text.Arg("last"); // still fills %3 alone, not the "%3" that was an argument
    EXPECT_TRUE(text.Std().ends_with(" and last")) << text.Std();
  }
}

TEST(AllocationFailure, ImageIsUnchanged) {
  CImage image = Picture();
  auto const unchanged = [&] { EXPECT_EQ(image, Picture()); };
  CImage const other = [] {
    CImage made(IMAGE_GREY_F, CSize(4, 5, 6));
    made.Attributes().SetEntry("a/b", CValueString(c_long));
    return made;
  }();
  EXPECT_GT(FailEveryAllocation([&] { image = other; }, unchanged), 2);
  EXPECT_EQ(image, other);
  image = Picture();
  EXPECT_GT(FailEveryAllocation([&] { image.Resize(CSize(7, 7)); }, unchanged), 0);
  EXPECT_EQ(image.Size(), CSize(7, 7));
  EXPECT_GT(FailEveryAllocation([&] { CImage made(IMAGE_GREY_8, CSize(3, 3)); }, [] {}), 0);
  EXPECT_GT(FailEveryAllocation([&] { CImage copy(other); }, [] {}), 2);
}

TEST(AllocationFailure, HeaderIsUnchanged) {
  CImage image = Picture();
  CValue const information = Tree();
  EXPECT_GT(FailEveryAllocation([&] { CSeluHeaderTools::SetMetaInfo(image, "tree", information); },
                                [&] { EXPECT_EQ(image, Picture()); }),
            0);
  CImage bare(IMAGE_GREY_8, CSize(1, 1));
  EXPECT_GT(FailEveryAllocation([&] { CSeluHeaderTools::SetMetaInfo(bare, "tree", information); },
                                [&] { EXPECT_TRUE(bare.Attributes().IsEmpty()); }),
            0);
  CValue value = CValueString(c_long);
  EXPECT_GT(FailEveryAllocation([&] { (void)CSeluHeaderTools::GetMetaInfo(image, "tree", value); },
                                [&] { EXPECT_EQ(value.String(), c_long); }),
            0);
  EXPECT_TRUE(value.Equal(information));
}

TEST(AllocationFailure, AlgorithmKeepsItsSetup) {
  CAlgorithm algorithm("texture", nullptr);
  CValueMap const first = Tree();
  algorithm.Init(&first);
  CValueMap second;
  second.SetEntry("only", CValueString(c_long));
  auto const setup = [&] {
    CValueMap given;
    algorithm.GetPluginSetup(given);
    return given;
  };
  CValueMap const before = setup();
  EXPECT_GT(
      FailEveryAllocation([&] { algorithm.Init(&second); }, [&] { EXPECT_EQ(setup(), before); }),
      0);
  EXPECT_GT(FailEveryAllocation([&] { algorithm.SetInstance(c_long); },
                                [&] { EXPECT_EQ(algorithm.Instance(), ""); }),
            0);
  CValueMap target = Tree();
  EXPECT_GT(FailEveryAllocation([&] { algorithm.GetPluginSetup(target); },
                                [&] { EXPECT_EQ(target, Tree()); }),
            10);
}

TEST(AllocationFailure, RaisingGivesBadAllocInsteadOfTheError) {
  Impl::StExLocation const place = ORVA_LOCATION("src/Utils/Lines", "ORVA::CLine::Step");
  EXPECT_GT(FailEveryAllocation(
                [&] {
                  try {
                    Impl::Raise(place, c_long);
                  } catch (CException const&) {
                  }
                },
                [] {}),
            0);
}
