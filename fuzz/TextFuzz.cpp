// Texts of the command line and lists of corners: each is taken or refused in a sentence, and
// numbers come back from their texts as they were.
#include "Fuzzing.h"

#include <base/Arguments.h>
#include <base/Errors.h>
#include <base/Parameters.h>
#include <base/Texts.h>
#include <images/Directions.h>
#include <images/PixelValue.h>
#include <walks/WalkPoints.h>

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

namespace {

template <class Call>
void Takes(Call call) {
  try {
    call();
  } catch (selu::CAppError const& error) {
    fuzz::Require(error.what()[0] != 0, "an error says what is wrong");
  } catch (selu::CUsageError const& error) {
    fuzz::Require(error.what()[0] != 0, "an error says what is wrong");
  }
}

void CheckNumbers(std::string const& text) {
  auto const numbers = selu::ParseNumbers(text);
  if (!numbers) return;
  for (double const number : *numbers) {
    auto const again = selu::ParseNumbers(selu::Shortest(number));
    fuzz::Require(again && again->size() == 1, "a number's text is a number");
    fuzz::Require(again->front() == number || std::isnan(number), "and the same one");
  }
}

void CheckParameters(std::string const& text) {
  auto given = selu::CParameters::FromText(text);
  (void)given.Title();
  if (given.Has("mean")) (void)given.Number("mean", {.above = 0});
  if (given.Has("theta")) (void)given.Angle("theta", 0.0, {.least = 0, .most = 3});
  given.Finish();
}

void CheckList(std::string const& text) {
  int const file = ::memfd_create("fuzz", 0);
  (void)!::write(file, text.data(), text.size());
  Takes([&] {
    auto const points = selu::ReadPoints("/proc/self/fd/" + std::to_string(file));
    fuzz::Require(!points.points.empty(), "a list that is taken has points");
    fuzz::Require(points.dimension == 2 || points.dimension == 3, "of two or three coordinates");
  });
  ::close(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string const text(reinterpret_cast<char const*>(data), size);
  CheckNumbers(text);
  CheckList(text);
  Takes([&] { (void)selu::ParseDirection(text); });
  Takes([&] { (void)selu::ParsePoints({text}, "POINT"); });
  Takes([&] { (void)selu::ParseRealDirection(text, "DIRECTION"); });
  Takes([&] { (void)selu::ParseNeighborhood(text, size % 2 == 0 ? 2 : 3); });
  Takes([&] { (void)selu::ParseSeed(text); });
  Takes([&] { (void)selu::ParseSize(text); });
  Takes([&] { CheckParameters(text); });
  for (int pixel = 0; pixel < 10; ++pixel)
    Takes([&] { (void)selu::ParsePixelValue(text, static_cast<selu::EnPixel>(pixel), "--value"); });
  fuzz::Require(selu::QuotedPart(text).size() <= 82, "a message shows little of a text");
  return 0;
}
