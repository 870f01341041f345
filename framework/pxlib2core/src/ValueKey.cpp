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

CValue_Key::CValue_Key(char const* text) {
  if (text == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"),
                        "key text is null");
  m_content = std::string(text);
}

CValue_Key::CValue_Key(EnFixedKey key) {
  auto const index = static_cast<std::size_t>(key);
  if (index >= c_fixedKeys.size())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"),
                        CString("there is no fixed key %1").Arg(static_cast<int>(key)));
  m_content = std::string(c_fixedKeys[index]);
}

std::string CValue_Key::ToString() const { return IsText() ? Text() : std::to_string(Number()); }

std::string const& CValue_Key::NoText() noexcept {
  static std::string const none;
  return none;
}

void CValue_Key::RaiseTooLarge(uint64 number) {
  CString message("key %1 is larger than the largest 64-bit signed integer");
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValue_Key::CValue_Key"), message.Arg(number));
}

} // namespace ORVA
