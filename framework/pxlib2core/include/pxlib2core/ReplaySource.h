// A source that hands out given words, for tests of what is drawn from it.
//
//   CReplaySource words({0, 1, 0x8000000000000000u});
//   uint64 const first = words();                      // 0
//   std::size_t const left = words.Remaining();        // 2
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

namespace ORVA {

/// A value: copies go on from where their original stands.
class PXLIB2CORE_EXPORT CReplaySource {
public:
  /// The type of one draw of bits.
  using result_type = uint64;

  explicit CReplaySource(std::vector<uint64> words) : m_Words(std::move(words)) {}

  /// The next word. Throws CException where none is left.
  uint64 operator()() {
    if (m_Drawn >= m_Words.size()) RaiseNoWord();
    return m_Words[m_Drawn++];
  }
  /// How many words have been drawn.
  [[nodiscard]] std::size_t Drawn() const noexcept { return m_Drawn; }
  /// How many words are left.
  [[nodiscard]] std::size_t Remaining() const noexcept { return m_Words.size() - m_Drawn; }

  /// The least value of a draw of bits, 0.
  [[nodiscard]] static constexpr uint64 min() noexcept { return 0; }
  /// The greatest value of a draw of bits, 2^64 - 1.
  [[nodiscard]] static constexpr uint64 max() noexcept {
    return std::numeric_limits<uint64>::max();
  }

private:
  [[noreturn]] void RaiseNoWord() const;

  std::vector<uint64> m_Words;
  std::size_t m_Drawn = 0;
};

} // namespace ORVA
