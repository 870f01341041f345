// Writes what is made from the application's own description into a folder: man1/*.1, selu.bash,
// _selu and, for the documentation, commands/*.md.
//
//   selu_describe FOLDER DATE
#include "Application.h"
#include "describe/Describe.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;

void Write(fs::path const& file, std::string const& text) {
  fs::create_directories(file.parent_path());
  std::ofstream out(file, std::ios::binary);
  out << text;
  if (!out.flush()) throw std::runtime_error("cannot write " + file.string());
}

void WriteAll(fs::path const& folder, std::string const& date) {
  CLI::App app;
  selu::BuildApplication(app);
  auto const commands = selu::CommandTexts(app);
  Write(folder / "selu.bash", selu::BashCompletion(commands));
  Write(folder / "_selu", selu::ZshCompletion(commands));
  for (auto const& command : commands) {
    std::string const name = selu::PageName(command);
    Write(folder / "man1" / (name + ".1"), selu::ManPage(command, commands, date));
    Write(folder / "commands" / (name + ".md"), selu::MarkdownPage(command, commands));
  }
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: selu_describe FOLDER DATE\n";
    return 2;
  }
  try {
    WriteAll(argv[1], argv[2]);
    return 0;
  } catch (std::exception const& error) {
    std::cerr << "selu_describe: " << error.what() << '\n';
    return 1;
  }
}
