#include <SeluUtils/Impl/RowsOfColumns.h>

#include <algorithm>

namespace ORVA::Impl {

CRowsOfColumns::CRowsOfColumns(CTriple<int64> const& extents) {
  m_RowStarts.resize(static_cast<std::size_t>(std::max({extents.x, extents.y, extents.z})));
}

void CRowsOfColumns::Add(StRun const& run) {
  if (!Follows(run)) {
    Flush();
    m_Across = run.axis == 0 ? 1 : 0;
  }
  int64 const column = At(run.first, m_Across);
  if (!m_Current.empty() && column != m_Column) CloseColumn();
  if (m_Current.empty()) {
    m_First = run;
    m_Column = column;
  }
  int64 const low = At(run.first, run.axis);
  m_Current.push_back({low, low + run.length - 1});
}

void CRowsOfColumns::Flush() {
  if (!m_Current.empty()) CloseColumn();
  if (!m_Previous.empty()) CloseRows(m_Column + 1);
  m_Previous.clear();
}

// Whether the run lies in the current column behind its other runs, or in the one after it; else
// the rows end here.
bool CRowsOfColumns::Follows(StRun const& run) {
  if (m_Current.empty() || run.axis != m_First.axis) return false;
  CTriple<int64> const from = m_First.first, to = run.first;
  int64 const axis = run.axis, low = At(to, axis);
  int64 const a = axis == 0 ? 1 : 0, b = axis == 2 ? 1 : 2;
  bool const isSameA = At(from, a) == At(to, a), isSameB = At(from, b) == At(to, b);
  if (isSameA && isSameB) return low > m_Current.back().high;
  if (m_Previous.empty() && isSameA != isSameB) {
    m_Across = isSameA ? b : a;
    m_Column = At(from, m_Across);
  }
  return At(to, m_Across) == m_Column + 1 && (m_Across == a ? isSameB : isSameA);
}

// Calls visit(low, high) for the parts of a outside of b.
template <class VisitPart>
void CRowsOfColumns::ForEachOutside(Parts const& a, Parts const& b, VisitPart visit) {
  auto taken = b.begin();
  for (StPart part : a) {
    while (taken != b.end() && taken->high < part.low) ++taken;
    for (auto cut = taken; cut != b.end() && cut->low <= part.high; ++cut) {
      if (cut->low > part.low) visit(part.low, cut->low - 1);
      part.low = cut->high + 1;
    }
    if (part.low <= part.high) visit(part.low, part.high);
  }
}

void CRowsOfColumns::CloseColumn() {
  if (!m_Previous.empty()) CloseRows(m_Column);
  // No place of a row that has just ended: that one is still to be asked for.
  ForEachOutside(m_Current, m_Previous, [&](int64 low, int64 high) {
    std::fill(m_RowStarts.begin() + low, m_RowStarts.begin() + high + 1, m_Column);
  });
  m_Previous.swap(m_Current);
  m_Current.clear();
}

// The rows of the column before `end` that the current column has not.
void CRowsOfColumns::CloseRows(int64 end) {
  ForEachOutside(m_Previous, m_Current, [&](int64 low, int64 high) {
    m_Ended.push_back({m_First.first, m_First.axis, m_Across, low, high, end});
  });
}

} // namespace ORVA::Impl
