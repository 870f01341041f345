// A limit for what may be allocated: the machine's memory.
//
//   RefuseBeyondMemory(bytes, "the image");   // "the image needs 3.6 TiB, more than ..."
#pragma once

#include "base/Errors.h"
#include "base/Texts.h"

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

} // namespace selu
