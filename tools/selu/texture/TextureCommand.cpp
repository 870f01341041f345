#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Output.h"
#include "base/Progress.h"
#include "base/Texts.h"
#include "drawing/Picture.h"
#include "images/Directions.h"
#include "images/ImageFile.h"
#include "texture/Texture.h"

#include <CLI/CLI.hpp>

#include <cstring>
#include <memory>
#include <span>

namespace selu {
namespace {

using ORVA::CCooccurrence;
using ORVA::CImage;
using ORVA::CSize;
using ORVA::int64;

struct StOptions {
  std::string image, series, range, format = "table", matrix;
  std::vector<std::string> directions, pictures;
  bool all = false;
};

// The directions to the neighbors that fit; a note names those that do not.
std::vector<Direction> FittingDirections(CSize const& size) {
  std::vector<Direction> directions;
  std::string left;
  auto const count = static_cast<std::size_t>(CCooccurrence::NumberOfDirections(size.Dim()));
  for (Direction const& d : std::span(CCooccurrence::m_cDirections).first(count)) {
    if (PairsOf(size, d) > 0)
      directions.push_back(d);
    else
      left += (left.empty() ? "" : " ") + DirectionText(d, size.Dim());
  }
  if (directions.empty()) throw CAppError("the image has no two voxels that are neighbors");
  if (!left.empty())
    PrintNote("note: the image is one voxel thin, so these directions are left out: " + left);
  return directions;
}

std::vector<Direction> FitDirections(StOptions const& options,
                                     std::vector<StGivenDirection> const& given,
                                     CSize const& size) {
  std::vector<Direction> directions;
  for (auto const& one : given) directions.push_back(FitDirection(one, size));
  if (!given.empty() && !options.all) return directions;
  for (Direction const& one : FittingDirections(size)) directions.push_back(one);
  return directions;
}

// Matrix s of `all` from the only one of `one`.
void CopyMatrix(CImage& all, int64 s, CImage const& one) {
  auto const to = all.CreateAccess(true);
  auto const from = one.CreateAccess(false);
  for (int64 j = 0; j < 256; ++j)
    for (int64 i = 0; i < 256; ++i)
      std::memcpy(to.WritableBase() + s * to.Stride(0) + i * to.Stride(1) + j * to.Stride(2),
                  from.Base() + i * from.Stride(1) + j * from.Stride(2), sizeof(std::uint32_t));
}

void Compute(StTexture& texture, CImage const& gray, std::vector<Direction> const& directions) {
  constexpr int64 stepsOfOne = 3; // what ComputeMatrixAndFeatures advances by
  auto const count = static_cast<int64>(directions.size());
  CProgressBar bar("counting pairs", count * stepsOfOne);
  CCooccurrence cooccurrence("texture", nullptr);
  cooccurrence.SetProgressObserver(&bar);
  texture.matrices = CImage(ORVA::IMAGE_GREY_32, CSize(count, 256, 256));
  CImage one(ORVA::IMAGE_GREY_32, CSize(1, 256, 256));
  for (int64 s = 0; s < count; ++s) {
    Direction direction = directions[static_cast<std::size_t>(s)];
    ORVA::CValueMap map;
    cooccurrence.ComputeMatrixAndFeatures(one, gray, &direction, &map);
    CopyMatrix(texture.matrices, s, one);
    StDirectionTexture& result = texture.directions.emplace_back();
    result.direction = direction;
    result.pairs = PairsOf(gray.Size(), direction);
    for (std::size_t f = 0; f < c_featureNames.size(); ++f)
      result.features[f] = map.Entry(c_featureNames[f]).Double();
  }
}

CImage ReadGray(COpenImage& image, std::optional<StRange> const& range) {
  CRawImage const raw = image.Read();
  CImage gray = ToGray(raw, range, image.Path());
  auto const warning = CollapseWarning(raw, range, image.Path());
  if (!warning.empty()) PrintNote("warning: " + warning);
  return gray;
}

std::optional<CAtomicFile> OpenMatrix(StOptions const& options, COpenImage const& image) {
  if (options.matrix.empty()) return std::nullopt;
  CheckImageOutput(options.matrix, ORVA::IMAGE_GREY_32, 3);
  RefuseOverwriting(options.matrix, image);
  return std::optional<CAtomicFile>(std::in_place, options.matrix);
}

std::vector<CAtomicFile> OpenPictures(StOptions const& options, COpenImage const& image) {
  std::vector<CAtomicFile> pictures;
  for (auto const& path : options.pictures) {
    RefuseOverwriting(path, image);
    pictures.push_back(OpenPicture(path));
  }
  return pictures;
}

std::string Formatted(StOptions const& options, StTexture const& texture) {
  if (options.format == "json") return ToJson(texture);
  if (options.format == "csv") return ToCsv(texture);
  return ToTable(texture, OutputColumns());
}

void Run(StOptions const& options) {
  StTexture texture;
  texture.image = options.image;
  if (!options.range.empty()) texture.range = ParseRange(options.range);
  std::vector<StGivenDirection> given;
  for (auto const& text : options.directions) given.push_back(ParseDirection(text));
  COpenImage image = OpenImage(options.image, options.series);
  texture.size = image.Header().size;
  texture.pixel = image.Header().pixel;
  auto const directions = FitDirections(options, given, texture.size);
  auto matrix = OpenMatrix(options, image);
  auto pictures = OpenPictures(options, image);

  Compute(texture, ReadGray(image, texture.range), directions);

  if (matrix) WriteImage(*matrix, texture.matrices);
  for (auto& picture : pictures) picture.Write(DrawTexture(texture, EndingOf(picture.Target())));
  std::string const text = Formatted(options, texture);
  std::vector<CAtomicFile*> files = {matrix ? &*matrix : nullptr};
  for (auto& picture : pictures) files.push_back(&picture);
  CommitAll(files, [&] { PrintOut(text); });
}

constexpr char c_help[] =
    R"(Gray levels are the highest byte of unsigned 8, 16 and 32-bit pixels. Signed and floating-point
pixels need --range LO,HI: LO becomes 0, HI 255, values beyond are clamped.

Examples:
  selu texture brick.png --picture brick-texture.png
  selu texture scan.nii.gz --range -200,300 --direction 1,0,0 --direction 0,0,2 --format csv)";

} // namespace

void AddTextureCommand(CLI::App& app) {
  auto const options = std::make_shared<StOptions>();
  CLI::App* const command =
      app.add_subcommand("texture", "Co-occurrence matrices and the 13 Haralick features");
  command->add_option("IMAGE", options->image, c_imageHelp)->required();
  command->add_option("--series", options->series, c_seriesHelp);
  command
      ->add_option("--direction", options->directions,
                   "dx,dy,dz (2D: dx,dy), the displacement in voxels; may be given repeatedly")
      ->take_all()
      ->expected(1);
  command->add_flag("--all-directions", options->all,
                    "the 13 directions to the neighbors, in 2D 4; taken when no other is given. "
                    "Those that lead out "
                    "of a thin image are left out, with a note");
  command->add_option("--range", options->range,
                      "LO,HI: map these values linearly onto the gray levels 0 to 255");
  command->add_option("--format", options->format, "table, json or csv")
      ->check(CLI::IsMember({"table", "json", "csv"}))
      ->capture_default_str();
  command->add_option("--matrix", options->matrix,
                      "write the counts as an image (.nrrd, .mha, .nii.gz): C[i][j] of direction s "
                      "at x = s, y = i, z = j");
  command
      ->add_option("--picture", options->pictures,
                   "draw the matrices and the features (.png or .svg); may be given repeatedly")
      ->take_all()
      ->expected(1);
  command->footer(c_help);
  command->callback([options] { Run(*options); });
}

} // namespace selu
