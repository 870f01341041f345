#include "images/TiffWriter.h"

#include "images/TiffFile.h"
#include "images/TiffGrid.h"

#include <algorithm>
#include <cstdint>
#include <vector>

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

// libtiff may change what it is given, so it gets a copy.
void WriteStrips(CTiffFile const& file, std::span<std::byte const> plane, std::size_t stripBytes) {
  std::vector<std::byte> strip;
  for (std::uint32_t number = 0; !plane.empty(); ++number) {
    auto const part = plane.first(std::min(stripBytes, plane.size()));
    strip.assign(part.begin(), part.end());
    auto const bytes = static_cast<tmsize_t>(strip.size());
    file.Require(TIFFWriteEncodedStrip(file.Get(), number, strip.data(), bytes) == bytes);
    plane = plane.subspan(part.size());
  }
}

} // namespace

void WriteTiff(std::filesystem::path const& path, StPixels const& image, ImageNotes const& notes) {
  auto const& size = image.header.size;
  auto const pages = static_cast<std::size_t>(size.z);
  std::size_t const plane = image.bytes.size() / pages;
  std::size_t const rowBytes = plane / static_cast<std::size_t>(size.y);
  auto const rows = std::max<std::size_t>(1, std::min(c_stripBytes / rowBytes, plane / rowBytes));
  CTiffFile file(path, static_cast<double>(image.bytes.size()) > c_smallFile ? "w8" : "w");
  for (std::size_t page = 0; page < pages; ++page) {
    SetPage(file, image.header, static_cast<std::uint32_t>(rows));
    if (page == 0) WriteTiffGrid(file, image.grid, notes);
    if (pages > 1) file.Set(TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    WriteStrips(file, image.bytes.subspan(page * plane, plane), rows * rowBytes);
    file.Require(TIFFWriteDirectory(file.Get()) == 1);
  }
  file.Close();
}

} // namespace selu
