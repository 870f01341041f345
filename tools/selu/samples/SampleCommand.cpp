#include "Commands.h"
#include "base/Arguments.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "distributions/Distributions.h"
#include "drawing/Picture.h"
#include "samples/SamplePicture.h"
#include "samples/SampleStatistics.h"
#include "samples/SampleWriter.h"

#include <pxlib2core/Random.h>
#include <pxlib2core/RandomSource.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <random>

#include <unistd.h>

namespace selu {
namespace {

using ORVA::CEulerRotation;
using ORVA::uint64;

constexpr uint64 c_block = 1 << 14; // samples from one step of the progress bar to the next

struct StOptions {
  std::vector<std::string> distribution;
  std::string count, seed, stream, format, output, picture, as;
  bool check = false, exact = false;
};

// What a run is asked for, checked before the first draw.
struct StJob {
  CParameters parameters;
  StSampleShape shape = {};
  EnSampleFormat format = EnSampleFormat::Csv;
  std::optional<CAtomicFile> file = {}, picture = {};
  bool writes = true; // values leave the program, into the file or to standard output
  bool check = false;
  bool tellsSeed = false; // it was drawn, and a run that is repeated needs it
};

uint64 ParseCount(std::string const& text) {
  auto const count = ParseUnsigned(text);
  if (!count || *count == 0 || *count > uint64{1} << 60)
    throw CUsageError("-n needs a whole number from 1 to 2^60, not \"" + text + "\"");
  return *count;
}

uint64 SeedOf(StOptions const& options) {
  if (!options.seed.empty()) return ParseSeed(options.seed);
  std::random_device device;
  return uint64{device()} << 32 | device();
}

std::optional<uint64> StreamOf(StOptions const& options) {
  if (options.stream.empty()) return std::nullopt;
  auto const stream = ParseUnsigned(options.stream);
  if (!stream)
    throw CUsageError("--stream needs a whole number from 0 to 2^64 - 1, not \"" + options.stream +
                      "\"");
  return stream;
}

// The distribution asked for, with --exact the exact one of that name.
CParameters ParametersOf(StOptions const& options) {
  std::vector<std::string> texts = options.distribution;
  if (options.exact && !texts.empty() && !IsExact(texts[0])) texts[0].insert(0, c_exact);
  return CParameters::FromTexts(texts);
}

EnSampleFormat FormatOf(StOptions const& options) {
  std::string name = options.format;
  if (name.empty() && !options.output.empty()) {
    std::string const ending = EndingOf(options.output);
    if (ending == ".json" || ending == ".npy") name = ending.substr(1);
  }
  if (name == "json") return EnSampleFormat::Json;
  return name == "npy" ? EnSampleFormat::Npy : EnSampleFormat::Csv;
}

// Components of a sample, and how a rotation becomes them.
struct StForm {
  char const* name;
  std::vector<std::string> columns;
  std::vector<int> extents;
  void (*append)(std::vector<double>&, CEulerRotation const&);
};

void AppendDirection(std::vector<double>& out, CEulerRotation const& rotation) {
  auto const d = rotation.getDirectionVector();
  out.insert(out.end(), {d.x, d.y, d.z});
}

void AppendMatrix(std::vector<double>& out, CEulerRotation const& rotation) {
  auto const matrix = rotation.getRotationMatrix();
  auto const elements = matrix.Elements();
  out.insert(out.end(), elements.begin(), elements.begin() + 9);
}

// Angles that give the matrix back. Where the z axis stays or turns over, only the sum or
// difference of phi and psi counts: psi is 0 then.
void AppendAngles(std::vector<double>& out, CEulerRotation const& rotation) {
  auto const matrix = rotation.getRotationMatrix();
  auto const m = matrix.Elements();
  double const sine = std::hypot(m[6], m[7]);
  double const theta = std::atan2(sine, m[8]);
  if (sine < 1e-12)
    out.insert(out.end(), {std::atan2(m[1], m[0]), theta, 0.0});
  else
    out.insert(out.end(), {std::atan2(m[6], -m[7]), theta, std::atan2(m[2], m[5])});
}

std::array<StForm, 3> const& Forms() {
  static std::array<StForm, 3> const forms = {
      {{"direction", {"x", "y", "z"}, {3}, AppendDirection},
       {"angles", {"phi", "theta", "psi"}, {3}, AppendAngles},
       {"matrix",
        {"m00", "m01", "m02", "m10", "m11", "m12", "m20", "m21", "m22"},
        {3, 3},
        AppendMatrix}}};
  return forms;
}

StForm const& FormOf(std::string const& name) {
  auto const& forms = Forms();
  auto const found = std::find_if(forms.begin(), forms.end(),
                                  [&](StForm const& form) { return name == form.name; });
  return found == forms.end() ? forms[0] : *found;
}

// Draws all samples, a block at a time; `draw` appends one to the block.
template <class Draw>
void Stream(StJob& job, Draw const& draw) {
  bool const toTerminal = job.writes && !job.file && ::isatty(STDOUT_FILENO) == 1;
  std::optional<CProgressBar> bar;
  if (!toTerminal)
    bar.emplace("drawing samples", static_cast<ORVA::int64>(job.shape.count / c_block + 1));
  std::optional<CSampleWriter> writer;
  if (job.writes) writer.emplace(job.format, job.shape, job.file ? &*job.file : nullptr);
  ORVA::CRandom::Obj().Seed(job.shape.seed);
  ORVA::CRandomSource source(job.shape.seed, job.shape.stream.value_or(0));
  std::vector<double> block;
  for (uint64 done = 0; done < job.shape.count; done += c_block) {
    block.clear();
    uint64 const now = std::min(c_block, job.shape.count - done);
    for (uint64 i = 0; i < now; ++i) draw(block, source);
    if (writer) writer->Add(block);
    if (bar) bar->Advance();
  }
  if (writer) writer->Finish();
}

void Commit(StJob& job, std::string const& report) {
  CommitAll({job.file ? &*job.file : nullptr, job.picture ? &*job.picture : nullptr},
            [&] { PrintOut(report); });
  if (job.tellsSeed) PrintNote("drawn with --seed " + std::to_string(job.shape.seed));
}

[[noreturn]] void RaiseMisfit(StJob const& job) {
  std::string const& name = job.parameters.Distribution();
  auto const names = IsScalar(name) ? ScalarNames() : RotationNames();
  std::string const exact = std::string(c_exact) + name;
  bool const hasExact = std::any_of(
      names.begin(), names.end(), [&](StDistributionName const& one) { return exact == one.name; });
  throw CAppError("the samples of " + Quoted(name) + " do not fit their law" +
                  (hasExact ? " (" + exact + " is exact)" : std::string()));
}

void SampleScalars(StJob& job) {
  StScalar const scalar = MakeScalar(job.parameters);
  job.shape.isWhole = scalar.isWhole;
  job.shape.columns = {"value"};
  std::optional<CScalarStatistics> statistics;
  if (job.check || job.picture) statistics.emplace(scalar, job.shape.count);
  Stream(job, [&](std::vector<double>& block, ORVA::CRandomSource& source) {
    double const value = job.shape.stream ? scalar.drawFrom(source) : scalar.draw();
    if (statistics) statistics->Add(value);
    if (job.writes) block.push_back(value);
  });
  if (job.picture)
    job.picture->Write(DrawScalars(*statistics, job.parameters.Title(), job.shape.seed,
                                   EndingOf(job.picture->Target())));
  Commit(job, job.check ? statistics->Report(OutputColumns()) : std::string());
  if (job.check && !statistics->Fits()) RaiseMisfit(job);
}

void SampleRotations(StJob& job, StForm const& form) {
  StRotations const rotations = MakeRotations(job.parameters);
  job.shape.columns = form.columns;
  job.shape.extents = form.extents;
  std::optional<CDirectionStatistics> statistics;
  if (job.check || job.picture) statistics.emplace(rotations.theory, job.shape.count);
  Stream(job, [&](std::vector<double>& block, ORVA::CRandomSource& source) {
    CEulerRotation const rotation =
        job.shape.stream ? rotations.drawFrom(source) : (*rotations.draw)();
    if (statistics) statistics->Add(rotation.getDirectionVector());
    if (job.writes) form.append(block, rotation);
  });
  if (job.picture)
    job.picture->Write(DrawDirections(*statistics, job.parameters.Title(), job.shape.seed,
                                      EndingOf(job.picture->Target())));
  Commit(job, job.check ? statistics->Report(OutputColumns()) : std::string());
  if (job.check && !statistics->Fits()) RaiseMisfit(job);
}

void Run(StOptions const& options) {
  StJob job{.parameters = ParametersOf(options)};
  job.shape.stream = StreamOf(options);
  std::string const& name = job.parameters.Distribution();
  bool const isScalar = IsScalar(name);
  auto const known = RotationNames();
  if (!isScalar && std::none_of(known.begin(), known.end(),
                                [&](StDistributionName const& one) { return name == one.name; }))
    throw CUsageError("there is no distribution " + Quoted(name) + " (see selu sample --help)");
  if (isScalar && !options.as.empty())
    throw CUsageError("--as is for rotations, and " + name + " draws numbers");
  job.shape.count = ParseCount(options.count);
  job.shape.seed = SeedOf(options);
  job.tellsSeed = options.seed.empty();
  job.shape.distribution = job.parameters.Title();
  job.format = FormatOf(options);
  job.check = options.check;
  job.writes = !options.output.empty() || (!options.check && options.picture.empty());
  if (job.format == EnSampleFormat::Npy && options.output.empty() && job.writes &&
      ::isatty(STDOUT_FILENO) == 1)
    throw CUsageError("the format npy is not for terminals: name a file with -o");
  if (!options.output.empty() && !options.picture.empty() &&
      IsSameFile(options.output, options.picture))
    throw CUsageError("--output and --picture name the same file, " + Quoted(options.picture));
  for (auto const& [parameter, file] : job.parameters.Given())
    if (parameter == "file")
      for (auto const& output : {options.output, options.picture}) RefuseSameFile(output, file);
  // Parameters are refused before any file is touched.
  if (isScalar)
    (void)MakeScalar(job.parameters);
  else
    (void)MakeRotations(job.parameters);
  if (!options.output.empty()) job.file.emplace(options.output);
  if (!options.picture.empty()) job.picture = OpenPicture(options.picture);
  if (isScalar)
    SampleScalars(job);
  else
    SampleRotations(job, FormOf(options.as));
}

std::string List(std::span<StDistributionName const> names) {
  std::string text;
  for (auto const& [name, help] : names)
    text +=
        "  " + std::string(name) + std::string(19 - std::string(name).size(), ' ') + help + "\n";
  return text;
}

std::string Footer() {
  return "Distributions of numbers:\n" + List(ScalarNames()) + "\nDistributions of rotations:\n" +
         List(RotationNames()) +
         "\nParameters are written name=value; angles in radians, or in degrees as 90deg. A "
         "mixture\n"
         "is described by a JSON file, its weights adding up to 1:\n"
         "  {\"components\": [{\"weight\": 0.75, \"distribution\": \"vmf\", \"kappa\": 50, "
         "\"theta\": "
         "1},\n"
         "                  {\"weight\": 0.25, \"distribution\": \"isotropic\"}]}\n"
         "The Euler angles of --as angles give the rotation back as Rz(psi) Rx(theta) Rz(phi).\n"
         "JSON has no infinity: such a value is null there.\n\n"
         "Examples:\n"
         "  selu sample normal mean=3 sigma=2 -n 1000 --seed 1 -o values.csv\n"
         "  selu sample gamma shape=2.5 -n 1000000 --check --picture gamma.png\n"
         "  selu sample poisson lambda=1000 --exact -n 1000000 --seed 1 --stream 3 --check\n"
         "  selu sample discrete 1=1 2=1 3=1 4=1 5=1 6=1 -n 100\n"
         "  selu sample vmf kappa=20 theta=60deg phi=45deg -n 100000 --picture vmf.png -o d.npy";
}

} // namespace

void AddSampleCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("sample", "Draw random numbers or rotations, and check them");
  command
      ->add_option("DISTRIBUTION", options->distribution,
                   "its name, then its parameters, such as: normal mean=3 sigma=2")
      ->required();
  command->add_option("-n,--count", options->count, "number of samples")->required();
  command->add_option(
      "--seed", options->seed,
      "the same seed gives the same samples; without it a note tells the one drawn");
  command->add_option("--stream", options->stream,
                      "number of a stream of the seed: many runs with one seed, far apart");
  command->add_flag("--exact", options->exact,
                    "the exact distribution of that name, as if it began with exact-");
  command
      ->add_option("--format", options->format,
                   "csv, json or npy; by default what the output's ending says, else csv")
      ->check(CLI::IsMember({"csv", "json", "npy"}));
  command
      ->add_option("--as", options->as,
                   "rotations as direction (vector, the default), angles (Euler) or matrix")
      ->check(CLI::IsMember({"direction", "angles", "matrix"}));
  command->add_option("-o,--output", options->output,
                      "file for the samples; without it they go to standard output, unless --check "
                      "or --picture asks for something else");
  command->add_option("--picture", options->picture,
                      "draw the histogram or the directions (.png or .svg)");
  command->add_flag("--check", options->check,
                    "print the moments beside those of theory, and tests; exit status 1 where the "
                    "samples do not fit their law");
  command->footer(Footer());
  command->callback([options] { Run(*options); });
}

} // namespace selu
