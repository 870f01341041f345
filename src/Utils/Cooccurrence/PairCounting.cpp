#include "Utils/Cooccurrence/PairCounting.h"
#include <algorithm>
#include <limits>
#include <vector>
namespace ORVA::Impl {
bool CountPairs(StGreyBlock const& block, std::array<std::int64_t, 3> const& d,
                std::span<std::uint32_t, 65536> counts) {
  std::fill(counts.begin(), counts.end(), 0u);
  std::array<std::int64_t, 3> from{}, to{};
  for (std::size_t a = 0; a < 3; ++a) {
    from[a] = std::max<std::int64_t>(0, -d[a]);
    to[a] = block.extent[a] - std::max<std::int64_t>(0, d[a]);
    if (from[a] >= to[a]) return true;
  }
  std::int64_t const offset = d[0] * block.stride[0] + d[1] * block.stride[1] + d[2] * block.stride[2];
  std::vector<std::uint64_t> wide(65536);
  for (auto z = from[2]; z < to[2]; ++z)
    for (auto y = from[1]; y < to[1]; ++y) {
      std::byte const* p = block.base + z * block.stride[2] + y * block.stride[1] +
                           from[0] * block.stride[0] + (block.bytesPerVoxel - 1);
      for (auto x = from[0]; x < to[0]; ++x, p += block.stride[0])
        ++wide[std::to_integer<std::size_t>(*p) * 256 + std::to_integer<std::size_t>(p[offset])];
    }
  for (std::size_t i = 0; i < 65536; ++i) {
    if (wide[i] > std::numeric_limits<std::uint32_t>::max()) return false;
    counts[i] = static_cast<std::uint32_t>(wide[i]);
  }
  return true;
}
} // namespace ORVA::Impl
