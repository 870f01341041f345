#include "Walks.h"

#include "Watch.h"

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

namespace selu_python {
namespace {

using ORVA::CSize;
using ORVA::CTriple;
using ORVA::int64;
using ORVA::StRun;
using ORVA::uint64;

constexpr char c_module[] = "python/src/Walks";
constexpr uint64 c_block = uint64{1} << 18; // points between two looks at the clock

// As members by number: 0 x, 1 y, 2 z.
constexpr std::array<int64 CTriple<int64>::*, 3> c_axes = {&CTriple<int64>::x, &CTriple<int64>::y,
                                                           &CTriple<int64>::z};

int64 CTriple<int64>::*Axis(StRun const& run) { return c_axes[static_cast<std::size_t>(run.axis)]; }

// Takes the first `n` points off the run.
void Drop(StRun& run, int64 n) {
  run.length -= n;
  run.first.*Axis(run) += n;
}

int64* Write(StRun const& run, int64 n, int dimension, int64* out) {
  CTriple<int64> p = run.first;
  int64 CTriple<int64>::*const axis = Axis(run);
  for (int64 k = 0; k < n; ++k, ++(p.*axis)) {
    if (dimension == 3) *out++ = p.z;
    *out++ = p.y;
    *out++ = p.x;
  }
  return out;
}

} // namespace

class CWalk::CBusy {
public:
  explicit CBusy(CWalk& walk) : m_Walk(walk) {
    if (m_Walk.m_IsBusy.exchange(true))
      ORVA::Impl::Raise(ORVA_LOCATION(c_module, "CWalk"),
                        "the walk is in use by another thread; give each thread its own");
  }
  CBusy(CBusy const&) = delete;
  CBusy& operator=(CBusy const&) = delete;
  ~CBusy() { m_Walk.m_IsBusy = false; }

private:
  CWalk& m_Walk;
};

StRun CWalk::Clipped(StRun run) const noexcept {
  if (!m_Size || run.length == 0) return run;
  CTriple<int64> const extents(m_Size->x, m_Size->y, m_Size->z);
  StRun const none{run.first, run.axis, 0};
  for (auto const axis : c_axes)
    if (axis != Axis(run) && (run.first.*axis < 0 || run.first.*axis >= extents.*axis)) return none;
  auto const axis = Axis(run);
  int64 const before = std::min(run.length, std::max<int64>(0, -(run.first.*axis)));
  Drop(run, before);
  run.length = std::min(run.length, std::max<int64>(0, extents.*axis - run.first.*axis));
  return run;
}

bool CWalk::Refill() {
  while (m_Run.length == 0) {
    StRun const run = m_Runs->NextRun();
    if (run.length == 0) return false;
    m_Run = Clipped(run);
  }
  return true;
}

uint64 CWalk::Count() {
  if (!m_Size) return m_Runs->Remaining() + static_cast<uint64>(m_Run.length);
  auto const rest = m_Runs->Copy();
  auto n = static_cast<uint64>(m_Run.length);
  CWatch watch;
  CUnlocked const unlocked;
  for (StRun run = rest->NextRun(); run.length > 0; run = rest->NextRun()) {
    n += static_cast<uint64>(Clipped(run).length);
    watch.Advance();
  }
  return n;
}

uint64 CWalk::Remaining() {
  CBusy const busy(*this);
  return Count();
}

void CWalk::Rewind() {
  CBusy const busy(*this);
  m_Runs->Rewind();
  m_Run = {};
}

py::tuple CWalk::Next() {
  CBusy const busy(*this);
  if (!Refill()) throw py::stop_iteration();
  CTriple<int64> const p = m_Run.first;
  Drop(m_Run, 1);
  return m_Dimension == 3 ? py::make_tuple(p.z, p.y, p.x) : py::make_tuple(p.y, p.x);
}

py::array CWalk::Take(int64 most) {
  if (most < 0)
    ORVA::Impl::RaiseBadParam(ORVA_LOCATION(c_module, "CWalk::Take"),
                              ORVA::CString("n must not be negative, as %1 is").Arg(most));
  CBusy const busy(*this);
  return Fill(std::min(Count(), static_cast<uint64>(most)));
}

py::array CWalk::All() {
  CBusy const busy(*this);
  return Fill(Count());
}

py::array CWalk::Fill(uint64 n) {
  if (n > uint64{1} << 44) {
    PyErr_SetString(
        PyExc_MemoryError,
        (std::to_string(n) + " points do not fit into memory; take them in parts").c_str());
    throw py::error_already_set();
  }
  auto points = NewArray<int64>({static_cast<py::ssize_t>(n), m_Dimension});
  int64* out = points.mutable_data();
  CWatch watch;
  CUnlocked const unlocked;
  for (uint64 left = n, seen = 0; left > 0 && Refill();) {
    int64 const taken = std::min(m_Run.length, static_cast<int64>(std::min(left, c_block)));
    out = Write(m_Run, taken, m_Dimension, out);
    Drop(m_Run, taken);
    left -= static_cast<uint64>(taken);
    seen += static_cast<uint64>(taken);
    if (seen < c_block) continue;
    seen = 0;
    watch.Advance();
  }
  return points;
}

} // namespace selu_python
