#include "Application.h"

#include "Commands.h"
#include "base/Errors.h"
#include "base/Output.h"
#include "base/Signals.h"
#include "base/Texts.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <new>
#include <string>
#include <vector>

namespace selu {
namespace {

// The first line of a text without its full stop; a sentence of ours has none.
std::string OneLine(std::string text) {
  text.resize(std::min(text.find('\n'), text.size()));
  if (text.ends_with('.')) text.pop_back();
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

void AddCommands(CLI::App& app) {
  app.name("selu");
  app.set_version_flag("--version", "selu " SELU_VERSION);
  app.require_subcommand(1);
  app.footer("Example:\n  selu texture brick.png --picture brick-texture.png\n\n"
             "Each command has a help page of its own: selu texture --help");
  AddInfoCommand(app);
  AddTextureCommand(app);
  AddSampleCommand(app);
  AddSynthCommand(app);
  AddWalkCommand(app);
  AddMaskCommand(app);
  AddRegionsCommand(app);
  AddFeatureImageCommand(app);
  RefuseEmptyValues(app);
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

// Help and version come as exceptions, too, with exit code 0.
int AnswerParseError(CLI::App const& app, CLI::ParseError const& error) {
  if (error.get_exit_code() != 0) throw CUsageError(OneLine(error.what()) + " (see selu --help)");
  std::ostringstream out;
  (void)app.exit(error, out, out);
  PrintOut(out.str());
  return 0;
}

int Run(int argc, char** argv) {
  CLI::App app("Texture, masks and object features of 2D and 3D gray-value images");
  AddCommands(app);
  try {
    app.parse(argc, argv);
  } catch (CLI::RequiredError const& error) {
    std::string const unknown = UnknownCommand(app, argc, argv);
    if (unknown.empty()) return AnswerParseError(app, error);
    throw CUsageError("there is no command or option " + Quoted(unknown) + " (see selu --help)");
  } catch (CLI::ParseError const& error) {
    return AnswerParseError(app, error);
  }
  return 0;
}

int Report(std::string const& sentence, int code) noexcept {
  PrintNote(sentence);
  return code;
}

} // namespace

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
