// What options have in common.
//
//   command->add_option("--range", options->range, "LO,HI")->check(NotEmpty);
#pragma once

#include <string>

namespace selu {

/// For CLI::Option::check: refuses an empty value, such as that of a variable of the shell that was
/// never set; an empty text stands for an option that is not given.
[[nodiscard]] inline std::string NotEmpty(std::string const& value) {
  return value.empty() ? "the value is empty" : "";
}

} // namespace selu
