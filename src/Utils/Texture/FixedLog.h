// Counts times their logarithms in fixed point, for entropies that follow single changes exactly.
//
//   Impl::CFixedLog const logs(225, 44);
//   int64 const most = logs(225);            // 225 log2 225 * 2^44, rounded
//   int64 const change = logs.Steps()[7];    // logs(8) - logs(7)
#pragma once

#include <pxlib2core/Types.h>

#include <cstddef>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// c log2 c for c = 0 .. most, as integers in units of 2^-bits.
///
/// The logarithms are additive: those of primes are rounded to the nearest unit, those of products
/// are sums. So log2(2 c) = log2(c) + 1 holds exactly, and where rows and columns are independent
/// (c(i, j) N = c(i) c(j)) their mutual information is exactly 0. The logarithm of c is off by half
/// a unit for each prime factor of c at most.
class CFixedLog {
public:
  /// Takes O(most) with some 100 ns for each prime. Needs most log2(most) 2^bits < 2^63.
  CFixedLog(int64 most, int bits);

  [[nodiscard]] int64 operator()(int64 count) const noexcept {
    return m_Values[static_cast<std::size_t>(count)];
  }
  /// At c the difference from c to c + 1, for c < most.
  [[nodiscard]] std::span<int64 const> Steps() const noexcept { return m_Steps; }

private:
  std::vector<int64> m_Values, m_Steps;
};

/// log2 of a number from 1 on, in units of 2^-bits, rounded to the nearest; bits up to 56. From
/// integers alone, hence the same everywhere.
[[nodiscard]] int64 FixedLog2(int64 number, int bits) noexcept;

} // namespace ORVA::Impl
