// A long computation watched: Ctrl-C ends it, and the caller's `progress` hears of it.
//
//   CWatch watch(progress);                  // None, or a callable(done, total)
//   CUnlocked const unlocked;                // other Python threads run meanwhile
//   watch.Start(steps, "counting");
//   for (...) watch.Advance();               // throws what Ctrl-C or the callable raised
#pragma once

#include <SeluBase/Algorithm.h>
#include <pxlib2core/Types.h>
#include <pybind11/pybind11.h>

#include <chrono>

namespace selu_python {

namespace py = pybind11;

/// The interpreter's lock let go of for the life of the object.
using CUnlocked = py::gil_scoped_release;

/// What f returns, computed without the lock.
template <class Function>
auto Unlocked(Function const& f) {
  CUnlocked const unlocked;
  return f();
}

/// Looks for signals, and calls `progress`, at most 20 times per second, from the thread that
/// computes. What is raised there leaves Advance() as an exception and so ends the computation.
class CWatch final : public ORVA::IProgressObserver {
public:
  explicit CWatch(py::object progress = py::none());

  void Start(ORVA::int64 steps, char const* text) override;
  void Advance() override { Advance(1); }
  /// So many steps done. Costs a look at the clock.
  void Advance(ORVA::int64 steps);
  /// Tells the callable that all is done. An interrupted computation tells nothing more.
  void Complete();

private:
  void Tell();

  py::object m_Progress;
  ORVA::int64 m_Steps = 0, m_Done = 0;
  std::chrono::steady_clock::time_point m_Next;
};

} // namespace selu_python
