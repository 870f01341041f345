// The one way in which errors are reported: a CException with a location record and a message.
//
//   #include <iostream>
//   try {
//     Impl::Raise(ORVA_LOCATION("src/Utils/Lines", "CLine::Step"), "Step i out of range");
//   } catch (CException const& error) {
//     std::cout << error.what() << " in " << error.Location().function;
//   }                                          // prints Step i out of range in CLine::Step
#pragma once

#include <pxlib2core/Export.h>

#include <exception>
#include <memory>

namespace ORVA {

class CString;

namespace Impl {

/// Where an error was raised. The texts are literals or otherwise outlive the exception's making;
/// the exception keeps copies.
struct StExLocation {
  char const* timestamp; ///< build date and time of the translation unit, joined by a hyphen
  char const* source;    ///< module: path below the source tree without extension
  char const* function;  ///< fully qualified function name
  int line;              ///< source line
  int reserved = 0;      ///< always 0

  /// The same place under a line number fixed by hand.
  [[nodiscard]] constexpr StExLocation AtLine(int fixed) const noexcept {
    return {timestamp, source, function, fixed, reserved};
  }
};

} // namespace Impl

/// The location record of the place where it stands: ORVA_LOCATION(module, qualified function).
#define ORVA_LOCATION(module, function)                                                            \
  (::ORVA::Impl::StExLocation{__DATE__ "-" __TIME__, module, function, __LINE__, 0})

/// Base of all errors thrown. Copies share the immutable content, so copying never throws.
class PXLIB2CORE_EXPORT CException : public std::exception {
public:
  CException(Impl::StExLocation const& location, char const* message);
  /// An error that knows only its function and, perhaps, module: no timestamp, line 0.
  CException(char const* function, char const* message, char const* source = "");
  CException(CException const&) noexcept = default;
  CException& operator=(CException const&) noexcept = default;
  ~CException() override;

  /// The finished message, letter for letter.
  [[nodiscard]] char const* what() const noexcept override;
  /// The record; its texts live as long as this exception or a copy of it.
  [[nodiscard]] Impl::StExLocation const& Location() const noexcept;

private:
  struct StContent;
  std::shared_ptr<StContent const> m_Content;
};

/// The error for a bad argument.
class PXLIB2CORE_EXPORT CExBadParam : public CException {
public:
  using CException::CException;
  CExBadParam(CExBadParam const&) noexcept = default;
  CExBadParam& operator=(CExBadParam const&) noexcept = default;
  ~CExBadParam() override;
};

namespace Impl {

/// Throws CException; out of line, so that a check costs one compare and one cold jump.
[[noreturn]] PXLIB2CORE_EXPORT void Raise(StExLocation const& location, char const* message);
[[noreturn]] PXLIB2CORE_EXPORT void Raise(StExLocation const& location, CString const& message);
/// The same for CExBadParam.
[[noreturn]] PXLIB2CORE_EXPORT void RaiseBadParam(StExLocation const& location,
                                                  char const* message);
[[noreturn]] PXLIB2CORE_EXPORT void RaiseBadParam(StExLocation const& location,
                                                  CString const& message);

} // namespace Impl
} // namespace ORVA
