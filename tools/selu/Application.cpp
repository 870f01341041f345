#include "Application.h"

#include "Commands.h"
#include "HelpPages.h"
#include "base/Errors.h"
#include "base/Output.h"
#include "base/Signals.h"
#include "base/Texts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace selu {
namespace {

// The first line of a text without its full stop; a sentence of ours has none. There may be no
// memory left for a copy.
std::string_view OneLine(std::string_view text) noexcept {
  text = text.substr(0, text.find('\n'));
  if (text.ends_with('.')) text.remove_suffix(1);
  return text;
}

// An empty value, such as that of a variable of the shell that was never set, is no value: it would
// pass for an option that is not given.
void RefuseEmptyValues(CLI::App& app) {
  for (CLI::Option* const option : app.get_options())
    if (option->get_items_expected_max() > 0)
      option->check([](std::string const& value) {
        return std::string(value.empty() ? "the value is empty" : "");
      });
  for (CLI::App* const command : app.get_subcommands({})) RefuseEmptyValues(*command);
}

// The command of this name below another; null where there is none.
CLI::App const* CommandBelow(CLI::App const& app, std::string const& name) {
  auto const found =
      app.get_subcommands([&](CLI::App const* one) { return one->check_name(name); });
  return found.empty() ? nullptr : found.front();
}

// The command that these words name, one below the other; null where there is none.
CLI::App const* FindCommand(CLI::App const& app, std::vector<std::string> const& words) {
  CLI::App const* command = &app;
  for (auto const& word : words) {
    command = CommandBelow(*command, word);
    if (command == nullptr) return nullptr;
  }
  return command;
}

void AddHelpCommand(CLI::App& app) {
  auto const words = std::make_shared<std::vector<std::string>>();
  CLI::App* const help = app.add_subcommand("help", "The help page of a command");
  help->add_option("COMMAND", *words, "such as texture, or walk line; without it this overview");
  help->footer("Example:\n  selu help walk line");
  help->callback([&app, words] {
    CLI::App const* const command = FindCommand(app, *words);
    if (command == nullptr)
      throw CUsageError("there is no command " + Quoted(words->back()) + " (see selu --help)");
    std::string name = "selu";
    for (auto const& word : *words) name += " " + word;
    PrintOut(app.get_formatter()->make_help(command, name, CLI::AppFormatMode::Normal));
  });
}

// The first argument that should name a command and does not, or an empty text.
std::string UnknownCommand(CLI::App const& app, int argc, char const* const* argv) {
  std::vector<CLI::App const*> known = app.get_subcommands({});
  for (int i = 1; i < argc && !known.empty(); ++i) {
    auto const next = std::find_if(known.begin(), known.end(), [&](CLI::App const* command) {
      return command->get_name() == argv[i];
    });
    if (next == known.end()) return argv[i];
    known = (*next)->get_subcommands({});
  }
  return {};
}

// "see selu walk line --help", for the command that the arguments begin with.
std::string Hint(CLI::App const& app, int argc, char const* const* argv) {
  std::string text = "see selu";
  CLI::App const* command = &app;
  for (int i = 1; i < argc; ++i) {
    command = CommandBelow(*command, argv[i]);
    if (command == nullptr) break;
    text += " " + command->get_name();
  }
  return text + " --help";
}

// Help and version come as exceptions, too, with exit code 0.
int AnswerParseError(CLI::App const& app, CLI::ParseError const& error, std::string const& hint) {
  if (error.get_exit_code() != 0)
    throw CUsageError(std::string(OneLine(error.what())) + " (" + hint + ")");
  std::ostringstream out;
  (void)app.exit(error, out, out);
  PrintOut(out.str());
  return 0;
}

int Run(int argc, char** argv) {
  CLI::App app;
  BuildApplication(app);
  try {
    app.parse(argc, argv);
  } catch (CLI::RequiredError const& error) {
    std::string const unknown = UnknownCommand(app, argc, argv);
    std::string const hint = Hint(app, argc, argv);
    if (unknown.empty()) return AnswerParseError(app, error, hint);
    throw CUsageError("there is no command or option " + Quoted(unknown) + " (" + hint + ")");
  } catch (CLI::ParseError const& error) {
    return AnswerParseError(app, error, Hint(app, argc, argv));
  }
  return 0;
}

int Report(std::string_view sentence, int code) noexcept {
  PrintNote(sentence);
  return code;
}

} // namespace

void BuildApplication(CLI::App& app) {
  app.description("Texture, masks and object features of 2D and 3D gray-value images");
  app.name("selu");
  app.set_version_flag("--version", "selu " SELU_VERSION);
  app.require_subcommand(1);
  app.footer(R"(Example:
  selu texture brick.png --picture brick-texture.png

Each command has a help page of its own: selu help texture)");
  AddInfoCommand(app);
  AddTextureCommand(app);
  AddTextureMapCommand(app);
  AddSampleCommand(app);
  AddSynthCommand(app);
  AddWalkCommand(app);
  AddMaskCommand(app);
  AddRegionsCommand(app);
  AddFeatureImageCommand(app);
  AddHelpCommand(app);
  RefuseEmptyValues(app);
  FinishHelpPages(app);
}

int RunApplication(int argc, char** argv) noexcept {
  try {
    OccupyClosedStreams();
    InstallSignalHandlers();
    return Run(argc, argv);
  } catch (CUsageError const& error) {
    return Report(error.what(), c_exitUsage);
  } catch (std::bad_alloc const&) {
    return Report("out of memory", c_exitError);
  } catch (std::exception const& error) {
    return Report(OneLine(error.what()), c_exitError);
  } catch (...) {
    return Report("an unknown error", c_exitError);
  }
}

} // namespace selu
