// Seeded random numbers for tests: the seed is printed when a test fails and can be set from
// outside by the environment variable SELU_TEST_SEED.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <random>

namespace test {

inline std::uint64_t Seed(std::uint64_t standard = 20240229) {
  char const* const given = std::getenv("SELU_TEST_SEED");
  return given != nullptr ? std::strtoull(given, nullptr, 10) : standard;
}

/// A generator and, while it lives, a note of its seed on every failure.
class CRandomNumbers {
public:
  explicit CRandomNumbers(std::uint64_t seed = Seed())
      : m_Generator(seed), m_Trace(__FILE__, __LINE__, "SELU_TEST_SEED=" + std::to_string(seed)) {}

  /// Uniform in [low, high].
  template <class T>
  T Between(T low, T high) {
    return static_cast<T>(std::uniform_int_distribution<std::int64_t>(
        static_cast<std::int64_t>(low), static_cast<std::int64_t>(high))(m_Generator));
  }
  double Real(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(m_Generator);
  }
  std::mt19937_64& Generator() { return m_Generator; }

private:
  std::mt19937_64 m_Generator;
  testing::ScopedTrace m_Trace;
};

} // namespace test
