// What every random generator offers: the next value, a check of its parameters, raw bits.
//
//   #include <SeluUtils/Random/RandomNormal.h>
//   auto const mean = [](IRandomGenerator<double> const& generator, int n) {
//     double sum = 0;
//     for (int i = 0; i < n; ++i) sum += generator();
//     return sum / n;
//   };
//   double const nearFive = mean(CRandomNormal(5, 0.1), 100);
//   CRandomSource source(42);
//   double const value = CRandomNormal(5, 0.1)(source);   // from this source, not the shared one
#pragma once

#include <SeluUtils/Export.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace ORVA {

struct CEulerRotation;

namespace Impl {

/// Raw bits for every generator, from the calling thread's stream of CRandom::Obj().
class SELUUTILS_EXPORT CRandomBits {
public:
  [[nodiscard]] std::uint8_t Rand8() const { return CRandom::Obj().Rand8(); }
  [[nodiscard]] std::uint32_t Rand32() const { return CRandom::Obj().Rand32(); }
  [[nodiscard]] uint64 Rand64() const { return CRandom::Obj().Rand64(); }
  void RandBuffer(void* buffer, std::size_t bytes) const { CRandom::Obj().Rand(buffer, bytes); }
  /// Does nothing: the bits are shared by all generators, so no single one may restart them. Use
  /// CRandom::Obj().Seed.
  void ReSeedThePseudoRandomGenerator(unsigned int /*seed*/) const {}
};

} // namespace Impl

/// A source of random values of type T. Constructors mostly store what they are given: IsValid says
/// whether the parameters make sense, and operator() never checks. No generator is safe for
/// concurrent use; different ones on different threads are.
template <class T>
class SELUUTILS_EXPORT IRandomGenerator : public Impl::CRandomBits {
public:
  virtual ~IRandomGenerator() = default;
  virtual T operator()() const = 0;
  /// Whether the parameters make sense.
  [[nodiscard]] virtual bool IsValid() const = 0;

  /// A draw from the given source: it depends on the source and the parameters alone.
  template <RandomSource Source>
  T operator()(Source& source) const {
    return DrawFrom(source);
  }
  /// Fills an array by such draws, one after the other.
  template <RandomSource Source>
  void Fill(std::span<T> out, Source& source) const {
    CSourceReference const reference(source);
    for (T& value : out) value = DrawFrom(reference);
  }

protected:
  IRandomGenerator() = default;
  IRandomGenerator(IRandomGenerator const&) = default;
  IRandomGenerator& operator=(IRandomGenerator const&) = default;

  /// A generator that does not override it draws from a stream begun with five words of the source.
  virtual T DrawFrom(CSourceReference source) const {
    Impl::CBorrowedStream const stream(source);
    return (*this)();
  }
};

/// Generators of rotations may keep state of their own from draw to draw.
template <>
class SELUUTILS_EXPORT IRandomGenerator<CEulerRotation> : public Impl::CRandomBits {
public:
  virtual ~IRandomGenerator() = default;
  virtual CEulerRotation operator()() = 0;
  [[nodiscard]] virtual bool IsValid() const = 0;

protected:
  IRandomGenerator() = default;
  IRandomGenerator(IRandomGenerator const&) = default;
  IRandomGenerator& operator=(IRandomGenerator const&) = default;
};

} // namespace ORVA
