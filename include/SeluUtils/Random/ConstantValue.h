// A generator that always gives the same rotation.
//
//   CConstantValue<CEulerRotation> same(CEulerRotation(0.1, 0.2, 0.3));
//   CEulerRotation const r = same();
//   IRandomGenerator<CEulerRotation>& generator = same;
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>

#include <span>
#include <type_traits>

namespace ORVA {

/// Made for T = CEulerRotation; a default one gives the identity.
template <class T>
class SELUUTILS_EXPORT CConstantValue : public virtual IRandomGenerator<T> {
  static_assert(std::is_same_v<T, CEulerRotation>);

public:
  CConstantValue() = default;
  explicit CConstantValue(T const& value) : m_Value(value) {}

  T operator()() override { return m_Value; }
  template <RandomSource Source>
  T operator()(Source&) {
    return m_Value;
  }
  /// Writes the value to every place.
  template <RandomSource Source>
  void Fill(std::span<T> out, Source&) {
    for (T& value : out) value = m_Value;
  }
  [[nodiscard]] bool IsValid() const override { return true; }

private:
  T m_Value;
};

} // namespace ORVA
