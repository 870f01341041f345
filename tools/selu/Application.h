// The application selu as a function: arguments in, exit code out.
//
//   int main(int argc, char** argv) { return selu::RunApplication(argc, argv); }
//   // 0 done, 1 an error (one sentence on standard error), 2 wrong usage, 130 interrupted
#pragma once

namespace CLI {
class App;
}

namespace selu {

/// The application with all its commands, their help pages and what they do.
void BuildApplication(CLI::App& app);

/// Never throws.
int RunApplication(int argc, char** argv) noexcept;

} // namespace selu
