#include "Utils/Texture/ObjectPairs.h"

#include <SeluUtils/Texture/PairCounter.h>

#include "Utils/Texture/PixelBlocks.h"

#include <algorithm>
#include <type_traits>
#include <utility>

namespace ORVA::Impl {

namespace {

template <class Label, class Level>
void CountRun(StLabeledLevels const& image, StPlacedRun const& run,
              std::array<int64, 3> const& step, CObjectPairs& pairs) {
  std::array<int64, 3> to{};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    // The sum cannot overflow once the step is shorter than the image.
    int64 const extent = image.extents[axis];
    if (step[axis] >= extent || step[axis] <= -extent) return;
    to[axis] = run.at[axis] + step[axis];
    if (axis > 0 && (to[axis] < 0 || to[axis] >= extent)) return;
  }
  int64 const skip = std::max(int64{0}, -to[0]);
  int64 const end = std::min(int64{run.length}, image.extents[0] - to[0]);
  auto const offset = [](std::array<int64, 3> const& at, std::array<int64, 3> const& strides) {
    return at[0] * strides[0] + at[1] * strides[1] + at[2] * strides[2];
  };
  // Offsets, not addresses: voxel `to` may lie before the image where the pairs begin later.
  int64 const label = offset(to, image.labelStrides);
  int64 const first = offset(run.at, image.levelStrides);
  int64 const second = offset(to, image.levelStrides);
  for (int64 i = skip; i < end; ++i) {
    auto const other = ReadPixel<Label>(image.labels + (label + i * image.labelStrides[0]));
    if (static_cast<std::uint32_t>(other) != run.label) continue;
    std::uint32_t const a = ReadPixel<Level>(image.levels + (first + i * image.levelStrides[0]));
    std::uint32_t const b = ReadPixel<Level>(image.levels + (second + i * image.levelStrides[0]));
    if (a != 0 && b != 0) pairs.Add(a, b);
  }
}

} // namespace

CObjectPairs::CObjectPairs(int levels, bool isSymmetric)
    : m_Side(static_cast<std::size_t>(levels) + 1), m_IsSymmetric(isSymmetric) {
  if (levels <= CPairCounter::c_mostDenseLevels) m_Table.resize(m_Side * m_Side);
}

void CObjectPairs::Append(std::uint32_t key, std::uint64_t count) {
  std::uint32_t const i = key >> 16U, j = key & 0xFFFFU;
  if (!m_IsSymmetric) {
    m_Cells.push_back({key, count});
  } else if (i == j) {
    m_Cells.push_back({key, 2 * count});
  } else {
    m_Cells.push_back({key, count});
    m_Cells.push_back({CSparsePairs::Key(j, i), count});
  }
}

void CObjectPairs::TakeCells() {
  m_Cells.clear();
  for (std::uint32_t const key : m_Used)
    Append(key, std::exchange(m_Table[(key >> 16U) * m_Side + (key & 0xFFFFU)], 0));
  m_Used.clear();
  if (!std::exchange(m_HasSparse, false)) return;
  m_Sparse.Settle();
  for (std::size_t k = 0; k < m_Sparse.Cells().keys.size(); ++k)
    Append(m_Sparse.Cells().keys[k], m_Sparse.Cells().counts[k]);
  m_Sparse.Clear();
}

// Small counts straight from the table, each cell once.
void CObjectPairs::MoveSmall(CPairSums& sums) {
  for (std::uint32_t const key : m_Used) {
    std::size_t const i = key >> 16U, j = key & 0xFFFFU;
    std::uint64_t const count = std::exchange(m_Table[i * m_Side + j], 0);
    if (m_IsSymmetric)
      sums.AddBoth(i, j, static_cast<std::size_t>(count));
    else
      sums.Add(i, j, count);
  }
  m_Used.clear();
}

void CObjectPairs::MoveTo(CPairSums& sums, bool inOrder) {
  bool const hasLarge = std::exchange(m_HasLarge, false);
  if (!hasLarge && !inOrder && !m_HasSparse) return MoveSmall(sums);
  TakeCells();
  auto const isLarge = [](StCell const& cell) { return cell.count >= CPairSums::c_nSmallCounts; };
  if (inOrder || std::ranges::any_of(m_Cells, isLarge))
    std::ranges::sort(m_Cells, {}, &StCell::key);
  for (StCell const& cell : m_Cells)
    sums.Add(std::size_t{cell.key >> 16U}, std::size_t{cell.key & 0xFFFFU}, cell.count);
}

RunCounter RunCounterOf(IImage::CType labels, int bytesPerLevel) {
  RunCounter counter = nullptr;
  VisitPixelType(labels, [&]<class T>(T) {
    if constexpr (std::is_integral_v<T>)
      counter = bytesPerLevel == 1 ? CountRun<T, std::uint8_t> : CountRun<T, std::uint16_t>;
  });
  return counter;
}

} // namespace ORVA::Impl
