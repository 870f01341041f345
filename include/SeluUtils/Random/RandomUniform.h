// Uniform numbers, one by one or an array at a time.
//
//   #include <pxlib2core/Random.h>
//   #include <vector>
//   CRandom::Obj().Seed(42);                  // the same numbers from here on in every run
//   CRandomUniform const percent(0.0, 100.0);
//   double const one = percent();
//   std::vector<float> many(1000);
//   percent(many);
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>

#include <cstddef>
#include <cstdint>
#include <span>

namespace ORVA {

/// Uniform on [start, end): (end - start) * w / 2^32 + start with a 32-bit word w. So the values
/// have 32 random bits (CExactUniform: 53), and start itself is drawn once in 2^32 draws. A draw is
/// inline and costs about a nanosecond.
class SELUUTILS_EXPORT CRandomUniform : public IRandomGenerator<double> {
public:
  CRandomUniform() = default; ///< [0, 1)
  /// Throws CException if end < start.
  CRandomUniform(double start, double end);

  double operator()() const final { return FromWord(Rand32()); }
  template <RandomSource Source>
  double operator()(Source& source) const {
    return FromWord(static_cast<std::uint32_t>(source() >> 32));
  }

  /// Fills an array as fast as the bits come: each element takes 8 random bytes, whose first four
  /// (lowest byte first) are its word. So the values differ from those of single draws.
  void operator()(double* out, std::size_t n) const;
  /// The same with 4 bytes an element, rounded to float: values close to end may round to it.
  void operator()(float* out, std::size_t n) const;
  void operator()(std::span<double> out) const { (*this)(out.data(), out.size()); }
  void operator()(std::span<float> out) const { (*this)(out.data(), out.size()); }

  /// Whether start <= end.
  [[nodiscard]] bool IsValid() const override { return m_Start <= m_End; }

private:
  double DrawFrom(CSourceReference source) const final { return (*this)(source); }
  [[nodiscard]] double FromWord(double word) const {
    return (m_End - m_Start) * (word * 0x1p-32) + m_Start;
  }

  double m_Start = 0;
  double m_End = 1;
};

} // namespace ORVA
