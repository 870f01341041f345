// Gray levels made on purpose: every recipe, the values that need care, masks and reports; against
// exact rational arithmetic.

#include "support/Errors.h"
#include "support/Images.h"
#include "support/Random.h"

#include <SeluUtils/Texture/Quantizer.h>

#include <boost/multiprecision/cpp_int.hpp>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

using namespace ORVA;
using test::ExpectError;
using test::MakeImage;
using EnBeyond = CQuantizer::EnBeyond;
using Rational = boost::multiprecision::cpp_rational;
using Levels = std::vector<int>;

namespace {

constexpr double c_inf = std::numeric_limits<double>::infinity();
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

Levels LevelsOf(CLevelImage const& image) {
  Levels levels;
  auto const& extents = image.Extents();
  for (int64 z = 0; z < extents[2]; ++z)
    for (int64 y = 0; y < extents[1]; ++y)
      for (int64 x = 0; x < extents[0]; ++x) levels.push_back(image.At({x, y, z}));
  return levels;
}

CImage Doubles(std::vector<double> const& values) {
  return MakeImage(IMAGE_DOUBLE, CSize(static_cast<int64>(values.size())), values);
}

Levels Quantized(CQuantizer const& quantizer, std::vector<double> const& values) {
  return LevelsOf(quantizer.Quantize(Doubles(values)));
}

boost::multiprecision::cpp_int Floor(Rational const& value) {
  using boost::multiprecision::cpp_int;
  cpp_int const above = numerator(value), below = denominator(value);
  cpp_int quotient = above / below;
  if (quotient * below > above) --quotient;
  return quotient;
}

// The level of a quotient: its floor + 1, clamped; q = n is the upper edge of level n.
int LevelOf(Rational const& q, int n) {
  auto const bin = Floor(q) + 1;
  return bin < 1 ? 1 : bin > n ? n : static_cast<int>(bin);
}

} // namespace

TEST(Quantizer, EdgesFarFromZeroKeepTheirLastDigits) {
  double const least = 0x1p40 + 3; // times the width 1: a multiple of 41 bits
  auto const quantizer = CQuantizer::BinWidthAtMultiple(1).Fit({least, least + 9.5, 2});
  EXPECT_EQ(quantizer.Levels(), 10);
  for (int k = 0; k < 10; ++k) {
    SCOPED_TRACE(k);
    EXPECT_EQ(quantizer.Level(least + k), k + 1);
    EXPECT_EQ(quantizer.Level(std::nextafter(least + k + 1, 0)), k + 1);
  }
}

TEST(Quantizer, RangeHasBinsOfEqualWidthAndClosesTheLast) {
  auto const quantizer = CQuantizer::Range(0, 8, 4);
  EXPECT_FALSE(quantizer.NeedsRange());
  EXPECT_EQ(quantizer.Levels(), 4);
  EXPECT_EQ(quantizer.Edges(), (std::vector<double>{0, 2, 4, 6, 8}));
  EXPECT_EQ(Quantized(quantizer, {0, 1.9, 2, 3, 4, 5.99, 6, 7, 8}),
            (Levels{1, 1, 2, 2, 3, 3, 4, 4, 4}));
}

TEST(Quantizer, ValuesBeyondAreClampedOrOutside) {
  std::vector<double> const values = {-c_inf, -1, 0, 8, 8.001, c_inf, c_nan};
  auto quantizer = CQuantizer::Range(0, 8, 4);
  StLevelReport report;
  EXPECT_EQ(LevelsOf(quantizer.Quantize(Doubles(values), {}, &report)),
            (Levels{1, 1, 1, 4, 4, 4, 0}));
  EXPECT_EQ(report.below, 2u);
  EXPECT_EQ(report.above, 2u);
  EXPECT_EQ(report.notNumbers, 1u);
  EXPECT_EQ(report.histogram, (std::vector<uint64>{1, 3, 0, 0, 3}));
  EXPECT_EQ(LevelsOf(quantizer.Beyond(EnBeyond::Outside).Quantize(Doubles(values), {}, &report)),
            (Levels{0, 0, 1, 4, 0, 0, 0}));
  EXPECT_EQ(report.Outside(), 5u);
  EXPECT_EQ(report.Occurring(), 2);
  EXPECT_EQ(report.Greatest(), 4);
  EXPECT_EQ(report.Voxels(), 7u);
}

TEST(Quantizer, BinCountPutsTheMaximumIntoTheLastLevel) {
  auto const quantizer = CQuantizer::BinCount(4);
  EXPECT_TRUE(quantizer.NeedsRange());
  EXPECT_EQ(Quantized(quantizer, {10, 12, 14, 16, 18}), (Levels{1, 2, 3, 4, 4}));
  EXPECT_EQ(Quantized(quantizer, {-c_inf, 10, 18, c_inf}), (Levels{1, 1, 4, 4}))
      << "infinities are not part of the range";
}

TEST(Quantizer, BinWidthStartsAtTheLeastAtAGivenValueOrAtAMultiple) {
  std::vector<double> const values = {30, 54, 55, 80};
  EXPECT_EQ(Quantized(CQuantizer::BinWidth(25), values), (Levels{1, 1, 2, 3}));
  EXPECT_EQ(Quantized(CQuantizer::BinWidthFrom(5, 25), values), (Levels{2, 2, 3, 4}));
  EXPECT_EQ(Quantized(CQuantizer::BinWidthAtMultiple(25), values), (Levels{1, 2, 2, 3}));
  EXPECT_EQ(Quantized(CQuantizer::BinWidthAtMultiple(25), {-30, -25, -1, 0}), (Levels{1, 2, 2, 3}));
  EXPECT_EQ(Quantized(CQuantizer::BinWidthFrom(60, 25), {30, 80}), (Levels{1, 1}))
      << "below the start is level 1, too";
}

TEST(Quantizer, BinWidthHasAsManyLevelsAsTheGreatestValueReaches) {
  struct {
    std::vector<double> values;
    int levels;
  } const cases[] = {{{0, 24.9}, 1}, {{0, 25}, 2}, {{0, 49}, 2}, {{0, 50}, 3}, {{7}, 1}};
  for (auto const& test : cases)
    EXPECT_EQ(CQuantizer::BinWidth(25).Quantize(Doubles(test.values)).Levels(), test.levels);
}

TEST(Quantizer, EdgesMayBeAnyAscendingNumbers) {
  auto quantizer = CQuantizer::ByEdges({-c_inf, 0, 0.5, 100, 200});
  std::vector<double> const values = {-c_inf, -1e300, 0, 0.49, 0.5, 99, 100, 200, 201, c_nan};
  EXPECT_EQ(Quantized(quantizer, values), (Levels{1, 1, 2, 2, 3, 3, 4, 4, 4, 0}));
  quantizer.Beyond(EnBeyond::Outside);
  EXPECT_EQ(Quantized(quantizer, values), (Levels{1, 1, 2, 2, 3, 3, 4, 4, 0, 0}));
  EXPECT_EQ(quantizer.Edges(), (std::vector<double>{-c_inf, 0, 0.5, 100, 200}));
}

TEST(Quantizer, OneValueIsOneLevel) {
  for (auto const& quantizer :
       {CQuantizer::BinCount(32), CQuantizer::BinWidth(5), CQuantizer::BinWidthAtMultiple(5)}) {
    auto const levels = quantizer.Quantize(Doubles({7, 7, c_nan, 7}));
    EXPECT_EQ(levels.Levels(), 1);
    EXPECT_EQ(LevelsOf(levels), (Levels{1, 1, 0, 1}));
  }
  EXPECT_EQ(CQuantizer::BinCount(32).Fit({7, 7, 3}).Edges(), (std::vector<double>{7, 7}));
}

TEST(Quantizer, WithoutAFiniteValueEveryVoxelIsOutside) {
  auto const mask = test::MakeGrey8(CSize(3), {0, 0, 0});
  for (auto const& quantizer :
       {CQuantizer::BinCount(32), CQuantizer::BinWidth(5), CQuantizer::BinWidthAtMultiple(5)}) {
    StLevelReport report;
    auto const levels = quantizer.Quantize(Doubles({1, 2, 3}), {&mask, {}}, &report);
    EXPECT_EQ(LevelsOf(levels), (Levels{0, 0, 0}));
    EXPECT_EQ(levels.Levels(), 1);
    EXPECT_EQ(report.offMask, 3u);
    EXPECT_EQ(report.Occurring(), 0);
    EXPECT_EQ(report.Greatest(), 0);
    EXPECT_EQ(LevelsOf(quantizer.Quantize(Doubles({c_nan, c_inf, -c_inf}), {}, &report)),
              (Levels{0, 0, 0}));
    EXPECT_EQ(report.below + report.above, 2u);
    auto const fitted = quantizer.Fit({});
    EXPECT_TRUE(fitted.Edges().empty());
    EXPECT_EQ(fitted.Level(3), 0);
    EXPECT_EQ(LevelsOf(fitted.Quantize(Doubles({1, 2}))), (Levels{0, 0})) << "fitted elsewhere";
  }
}

TEST(Quantizer, MaskChoosesALabelOrAllButZero) {
  auto const image = test::MakeGrey8(CSize(3, 2), {10, 20, 30, 40, 50, 60});
  auto const mask = MakeImage<std::int16_t>(IMAGE_SIGNED_16, CSize(3, 2), {0, 1, 1, -5, -5, 2});
  auto const quantizer = CQuantizer::BinWidthFrom(0, 10);
  StLevelReport report;
  EXPECT_EQ(LevelsOf(quantizer.Quantize(image, {&mask, {}}, &report)), (Levels{0, 3, 4, 5, 6, 7}));
  EXPECT_EQ(report.offMask, 1u);
  EXPECT_EQ(LevelsOf(quantizer.Quantize(image, {&mask, -5})), (Levels{0, 0, 0, 5, 6, 0}));
  EXPECT_EQ(LevelsOf(quantizer.Quantize(image, {&mask, 0})), (Levels{2, 0, 0, 0, 0, 0}));
  auto const range = CQuantizer::FindRange(image, {&mask, 1});
  EXPECT_EQ(range.low, 20);
  EXPECT_EQ(range.high, 30);
  EXPECT_EQ(range.voxels, 2u);
}

TEST(Quantizer, EveryPixelTypeHasItsValues) {
  auto const check = []<class T>(IImage::CType type, T) {
    constexpr T low = std::numeric_limits<T>::lowest(), high = std::numeric_limits<T>::max();
    auto const image = MakeImage<T>(type, CSize(4), {T{1}, T{100}, low, high});
    auto const range = CQuantizer::FindRange(image);
    EXPECT_EQ(range.low, static_cast<double>(low)) << type.ToString();
    EXPECT_EQ(range.high, static_cast<double>(high)) << type.ToString();
    EXPECT_EQ(LevelsOf(CQuantizer::Range(0, 100, 50).Quantize(image)), (Levels{1, 50, 1, 50}))
        << type.ToString();
  };
  check(IMAGE_BOOL, std::uint8_t());
  check(IMAGE_BINARY_FG, std::uint8_t());
  check(IMAGE_GREY_8, std::uint8_t());
  check(IMAGE_GREY_16, std::uint16_t());
  check(IMAGE_GREY_32, std::uint32_t());
  check(IMAGE_GREY_F, float());
  check(IMAGE_SIGNED_8, std::int8_t());
  check(IMAGE_SIGNED_16, std::int16_t());
  check(IMAGE_SIGNED_32, std::int32_t());
  check(IMAGE_DOUBLE, double());
}

TEST(Quantizer, UpTo65535Levels) {
  std::vector<std::uint16_t> values(65535);
  for (std::size_t k = 0; k < values.size(); ++k) values[k] = static_cast<std::uint16_t>(k);
  auto const image = MakeImage(IMAGE_GREY_16, CSize(65535), values);
  StLevelReport report;
  auto const levels = CQuantizer::BinWidth(1).Quantize(image, {}, &report);
  EXPECT_EQ(levels.Levels(), 65535);
  EXPECT_EQ(report.Occurring(), 65535);
  for (int64 x = 0; x < 65535; x += 13) ASSERT_EQ(levels.At({x, 0}), x + 1);
  ExpectError<CExBadParam>([&] { (void)CQuantizer::BinWidth(0.5).Quantize(image); },
                           "bins of width 0.5 up to the value 65534 are more than 65535");
  EXPECT_THROW((void)CQuantizer::BinWidth(1).Fit({0, 65535, 2}), CExBadParam);
  EXPECT_EQ(CQuantizer::BinWidth(1).Fit({0, 65534.99, 2}).Levels(), 65535);
}

TEST(Quantizer, LayoutOfImageMaskAndLevelsDoesNotMatter) {
  test::CRandomNumbers random;
  std::vector<float> values(5 * 4 * 3);
  std::vector<std::uint8_t> labels(values.size());
  for (std::size_t k = 0; k < values.size(); ++k) {
    values[k] = static_cast<float>(random.Real(-10, 10));
    labels[k] = random.Between<std::uint8_t>(0, 1);
  }
  CSize const size(5, 4, 3);
  auto const usual = MakeImage(IMAGE_GREY_F, size, values);
  auto const mask = test::MakeGrey8(size, labels);
  auto const quantizer = CQuantizer::BinCount(9);
  auto const expected = LevelsOf(quantizer.Quantize(usual, {&mask, 1}));

  std::vector<float> columns(values.size()); // z fastest, y backwards
  for (int64 z = 0; z < 3; ++z)
    for (int64 y = 0; y < 4; ++y)
      for (int64 x = 0; x < 5; ++x)
        columns[static_cast<std::size_t>(z + 3 * ((3 - y) + 4 * x))] =
            values[static_cast<std::size_t>(x + 5 * (y + 4 * z))];
  CImageView const view(IMAGE_GREY_F, size, columns.data() + 9, {48, -12, 4});
  EXPECT_EQ(LevelsOf(quantizer.Quantize(view, {&mask, 1})), expected);

  std::vector<std::uint16_t> out(values.size());
  CImageView target(IMAGE_GREY_16, size, out.data() + 4, {-2, 10, 40});
  quantizer.QuantizeInto(target, view, {&mask, 1});
  EXPECT_EQ(LevelsOf(CLevelImage(target, 9)), expected);
}

TEST(Quantizer, PartsOfAnImageAddUpToTheWhole) {
  test::CRandomNumbers random;
  std::vector<double> values(40 * 6);
  for (double& value : values) value = random.Real(-3, 3);
  auto image = MakeImage(IMAGE_DOUBLE, CSize(40, 6), values);
  auto* const pixels = image.CreateAccess(true).WritableBase();
  CImageView const view(IMAGE_DOUBLE, CSize(40, 6), static_cast<void const*>(pixels));
  StLevelReport whole;
  auto const expected = CQuantizer::BinCount(7).Quantize(image, {}, &whole);

  StValueRange range;
  for (int64 y = 0; y < 6; y += 2)
    range += CQuantizer::FindRange(view.Box({0, y, 0}, {40, y + 2, 1}));
  auto const fitted = CQuantizer::BinCount(7).Fit(range);
  StLevelReport sum;
  CImage levels(IMAGE_GREY_8, CSize(40, 6));
  CImageView target(IMAGE_GREY_8, CSize(40, 6),
                    static_cast<void*>(levels.CreateAccess(true).WritableBase()));
  for (int64 y = 0; y < 6; y += 2) {
    auto part = target.Box({0, y, 0}, {40, y + 2, 1});
    StLevelReport report;
    fitted.QuantizeInto(part, view.Box({0, y, 0}, {40, y + 2, 1}), {}, &report);
    sum += report;
  }
  EXPECT_EQ(LevelsOf(CLevelImage(levels, 7)), LevelsOf(expected));
  EXPECT_EQ(sum.histogram, whole.histogram);
}

TEST(Quantizer, RefusesBadArguments) {
  ExpectError<CExBadParam>([] { (void)CQuantizer::Range(1, 1, 4); },
                           "a range from 1 to 1 is not 2^-1000 to 2^1000 wide");
  ExpectError<CExBadParam>([] { (void)CQuantizer::Range(0, 1, 0); },
                           "0 levels are not from 1 to 65535");
  ExpectError<CExBadParam>([] { (void)CQuantizer::BinCount(65536); },
                           "65536 levels are not from 1 to 65535");
  ExpectError<CExBadParam>([] { (void)CQuantizer::BinWidth(-1); },
                           "a bin width of -1 is not from 2^-1000 to 2^1000");
  ExpectError<CExBadParam>([] { (void)CQuantizer::BinWidthFrom(c_inf, 1); },
                           "bins cannot start at inf");
  ExpectError<CExBadParam>([] { (void)CQuantizer::ByEdges({1}); },
                           "1 edges are not from 2 to 65536");
  ExpectError<CExBadParam>(
      [] {
        (void)CQuantizer::ByEdges({1, 2, 2});
      },
      "edge 2 does not lie below edge 2");
  for (double const bad : {c_nan, c_inf, 0.0, 1e-310}) {
    EXPECT_THROW((void)CQuantizer::BinWidth(bad), CExBadParam) << bad;
    EXPECT_THROW((void)CQuantizer::Range(0, bad, 4), CExBadParam) << bad;
  }
  EXPECT_THROW((void)CQuantizer::Range(-1.7e308, 1.7e308, 4), CExBadParam);
  EXPECT_THROW((void)CQuantizer::BinWidthAtMultiple(1).Fit({1e15, 1e15, 1}), CExBadParam);
  ExpectError<CExBadParam>(
      [] { (void)CQuantizer::BinCount(4).Levels(); },
      "the levels depend on the values found: fit the quantizer to a range first");
  auto const small = test::MakeGrey8(CSize(2), {0, 1}),
             large = test::MakeGrey8(CSize(3), {0, 1, 2});
  ExpectError<CExBadParam>(
      [&] {
        (void)CQuantizer::BinCount(4).Quantize(large, {&small, {}});
      },
      "a mask of extents (2, 1, 1) does not fit an image of extents (3, 1, 1)");
  auto const real = Doubles({1, 2, 3});
  ExpectError<CExBadParam>(
      [&] {
        (void)CQuantizer::BinCount(4).Quantize(large, {&real, {}});
      },
      "a mask of the type IMAGE_DOUBLE has no integer labels");
  CImage target(IMAGE_GREY_8, CSize(3));
  ExpectError<CExBadParam>([&] { CQuantizer::Range(0, 1, 256).QuantizeInto(target, large); },
                           "256 levels do not fit an image of the type IMAGE_GREY_8");
  ExpectError<CExBadParam>([&] { CQuantizer::Range(0, 1, 2).QuantizeInto(target, small); },
                           "levels of extents (3, 1, 1) do not fit an image of extents (2, 1, 1)");
}

// ---------------------------------------------------------------------------------------------
// Against exact rational arithmetic: the values that hurt are those on and next to an edge.

namespace {

// Doubles on, just below and just above the edges that a quantizer reports, and anything between.
std::vector<double> NearEdges(CQuantizer const& quantizer, test::CRandomNumbers& random) {
  std::vector<double> values;
  auto const edges = quantizer.Edges();
  for (double const edge : edges)
    for (double const value : {edge, std::nextafter(edge, -c_inf), std::nextafter(edge, c_inf),
                               std::nextafter(std::nextafter(edge, c_inf), c_inf)})
      values.push_back(value);
  for (int k = 0; k < 100; ++k) values.push_back(random.Real(edges.front(), edges.back()));
  return values;
}

// A double whose digits are all in use, or few of them.
double AnyDouble(test::CRandomNumbers& random) {
  double const value = random.Real(-1, 1);
  switch (random.Between(0, 4)) {
  case 0:
    return std::round(value * 1000);
  case 1:
    return std::round(value * 1000) / 8;
  case 2:
    return static_cast<float>(value) * 100.0;
  case 3:
    return std::ldexp(value, random.Between(-60, 60));
  default:
    return value;
  }
}

} // namespace

TEST(QuantizerProperty, BinWidthIsExact) {
  test::CRandomNumbers random;
  for (int k = 0; k < 300; ++k) {
    double const start = AnyDouble(random), width = std::abs(AnyDouble(random)) + 1e-3;
    int const levels = random.Between(1, k % 10 == 0 ? 3000 : 40);
    // An end that is within the last bin, whatever the rounding.
    double const end = start + (levels - 0.5) * width;
    bool const isMultiple = random.Between(0, 1) == 1;
    if (start + width == start || std::abs(start) > 0x1p45 * width) continue; // refused
    auto const quantizer = (isMultiple ? CQuantizer::BinWidthAtMultiple(width)
                                       : CQuantizer::BinWidthFrom(start, width))
                               .Fit({start, end, 2});
    Rational const w(width);
    Rational const first = isMultiple ? w * Floor(Rational(start) / w) : Rational(start);
    int const n = quantizer.Levels();
    ASSERT_EQ(n, Floor((Rational(end) - first) / w) + 1);
    for (double const value : NearEdges(quantizer, random)) {
      ASSERT_EQ(quantizer.Level(value), LevelOf((Rational(value) - first) / w, n))
          << value << " from " << start << " by " << width << (isMultiple ? " multiple" : "");
    }
  }
}

TEST(QuantizerProperty, RangeAndBinCountAreExact) {
  test::CRandomNumbers random;
  for (int k = 0; k < 300; ++k) {
    double const a = AnyDouble(random), b = AnyDouble(random);
    if (a == b) continue;
    double const low = std::min(a, b), high = std::max(a, b);
    int const n = random.Between(1, k % 10 == 0 ? 3000 : 40);
    auto const quantizer = CQuantizer::Range(low, high, n);
    auto const found = CQuantizer::BinCount(n).Fit({low, high, 2});
    Rational const scale = Rational(n) / (Rational(high) - Rational(low));
    for (double const value : NearEdges(quantizer, random)) {
      int const expected = LevelOf((Rational(value) - Rational(low)) * scale, n);
      ASSERT_EQ(quantizer.Level(value), expected)
          << value << " from " << low << " to " << high << " in " << n;
      ASSERT_EQ(found.Level(value), expected);
    }
  }
}

TEST(QuantizerProperty, BulkIsTheSameAsOneByOne) {
  test::CRandomNumbers random;
  for (int k = 0; k < 40; ++k) {
    auto const quantizer = CQuantizer::Range(-1, AnyDouble(random) + 1e19, random.Between(1, 400));
    auto const near = NearEdges(quantizer, random);
    auto const levels = quantizer.Quantize(Doubles(near));
    for (std::size_t i = 0; i < near.size(); ++i)
      ASSERT_EQ(levels.At({static_cast<int64>(i), 0}), quantizer.Level(near[i]));
  }
}

TEST(QuantizerProperty, ExtremeDoublesKeepTheirOrder) {
  std::vector<double> const values = {-1.7e308, -1e300, -1, -5e-324, 0, 5e-324, 1, 1e300, 1.7e308};
  for (auto const& quantizer :
       {CQuantizer::Range(-1e300, 1e300, 7), CQuantizer::Range(0, 1e-300, 7),
        CQuantizer::Range(-5e299, 1, 65535), CQuantizer::Range(0, 1, 3)}) {
    int before = 1;
    for (double const value : values) {
      int const level = quantizer.Level(value);
      EXPECT_GE(level, before) << value;
      before = level;
    }
    EXPECT_EQ(before, quantizer.Levels());
  }
}
