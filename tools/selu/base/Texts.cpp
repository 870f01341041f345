#include "base/Texts.h"

#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

namespace selu {
namespace {

template <class T>
bool ParseOne(std::string_view text, T& value) {
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size();
}

template <class T>
std::optional<std::vector<T>> ParseList(std::string_view text) {
  std::vector<T> values;
  while (true) {
    std::size_t const comma = text.find(',');
    if (!ParseOne(text.substr(0, comma), values.emplace_back())) return std::nullopt;
    if (comma == std::string_view::npos) return values;
    text.remove_prefix(comma + 1);
  }
}

template <class... Arguments>
std::string ToText(Arguments... arguments) {
  std::array<char, 400> buffer;
  auto const result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), arguments...);
  return std::string(buffer.data(), result.ptr);
}

} // namespace

std::optional<std::vector<double>> ParseNumbers(std::string_view text) {
  return ParseList<double>(text);
}

std::optional<std::vector<ORVA::int64>> ParseIntegers(std::string_view text) {
  return ParseList<ORVA::int64>(text);
}

std::optional<ORVA::uint64> ParseUnsigned(std::string_view text) {
  ORVA::uint64 value = 0;
  if (!ParseOne(text, value)) return std::nullopt;
  return value;
}

std::string Shortest(double value) { return ToText(value); }
std::string Shortest(float value) { return ToText(value); }

std::string Rounded(double value, int digits) {
  return ToText(value, std::chars_format::general, digits);
}

std::string BytesText(double bytes) {
  constexpr std::array<char const*, 7> units = {"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  std::size_t unit = 0;
  for (; bytes >= 1024 && unit + 1 < units.size(); ++unit) bytes /= 1024;
  return ToText(unit == 0 ? bytes : std::round(bytes * 10) / 10) + " " + units[unit];
}

std::string Joined(std::vector<ORVA::int64> const& numbers, std::string_view between) {
  std::string text;
  for (auto const number : numbers) {
    if (!text.empty()) text += between;
    text += std::to_string(number);
  }
  return text;
}

std::string Shown(std::filesystem::path const& path) {
  std::string text;
  for (char const c : path.native())
    text += static_cast<unsigned char>(c) < ' ' || c == 127 ? '?' : c;
  return text;
}

std::string Quoted(std::filesystem::path const& path) { return '"' + Shown(path) + '"'; }

std::string QuotedPart(std::string_view text) {
  constexpr std::size_t most = 80, head = 40, tail = 37;
  if (text.size() <= most) return Quoted(text);
  auto const isInside = [&](std::size_t place) { // of a character of several bytes
    return (static_cast<unsigned char>(text[place]) & 0xc0) == 0x80;
  };
  std::size_t first = head, last = text.size() - tail;
  while (first > head - 4 && isInside(first)) --first;
  while (last < text.size() - tail + 4 && isInside(last)) ++last;
  return Quoted(std::string(text.substr(0, first)) + "..." + std::string(text.substr(last)));
}

std::string SystemText(int error) { return std::generic_category().message(error); }

} // namespace selu
