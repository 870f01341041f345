// The bin of a value, exactly: which of n bins, of one width or between given edges, holds it.
//
//   auto const bins = Impl::CBinning::OfWidth(0, 0, 25.0, 40); // [0, 25), [25, 50), ...
//   int const bin = bins.Find(30);                    // 2; Impl::CBinning::c_below, c_above,
//   c_none
#pragma once

#include <cstdint>
#include <vector>

namespace ORVA::Impl {

/// Bins 1 .. n. A bin holds its lower edge, the last one its upper edge, too.
class CBinning {
public:
  /// What Find() says of a value that is in no bin.
  static constexpr int c_below = -1; ///< below the lowest edge
  static constexpr int c_above = -2; ///< above the highest edge
  static constexpr int c_none = -3;  ///< not a number

  /// Edges (multiple + k) width + start: of start and multiple one is 0. The width is from 2^-1000
  /// to 2^1000, |multiple| at most 2^46, an integer.
  [[nodiscard]] static CBinning OfWidth(double start, double multiple, double width,
                                        int bins) noexcept;
  /// Edges low + k (high - low) / bins; high - low is from 2^-1000 to 2^1000.
  [[nodiscard]] static CBinning OfCount(double low, double high, int bins) noexcept;
  /// n + 1 ascending edges, which must outlive the object.
  [[nodiscard]] static CBinning OfEdges(std::vector<double> const& edges) noexcept;

  /// The bin of a value. The usual value costs a multiplication; one close to an edge is compared
  /// with it exactly.
  [[nodiscard]] int Find(double value) const noexcept {
    double const q = (value - m_Low) * m_PerBin;
    if (q > m_Margin && q < m_MostSure) { // not for NaN
      auto const bin = static_cast<int>(q);
      double const part = q - bin;
      if (part > m_Margin && part < 1 - m_Margin) return bin + 1;
    }
    return FindCarefully(value, q);
  }
  /// The edge k = 0 .. n, rounded to the nearest double (for bins of one width nearly so).
  [[nodiscard]] double Edge(int k) const noexcept;
  [[nodiscard]] int Bins() const noexcept { return m_Bins; }

private:
  enum class EnKind { Width, Count, Edges };
  CBinning() = default;

  [[nodiscard]] int FindCarefully(double value, double q) const noexcept;
  [[nodiscard]] int FindEdge(double value) const noexcept;
  /// Whether a value is below (-1), on (0) or above (1) edge k.
  [[nodiscard]] int Compare(double value, int k) const noexcept;
  [[nodiscard]] int CompareWidth(double value, double multiple) const noexcept;
  [[nodiscard]] int CompareCount(double value, double k) const noexcept;

  EnKind m_Kind = EnKind::Edges;
  int m_Bins = 0;
  double m_Low = 0, m_PerBin = 0; // (value - m_Low) * m_PerBin is k at edge k, nearly
  double m_Margin = 1;            // how far that may be off; at most 0.1 unless never used
  double m_MostSure = 0;          // the greatest such quotient that needs no care
  double m_Start = 0, m_Multiple = 0, m_Width = 0;
  double m_High = 0;
  std::vector<double> const* m_Edges = nullptr;
};

} // namespace ORVA::Impl
