#include "HelpPages.h"

#include <CLI/CLI.hpp>

#include <array>
#include <cstddef>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace selu {
namespace {

struct StValueName {
  char const *option, *value;
};
// What the options take; the same option takes the same in every command.
constexpr std::array<StValueName, 50> c_valueNames = {
    {{"--direction", "X,Y[,Z]"}, {"--range", "LO,HI"},       {"--format", "FORMAT"},
     {"--matrix", "FILE"},       {"--picture", "FILE"},      {"--output", "FILE"},
     {"--csv", "FILE"},          {"--corners", "FILE"},      {"--hole", "FILE"},
     {"--image", "IMAGE"},       {"--intensity", "IMAGE"},   {"--series", "UID"},
     {"--size", "NX,NY[,NZ]"},   {"--seed", "NUMBER"},       {"--count", "NUMBER"},
     {"--radius", "NUMBER"},     {"--value", "NUMBER"},      {"--paint", "NUMBER"},
     {"--distance", "NUMBER"},   {"--center", "S,T"},        {"--normal", "X,Y,Z"},
     {"--low", "X,Y[,Z]"},       {"--high", "X,Y[,Z]"},      {"--exclude", "PATH"},
     {"--id-key", "WORD"},       {"--neighborhood", "NAME"}, {"--orientation", "DISTRIBUTION"},
     {"--ends", "WHICH"},        {"--axis", "AXIS"},         {"--as", "FORM"},
     {"--method", "METHOD"},     {"--boundary", "RULE"},     {"--winding", "RULE"},
     {"--mesh", "FILE"},         {"--faces", "FILE"},        {"--face", "A,B,C"},
     {"--scale", "NUMBER"},      {"--shift", "X,Y,Z"},       {"--levels", "NUMBER"},
     {"--bin-width", "NUMBER"},  {"--bin-count", "NUMBER"},  {"--mask", "IMAGE"},
     {"--label", "NUMBER"},      {"--features", "NAMES"},    {"--aggregate", "WAY"},
     {"--threads", "NUMBER"},    {"--window", "NUMBER"},     {"--bin-start", "WHERE"},
     {"--border", "RULE"},       {"--step", "NUMBER"}}};

constexpr char c_exitCodes[] =
    R"(Exit codes: 0 done, 1 it could not be done, 2 the words of the command line are wrong.)";

std::vector<std::string> Wrapped(std::string const& text, std::size_t columns) {
  std::vector<std::string> lines(1);
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    if (!lines.back().empty() && lines.back().size() + 1 + word.size() > columns)
      lines.emplace_back();
    lines.back() += (lines.back().empty() ? "" : " ") + word;
  }
  return lines;
}

// Descriptions stand in a column of their own and never run over the page.
class CPageFormatter : public CLI::Formatter {
public:
  CPageFormatter() { column_width(c_left); }

  std::string make_option(CLI::Option const* option, bool isPositional) const override {
    return TwoColumns("  " + make_option_name(option, isPositional) + make_option_opts(option),
                      make_option_desc(option));
  }
  std::string make_subcommand(CLI::App const* command) const override {
    return TwoColumns("  " + command->get_name(), command->get_description());
  }
  // "IMAGE" says what a positional is; the others tell what they take and whether they must be.
  std::string make_option_opts(CLI::Option const* option) const override {
    std::string text;
    bool const takes = option->get_items_expected_max() > 0 && !option->get_positional();
    if (takes && !option->get_option_text().empty()) text += " " + option->get_option_text();
    if (takes && option->get_option_text().empty()) text += " VALUE";
    if (!option->get_default_str().empty()) text += "=" + option->get_default_str();
    if (option->get_items_expected_max() > 1) text += " ...";
    if (option->get_required()) text += " (needed)";
    return text;
  }
  std::string make_usage(CLI::App const* app, std::string name) const override {
    std::string const usage = Formatter::make_usage(app, std::move(name));
    std::string text;
    for (auto const& line : Wrapped(usage, c_helpColumns - 2))
      text += (text.empty() ? "" : "\n  ") + line;
    return text + "\n";
  }

private:
  static constexpr std::size_t c_left = 32;

  static std::string TwoColumns(std::string left, std::string const& right) {
    std::string text = std::move(left);
    if (text.size() + 2 > c_left)
      text += "\n" + std::string(c_left, ' ');
    else
      text.resize(c_left, ' ');
    bool first = true;
    for (auto const& line : Wrapped(right, c_helpColumns - c_left)) {
      text += (first ? "" : "\n" + std::string(c_left, ' ')) + line;
      first = false;
    }
    return text + "\n";
  }
};

void NameValues(CLI::App& app) {
  for (CLI::Option* const option : app.get_options())
    for (auto const& [name, value] : c_valueNames)
      if (option->check_name(name)) option->option_text(value);
}

} // namespace

void FinishHelpPages(CLI::App& app) {
  app.formatter(std::make_shared<CPageFormatter>());
  NameValues(app);
  std::string const footer = app.get_footer();
  app.footer(footer + (footer.empty() ? "" : "\n\n") + c_exitCodes);
  for (CLI::App* const command : app.get_subcommands({})) FinishHelpPages(*command);
}

} // namespace selu
