#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <string_view>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2core/String";
constexpr char c_printf[] = "ORVA::CStringTools::Printf";

std::string FromLatin1(char const* text) {
  std::string utf8;
  for (; *text != '\0'; ++text) {
    auto const code = static_cast<unsigned char>(*text);
    if (code < 0x80) {
      utf8 += *text;
    } else {
      utf8 += static_cast<char>(0xC0 | (code >> 6));
      utf8 += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return utf8;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

struct StPlaceholder {
  int number = 0; // 0: none
  std::size_t length = 0;
};

// A percent sign and a number of one or two digits, 1 to 99.
StPlaceholder PlaceholderAt(std::string_view text, std::size_t position) {
  if (text[position] != '%' || position + 1 >= text.size() || !IsDigit(text[position + 1]))
    return {};
  int number = text[position + 1] - '0';
  std::size_t length = 2;
  if (position + 2 < text.size() && IsDigit(text[position + 2])) {
    number = 10 * number + (text[position + 2] - '0');
    length = 3;
  }
  return number == 0 ? StPlaceholder{} : StPlaceholder{number, length};
}

// Calls visit(position, placeholder) for every placeholder outside the inserted ranges.
template <class Ranges, class Visit>
void ForEachPlaceholder(std::string const& text, Ranges const& inserted, Visit visit) {
  auto range = inserted.begin();
  for (std::size_t i = 0; i < text.size();) {
    while (range != inserted.end() && range->end <= i) ++range;
    if (range != inserted.end() && range->begin <= i) {
      i = range->end;
      continue;
    }
    // Digits of an argument that follows directly do not belong to this placeholder.
    std::size_t const end = range == inserted.end() ? text.size() : range->begin;
    StPlaceholder const placeholder = PlaceholderAt(std::string_view(text).substr(0, end), i);
    if (placeholder.number != 0) visit(i, placeholder);
    i += std::max<std::size_t>(placeholder.length, 1);
  }
}

std::string Pad(std::string digits, int width) {
  auto const wanted = static_cast<std::size_t>(width < 0 ? -int64{width} : int64{width});
  if (digits.size() >= wanted) return digits;
  std::string const blanks(wanted - digits.size(), ' ');
  return width < 0 ? digits + blanks : blanks + digits;
}

// Without an exponent where that stays readable: to_chars alone would print 100000 as 1e+05.
std::string Shortest(double number) {
  double const size = std::abs(number);
  bool const plain = number == 0 || (size >= 1e-5 && size < 1e16);
  char digits[32];
  auto const written =
      std::to_chars(digits, digits + sizeof digits, number,
                    plain ? std::chars_format::fixed : std::chars_format::scientific);
  return {digits, written.ptr};
}

std::string Rounded(double number, int precision) {
  char digits[128];
  auto const written = std::to_chars(digits, digits + sizeof digits, number,
                                     std::chars_format::general, std::min(precision, 100));
  return {digits, written.ptr};
}

// Keeps the calling thread in the "C" locale while it lives.
class CPlainLocale {
public:
  CPlainLocale() : m_Previous(uselocale(Plain())) {}
  CPlainLocale(CPlainLocale const&) = delete;
  CPlainLocale& operator=(CPlainLocale const&) = delete;
  ~CPlainLocale() { uselocale(m_Previous); }

private:
  static locale_t Plain() {
    static locale_t const plain = newlocale(LC_ALL_MASK, "C", locale_t{});
    return plain;
  }
  locale_t m_Previous;
};

} // namespace

CString::CString(char const* text, EnEncoding encoding) {
  if (text == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CString::CString"), "text is null");
  m_Text = encoding == EnEncoding::Latin1 ? FromLatin1(text) : std::string(text);
}

CString& CString::Arg(CString const& argument) { return Insert(std::string(argument.m_Text)); }

CString& CString::Arg(int64 number, int width) {
  return Insert(Pad(std::to_string(number), width));
}

CString& CString::Arg(double number, int precision) {
  if (std::isnan(number)) return Insert("nan"); // the sign of a NaN differs between machines
  return Insert(precision < 0 ? Shortest(number) : Rounded(number, precision));
}

CString& CString::ArgUnsigned(uint64 number, int width) {
  return Insert(Pad(std::to_string(number), width));
}

CString& CString::Insert(std::string const& argument) {
  int lowest = std::numeric_limits<int>::max();
  ForEachPlaceholder(m_Text, m_Inserted, [&](std::size_t, StPlaceholder found) {
    lowest = std::min(lowest, found.number);
  });

  std::string text;
  std::vector<StRange> inserted;
  std::size_t copied = 0;
  auto earlier = m_Inserted.begin();
  auto copyUpTo = [&](std::size_t position) {
    for (; earlier != m_Inserted.end() && earlier->end <= position; ++earlier) {
      std::size_t const begin = text.size() + (earlier->begin - copied);
      inserted.push_back({begin, begin + (earlier->end - earlier->begin)});
    }
    text.append(m_Text, copied, position - copied);
    copied = position;
  };
  ForEachPlaceholder(m_Text, m_Inserted, [&](std::size_t position, StPlaceholder found) {
    if (found.number != lowest) return;
    copyUpTo(position);
    // An empty argument is noted as well: the texts on its two sides do not join to a placeholder.
    inserted.push_back({text.size(), text.size() + argument.size()});
    text += argument;
    copied = position + found.length;
  });
  copyUpTo(m_Text.size());
  m_Text = std::move(text);
  m_Inserted = std::move(inserted);
  return *this;
}

std::string CStringTools::Printf(char const* format, ...) {
  if (format == nullptr) Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_printf), "format is null");
  CPlainLocale const plain;
  va_list measured, arguments;
  va_start(arguments, format);
  va_copy(measured, arguments);
  int const length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length < 0) {
    va_end(arguments);
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, c_printf),
                        CString("format \"%1\" cannot be printed").Arg(CString(format)));
  }
  std::string text;
  try {
    text.resize(static_cast<std::size_t>(length));
  } catch (...) {
    va_end(arguments);
    throw;
  }
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  va_end(arguments);
  return text;
}

} // namespace ORVA
