// Mesh files: any bytes are refused in a sentence or give faces of corners that are there.
#include "Fuzzing.h"

#include <base/Errors.h>
#include <walks/MeshFile.h>

#include <cmath>
#include <cstring>
#include <string_view>

namespace {

using fuzz::Require;

void CheckMesh(selu::StMesh const& mesh, std::size_t bytes) {
  Require(!mesh.faces.empty(), "a mesh has faces");
  Require(mesh.corners.size() <= bytes / 6 + 1, "a corner takes bytes of the file");
  Require(mesh.faces.size() <= bytes / 2 + 1, "a face takes bytes of the file");
  std::size_t named = 0;
  for (auto const& face : mesh.faces)
    for (auto const corner : face) {
      ++named;
      Require(corner < mesh.corners.size(), "a face names corners that are there");
    }
  Require(named <= bytes / 2 + 1, "a corner's number takes bytes of the file");
  for (auto const& p : mesh.corners)
    Require(std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z), "corners are finite");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  std::string_view const bytes(reinterpret_cast<char const*>(data), size);
  try {
    CheckMesh(selu::ParseMesh(bytes), size);
  } catch (selu::CAppError const& error) {
    Require(std::strlen(error.what()) > 0, "an error says what is wrong");
    Require(std::strchr(error.what(), '\n') == nullptr, "an error is one line");
  }
  return 0;
}
