#include <SeluUtils/Random/WatsonRotation.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace ORVA {

namespace {

constexpr double c_twoPi = 2 * std::numbers::pi;
constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();
// Below the first, exp(kappa) - 1 loses digits; below the second, the cosine is u to the last one;
// above the third, exp(kappa) overflows.
constexpr double c_small = 1e-5;
constexpr double c_vanishing = 1e-17;
constexpr double c_overflowing = 709;

std::array<CTriple<double>, 3> FromZAxisTo(CPolarCoordinates const& mean) {
  CTriple<double> const m = mean;
  double const alpha = std::acos(m.z);
  double const beta = std::atan2(m.y, m.x);
  double const sa = std::sin(alpha), ca = std::cos(alpha);
  double const sb = std::sin(beta), cb = std::cos(beta);
  return {{{ca * cb, -sb, sa * cb}, {ca * sb, cb, sa * sb}, {-sa, 0, ca}}};
}

double Dot(CTriple<double> const& a, CTriple<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// The proposal for kappa > 0, ln(u (exp(kappa) - 1) + 1) / kappa, without its overflow and loss.
double BipolarProposal(double kappa, double u) {
  if (kappa < c_vanishing) return u;
  if (kappa < c_small) return std::log1p(u * std::expm1(kappa)) / kappa;
  if (kappa > c_overflowing) return 1 + std::log(u + (1 - u) * std::exp(-kappa)) / kappa;
  double const c = 1 / (std::exp(kappa) - 1);
  return std::log(u / c + 1) / kappa;
}

} // namespace

CWatsonRotation::CWatsonRotation(double kappa, CPolarCoordinates const& mean)
    : m_Kappa(kappa), m_Mean(mean), m_ToMean(FromZAxisTo(mean)) {}

template <class Source>
double CWatsonRotation::BipolarCosine(Source& source) const {
  for (;;) {
    double const u = m_Uniform(source);
    double const v = m_Uniform(source);
    double const t = std::clamp(BipolarProposal(m_Kappa, u), 0.0, 1.0);
    if (std::exp(m_Kappa * t * t - m_Kappa * t) >= v) return t;
  }
}

template <class Source>
double CWatsonRotation::GirdleCosine(Source& source) const {
  double const s = std::sqrt(-m_Kappa);
  double const a = std::atan(s);
  for (;;) {
    double const u = m_Uniform(source);
    double const v = m_Uniform(source);
    double const t = std::clamp(std::tan(u * a) / s, 0.0, 1.0);
    double const q = m_Kappa * t * t;
    if (std::exp(q) * (1 - q) >= v) return t;
  }
}

template <class Source>
CEulerRotation CWatsonRotation::Draw(Source& source) const {
  double const t = !IsValid() ? c_nan : m_Kappa > 0 ? BipolarCosine(source) : GirdleCosine(source);
  double const theta = std::acos(t);
  double const f = c_twoPi * m_Uniform(source);
  CTriple<double> const d(std::cos(f) * std::sin(theta), std::sin(f) * std::sin(theta), t);
  double const spin = c_twoPi * m_Uniform(source);
  return {CPolarCoordinates(Dot(m_ToMean[0], d), Dot(m_ToMean[1], d), Dot(m_ToMean[2], d)), spin};
}

CEulerRotation CWatsonRotation::operator()() {
  if (m_Kappa == 0) return m_Isotropic();
  Impl::CSharedSource shared;
  return Draw(shared);
}

CEulerRotation CWatsonRotation::DrawFrom(CSourceReference source) {
  return m_Kappa == 0 ? m_Isotropic(source) : Draw(source);
}

bool CWatsonRotation::IsValid() const { return std::isfinite(m_Kappa); }

IRotationGenerator* CWatsonRotation::Clone() const { return new CWatsonRotation(*this); }

} // namespace ORVA
