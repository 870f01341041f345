#pragma once
#include <cstdint>
#include <span>
#include <vector>
namespace ORVA::Impl {
struct StTextureArrays {
  std::vector<double> m_ppP = std::vector<double>(65536);
  std::vector<double> m_pSum = std::vector<double>(511);
  std::vector<double> m_pDiff = std::vector<double>(256);
  std::vector<double> m_pX = std::vector<double>(256);
  std::vector<double> m_pY = std::vector<double>(256);
  double m_dMeanX = 0, m_dMeanY = 0, m_dMeanDiff = 0;
};
void FillTextureArrays(StTextureArrays&, std::span<std::uint32_t const, 65536> counts, double N);
double Sigma_x(StTextureArrays const&);
double Sigma_y(StTextureArrays const&);
double Hx(StTextureArrays const&);
double Hy(StTextureArrays const&);
double H1(StTextureArrays const&);
double H2(StTextureArrays const&);
double Contrast(StTextureArrays const&);
double Correlation(StTextureArrays const&);
double DifferenceEntropy(StTextureArrays const&);
double DifferenceVariance(StTextureArrays const&);
double Entropy(StTextureArrays const&);
double InverseDifferenceMoment(StTextureArrays const&);
double InformationMeasureOfCorrelation1(StTextureArrays const&);
double InformationMeasureOfCorrelation2(StTextureArrays const&);
double SecondAngularMoment(StTextureArrays const&);
double SumAverage(StTextureArrays const&);
double SumEntropy(StTextureArrays const&);
double SumVariance(StTextureArrays const&);
double Variance(StTextureArrays const&);
} // namespace ORVA::Impl
