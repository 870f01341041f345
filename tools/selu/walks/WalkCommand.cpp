#include "Commands.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Output.h"
#include "base/Texts.h"
#include "drawing/Picture.h"
#include "images/FileFormat.h"
#include "images/ImageFile.h"
#include "volumes/SynthOptions.h"
#include "walks/WalkImage.h"
#include "walks/WalkPicture.h"
#include "walks/WalkPoints.h"
#include "walks/WalkWriter.h"

#include <CLI/CLI.hpp>

#include <memory>
#include <optional>

#include <unistd.h>

namespace selu {
namespace {

// What a run is asked for, checked before any work.
struct StJob {
  EnWalk kind;
  StWalkOptions const& given;
  StWalk walk = {};
  std::optional<ORVA::CSize> size = {}; // of the image, whose outside is left out
  std::optional<CRawImage> image = {};
  std::optional<CAtomicFile> file = {}, picture = {};
  StProfile profile = {};

  [[nodiscard]] bool DrawsPlane() const { return kind == EnWalk::Slice && size && image; }
};

void CheckTogether(EnWalk kind, StWalkOptions const& given) {
  if (!given.image.empty() && !given.size.empty())
    throw CUsageError("--size and --image exclude each other: an image has its size");
  if (given.profile && given.image.empty()) throw CUsageError("--profile needs --image");
  if (!given.paint.empty()) {
    if (given.image.empty()) throw CUsageError("--paint needs --image");
    if (given.output.empty()) throw CUsageError("--paint needs -o, the image to write");
    if (given.profile) throw CUsageError("--paint and --profile exclude each other");
    if (!given.format.empty())
      throw CUsageError("--format is for points, and --paint writes an image");
  }
  bool const drawsPlane = kind == EnWalk::Slice && !given.image.empty() && !given.picture.empty();
  if (!given.range.empty() && !drawsPlane)
    throw CUsageError("--range is for the picture of a slice, which needs --image and --picture");
  if (!given.range.empty()) (void)ParseRange(given.range);
  if (!given.output.empty() && given.output == given.picture)
    throw CUsageError("--output and --picture name the same file, " + Quoted(given.output));
}

// Refuses an output that is one of the files that are read.
void RefuseOverwritingInputs(std::string const& output, StWalkOptions const& given) {
  if (output.empty()) return;
  if (!given.image.empty()) RefuseOverwriting(output, given.image);
  if (!given.corners.empty()) RefuseSameFile(output, given.corners);
  for (auto const& hole : given.holes) RefuseSameFile(output, hole);
}

void OpenPictureOf(StJob& job) {
  std::string const& path = job.given.picture;
  if (path.empty()) return;
  bool const isPlane = job.kind == EnWalk::Slice && !job.given.image.empty();
  if (isPlane && EndingOf(path) != ".png")
    throw CAppError("cannot write " + Quoted(path) + ": the picture of a plane ends in .png");
  RefuseOverwritingInputs(path, job.given);
  job.picture = OpenPicture(path);
}

bool IsJson(StWalkOptions const& given) {
  if (!given.format.empty()) return given.format == "json";
  return EndingOf(given.output) == ".json";
}

std::string DistanceName(std::array<double, 3> const& spacing) {
  bool const isPlain = spacing == std::array<double, 3>{1, 1, 1};
  return isPlain ? "distance in voxels" : "distance in the image's unit of length";
}

std::optional<CLineDistance> MakeDistance(StJob& job) {
  if (!job.given.profile) return std::nullopt;
  auto const spacing = ReadSpacing(job.given.image);
  job.profile.distanceName = DistanceName(spacing);
  auto const& line = job.walk.ideal.front();
  return CLineDistance(line.front(), line.back(), spacing);
}

void CollectProfile(StJob& job, CLineDistance const& distance, std::span<Point const> points) {
  VisitPixels(*job.image, [&](auto pixels) {
    for (auto const& p : points)
      job.profile.points.emplace_back(distance.Of(p),
                                      static_cast<double>(pixels[IndexOf(p, *job.size)]));
  });
}

// The points into the file or to standard output; without either only for the profile's picture.
StCounts WritePoints(StJob& job) {
  bool const writes = job.file || !job.picture;
  bool const toTerminal = writes && !job.file && ::isatty(STDOUT_FILENO) == 1;
  auto const distance = MakeDistance(job);
  std::optional<CWalkWriter> writer;
  if (writes)
    writer.emplace(StWalkForm{IsJson(job.given), job.walk.title, job.walk.dimension, distance,
                              job.image ? &*job.image : nullptr},
                   job.file ? &*job.file : nullptr);
  StCounts const counts =
      ForEachBlock(job.walk, job.size, toTerminal ? "" : "walking", [&](auto points) {
        if (writer) writer->Add(points);
        if (job.picture && distance) CollectProfile(job, *distance, points);
      });
  if (writer) writer->Finish(counts);
  return counts;
}

StCounts PaintPoints(StJob& job) {
  PixelValue const value = ParsePaint(job.given.paint, job.image->Pixel());
  return ForEachBlock(job.walk, job.size, "painting",
                      [&](auto points) { Paint(*job.image, points, value); });
}

void WritePicture(StJob& job) {
  std::string const ending = EndingOf(job.given.picture);
  if (job.DrawsPlane()) {
    std::optional<StRange> range;
    if (!job.given.range.empty()) range = ParseRange(job.given.range);
    WriteImage(*job.picture, ResamplePlane(*job.image, job.walk, range));
  } else if (job.given.profile) {
    job.profile.title = job.walk.title;
    job.picture->Write(DrawProfile(job.profile, ending));
  } else {
    job.picture->Write(DrawWalk(job.walk, job.size, ending));
  }
}

void NoteMissing(StJob const& job, StCounts const& counts) {
  if (counts.points + counts.outside == 0) PrintNote("note: the walk has no points");
  if (counts.outside == 0) return;
  auto const all = counts.points + counts.outside;
  PrintNote("note: " + std::to_string(counts.outside) + " of the walk's " + std::to_string(all) +
            (all == 1 ? " point lies" : " points lie") + " outside the image " +
            Quoted(job.given.image) + " and are left out");
}

// Everything that can be refused without the pixels, and then these.
void Prepare(StJob& job) {
  StWalkOptions const& given = job.given;
  CheckTogether(job.kind, given);
  std::optional<ORVA::CSize> size;
  if (!given.size.empty()) size = ParseSize(given.size, 0);
  std::optional<StHeader> header;
  if (!given.image.empty()) {
    header = ReadHeader(given.image);
    size = job.size = header->size;
  }
  job.walk = MakeWalk(job.kind, given, size);
  RefuseOverwritingInputs(given.output, given);
  if (!given.paint.empty()) {
    (void)ParsePaint(given.paint, header->pixel);
    CheckImageOutput(given.output, header->pixel, header->size.Dim());
  }
  OpenPictureOf(job);
  if (!given.output.empty()) job.file.emplace(given.output);
  if (header) job.image.emplace(ReadImage(given.image));
  if (header && job.image->Size() != header->size)
    throw CAppError("cannot read " + Quoted(given.image) + ": it has changed meanwhile");
}

void Run(EnWalk kind, StWalkOptions const& given) {
  StJob job{.kind = kind, .given = given};
  Prepare(job);
  bool const paints = !given.paint.empty();
  // The picture shows an image as it was read.
  if (job.picture && !given.profile) WritePicture(job);
  StCounts const counts = paints ? PaintPoints(job) : WritePoints(job);
  if (job.picture && given.profile) WritePicture(job);
  if (paints) WriteImage(*job.file, *job.image);
  // Everything is made before the first file gets its name.
  if (job.file) job.file->Commit();
  if (job.picture) job.picture->Commit();
  NoteMissing(job, counts);
}

using Options = std::shared_ptr<StWalkOptions>;

void AddCorners(CLI::App& command, Options const& options) {
  command.add_option("CORNER", options->points, "x,y or x,y,z of each corner in turn");
  command.add_option("--corners", options->corners,
                     "CSV file with a corner a line in place of the arguments");
  command.add_flag("--without-border", options->withoutBorder, "leave the digital border out");
}

void AddNeighborhood(CLI::App& command, Options const& options, std::string const& text) {
  command.add_option("--neighborhood,--neighbourhood", options->neighborhood, text);
}
constexpr char c_neighborhoods[] =
    "moves of the digital lines: 4, 6.1, 6.2 or 8 (default) in 2D, 6, 14.1, 14.2 or 26 (default) "
    "in 3D";

void AddBox(CLI::App& command, Options const& options) {
  command.add_option("--low", options->low, "x,y[,z]: the box's first voxel");
  command.add_option("--high", options->high, "x,y[,z]: its last voxel");
}

void AddSize(CLI::App& command, Options const& options) {
  command.add_option("--size", options->size, "nx,ny[,nz]: size of an image, where none is given");
}

void AddMethod(CLI::App& command, Options const& options, std::string const& other,
               std::string const& text) {
  command.add_option("--method", options->method, text)
      ->check(CLI::IsMember(std::vector<std::string>{"exact", other}));
}

void AddLineOptions(CLI::App& command, Options const& options) {
  command.add_option("POINT", options->points, "FROM TO: x,y or x,y,z of the line's ends")
      ->required();
  AddNeighborhood(command, options, c_neighborhoods);
  command.add_option("--ends", options->ends, "both or none of the two end points")
      ->check(CLI::IsMember({"both", "none"}))
      ->capture_default_str();
  command.add_flag("--profile", options->profile,
                   "add the distance along the ideal line; the picture is then a plot of the "
                   "values");
}

void AddOutlineOptions(CLI::App& command, Options const& options) {
  AddCorners(command, options);
  AddNeighborhood(command, options, c_neighborhoods);
}

void AddPolygonOptions(CLI::App& command, Options const& options) {
  AddOutlineOptions(command, options);
  command.add_option("--hole", options->holes, "CSV file with the corners of a hole; repeatable")
      ->expected(1)
      ->allow_extra_args(false)
      ->take_all();
}

void AddVolumeOptions(CLI::App& command, Options const& options) {
  AddCorners(command, options);
  AddNeighborhood(command, options, "moves of the digital lines: 6 or 26 (default)");
  command.add_flag("--edges", options->edges,
                   "the corners are both ends of each edge in turn, not a path along the edges");
}

void AddSliceOptions(CLI::App& command, Options const& options) {
  command.add_option("POINT", options->points, "three points x,y,z of the plane");
  command.add_option("--normal", options->normal,
                     "x,y,z of the plane normal*p = distance, of any length");
  command.add_option("--distance", options->distance, "the other side of that equation");
  AddMethod(command, options, "lattice",
            "exact (default): every voxel once; lattice: two digital lines span the plane");
  AddNeighborhood(command, options, "of the lattice's lines: 6, 14.1, 14.2 or 26 (default)");
  AddSize(command, options);
  command.add_option("--range", options->range, "LO,HI: values that become black and white");
}

void AddWindowOptions(CLI::App& command, Options const& options) {
  AddBox(command, options);
  AddSize(command, options);
}

void AddDeltaOptions(CLI::App& command, Options const& options) {
  command.add_option("DIRECTION", options->direction, "x,y or x,y,z: real numbers, of any length")
      ->required();
  AddMethod(command, options, "plain",
            "exact (default): every voxel once; plain: as the plain delta visitor walks");
  AddSize(command, options);
}

void AddDirectionOptions(CLI::App& command, Options const& options) {
  command.add_option("DIRECTION", options->direction, "x,y or x,y,z: components -1, 0 or 1")
      ->required();
  AddBox(command, options);
  AddSize(command, options);
}

struct StKind {
  EnWalk kind;
  char const *name, *text;
  void (*addOptions)(CLI::App&, Options const&);
  char const* help;
};
constexpr std::array<StKind, 8> c_kinds = {{
    {EnWalk::Line, "line", "A digital line from point to point", AddLineOptions,
     "With --profile the distance is that of the voxel's foot on the ideal line from FROM, in the\n"
     "image's voxel spacing where it has one, else in voxels.\n\n"
     "Examples:\n"
     "  selu walk line 0,0,0 10,4,2 --neighborhood 6 --picture line.png\n"
     "  selu walk line -5,3 60,40 --image brick.png --profile -o profile.csv --picture "
     "profile.png"},
    {EnWalk::Area, "area", "The points of a convex polygon, column by column", AddOutlineOptions,
     "For convex outlines; concave ones and such with vertical edges between their corners lose\n"
     "points, and selu walk polygon serves all. Oblique areas take the neighborhoods 14.1 and "
     "26,\n"
     "areas in a coordinate plane of a volume 6 and 26.\n\n"
     "Example:\n  selu walk area 0,0 10,2 5,9 --without-border"},
    {EnWalk::Polygon, "polygon", "The points of any simple polygon, column by column",
     AddPolygonOptions,
     "The outline may be concave, have holes, and lie in any plane of a volume.\n\n"
     "Examples:\n"
     "  selu walk polygon 0,0 10,0 10,10 --picture triangle.png\n"
     "  selu walk polygon --corners outline.csv --hole hole.csv --image scan.nrrd --paint 255 -o "
     "painted.nrrd"},
    {EnWalk::Volume, "volume", "The points of a convex solid, slice by slice", AddVolumeOptions,
     "The corners are a path along all edges of the solid, which is closed to its first corner; "
     "an\n"
     "edge may be passed more than once. x must be 0 or more. Every slice of constant x is filled\n"
     "within the convex hull of its border points.\n\n"
     "Example:\n  selu walk volume --edges 0,0,0 9,0,0 0,9,0 9,0,0 0,0,9 9,0,0 --picture "
     "pyramid.png"},
    {EnWalk::Slice, "slice", "The voxels of a plane through a volume", AddSliceOptions,
     "The exact walk has one voxel for each column along the axis of the normal's largest "
     "component,\n"
     "in raster order. The lattice strays from oblique planes by up to two voxels, and can repeat "
     "or\n"
     "miss some.\n\n"
     "With --image, --picture writes the resampled plane as a gray PNG: its columns and rows are "
     "the\n"
     "two other axes in their order, places without a voxel of the plane are black. Unsigned 8 "
     "and\n"
     "16-bit values stay as they are; with --range, and for other types, they are mapped to 8 "
     "bits,\n"
     "without --range from the plane's least and greatest value.\n\n"
     "Example:\n  selu walk slice --normal 1,2,2 --distance 300 --image scan.nrrd --picture "
     "plane.png"},
    {EnWalk::Window, "window", "All voxels of a box in raster order", AddWindowOptions,
     "The box is clipped to the image; without --low and --high it is the whole image.\n\n"
     "Example:\n  selu walk window --low 2,2 --high 5,4"},
    {EnWalk::Delta, "delta", "A whole image along parallel digital lines of any direction",
     AddDeltaOptions,
     "A line that leaves the image goes on at the opposite side. The exact walk visits every "
     "voxel\n"
     "once, for every direction. The plain one serves directions whose two smaller components are "
     "not\n"
     "negative, ends early for others, needs a direction of length 1 or more, and has its axes "
     "rotated\n"
     "where z is the main axis.\n\n"
     "Example:\n  selu walk delta 1,0.4 --size 24,16 --picture delta.png"},
    {EnWalk::Direction, "direction", "A box along lines of one of the 26 unit directions",
     AddDirectionOptions,
     "The lines begin on the faces where the direction enters the box. Where the first of these "
     "has "
     "a\n"
     "single voxel and the direction more than one component, the walk ends after that voxel's "
     "line.\n\n"
     "Example:\n  selu walk direction 1,-1 --size 12,8 --picture direction.png"},
}};

constexpr char c_outputHelp[] =
    "The points are printed as x,y[,z], with --image and the value of each. --picture draws the "
    "walk\n"
    "(unless said otherwise below) and, without -o, takes the place of the points: voxels as "
    "squares\n"
    "in the colors of their order, a 3D walk as three projections, and over them the ideal lines "
    "where\n"
    "a square is larger than a pixel. Points outside the image are left out, and a note counts "
    "them.\n"
    "JSON has neither NaN nor infinity: such a value is null there. --paint keeps the pixel type; "
    "voxel\n"
    "spacing and position in space are not carried over.\n\n";

void AddKind(CLI::App& walk, StKind const& kind) {
  auto const options = std::make_shared<StWalkOptions>();
  CLI::App* const command = walk.add_subcommand(kind.name, kind.text);
  kind.addOptions(*command, options);
  command->add_option("--image", options->image,
                      "PNG, TIFF, NRRD, MetaImage, NIfTI or DICOM file: read the values there");
  command->add_option("--paint", options->paint,
                      "write this value to the voxels of the walk, and the image to -o");
  command
      ->add_option("--format", options->format,
                   "csv or json; by default what the output's ending says, else csv")
      ->check(CLI::IsMember({"csv", "json"}));
  command->add_option(
      "-o,--output", options->output,
      "file for the points, standard output without it; with --paint an image ending "
      "in\n.nrrd, .mha, .nii, .nii.gz, .tif or .png");
  command->add_option("--picture", options->picture, "file ending in .png or .svg");
  command->footer(std::string(c_outputHelp) + kind.help);
  command->callback([&kind, options] { Run(kind.kind, *options); });
}

} // namespace

void AddWalkCommand(CLI::App& app) {
  CLI::App* const walk = app.add_subcommand(
      "walk", "The voxels of lines, areas, solids, planes and boxes: print, read, paint, draw");
  walk->require_subcommand(1);
  walk->footer("Examples:\n  selu walk line 0,0,0 10,4,2\n"
               "  selu walk polygon 0,0 10,0 10,10 --picture triangle.png\n\n"
               "Each kind has a help page of its own: selu walk line --help");
  for (auto const& kind : c_kinds) AddKind(*walk, kind);
}

} // namespace selu
