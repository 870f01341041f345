// The man page and the Markdown page of a command.
#include "describe/Describe.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace selu {
namespace {

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

// Text for troff: its own characters escaped, dashes as they are typed.
std::string Troff(std::string const& text) {
  std::string escaped;
  for (char const c : text) {
    if (c == '\\')
      escaped += "\\e";
    else if (c == '-')
      escaped += "\\-";
    else
      escaped += c;
  }
  if (escaped.starts_with('.') || escaped.starts_with('\'')) escaped.insert(0, "\\&");
  return escaped;
}

std::string Joined(std::vector<std::string> const& words, std::string_view separator) {
  std::string text;
  for (auto const& word : words)
    text += (text.empty() ? std::string() : std::string(separator)) + word;
  return text;
}

// What stands behind the help: choices are part of it mostly, a default never.
std::string HelpOf(StOptionText const& option) {
  std::string text = option.help;
  if (!option.standard.empty())
    text += (text.empty() ? "" : "; ") + std::string("default ") + option.standard;
  if (option.isNeeded) text += std::string(text.empty() ? "" : "; ") + "needed";
  return text;
}

std::string ManOption(StOptionText const& option) {
  std::string text = ".TP\n";
  for (std::size_t i = 0; i < option.names.size(); ++i)
    text += (i == 0 ? "\\fB" : ", \\fB") + Troff(option.names[i]) + "\\fR";
  bool const isArgument = option.names.front() == option.value;
  if (!option.value.empty() && !isArgument) text += " \\fI" + Troff(option.value) + "\\fR";
  return text + "\n" + Troff(HelpOf(option)) + "\n";
}

std::string ManParagraph(StParagraph const& paragraph) {
  std::string text =
      paragraph.heading.empty() ? ".PP\n" : ".SH " + Upper(Troff(paragraph.heading)) + "\n";
  if (paragraph.isVerbatim) text += ".nf\n";
  for (auto const& line : paragraph.lines) text += Troff(line) + "\n";
  return text + (paragraph.isVerbatim ? ".fi\n" : "");
}

std::string ManSection(char const* title, std::vector<StOptionText> const& options) {
  if (options.empty()) return {};
  std::string text = ".SH " + std::string(title) + "\n";
  for (auto const& option : options) text += ManOption(option);
  return text;
}

// The command of which this is the name; the caller knows that it is there.
StCommandText const& Find(std::vector<StCommandText> const& commands, std::string const& name) {
  return *std::find_if(commands.begin(), commands.end(),
                       [&](StCommandText const& one) { return one.name == name; });
}

std::string ManCommands(StCommandText const& command, std::vector<StCommandText> const& commands) {
  if (command.commands.empty()) return {};
  std::string text = ".SH COMMANDS\n";
  for (auto const& word : command.commands) {
    StCommandText const& below = Find(commands, command.name + " " + word);
    text += ".TP\n\\fB" + Troff(PageName(below)) + "\\fR(1)\n" + Troff(below.summary) + "\n";
  }
  return text;
}

// The flowing text and tables before, the examples and the exit codes behind the options.
bool IsExample(StParagraph const& paragraph) { return paragraph.heading.starts_with("Example"); }
bool IsExitCodes(StParagraph const& paragraph) {
  return !paragraph.lines.empty() && paragraph.lines.front().starts_with("Exit codes: ");
}

std::string MarkdownEscaped(std::string const& text) {
  std::string escaped;
  for (char const c : text) {
    if (std::string_view("\\`*_{}[]<>|#").find(c) != std::string_view::npos) escaped += '\\';
    escaped += c;
  }
  return escaped;
}

std::string MarkdownOptions(char const* title, std::vector<StOptionText> const& options) {
  if (options.empty()) return {};
  std::string text = "\n## " + std::string(title) + "\n\n";
  for (auto const& option : options) {
    bool const isArgument = option.names.front() == option.value;
    std::string const value = isArgument || option.value.empty() ? "" : " " + option.value;
    text += "`" + Joined(option.names, "`, `") + value + "`\n: " + MarkdownEscaped(HelpOf(option)) +
            "\n\n";
  }
  return text;
}

std::string MarkdownParagraph(StParagraph const& paragraph) {
  std::string text =
      paragraph.heading.empty() ? "\n" : "\n## " + MarkdownEscaped(paragraph.heading) + "\n\n";
  if (paragraph.isVerbatim) text += IsExample(paragraph) ? "```sh\n" : "```text\n";
  for (auto const& line : paragraph.lines)
    text += (paragraph.isVerbatim ? line.substr(2) : MarkdownEscaped(line)) + "\n";
  return text + (paragraph.isVerbatim ? "```\n" : "");
}

} // namespace

std::string PageName(StCommandText const& command) {
  std::string name = command.name;
  std::replace(name.begin(), name.end(), ' ', '-');
  return name;
}

std::string ManPage(StCommandText const& command, std::vector<StCommandText> const& commands,
                    std::string const& date) {
  std::string const name = PageName(command);
  std::string text = ".TH " + Upper(Troff(name)) + " 1 \"" + date +
                     "\" \"selu " SELU_VERSION "\" \"User Commands\"\n.SH NAME\n" + Troff(name) +
                     " \\- " + Troff(command.summary) + "\n.SH SYNOPSIS\n.B " +
                     Troff(Synopsis(command)) + "\n.SH DESCRIPTION\n" + Troff(command.summary) +
                     ".\n";
  std::string examples, codes;
  for (auto const& paragraph : command.paragraphs) {
    if (IsExitCodes(paragraph)) {
      codes = ".SH EXIT STATUS\n" + Troff(paragraph.lines.front().substr(12)) + "\n";
      continue;
    }
    (IsExample(paragraph) ? examples : text) += ManParagraph(paragraph);
  }
  text += ManCommands(command, commands) + ManSection("ARGUMENTS", command.arguments) +
          ManSection("OPTIONS", command.options) + examples + codes;
  if (command.name != commands.front().name)
    text += ".SH SEE ALSO\n\\fB" + Troff(PageName(commands.front())) + "\\fR(1)\n";
  return text;
}

std::string MarkdownPage(StCommandText const& command, std::vector<StCommandText> const& commands) {
  std::string text = "# " + command.name + "\n\n" + MarkdownEscaped(command.summary) +
                     ".\n\n```text\n" + Synopsis(command) + "\n```\n";
  std::string examples, rest;
  for (auto const& paragraph : command.paragraphs)
    (IsExample(paragraph) ? examples : rest) += MarkdownParagraph(paragraph);
  text += examples;
  if (!command.commands.empty()) text += "\n## Commands\n\n";
  for (auto const& word : command.commands) {
    StCommandText const& below = Find(commands, command.name + " " + word);
    text += "- [`" + below.name + "`](" + PageName(below) +
            ".md): " + MarkdownEscaped(below.summary) + "\n";
  }
  text +=
      MarkdownOptions("Arguments", command.arguments) + MarkdownOptions("Options", command.options);
  if (!rest.empty()) text += "\n## What it does\n" + rest;
  return text;
}

} // namespace selu
