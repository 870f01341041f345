#include "Utils/Texture/Binning.h"

#include "Utils/Texture/ExactSum.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace ORVA::Impl {

// Each of the three operations of the quotient is off by at most 2^-53 of its result, so the
// quotient by less than 2^-51 of its size; the rounded start adds 2^-53 of the multiple. 2^-50 is
// twice that.
CBinning CBinning::OfWidth(double start, double multiple, double width, int bins) noexcept {
  CBinning binning;
  binning.m_Kind = EnKind::Width;
  binning.m_Bins = bins;
  binning.m_Low = start + multiple * width;
  binning.m_PerBin = 1 / width;
  binning.m_Margin = (std::abs(multiple) + 65536) * 0x1p-50;
  binning.m_MostSure = bins - binning.m_Margin;
  binning.m_Start = start;
  binning.m_Multiple = multiple;
  binning.m_Width = width;
  return binning;
}

CBinning CBinning::OfCount(double low, double high, int bins) noexcept {
  CBinning binning;
  binning.m_Kind = EnKind::Count;
  binning.m_Bins = bins;
  binning.m_Low = low;
  binning.m_High = high;
  binning.m_PerBin = bins / (high - low);
  binning.m_Margin = 65536 * 0x1p-50;
  binning.m_MostSure = bins - binning.m_Margin;
  return binning;
}

CBinning CBinning::OfEdges(std::vector<double> const& edges) noexcept {
  CBinning binning;
  binning.m_Bins = static_cast<int>(edges.size()) - 1;
  binning.m_Edges = &edges;
  return binning;
}

double CBinning::Edge(int k) const noexcept {
  if (m_Kind == EnKind::Edges) return (*m_Edges)[static_cast<std::size_t>(k)];
  if (m_Kind == EnKind::Width) return m_Start + (m_Multiple + k) * m_Width;
  if (k == m_Bins) return m_High;
  return m_Low + (m_High - m_Low) * (static_cast<double>(k) / m_Bins);
}

// From the left: (value - start) - multiple * width.
int CBinning::CompareWidth(double value, double multiple) const noexcept {
  StTwoSum const distance(value, -m_Start);
  StHalves const m(multiple), w(m_Width);
  if (distance.error == 0 && m.low == 0 && w.low == 0) { // both exact: as with integers
    double const edge = m.high * w.high;
    return distance.sum < edge ? -1 : distance.sum > edge ? 1 : 0;
  }
  return SignOfSum(std::array{-m.high * w.high, -m.high * w.low, -m.low * w.high, -m.low * w.low,
                              distance.error, distance.sum});
}

// bins * (value - low) - k * (high - low). Factors have 17 bits at most, and halves 27.
int CBinning::CompareCount(double value, double k) const noexcept {
  StTwoSum const distance(value, -m_Low), range(m_High, -m_Low);
  double const n = m_Bins;
  StHalves const s(distance.sum), e(distance.error), r(range.sum), f(range.error);
  return SignOfSum(std::array{n * e.low, -k * f.low, n * e.high, -k * f.high, n * s.low, -k * r.low,
                              n * s.high, -k * r.high});
}

int CBinning::Compare(double value, int k) const noexcept {
  return m_Kind == EnKind::Width ? CompareWidth(value, m_Multiple + k) : CompareCount(value, k);
}

int CBinning::FindEdge(double value) const noexcept {
  auto const& edges = *m_Edges;
  if (value < edges.front()) return c_below;
  if (value > edges.back()) return c_above;
  auto const above = std::ranges::upper_bound(edges, value);
  return std::min(static_cast<int>(above - edges.begin()), m_Bins);
}

// The value is within a margin of an edge, or beyond the bins. `q` is off by less than 1 / 2.
int CBinning::FindCarefully(double value, double q) const noexcept {
  if (std::isnan(value)) return c_none;
  if (m_Kind == EnKind::Edges) return FindEdge(value);
  if (q < -0.5) return c_below;
  if (q >= m_Bins + 0.5) return c_above;
  auto const nearest = static_cast<int>(std::floor(q + 0.5)); // of edges 0 .. n
  int const side = Compare(value, nearest);
  if (nearest == m_Bins && side >= 0) return side == 0 ? m_Bins : c_above;
  if (side >= 0) return nearest + 1;
  return nearest == 0 ? c_below : nearest;
}

} // namespace ORVA::Impl
