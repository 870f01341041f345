#include <SeluUtils/Random/RandomPoisson.h>

#include "Utils/Random/Parameters.h"

#include <pxlib2core/Random.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace ORVA {

namespace {

constexpr double c_meanOfEnvelope = 512;

int FifteenBits(Impl::CSharedSource&) { return CRandom::Obj().Rand15(); }
int FifteenBits(CSourceReference& source) { return static_cast<int>(source() >> 49); }

// Towards zero, and to the nearest end of the range what lies beyond it.
int64 ToCount(double x) {
  if (std::isnan(x)) return 0;
  if (x >= std::numeric_limits<std::int32_t>::max())
    return std::numeric_limits<std::int32_t>::max();
  return static_cast<int64>(x); // above -1 here
}

} // namespace

int64 CRandomPoisson::operator()(double lambda) const {
  Impl::CSharedSource shared;
  return Draw(lambda, shared);
}

int64 CRandomPoisson::DrawFrom(double lambda, CSourceReference source) const {
  return Draw(lambda, source);
}

template <class Source>
int64 CRandomPoisson::Draw(double lambda, Source& source) const {
  if (lambda < c_meanOfEnvelope) return ByMultiplication(lambda, source);
  return lambda >= c_meanOfEnvelope ? ByLogisticEnvelope(lambda, source) : 0;
}

template <class Source>
int64 CRandomPoisson::ByMultiplication(double lambda, Source& source) const {
  double const limit = std::exp(-lambda);
  double product = m_Uniform(source);
  if (product <= limit || std::fabs(limit - 1) < std::numeric_limits<double>::epsilon()) return 0;
  int64 count = 0;
  for (; limit < product; ++count) product *= m_Uniform(source);
  return count;
}

template <class Source>
int64 CRandomPoisson::ByLogisticEnvelope(double lambda, Source& source) const {
  double const beta = std::numbers::pi / std::sqrt(3 * lambda);
  double const alpha = beta * lambda;
  for (;;) {
    double x = 0;
    double u = 0;
    do {
      u = (FifteenBits(source) + 1) / 32767.0;
      x = (alpha - std::log((1 - u) / u)) / beta;
    } while (u >= 1 || x <= -0.5);
    int64 const count = ToCount(x + 0.5);
    double const v = m_Uniform(source);
    // The sum of logarithms that stands for ln(count!) begins with ln 0, so every positive count is
    // accepted; only a 0 is put to the test.
    if (count != 0) return count;
    double const c = 0.767 - 3.36 / lambda;
    double const bound = std::log(c) - lambda - std::log(beta);
    double const y = alpha - beta * x;
    double const envelope = 1 + std::exp(y);
    if (!(bound < std::log(v / (envelope * envelope)) + y)) return 0;
  }
}

bool CRandomPoisson::IsValid() const { return Impl::IsPositiveNormal(m_Lambda); }

} // namespace ORVA
