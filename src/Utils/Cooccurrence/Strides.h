// Boxes of voxels that are walked together in the order that suits their memory, not their axes.
// Example:
//   Impl::StJointBox<2> box{{nx, ny, nz}, {stridesA, stridesB}};
//   box.Normalize();                                  // rows along the shortest stride of the
//   first box.ForEachRow([&](std::array<std::int64_t, 2> const& offset) { Row(a + offset[0], ...);
//   });
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

namespace ORVA::Impl {

/// The length of a stride; 2^63 for the most negative one.
[[nodiscard]] constexpr std::uint64_t StrideLength(std::int64_t stride) noexcept {
  return stride < 0 ? std::uint64_t{0} - static_cast<std::uint64_t>(stride)
                    : static_cast<std::uint64_t>(stride);
}

/// N boxes of the same extents, each with byte strides of its own, and the offset of its first
/// voxel from an address that the caller keeps. The extents must not be negative.
template <std::size_t N>
struct StJointBox {
  std::array<std::int64_t, 3> extent{};
  std::array<std::array<std::int64_t, 3>, N> stride{};
  std::array<std::int64_t, N> offset{};

  [[nodiscard]] bool IsEmpty() const noexcept {
    return extent[0] <= 0 || extent[1] <= 0 || extent[2] <= 0;
  }

  /// Reorders the voxels: each axis runs upward in the first box's memory, the axes follow each
  /// other by its strides, shortest first, and an axis that continues the one before it in all
  /// boxes becomes part of it. What stands beside what in the boxes stays.
  void Normalize() noexcept {
    if (IsEmpty()) return;
    for (std::size_t axis = 0; axis < 3; ++axis)
      if (extent[axis] == 1) {
        for (auto& strides : stride) strides[axis] = 0;
      } else if (stride[0][axis] < 0) {
        Flip(axis);
      }
    if (ComesBefore(1, 0)) Swap(0, 1);
    if (ComesBefore(2, 1)) Swap(1, 2);
    if (ComesBefore(1, 0)) Swap(0, 1);
    if (Join(0, 1)) {
      Swap(1, 2);
      Join(0, 1);
    } else if (Join(1, 2)) {
      Join(0, 1);
    }
  }

  /// Calls row(offsets of the row's first voxels) for each row along axis 0.
  template <class Row>
  void ForEachRow(Row row) const {
    if (IsEmpty()) return;
    for (std::int64_t z = 0; z < extent[2]; ++z)
      for (std::int64_t y = 0; y < extent[1]; ++y) {
        auto at = offset;
        for (std::size_t k = 0; k < N; ++k) at[k] += y * stride[k][1] + z * stride[k][2];
        row(at);
      }
  }

private:
  void Flip(std::size_t axis) noexcept {
    for (std::size_t k = 0; k < N; ++k) {
      offset[k] += (extent[axis] - 1) * stride[k][axis];
      stride[k][axis] = -stride[k][axis];
    }
  }
  void Swap(std::size_t a, std::size_t b) noexcept {
    std::swap(extent[a], extent[b]);
    for (auto& strides : stride) std::swap(strides[a], strides[b]);
  }
  // Axes of one voxel come last, then the longer strides.
  [[nodiscard]] bool ComesBefore(std::size_t a, std::size_t b) const noexcept {
    if (extent[a] == 1 || extent[b] == 1) return extent[a] != 1 && extent[b] == 1;
    return StrideLength(stride[0][a]) < StrideLength(stride[0][b]);
  }
  // Appends axis b to axis a where it continues it.
  bool Join(std::size_t a, std::size_t b) noexcept {
    if (extent[b] == 1) return true;
    if (extent[a] == 1) return false;
    for (auto const& strides : stride)
      if (strides[a] == 0 || strides[b] != extent[a] * strides[a]) return false;
    extent[a] *= extent[b];
    extent[b] = 1;
    return true;
  }
};

/// Renames the axes of a block of voxels (base, extent, stride), and those of a displacement alike,
/// so that rows run upward along the shortest stride: the pairs of voxels stay the same.
template <class Block>
void SortAxes(Block& block, std::array<std::int64_t, 3>& displacement) noexcept {
  for (std::size_t axis = 0; axis < 3; ++axis) {
    if (block.extent[axis] <= 0) return;
    if (block.stride[axis] >= 0 || block.extent[axis] == 1) continue;
    block.base += (block.extent[axis] - 1) * block.stride[axis];
    block.stride[axis] = -block.stride[axis];
    displacement[axis] = -displacement[axis];
  }
  auto const sortPair = [&](std::size_t a, std::size_t b) {
    bool const isLess = block.extent[a] == 1 || block.extent[b] == 1
                            ? block.extent[a] != 1
                            : block.stride[a] <= block.stride[b];
    if (isLess) return;
    std::swap(block.extent[a], block.extent[b]);
    std::swap(block.stride[a], block.stride[b]);
    std::swap(displacement[a], displacement[b]);
  };
  sortPair(0, 1);
  sortPair(1, 2);
  sortPair(0, 1);
}

} // namespace ORVA::Impl
