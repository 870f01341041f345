#include "Utils/ExactReal.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace ORVA::Impl {

namespace {

constexpr int c_limbBits = 32;

constexpr std::uint32_t Low(std::uint64_t value) { return static_cast<std::uint32_t>(value); }

} // namespace

CExactReal::CExactReal(double value) noexcept : m_IsNegative(value < 0) {
  if (value == 0) return;
  constexpr int c_mantissaBits = 53;
  double const fraction = std::frexp(std::abs(value), &m_Exponent);
  auto const mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, c_mantissaBits));
  m_Exponent -= c_mantissaBits;
  m_Limbs[0] = Low(mantissa);
  m_Limbs[1] = Low(mantissa >> c_limbBits);
  m_Size = 2;
}

void CExactReal::Resize(std::size_t limbs) {
  if (limbs > c_limbs) throw std::length_error("an exact number of more than 3072 bits");
  for (; m_Size < limbs; ++m_Size) m_Limbs[m_Size] = 0;
}

void CExactReal::Trim() noexcept {
  while (m_Size > 0 && m_Limbs[m_Size - 1] == 0) --m_Size;
}

CExactReal CExactReal::ShiftedTo(int exponent) const {
  auto const whole = static_cast<std::size_t>((m_Exponent - exponent) / c_limbBits);
  int const bits = (m_Exponent - exponent) % c_limbBits;
  CExactReal shifted;
  shifted.m_Exponent = exponent;
  shifted.m_IsNegative = m_IsNegative;
  shifted.Resize(whole + m_Size + 1);
  for (std::size_t k = 0; k < m_Size; ++k) {
    std::uint64_t const limb = std::uint64_t{m_Limbs[k]} << bits;
    shifted.m_Limbs[whole + k] |= Low(limb);
    shifted.m_Limbs[whole + k + 1] = Low(limb >> c_limbBits);
  }
  shifted.Trim();
  return shifted;
}

bool CExactReal::IsLess(CExactReal const& other) const noexcept {
  if (m_Size != other.m_Size) return m_Size < other.m_Size;
  for (std::size_t k = m_Size; k-- > 0;)
    if (m_Limbs[k] != other.m_Limbs[k]) return m_Limbs[k] < other.m_Limbs[k];
  return false;
}

void CExactReal::AddLimbs(CExactReal const& other) {
  Resize(std::max(m_Size, other.m_Size) + 1);
  std::uint64_t carry = 0;
  for (std::size_t k = 0; k < m_Size; ++k) {
    carry += m_Limbs[k];
    if (k < other.m_Size) carry += other.m_Limbs[k];
    m_Limbs[k] = Low(carry);
    carry >>= c_limbBits;
  }
  Trim();
}

void CExactReal::SubtractLimbs(CExactReal const& other) noexcept {
  std::uint64_t borrow = 0;
  for (std::size_t k = 0; k < m_Size; ++k) {
    std::uint64_t const taken = borrow + (k < other.m_Size ? other.m_Limbs[k] : 0);
    borrow = m_Limbs[k] < taken ? 1 : 0;
    m_Limbs[k] = Low(m_Limbs[k] - taken);
  }
  Trim();
}

CExactReal operator+(CExactReal const& a, CExactReal const& b) {
  if (a.m_Size == 0) return b;
  if (b.m_Size == 0) return a;
  int const exponent = std::min(a.m_Exponent, b.m_Exponent);
  CExactReal first = a.ShiftedTo(exponent), second = b.ShiftedTo(exponent);
  if (first.m_IsNegative == second.m_IsNegative) {
    first.AddLimbs(second);
    return first;
  }
  if (first.IsLess(second)) std::swap(first, second);
  first.SubtractLimbs(second);
  return first;
}

CExactReal operator-(CExactReal const& a, CExactReal b) {
  b.m_IsNegative = !b.m_IsNegative;
  return a + b;
}

CExactReal operator*(CExactReal const& a, CExactReal const& b) {
  CExactReal product;
  if (a.m_Size == 0 || b.m_Size == 0) return product;
  product.m_Exponent = a.m_Exponent + b.m_Exponent;
  product.m_IsNegative = a.m_IsNegative != b.m_IsNegative;
  product.Resize(a.m_Size + b.m_Size);
  for (std::size_t i = 0; i < a.m_Size; ++i) {
    std::uint64_t carry = 0;
    for (std::size_t k = 0; k < b.m_Size; ++k) {
      carry += std::uint64_t{a.m_Limbs[i]} * b.m_Limbs[k] + product.m_Limbs[i + k];
      product.m_Limbs[i + k] = Low(carry);
      carry >>= c_limbBits;
    }
    product.m_Limbs[i + b.m_Size] = Low(carry);
  }
  product.Trim();
  return product;
}

} // namespace ORVA::Impl
