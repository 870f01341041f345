#include "describe/CommandText.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace selu {
namespace {

std::vector<std::string> Split(std::string const& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, separator);) parts.push_back(part);
  return parts;
}

// The words of a check such as "{table,json,csv}", which is part of the name of the option's type.
std::vector<std::string> Choices(CLI::Option const& option) {
  std::string const type = option.get_type_name();
  std::size_t const open = type.find('{'), close = type.find('}', open);
  if (open == std::string::npos || close == std::string::npos) return {};
  return Split(type.substr(open + 1, close - open - 1), ',');
}

std::vector<std::string> Names(CLI::Option const& option) {
  if (option.get_positional()) return {option.get_name()};
  std::vector<std::string> names;
  for (auto const& name : option.get_snames()) names.push_back("-" + name);
  for (auto const& name : option.get_lnames()) names.push_back("--" + name);
  return names;
}

StOptionText OptionText(CLI::Option const& option) {
  StOptionText text{Names(option), "", {}, option.get_default_str(), option.get_description()};
  bool const takesValue = option.get_items_expected_max() > 0;
  std::string const& named = option.get_option_text();
  if (takesValue) text.value = named.empty() ? "VALUE" : named;
  if (option.get_positional()) text.value = option.get_name();
  if (takesValue) text.choices = Choices(option);
  text.isNeeded = option.get_required();
  text.isRepeatable = option.get_items_expected_max() > 1;
  return text;
}

// "Examples:" is the heading "Examples" of what follows it.
std::string TakeHeading(std::vector<std::string>& lines) {
  std::string const& first = lines.front();
  bool const isHeading = first.size() > 1 && first.ends_with(':') && lines.size() > 1 &&
                         lines[1].starts_with("  ") && first.find(". ") == std::string::npos;
  if (!isHeading) return {};
  std::string heading = first.substr(0, first.size() - 1);
  lines.erase(lines.begin());
  return heading;
}

// Lines that go on in the same manner: flowing text, or lines that are indented.
void AddParagraphs(std::vector<std::string> lines, std::vector<StParagraph>& paragraphs) {
  std::string heading = TakeHeading(lines);
  for (std::size_t i = 0; i < lines.size();) {
    StParagraph paragraph{std::exchange(heading, ""), {}, lines[i].starts_with("  ")};
    for (; i < lines.size() && lines[i].starts_with("  ") == paragraph.isVerbatim; ++i)
      paragraph.lines.push_back(lines[i]);
    paragraphs.push_back(std::move(paragraph));
  }
}

std::vector<StParagraph> Paragraphs(std::string const& footer) {
  std::vector<StParagraph> paragraphs;
  std::vector<std::string> block;
  for (auto const& line : Split(footer + "\n\n", '\n')) {
    if (!line.empty()) {
      block.push_back(line);
    } else if (!block.empty()) {
      AddParagraphs(std::exchange(block, {}), paragraphs);
    }
  }
  return paragraphs;
}

void AddCommand(CLI::App const& app, std::string const& name, std::vector<StCommandText>& all) {
  StCommandText text{name, app.get_description(), {}, {}, {}, Paragraphs(app.get_footer())};
  for (CLI::Option const* option : app.get_options())
    (option->get_positional() ? text.arguments : text.options).push_back(OptionText(*option));
  auto const below = app.get_subcommands([](CLI::App const*) { return true; });
  for (CLI::App const* command : below) text.commands.push_back(command->get_name());
  all.push_back(std::move(text));
  for (CLI::App const* command : below) AddCommand(*command, name + " " + command->get_name(), all);
}

} // namespace

std::vector<StCommandText> CommandTexts(CLI::App const& app) {
  std::vector<StCommandText> all;
  AddCommand(app, app.get_name(), all);
  return all;
}

std::string Synopsis(StCommandText const& command) {
  std::string text = command.name + " [OPTION]...";
  if (!command.commands.empty()) text += " COMMAND";
  for (auto const& argument : command.arguments) {
    std::string const word = argument.value + (argument.isRepeatable ? "..." : "");
    text += argument.isNeeded ? " " + word : " [" + word + "]";
  }
  return text;
}

std::string LastWord(std::string const& name) {
  std::size_t const blank = name.rfind(' ');
  return blank == std::string::npos ? name : name.substr(blank + 1);
}

} // namespace selu
