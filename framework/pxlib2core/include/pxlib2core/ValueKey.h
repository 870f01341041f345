// Key of an entry in a value map: a number or a text.
//
//   map.SetEntry("volume [px]", CValueLong(12));
//   map.SetEntry(7, CValueDouble(0.5));
//   CValue_Key(7) < CValue_Key("7");            // numbers come before texts
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/String.h>
#include <pxlib2core/Types.h>

#include <compare>
#include <concepts>
#include <string>
#include <utility>
#include <variant>

namespace ORVA {

/// Keys that the framework's own maps use again and again.
enum class EnFixedKey { MaximumLabel, NumberOfObjects, NumberOfGrayvalues, Object, Status };

/// A number or a text; numbers sort by value and before texts, texts by their bytes. The number 7
/// and the text "7" are two keys.
class PXLIB2CORE_EXPORT CValue_Key {
public:
  /// Throws CExBadParam for a null pointer.
  CValue_Key(char const* text);
  CValue_Key(std::string text) noexcept : m_content(std::move(text)) {}
  CValue_Key(CString const& text) : CValue_Key(text.Std()) {}
  /// The text of that fixed key, such as "maximum label".
  CValue_Key(EnFixedKey key);
  /// Throws CExBadParam for an unsigned number beyond the int64 range.
  template <std::integral T>
  requires(!std::same_as<T, bool> && !std::same_as<T, char>) CValue_Key(T number)
      : m_content(static_cast<int64>(number)) {
    if (!std::in_range<int64>(number)) RaiseTooLarge(static_cast<uint64>(number));
  }

  [[nodiscard]] bool IsText() const noexcept { return m_content.index() == 1; }
  /// The number; 0 for a text key.
  [[nodiscard]] int64 Number() const noexcept {
    auto const* const number = std::get_if<int64>(&m_content);
    return number != nullptr ? *number : 0;
  }
  /// The text; empty for a number key.
  [[nodiscard]] std::string const& Text() const noexcept {
    auto const* const text = std::get_if<std::string>(&m_content);
    return text != nullptr ? *text : NoText();
  }
  /// The text itself, or the number in decimal.
  [[nodiscard]] std::string ToString() const;

  friend bool operator==(CValue_Key const& a, CValue_Key const& b) noexcept {
    return (a <=> b) == 0;
  }
  friend std::strong_ordering operator<=>(CValue_Key const& a, CValue_Key const& b) noexcept {
    if (a.IsText() != b.IsText()) return a.IsText() <=> b.IsText();
    if (!a.IsText()) return a.Number() <=> b.Number();
    return a.Text().compare(b.Text()) <=> 0;
  }

private:
  [[noreturn]] static void RaiseTooLarge(uint64 number);

  [[nodiscard]] static std::string const& NoText() noexcept;

  std::variant<int64, std::string> m_content;
};

} // namespace ORVA
