// Any walker behind one face: runs, clipped to an image, in bulk or point by point.
//
//   CWalk walk(CPolygonVisitor(outline, 2, NEIGHBORHOOD_8, true), 2);
//   py::array const points = walk.Take(1000);   // (n, 2) int64, n at most 1000
#pragma once

#include "Arrays.h"

#include <SeluUtils/Run.h>
#include <SeluUtils/Walker.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

namespace selu_python {

/// What CWalk needs of a walker.
class IRuns {
public:
  IRuns() = default;
  IRuns(IRuns const&) = delete;
  IRuns& operator=(IRuns const&) = delete;
  virtual ~IRuns() = default;
  [[nodiscard]] virtual std::unique_ptr<IRuns> Copy() const = 0;
  virtual ORVA::StRun NextRun() = 0; ///< of length 0 after the last point
  [[nodiscard]] virtual ORVA::uint64 Remaining() const = 0;
  virtual void Rewind() = 0;
};

template <ORVA::RunWalker W>
class CRunsOf final : public IRuns {
public:
  explicit CRunsOf(W walker) : m_Walker(std::move(walker)) {}
  [[nodiscard]] std::unique_ptr<IRuns> Copy() const override {
    return std::make_unique<CRunsOf>(m_Walker);
  }
  ORVA::StRun NextRun() override { return m_Walker.NextRun(); }
  [[nodiscard]] ORVA::uint64 Remaining() const override { return m_Walker.Remaining(); }
  void Rewind() override { m_Walker.Rewind(); }

private:
  W m_Walker;
};

/// A walk as Python sees it. Calls from several threads at a time are refused with a SeluError.
class CWalk {
public:
  template <ORVA::RunWalker W>
  CWalk(W walker, int dimension)
      : m_Runs(std::make_unique<CRunsOf<W>>(std::move(walker))), m_Dimension(dimension) {}
  CWalk(CWalk&& other) noexcept
      : m_Runs(std::move(other.m_Runs)), m_Dimension(other.m_Dimension), m_Size(other.m_Size),
        m_Run(other.m_Run) {}
  CWalk(CWalk const&) = delete;
  CWalk& operator=(CWalk const&) = delete;
  ~CWalk() = default;

  /// Leaves out what lies outside an image of this size; for walkers that do not do so themselves.
  void Clip(ORVA::CSize const& size) { m_Size = size; }

  [[nodiscard]] int Dimension() const noexcept { return m_Dimension; }
  /// Up to so many of the next points, (n, d) in the order of the array's axes.
  [[nodiscard]] py::array Take(ORVA::int64 most);
  /// All that are left.
  [[nodiscard]] py::array All();
  /// The next point as a tuple; StopIteration after the last one.
  [[nodiscard]] py::tuple Next();
  /// How many points are left; O(runs) where they are clipped.
  [[nodiscard]] ORVA::uint64 Remaining();
  void Rewind();

private:
  class CBusy;
  [[nodiscard]] ORVA::uint64 Count();
  bool Refill();
  ORVA::StRun Clipped(ORVA::StRun run) const noexcept;
  py::array Fill(ORVA::uint64 n);

  std::unique_ptr<IRuns> m_Runs;
  int m_Dimension;
  std::optional<ORVA::CSize> m_Size;
  ORVA::StRun m_Run; // what is left of the run at work
  std::atomic<bool> m_IsBusy = false;
};

} // namespace selu_python
