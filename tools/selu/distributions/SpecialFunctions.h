// The special functions that distributions need and the standard library lacks.
//
//   GammaShare(2.5, x)               // share of the standard gamma distribution below x
//   Dawson(3.0)                      // exp(-x^2) times the integral of exp(t^2) from 0 to x
//   KolmogorovProbability(0.002, n)  // of a distance that great or greater
#pragma once

namespace selu {

/// The regularized lower incomplete gamma function P(shape, x), shape > 0; 0 below x = 0. From a
/// shape of 10^6 on its error is below 1e-10, and its cost does not grow.
[[nodiscard]] double GammaShare(double shape, double x) noexcept;

/// Dawson's integral, by Rybicki's sum (G. B. Rybicki, "Dawson's Integral and the Sampling
/// Theorem", Computers in Physics 3 (1989) 85-87), to about 1e-15.
[[nodiscard]] double Dawson(double x) noexcept;

/// Probability that a chi-square of so many degrees of freedom is that great or greater.
[[nodiscard]] double ChiSquareProbability(double sum, double freedom) noexcept;

/// Probability that n values of the tested distribution lie as far from it or farther, in the sense
/// of Kolmogorov and Smirnov: the limit distribution with the correction for finite n of M. A.
/// Stephens, "Use of the Kolmogorov-Smirnov, Cramer-von Mises and Related Statistics Without
/// Extensive Tables", Journal of the Royal Statistical Society B 32 (1970) 115-122.
[[nodiscard]] double KolmogorovProbability(double distance, double n) noexcept;

} // namespace selu
