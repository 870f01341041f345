// How the application fails: an error is one sentence and an exit code.
//
//   if (file.empty()) throw selu::CAppError("the file name is empty");
//   catch (CAppError const& error) { ... "selu: " << error.what() ...; return c_exitError; }
//   throw selu::CUsageError("--direction needs numbers, not \"a,b\"");   // exit code 2
#pragma once

#include <stdexcept>

namespace selu {

inline constexpr int c_exitError = 1;
inline constexpr int c_exitUsage = 2;

/// Something went wrong while working; what() is the sentence for the user, without a full stop.
class CAppError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

/// The command line asks for something that no image could fulfil.
class CUsageError : public std::runtime_error {
public:
  using std::runtime_error::runtime_error;
};

} // namespace selu
