// A sparse matrix of counts: a sorted list of cells, to which batches of pairs are merged.
//
//   #include <iostream>
//   Impl::CSparsePairs cells;
//   for (int pair = 0; pair < 3; ++pair) cells.Push(Impl::CSparsePairs::Key(7, 60000));
//   cells.Settle();                                   // sorts and merges what was pushed
//   cells.ForEach([](int i, int j, std::uint64_t count) { std::cout << i + j << ' ' << count; });
//   std::cout << '.';                                 // prints 60007 3.
#pragma once

#include <SeluUtils/Export.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ORVA::Impl {

/// Cells in ascending order of their keys in two arrays: 12 bytes each.
struct StCellList {
  std::vector<std::uint32_t> keys;
  std::vector<std::uint64_t> counts;
};

/// Pushed keys wait in a buffer; a full buffer is sorted by radix and becomes a list. Lists of
/// similar length are merged two by two, so that a cell is merged O(log pairs) times, whatever the
/// keys: there is no hash that an unlucky image could defeat.
class SELUUTILS_EXPORT CSparsePairs {
public:
  [[nodiscard]] static constexpr std::uint32_t Key(std::uint32_t i, std::uint32_t j) noexcept {
    return i << 16U | j;
  }

  /// Counts a cell once; a run of one key takes the room of one.
  void Push(std::uint32_t key) {
    if (key == m_RunKey) {
      ++m_RunLength;
      return;
    }
    EndRun();
    m_RunKey = key;
    m_RunLength = 1;
  }
  /// Makes one list of all; the functions below need it.
  void Settle();
  /// Forgets what was pushed since then, where memory has run out on the way.
  void Forget() noexcept;

  [[nodiscard]] StCellList const& Cells() const noexcept { return m_Cells; }
  [[nodiscard]] std::uint64_t CountOf(std::uint32_t key) const noexcept;
  /// Adds a list to this one, or, where memory runs out, nothing.
  void Add(StCellList const& other);
  /// Adds the transposed cells, or nothing.
  void AddTransposed();
  void Clear() noexcept;

  template <class Visit>
  void ForEach(Visit visit) const {
    for (std::size_t k = 0; k < m_Cells.keys.size(); ++k)
      visit(static_cast<int>(m_Cells.keys[k] >> 16U), static_cast<int>(m_Cells.keys[k] & 0xFFFFU),
            m_Cells.counts[k]);
  }

private:
  static constexpr std::size_t c_nBuffer = std::size_t{1} << 22U;
  static constexpr std::size_t c_nLongRuns = c_nBuffer / 8;

  void EndRun() {
    if (m_RunLength == 1) {
      m_Buffer.push_back(m_RunKey);
    } else if (m_RunLength > 1) {
      EndLongRun();
    }
    if (m_Buffer.size() >= c_nBuffer || m_LongRuns.keys.size() >= c_nLongRuns) EmptyBuffer();
  }
  void EndLongRun();
  void EmptyBuffer();
  void AddList(StCellList&& list);

  std::uint32_t m_RunKey = 0; // a cell of level 0: never pushed
  std::uint64_t m_RunLength = 0;
  std::vector<std::uint32_t> m_Buffer, m_SortSpace;
  StCellList m_LongRuns;           // unsorted; counts above 1
  std::vector<StCellList> m_Lists; // each longer than the next
  StCellList m_Cells;
};

} // namespace ORVA::Impl
