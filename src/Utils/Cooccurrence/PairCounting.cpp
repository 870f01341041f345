#include "Utils/Cooccurrence/PairCounting.h"

#include "Utils/Cooccurrence/PairBlock.h"

#include <algorithm>
#include <utility>

namespace ORVA::Impl {
namespace {

// The counters of even and of odd pairs. Where neighboring pairs are equal, as they often are in
// real images, an increment would otherwise wait for the store of the one before it.
using Tables = std::array<std::uint32_t*, 2>;

// Two rows of voxels of which the i-th ones make a pair.
struct StRowPair {
  std::byte const* a;
  std::byte const* b;
  std::int64_t stride; // bytes

  [[nodiscard]] StRowPair From(std::int64_t pair) const noexcept {
    return {a + pair * stride, b + pair * stride, stride};
  }

  template <class Block, int Bytes>
  [[nodiscard]] Block Load() const noexcept {
    return Block::template Load<Bytes>(a, b, stride);
  }
};

using AllOfBlock = std::make_index_sequence<c_nBlockPairs>;

// Inlined always: a call would move the block from registers to memory and back.
template <class Block, std::size_t... I>
[[gnu::always_inline]] inline void CountBlock(Block const& block, Tables tables,
                                              std::index_sequence<I...>) noexcept {
  (++tables[I % 2][block.template Index<I>()], ...);
}

// The number of the first `n` pairs that belong to whole blocks equal to `run`.
template <class Block, int Bytes>
std::int64_t RunLength(StRowPair row, std::int64_t n, Block const& run) noexcept {
  std::int64_t length = 0;
  for (; n - length >= c_nBlockPairs && row.template Load<Block, Bytes>() == run;
       length += c_nBlockPairs)
    row = row.From(c_nBlockPairs);
  return length;
}

// For rows shorter than a block.
template <int Bytes>
void CountShortRow(StRowPair row, std::int64_t n, Tables tables) noexcept {
  for (std::size_t i = 0; n > 0; ++i, --n, row = row.From(1))
    ++tables[i % 2][PairIndex<Bytes>(row.a, row.b)];
}

// The last `n` pairs of a block. The rows of an image leave the same number over, so that the
// comparisons are foreseen.
template <class Block, std::size_t... I>
[[gnu::always_inline]] inline void CountLast(Block const& block, std::size_t n, Tables tables,
                                             std::index_sequence<I...>) noexcept {
  (static_cast<void>(I + n >= c_nBlockPairs ? ++tables[I % 2][block.template Index<I>()] : 0U),
   ...);
}

template <class Block, int Bytes>
void CountRow(StRowPair row, std::int64_t n, Tables tables) noexcept {
  if (n < c_nBlockPairs) return CountShortRow<Bytes>(row, n, tables);
  do {
    Block const block = row.template Load<Block, Bytes>();
    Block const run = block.Run();
    std::int64_t length = c_nBlockPairs;
    if (block == run) {
      length += RunLength<Block, Bytes>(row.From(length), n - length, run);
      tables[0][block.First()] += static_cast<std::uint32_t>(length);
    } else {
      CountBlock(block, tables, AllOfBlock());
    }
    row = row.From(length);
    n -= length;
  } while (n >= c_nBlockPairs);
  if (n == 0) return;
  // The rest is the end of the row's last block, the other pairs of which are counted already.
  Block const last = row.From(n - c_nBlockPairs).template Load<Block, Bytes>();
  if (last == last.Run()) {
    tables[0][last.First()] += static_cast<std::uint32_t>(n);
  } else {
    CountLast(last, static_cast<std::size_t>(n), tables, AllOfBlock());
  }
}

// The counters of one call. A batch of pairs goes into 32-bit tables that cannot overflow within
// it; only a second batch makes 64-bit totals necessary.
class CPairCounters {
public:
  CPairCounters(std::span<std::uint32_t, c_nCells> counts, StPairScratch& scratch, bool twoTables,
                std::uint32_t batch)
      : m_Counts(counts), m_Scratch(scratch), m_Batch(batch), m_Room(batch) {
    std::ranges::fill(m_Counts, 0U);
    m_Odd = twoTables ? OddTable() : m_Counts;
    if (twoTables) std::ranges::fill(m_Odd, 0U);
  }

  [[nodiscard]] Tables EvenAndOdd() const noexcept { return {m_Counts.data(), m_Odd.data()}; }

  // Returns how many of `pairs` more pairs may be counted now: at least one.
  [[nodiscard]] std::int64_t Take(std::int64_t pairs) {
    if (m_Room == 0) EmptyIntoTotals();
    std::int64_t const taken = std::min(pairs, m_Room);
    m_Room -= taken;
    return taken;
  }

  // Brings the counts together; false when one needs more than 32 bits.
  [[nodiscard]] bool Finish() {
    if (m_HasTotals) {
      EmptyIntoTotals();
      return NarrowTotals();
    }
    if (m_Odd.data() != m_Counts.data())
      for (std::size_t k = 0; k < c_nCells; ++k) m_Counts[k] += m_Odd[k];
    return true;
  }

private:
  using Table = std::span<std::uint32_t, c_nCells>;

  // Places the odd table so that its cells fall into other cache sets than the same cells of the
  // even one: tables a multiple of 4096 bytes apart would evict each other.
  [[nodiscard]] Table OddTable() const {
    constexpr std::size_t page = 4096, offset = 21 * 64, cell = sizeof(std::uint32_t);
    m_Scratch.odd.resize(c_nCells + page / cell);
    auto const even = reinterpret_cast<std::uintptr_t>(m_Counts.data());
    auto const odd = reinterpret_cast<std::uintptr_t>(m_Scratch.odd.data());
    std::size_t const skip = (even + offset - odd) % page / cell;
    return Table(m_Scratch.odd.data() + skip, c_nCells);
  }

  void EmptyIntoTotals() {
    if (!m_HasTotals) m_Scratch.totals.assign(c_nCells, 0U);
    m_HasTotals = true;
    bool const twoTables = m_Odd.data() != m_Counts.data();
    for (std::size_t k = 0; k < c_nCells; ++k)
      m_Scratch.totals[k] += std::uint64_t{m_Counts[k]} + (twoTables ? m_Odd[k] : 0U);
    std::ranges::fill(m_Counts, 0U);
    std::ranges::fill(m_Odd, 0U);
    m_Room = m_Batch;
  }

  [[nodiscard]] bool NarrowTotals() const noexcept {
    std::uint64_t all = 0; // has a bit above the lowest 32 if any total has
    for (std::size_t k = 0; k < c_nCells; ++k) {
      all |= m_Scratch.totals[k];
      m_Counts[k] = static_cast<std::uint32_t>(m_Scratch.totals[k]);
    }
    return all <= std::numeric_limits<std::uint32_t>::max();
  }

  Table m_Counts;
  Table m_Odd = m_Counts;
  StPairScratch& m_Scratch;
  std::int64_t m_Batch;
  std::int64_t m_Room; // pairs that still fit into this batch
  bool m_HasTotals = false;
};

// The pairs of a block: rows of `count[0]` pairs, of which there are `count[1]` in a plane and
// `count[2]` planes of those; `a` and `b` are the voxels of the first pair.
struct StPairBox {
  std::byte const* a;
  std::byte const* b;
  std::array<std::int64_t, 3> count;
  std::array<std::int64_t, 3> stride;
};

template <class Block, int Bytes>
void CountBox(StPairBox const& box, CPairCounters& counters) {
  Tables const tables = counters.EvenAndOdd();
  for (std::int64_t z = 0; z < box.count[2]; ++z) {
    for (std::int64_t y = 0; y < box.count[1]; ++y) {
      std::int64_t const begin = y * box.stride[1] + z * box.stride[2];
      StRowPair row{box.a + begin, box.b + begin, box.stride[0]};
      for (std::int64_t n = box.count[0]; n > 0;) {
        std::int64_t const part = counters.Take(n);
        CountRow<Block, Bytes>(row, part, tables);
        row = row.From(part);
        n -= part;
      }
    }
  }
}

using BoxCounter = void (*)(StPairBox const&, CPairCounters&);

template <class Block>
BoxCounter BoxCounterOf(int bytesPerVoxel) noexcept {
  switch (bytesPerVoxel) {
  case 1:
    return CountBox<Block, 1>;
  case 2:
    return CountBox<Block, 2>;
  default:
    return CountBox<Block, 4>;
  }
}

// The one place that chooses between the implementations.
BoxCounter ChooseBoxCounter(StGrayBlock const& block, EPairPath path) noexcept {
#ifdef __SSE2__
  bool const withoutGaps = block.stride[0] == block.bytesPerVoxel;
  if (path == EPairPath::Fastest && withoutGaps)
    return BoxCounterOf<StPairBlockSse2>(block.bytesPerVoxel);
#endif
  static_cast<void>(path);
  return BoxCounterOf<StPairBlockPlain>(block.bytesPerVoxel);
}

// Makes one axis of two where rows (or planes) follow each other without gaps.
void JoinRows(StPairBox& box) noexcept {
  for (std::size_t axis : {1U, 2U}) {
    if (box.stride[0] == 0 || box.stride[axis] != box.count[0] * box.stride[0]) return;
    box.count[0] *= box.count[axis];
    box.count[axis] = 1;
  }
}

// Along one axis: the first voxel v with both v and v + d inside, and how many there are.
struct StRange {
  std::int64_t first = 0;
  std::int64_t count = 0;
};

StRange PairRange(std::int64_t extent, std::int64_t d) noexcept {
  if (extent <= 0 || d >= extent || d <= -extent) return {};
  return d >= 0 ? StRange{0, extent - d} : StRange{-d, extent + d};
}

std::int64_t Dot(std::array<std::int64_t, 3> const& a,
                 std::array<std::int64_t, 3> const& b) noexcept {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

} // namespace

bool CountPairs(StGrayBlock const& block, std::array<std::int64_t, 3> const& direction,
                std::span<std::uint32_t, c_nCells> counts, StPairScratch& scratch,
                StPairOptions const& options) {
  StRange const x = PairRange(block.extent[0], direction[0]);
  StRange const y = PairRange(block.extent[1], direction[1]);
  StRange const z = PairRange(block.extent[2], direction[2]);
  double const pairs =
      static_cast<double>(x.count) * static_cast<double>(y.count) * static_cast<double>(z.count);
  CPairCounters counters(counts, scratch, pairs >= options.twoTablesFrom, options.batch);
  if (pairs == 0) return true;

  std::byte const* const first = block.base + Dot({x.first, y.first, z.first}, block.stride);
  StPairBox box{
      first, first + Dot(direction, block.stride), {x.count, y.count, z.count}, block.stride};
  JoinRows(box);
  ChooseBoxCounter(block, options.path)(box, counters);
  return counters.Finish();
}

bool CountPairs(StGrayBlock const& block, std::array<std::int64_t, 3> const& direction,
                std::span<std::uint32_t, c_nCells> counts) {
  StPairScratch scratch;
  return CountPairs(block, direction, counts, scratch);
}

} // namespace ORVA::Impl
