// Limits for what is allocated: the machine's memory, and what is held of a large image at a time.
//
//   RefuseBeyondMemory(bytes, "the image");   // "the image needs 3.6 TiB, more than ..."
//   double const bytes = SlabBytes();         // 128 MiB, or what SELU_SLAB_BYTES says
#pragma once

#include "base/Errors.h"
#include "base/Texts.h"

#include <cstdlib>
#include <string>

#include <unistd.h>

namespace selu {

/// Bytes of the machine's memory.
[[nodiscard]] inline double MemoryBytes() {
  return static_cast<double>(::sysconf(_SC_PHYS_PAGES)) *
         static_cast<double>(::sysconf(_SC_PAGESIZE));
}

/// Throws CAppError when so many bytes would not fit.
inline void RefuseBeyondMemory(double bytes, std::string const& what) {
  if (bytes > MemoryBytes())
    throw CAppError(what + " needs " + BytesText(bytes) + ", more than this machine's memory of " +
                    BytesText(MemoryBytes()));
}

/// Bytes of pixels that commands hold at a time which work by slabs: those of the environment
/// variable SELU_SLAB_BYTES, or 128 MiB. Throws CUsageError where that is no number above 0.
[[nodiscard]] inline double SlabBytes() {
  constexpr double usual = 128 << 20;
  char const* const text = std::getenv("SELU_SLAB_BYTES");
  if (text == nullptr || *text == 0) return usual;
  auto const bytes = ParseUnsigned(text);
  if (!bytes || *bytes == 0)
    throw CUsageError("SELU_SLAB_BYTES needs a whole number above 0, not \"" + std::string(text) +
                      "\"");
  return static_cast<double>(*bytes);
}

} // namespace selu
