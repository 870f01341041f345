#include <SeluUtils/Random/RandomLogNormal.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <cmath>

namespace ORVA {

CRandomLogNormal::CRandomLogNormal(double mu, double sigma) : m_Mu(mu), m_Sigma(sigma) {
  if (!std::isfinite(mu) || !std::isfinite(sigma))
    Impl::Raise(ORVA_LOCATION("src/Utils/Random/RandomLogNormal",
                              "ORVA::CRandomLogNormal::CRandomLogNormal")
                    .AtLine(44),
                CString("Invalid parametrization: mu=%1, sigma=%2.").Arg(mu).Arg(sigma));
}

double CRandomLogNormal::operator()() const { return std::exp(m_Normal() * m_Sigma + m_Mu); }

void CRandomLogNormal::SetLogNormalExpectationAndStDeviation(double expectation,
                                                             double stdDeviation) {
  m_Sigma = std::log(stdDeviation * stdDeviation / expectation / expectation + 1);
  m_Mu = std::log(expectation) - m_Sigma * m_Sigma * 0.5;
}

bool CRandomLogNormal::IsValid() const { return std::isfinite(m_Mu) && std::isfinite(m_Sigma); }

} // namespace ORVA
