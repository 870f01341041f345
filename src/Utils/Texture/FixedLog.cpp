#include "Utils/Texture/FixedLog.h"

#include <SeluUtils/Impl/Int128.h>

#include <bit>

namespace ORVA::Impl {

namespace {

// The logarithm of each number, where `smallest` is 0 for a prime and else its smallest factor.
std::vector<int64> AdditiveLogs(std::size_t most, int bits) {
  std::vector<std::size_t> smallest(most + 1);
  for (std::size_t p = 2; p * p <= most; ++p)
    if (smallest[p] == 0)
      for (std::size_t k = p * p; k <= most; k += p)
        if (smallest[k] == 0) smallest[k] = p;
  std::vector<int64> logs(most + 1);
  for (std::size_t k = 2; k <= most; ++k)
    logs[k] = smallest[k] == 0 ? FixedLog2(static_cast<int64>(k), bits)
                               : logs[smallest[k]] + logs[k / smallest[k]];
  return logs;
}

} // namespace

// Squaring the mantissa doubles its logarithm, whose integer part is the next binary digit. What a
// step rounds off counts half as much as it would have counted one step before.
int64 FixedLog2(int64 number, int bits) noexcept {
  auto const value = static_cast<uint64>(number);
  auto const whole = static_cast<int>(std::bit_width(value)) - 1;
  uint64 mantissa = value << (63 - whole); // 2^63 stands for 1
  int64 log = whole;
  for (int k = 0; k <= bits; ++k) {
    uint128 const square = static_cast<uint128>(mantissa) * mantissa;
    bool const isTwo = (square >> 127U) != 0;
    mantissa = static_cast<uint64>(square >> (isTwo ? 64U : 63U));
    log = 2 * log + (isTwo ? 1 : 0);
  }
  return (log + 1) >> 1;
}

CFixedLog::CFixedLog(int64 most, int bits) {
  m_Values = AdditiveLogs(static_cast<std::size_t>(most), bits);
  for (std::size_t c = 0; c < m_Values.size(); ++c) m_Values[c] *= static_cast<int64>(c);
  m_Steps.resize(m_Values.size());
  for (std::size_t c = 0; c + 1 < m_Values.size(); ++c) m_Steps[c] = m_Values[c + 1] - m_Values[c];
}

} // namespace ORVA::Impl
