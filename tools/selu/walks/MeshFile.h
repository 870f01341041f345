// Surfaces from OFF and STL files.
//
//   StMesh const mesh = ReadMesh("part.stl");           // text or binary
//   StMesh const same = ParseMesh(bytes);               // from the bytes of such a file
#pragma once

#include "walks/Walk.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace selu {

/// In the file's own unit. Faces name corners from 0 on.
struct StMesh {
  std::vector<RealPoint> corners;
  std::vector<std::vector<std::uint32_t>> faces;
};

/// Throws CAppError, a sentence that names the line, for what is neither an OFF nor an STL file,
/// and for numbers that are not finite. Takes time and memory in proportion to the bytes, whatever
/// they promise.
[[nodiscard]] StMesh ParseMesh(std::string_view bytes);
/// The same with the file's name in the sentence; also for files that do not fit into memory.
[[nodiscard]] StMesh ReadMesh(std::string const& path);

} // namespace selu
