#include <SeluUtils/Cooccurrence.h>

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Matrix.h"
#include "support/Printers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <new>
#include <string>
#include <utility>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using test::MakeGrey8;

namespace {

char const c_source[] = "src/Utils/Cooccurrence";

CImage Output(int64 directions = 1) { return {IMAGE_GREY_32, CSize(directions, 256, 256)}; }

// A 3 x 2 x 1 volume with all voxels different.
CImage SmallVolume() { return MakeGrey8(CSize(3, 2, 1), {1, 2, 3, 4, 5, 6}); }
CImage SmallPlane() { return MakeGrey8(CSize(3, 2), {1, 2, 3, 4, 5, 6}); }

// The non-zero cells as (i, j, count).
std::vector<std::array<std::uint64_t, 3>> Cells(test::Matrix const& matrix) {
  std::vector<std::array<std::uint64_t, 3>> cells;
  for (std::size_t k = 0; k < matrix.size(); ++k)
    if (matrix[k] != 0) cells.push_back({k / 256, k % 256, matrix[k]});
  return cells;
}

using CellList = std::vector<std::array<std::uint64_t, 3>>;

class Cooccurrence : public testing::Test {
protected:
  CCooccurrence texture{"texture", nullptr};
  CImage out = Output();
  CValueMap features;
  CTriple<long> right{1, 0, 0};
};

} // namespace

TEST_F(Cooccurrence, CountsEachPairOnceInItsOwnCell) {
  texture.ComputeMatrix(out, SmallPlane(), &right);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{1, 2, 1}, {2, 3, 1}, {4, 5, 1}, {5, 6, 1}}));
}

TEST_F(Cooccurrence, RowIsTheFirstVoxelAndColumnTheDisplacedOne) {
  CTriple<long> down(0, 1, 0);
  texture.ComputeMatrix(out, SmallPlane(), &down);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{1, 4, 1}, {2, 5, 1}, {3, 6, 1}}));
  CTriple<long> upRight(1, -1, 0);
  texture.ComputeMatrix(out, SmallPlane(), &upRight);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{4, 2, 1}, {5, 3, 1}}));
}

TEST_F(Cooccurrence, ZeroDirectionGivesTheHistogramOnTheDiagonal) {
  CTriple<long> none(0, 0, 0);
  texture.ComputeMatrix(out, MakeGrey8(CSize(4, 1), {7, 7, 0, 255}), &none);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{0, 0, 1}, {7, 7, 2}, {255, 255, 1}}));
}

TEST_F(Cooccurrence, OppositeDirectionsGiveTransposedMatrices) {
  auto const image = MakeGrey8(CSize(3, 3), {1, 2, 2, 3, 1, 2, 9, 9, 1});
  auto const forward = test::CountWithLibrary(image, {1, 0, 0});
  auto const backward = test::CountWithLibrary(image, {-1, 0, 0});
  EXPECT_EQ(test::Transposed(forward), backward);
  EXPECT_EQ(test::Total(forward), 6u);
}

TEST_F(Cooccurrence, DisplacementAsLongAsTheImageCountsNothing) {
  for (CTriple<long> const direction :
       {CTriple<long>(3, 0, 0), CTriple<long>(-3, 0, 0), CTriple<long>(0, 2, 0),
        CTriple<long>(0, 0, 1), CTriple<long>(100, 100, 100),
        CTriple<long>(std::numeric_limits<std::int32_t>::max(), 0, 0),
        CTriple<long>(std::numeric_limits<std::int32_t>::min(), 0, 0),
        CTriple<long>(0, 0, std::numeric_limits<std::int32_t>::min())})
    EXPECT_EQ(test::Total(test::CountWithLibrary(SmallVolume(), direction)), 0u)
        << testing::PrintToString(direction);
}

TEST_F(Cooccurrence, ImageWithAnEmptyExtentCountsNothing) {
  for (CSize const size : {CSize(0, 5, 5), CSize(5, 0, 5), CSize(5, 5, 0), CSize(0, 0, 0)}) {
    CImage const image(IMAGE_GREY_8, size);
    EXPECT_EQ(test::Total(test::CountWithLibrary(image, {0, 0, 0})), 0u);
    EXPECT_EQ(test::Total(test::CountWithLibrary(image, {-1, 1, 0})), 0u);
  }
  int64 const huge = std::numeric_limits<int64>::max();
  CImage const image(IMAGE_GREY_8, CSize(huge, 0, huge));
  EXPECT_EQ(test::Total(test::CountWithLibrary(image, {1, 1, 1})), 0u);
  CTriple<long> direction(1, 1, 1);
  texture.ComputeFeatures(image, &direction, &features); // N is not 0, the matrix is
  EXPECT_EQ(features.Entry("Second Angular Moment").Double(), 0);
}

TEST_F(Cooccurrence, GrayLevelIsTheHighestByte) {
  auto const sixteen = test::MakeImage<std::uint16_t>(IMAGE_GREY_16, CSize(2, 1), {0x1234, 0xFF00});
  texture.ComputeMatrix(out, sixteen, &right);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{0x12, 0xFF, 1}}));
  auto const thirtyTwo =
      test::MakeImage<std::uint32_t>(IMAGE_GREY_32, CSize(2, 1), {0x00FFFFFFu, 0xFE000000u});
  texture.ComputeMatrix(out, thirtyTwo, &right);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{0, 0xFE, 1}}));
}

TEST_F(Cooccurrence, SixteenBitImageOfSmallValuesHasOneLevel) {
  auto const image = test::MakeImage<std::uint16_t>(IMAGE_GREY_16, CSize(3, 1), {0, 100, 255});
  texture.ComputeMatrix(out, image, &right);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{0, 0, 2}}));
}

TEST_F(Cooccurrence, EveryRunStartsFromZero) {
  texture.ComputeMatrix(out, SmallPlane(), &right);
  texture.ComputeMatrix(out, MakeGrey8(CSize(2, 1), {9, 9}), &right);
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{9, 9, 1}}));
}

TEST_F(Cooccurrence, AllDirectionsFillTheirSlices) {
  struct {
    CImage image;
    int64 directions;
  } const cases[] = {
      {MakeGrey8(CSize(3, 2), {1, 2, 3, 4, 5, 6}), 4},
      {MakeGrey8(CSize(2, 2, 2), {1, 2, 3, 4, 5, 6, 7, 8}), 13},
      {test::MakeImage<std::uint16_t>(IMAGE_GREY_16, CSize(2, 2), {256, 512, 768, 1024}), 4},
  };
  for (auto const& [image, directions] : cases) {
    CImage all = Output(directions);
    texture.ComputeMatrixAllDirections(all, image);
    for (int64 s = 0; s < directions; ++s) {
      auto const direction = CCooccurrence::m_cDirections[static_cast<std::size_t>(s)];
      EXPECT_EQ(test::ReadMatrix(all, s), test::CountWithLibrary(image, direction)) << s;
    }
  }
}

TEST_F(Cooccurrence, FixedDirectionsAreOneOfEachOppositePair) {
  std::vector<CTriple<long>> seen;
  for (auto const d : CCooccurrence::m_cDirections) {
    seen.push_back(d);
    seen.push_back(d * -1L);
  }
  for (long z = -1; z <= 1; ++z)
    for (long y = -1; y <= 1; ++y)
      for (long x = -1; x <= 1; ++x)
        EXPECT_EQ(std::ranges::count(seen, CTriple<long>(x, y, z)), x || y || z ? 1 : 0);
  for (std::size_t s = 0; s < 4; ++s) EXPECT_EQ(CCooccurrence::m_cDirections[s].z, 0);
  EXPECT_EQ(CCooccurrence::m_cDirections[11], CTriple<long>(1, -1, -1));
}

TEST_F(Cooccurrence, WritesNothingElseOfTheOutput) {
  CImage all = Output(4);
  auto access = all.CreateAccess(true);
  std::memset(access.WritableBase(), 0xAB, all.Bytes());
  access.Release();
  texture.ComputeMatrixAllDirections(all, SmallPlane());
  EXPECT_EQ(test::Total(test::ReadMatrix(all, 3)), 2u);
  EXPECT_TRUE(all.Attributes().IsEmpty());
}

// Errors: the messages, and the operations that raise them.

TEST_F(Cooccurrence, MatrixRefusesAWrongOutput) {
  std::string const where = "ORVA::CCooccurrence::ComputeMatrix";
  CImage wrongType(IMAGE_GREY_16, CSize(1, 256, 256));
  ExpectError([&] { texture.ComputeMatrix(wrongType, SmallPlane(), &right); },
              "output image type does not match", where, c_source);
  for (CSize const size : {CSize(2, 256, 256), CSize(1, 255, 256), CSize(1, 256, 255),
                           CSize(256, 256), CSize(0, 256, 256)}) {
    CImage wrongSize(IMAGE_GREY_32, size);
    ExpectError([&] { texture.ComputeMatrix(wrongSize, SmallPlane(), &right); },
                "output image size does not match", where, c_source);
    ExpectError(
        [&] { texture.ComputeMatrixAndFeatures(wrongSize, SmallPlane(), &right, &features); },
        "output image size does not match", "ORVA::CCooccurrence::ComputeMatrixAndFeatures",
        c_source);
  }
  ExpectError([&] { texture.ComputeMatrixAndFeatures(wrongType, SmallPlane(), &right, &features); },
              "output image type does not match", "ORVA::CCooccurrence::ComputeMatrixAndFeatures",
              c_source);
}

TEST_F(Cooccurrence, OutputTypeIsCheckedBeforeItsSizeAndBothBeforeTheInput) {
  CImage wrongBoth(IMAGE_GREY_8, CSize(7, 7));
  CImage const noDimension;
  ExpectError([&] { texture.ComputeMatrix(wrongBoth, noDimension, &right); },
              "output image type does not match");
  CImage wrongSize(IMAGE_GREY_32, CSize(7, 7));
  ExpectError([&] { texture.ComputeMatrix(wrongSize, noDimension, &right); },
              "output image size does not match");
}

// What is wrong with the arguments of ComputeMatrixAndFeatures, mended one by one in the order in
// which it is looked at.
TEST_F(Cooccurrence, MatrixAndFeaturesCheckTheirArgumentsInOrder) {
  CImage wrongType(IMAGE_GREY_8, CSize(7, 7)), wrongSize(IMAGE_GREY_32, CSize(7, 7));
  CImage const none, line(IMAGE_GREY_8, CSize(5)), plane(IMAGE_GREY_F, CSize(3, 3));
  CTriple<long> outOfPlane(1, 0, 1);
  struct {
    CImage& out;
    CImage const& in;
    CTriple<long>* direction;
    CValueMap* features;
    std::string message;
  } const cases[] = {
      {wrongType, none, nullptr, nullptr, "direction is null"},
      {wrongType, none, &outOfPlane, nullptr, "feature map is null"},
      {wrongType, none, &outOfPlane, &features, "output image type does not match"},
      {wrongSize, none, &outOfPlane, &features, "output image size does not match"},
      {out, none, &outOfPlane, &features, "image dimension does not match"},
      {out, plane, &outOfPlane, &features, "direction with dz = 1 leads out of a 2d image"},
      {out, line, &right, &features, "Images must be 2d or 3d."},
      {out, plane, &right, &features, "input image type does not match"},
  };
  for (auto const& c : cases) {
    auto const call = [&] {
      texture.ComputeMatrixAndFeatures(c.out, c.in, c.direction, c.features);
    };
    if (c.message.starts_with("direction") || c.message.starts_with("feature map")) {
      ExpectError<CExBadParam>(call, c.message);
    } else {
      ExpectError(call, c.message);
    }
  }
  EXPECT_TRUE(features.IsEmpty());
}

TEST_F(Cooccurrence, RefusesAnImageWithoutDimension) {
  CImage const none;
  char const message[] = "image dimension does not match";
  ExpectError([&] { texture.ComputeMatrix(out, none, &right); }, message,
              "ORVA::CCooccurrence::ComputeMatrix", c_source);
  ExpectError([&] { texture.ComputeMatrixAllDirections(out, none); }, message,
              "ORVA::CCooccurrence::ComputeMatrixAllDirections", c_source);
  ExpectError([&] { texture.ComputeFeatures(none, &right, &features); }, message,
              "ORVA::CCooccurrence::ComputeFeatures", c_source);
  ExpectError([&] { texture.ComputeMatrixAndFeatures(out, none, &right, &features); }, message,
              "ORVA::CCooccurrence::ComputeMatrixAndFeatures", c_source);
}

TEST_F(Cooccurrence, LineImageIsRefusedByTheCountingStep) {
  CImage const line(IMAGE_GREY_8, CSize(5));
  char const message[] = "Images must be 2d or 3d.";
  char const where[] = "ORVA::CCooccurrence::ProcessMatrix";
  ExpectError([&] { texture.ComputeMatrix(out, line, &right); }, message, where, c_source);
  ExpectError([&] { texture.ComputeMatrixAllDirections(out, line); }, message, where, c_source);
  ExpectError([&] { texture.ComputeFeatures(line, &right, &features); }, message, where, c_source);
  ExpectError([&] { texture.ComputeMatrixAndFeatures(out, line, &right, &features); }, message,
              where, c_source);
}

TEST_F(Cooccurrence, EachErrorHasALineOfItsOwn) {
  CImage const flat = SmallPlane(), line(IMAGE_GREY_8, CSize(3)), real(IMAGE_GREY_F, CSize(3, 3));
  CImage wrongType(IMAGE_GREY_8, CSize(1, 256, 256)), wrongSize(IMAGE_GREY_32, CSize(1, 256, 255));
  CTriple<long> deep(0, 0, 1);
  auto const compute = [&](CImage& matrix, CImage const& image, CTriple<long>* direction) {
    return [=, this, &matrix, &image] { texture.ComputeMatrix(matrix, image, direction); };
  };
  test::ExpectLinesOfTheirOwn({compute(out, flat, nullptr), compute(wrongType, flat, &right),
                               compute(wrongSize, flat, &right), compute(out, line, &right),
                               compute(out, flat, &deep), compute(out, real, &right)});
}

TEST_F(Cooccurrence, RefusesPixelsThatAreNoGrayLevels) {
  for (auto const type : {IMAGE_GREY_F, IMAGE_BOOL, IMAGE_BINARY_FG}) {
    CImage const image(type, CSize(3, 3));
    ExpectError([&] { texture.ComputeMatrix(out, image, &right); },
                "input image type does not match", "ORVA::CCooccurrence::ProcessMatrix", c_source);
    ExpectError([&] { texture.ComputeFeatures(image, &right, &features); },
                "input image type does not match", "ORVA::CCooccurrence::ProcessMatrix", c_source);
  }
}

TEST_F(Cooccurrence, AllDirectionsRefuse32BitImagesThatOneDirectionTakes) {
  CImage const image(IMAGE_GREY_32, CSize(3, 3));
  EXPECT_NO_THROW(texture.ComputeMatrix(out, image, &right));
  CImage all = Output(4);
  ExpectError([&] { texture.ComputeMatrixAllDirections(all, image); },
              "input image type not supported", "ORVA::CCooccurrence::ComputeMatrixAllDirections",
              c_source);
}

TEST_F(Cooccurrence, AllDirectionsCheckInputBeforeOutput) {
  std::string const where = "ORVA::CCooccurrence::ComputeMatrixAllDirections";
  CImage wrongType(IMAGE_GREY_16, CSize(4, 256, 256));
  ExpectError(
      [&] { texture.ComputeMatrixAllDirections(wrongType, CImage(IMAGE_GREY_F, CSize(2, 2))); },
      "input image type not supported", where, c_source);
  ExpectError([&] { texture.ComputeMatrixAllDirections(wrongType, SmallPlane()); },
              "output image type does not match", where, c_source);
  CImage thirteen = Output(13), four = Output(4);
  ExpectError([&] { texture.ComputeMatrixAllDirections(thirteen, SmallPlane()); },
              "output image size does not match", where, c_source);
  ExpectError([&] { texture.ComputeMatrixAllDirections(four, SmallVolume()); },
              "output image size does not match", where, c_source);
}

TEST_F(Cooccurrence, RefusesNullArgumentsBeforeAnythingElse) {
  CImage const none;
  ExpectError<CExBadParam>([&] { texture.ComputeMatrix(out, none, nullptr); }, "direction is null",
                           "ORVA::CCooccurrence::ComputeMatrix", c_source);
  ExpectError<CExBadParam>([&] { texture.ComputeFeatures(none, nullptr, &features); },
                           "direction is null", "ORVA::CCooccurrence::ComputeFeatures", c_source);
  ExpectError<CExBadParam>([&] { texture.ComputeFeatures(none, &right, nullptr); },
                           "feature map is null", "ORVA::CCooccurrence::ComputeFeatures", c_source);
  ExpectError<CExBadParam>([&] { texture.ComputeMatrixAndFeatures(out, none, nullptr, &features); },
                           "direction is null", "ORVA::CCooccurrence::ComputeMatrixAndFeatures",
                           c_source);
  ExpectError<CExBadParam>([&] { texture.ComputeMatrixAndFeatures(out, none, &right, nullptr); },
                           "feature map is null", "ORVA::CCooccurrence::ComputeMatrixAndFeatures",
                           c_source);
}

TEST_F(Cooccurrence, RefusesToLeaveThePlaneOfA2DImage) {
  for (long const dz : {1L, -1L, 2147483647L}) {
    CTriple<long> out2d(1, 0, dz);
    std::string const message =
        "direction with dz = " + std::to_string(dz) + " leads out of a 2d image";
    ExpectError<CExBadParam>([&] { texture.ComputeMatrix(out, SmallPlane(), &out2d); }, message,
                             "ORVA::CCooccurrence::ComputeMatrix", c_source);
    ExpectError<CExBadParam>([&] { texture.ComputeFeatures(SmallPlane(), &out2d, &features); },
                             message, "ORVA::CCooccurrence::ComputeFeatures", c_source);
    ExpectError<CExBadParam>(
        [&] { texture.ComputeMatrixAndFeatures(out, SmallPlane(), &out2d, &features); }, message,
        "ORVA::CCooccurrence::ComputeMatrixAndFeatures", c_source);
  }
  EXPECT_TRUE(features.IsEmpty());
}

TEST_F(Cooccurrence, RefusesDirectionComponentsBeyond32Bits) {
  if constexpr (sizeof(long) > 4) {
    for (CTriple<long> direction :
         {CTriple<long>(2147483648L, 0, 0), CTriple<long>(0, -2147483649L, 0),
          CTriple<long>(0, 0, std::numeric_limits<long>::min())})
      EXPECT_THROW(texture.ComputeMatrix(out, SmallVolume(), &direction), CExBadParam);
    CTriple<long> direction(0, 2147483648L, 0);
    ExpectError<CExBadParam>([&] { texture.ComputeMatrix(out, SmallVolume(), &direction); },
                             "direction component 2147483648 does not fit 32 bits");
  } else {
    GTEST_SKIP() << "long has 32 bits here";
  }
}

TEST_F(Cooccurrence, FailedCheckLeavesTheOutputAlone) {
  texture.ComputeMatrix(out, SmallPlane(), &right);
  CImage const before = out;
  EXPECT_THROW(texture.ComputeMatrix(out, CImage(IMAGE_GREY_F, CSize(3, 3)), &right), CException);
  EXPECT_TRUE(out == before);
}

TEST_F(Cooccurrence, OutputMayBeTheInput) {
  CImage image(IMAGE_GREY_32, CSize(1, 256, 256));
  CTriple<long> down(0, 1, 0);
  texture.ComputeMatrix(image, image, &down);
  EXPECT_EQ(Cells(test::ReadMatrix(image)), (CellList{{0, 0, 255 * 256}}));
}

// The direction by value, the features as an array.

TEST_F(Cooccurrence, DirectionByValueGivesTheSameMatrix) {
  CImage byValue = Output();
  for (CTriple<long> direction : CCooccurrence::m_cDirections) {
    texture.ComputeMatrix(out, SmallVolume(), &direction);
    texture.ComputeMatrix(byValue, SmallVolume(), direction);
    EXPECT_TRUE(byValue == out);
  }
  texture.ComputeMatrix(out, SmallPlane(), {1, 0, 0});
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{1, 2, 1}, {2, 3, 1}, {4, 5, 1}, {5, 6, 1}}));
}

TEST_F(Cooccurrence, FeaturesAsAnArrayAreThoseOfTheMap) {
  CImage both = Output();
  texture.ComputeMatrix(out, SmallPlane(), &right);
  texture.ComputeFeatures(SmallPlane(), &right, &features);
  auto const array = texture.ComputeFeatures(SmallPlane(), right);
  EXPECT_EQ(texture.ComputeMatrixAndFeatures(both, SmallPlane(), right), array);
  EXPECT_TRUE(both == out);
  for (std::size_t k = 0; k < array.size(); ++k)
    EXPECT_EQ(array[k], features.Entry(CCooccurrence::m_cFeatureNames[k]).Double()) << k;
}

TEST_F(Cooccurrence, DirectionByValueIsCheckedAlike) {
  CTriple<long> const outOfPlane(1, 0, 1), full(3, 0, 0);
  char const message[] = "direction with dz = 1 leads out of a 2d image";
  ExpectError<CExBadParam>([&] { texture.ComputeMatrix(out, SmallPlane(), outOfPlane); }, message,
                           "ORVA::CCooccurrence::ComputeMatrix", c_source);
  ExpectError<CExBadParam>(
      [&] { static_cast<void>(texture.ComputeFeatures(SmallPlane(), outOfPlane)); }, message,
      "ORVA::CCooccurrence::ComputeFeatures", c_source);
  ExpectError<CExBadParam>([&] { texture.ComputeMatrixAndFeatures(out, SmallPlane(), outOfPlane); },
                           message, "ORVA::CCooccurrence::ComputeMatrixAndFeatures", c_source);
  ExpectError([&] { static_cast<void>(texture.ComputeFeatures(SmallPlane(), full)); },
              "Cooccurrence::PrepareArrays: division by null/epsilon!");
}

// More pairs of one kind than a count holds: an image of 4 GiB, of which the system keeps no page
// as long as nothing is written.

TEST_F(Cooccurrence, CountAbove32BitsIsAnError) {
  CImage black;
  try {
    black = CImage(IMAGE_GREY_8, CSize(65536, 65536 + 1));
  } catch (std::bad_alloc const&) {
    GTEST_SKIP() << "no 4 GiB of addresses for one image here";
  }
  texture.ComputeMatrix(out, SmallPlane(), &right);
  CImage const before = out;
  CTriple<long> none(0, 0, 0), left(-1, 0, 0);
  ExpectError([&] { texture.ComputeMatrixAndFeatures(out, black, &none, &features); },
              "a co-occurrence count exceeds 4294967295", "ORVA::CCooccurrence::ProcessMatrix",
              c_source);
  EXPECT_TRUE(out == before);
  EXPECT_TRUE(features.IsEmpty());
  texture.ComputeMatrix(out, black, &left); // 65535 * 65537 = 2^32 - 1
  EXPECT_EQ(Cells(test::ReadMatrix(out)), (CellList{{0, 0, 4294967295U}}));
}

// Copies.

TEST_F(Cooccurrence, CopiesShareNothing) {
  texture.SetInstance("first");
  texture.ComputeMatrix(out, SmallPlane(), &right);
  CCooccurrence copy(texture);
  CCooccurrence assigned("other", nullptr);
  assigned = copy;
  assigned = *&assigned;
  EXPECT_EQ(assigned.Name(), "texture");
  EXPECT_EQ(assigned.Instance(), "first");
  CImage second = Output();
  assigned.ComputeMatrix(second, MakeGrey8(CSize(2, 1), {9, 9}), &right);
  copy.ComputeMatrix(out, SmallPlane(), &right);
  EXPECT_EQ(Cells(test::ReadMatrix(second)), (CellList{{9, 9, 1}}));
  EXPECT_EQ(Cells(test::ReadMatrix(out)).size(), 4u);
}

// Progress.

namespace {

struct StNotes : IProgressObserver {
  void Start(int64 steps, char const* text) override {
    notes.push_back(std::string(text) + " " + std::to_string(steps));
  }
  void Advance() override { notes.push_back("step"); }
  void Finish(bool complete) noexcept override { notes.push_back(complete ? "done" : "failed"); }
  bool IsCancelled() override { return cancelAfter > 0 && --cancelAfter == 0; }
  std::vector<std::string> notes;
  int cancelAfter = 0;
};

using Notes = std::vector<std::string>;

} // namespace

TEST_F(Cooccurrence, ReportsOneStepAStage) {
  StNotes observer;
  texture.SetProgressObserver(&observer);
  texture.ComputeMatrix(out, SmallPlane(), &right);
  EXPECT_EQ(std::exchange(observer.notes, {}), (Notes{"Busy... 2", "step", "done"}));
  texture.ComputeFeatures(SmallPlane(), &right, &features);
  EXPECT_EQ(std::exchange(observer.notes, {}), (Notes{"Busy... 3", "step", "step", "done"}));
  texture.ComputeMatrixAndFeatures(out, SmallPlane(), &right, &features);
  EXPECT_EQ(std::exchange(observer.notes, {}),
            (Notes{"Busy... 4", "step", "step", "step", "done"}));
  CImage all = Output(4);
  texture.ComputeMatrixAllDirections(all, SmallPlane());
  EXPECT_EQ(observer.notes, (Notes{"Busy... 4", "step", "step", "step", "step", "done"}));
}

TEST_F(Cooccurrence, FailedCheckStartsNoProgress) {
  StNotes observer;
  texture.SetProgressObserver(&observer);
  EXPECT_THROW(texture.ComputeMatrix(out, SmallPlane(), nullptr), CExBadParam);
  EXPECT_TRUE(observer.notes.empty());
  EXPECT_THROW(texture.ComputeMatrix(out, CImage(IMAGE_GREY_8, CSize(5)), &right), CException);
  EXPECT_EQ(observer.notes, (Notes{"Busy... 2", "failed"}));
}

TEST_F(Cooccurrence, ObserverStopsTheOperationAtItsNextStep) {
  StNotes observer;
  texture.SetProgressObserver(&observer);
  observer.cancelAfter = 2;
  CImage all = Output(4);
  ExpectError([&] { texture.ComputeMatrixAllDirections(all, SmallPlane()); },
              "operation cancelled");
  EXPECT_EQ(observer.notes, (Notes{"Busy... 4", "step", "step", "failed"}));
  EXPECT_EQ(test::Total(test::ReadMatrix(all, 1)), 2u) << "finished slices stay";
  EXPECT_EQ(test::Total(test::ReadMatrix(all, 2)), 0u);
}
