// Draws one of a few values of any kind, each with its own weight.
//
//   #include <string>
//   CExactDiscrete<int> const die({{1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {6, 1}});
//   CExactDiscrete<std::string> const phase({{"pore", 0.2}, {"fiber", 5}});   // value, weight
//   CRandomSource source(42);
//   std::string const& drawn = phase(source);
#pragma once

#include <SeluUtils/Random/AliasTable.h>

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace ORVA {

/// Values are drawn in proportion to their weights, whatever those add up to, by CAliasTable. A
/// draw gives a reference to the value in the object.
template <class T>
class CExactDiscrete {
public:
  /// Throws CExBadParam unless there is a value, all weights are finite and at least 0, and one is
  /// positive. A value may occur more than once: its weights add up.
  explicit CExactDiscrete(std::vector<std::pair<T, double>> weighted)
      : m_Table(WeightsOf(weighted)) {
    m_Values.reserve(weighted.size());
    for (auto& [value, weight] : weighted) m_Values.push_back(std::move(value));
  }

  /// A value, drawn from the shared source or the given one.
  T const& operator()() const { return m_Values[m_Table()]; }
  template <RandomSource Source>
  T const& operator()(Source& source) const {
    return m_Values[m_Table(source)];
  }
  /// Fills an array by draws from the source, one after the other.
  template <RandomSource Source>
  void Fill(std::span<T> out, Source& source) const {
    Impl::FillInOrder(out, source, [&own = *this](auto& words) -> T const& { return own(words); });
  }

private:
  static std::vector<double> WeightsOf(std::vector<std::pair<T, double>> const& weighted) {
    std::vector<double> weights;
    weights.reserve(weighted.size());
    for (auto const& entry : weighted) weights.push_back(entry.second);
    return weights;
  }

  std::vector<T> m_Values;
  CAliasTable m_Table;
};

} // namespace ORVA
