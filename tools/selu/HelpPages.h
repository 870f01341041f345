// What the help pages of all commands have in common.
//
//   CLI::App app("...");
//   ... add the commands ...
//   FinishHelpPages(app);          // names of values, lines of at most 100 columns, exit codes
//   app.parse(argc, argv);
#pragma once

namespace CLI {
class App;
}

namespace selu {

/// Columns that a line of help has at most.
inline constexpr int c_helpColumns = 100;

/// Gives the options names for their values, such as FILE, and every page its form and its last
/// lines; to be called when all commands are there.
void FinishHelpPages(CLI::App& app);

} // namespace selu
