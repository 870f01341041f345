// The subcommands: each registers its options and, as callback, what it does.
//
//   CLI::App app;
//   AddInfoCommand(app);
//   app.parse(argc, argv);          // runs the command that was named
#pragma once

namespace CLI {
class App;
}

namespace selu {

void AddInfoCommand(CLI::App& app);
void AddTextureCommand(CLI::App& app);
void AddTextureMapCommand(CLI::App& app);
void AddSampleCommand(CLI::App& app);
void AddSynthCommand(CLI::App& app);
void AddWalkCommand(CLI::App& app);
void AddMaskCommand(CLI::App& app);
void AddRegionsCommand(CLI::App& app);
void AddFeatureImageCommand(CLI::App& app);
/// Of synth.
void AddFibersCommand(CLI::App& synth);

} // namespace selu
