// Range-for over a walker: its own begin and end, found without naming them.
//
//   #include <SeluUtils/WindowVisitor.h>
//   CWindowVisitor window({2, 3, 0}, {5, 9, 4});
//   int64 sum = 0;
//   for (CTriple<int64> const& p : window) sum += p.x;
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA {

namespace Impl {

/// The end of every walk.
struct StWalkEnd {};

/// Takes points from a walker: the first of them at once, each ++ the next. Without a walker it is
/// at the end.
template <class W>
class CPointIterator {
public:
  using value_type = CTriple<int64>;
  using difference_type = int64;

  CPointIterator() = default;
  [[gnu::always_inline]] explicit CPointIterator(W& walker) : m_Walker(&walker) { ++*this; }

  [[nodiscard]] CTriple<int64> const& operator*() const noexcept { return m_Point; }
  [[nodiscard]] CTriple<int64> const* operator->() const noexcept { return &m_Point; }
  [[gnu::always_inline]] CPointIterator& operator++() { // else the walker is left in memory
    if (m_Walker->MorePoints()) {
      m_Point = m_Walker->NextPoint();
    } else {
      m_Walker = nullptr;
    }
    return *this;
  }
  void operator++(int) { ++*this; }
  friend bool operator==(CPointIterator const& a, StWalkEnd) noexcept {
    return a.m_Walker == nullptr;
  }

private:
  W* m_Walker = nullptr;
  CTriple<int64> m_Point;
};

} // namespace Impl

/// The points that a walker has still to hand out, for range-for; a loop that is left early leaves
/// it behind the point last seen. Points (SeluUtils/Walker.h) makes a view of them.
template <class W>
requires requires(W& walker, CTriple<int64>& point) {
  walker.MorePoints();
  point = walker.NextPoint();
  walker.NextRun();
}
[[nodiscard]] Impl::CPointIterator<W> begin(W& walker) { return Impl::CPointIterator<W>(walker); }
template <class W>
requires requires(W& walker, CTriple<int64>& point) {
  walker.MorePoints();
  point = walker.NextPoint();
  walker.NextRun();
}
[[nodiscard]] Impl::StWalkEnd end(W&) noexcept { return {}; }

} // namespace ORVA
