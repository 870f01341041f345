// Writing a TIFF file: every pixel type, a volume as pages, not packed.
//
//   WriteTiff("stack.tif", {{size, EnPixel::Int32}, grid, bytes}, {});
//   CTiffWriter writer("stack.tif", {size, EnPixel::Int32}, grid, {});
//   writer.Write(someBytes);                       // one part of the pixels after the other
//   writer.Finish();
#pragma once

#include "images/ImageFile.h"
#include "images/TiffFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <vector>

namespace selu {

/// The pixels of an image that is to be written, x fastest.
struct StPixels {
  StHeader header;
  StGrid grid;
  std::span<std::byte const> bytes;
};

/// Writes the pixels as they come. All throws where libtiff fails.
class CTiffWriter {
public:
  CTiffWriter(std::filesystem::path const& path, StHeader const& header, StGrid const& grid,
              ImageNotes notes);
  void Write(std::span<std::byte const> bytes);
  /// After all pixels.
  void Finish();

private:
  void StartPage();
  void WriteStrip();

  StHeader m_Header;
  StGrid m_Grid;
  ImageNotes m_Notes;
  CTiffFile m_File;
  std::size_t m_PlaneBytes, m_StripBytes;
  std::size_t m_InPlane = 0; // bytes of the page at work that have come
  std::uint32_t m_Number = 0;
  ORVA::int64 m_Pages = 0;
  std::vector<std::byte> m_Strip; // what has come of it; libtiff may change what it is given
};

/// A BigTIFF where 4 GB do not suffice. Throws where libtiff fails.
void WriteTiff(std::filesystem::path const& path, StPixels const& image, ImageNotes const& notes);

} // namespace selu
