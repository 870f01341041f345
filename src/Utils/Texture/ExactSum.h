// The sign of a sum of doubles, exactly.
//
//   std::array<double, 3> const terms = {1e300, 1.0, -1e300};
//   int const sign = Impl::SignOfSum(terms);          // 1
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace ORVA::Impl {

/// x + y = sum + error, exactly. D. E. Knuth, "The Art of Computer Programming", vol. 2, 4.2.2.
struct StTwoSum {
  double sum, error;

  constexpr StTwoSum(double x, double y) noexcept : sum(x + y), error(0) {
    double const yRounded = sum - x;
    error = (x - (sum - yRounded)) + (y - yRounded);
  }
};

/// x = high + low, exactly, with at most 26 significant bits in `high` and 27 in `low`: the product
/// of two parts is exact unless both are such low ones.
struct StHalves {
  double high, low;

  explicit StHalves(double x) noexcept
      : high(std::bit_cast<double>(std::bit_cast<std::uint64_t>(x) &
                                   ~((std::uint64_t{1} << 27U) - 1))),
        low(x - high) {}
};

/// -1, 0 or 1. The terms must be finite, and no partial sum of theirs may overflow. The sum is kept
/// as an expansion: J. R. Shewchuk, "Adaptive Precision Floating-Point Arithmetic and Fast Robust
/// Geometric Predicates", Discrete & Computational Geometry 18 (1997) 305-363.
template <std::size_t N>
[[nodiscard]] int SignOfSum(std::array<double, N> const& terms) noexcept {
  std::array<double, N> expansion{};
  for (std::size_t length = 0; length < N; ++length) {
    double carry = terms[length];
    for (std::size_t k = 0; k < length; ++k) {
      StTwoSum const next(carry, expansion[k]);
      carry = next.sum;
      expansion[k] = next.error;
    }
    expansion[length] = carry;
  }
  for (std::size_t k = N; k-- > 0;)
    if (expansion[k] != 0) return expansion[k] > 0 ? 1 : -1;
  return 0;
}

} // namespace ORVA::Impl
