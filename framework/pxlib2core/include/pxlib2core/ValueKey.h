// Key of an entry in a value map: a number or a text.
//
//   #include <pxlib2core/ValueMap.h>
//   CValueMap map;
//   map.SetEntry("volume [px]", CValueLong(12));
//   map.SetEntry(7, CValueDouble(0.5));
//   bool const isFirst = CValue_Key(7) < CValue_Key("7");    // numbers come before texts
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Types.h>

#include <compare>
#include <concepts>
#include <string>
#include <utility>

namespace ORVA {

/// Keys that the framework's own maps use again and again.
enum class EnFixedKey { MaximumLabel, NumberOfObjects, NumberOfGrayvalues, Object, Status };

/// A number or a text; numbers sort by value and before texts, texts by their bytes. The number 7
/// and the text "7" are two keys.
class PXLIB2CORE_EXPORT CValue_Key {
public:
  /// Throws CExBadParam for a null pointer.
  CValue_Key(char const* text);
  CValue_Key(std::string text) : m_IsText(true), m_Text(std::move(text)) {}
  CValue_Key(CString const& text) : CValue_Key(text.Std()) {}
  /// The text of that fixed key, such as "maximum label".
  CValue_Key(EnFixedKey key);
  /// Throws CExBadParam for an unsigned number beyond the int64 range.
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char>) CValue_Key(T number)
      : m_Number(static_cast<int64>(number)) {
    if (!std::in_range<int64>(number)) RaiseTooLarge(static_cast<uint64>(number));
  }

  /// Whether the key is a text, not a number.
  [[nodiscard]] bool IsText() const noexcept { return m_IsText; }
  /// The number; 0 for a text key.
  [[nodiscard]] int64 Number() const noexcept { return m_Number; }
  /// The text; empty for a number key.
  [[nodiscard]] std::string const& Text() const noexcept { return m_Text; }
  /// The text itself, or the number in decimal.
  [[nodiscard]] std::string ToString() const;

  friend bool operator==(CValue_Key const& a, CValue_Key const& b) noexcept {
    return (a <=> b) == 0;
  }
  friend std::strong_ordering operator<=>(CValue_Key const& a, CValue_Key const& b) noexcept {
    if (a.m_IsText != b.m_IsText) return a.m_IsText <=> b.m_IsText;
    if (!a.m_IsText) return a.m_Number <=> b.m_Number;
    return a.m_Text.compare(b.m_Text) <=> 0;
  }

private:
  [[noreturn]] static void RaiseTooLarge(uint64 number);

  bool m_IsText = false;
  int64 m_Number = 0;
  std::string m_Text;
};

} // namespace ORVA
