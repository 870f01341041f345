#include "walks/Walk.h"

#include "base/Progress.h"

#include <utility>

namespace selu {
namespace {

using ORVA::uint64;

constexpr std::size_t c_block = 1 << 14; // points from one step of the progress bar to the next

// By value: the walk itself stays at its start.
template <class W>
StCounts Go(W walker, std::optional<ORVA::CSize> const& size, CProgressBar* bar,
            std::function<void(std::span<Point const>)> const& visit) {
  StCounts counts;
  std::vector<Point> block;
  block.reserve(c_block);
  while (walker.MorePoints()) {
    block.clear();
    uint64 outside = 0;
    for (std::size_t i = 0; i < c_block && walker.MorePoints(); ++i) {
      Point const point = walker.NextPoint();
      if (size && !IsInside(point, *size))
        ++outside;
      else
        block.push_back(point);
    }
    counts.points += block.size();
    counts.outside += outside;
    visit(block);
    if (bar != nullptr) bar->Advance();
  }
  return counts;
}

// Some walkers count moves, others points; for a progress bar that is the same.
template <class W>
ORVA::int64 Blocks(W const& walker) {
  auto const steps = walker.Steps();
  auto const count = std::cmp_less(steps, 0) ? uint64{0} : static_cast<uint64>(steps);
  return static_cast<ORVA::int64>(count / c_block + 1);
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
