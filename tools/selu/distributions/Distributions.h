// The distributions that samples can be drawn from, each with what theory says about it.
//
//   CParameters given = CParameters::FromText("normal,mean=3");
//   if (IsScalar(given.Distribution())) StScalar normal = MakeScalar(given);
//   else StRotations generator = MakeRotations(given);
//   normal.draw();  normal.theory.cdf(3.5);
#pragma once

#include "base/Parameters.h"

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Random/RandomGenerator.h>
#include <pxlib2core/RandomSource.h>

#include <array>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace selu {

struct StDistributionName {
  char const* name;
  char const* help; // its parameters
};
[[nodiscard]] std::span<StDistributionName const> ScalarNames() noexcept;
[[nodiscard]] std::span<StDistributionName const> RotationNames() noexcept;
[[nodiscard]] bool IsScalar(std::string const& name) noexcept;
/// "exact-normal" and the like, the names of the exact distributions, begin with this.
inline constexpr std::string_view c_exact = "exact-";
[[nodiscard]] inline bool IsExact(std::string const& name) noexcept {
  return name.starts_with(c_exact);
}
/// The name without it.
[[nodiscard]] inline std::string PlainName(std::string const& name) {
  return IsExact(name) ? name.substr(c_exact.size()) : name;
}

/// Moments; skewness and excess are those of the standardized value. NaN where there is none.
struct StMoments {
  double mean, deviation, skewness, excess;
};

struct StScalarTheory {
  StMoments moments;
  double low, high; ///< where nearly all values lie
  std::function<double(double)> cdf;
  std::function<double(double)> density; ///< none for discrete and constant values
  std::string noTest;                    ///< why there is no Kolmogorov-Smirnov test, or empty
  /// Upper borders of the cells for a chi-square test, ascending, the last one infinite; empty
  /// where there is none.
  std::vector<double> cells = {};
};

struct StScalar {
  std::function<double()> draw; ///< from the shared source
  std::function<double(ORVA::CRandomSource&)> drawFrom;
  bool isWhole = false; ///< values are integers
  StScalarTheory theory;
};

/// Throws CAppError for parameters out of range, so that only valid generators are drawn from.
[[nodiscard]] StScalar MakeScalar(CParameters parameters);

using Vector = ORVA::CTriple<double>;
/// Second moments xx, yy, zz, xy, xz, yz.
using Tensor = std::array<double, 6>;

struct StRotationTheory {
  Vector mean;                          ///< expected direction vector
  Tensor tensor;                        ///< expected products of its components
  Vector axis;                          ///< of the test
  std::function<double(double)> beyond; ///< probability that 1 - cos(angle to the axis) is greater
  std::string noTest;                   ///< why there is no test, or empty
  bool isAxial = false;                 ///< directions and their opposites are alike
};

struct StRotations {
  std::unique_ptr<ORVA::IRandomGenerator<ORVA::CEulerRotation>> draw; ///< from the shared source
  std::function<ORVA::CEulerRotation(ORVA::CRandomSource&)> drawFrom;
  StRotationTheory theory;
};

[[nodiscard]] StRotations MakeRotations(CParameters given);

} // namespace selu
