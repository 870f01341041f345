// What is made from the application's own description: man pages, pages of documentation,
// completions.

#include "Application.h"
#include "describe/Describe.h"

#include <CLI/CLI.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

namespace {

std::vector<selu::StCommandText> Commands() {
  CLI::App app;
  selu::BuildApplication(app);
  return selu::CommandTexts(app);
}

selu::StCommandText Command(std::string const& name) {
  for (auto const& command : Commands())
    if (command.name == name) return command;
  ADD_FAILURE() << "no command " << name;
  return {};
}

selu::StOptionText Option(std::string const& command, std::string const& name) {
  for (auto const& option : Command(command).options)
    if (std::find(option.names.begin(), option.names.end(), name) != option.names.end())
      return option;
  ADD_FAILURE() << command << " has no option " << name;
  return {};
}

bool Contains(std::string const& text, std::string const& part) {
  return text.find(part) != std::string::npos;
}

// What the script prints when bash runs it, trimmed.
std::string Bash(std::string const& script) {
  auto const file =
      std::filesystem::temp_directory_path() /
      ("selu-describe-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
       ::testing::UnitTest::GetInstance()->current_test_info()->name() + ".sh");
  std::ofstream(file) << script;
  std::unique_ptr<FILE, int (*)(FILE*)> const pipe(
      popen(("bash '" + file.string() + "' 2>&1").c_str(), "r"), pclose);
  std::string text;
  std::array<char, 256> part{};
  while (std::fgets(part.data(), part.size(), pipe.get()) != nullptr) text += part.data();
  std::filesystem::remove(file);
  while (text.ends_with('\n')) text.pop_back();
  return text;
}

// What bash offers for the last of these words.
std::string Completed(std::vector<std::string> const& words) {
  std::string script = selu::BashCompletion(Commands()) + "\nCOMP_WORDS=(";
  for (auto const& word : words) script += "'" + word + "' ";
  return Bash(script + ")\nCOMP_CWORD=" + std::to_string(words.size() - 1) +
              "\n_selu\necho \"${COMPREPLY[*]}\"\n");
}

} // namespace

TEST(SeluDescribe, FindsEveryCommandBelowTheApplication) {
  std::vector<std::string> names;
  for (auto const& command : Commands()) names.push_back(command.name);
  for (auto const* name : {"selu", "selu info", "selu texture-map", "selu synth fibers",
                           "selu walk polygon", "selu feature-image", "selu help"})
    EXPECT_NE(std::find(names.begin(), names.end(), name), names.end()) << name;
  EXPECT_EQ(names.front(), "selu");
}

TEST(SeluDescribe, TellsWhatAnOptionTakes) {
  auto const format = Option("selu texture", "--format");
  EXPECT_EQ(format.value, "FORMAT");
  EXPECT_EQ(format.choices, (std::vector<std::string>{"table", "json", "csv"}));
  EXPECT_EQ(format.standard, "table");
  EXPECT_TRUE(Option("selu texture", "--mask").TakesFile());
  EXPECT_EQ(Option("selu texture", "--symmetric").value, "") << "a flag takes nothing";
  EXPECT_TRUE(Option("selu sample", "-n").isNeeded);
}

TEST(SeluDescribe, ManPageNamesEveryOptionAndSection) {
  auto const commands = Commands();
  for (auto const& command : commands) {
    std::string const page = selu::ManPage(command, commands, "Jan  1 2000");
    for (auto const* section :
         {".SH NAME\n", ".SH SYNOPSIS\n", ".SH OPTIONS\n", ".SH EXIT STATUS\n"})
      EXPECT_TRUE(Contains(page, section)) << command.name << ": " << section;
    for (auto const& option : command.options) {
      std::string name = option.names.back();
      for (std::size_t at = 0; (at = name.find('-', at)) != std::string::npos; at += 2)
        name.insert(at, "\\");
      EXPECT_TRUE(Contains(page, "\\fB" + name + "\\fR")) << command.name << " " << name;
    }
  }
}

TEST(SeluDescribe, ManPageKeepsExamplesLineByLine) {
  std::string const page = selu::ManPage(Command("selu help"), Commands(), "Jan  1 2000");
  EXPECT_TRUE(Contains(page, ".SH EXAMPLE\n.nf\n  selu help walk line\n.fi\n")) << page;
}

TEST(SeluDescribe, MarkdownPageLinksTheCommandsBelow) {
  std::string const page = selu::MarkdownPage(Command("selu synth"), Commands());
  EXPECT_TRUE(page.starts_with("# selu synth\n"));
  EXPECT_TRUE(Contains(page, "- [`selu synth fibers`](selu-synth-fibers.md): "));
  EXPECT_TRUE(Contains(page, "```sh\nselu synth layers --size 64,64,64")) << page;
}

TEST(SeluDescribe, BashCompletesCommandsOptionsAndWords) {
  struct StCase {
    std::vector<std::string> words;
    std::string offered;
  };
  std::vector<StCase> const cases = {
      {{"selu", "wa"}, "walk"},
      {{"selu", "walk", "po"}, "polygon"},
      {{"selu", "help", "walk", "li"}, "line"},
      {{"selu", "texture", "a.png", "--symm"}, "--symmetric"},
      {{"selu", "texture", "a.png", "--format", "j"}, "json"},
      {{"selu", "texture", "--format", "=", "c"}, "csv"},
      {{"selu", "texture", "--levels", ""}, ""},
      {{"selu", "--vers"}, "--version"},
  };
  for (auto const& [words, offered] : cases) EXPECT_EQ(Completed(words), offered) << words.back();
}

TEST(SeluDescribe, ZshFormNamesChoicesAndFiles) {
  std::string const text = selu::ZshCompletion(Commands());
  EXPECT_TRUE(text.starts_with("#compdef selu\n"));
  EXPECT_TRUE(Contains(text, ":FORMAT:(table json csv)'"));
  EXPECT_TRUE(Contains(text, "'*--mask=[")) << "an option with a value";
  EXPECT_TRUE(Contains(text, "'polygon:The points of any simple polygon, column by column'"));
}
