// Sums and products of doubles without rounding, for the few decisions that doubles leave open.
//
//   Impl::CExactReal const tenth(0.1);
//   (tenth + tenth + tenth - Impl::CExactReal(0.3)).Sign();      // 1: 0.1 is a little more than
//   1/10
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ORVA::Impl {

/// A whole number of up to 3072 bits times a power of two. Takes about 400 bytes and nothing from
/// the heap; an operation takes as long as the bits that its operands span.
class CExactReal {
public:
  /// A finite value.
  explicit CExactReal(double value) noexcept;

  /// std::length_error for a result of more bits, which callers exclude by the range of their
  /// values.
  friend CExactReal operator+(CExactReal const& a, CExactReal const& b);
  friend CExactReal operator-(CExactReal const& a, CExactReal b);
  friend CExactReal operator*(CExactReal const& a, CExactReal const& b);

  /// -1, 0 or 1.
  [[nodiscard]] int Sign() const noexcept { return m_Size == 0 ? 0 : m_IsNegative ? -1 : 1; }

private:
  static constexpr std::size_t c_limbs = 96;

  CExactReal() noexcept = default;
  void Resize(std::size_t limbs); // those added are 0
  void Trim() noexcept;
  [[nodiscard]] CExactReal ShiftedTo(int exponent) const;
  [[nodiscard]] bool IsLess(CExactReal const& other) const noexcept; // of equal exponents, unsigned
  void AddLimbs(CExactReal const& other);
  void SubtractLimbs(CExactReal const& other) noexcept; // which is not greater

  std::array<std::uint32_t, c_limbs> m_Limbs; // the lowest first; m_Size of them are set
  std::size_t m_Size = 0;                     // the last one is not 0
  int m_Exponent = 0;                         // of the lowest bit
  bool m_IsNegative = false;
};

} // namespace ORVA::Impl
