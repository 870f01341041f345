#include "images/TiffWriter.h"

#include "images/TiffFile.h"
#include "images/TiffGrid.h"

#include <algorithm>
#include <utility>

namespace selu {
namespace {

constexpr std::size_t c_stripBytes = 1 << 18;
constexpr double c_smallFile = 4e9; // beyond, offsets need 64 bits

int SampleKind(EnPixel pixel) {
  switch (pixel) {
  case EnPixel::UInt8:
  case EnPixel::UInt16:
  case EnPixel::UInt32:
  case EnPixel::UInt64:
    return SAMPLEFORMAT_UINT;
  case EnPixel::Float:
  case EnPixel::Double:
    return SAMPLEFORMAT_IEEEFP;
  default:
    return SAMPLEFORMAT_INT;
  }
}

void SetPage(CTiffFile const& file, StHeader const& header, std::uint32_t rowsPerStrip) {
  file.Set(TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(header.size.x));
  file.Set(TIFFTAG_IMAGELENGTH, static_cast<std::uint32_t>(header.size.y));
  file.Set(TIFFTAG_BITSPERSAMPLE, static_cast<int>(PixelBytes(header.pixel) * 8));
  file.Set(TIFFTAG_SAMPLEFORMAT, SampleKind(header.pixel));
  file.Set(TIFFTAG_SAMPLESPERPIXEL, 1);
  file.Set(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  file.Set(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  file.Set(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  file.Set(TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
}

std::size_t PlaneBytes(StHeader const& header) {
  return static_cast<std::size_t>(header.size.x) * static_cast<std::size_t>(header.size.y) *
         PixelBytes(header.pixel);
}

std::size_t StripBytes(StHeader const& header) {
  std::size_t const rowBytes = PlaneBytes(header) / static_cast<std::size_t>(header.size.y);
  return rowBytes * std::clamp<std::size_t>(c_stripBytes / rowBytes, 1,
                                            static_cast<std::size_t>(header.size.y));
}

} // namespace

CTiffWriter::CTiffWriter(std::filesystem::path const& path, StHeader const& header,
                         StGrid const& grid, ImageNotes notes)
    : m_Header(header), m_Grid(grid), m_Notes(std::move(notes)),
      m_File(path, ImageBytes(header) > c_smallFile ? "w8" : "w"), m_PlaneBytes(PlaneBytes(header)),
      m_StripBytes(StripBytes(header)) {}

void CTiffWriter::StartPage() {
  std::size_t const rowBytes = m_PlaneBytes / static_cast<std::size_t>(m_Header.size.y);
  SetPage(m_File, m_Header, static_cast<std::uint32_t>(m_StripBytes / rowBytes));
  if (m_Pages == 0) WriteTiffGrid(m_File, m_Grid, m_Notes);
  if (m_Header.size.z > 1) m_File.Set(TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
  m_Number = 0;
}

void CTiffWriter::WriteStrip() {
  auto const bytes = static_cast<tmsize_t>(m_Strip.size());
  m_File.Require(TIFFWriteEncodedStrip(m_File.Get(), m_Number++, m_Strip.data(), bytes) == bytes);
  m_Strip.clear();
}

void CTiffWriter::Write(std::span<std::byte const> bytes) {
  while (!bytes.empty()) {
    if (m_InPlane == 0) StartPage();
    auto const part = bytes.first(
        std::min({bytes.size(), m_StripBytes - m_Strip.size(), m_PlaneBytes - m_InPlane}));
    m_Strip.insert(m_Strip.end(), part.begin(), part.end());
    m_InPlane += part.size();
    bytes = bytes.subspan(part.size());
    if (m_Strip.size() == m_StripBytes || m_InPlane == m_PlaneBytes) WriteStrip();
    if (m_InPlane < m_PlaneBytes) continue;
    m_File.Require(TIFFWriteDirectory(m_File.Get()) == 1);
    ++m_Pages;
    m_InPlane = 0;
  }
}

void CTiffWriter::Finish() { m_File.Close(); }

void WriteTiff(std::filesystem::path const& path, StPixels const& image, ImageNotes const& notes) {
  CTiffWriter writer(path, image.header, image.grid, notes);
  writer.Write(image.bytes);
  writer.Finish();
}

} // namespace selu
