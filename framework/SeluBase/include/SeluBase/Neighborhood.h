// Neighborhood codes, the move sets behind them, and neighbor offset tables.
//
//   #include <iostream>
//   int64 const code = NEIGHBORHOOD_26;    // for a walk: all moves to the 26 neighbors
//   int64 sum = 0;
//   for (int64 const dx : CNeighborhood2dDiffN8::dx) sum += dx;
//   std::cout << CNeighborhood2dDiffN8::dx.size() << ' ' << sum;    // prints 8 0
#pragma once

#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>

namespace ORVA {

/// 2D: the four axis moves.
inline constexpr int64 NEIGHBORHOOD_4 = 0;
/// 2D: the axis moves and ±(1, 1).
inline constexpr int64 NEIGHBORHOOD_6_1 = 3;
/// 2D: the axis moves and ±(1, -1).
inline constexpr int64 NEIGHBORHOOD_6_2 = 6;
/// 2D: the axis moves and all four diagonal moves.
inline constexpr int64 NEIGHBORHOOD_8 = 9;
/// 3D: the six axis moves.
inline constexpr int64 NEIGHBORHOOD_6 = 12;
/// 3D: the axis moves and ±(1, 1, 0), ±(1, 0, 1), ±(0, 1, 1), ±(1, 1, 1).
inline constexpr int64 NEIGHBORHOOD_14_1 = 15;
/// 3D: the axis moves and ±(1, 1, 0), ±(1, 0, 1), ±(0, 1, -1), ±(1, 1, 1).
inline constexpr int64 NEIGHBORHOOD_14_2 = 18;
/// 3D: all 26 moves.
inline constexpr int64 NEIGHBORHOOD_26 = 21;

namespace Impl {

/// One component of the 26 (or, in the plane, 8) offsets other than 0, in raster order: x fastest.
template <std::size_t N>
constexpr std::array<int64, N> NeighborOffsets(int64 divisor) {
  std::array<int64, N> offsets{};
  std::size_t k = 0;
  auto const cells = static_cast<int64>(N) + 1;
  for (int64 cell = 0; cell < cells; ++cell)
    if (cell != cells / 2) offsets[k++] = cell / divisor % 3 - 1;
  return offsets;
}

} // namespace Impl

/// Offsets of a pixel's 8 neighbors in raster order: (-1, -1), (0, -1), (1, -1), (-1, 0), ...
struct CNeighborhood2dDiffN8 {
  /// Offset along x of each neighbor.
  static constexpr std::array<int64, 8> dx = Impl::NeighborOffsets<8>(1);
  /// Offset along y of each neighbor.
  static constexpr std::array<int64, 8> dy = Impl::NeighborOffsets<8>(3);
};

/// Offsets of a voxel's 26 neighbors in raster order: (-1, -1, -1), (0, -1, -1), ...
struct CNeighborhood3dDiffN26 {
  /// Offset along x of each neighbor.
  static constexpr std::array<int64, 26> dx = Impl::NeighborOffsets<26>(1);
  /// Offset along y of each neighbor.
  static constexpr std::array<int64, 26> dy = Impl::NeighborOffsets<26>(3);
  /// Offset along z of each neighbor.
  static constexpr std::array<int64, 26> dz = Impl::NeighborOffsets<26>(9);
};

} // namespace ORVA
