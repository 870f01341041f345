// Checks that a walker's runs are its points, wherever the two are mixed.
#pragma once

#include "Printers.h"
#include "Walks.h"

#include <SeluUtils/Run.h>
#include <SeluUtils/Walker.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <random>

namespace test {

inline void Append(PointList& points, ORVA::StRun const& run) {
  Point const step(run.axis == 0, run.axis == 1, run.axis == 2);
  for (ORVA::int64 k = 0; k < run.length; ++k) points.push_back(run.first + step * k);
}

/// The remaining points of the walker by runs; at most `limit`.
template <class Walker>
PointList WalkByRuns(Walker&& walker, std::size_t limit = 10'000'000) {
  PointList points;
  while (walker.MorePoints() && points.size() < limit) {
    ORVA::StRun const run = walker.NextRun();
    EXPECT_GT(run.length, 0);
    EXPECT_TRUE(run.axis >= 0 && run.axis <= 2) << run.axis;
    if (run.length <= 0) break;
    Append(points, run);
  }
  return points;
}

/// Takes points and runs in turns as chance has it, looks at Remaining at every turn, and goes on
/// with copies, assignments and after a rewind.
template <class Walker>
void ExpectRunsArePoints(Walker const& fresh, std::mt19937_64& random) {
  PointList const all = Walk(Walker(fresh));
  ASSERT_EQ(WalkByRuns(Walker(fresh)), all);
  Walker walker = fresh, other = fresh;
  PointList points;
  while (walker.MorePoints() && points.size() <= all.size()) {
    ASSERT_EQ(walker.Remaining(), all.size() - points.size());
    if (random() % 8 == 0) {
      Walker copy = walker;
      other = copy;
      ASSERT_EQ(WalkByRuns(copy),
                PointList(all.begin() + static_cast<std::ptrdiff_t>(points.size()), all.end()));
      walker = other;
    }
    if (random() % 2 == 0) {
      points.push_back(walker.NextPoint());
    } else {
      Append(points, walker.NextRun());
    }
  }
  ASSERT_EQ(points, all);
  ASSERT_EQ(walker.Remaining(), 0U);
  ASSERT_EQ(walker.NextRun().length, 0);
  ASSERT_FALSE(walker.MorePoints());
  for (int again = 0; again < 3; ++again) {
    walker.Rewind();
    ASSERT_EQ(walker.Remaining(), all.size());
    if (walker.MorePoints()) (void)walker.NextRun();
  }
  walker.Rewind();
  ASSERT_EQ(Walk(walker), all);
}

} // namespace test
