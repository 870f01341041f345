// Integer types of the framework: every coordinate, count and step index is an int64.
//
//   int64 const voxels = int64{4096} * 4096 * 4096;
//   uint64 const bytes = 2 * static_cast<uint64>(voxels);
#pragma once

#include <cstdint>

namespace ORVA {

/// Signed 64-bit integer: coordinates and lengths.
using int64 = std::int64_t;
/// Unsigned 64-bit integer: counts and random bits.
using uint64 = std::uint64_t;

} // namespace ORVA
