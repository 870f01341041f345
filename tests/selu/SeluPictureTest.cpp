// What the picture's axes and cells say.
#include <drawing/Picture.h>

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace {

using Labels = std::vector<std::string>;

Labels LabelsOf(std::vector<selu::StTick> const& ticks) {
  Labels labels;
  for (auto const& tick : ticks) labels.push_back(tick.text);
  return labels;
}

TEST(SeluPicture, TicksOfAllGrayLevelsBeginAtZero) {
  EXPECT_EQ(LabelsOf(selu::LinearTicks(-0.5, 255.5, 6)),
            (Labels{"0", "50", "100", "150", "200", "250"}));
}

TEST(SeluPicture, TicksLieWithinTheAxis) {
  EXPECT_EQ(LabelsOf(selu::LinearTicks(-3.5, 3.5, 6)), (Labels{"-2", "0", "2"}));
  EXPECT_EQ(LabelsOf(selu::LinearTicks(62.5, 207.5, 6)), (Labels{"100", "150", "200"}));
  for (auto const& tick : selu::LinearTicks(-0.5, 255.5, 6)) {
    EXPECT_GE(tick.place, 0);
    EXPECT_LE(tick.place, 1);
  }
}

TEST(SeluPicture, TicksEndWhereTheAxisIsNarrowerThanRounding) {
  // A few units in the last place, or none, on either side of zero.
  for (double const value : {1.0, -1.0, 1e10, -1e10, 1e300})
    for (double const low : {std::nextafter(value, -1e308), value})
      EXPECT_LE(selu::LinearTicks(low, std::nextafter(value, 1e308), 8).size(), 8u) << value;
}

TEST(SeluPicture, TextOfAnyBytesFitsItsWidth) {
  std::string wide;
  for (int i = 0; i < 100; ++i) wide += "\u6f22";
  for (std::string const& text :
       {wide, "a" + wide, std::string("\xff\xc3"), std::string("\xe6\xbc"), std::string("\xc0\x80"),
        std::string("\xed\xa0\x80"), std::string("\xef\xbf\xbf"), std::string("\xf5\x80\x80\x80"),
        std::string("\x80"), std::string("\xf0\x9f\x98\x80")}) {
    selu::CPicture picture(300, 50, ".png");
    picture.TextWithin(10, 20, 200, text, {});
    EXPECT_NO_THROW((void)picture.Finish()) << testing::PrintToString(text);
  }
}

TEST(SeluPicture, RowsHaveTheDigitsThatTellTheirValuesApart) {
  using Digits = std::optional<int>;
  EXPECT_EQ(selu::DigitsToTell(1, 2), Digits(4));
  EXPECT_EQ(selu::DigitsToTell(0.4361, 0.4362 + 1e-9), Digits(4));
  EXPECT_EQ(selu::DigitsToTell(0.43615, 0.43619), Digits(5));
  EXPECT_EQ(selu::DigitsToTell(-0.4361932, -0.4361921), Digits(6));
  EXPECT_EQ(selu::DigitsToTell(123456.1, 123456.3), Digits(7));
  EXPECT_EQ(selu::DigitsToTell(123456.12, 123456.13), std::nullopt) << "closer than any print";
  EXPECT_EQ(selu::DigitsToTell(3, 3), std::nullopt);
  EXPECT_EQ(selu::DigitsToTell(0, 0), std::nullopt);
  EXPECT_EQ(selu::DigitsToTell(0, 1e-12), Digits(4));
}

} // namespace
