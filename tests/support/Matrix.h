// Co-occurrence matrices in tests: read from the library's output image, or counted by hand.
#pragma once

#include "Images.h"

#include <SeluUtils/Cooccurrence.h>

#include <cstdint>
#include <vector>

namespace test {

using Matrix = std::vector<std::uint64_t>; // row i, column j at i * 256 + j

inline constexpr std::size_t c_cells = 256 * 256;

/// Matrix s of an output image.
inline Matrix ReadMatrix(ORVA::IImage const& out, ORVA::int64 s = 0) {
  auto const access = out.CreateAccess(false);
  Matrix matrix(c_cells);
  for (ORVA::int64 i = 0; i < 256; ++i)
    for (ORVA::int64 j = 0; j < 256; ++j) {
      std::uint32_t count = 0;
      std::memcpy(&count,
                  access.Base() + s * access.Stride(0) + i * access.Stride(1) +
                      j * access.Stride(2),
                  sizeof count);
      matrix[static_cast<std::size_t>(i * 256 + j)] = count;
    }
  return matrix;
}

/// What the library counts for one direction.
inline Matrix CountWithLibrary(ORVA::IImage const& image, ORVA::CTriple<long> direction) {
  ORVA::CCooccurrence texture("texture", nullptr);
  ORVA::CImage out(ORVA::IMAGE_GREY_32, ORVA::CSize(1, 256, 256));
  texture.ComputeMatrix(out, image, &direction);
  return ReadMatrix(out);
}

/// Every voxel and its partner looked up by coordinates, the level taken by division.
template <class T>
Matrix CountByHand(ORVA::IImage const& image, ORVA::CTriple<long> d) {
  std::vector<T> const pixels = Pixels<T>(image);
  auto const size = image.Size();
  constexpr double unit = sizeof(T) == 1 ? 1 : sizeof(T) == 2 ? 256 : 16777216;
  auto const level = [&](ORVA::int64 x, ORVA::int64 y, ORVA::int64 z) {
    auto const index = static_cast<std::size_t>((z * size.y + y) * size.x + x);
    return static_cast<std::size_t>(static_cast<double>(pixels[index]) / unit);
  };
  Matrix matrix(c_cells);
  for (ORVA::int64 z = 0; z < size.z; ++z)
    for (ORVA::int64 y = 0; y < size.y; ++y)
      for (ORVA::int64 x = 0; x < size.x; ++x) {
        ORVA::int64 const u = x + d.x, v = y + d.y, w = z + d.z;
        if (u < 0 || v < 0 || w < 0 || u >= size.x || v >= size.y || w >= size.z) continue;
        ++matrix[level(x, y, z) * 256 + level(u, v, w)];
      }
  return matrix;
}

inline std::uint64_t Total(Matrix const& matrix) {
  std::uint64_t total = 0;
  for (auto const count : matrix) total += count;
  return total;
}

inline Matrix Transposed(Matrix const& matrix) {
  Matrix transposed(c_cells);
  for (std::size_t i = 0; i < 256; ++i)
    for (std::size_t j = 0; j < 256; ++j) transposed[j * 256 + i] = matrix[i * 256 + j];
  return transposed;
}

} // namespace test
