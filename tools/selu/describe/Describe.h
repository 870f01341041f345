// Man pages, completions and pages of documentation, written from what the commands say of
// themselves.
//
//   CLI::App app;
//   BuildApplication(app);
//   std::cout << BashCompletion(CommandTexts(app));
#pragma once

#include "describe/CommandText.h"

#include <string>
#include <vector>

namespace selu {

/// "selu-walk-line": the name of a command's man page, and of its page in the documentation.
[[nodiscard]] std::string PageName(StCommandText const& command);

/// The man page of one command, in section 1. The commands are all there are: for its SEE ALSO.
/// The date is printed at the foot of the page as it is given.
[[nodiscard]] std::string ManPage(StCommandText const& command,
                                  std::vector<StCommandText> const& commands,
                                  std::string const& date);

/// The description of one command in Markdown, its title of the first rank.
[[nodiscard]] std::string MarkdownPage(StCommandText const& command,
                                       std::vector<StCommandText> const& commands);

/// What bash sources, and zsh finds as _selu, to complete the words of a command line.
[[nodiscard]] std::string BashCompletion(std::vector<StCommandText> const& commands);
[[nodiscard]] std::string ZshCompletion(std::vector<StCommandText> const& commands);

} // namespace selu
