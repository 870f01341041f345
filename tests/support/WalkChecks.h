// What every walk that can be rewound must hold, wherever it is left.
#pragma once

#include "Printers.h"
#include "Walks.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace test {

/// An area, and the points of its walk in their order.
struct StAreaCase {
  char const* name;
  PointList corners;
  ORVA::int64 dimension, neighborhood;
  bool border;
  PointList expected;
};

/// The points of a walk from number `first` on.
inline PointList From(PointList const& all, std::size_t first) {
  return {all.begin() + static_cast<std::ptrdiff_t>(first), all.end()};
}

/// Leaves the walk at every step: copies walk the rest on their own, Reset goes back to the start.
template <class Walker>
void ExpectRewindsAndCopiesAnywhere(Walker walker) {
  walker.Reset();
  PointList const all = Walk(Walker(walker));
  ASSERT_EQ(all.size(), walker.Steps());
  Walker assigned = walker;
  for (std::size_t taken = 0; taken <= all.size(); ++taken) {
    walker.Reset();
    for (std::size_t i = 0; i < taken; ++i) ASSERT_EQ(walker.NextPoint(), all[i]);
    Walker copy = walker;
    assigned = walker;
    ASSERT_EQ(Walk(copy), From(all, taken));
    ASSERT_EQ(walker.MorePoints(), taken < all.size());
    copy.Reset();
    ASSERT_EQ(Walk(copy), all);
    ASSERT_EQ(Walk(assigned), From(all, taken));
  }
}

} // namespace test
