#include "walks/WalkRun.h"

#include "base/Arguments.h"
#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Output.h"
#include "base/Texts.h"
#include "drawing/Picture.h"
#include "images/ImageFile.h"
#include "walks/WalkImage.h"
#include "walks/WalkPicture.h"
#include "walks/WalkPoints.h"
#include "walks/WalkWriter.h"

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
  std::optional<COpenImage> opened = {};
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
  if (!given.output.empty() && !given.picture.empty() && IsSameFile(given.output, given.picture))
    throw CUsageError("--output and --picture name the same file, " + Quoted(given.output));
  if (given.paint.empty() && IsImageEnding(EndingOf(given.output)))
    throw CUsageError("the points of a walk are CSV or JSON, and " + Quoted(given.output) +
                      " is an image: give --paint to write one, or --picture to draw the walk");
}

// Refuses an output that is one of the files that are read.
void RefuseOverwritingInputs(std::string const& output, StJob const& job) {
  if (output.empty()) return;
  if (job.opened) RefuseOverwriting(output, *job.opened);
  if (!job.given.corners.empty()) RefuseSameFile(output, job.given.corners);
  for (auto const& hole : job.given.holes) RefuseSameFile(output, hole);
  for (auto const& input : {job.given.facesFile, job.given.mesh})
    if (!input.empty()) RefuseSameFile(output, input);
}

void OpenPictureOf(StJob& job) {
  std::string const& path = job.given.picture;
  if (path.empty()) return;
  bool const isPlane = job.kind == EnWalk::Slice && !job.given.image.empty();
  if (isPlane && EndingOf(path) != ".png")
    throw CAppError("cannot write " + Quoted(path) + ": the picture of a plane ends in .png");
  RefuseOverwritingInputs(path, job);
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
  auto const& spacing = job.image->Grid().spacing;
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
  PixelValue const value = ParsePixelValue(job.given.paint, job.image->Pixel(), "--paint");
  return ForEachBlock(job.walk, job.size, "painting",
                      [&](auto points) { Paint(*job.image, points, value); });
}

void WritePicture(StJob& job) {
  std::string const ending = EndingOf(job.given.picture);
  if (job.DrawsPlane()) {
    std::optional<StRange> range;
    if (!job.given.range.empty()) range = ParseRange(job.given.range);
    WriteImage(*job.picture, ResamplePlane(*job.image, job.walk, range),
               PlaneGrid(job.walk, job.image->Grid()));
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
  if (!given.size.empty()) size = ParseSize(given.size);
  if (!given.image.empty()) {
    job.opened.emplace(OpenImage(given.image, given.series));
    size = job.size = job.opened->Header().size;
  }
  job.walk = MakeWalk(job.kind, given, size);
  RefuseOverwritingInputs(given.output, job);
  if (!given.paint.empty()) {
    auto const& header = job.opened->Header();
    (void)ParsePixelValue(given.paint, header.pixel, "--paint");
    CheckImageOutput(given.output, header.pixel, header.size.Dim());
  }
  OpenPictureOf(job);
  if (!given.output.empty()) job.file.emplace(given.output);
  if (job.opened) job.image.emplace(job.opened->Read());
}

} // namespace

void RunWalk(EnWalk kind, StWalkOptions const& given) {
  StJob job{.kind = kind, .given = given};
  Prepare(job);
  bool const paints = !given.paint.empty();
  // The picture shows an image as it was read.
  if (job.picture && !given.profile) WritePicture(job);
  StCounts const counts = paints ? PaintPoints(job) : WritePoints(job);
  if (job.picture && given.profile) WritePicture(job);
  if (paints) WriteImage(*job.file, *job.image);
  CommitAll({job.file ? &*job.file : nullptr, job.picture ? &*job.picture : nullptr});
  NoteMissing(job, counts);
}

} // namespace selu
