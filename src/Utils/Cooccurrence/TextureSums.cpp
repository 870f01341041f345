#include "Utils/Cooccurrence/TextureSums.h"
#include <algorithm>
#include <cmath>
#include <limits>
namespace ORVA::Impl {
namespace {
constexpr double eps = std::numeric_limits<double>::epsilon();
using A = StTextureArrays;
double EntropyOf(std::vector<double> const& p) {
  double s = 0;
  for (double v : p)
    if (v > 0) s += v * std::log(v);
  return 0.0 - s;
}
double MeanOf(std::vector<double> const& p) {
  double s = 0;
  for (std::size_t k = 0; k < p.size(); ++k) s += static_cast<double>(k) * p[k];
  return s;
}
double VarOf(std::vector<double> const& p, double mean) {
  double s = 0;
  for (std::size_t k = 0; k < p.size(); ++k) {
    double d = static_cast<double>(k) - mean;
    s += d * d * p[k];
  }
  return s;
}
} // namespace
void FillTextureArrays(A& a, std::span<std::uint32_t const, 65536> counts, double N) {
  for (auto* v : {&a.m_ppP, &a.m_pSum, &a.m_pDiff, &a.m_pX, &a.m_pY}) std::fill(v->begin(), v->end(), 0.0);
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j)
      if (counts[i * 256 + j] != 0) {
        double q = counts[i * 256 + j] / N;
        a.m_ppP[i * 256 + j] += q;
        a.m_pSum[i + j] += q;
        a.m_pDiff[i > j ? i - j : j - i] += q;
        a.m_pX[i] += q;
        a.m_pY[j] += q;
      }
  a.m_dMeanX = MeanOf(a.m_pX) / 256;
  a.m_dMeanY = MeanOf(a.m_pY) / 256;
  a.m_dMeanDiff = MeanOf(a.m_pDiff) / 256;
}
double Sigma_x(A const& a) { return std::sqrt(VarOf(a.m_pX, a.m_dMeanX)); }
double Sigma_y(A const& a) {
  double s = 0;
  for (double v : a.m_pY) s += (v - a.m_dMeanY) * (v - a.m_dMeanY);
  return std::sqrt(s);
}
double Hx(A const& a) { return EntropyOf(a.m_pX); }
double Hy(A const& a) { return EntropyOf(a.m_pY); }
double H1(A const& a) {
  double s = 0;
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j)
      if (a.m_pX[i] > 0 && a.m_pY[j] > 0) s += a.m_ppP[i * 256 + j] * std::log(a.m_pX[i] * a.m_pY[j]);
  return 0.0 - s;
}
double H2(A const& a) {
  double s = 0;
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j)
      if (a.m_pX[i] > 0 && a.m_pY[j] > 0) s += a.m_pX[i] * a.m_pY[j] * std::log(a.m_pX[i] * a.m_pY[j]);
  return 0.0 - s;
}
double Contrast(A const& a) { return VarOf(a.m_pDiff, 0) / 256 / 256; }
double Correlation(A const& a) {
  double const sx = Sigma_x(a), sy = Sigma_y(a);
  if (!(std::abs(sx) > eps) || !(std::abs(sy) > eps)) return 0;
  double s = 0;
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j) s += static_cast<double>(i * j) * a.m_ppP[i * 256 + j];
  return (s - a.m_dMeanX * a.m_dMeanY) / (sy * sx);
}
double DifferenceEntropy(A const& a) { return EntropyOf(a.m_pDiff); }
double DifferenceVariance(A const& a) { return VarOf(a.m_pDiff, a.m_dMeanDiff) / 256 / 256; }
double Entropy(A const& a) { return EntropyOf(a.m_ppP); }
double InverseDifferenceMoment(A const& a) {
  double s = 0;
  for (std::size_t k = 0; k < 256; ++k) s += a.m_pDiff[k] / (1.0 + static_cast<double>(k * k));
  return s;
}
double InformationMeasureOfCorrelation1(A const& a) {
  double const hx = Hx(a), hy = Hy(a);
  double d;
  if (hx - hy > eps && std::abs(hx) > eps) d = hx;
  else if (std::abs(hy) > eps) d = hy;
  else return 0;
  return Entropy(a) - H1(a) / d;
}
double InformationMeasureOfCorrelation2(A const& a) {
  double const e = std::exp(2 * (Entropy(a) - H2(a)));
  return 1 - e > 0 ? std::sqrt(1 - e) : 0;
}
double SecondAngularMoment(A const& a) {
  double s = 0;
  for (double v : a.m_ppP) s += v * v;
  return s;
}
double SumAverage(A const& a) { return MeanOf(a.m_pSum) / 511; }
double SumEntropy(A const& a) { return EntropyOf(a.m_pSum); }
double SumVariance(A const& a) { return VarOf(a.m_pSum, SumAverage(a)) / 511 / 511; }
double Variance(A const& a) { return VarOf(a.m_pX, a.m_dMeanX) / 256 / 256; }
} // namespace ORVA::Impl
