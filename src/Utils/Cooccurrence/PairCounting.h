#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
namespace ORVA::Impl {
struct StGreyBlock {
  std::byte const* base;
  std::array<std::int64_t, 3> extent;
  std::array<std::int64_t, 3> stride;
  int bytesPerVoxel;
};
constexpr int c_nLevels = 256;
[[nodiscard]] bool CountPairs(StGreyBlock const& block, std::array<std::int64_t, 3> const& direction,
                              std::span<std::uint32_t, 65536> counts);
} // namespace ORVA::Impl
