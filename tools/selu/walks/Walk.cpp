#include "walks/Walk.h"

#include "base/Progress.h"

#include <algorithm>
#include <vector>

namespace selu {
namespace {

using ORVA::uint64;

constexpr std::size_t c_block = 1 << 14; // points from one step of the progress bar to the next

using ORVA::StRun;

ORVA::int64& Along(StRun& run) {
  return run.axis == 0 ? run.first.x : run.axis == 1 ? run.first.y : run.first.z;
}

// The part of a run in an image of this size.
StRun Clipped(StRun run, ORVA::CSize const& size) {
  ORVA::int64& begin = Along(run);
  ORVA::int64 const extent = run.axis == 0 ? size.x : run.axis == 1 ? size.y : size.z;
  if (begin < 0) {
    run.length = std::max<ORVA::int64>(run.length - 1 + (begin + 1), 0);
    begin = 0;
  }
  run.length = IsInside(run.first, size) ? std::min(run.length, extent - begin) : 0;
  return run;
}

// Moves points from the run's front to the block, until the one is empty or the other full.
void MovePoints(StRun& run, std::vector<Point>& block) {
  for (; run.length > 0 && block.size() < c_block; --run.length) {
    block.push_back(run.first);
    ++Along(run);
  }
}

// By value: the walk itself stays at its start.
template <class W>
StCounts Go(W walker, std::optional<ORVA::CSize> const& size, CProgressBar* bar,
            std::function<void(std::span<Point const>)> const& visit) {
  StCounts counts;
  uint64 shown = 0;
  std::vector<Point> block;
  block.reserve(c_block);
  StRun run;
  while (run.length > 0 || walker.MorePoints()) {
    if (run.length == 0) {
      StRun const next = walker.NextRun();
      run = size ? Clipped(next, *size) : next;
      counts.outside += static_cast<uint64>(next.length - run.length);
    }
    MovePoints(run, block);
    bool const isLast = run.length == 0 && !walker.MorePoints();
    if (block.size() < c_block && !isLast) continue;
    counts.points += block.size();
    visit(block);
    block.clear();
    for (; bar != nullptr && shown < (counts.points + counts.outside) / c_block; ++shown)
      bar->Advance();
  }
  return counts;
}

// For the progress bar.
template <class W>
ORVA::int64 Blocks(W const& walker) {
  return static_cast<ORVA::int64>(walker.Remaining() / c_block + 1);
}

} // namespace

StCounts ForEachBlock(StWalk const& walk, std::optional<ORVA::CSize> const& size,
                      std::string const& progress,
                      std::function<void(std::span<Point const>)> const& visit) {
  return std::visit(
      [&](auto const& walker) {
        std::optional<CProgressBar> bar;
        if (!progress.empty()) bar.emplace(progress, Blocks(walker));
        return Go(walker, size, bar ? &*bar : nullptr, visit);
      },
      walk.walker);
}

} // namespace selu
