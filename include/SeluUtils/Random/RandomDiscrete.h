// Draws one of a few numbers, each with its own weight.
//
//   CRandomDiscrete const size({{0.25, 0.5}, {0.75, 0.5}});   // value, weight
//   double const value = size();                              // 0.25 or 0.75
//   bool const sensible = size.IsValid();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>

#include <map>
#include <vector>

namespace ORVA {

/// Walks the values in ascending order until the weights met add up to a uniform number. Where the
/// *values* add up to more than 1, all weights are divided by that sum first; otherwise they are
/// taken as they are, whatever they add up to. A walk past the end stops at the last value. (Sums
/// of the values, not of the weights: stored results demand it;
/// CExactDiscrete takes weights of any sum and values of any kind.) O(log n) per draw.
class SELUUTILS_EXPORT CRandomDiscrete : public IRandomGenerator<double> {
public:
  CRandomDiscrete() = default; ///< nothing to draw
  explicit CRandomDiscrete(std::map<double, double> const& weightOfValue);

  /// Throws CException if there is no value.
  double operator()() const override;
  using IRandomGenerator<double>::operator();

  /// Whether the values (not the weights) add up to 1 within the machine epsilon.
  [[nodiscard]] bool IsValid() const override;

private:
  double DrawFrom(CSourceReference source) const override;
  template <class Source>
  double Draw(Source& source) const;

  std::vector<double> m_Values; // ascending
  std::vector<double> m_Reach;  // highest sum of weights met on the walk to the value
  double m_Total = 0;           // of the values
  CRandomUniform m_Uniform;
};

} // namespace ORVA
