#include "Watch.h"

#include <utility>

namespace selu_python {
namespace {

constexpr std::chrono::milliseconds c_interval(50);

}

CWatch::CWatch(py::object progress)
    : m_Progress(std::move(progress)), m_Next(std::chrono::steady_clock::now() + c_interval) {}

void CWatch::Start(ORVA::int64 steps, char const* /*text*/) {
  m_Steps = steps;
  m_Done = 0;
}

void CWatch::Advance(ORVA::int64 steps) {
  m_Done += steps;
  if (std::chrono::steady_clock::now() < m_Next) return;
  Tell();
  m_Next = std::chrono::steady_clock::now() + c_interval;
}

void CWatch::Complete() {
  m_Done = m_Steps;
  if (!m_Progress.is_none()) Tell();
}

void CWatch::Tell() {
  py::gil_scoped_acquire const locked;
  if (PyErr_CheckSignals() != 0) throw py::error_already_set();
  if (!m_Progress.is_none()) m_Progress(m_Done, m_Steps);
}

} // namespace selu_python
