// JSON texts: what is read as a map is written and read back as the same map.
#include "Fuzzing.h"

#include <base/Errors.h>
#include <base/JsonValues.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include <cmath>
#include <string_view>

using namespace ORVA;

namespace {

bool Same(CValue const& a, CValue const& b);

bool Same(CValueMap const& a, CValueMap const& b) {
  return a.Size() == b.Size() &&
         std::equal(a.begin(), a.end(), b.begin(), [](auto const& one, auto const& other) {
           return one.first == other.first && Same(one.second, other.second);
         });
}

// Other than ==, this holds for a NaN and tells the zeros apart.
bool Same(CValue const& a, CValue const& b) {
  if (a.Type() != b.Type()) return false;
  switch (a.Type()) {
  case CValue::EnType::Double:
    return std::isnan(a.Double())
               ? std::isnan(b.Double())
               : a.Double() == b.Double() && std::signbit(a.Double()) == std::signbit(b.Double());
  case CValue::EnType::Map:
    return Same(a.Map(), b.Map());
  case CValue::EnType::Vector:
    return std::equal(a.Vector().begin(), a.Vector().end(), b.Vector().begin(), b.Vector().end(),
                      [](auto const& one, auto const& other) { return Same(one, other); });
  default:
    return a == b;
  }
}

std::optional<CValueMap> Read(std::string_view text) {
  try {
    return selu::ParseJsonMap(text);
  } catch (selu::CAppError const& error) {
    fuzz::Require(error.what()[0] != 0, "an error says what is wrong");
    return std::nullopt;
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  auto const map = Read({reinterpret_cast<char const*>(data), size});
  if (!map) return 0;
  std::string const text = selu::ToJsonText(*map); // what was read can be written
  auto const again = Read(text);
  fuzz::Require(again.has_value(), "what was written can be read");
  fuzz::Require(Same(*again, *map), "a map comes back as it was written");
  fuzz::Require(selu::ToJsonText(*again) == text, "and is written as before");
  return 0;
}
