#include "images/PixelValue.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <type_traits>

namespace selu {
namespace {

template <class T>
PixelValue ToBytes(T value) {
  PixelValue bytes = {};
  std::memcpy(bytes.data(), &value, sizeof value);
  return bytes;
}

// Exactly the number that was written, or nothing.
template <class T>
std::optional<PixelValue> Held(std::string const& text, double number) {
  if constexpr (std::is_integral_v<T>) {
    T value = 0; // numbers of 64 bits, too, which a double would round
    auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc() && end == text.data() + text.size()) return ToBytes(value);
    double const low = static_cast<double>(std::numeric_limits<T>::min());
    double const beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (!(number >= low && number < beyond) || std::trunc(number) != number) return std::nullopt;
    return ToBytes(static_cast<T>(number));
  } else {
    bool const fits = !std::isfinite(number) ||
                      std::abs(number) <= static_cast<double>(std::numeric_limits<T>::max());
    return fits ? std::optional(ToBytes(static_cast<T>(number))) : std::nullopt;
  }
}

} // namespace

PixelValue ParsePixelValue(std::string const& text, EnPixel pixel, std::string const& option) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() != 1)
    throw CUsageError(option + " needs a number, not \"" + Shown(text) + "\"");
  auto const value = VisitType(pixel, [&]<class T>(T) { return Held<T>(text, numbers->front()); });
  if (!value) throw CAppError(text + " is no value for " + PixelText(pixel) + " pixels");
  return *value;
}

} // namespace selu
