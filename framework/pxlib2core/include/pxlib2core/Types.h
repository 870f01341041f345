// Integer types of the framework: every coordinate, count and step index is an int64.
#pragma once

#include <cstdint>

namespace ORVA {

using int64 = std::int64_t;
using uint64 = std::uint64_t;

} // namespace ORVA
