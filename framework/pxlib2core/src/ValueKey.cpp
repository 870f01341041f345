#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueKey.h>

#include <array>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2core/ValueKey";

// By EnFixedKey.
constexpr std::array<char const*, 5> c_fixedKeys = {"maximum label", "no. of objects",
                                                    "no. of grayvalues", "object", "status"};

} // namespace

CValue_Key::CValue_Key(char const* text) : m_IsText(true) {
  if (text == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"),
                        "key text is null");
  m_Text = text;
}

CValue_Key::CValue_Key(EnFixedKey key) : m_IsText(true) {
  auto const index = static_cast<std::size_t>(key);
  if (index >= c_fixedKeys.size())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"),
                        CString("there is no fixed key %1").Arg(static_cast<int>(key)));
  m_Text = c_fixedKeys[index];
}

std::string CValue_Key::ToString() const { return m_IsText ? m_Text : std::to_string(m_Number); }

void CValue_Key::RaiseTooLarge(uint64 number) {
  CString message("key %1 is larger than the largest 64-bit signed integer");
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"), message.Arg(number));
}

} // namespace ORVA
