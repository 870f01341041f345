// Standard normal, standard exponential and uniform numbers with 53 random bits, inline.
//
//   CRandomSource source(42);
//   double const z = Impl::StandardNormal(source);
//   double const e = Impl::StandardExponential(source);
//   double const u = Impl::UnitUniform(source);
#pragma once

#include <SeluUtils/Impl/ZigguratTables.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/Types.h>

#include <bit>
#include <cmath>
#include <cstddef>
#include <type_traits>

namespace ORVA::Impl {

/// Uniform on [0, 1) in steps of 2^-53.
template <RandomSource Source>
[[nodiscard]] inline double UnitUniform(Source& source) {
  return static_cast<double>(static_cast<int64>(source() >> 11)) * 0x1p-53;
}

/// The rare part of a draw, out of line. A small source is handed over as a copy: one whose address
/// is given away could not stay in registers while an array is filled.
template <RandomSource Source, class Rare>
[[nodiscard]] inline auto DrawRare(Source& source, Rare rare) {
  if constexpr (std::is_trivially_copyable_v<Source> && sizeof(Source) <= 64) {
    Source copy = source;
    auto const value = rare(copy);
    source = copy;
    return value;
  } else {
    return rare(source);
  }
}

// A word of a ziggurat: its lowest 8 bits are the layer, the next one the sign where there is one,
// the highest 53 the steps.
[[nodiscard]] constexpr std::size_t LayerOf(uint64 word) noexcept { return word & 255; }
[[nodiscard]] constexpr uint64 StepsOf(uint64 word) noexcept { return word >> 11; }
[[nodiscard]] constexpr double Position(StZigguratLayer const& layer, uint64 steps) noexcept {
  return static_cast<double>(static_cast<int64>(steps)) * layer.step;
}
[[nodiscard]] constexpr double WithSign(double x, uint64 word) noexcept {
  return std::bit_cast<double>(std::bit_cast<uint64>(x) ^ (word << 55 & uint64{1} << 63));
}

/// Goes on with a word that led out of the part of its layer that is inside for certain. The tail
/// beyond r is that of the distribution again, as it has no memory.
template <RandomSource Source>
[[nodiscard, gnu::noinline, gnu::cold]] double ExponentialFrom(uint64 word, Source& source) {
  double begin = 0;
  for (;; word = source()) {
    std::size_t const i = LayerOf(word);
    StZigguratLayer const& layer = c_exponentialLayers[i];
    double const x = Position(layer, StepsOf(word));
    if (StepsOf(word) < layer.inside) return begin + x;
    if (i == 0) {
      begin += c_exponentialTail;
      continue;
    }
    double const low = c_exponentialHeights[i - 1], high = c_exponentialHeights[i];
    if (low + UnitUniform(source) * (high - low) < std::exp(-x)) return begin + x;
  }
}

/// Exponential of rate 1: the ziggurat of G. Marsaglia and W. W. Tsang, "The Ziggurat Method for
/// Generating Random Variables", Journal of Statistical Software 5 (2000) 8, with 256 layers and
/// separate bits for layer and place (J. A. Doornik, "An Improved Ziggurat Method to Generate
/// Normal Random Samples", 2005). 1.02 words on average.
template <RandomSource Source>
[[nodiscard]] inline double StandardExponential(Source& source) {
  uint64 const word = source();
  StZigguratLayer const& layer = c_exponentialLayers[LayerOf(word)];
  if (StepsOf(word) < layer.inside) [[likely]]
    return Position(layer, StepsOf(word));
  return DrawRare(source, [word](auto& rest) { return ExponentialFrom(word, rest); });
}

/// The same for normal numbers. The tail beyond r is exact: G. Marsaglia, "Generating a Variable
/// from the Tail of the Normal Distribution", Technometrics 6 (1964) 101-102.
template <RandomSource Source>
[[nodiscard, gnu::noinline, gnu::cold]] double NormalFrom(uint64 word, Source& source) {
  for (;; word = source()) {
    std::size_t const i = LayerOf(word);
    StZigguratLayer const& layer = c_normalLayers[i];
    double const x = Position(layer, StepsOf(word));
    if (StepsOf(word) < layer.inside) return WithSign(x, word);
    if (i == 0) {
      double beyond = 0;
      do beyond = StandardExponential(source) / c_normalTail;
      while (2 * StandardExponential(source) <= beyond * beyond);
      return WithSign(c_normalTail + beyond, word);
    }
    double const low = c_normalHeights[i - 1], high = c_normalHeights[i];
    if (low + UnitUniform(source) * (high - low) < std::exp(-x * x / 2)) return WithSign(x, word);
  }
}

/// Normal of mean 0 and standard deviation 1, by the ziggurat as above. 1.02 words on average.
template <RandomSource Source>
[[nodiscard]] inline double StandardNormal(Source& source) {
  uint64 const word = source();
  StZigguratLayer const& layer = c_normalLayers[LayerOf(word)];
  if (StepsOf(word) < layer.inside) [[likely]]
    return WithSign(Position(layer, StepsOf(word)), word);
  return DrawRare(source, [word](auto& rest) { return NormalFrom(word, rest); });
}

} // namespace ORVA::Impl
