#include "images/PngWriter.h"

#include "base/Texts.h"
#include "images/GridText.h"
#include "images/PngGrid.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <string_view>
#include <vector>

#include <zlib.h>

namespace selu {
namespace {

using Row = std::vector<std::uint8_t>;

void AppendBigEndian(std::string& text, std::uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8)
    text += static_cast<char>(number >> static_cast<unsigned>(shift) & 255U);
}

void AppendChunk(std::string& file, std::string_view kind, std::string_view content) {
  AppendBigEndian(file, static_cast<std::uint32_t>(content.size()));
  std::size_t const begin = file.size();
  file += kind;
  file += content;
  auto const* const bytes = reinterpret_cast<Bytef const*>(file.data() + begin);
  AppendBigEndian(file, static_cast<std::uint32_t>(::crc32_z(0, bytes, file.size() - begin)));
}

std::string Header(StHeader const& header) {
  std::string content;
  AppendBigEndian(content, static_cast<std::uint32_t>(header.size.x));
  AppendBigEndian(content, static_cast<std::uint32_t>(header.size.y));
  content += static_cast<char>(PixelBytes(header.pixel) * 8);
  return content + std::string(4, '\0'); // gray, deflated, filtered by rows, not interlaced
}

std::string Scale(std::array<double, 3> const& spacing) {
  return '\1' + Shortest(spacing[0]) + '\0' + Shortest(spacing[1]); // in meters
}

// Where the pixels are in space, beside the scale.
std::string Description(StGrid const& grid) {
  return std::string(c_pngGridKeyword) + '\0' + GridText(grid, {});
}

bool HasOnlySpacing(StGrid grid) {
  grid.spacing = StGrid().spacing;
  return grid == StGrid();
}

// Packs rows into chunks as they come.
class CPackedRows {
public:
  explicit CPackedRows(std::string& file) : m_File(file), m_Buffer(1 << 16, '\0') {
    if (::deflateInit(&m_Stream, Z_DEFAULT_COMPRESSION) != Z_OK) throw std::bad_alloc();
  }
  CPackedRows(CPackedRows const&) = delete;
  CPackedRows& operator=(CPackedRows const&) = delete;
  ~CPackedRows() { ::deflateEnd(&m_Stream); }

  void Add(Row& row) {
    m_Stream.next_in = row.data();
    m_Stream.avail_in = static_cast<uInt>(row.size());
    Pack(Z_NO_FLUSH);
  }
  void Finish() { Pack(Z_FINISH); }

private:
  void Pack(int flush) {
    do {
      m_Stream.next_out = reinterpret_cast<Bytef*>(m_Buffer.data());
      m_Stream.avail_out = static_cast<uInt>(m_Buffer.size());
      (void)::deflate(&m_Stream, flush); // never fails while there is room
      std::size_t const count = m_Buffer.size() - m_Stream.avail_out;
      if (count > 0) AppendChunk(m_File, "IDAT", std::string_view(m_Buffer).substr(0, count));
    } while (m_Stream.avail_out == 0);
  }

  std::string& m_File;
  std::string m_Buffer;
  z_stream m_Stream = {};
};

// The bytes of row y, the higher byte of each pixel first.
void TakeRow(StPixels const& image, std::size_t y, Row& row) {
  auto const bytes = image.bytes.subspan(y * row.size(), row.size());
  std::ranges::transform(bytes, row.begin(), [](std::byte b) { return std::uint8_t(b); });
  bool const isWide = PixelBytes(image.header.pixel) == 2;
  if (isWide && std::endian::native == std::endian::little)
    for (std::size_t i = 0; i + 1 < row.size(); i += 2) std::swap(row[i], row[i + 1]);
}

// The row under a filter: 0 as it is, 1 less the pixel before, 2 less the row above. The number of
// the filter goes first.
void Filter(int filter, Row const& row, Row const& above, std::size_t pixelBytes, Row& result) {
  result[0] = static_cast<std::uint8_t>(filter);
  for (std::size_t i = 0; i < row.size(); ++i) {
    int const before = i < pixelBytes ? 0 : row[i - pixelBytes];
    int const less = filter == 0 ? 0 : filter == 1 ? before : int{above[i]};
    result[i + 1] = static_cast<std::uint8_t>(row[i] - less);
  }
}

// How far the bytes are from 0, either way: the smaller, the better they pack.
std::uint64_t Weight(Row const& filtered) {
  std::uint64_t sum = 0;
  for (std::uint8_t const byte : std::span(filtered).subspan(1))
    sum += static_cast<std::uint64_t>(std::min<int>(byte, 256 - byte));
  return sum;
}

void AppendRows(std::string& file, StPixels const& image) {
  std::size_t const pixelBytes = PixelBytes(image.header.pixel);
  Row row(static_cast<std::size_t>(image.header.size.x) * pixelBytes), above(row.size());
  Row filtered(row.size() + 1), best(row.size() + 1);
  CPackedRows packed(file);
  for (std::size_t y = 0; y < static_cast<std::size_t>(image.header.size.y); ++y) {
    TakeRow(image, y, row);
    std::uint64_t least = std::numeric_limits<std::uint64_t>::max();
    for (int const filter : {0, 1, 2}) {
      Filter(filter, row, above, pixelBytes, filtered);
      std::uint64_t const weight = Weight(filtered);
      if (weight < least) best.swap(filtered);
      least = std::min(least, weight);
    }
    packed.Add(best);
    above.swap(row);
  }
  packed.Finish();
}

} // namespace

std::string PngBytes(StPixels const& image) {
  std::string file = "\x89PNG\r\n\x1a\n";
  AppendChunk(file, "IHDR", Header(image.header));
  AppendChunk(file, "sCAL", Scale(image.grid.spacing));
  if (!HasOnlySpacing(image.grid)) AppendChunk(file, "tEXt", Description(image.grid));
  AppendRows(file, image);
  AppendChunk(file, "IEND", {});
  return file;
}

} // namespace selu
