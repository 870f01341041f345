#include "images/TextPixels.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

namespace selu {
namespace {

constexpr std::size_t c_longestNumber = 512;

// The next word; empty at the end of the file.
std::string NextWord(std::istream& in) {
  std::string word;
  for (int c = in.get(); c != std::istream::traits_type::eof(); c = in.get()) {
    bool const isBlank = c == ' ' || (c >= '\t' && c <= '\r') || c == 0;
    if (isBlank && !word.empty()) break;
    if (!isBlank) word += static_cast<char>(c);
    if (word.size() > c_longestNumber) break;
  }
  return word;
}

template <class T>
bool Parse(std::string_view text, T& value) {
  if (text.starts_with('+')) text.remove_prefix(1);
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value);
  if (result.ec == std::errc() && result.ptr == end) return true;
  if constexpr (std::is_integral_v<T>) { // perhaps written with a fraction of 0 or an exponent
    double number = 0;
    auto const real = std::from_chars(text.data(), end, number);
    double const low = static_cast<double>(std::numeric_limits<T>::min());
    double const beyond = std::ldexp(1.0, std::numeric_limits<T>::digits);
    if (real.ec != std::errc() || real.ptr != end) return false;
    if (!(number >= low && number < beyond) || std::trunc(number) != number) return false;
    value = static_cast<T>(number);
    return true;
  }
  return false;
}

} // namespace

void ReadTextPixels(std::filesystem::path const& path, std::uint64_t offset, EnPixel pixel,
                    std::span<std::byte> pixels) {
  std::ifstream in(path, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(offset));
  VisitType(pixel, [&]<class T>(T value) {
    for (std::size_t place = 0; place < pixels.size(); place += sizeof(T)) {
      std::string const word = NextWord(in);
      if (word.empty())
        throw CAppError("cannot read " + Quoted(path) + ": it ends after " +
                        std::to_string(place / sizeof(T)) + " of " +
                        std::to_string(pixels.size() / sizeof(T)) + " pixels");
      if (!Parse(word, value))
        throw CAppError("cannot read " + Quoted(path) + ": " + QuotedPart(word) +
                        " is no value for " + PixelText(pixel) + " pixels");
      std::memcpy(pixels.data() + place, &value, sizeof value);
    }
  });
}

} // namespace selu
