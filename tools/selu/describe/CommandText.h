// What a command says of itself, taken apart for man pages, completions and pages of documentation.
//
//   CLI::App app;
//   BuildApplication(app);
//   for (StCommandText const& command : CommandTexts(app))
//     std::cout << command.name << ": " << command.summary << '\n';
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace selu {

/// An option or, where it has no dashes, an argument.
struct StOptionText {
  std::vector<std::string> names;   ///< "-o", "--output"; of an argument its one name
  std::string value;                ///< what it takes, such as "FILE"; empty for a flag
  std::vector<std::string> choices; ///< all that it takes, where these are words
  std::string standard;             ///< the value without it, or empty
  std::string help;
  bool isNeeded = false;
  bool isRepeatable = false;

  /// Whether its value is the name of a file or folder.
  [[nodiscard]] bool TakesFile() const { return value == "FILE" || value == "IMAGE"; }
};

/// A piece of the text below the options: a heading such as "Examples", or empty, and its lines.
struct StParagraph {
  std::string heading;
  std::vector<std::string> lines;
  bool isVerbatim = false; ///< lines to keep as they are, such as those of a table or an example
};

/// A command, such as "selu walk line".
struct StCommandText {
  std::string name;
  std::string summary;
  std::vector<StOptionText> arguments, options;
  std::vector<std::string> commands; ///< the last words of those below it
  std::vector<StParagraph> paragraphs;
};

/// The application and every command below it, each before those below it.
[[nodiscard]] std::vector<StCommandText> CommandTexts(CLI::App const& app);

/// "selu IMAGE [OPTION]...": what the arguments are, in one line.
[[nodiscard]] std::string Synopsis(StCommandText const& command);

/// The last word of a command's name.
[[nodiscard]] std::string LastWord(std::string const& name);

} // namespace selu
