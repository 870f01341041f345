// What the exact distributions share: draws from the shared source, from a given one, and of
// arrays.
//
//   #include <SeluUtils/Random/ExactNormal.h>
//   CExactNormal const noise(0.0, 2.5);
//   CRandomSource source(42);
//   double const value = noise(source);       // CExactNormal has a Draw, the rest is from here
//   double values[100];
//   noise.Fill(values, source);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <pxlib2core/RandomSource.h>

#include <span>
#include <type_traits>

namespace ORVA::Impl {

/// Fills an array by draw(source). The state of a CRandomSource is in registers meanwhile.
template <class T, RandomSource Source, class Draw>
inline void FillInOrder(std::span<T> out, Source& source, Draw draw) {
  if constexpr (std::is_same_v<Source, CRandomSource>) {
    CRandomSource inRegisters = source;
    for (T& value : out) value = draw(inRegisters);
    source = inRegisters;
  } else {
    for (T& value : out) value = draw(source);
  }
}

/// Draws of a distribution, which has a member template Draw(source). Distributions are immutable
/// and their constructors refuse bad parameters: many threads may draw from one, each with a source
/// of its own.
template <class Distribution, class T>
class CDraws {
public:
  /// A draw from the shared source.
  T operator()() const {
    CSharedSource shared;
    return Self().Draw(shared);
  }
  /// A draw from the given source, inline.
  template <RandomSource Source>
  T operator()(Source& source) const {
    return Self().Draw(source);
  }
  /// Fills an array by draws from the source, one after the other.
  template <RandomSource Source>
  void Fill(std::span<T> out, Source& source) const {
    FillInOrder(out, source, [&own = Self()](auto& words) { return own.Draw(words); });
  }

private:
  [[nodiscard]] Distribution const& Self() const noexcept {
    return static_cast<Distribution const&>(*this);
  }
};

/// The same behind the interface of the generators; always valid.
template <class Distribution, class T>
class CExactDraws : public CDraws<Distribution, T>, public IRandomGenerator<T> {
public:
  T operator()() const final { return CDraws<Distribution, T>::operator()(); }
  using CDraws<Distribution, T>::operator();
  using CDraws<Distribution, T>::Fill;
  [[nodiscard]] bool IsValid() const final { return true; }

private:
  T DrawFrom(CSourceReference source) const final { return (*this)(source); }
};

} // namespace ORVA::Impl
