// Message text with numbered placeholders, and printf-style formatting.
//
//   #include <iostream>
//   CString text("m_fEnd=%1 is smaller than m_fStart=%2.");
//   text.Arg(2.0).Arg(3.0);
//   std::cout << text.Std();                    // prints m_fEnd=2 is smaller than m_fStart=3.
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/Types.h>

#include <compare>
#include <concepts>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace ORVA {

/// How the bytes given to a CString are to be read; the text itself is kept as UTF-8.
enum class EnEncoding { Utf8, Latin1 };

/// A UTF-8 text whose placeholders %1 to %99 are filled one after the other. A placeholder takes up
/// to two digits: where a digit is to follow %1, write %01.
class PXLIB2CORE_EXPORT CString {
public:
  /// What Find gives where it finds nothing.
  static constexpr std::size_t NPOS = std::string::npos;

  CString() = default;
  /// Throws CExBadParam for a null pointer.
  CString(char const* text, EnEncoding encoding = EnEncoding::Utf8);
  CString(std::string text) : m_Text(std::move(text)) {}

  /// Replaces every occurrence of the lowest-numbered placeholder still present; the inserted text
  /// is never searched again. Without a placeholder the text stays as it is. Cost O(length).
  CString& Arg(CString const& argument);
  /// The number in decimal, padded with blanks to |width|: on the left, or on the right for a
  /// negative width.
  CString& Arg(int64 number, int width = 0);
  /// The same for every other integer type (a bool or a character is no number).
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char> &&
           !std::same_as<T, int64>) CString& Arg(T number, int width = 0) {
    return std::in_range<int64>(number) ? Arg(static_cast<int64>(number), width)
                                        : ArgUnsigned(static_cast<uint64>(number), width);
  }
  /// General notation with that many significant digits (1 to 100; 0 counts as 1, more as 100). A
  /// negative precision means the fewest digits that read back as the same number, without an
  /// exponent from 1e-5 up to 1e16. Infinities print as "inf" and "-inf", every NaN as "nan".
  CString& Arg(double number, int precision = -1);

  /// The text as a string of the standard library.
  [[nodiscard]] std::string const& Std() const noexcept { return m_Text; }
  /// The text, ended by a 0 byte, as long as the string stays as it is.
  [[nodiscard]] char const* c_str() const noexcept { return m_Text.c_str(); }
  /// The number of bytes.
  [[nodiscard]] std::size_t Size() const noexcept { return m_Text.size(); }
  /// Whether there is no text.
  [[nodiscard]] bool IsEmpty() const noexcept { return m_Text.empty(); }
  /// Position of the first occurrence at or after `from`, else NPOS.
  [[nodiscard]] std::size_t Find(CString const& text, std::size_t from = 0) const noexcept {
    return m_Text.find(text.m_Text, from);
  }

  friend bool operator==(CString const& a, CString const& b) noexcept {
    return a.m_Text == b.m_Text;
  }
  friend std::strong_ordering operator<=>(CString const& a, CString const& b) noexcept {
    return a.m_Text.compare(b.m_Text) <=> 0;
  }

private:
  struct StRange {
    std::size_t begin, end;
  };
  CString& ArgUnsigned(uint64 number, int width);
  CString& Insert(std::string const& argument);

  std::string m_Text;
  std::vector<StRange> m_Inserted; // argument texts, in order; placeholders in them do not count
};

/// Free-standing text helpers.
struct PXLIB2CORE_EXPORT CStringTools {
  /// printf-style formatting in the "C" locale; throws CExBadParam for a null or invalid format.
  [[gnu::format(printf, 1, 2)]] static std::string Printf(char const* format, ...);
};

} // namespace ORVA
