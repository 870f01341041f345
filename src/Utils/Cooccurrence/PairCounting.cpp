#include "Utils/Cooccurrence/PairCounting.h"

#include "Utils/Cooccurrence/PairBlock.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace ORVA::Impl {
namespace {

using Index = std::uint16_t;
using Indices = std::span<Index const>;

// ---------------------------------------------------------------------------------------------
// Counting indices

constexpr std::size_t c_nUnrolled = 16;
constexpr std::size_t c_nRun = 8; // equal pairs that are counted together

// Two tables of counters, for even and odd pairs, or one for both.
struct StTables {
  std::uint32_t* even;
  std::uint32_t* odd;

  template <std::size_t... I>
  [[gnu::always_inline]] void Count(Index const* indices,
                                    std::index_sequence<I...>) const noexcept {
    (++(I % 2 == 0 ? even : odd)[indices[I]], ...);
  }
};

// The processor reads the indices one by one: that is less work than to take wider words apart. Out
// of line, so that no compiler joins these reads with the wider ones of CountRuns.
[[gnu::noinline]] void CountEach(Indices indices, StTables tables) noexcept {
  for (std::size_t k = 0; k < indices.size(); k += c_nUnrolled)
    tables.Count(indices.data() + k, std::make_index_sequence<c_nUnrolled>());
}

// Four successive indices.
std::uint64_t Word(Index const* indices) noexcept {
  std::uint64_t word;
  std::memcpy(&word, indices, sizeof word);
  return word;
}

// The same counts where equal pairs follow each other, as in the background of an image.
[[gnu::noinline]] void CountRuns(Indices indices, StTables tables) noexcept {
  Index cell = 0;
  std::uint32_t length = 0; // of the run that goes on: one addition when it ends
  for (std::size_t k = 0; k < indices.size(); k += c_nRun) {
    std::uint64_t const word = Word(&indices[k]), next = Word(&indices[k + c_nRun / 2]);
    if (((word ^ next) | (word ^ std::rotl(word, 16))) != 0) {
      tables.Count(&indices[k], std::make_index_sequence<c_nRun>());
      continue;
    }
    if (indices[k] != cell) tables.even[cell] += std::exchange(length, 0U);
    cell = indices[k];
    length += c_nRun;
  }
  tables.even[cell] += length;
}

// Whether runs are likely, from a look at a few places. Single indices are read: a wider word may
// span two stores that the processor has yet to bring together.
bool HasRuns(Indices indices) noexcept {
  bool any = false;
  for (std::size_t k = 0; k + c_nRun <= indices.size(); k += 4 * c_nUnrolled) {
    int const middle = indices[k] ^ indices[k + c_nRun / 2];
    int const last = indices[k] ^ indices[k + c_nRun - 1];
    any |= (middle | last) == 0;
  }
  return any;
}

// Says that the tables do not overlap, so that compilers use vectors without a question.
void AddTable(std::uint32_t* __restrict to, std::uint32_t const* __restrict from) noexcept {
  for (std::size_t k = 0; k < c_nCells; ++k) to[k] += from[k];
}

// The counters of one call. A batch of pairs goes into 32-bit tables that cannot overflow within
// it; only a second batch makes 64-bit totals necessary.
class CPairCounters {
public:
  CPairCounters(std::span<std::uint32_t, c_nCells> counts, StPairScratch& scratch,
                StPairOptions const& options)
      : m_Counts(counts), m_Scratch(scratch), m_Batch(options.batch), m_Room(options.batch),
        m_TwoTablesFrom(options.twoTablesFrom) {
    std::ranges::fill(m_Counts, 0U);
  }

  // Returns how many of `pairs` more pairs may be counted now: at least one, at most c_nMostAtOnce.
  static constexpr std::int64_t c_nMostAtOnce = 256;
  [[nodiscard]] std::int64_t Take(std::int64_t pairs) {
    if (m_Room == 0) [[unlikely]]
      EmptyIntoTotals();
    std::int64_t const taken = std::min({pairs, m_Room, c_nMostAtOnce});
    m_Room -= taken;
    return taken;
  }

  // Pairs wait here as indices until there are enough of them, so that the counting knows no ends
  // of rows. Write those that may be counted at Waiting(), then say how many.
  [[nodiscard]] Index* Waiting() noexcept { return m_Waiting.data() + m_WaitingPairs; }
  void Added(std::int64_t n) {
    m_WaitingPairs += static_cast<std::size_t>(n);
    if (m_WaitingPairs >= c_nEnough) CountWaiting();
  }

  // Whether so many more pairs may be counted that AddRows need not ask.
  [[nodiscard]] bool HasRoomForRows() const noexcept {
    return m_Room >= static_cast<std::int64_t>(c_nEnough) + c_nMostAtOnce;
  }

  // Takes and adds rows of `n` pairs each, at most c_nMostAtOnce, until there are enough. `row`
  // moves on; how many it moved is returned. Only whole blocks are written: what the last one of a
  // row has too much the next row overwrites.
  template <class RowPair>
  std::int64_t AddRows(RowPair& row, std::int64_t n, std::int64_t rows, std::int64_t rowStride) {
    Index* const enough = m_Waiting.data() + c_nEnough;
    Index* to = Waiting();
    std::int64_t added = 0;
    for (; added < rows && to < enough; ++added, to += n) {
      row.WriteBlocks(n, to);
      row.a += rowStride;
      row.b += rowStride;
    }
    m_Room -= added * n;
    Added(added * n);
    return added;
  }

  // Brings the counts together; false when one needs more than 32 bits.
  [[nodiscard]] bool Finish() {
    CountRest();
    if (m_HasTotals) {
      EmptyIntoTotals();
      return NarrowTotals();
    }
    if (HasTwoTables()) AddTable(m_Counts.data(), m_Odd.data());
    return true;
  }

private:
  using Table = std::span<std::uint32_t, c_nCells>;
  static constexpr std::size_t c_nEnough = 256;
  static constexpr std::int64_t c_nSample = 64; // one of so many fillings is looked at

  [[nodiscard]] bool HasTwoTables() const noexcept { return m_Odd.data() != m_Counts.data(); }

  [[gnu::noinline]] void CountWaiting() {
    if (!HasTwoTables() && m_Fillings++ % c_nSample == 0) ConsiderTwoTables();
    std::size_t const whole = m_WaitingPairs / c_nUnrolled * c_nUnrolled;
    Indices const indices(m_Waiting.data(), whole);
    StTables const tables{m_Counts.data(), m_Odd.data()};
    HasRuns(indices) ? CountRuns(indices, tables) : CountEach(indices, tables);
    m_WaitingPairs -= whole;
    std::copy_n(m_Waiting.begin() + static_cast<std::ptrdiff_t>(whole), c_nUnrolled,
                m_Waiting.begin());
  }

  void CountRest() noexcept {
    for (std::size_t k = 0; k < m_WaitingPairs; ++k) ++m_Counts[m_Waiting[k]];
    m_WaitingPairs = 0;
  }

  // An increment waits for the store of the one before it where neighboring pairs are equal, but
  // for tables of their own. Clearing and merging the second table has to be worth it.
  void ConsiderTwoTables() {
    std::int64_t equal = 0;
    for (std::size_t k = 1; k < c_nEnough; ++k) equal += m_Waiting[k] == m_Waiting[k - 1] ? 1 : 0;
    m_EqualPairs += equal * c_nSample;
    if (m_EqualPairs < m_TwoTablesFrom) return;
    m_Odd = OddTable();
    std::ranges::fill(m_Odd, 0U);
  }

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
    CountRest();
    if (!m_HasTotals) m_Scratch.totals.assign(c_nCells, 0U);
    m_HasTotals = true;
    for (std::size_t k = 0; k < c_nCells; ++k)
      m_Scratch.totals[k] += std::uint64_t{m_Counts[k]} + (HasTwoTables() ? m_Odd[k] : 0U);
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
  Table m_Odd = m_Counts; // the same as long as there is one table
  StPairScratch& m_Scratch;
  std::int64_t m_Batch;
  std::int64_t m_Room; // pairs that still fit into this batch
  std::int64_t m_TwoTablesFrom;
  std::int64_t m_EqualPairs = 0;  // estimated number of equal neighbors among the pairs
  std::int64_t m_Fillings = 0;    // times that m_Waiting was filled
  std::size_t m_WaitingPairs = 0; // below c_nEnough between two rows
  std::array<Index, c_nEnough + c_nMostAtOnce + c_nUnrolled> m_Waiting{};
  bool m_HasTotals = false;
};

// ---------------------------------------------------------------------------------------------
// Rows and boxes of pairs

// Two rows of voxels of which the i-th ones make a pair.
template <class Block, int Bytes>
struct StRowPair {
  std::byte const* a;
  std::byte const* b;
  std::int64_t stride; // bytes

  // Skips pairs. The stride is a constant to the compiler where the block knows it.
  void Skip(std::int64_t pairs) noexcept {
    std::int64_t const bytes = pairs * Block::template Stride<Bytes>(stride);
    a += bytes;
    b += bytes;
  }

  void WriteBlock(Index* to) const noexcept { Block::template Write<Bytes>(a, b, stride, to); }

  // Writes the indices of `n` pairs and what it takes to make whole blocks of them.
  void WriteBlocks(std::int64_t n, Index* to) const noexcept {
    StRowPair row = *this;
    for (; n > 0; n -= c_nBlockPairs, to += c_nBlockPairs, row.Skip(c_nBlockPairs))
      row.WriteBlock(to);
  }

  // Writes the indices of `n` pairs; of what is more than whole blocks by a last block that
  // overlaps the one before it.
  void Write(std::int64_t n, Index* to) const noexcept {
    StRowPair row = *this;
    if (n < c_nBlockPairs) {
      for (; n > 0; --n, row.Skip(1)) *to++ = PairIndex<Bytes>(row.a, row.b);
      return;
    }
    for (; n >= c_nBlockPairs; n -= c_nBlockPairs, to += c_nBlockPairs, row.Skip(c_nBlockPairs))
      row.WriteBlock(to);
    if (n == 0) return;
    row.Skip(n - c_nBlockPairs);
    row.WriteBlock(to + n - c_nBlockPairs);
  }
};

template <class RowPair>
void CountRow(RowPair row, std::int64_t n, CPairCounters& counters) {
  while (n > 0) {
    std::int64_t const part = counters.Take(n);
    row.Write(part, counters.Waiting());
    counters.Added(part);
    row.Skip(part);
    n -= part;
  }
}

// The pairs of a block: rows of `count[0]` pairs, of which there are `count[1]` in a plane and
// `count[2]` planes of those; `a` and `b` are the voxels of the first pair.
struct StPairBox {
  std::byte const* a;
  std::byte const* b;
  std::array<std::int64_t, 3> count;
  std::array<std::int64_t, 3> stride;
  std::int64_t followed = 0; // rows of a plane behind each of which a whole block may be read
};

template <class Block, int Bytes>
void CountBox(StPairBox const& box, CPairCounters& counters) {
  for (std::int64_t z = 0; z < box.count[2]; ++z) {
    std::int64_t const plane = z * box.stride[2];
    StRowPair<Block, Bytes> row{box.a + plane, box.b + plane, box.stride[0]};
    std::int64_t y = 0;
    while (y < box.followed && counters.HasRoomForRows())
      y += counters.AddRows(row, box.count[0], box.followed - y, box.stride[1]);
    for (; y < box.count[1]; ++y) { // no step beyond the last row, whose stride may be any
      std::int64_t const begin = plane + y * box.stride[1];
      CountRow(StRowPair<Block, Bytes>{box.a + begin, box.b + begin, box.stride[0]}, box.count[0],
               counters);
    }
  }
}

using BoxCounter = void (*)(StPairBox const&, CPairCounters&);

template <class Block>
BoxCounter BoxCounterOf(StGrayBlock const& block) noexcept {
  if (block.hasLevelsFromOne) return CountBox<Block, c_levelsFromOne>;
  switch (block.bytesPerVoxel) {
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
  if (path == EPairPath::Fastest && withoutGaps) return BoxCounterOf<StPairBlockSse2>(block);
#endif
  static_cast<void>(path);
  return BoxCounterOf<StPairBlockPlain>(block);
}

// Makes one axis of two where rows (or planes) follow each other without gaps.
void JoinRows(StPairBox& box) noexcept {
  for (std::size_t axis : {1U, 2U}) {
    if (box.stride[0] == 0 || box.stride[axis] != box.count[0] * box.stride[0]) return;
    box.count[0] *= box.count[axis];
    box.count[axis] = 1;
  }
}

// The rows of a plane behind which a whole block of pairs may be read: those that are followed,
// without a gap, by rows of the same plane. Long rows do without.
std::int64_t FollowedRows(StGrayBlock const& block,
                          std::array<std::int64_t, 3> const& count) noexcept {
  bool const withoutGaps = block.stride[0] == block.bytesPerVoxel &&
                           block.stride[1] == block.extent[0] * block.stride[0];
  if (!withoutGaps || count[0] > CPairCounters::c_nMostAtOnce) return 0;
  std::int64_t const behind = (c_nBlockPairs - 2) / block.extent[0] + 1;
  return std::max(count[1] - behind, std::int64_t{0});
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
  CPairCounters counters(counts, scratch, options);
  if (x.count == 0 || y.count == 0 || z.count == 0) return true;

  std::byte const* const first = block.base + Dot({x.first, y.first, z.first}, block.stride);
  StPairBox box{
      first, first + Dot(direction, block.stride), {x.count, y.count, z.count}, block.stride};
  JoinRows(box);
  box.followed = FollowedRows(block, box.count);
  ChooseBoxCounter(block, options.path)(box, counters);
  return counters.Finish();
}

bool CountPairs(StGrayBlock const& block, std::array<std::int64_t, 3> const& direction,
                std::span<std::uint32_t, c_nCells> counts) {
  StPairScratch scratch;
  return CountPairs(block, direction, counts, scratch);
}

} // namespace ORVA::Impl
