// Arguments that several commands take.
//
//   ORVA::uint64 const seed = ParseSeed("42");
//   ORVA::CSize const size = ParseSize("64,64,64");
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2image/Size.h>

#include <string>

namespace selu {

/// Both throw CUsageError for a text that is none.
[[nodiscard]] ORVA::uint64 ParseSeed(std::string const& text);
/// Two or three extents above 0.
[[nodiscard]] ORVA::CSize ParseSize(std::string const& text);

} // namespace selu
