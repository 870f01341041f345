// Integers of 128 bits, named once for all compilers.
//
//   uint64 const a = uint64{1} << 63;
//   Impl::uint128 const product = Impl::uint128{a} * a;       // 2^126, never wraps
//   auto const high = static_cast<uint64>(product >> 64);     // 2^62
#pragma once

#include <pxlib2core/Types.h>

namespace ORVA::Impl {

__extension__ using int128 = __int128;
__extension__ using uint128 = unsigned __int128;

} // namespace ORVA::Impl
