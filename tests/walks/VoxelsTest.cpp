// The voxels below a walk: those that plain indexing finds at its points.
#include <SeluUtils/Voxels.h>

#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <pxlib2image/ImageView.h>

#include "support/Errors.h"
#include "support/Printers.h"
#include "support/Random.h"
#include "support/Walks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

using namespace ORVA;
using test::Point;
using test::PointList;
using test::Walk;

namespace {

template <class Pixel>
struct StPixel;
template <>
struct StPixel<std::uint8_t> {
  static constexpr auto c_type = IMAGE_GREY_8;
};
template <>
struct StPixel<std::uint16_t> {
  static constexpr auto c_type = IMAGE_GREY_16;
};
template <>
struct StPixel<float> {
  static constexpr auto c_type = IMAGE_GREY_F;
};

// Every voxel has a value of its own, as far as its type goes.
template <class Pixel>
CImage Numbered(CSize const& size) {
  CImage image(StPixel<Pixel>::c_type, size);
  auto const access = image.CreateAccess(true);
  auto* const pixels = reinterpret_cast<Pixel*>(access.WritableBase());
  for (int64 k = 0; k < size.x * size.y * size.z; ++k) pixels[k] = static_cast<Pixel>(k % 65'521);
  return image;
}

bool IsInside(Point const& p, CSize const& size) {
  return p.x >= 0 && p.x < size.x && p.y >= 0 && p.y < size.y && p.z >= 0 && p.z < size.z;
}

PointList Inside(PointList points, CSize const& size) {
  std::erase_if(points, [&](Point const& p) { return !IsInside(p, size); });
  return points;
}

// By plain indexing.
template <class Pixel>
std::vector<Pixel> Values(CImage const& image, PointList const& points) {
  auto const access = image.CreateAccess(false);
  auto const* const pixels = reinterpret_cast<Pixel const*>(access.Base());
  CSize const size = image.Size();
  std::vector<Pixel> values;
  for (Point const& p : points) values.push_back(pixels[p.x + size.x * (p.y + size.y * p.z)]);
  return values;
}

template <class Pixel, class W>
void ExpectVoxels(CImage const& image, W const& walker) {
  PointList const points = Inside(Walk(W(walker)), image.Size());
  std::vector<Pixel> const values = Values<Pixel>(image, points);

  W walk = walker;
  std::vector<Pixel> found;
  for (Pixel const& value : Voxels<Pixel>(image, walk)) found.push_back(value);
  ASSERT_EQ(found, values);
  ASSERT_FALSE(walk.MorePoints());

  W each = walker;
  PointList places;
  ForEachVoxel<Pixel>(image, each, [&](auto const& value, Point const& p) {
    ASSERT_TRUE(IsInside(p, image.Size())) << testing::PrintToString(p);
    ASSERT_EQ(value, Values<Pixel>(image, {p}).front());
    places.push_back(p);
  });
  ASSERT_EQ(test::Sorted(places), test::Sorted(points));
  ASSERT_FALSE(each.MorePoints());
  ASSERT_EQ(each.Remaining(), 0U);

  double sum = 0, expected = 0;
  for (Pixel const value : values) expected += static_cast<double>(value);
  ForEachVoxel<Pixel>(image, W(walker), [&](auto value) { sum += static_cast<double>(value); });
  ASSERT_EQ(sum, expected);
}

double Real(int64 number) { return static_cast<double>(number); }

template <class Pixel>
class VoxelsBelow : public testing::Test {
protected:
  int64 Between(int64 low, int64 high) { return m_Numbers.Between(low, high); }
  Point PointWithin(int64 reach) {
    return {Between(-reach, reach), Between(-reach, reach), Between(-reach, reach)};
  }
  // From its start and from somewhere in its midst.
  template <class W>
  void Expect(W walker) {
    ExpectVoxels<Pixel>(m_Image, walker);
    for (int64 taken = Between(0, 40); taken > 0 && walker.MorePoints(); --taken)
      (void)walker.NextPoint();
    ExpectVoxels<Pixel>(m_Image, walker);
  }

  test::CRandomNumbers m_Numbers;
  CImage m_Image = Numbered<Pixel>(CSize(23, 19, 7));
};
using Pixels = testing::Types<std::uint8_t, float>; // the smallest and one of four bytes
TYPED_TEST_SUITE(VoxelsBelow, Pixels);

std::array<int64, 4> const c_flat = {NEIGHBORHOOD_4, NEIGHBORHOOD_6_1, NEIGHBORHOOD_6_2,
                                     NEIGHBORHOOD_8};
std::array<int64, 4> const c_solid = {NEIGHBORHOOD_6, NEIGHBORHOOD_14_1, NEIGHBORHOOD_14_2,
                                      NEIGHBORHOOD_26};

} // namespace

TYPED_TEST(VoxelsBelow, Lines) {
  for (int k = 0; k < 300; ++k) {
    auto const code = static_cast<std::size_t>(this->Between(0, 3));
    bool const ends = k % 2 == 0;
    Point const from = this->PointWithin(30), to = this->PointWithin(30);
    this->Expect(CBresenhamVisitor(from, to, 3, c_solid[code], ends));
    Point const flatFrom(from.x, from.y, k % 9), flatTo(to.x, to.y, k % 9);
    this->Expect(CBresenhamVisitor(flatFrom, flatTo, 2, c_flat[code], ends));
    this->Expect(CBresenhamVisitor(Point(from.x, 3, 3), to, 1, 0, ends));
    CBresenhamVisitorSelect part(from, to, 3, c_solid[code], ends);
    if (k % 3 != 0) part.SetImageSize(Point(20, 20, 20));
    this->Expect(part);
  }
}

TYPED_TEST(VoxelsBelow, LinesAlongAxesAndDiagonals) {
  for (int64 x = -1; x <= 1; ++x)
    for (int64 y = -1; y <= 1; ++y)
      for (int64 z = -1; z <= 1; ++z) {
        Point const from(x < 0 ? 25 : -2, y < 0 ? 20 : -1, z < 0 ? 8 : 0);
        this->Expect(CBresenhamVisitor(from, from + Point(40 * x, 40 * y, 40 * z), 3,
                                       NEIGHBORHOOD_26, true));
      }
}

TYPED_TEST(VoxelsBelow, ALineThatIsLongerThanAnyImage) {
  CBresenhamVisitor const line({-1'000'000'000, 5, 3}, {1'000'000'000, 6, 3}, 3, NEIGHBORHOOD_26,
                               true);
  double sum = 0, expected = 0;
  ForEachVoxel(this->m_Image, CBresenhamVisitor(line),
               [&](auto value) { sum += static_cast<double>(value); });
  PointList points; // the line climbs in its middle, at x = 0
  for (int64 x = 0; x < 23; ++x) points.emplace_back(x, 6, 3);
  for (TypeParam const value : Values<TypeParam>(this->m_Image, points))
    expected += static_cast<double>(value);
  EXPECT_EQ(sum, expected);
}

TYPED_TEST(VoxelsBelow, Boxes) {
  for (int k = 0; k < 200; ++k) {
    Point const low = this->PointWithin(9);
    Point const high =
        low + Point(this->Between(-1, 30), this->Between(-1, 20), this->Between(-1, 9));
    this->Expect(CWindowVisitor(low, high));
  }
  constexpr auto highest = std::numeric_limits<int64>::max();
  CWindowVisitor half({highest, 0, 0}, {highest, 1, 0}); // rows that end where integers do
  (void)half.NextPoint();
  this->Expect(half);
}

TYPED_TEST(VoxelsBelow, PolygonsAndAreas) {
  for (int k = 0; k < 100; ++k) {
    PointList corners;
    for (int64 i = this->Between(1, 6); i > 0; --i)
      corners.emplace_back(this->Between(-9, 30), this->Between(-9, 30), 0);
    auto const code = static_cast<std::size_t>(this->Between(0, 3));
    bool const border = k % 2 == 0;
    for (int plane = 0; plane < 4; ++plane) {
      PointList list = corners;
      for (Point& p : list)
        p = plane == 0   ? Point(p.x, p.y, k % 8)
            : plane == 1 ? Point(p.x, 4, p.y)
            : plane == 2 ? Point(4, p.x, p.y)
                         : Point(p.x + p.y, p.x - p.y, p.y);
      this->Expect(CPolygonVisitor(list, 3, c_solid[code], border));
      try {
        this->Expect(CBresenhamAreaVisitor(PointList(list), 3, NEIGHBORHOOD_26, border));
      } catch (CException const&) {
        continue; // an outline that it cannot pair
      }
    }
  }
}

TYPED_TEST(VoxelsBelow, PolygonsWithHolesAndSeveralRunsPerColumn) {
  CImage const image = Numbered<TypeParam>(CSize(120, 90));
  PointList const comb{{0, 0, 0},   {110, 0, 0}, {110, 80, 0}, {90, 80, 0},
                       {90, 10, 0}, {70, 10, 0}, {70, 80, 0},  {50, 80, 0},
                       {50, 10, 0}, {30, 10, 0}, {30, 85, 0},  {0, 85, 0}};
  std::vector<PointList> const holes = {{{5, 5, 0}, {25, 5, 0}, {25, 70, 0}, {5, 70, 0}},
                                        {{92, 12, 0}, {108, 40, 0}, {95, 70, 0}}};
  for (bool const border : {true, false}) {
    ExpectVoxels<TypeParam>(image, CPolygonVisitor(comb, holes, 2, NEIGHBORHOOD_8, border));
    PointList upright = comb; // teeth along x: several runs in every column
    for (Point& p : upright) p = {p.y, p.x, 0};
    ExpectVoxels<TypeParam>(image, CPolygonVisitor(upright, 2, NEIGHBORHOOD_4, border));
  }
}

TYPED_TEST(VoxelsBelow, OtherWalks) {
  for (int k = 0; k < 40; ++k) {
    CTriple<double> const normal(Real(this->Between(-4, 4)), Real(this->Between(-4, 4)),
                                 Real(this->Between(1, 4)));
    CPlaneSection section(normal, Real(this->Between(-10, 60)));
    section.SetImageSize(Point(30, 12, 9)); // not this image's
    this->Expect(section);
    CParallelLineVisitor lines(normal);
    lines.SetImageSize(Point(12, 12, 9));
    this->Expect(lines);
    CDirectionalVisitor along({0, 0, 0}, {24, 9, 9}, {k % 3 - 1, k / 3 % 3 - 1, 1});
    along.SetImageSize(Point(24, 24, 24));
    this->Expect(along);
    PointList path;
    for (int64 i = 5; i > 0; --i)
      path.emplace_back(this->Between(0, 25), this->Between(0, 20), this->Between(0, 9));
    path.push_back(path.front());
    this->Expect(CBresenhamVolumeVisitor(path, NEIGHBORHOOD_26, true));
  }
}

TYPED_TEST(VoxelsBelow, AWalkCanBeWritten) {
  CPolygonVisitor const polygon({{-3, 2, 1}, {40, 3, 1}, {9, 30, 1}}, 2, NEIGHBORHOOD_8, true);
  CImage painted = this->m_Image;
  for (TypeParam& value : Voxels<TypeParam>(painted, CPolygonVisitor(polygon))) value = 7;
  CImage expected = this->m_Image;
  auto const access = expected.CreateAccess(true);
  auto* const pixels = reinterpret_cast<TypeParam*>(access.WritableBase());
  for (Point const& p : Inside(Walk(CPolygonVisitor(polygon)), expected.Size()))
    pixels[p.x + 23 * (p.y + 19 * p.z)] = 7;
  EXPECT_TRUE(painted == expected);
  CImage each = this->m_Image;
  ForEachVoxel(each, CPolygonVisitor(polygon), [](auto& value) { value = 7; });
  EXPECT_TRUE(each == expected);
}

TEST(VoxelsErrors, NameWhatTheImageHas) {
  CImage const image(IMAGE_GREY_16, CSize(4, 4)), none;
  CWindowVisitor window({0, 0, 0}, {3, 3, 0});
  test::ExpectError<CExBadParam>(
      [&] { (void)ORVA::Voxels<std::uint8_t>(image, window); },
      "the pixels are of type IMAGE_GREY_16, not unsigned integers of 1 bytes",
      "ORVA::CImageAccess::As");
  test::ExpectError<CExBadParam>([&] { ForEachVoxel(none, window, [](auto) {}); },
                                 "an image without a pixel type has no voxels",
                                 "ORVA::ForEachVoxel", "src/Utils/Voxels");
  EXPECT_EQ(window.Remaining(), 16U);
}

TEST(VoxelsRange, LeftEarlyLeavesTheWalkBehindTheRun) {
  CImage const image = Numbered<std::uint8_t>(CSize(5, 4));
  CWindowVisitor window({1, 0, 0}, {3, 3, 0});
  for (std::uint8_t const& value : Voxels<std::uint8_t>(image, window))
    if (value == 2) break;
  EXPECT_EQ(window.NextPoint(), Point(1, 1, 0));
}

TEST(VoxelsRange, OutlivesTheNameOfItsImage) {
  auto const range = [] {
    CImage const image = Numbered<std::uint8_t>(CSize(5, 4));
    return Voxels<std::uint8_t>(image, CWindowVisitor({0, 0, 0}, {4, 3, 0}));
  };
  int sum = 0;
  for (std::uint8_t const& value : range()) sum += value;
  EXPECT_EQ(sum, 190);
}

TEST(VoxelsOfEveryType, AreThoseOfPlainIndexing) {
  CPolygonVisitor const polygon({{-3, 2, 1}, {40, 3, 1}, {9, 30, 1}}, 2, NEIGHBORHOOD_8, true);
  PointList const points = Inside(Walk(CPolygonVisitor(polygon)), CSize(23, 19, 7));
  for (auto const type :
       {IMAGE_BOOL, IMAGE_BINARY_FG, IMAGE_GREY_8, IMAGE_GREY_16, IMAGE_GREY_32, IMAGE_GREY_F,
        IMAGE_SIGNED_8, IMAGE_SIGNED_16, IMAGE_SIGNED_32, IMAGE_DOUBLE}) {
    SCOPED_TRACE(type.ToString());
    CImage image(type, CSize(23, 19, 7));
    ForEachVoxel(image, CPolygonVisitor(polygon), [](auto& value) { value = 1; });
    double sum = 0;
    ForEachVoxel(std::as_const(image), CWindowVisitor({0, 0, 0}, {99, 99, 99}),
                 [&](auto value) { sum += static_cast<double>(value); });
    EXPECT_EQ(sum, static_cast<double>(points.size()));
    sum = 0;
    ForEachVoxel(std::as_const(image), CPolygonVisitor(polygon),
                 [&](auto value) { sum += static_cast<double>(value); });
    EXPECT_EQ(sum, static_cast<double>(points.size()));
  }
}

TEST(VoxelsOfAView, AreThoseOfItsLayout) {
  std::vector<std::uint16_t> pixels(7 * 19 * 23);
  for (std::size_t k = 0; k < pixels.size(); ++k) pixels[k] = static_cast<std::uint16_t>(k);
  CImage const image = Numbered<std::uint16_t>(CSize(23, 19, 7));
  std::vector<std::array<int64, 3>> const layouts = {{2, 46, 874}, {-2, 46, -874}, {266, 14, 2},
                                                     {14, 322, 2}, {38, 2, 874},   {-38, -2, 874}};
  PointList const outline{{-3, 2, 1}, {40, 3, 1}, {9, 30, 1}};
  for (auto const& strides : layouts) {
    std::size_t base = 0; // of voxel (0, 0, 0)
    std::array<int64, 3> const extents = {23, 19, 7};
    for (std::size_t axis = 0; axis < 3; ++axis)
      if (strides[axis] < 0)
        base += static_cast<std::size_t>(-strides[axis] / 2 * (extents[axis] - 1));
    CImageView const view(IMAGE_GREY_16, CSize(23, 19, 7),
                          static_cast<void const*>(pixels.data() + base), strides);
    auto const expectAll = [&](auto const& walker) {
      using W = std::remove_cvref_t<decltype(walker)>;
      uint64 count = 0;
      ForEachVoxel<std::uint16_t>(view, W(walker), [&](auto value, Point const& p) {
        auto const offset =
            static_cast<std::size_t>(static_cast<int64>(base) +
                                     (p.x * strides[0] + p.y * strides[1] + p.z * strides[2]) / 2);
        ASSERT_EQ(value, pixels[offset]);
        ++count;
      });
      EXPECT_EQ(count, Inside(Walk(W(walker)), view.Size()).size());
      std::vector<std::uint16_t> values;
      for (auto const& value : Voxels<std::uint16_t>(view, W(walker))) values.push_back(value);
      EXPECT_EQ(values.size(), count);
    };
    expectAll(CPolygonVisitor(outline, 2, NEIGHBORHOOD_8, true));
    expectAll(CPolygonVisitor({{0, 0, 0}, {30, 3, 3}, {9, 9, 9}}, 3, NEIGHBORHOOD_26, true));
    expectAll(CWindowVisitor({-2, 3, 1}, {30, 17, 5}));
    expectAll(CBresenhamVisitor({-3, 25, 0}, {25, -4, 6}, 3, NEIGHBORHOOD_26, true));
    expectAll(CBresenhamVisitor({-3, 25, 0}, {25, -4, 6}, 3, NEIGHBORHOOD_6, true));
  }
}

TEST(VoxelsOfAView, MustBeAligned) {
  std::vector<std::uint8_t> bytes(64);
  CImageView const view(IMAGE_GREY_16, CSize(4, 4), static_cast<void const*>(bytes.data()),
                        {3, 12, 0});
  test::ExpectError<CExBadParam>(
      [&] {
        (void)ORVA::Voxels<std::uint16_t>(view, CWindowVisitor({0, 0, 0}, {3, 3, 0}));
      },
      "the pixels are not aligned for numbers of 2 bytes", "ORVA::CImageAccess::As");
}
