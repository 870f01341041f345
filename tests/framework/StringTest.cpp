#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include "support/Errors.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cwchar>
#include <limits>
#include <string>
#include <vector>

using ORVA::CExBadParam;
using ORVA::CString;
using ORVA::CStringTools;
using ORVA::EnEncoding;
using ORVA::int64;
using ORVA::uint64;

namespace {

constexpr char c_module[] = "framework/pxlib2core/String";

std::string Filled(char const* text, std::vector<std::string> const& arguments) {
  CString filled(text);
  for (auto const& argument : arguments) filled.Arg(argument);
  return filled.Std();
}

std::string Printed(double number, int precision = -1) {
  return CString("%1").Arg(number, precision).Std();
}

} // namespace

TEST(String, PlaceholdersAreFilledLowestFirst) {
  struct StCase {
    char const* text;
    std::vector<std::string> arguments;
    char const* filled;
  };
  std::vector<StCase> const cases = {
      {"no placeholder", {"a"}, "no placeholder"},
      {"", {"a"}, ""},
      {"%1", {"a"}, "a"},
      {"%1 and %2", {"a", "b"}, "a and b"},
      {"%2 before %1", {"a", "b"}, "b before a"},
      {"%1, %1 and %2, %1", {"a", "b"}, "a, a and b, a"},
      {"%3 %7 %5", {"a", "b", "c"}, "a c b"},
      {"%1 of %2", {"a"}, "a of %2"},
      {"%1", {"a", "b"}, "a"},
      {"%9 %10 %11", {"a", "b", "c"}, "a b c"},
      {"%99 %98", {"a", "b"}, "b a"},
      {"%123", {"a"}, "a3"}, // %12, then the digit 3
      {"%012 %2", {"a", "b"}, "a2 b"},
      {"%0 %00 % %% %x %-1", {"a"}, "%0 %00 % %% %x %-1"},
      {"%", {"a"}, "%"},
      {"100%", {"a"}, "100%"},
      {"%1%", {"50"}, "50%"},
      {"%%1", {"a"}, "%a"},
      {"%1%2%3", {"a", "b", "c"}, "abc"},
  };
  for (auto const& c : cases) EXPECT_EQ(Filled(c.text, c.arguments), c.filled) << c.text;
}

TEST(String, TextOfAnArgumentIsNeverSearched) {
  struct StCase {
    char const* text;
    std::vector<std::string> arguments;
    char const* filled;
  };
  std::vector<StCase> const cases = {
      {"%1 %2", {"%2", "b"}, "%2 b"},
      {"%1 %2", {"%1", "%1"}, "%1 %1"},
      {"%2 %1 %3", {"%3%1", "%3", "c"}, "%3 %3%1 c"},
      {"%1", {"%1", "b", "c"}, "%1"},
      {"%3%1 %4", {"7", "c", "d"}, "c7 d"}, // %3 does not become %37
      {"%%1 %2", {"5", "b"}, "%5 b"},       // "%" and "5" do not join to %5
      {"%2%013", {"", "b"}, "b3"},          // the empty argument keeps %2 and 3 apart
      {"%%012 %3", {"", "c"}, "%2 c"},      // "%" and "2" do not join either
      {"%1%1%2", {"%", "1"}, "%%1"},
      {"%1%2", {"%", "1"}, "%1"},
      {"%1%2%3", {"", "", "c"}, "c"},
  };
  for (auto const& c : cases) EXPECT_EQ(Filled(c.text, c.arguments), c.filled) << c.text;
}

TEST(String, ArgCanTakeTheStringItself) {
  CString text("<%1>");
  text.Arg(text);
  EXPECT_EQ(text, "<<%1>>");
}

TEST(String, CopiesKnowWhichPartsWereInserted) {
  CString first("%1 %2");
  first.Arg("%2");
  CString copy = first;
  EXPECT_EQ(copy.Arg("b"), "%2 b");
  EXPECT_EQ(first, "%2 %2");
  CString assigned;
  assigned = first;
  EXPECT_EQ(assigned.Arg("c"), "%2 c");
}

TEST(String, AssignedTextHasFreshPlaceholders) {
  CString text("%1");
  text.Arg("%1");
  text = CString("%1");
  EXPECT_EQ(text.Arg("a"), "a");
}

TEST(String, ArgReturnsTheStringItself) {
  CString text("%1");
  EXPECT_EQ(&text.Arg("a"), &text);
  EXPECT_EQ(&text.Arg(1), &text);
  EXPECT_EQ(&text.Arg(1.0), &text);
}

TEST(String, NumbersOfEveryIntegerType) {
  struct StCase {
    CString printed;
    char const* expected;
  };
  std::vector<StCase> const cases = {
      {CString("%1").Arg(0), "0"},
      {CString("%1").Arg(-7), "-7"},
      {CString("%1").Arg(short{3}), "3"},
      {CString("%1").Arg(std::uint8_t{200}), "200"},
      {CString("%1").Arg(7u), "7"},
      {CString("%1").Arg(std::size_t{9}), "9"},
      {CString("%1").Arg(5LL), "5"},
      {CString("%1").Arg(std::numeric_limits<int64>::max()), "9223372036854775807"},
      {CString("%1").Arg(std::numeric_limits<int64>::min()), "-9223372036854775808"},
      {CString("%1").Arg(std::numeric_limits<uint64>::max()), "18446744073709551615"},
  };
  for (auto const& c : cases) EXPECT_EQ(c.printed, c.expected);
}

TEST(String, WidthPadsOnTheLeftAndNegativeWidthOnTheRight) {
  struct StCase {
    int64 number;
    int width;
    char const* expected;
  };
  std::vector<StCase> const cases = {
      {42, 0, "42"},
      {42, 1, "42"},
      {42, 2, "42"},
      {42, 5, "   42"},
      {42, -5, "42   "},
      {-42, 5, "  -42"},
      {-42, -5, "-42  "},
      {0, 3, "  0"},
      {std::numeric_limits<int64>::min(), 21, " -9223372036854775808"},
      {std::numeric_limits<int64>::min(), -21, "-9223372036854775808 "},
  };
  for (auto const& c : cases)
    EXPECT_EQ(CString("%1").Arg(c.number, c.width), c.expected) << c.number << ' ' << c.width;
  EXPECT_EQ(CString("%1").Arg(std::numeric_limits<uint64>::max(), 22), "  18446744073709551615");
}

TEST(String, DoublesPrintAsTheShortestTextThatReadsBack) {
  struct StCase {
    double number;
    char const* expected;
  };
  std::vector<StCase> const cases = {
      {0.0, "0"},
      {-0.0, "-0"},
      {2.0, "2"},
      {-0.5, "-0.5"},
      {0.1, "0.1"},
      {1.0 / 3.0, "0.3333333333333333"},
      {100000.0, "100000"},
      {123456789.0, "123456789"},
      {9999999999999998.0, "9999999999999998"},
      {1e16, "1e+16"},
      {1e-5, "0.00001"},
      {9.5e-6, "9.5e-06"},
      {-1.2345678901234567e-5, "-0.000012345678901234568"},
      {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
      {std::numeric_limits<double>::lowest(), "-1.7976931348623157e+308"},
      {std::numeric_limits<double>::denorm_min(), "5e-324"},
      {std::numeric_limits<double>::infinity(), "inf"},
      {-std::numeric_limits<double>::infinity(), "-inf"},
      {std::numeric_limits<double>::quiet_NaN(), "nan"},
      {-std::numeric_limits<double>::quiet_NaN(), "nan"},
  };
  for (auto const& c : cases) EXPECT_EQ(Printed(c.number), c.expected);
  EXPECT_EQ(CString("%1").Arg(0.5f), "0.5");
}

TEST(String, PrecisionCountsSignificantDigits) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  double const infinity = std::numeric_limits<double>::infinity();
  struct StCase {
    double number;
    int precision;
    char const* expected;
  };
  std::vector<StCase> const cases = {
      {3.14159265, 3, "3.14"},
      {3.14159265, 1, "3"},
      {3.14159265, 0, "3"},
      {2.5, 1, "2"},
      {123456.0, 3, "1.23e+05"},
      {123456.0, 6, "123456"},
      {0.00012345, 2, "0.00012"},
      {0.000012345, 2, "1.2e-05"},
      {1.0, 17, "1"},
      {0.1, 17, "0.10000000000000001"},
      {nan, 3, "nan"},
      {-nan, 3, "nan"},
      {infinity, 3, "inf"},
      {-infinity, 0, "-inf"},
      {-0.0, 5, "-0"},
  };
  for (auto const& c : cases)
    EXPECT_EQ(Printed(c.number, c.precision), c.expected) << c.number << ' ' << c.precision;
}

TEST(String, HugePrecisionIsCutToAHundredDigits) {
  double const number = -std::numeric_limits<double>::denorm_min();
  EXPECT_EQ(Printed(number, 100), Printed(number, std::numeric_limits<int>::max()));
  EXPECT_EQ(Printed(number, 100).size(), std::string("-.e-324").size() + 100);
  EXPECT_EQ(Printed(-0.0001 / 3.0, 100).substr(0, 9), "-3.333333");
  EXPECT_EQ(Printed(3.0, std::numeric_limits<int>::min()), "3");
}

TEST(String, NumbersDoNotFollowTheLocale) {
  std::string const before = std::setlocale(LC_ALL, nullptr);
  char const* comma = nullptr;
  for (char const* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"})
    if (comma == nullptr) comma = std::setlocale(LC_ALL, name);
  if (comma == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_EQ(Printed(1234.5), "1234.5");
  EXPECT_EQ(Printed(1234.5, 6), "1234.5");
  EXPECT_EQ(CString("%1").Arg(1234567), "1234567");
  EXPECT_EQ(CStringTools::Printf("%.1f", 0.5), "0.5");
  std::setlocale(LC_ALL, before.c_str());
}

TEST(String, Latin1IsKeptAsUtf8) {
  EXPECT_EQ(CString("a\xE4\xFFz", EnEncoding::Latin1), "a\xC3\xA4\xC3\xBFz");
  EXPECT_EQ(CString("\x80", EnEncoding::Latin1), "\xC2\x80");
  EXPECT_EQ(CString("a\xC3\xA4", EnEncoding::Utf8), "a\xC3\xA4");
  EXPECT_EQ(CString("%1\xE4", EnEncoding::Latin1).Arg("x"), "x\xC3\xA4");
}

TEST(String, NullTextIsRefused) {
  char const* const null = nullptr;
  test::ExpectError<CExBadParam>([&] { CString text(null); }, "text is null",
                                 "ORVA::CString::CString", c_module);
  test::ExpectError<CExBadParam>([&] { CString text(null, EnEncoding::Latin1); }, "text is null",
                                 "ORVA::CString::CString", c_module);
}

TEST(String, FindGivesThePositionOrNpos) {
  CString const text("abcabc");
  EXPECT_EQ(text.Find("bc"), 1u);
  EXPECT_EQ(text.Find("bc", 2), 4u);
  EXPECT_EQ(text.Find("x"), CString::NPOS);
  EXPECT_EQ(text.Find("a", 100), CString::NPOS);
  EXPECT_EQ(text.Find(""), 0u);
}

TEST(String, ComparesByBytes) {
  EXPECT_LT(CString("Z"), CString("a"));
  EXPECT_LT(CString("z"), CString("\xC3\xA4"));
  EXPECT_LT(CString("a"), CString("aa"));
  EXPECT_NE(CString("a"), CString("b"));
  EXPECT_TRUE(CString().IsEmpty());
  EXPECT_EQ(CString("abc").Size(), 3u);
  EXPECT_STREQ(CString("abc").c_str(), "abc");
}

TEST(String, EqualityIgnoresHowTheTextCameAbout) {
  EXPECT_EQ(CString("%1").Arg("a"), CString("a"));
}

TEST(Printf, FormatsIntoAString) {
  EXPECT_EQ(CStringTools::Printf("%s %03d|%.2f", "object", 7, 0.125), "object 007|0.12");
  EXPECT_EQ(CStringTools::Printf("plain"), "plain");
  EXPECT_EQ(CStringTools::Printf("%s", ""), "");
  EXPECT_EQ(CStringTools::Printf("%5000d", 1).size(), 5000u);
  EXPECT_EQ(CStringTools::Printf("a%cb", 0), std::string("a\0b", 3));
  std::string const long_text(100000, 'x');
  EXPECT_EQ(CStringTools::Printf("%s", long_text.c_str()), long_text);
}

TEST(Printf, BuildsAFormatForALaterCall) {
  EXPECT_EQ(CStringTools::Printf("%s %%0%ulu", "object", 3u), "object %03lu");
}

TEST(Printf, NullFormatIsRefused) {
  char const* const null = nullptr;
  test::ExpectError<CExBadParam>([&] { (void)CStringTools::Printf(null); }, "format is null",
                                 "ORVA::CStringTools::Printf", c_module);
}

TEST(Printf, UnprintableFormatIsRefused) {
  // A character beyond ASCII has no form in the "C" locale.
  test::ExpectError<CExBadParam>(
      [] { (void)CStringTools::Printf("%lc", static_cast<wint_t>(0x20AC)); },
      "format \"%lc\" cannot be printed", "ORVA::CStringTools::Printf", c_module);
}
