#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

using ORVA::CExBadParam;
using ORVA::CException;
using ORVA::CString;
using ORVA::Impl::StExLocation;

namespace {

constexpr StExLocation c_place{"Feb 29 2024-12:34:56", "src/Utils/Lines", "ORVA::CLine::Step", 47,
                               0};

template <class Raise>
CException Caught(Raise raise) {
  try {
    raise();
  } catch (CException const& error) {
    return error;
  }
  ADD_FAILURE() << "nothing was raised";
  return CException("", "");
}

// Every letter as A or a, every digit as 0, and the first place of the day as _.
std::string Shape(std::string text) {
  for (char& c : text) {
    auto const byte = static_cast<unsigned char>(c);
    if (std::isdigit(byte)) c = '0';
    if (std::isupper(byte)) c = 'A';
    if (std::islower(byte)) c = 'a';
  }
  if (text.size() > 4 && (text[4] == ' ' || text[4] == '0')) text[4] = '_';
  return text;
}

} // namespace

TEST(Exception, CarriesMessageAndLocation) {
  CException const error(c_place, "Step i out of range");
  EXPECT_STREQ(error.what(), "Step i out of range");
  EXPECT_STREQ(error.Location().timestamp, "Feb 29 2024-12:34:56");
  EXPECT_STREQ(error.Location().source, "src/Utils/Lines");
  EXPECT_STREQ(error.Location().function, "ORVA::CLine::Step");
  EXPECT_EQ(error.Location().line, 47);
  EXPECT_EQ(error.Location().reserved, 0);
}

TEST(Exception, LastFieldOfARecordIsZero) {
  constexpr ORVA::Impl::StExLocation c_here = ORVA_LOCATION("src/Utils/Lines", "ORVA::CLine::Step");
  static_assert(c_here.reserved == 0);
  static_assert(c_here.AtLine(47).reserved == 0);
  static_assert(ORVA::Impl::StExLocation{"", "", "", 1}.reserved == 0);
  EXPECT_EQ(CException(c_here, "").Location().reserved, 0);
  EXPECT_EQ(CException("ORVA::CLine::Step", "").Location().reserved, 0);
  EXPECT_EQ(CException(ORVA::Impl::StExLocation{"", "", "", 1, 7}, "").Location().reserved, 0);
}

TEST(Exception, KeepsTheMessageToTheLetter) {
  EXPECT_STREQ(CException(c_place, "invalid dimension\n").what(), "invalid dimension\n");
  EXPECT_STREQ(CException(c_place, "%1 stays %2").what(), "%1 stays %2");
  EXPECT_STREQ(CException(c_place, "").what(), "");
}

TEST(Exception, LastFieldIsAlwaysZero) {
  EXPECT_EQ(CException(StExLocation{"", "", "", 1, 99}, "x").Location().reserved, 0);
}

TEST(Exception, MissingTextsAreEmpty) {
  CException const error(StExLocation{nullptr, nullptr, nullptr, 3, 0}, nullptr);
  EXPECT_STREQ(error.what(), "");
  EXPECT_STREQ(error.Location().timestamp, "");
  EXPECT_STREQ(error.Location().source, "");
  EXPECT_STREQ(error.Location().function, "");
  EXPECT_EQ(error.Location().line, 3);
}

TEST(Exception, ThreeTextsGiveAnErrorWithoutTimeAndLine) {
  CException const error("Convert", "not supported", "src/Utils/ValueHelper");
  EXPECT_STREQ(error.what(), "not supported");
  EXPECT_STREQ(error.Location().function, "Convert");
  EXPECT_STREQ(error.Location().source, "src/Utils/ValueHelper");
  EXPECT_STREQ(error.Location().timestamp, "");
  EXPECT_EQ(error.Location().line, 0);
  EXPECT_STREQ(CException("Convert", "not supported").Location().source, "");
}

TEST(Exception, KeepsCopiesOfTheTexts) {
  auto name = std::make_unique<std::string>("ORVA::CLine::Step");
  auto message = std::make_unique<std::string>("Step i out of range");
  CException const error(StExLocation{"t", "s", name->c_str(), 1, 0}, message->c_str());
  name->assign(name->size(), '?');
  message->assign(message->size(), '?');
  name.reset();
  message.reset();
  EXPECT_STREQ(error.what(), "Step i out of range");
  EXPECT_STREQ(error.Location().function, "ORVA::CLine::Step");
}

TEST(Exception, CopiesOutliveTheOriginal) {
  auto original = std::make_unique<CException>(c_place, "first");
  CException const copy(*original);
  CException assigned(c_place, "second");
  assigned = *original;
  original.reset();
  EXPECT_STREQ(copy.what(), "first");
  EXPECT_STREQ(assigned.what(), "first");
  EXPECT_STREQ(copy.Location().function, "ORVA::CLine::Step");
}

TEST(Exception, MovedFromErrorStaysReadable) {
  CException error(c_place, "first");
  CException const taken(std::move(error));
  EXPECT_STREQ(taken.what(), "first");
  EXPECT_STREQ(error.what(), "first"); // NOLINT(bugprone-use-after-move): moving shares
}

TEST(Exception, CopyingNeverThrows) {
  static_assert(std::is_nothrow_copy_constructible_v<CException>);
  static_assert(std::is_nothrow_copy_assignable_v<CException>);
  static_assert(std::is_nothrow_copy_constructible_v<CExBadParam>);
  static_assert(std::is_nothrow_copy_assignable_v<CExBadParam>);
}

TEST(Exception, BadParamIsCaughtAsEveryBase) {
  EXPECT_THROW(throw CExBadParam(c_place, "x"), CExBadParam);
  EXPECT_THROW(throw CExBadParam(c_place, "x"), CException);
  EXPECT_THROW(throw CExBadParam(c_place, "x"), std::exception);
  CExBadParam const copy = CExBadParam(c_place, "x");
  EXPECT_STREQ(copy.what(), "x");
  EXPECT_STREQ(copy.Location().source, "src/Utils/Lines");
}

TEST(Raise, ThrowsTheTypeAsked) {
  using ORVA::Impl::Raise;
  using ORVA::Impl::RaiseBadParam;
  try {
    Raise(c_place, "a");
  } catch (CException const& error) {
    EXPECT_EQ(typeid(error), typeid(CException));
    EXPECT_STREQ(error.what(), "a");
  }
  try {
    RaiseBadParam(c_place, "b");
  } catch (CException const& error) {
    EXPECT_EQ(typeid(error), typeid(CExBadParam));
    EXPECT_STREQ(error.what(), "b");
  }
  EXPECT_STREQ(Caught([] { Raise(c_place, CString("%1").Arg(7)); }).what(), "7");
  EXPECT_STREQ(Caught([] { RaiseBadParam(c_place, CString("%1").Arg(8)); }).what(), "8");
}

TEST(Location, NamesBuildTimeModuleFunctionAndLine) {
  int const line = __LINE__ + 1;
  StExLocation const here = ORVA_LOCATION("src/Utils/Lines", "ORVA::CLine::Step");
  EXPECT_EQ(here.line, line);
  EXPECT_STREQ(here.source, "src/Utils/Lines");
  EXPECT_STREQ(here.function, "ORVA::CLine::Step");
  EXPECT_EQ(here.reserved, 0);
  EXPECT_EQ(Shape(here.timestamp), "Aaa _0 0000-00:00:00");
}

TEST(Location, LineCanBeFixedByHand) {
  constexpr StExLocation fixed = c_place.AtLine(44);
  EXPECT_EQ(fixed.line, 44);
  EXPECT_STREQ(fixed.function, c_place.function);
  EXPECT_STREQ(fixed.source, c_place.source);
  EXPECT_STREQ(fixed.timestamp, c_place.timestamp);
}
