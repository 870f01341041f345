#include "images/PngGrid.h"

#include "images/GridText.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>

namespace selu {

void ReadPngGrid(std::filesystem::path const& path, StGrid& grid) {
  constexpr std::uint32_t mostText = 1 << 16;
  constexpr int mostChunks = 1000, signatureBytes = 8, checksumBytes = 4;
  std::string const keyword(c_pngGridKeyword, sizeof c_pngGridKeyword); // with the 0 that ends it
  std::ifstream file(path, std::ios::binary);
  file.seekg(signatureBytes);
  for (int chunk = 0; chunk < mostChunks; ++chunk) {
    std::array<unsigned char, 8> head;
    if (!file.read(reinterpret_cast<char*>(head.data()), head.size())) return;
    std::uint32_t const bytes = std::uint32_t{head[0]} << 24U | std::uint32_t{head[1]} << 16U |
                                std::uint32_t{head[2]} << 8U | head[3];
    if (std::memcmp(&head[4], "IDAT", 4) == 0) return;
    if (std::memcmp(&head[4], "tEXt", 4) != 0 || bytes > mostText) {
      file.seekg(std::streamoff{bytes} + checksumBytes, std::ios::cur);
      continue;
    }
    std::string text(bytes, '\0');
    if (!file.read(text.data(), bytes)) return;
    if (text.starts_with(keyword) && TakeGrid(text.substr(keyword.size()), grid)) return;
    file.seekg(checksumBytes, std::ios::cur);
  }
}

} // namespace selu
