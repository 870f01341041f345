// Poisson-distributed counts.
//
//   CRandomPoisson const fibers(12.5);        // mean
//   int64 const count = fibers();
//   int64 const other = fibers(100.0);        // mean of this draw alone
//   bool const sensible = fibers.IsValid();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <pxlib2core/Types.h>

namespace ORVA {

/// Below a mean of 512 exact, by multiplying uniform numbers: O(mean) per draw (D. E. Knuth, The
/// Art of Computer Programming 2, 3.4.1). From 512 on a rounded logistic variable of mean mean and
/// about the Poisson distribution's spread, at most 2^31 - 1: the envelope of A. C. Atkinson, "The
/// Computer Generation of Poisson Random Variables", Applied Statistics 28 (1979) 29-35, whose
/// rejection step is without effect here, as stored results demand. Its bits come from CRandom's
/// 15-bit generator, so it has fewer than 32767 different values: at a mean of 1000 the
/// distribution function is off by up to 0.02. CExactPoisson is exact for all means. A mean of NaN
/// or below 0 gives 0.
class SELUUTILS_EXPORT CRandomPoisson : public IRandomGenerator<int64> {
public:
  CRandomPoisson() = default; ///< mean 1
  explicit CRandomPoisson(double lambda) : m_Lambda(lambda) {}

  int64 operator()() const override { return (*this)(m_Lambda); }
  int64 operator()(double lambda) const;
  using IRandomGenerator<int64>::operator();
  /// From the given source. There the 15 bits are the highest of a word.
  template <RandomSource Source>
  int64 operator()(double lambda, Source& source) const {
    return DrawFrom(lambda, source);
  }

  /// Whether the mean is finite and a normal positive number.
  [[nodiscard]] bool IsValid() const override;

private:
  int64 DrawFrom(CSourceReference source) const override { return DrawFrom(m_Lambda, source); }
  int64 DrawFrom(double lambda, CSourceReference source) const;
  template <class Source>
  [[nodiscard]] int64 Draw(double lambda, Source& source) const;
  template <class Source>
  [[nodiscard]] int64 ByMultiplication(double lambda, Source& source) const;
  template <class Source>
  [[nodiscard]] int64 ByLogisticEnvelope(double lambda, Source& source) const;

  double m_Lambda = 1;
  CRandomUniform m_Uniform;
};

} // namespace ORVA
