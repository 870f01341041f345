// What all walkers share, and range-for over any of them.
//
//   #include <SeluUtils/WindowVisitor.h>
//   #include <algorithm>
//   CWindowVisitor window({2, 3, 0}, {5, 9, 4});
//   int64 sum = 0;
//   for (CTriple<int64> const& p : Points(window)) sum += p.x;
//   auto const largest = std::ranges::max(Points(CWindowVisitor({0, 0, 0}, {4, 2, 1})), {},
//                                         &CTriple<int64>::x);
#pragma once

#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <concepts>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <type_traits>
#include <utility>

namespace ORVA {

class CDirectionalVisitor;

/// Hands out grid points one at a time for as long as MorePoints is true. A copy walks on
/// independently. Where memory runs out in an assignment the walker stays as it was. Some
/// walkers' Steps counts the moves, which are one fewer than the points, and goes below zero where
/// there is none; what it counts stands with each.
template <class T>
concept Walker = std::copyable<T> && requires(T walker, T const& fixed) {
  { fixed.MorePoints() } -> std::same_as<bool>;
  { walker.NextPoint() } -> std::same_as<CTriple<int64>>;
  { fixed.Steps() } -> std::integral;
  { fixed.empty() } -> std::same_as<bool>;
  walker.SetImageSize(CSize());
  walker.SetImageSize(CTriple<int64>());
};

/// A walker whose points can also be taken by runs, rows along an axis. Points and runs can be
/// taken in turns: a run begins at the next point. A point without a row is a run of its own, whose
/// axis says nothing.
template <class T>
concept RunWalker = Walker<T> && requires(T walker) {
  { walker.NextRun() } -> std::same_as<StRun>;
};

/// A walker that knows at once how many points are still to come.
template <class T>
concept SizedWalker = Walker<T> && requires(T const& fixed) {
  { fixed.Remaining() } -> std::same_as<uint64>;
} && !std::same_as<T, CDirectionalVisitor>; // counts its lines

/// A walker that can go back to its start.
template <class T>
concept RewindableWalker = Walker<T> && requires(T walker) {
  walker.Reset();
};

namespace Impl {

/// Takes values from a walker for a range: the first of them at once, each ++ the next. `take`
/// gives the next value; it is called while the walker has more points.
template <class W, class Value, auto take>
class CWalkIterator {
public:
  using iterator_concept = std::input_iterator_tag;
  using value_type = Value;
  using difference_type = std::ptrdiff_t;

  CWalkIterator() = default;
  [[gnu::always_inline]] explicit CWalkIterator(W& walker) : m_Walker(&walker) { ++*this; }

  [[nodiscard]] Value const& operator*() const noexcept { return m_Value; }
  [[nodiscard]] Value const* operator->() const noexcept { return &m_Value; }
  [[gnu::always_inline]] CWalkIterator& operator++() { // else the walker is left in memory
    if (m_Walker->MorePoints()) {
      m_Value = take(*m_Walker);
    } else {
      m_Walker = nullptr;
    }
    return *this;
  }
  void operator++(int) { ++*this; }
  friend bool operator==(CWalkIterator const& a, std::default_sentinel_t) noexcept {
    return a.m_Walker == nullptr;
  }

private:
  W* m_Walker = nullptr;
  Value m_Value;
};

} // namespace Impl

/// The points that a walker has still to hand out, as a single-pass input range: begin takes the
/// first of them, each ++ the next. A loop that is left early leaves the walker behind the point
/// last seen, and it can be walked on from there. Takes no memory.
template <Walker W>
class CPointRange : public std::ranges::view_base {
public:
  /// An input iterator of the range.
  using CIterator =
      Impl::CWalkIterator<W, CTriple<int64>, [](W& walker) { return walker.NextPoint(); }>;

  explicit CPointRange(W& walker) noexcept : m_Walker(&walker) {}

  [[nodiscard]] CIterator begin() const { return CIterator(*m_Walker); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
  /// Number of points, modulo 2^64.
  [[nodiscard]] uint64 size() const requires SizedWalker<W> { return m_Walker->Remaining(); }

private:
  W* m_Walker;
};

/// The same for a walker that the range keeps.
template <Walker W>
class COwningPointRange : public std::ranges::view_base {
public:
  explicit COwningPointRange(W&& walker) : m_Walker(std::move(walker)) {}

  [[nodiscard]] auto begin() { return CPointRange<W>(m_Walker).begin(); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }
  /// The number of points that are left.
  [[nodiscard]] uint64 size() const requires SizedWalker<W> { return m_Walker.Remaining(); }

private:
  W m_Walker;
};

/// The remaining points of a walker, for range-for and <ranges>. A walker given by name is walked
/// itself and must outlive the range; a temporary moves into the range.
template <class W>
requires Walker<std::remove_cvref_t<W>>
[[nodiscard]] auto Points(W&& walker) {
  static_assert(!std::is_const_v<std::remove_reference_t<W>>, "walking changes the walker");
  if constexpr (std::is_lvalue_reference_v<W>) {
    return CPointRange<std::remove_reference_t<W>>(walker);
  } else {
    return COwningPointRange<W>(std::forward<W>(walker));
  }
}

/// The points that a walker has still to hand out, as runs, in a single-pass input range as above.
/// A loop that is left early leaves the walker behind the run last seen.
template <RunWalker W>
class CRunRange : public std::ranges::view_base {
public:
  /// An input iterator of the range.
  using CIterator = Impl::CWalkIterator<W, StRun, [](W& walker) { return walker.NextRun(); }>;

  explicit CRunRange(W& walker) noexcept : m_Walker(&walker) {}

  [[nodiscard]] CIterator begin() const { return CIterator(*m_Walker); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

private:
  W* m_Walker;
};

/// The same for a walker that the range keeps.
template <RunWalker W>
class COwningRunRange : public std::ranges::view_base {
public:
  explicit COwningRunRange(W&& walker) : m_Walker(std::move(walker)) {}

  [[nodiscard]] auto begin() { return CRunRange<W>(m_Walker).begin(); }
  [[nodiscard]] std::default_sentinel_t end() const noexcept { return {}; }

private:
  W m_Walker;
};

/// The remaining runs of a walker, for range-for and <ranges>:
/// `for (auto const& [first, axis, length] : Runs(walker))`. Walkers by name and temporaries as for
/// Points. Takes no memory.
template <class W>
requires RunWalker<std::remove_cvref_t<W>>
[[nodiscard]] auto Runs(W&& walker) {
  static_assert(!std::is_const_v<std::remove_reference_t<W>>, "walking changes the walker");
  if constexpr (std::is_lvalue_reference_v<W>) {
    return CRunRange<std::remove_reference_t<W>>(walker);
  } else {
    return COwningRunRange<W>(std::forward<W>(walker));
  }
}

} // namespace ORVA

/// Iterators of these ranges hold the walker and may outlive the range.
template <class W>
inline constexpr bool std::ranges::enable_borrowed_range<ORVA::CPointRange<W>> = true;
template <class W>
inline constexpr bool std::ranges::enable_borrowed_range<ORVA::CRunRange<W>> = true;
