#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"
#include "images/ImageReader.h"
#include "images/TiffFile.h"
#include "images/TiffGrid.h"
#include "images/TiffSamples.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace selu {
namespace fs = std::filesystem;
namespace {

using ORVA::int64;

// What a page says of itself.
struct StPage {
  std::uint32_t width = 0, length = 0, kindOfFile = 0;
  std::uint16_t components = 1, photometric = PHOTOMETRIC_MINISBLACK, compression = 1;
  std::uint16_t orientation = ORIENTATION_TOPLEFT;
  StTiffSamples samples;

  [[nodiscard]] bool IsPreview() const noexcept {
    return (kindOfFile & (FILETYPE_REDUCEDIMAGE | FILETYPE_MASK)) != 0;
  }
  [[nodiscard]] bool IsGray() const noexcept {
    return components == 1 && photometric != PHOTOMETRIC_PALETTE;
  }
  [[nodiscard]] std::size_t RowBytes() const noexcept {
    return (std::size_t{width} * samples.bits + 7) / 8;
  }
};

StPage PageOf(CTiffFile const& file) {
  StPage page;
  page.width = file.Field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
  page.length = file.Field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
  page.kindOfFile = file.Field<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0);
  page.components = file.Field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
  page.photometric = file.Field<std::uint16_t>(TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
  page.compression = file.Field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  page.orientation = file.Field<std::uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  page.samples.bits = file.Field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
  page.samples.kind = file.Field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  // Samples of 16 and 24 bits are put into the machine's order, others of odd widths are left
  // alone.
  bool const isInOrder = page.samples.bits == 16 || page.samples.bits == 24;
  page.samples.bigEndian =
      isInOrder ? std::endian::native == std::endian::big : TIFFIsBigEndian(file.Get()) != 0;
  return page;
}

std::string KindText(StPage const& page) {
  bool const isReal = page.samples.kind <= SAMPLEFORMAT_VOID;
  return "TIFF of " + std::to_string(page.samples.bits) + "-bit" +
         (page.samples.kind == SAMPLEFORMAT_IEEEFP ? " floating-point numbers"
          : isReal                                 ? " integers"
                                                   : " numbers that are not real") +
         " is not read, only of integers up to 64 bits and floating-point numbers of 16, 24, 32 "
         "and 64";
}

// The most bytes that a byte packed by a method can become.
double RatioOf(std::uint16_t compression) {
  switch (compression) {
  case COMPRESSION_NONE:
    return 1;
  case COMPRESSION_PACKBITS:
    return 64;
  case COMPRESSION_LZW:
    return 2800;
  case COMPRESSION_DEFLATE:
  case COMPRESSION_ADOBE_DEFLATE:
    return 1100;
  default:
    return 65536;
  }
}

class CTiffReader : public IImageReader {
public:
  explicit CTiffReader(fs::path const& path)
      : m_Path(path), m_Size(SizeOfReadable(path)), m_File(path, "r") {
    std::uint64_t last = 0;
    do {
      StPage const page = PageOf(m_File);
      if (!page.IsPreview()) Include(page);
      last = TIFFCurrentDirOffset(m_File.Get());
    } while (NextPage());
    CheckEnd(last);
    if (m_Pages == 0) Refuse("it has no pages but previews");
    m_File.Require(TIFFSetDirectory(m_File.Get(), 0) == 1);
    FindStack();
    m_Grid = ReadTiffGrid(m_File);
    m_HasRows = m_StackPages == 0 && m_Pages == 1 && RowsArePlain();
  }

  StClaim Claim() override {
    StClaim claim;
    claim.extents = {m_First.width, m_First.length, m_StackPages > 0 ? m_StackPages : m_Pages};
    claim.components = m_First.photometric == PHOTOMETRIC_PALETTE ? 3 : int64{m_First.components};
    claim.pixel = PixelOf(m_First.samples);
    claim.grid = m_Grid;
    if (claim.pixel)
      claim.ratio = RatioOf(m_First.compression) * 8 *
                    static_cast<double>(PixelBytes(*claim.pixel)) / m_First.samples.bits;
    return claim;
  }

  void Read(std::span<std::byte> pixels) override {
    if (m_StackPages > 0) return ReadStack(0, pixels);
    m_File.Require(TIFFSetDirectory(m_File.Get(), 0) == 1);
    std::size_t const plane = pixels.size() / static_cast<std::size_t>(m_Pages);
    std::size_t done = 0;
    do {
      if (PageOf(m_File).IsPreview()) continue;
      if (done == pixels.size()) break;
      ReadPage(pixels.subspan(done, plane));
      done += plane;
    } while (NextPage());
    m_File.Require(done == pixels.size());
  }

  [[nodiscard]] bool ReadsSlabs() const override {
    return m_StackPages > 0 || m_Pages > 1 || m_HasRows;
  }

  void ReadSlab(int64 first, std::span<std::byte> pixels) override {
    if (m_StackPages > 0) return ReadStack(first * int64{m_First.length}, pixels);
    if (m_HasRows) return ReadRows(static_cast<std::uint64_t>(first), pixels);
    std::size_t const plane = RowInMemory() * m_First.length;
    for (std::size_t done = 0; done < pixels.size(); done += plane) {
      m_File.Require(
          TIFFSetSubDirectory(m_File.Get(), m_Places.at(static_cast<std::size_t>(first++))) == 1);
      ReadPage(pixels.subspan(done, plane));
    }
  }

private:
  [[noreturn]] void Refuse(std::string const& why) const {
    throw CAppError("cannot read " + Quoted(m_Path) + ": " + why);
  }

  [[nodiscard]] bool NextPage() const {
    bool const more = TIFFReadDirectory(m_File.Get()) == 1;
    m_File.Require(true);
    return more;
  }

  // libtiff takes a place of the next page that is cut off for the end of the pages, and one that
  // leads back to a page before.
  void CheckEnd(std::uint64_t place) const {
    std::ifstream in(m_Path, std::ios::binary);
    bool const bigEndian = TIFFIsBigEndian(m_File.Get()) != 0;
    auto const number = [&](std::uint64_t at, std::size_t bytes) {
      std::array<char, 8> text{};
      in.seekg(static_cast<std::streamoff>(at));
      in.read(text.data(), static_cast<std::streamsize>(bytes));
      std::uint64_t value = 0;
      for (std::size_t i = 0; i < bytes; ++i)
        value = value << 8 | static_cast<unsigned char>(text[bigEndian ? i : bytes - 1 - i]);
      return value;
    };
    constexpr std::uint64_t bigTiff = 43;
    bool const isBig = number(2, 2) == bigTiff;
    std::uint64_t const entries = number(place, isBig ? 8 : 2);
    std::uint64_t const bytes = isBig ? 8 + 20 * entries + 8 : 2 + 12 * entries + 4;
    bool const isWhole = place <= m_Size && bytes <= m_Size - place;
    std::uint64_t const nextBytes = isBig ? 8 : 4;
    if (!isWhole || number(place + bytes - nextBytes, nextBytes) != 0)
      Refuse("the file is damaged or cut off");
  }

  void Include(StPage const& page) {
    if (m_Pages++ == 0) m_First = page;
    m_Places.push_back(TIFFCurrentDirOffset(m_File.Get()));
    if (page.IsGray()) { // colors are refused as such
      if (page.photometric == PHOTOMETRIC_LOGL || !PixelOf(page.samples)) Refuse(KindText(page));
      if (page.orientation > ORIENTATION_BOTLEFT) Refuse("its rows run downwards, not across");
    }
    if (page.width != m_First.width || page.length != m_First.length)
      Refuse("its pages differ in size");
    if (page.samples != m_First.samples || page.components != m_First.components ||
        page.photometric != m_First.photometric)
      Refuse("its pages differ in their pixel type");
  }

  // ImageJ's stacks may have one directory, behind whose pixels those of the other pages follow.
  void FindStack() {
    char const* text = nullptr;
    if (m_Pages != 1 || m_First.compression != COMPRESSION_NONE) return;
    if (TIFFGetField(m_File.Get(), TIFFTAG_IMAGEDESCRIPTION, &text) != 1) return;
    auto const pages = ImageJNumber(text, "images");
    if (!pages || !(*pages > 1 && *pages < 1e9) || TIFFIsTiled(m_File.Get()) != 0) return;
    m_StackPages = static_cast<int64>(*pages);
    m_StackOffset = TIFFGetStrileOffset(m_File.Get(), 0);
    double const bytes = static_cast<double>(m_StackPages) *
                         static_cast<double>(m_First.RowBytes()) * m_First.length;
    if (m_StackOffset > m_Size || bytes > static_cast<double>(m_Size - m_StackOffset))
      Refuse("the file is damaged or cut off");
  }

  [[nodiscard]] std::size_t RowInMemory() const {
    return m_First.width * PixelBytes(*PixelOf(m_First.samples));
  }

  // From so many rows of all pages on.
  void ReadStack(int64 row, std::span<std::byte> pixels) const {
    auto const offset = m_StackOffset + static_cast<std::uint64_t>(row) * m_First.RowBytes();
    ReadPlainRows(offset, pixels);
  }

  // Rows that follow each other in the file from a place on.
  void ReadPlainRows(std::uint64_t offset, std::span<std::byte> pixels) const {
    std::ifstream in(m_Path, std::ios::binary);
    in.seekg(static_cast<std::streamoff>(offset));
    std::vector<std::byte> row(m_First.RowBytes());
    std::size_t const rowPixels = RowInMemory();
    bool const swap = TIFFIsByteSwapped(m_File.Get()) != 0;
    for (std::size_t done = 0; done < pixels.size(); done += rowPixels) {
      in.read(reinterpret_cast<char*>(row.data()), static_cast<std::streamsize>(row.size()));
      m_File.Require(in.good());
      if (swap) SwapRow(row);
      UnpackSamples(m_First.samples, row, pixels.subspan(done, rowPixels));
    }
  }

  [[nodiscard]] std::uint64_t RowsPerStrip() const {
    return std::min(m_File.Field(TIFFTAG_ROWSPERSTRIP, m_First.length), m_First.length);
  }

  // Whether the rows of the only page stand in strips as they are.
  [[nodiscard]] bool RowsArePlain() const {
    TIFF* const file = m_File.Get();
    auto const fillOrder = m_File.Field<std::uint16_t>(TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    bool const isPlain = m_First.compression == COMPRESSION_NONE && TIFFIsTiled(file) == 0 &&
                         m_First.IsGray() && m_First.orientation == ORIENTATION_TOPLEFT &&
                         fillOrder == FILLORDER_MSB2LSB && m_First.length > 0;
    if (!isPlain) return false;
    std::uint64_t const rows = RowsPerStrip();
    if (rows == 0) return false;
    for (std::uint64_t y = 0; y < m_First.length; y += rows) {
      auto const strip = static_cast<std::uint32_t>(y / rows);
      auto const bytes = std::min<std::uint64_t>(rows, m_First.length - y) * m_First.RowBytes();
      if (TIFFGetStrileByteCount(file, strip) != bytes) return false;
    }
    return true;
  }

  void ReadRows(std::uint64_t first, std::span<std::byte> pixels) const {
    std::uint64_t const perStrip = RowsPerStrip();
    for (std::uint64_t y = first; !pixels.empty();) {
      auto const strip = static_cast<std::uint32_t>(y / perStrip);
      std::uint64_t const rows =
          std::min<std::uint64_t>(perStrip - y % perStrip, pixels.size() / RowInMemory());
      ReadPlainRows(TIFFGetStrileOffset(m_File.Get(), strip) + y % perStrip * m_First.RowBytes(),
                    pixels.first(rows * RowInMemory()));
      pixels = pixels.subspan(rows * RowInMemory());
      y += rows;
    }
  }

  // As libtiff does it with the samples that it reads.
  void SwapRow(std::vector<std::byte>& row) const {
    std::size_t const bytes = m_First.samples.bits / 8;
    bool const isSwapped = bytes == 2 || bytes == 3 || bytes == 4 || bytes == 8;
    if (m_First.samples.bits % 8 != 0 || !isSwapped) return;
    for (std::size_t i = 0; i + bytes <= row.size(); i += bytes)
      std::reverse(row.begin() + static_cast<std::ptrdiff_t>(i),
                   row.begin() + static_cast<std::ptrdiff_t>(i + bytes));
  }

  // One strip or tile after the other.
  void ReadPage(std::span<std::byte> plane) const {
    TIFF* const file = m_File.Get();
    bool const tiled = TIFFIsTiled(file) != 0;
    std::uint32_t width = m_First.width, length = m_First.length;
    width = tiled ? m_File.Field<std::uint32_t>(TIFFTAG_TILEWIDTH, 0) : width;
    length = m_File.Field(tiled ? TIFFTAG_TILELENGTH : TIFFTAG_ROWSPERSTRIP, length);
    length = tiled ? length : std::min(length, m_First.length);
    auto const bytes = static_cast<std::size_t>(tiled ? TIFFTileSize(file) : TIFFStripSize(file));
    std::size_t const rowBytes = (std::size_t{width} * m_First.samples.bits + 7) / 8;
    m_File.Require(width > 0 && length > 0 && bytes >= rowBytes * length);
    std::vector<std::byte> piece(bytes);
    std::uint32_t number = 0;
    for (std::uint64_t y = 0; y < m_First.length; y += length)
      for (std::uint64_t x = 0; x < m_First.width; x += width, ++number) {
        auto const rows = std::min<std::uint64_t>(length, m_First.length - y);
        auto const needed = static_cast<tmsize_t>(tiled ? bytes : rowBytes * rows);
        m_File.Require((tiled
                            ? TIFFReadEncodedTile(file, number, piece.data(), needed)
                            : TIFFReadEncodedStrip(file, number, piece.data(), needed)) == needed);
        for (std::uint64_t row = 0; row < rows; ++row)
          PutRow(plane, std::span(piece).subspan(row * rowBytes, rowBytes), x,
                 std::min<std::uint64_t>(width, m_First.width - x), y + row);
      }
  }

  // So many pixels from (x, y) on, where the page's first row and column may be others.
  void PutRow(std::span<std::byte> plane, std::span<std::byte const> row, std::uint64_t x,
              std::uint64_t count, std::uint64_t y) const {
    std::size_t const bytes = PixelBytes(*PixelOf(m_First.samples));
    auto const orientation = m_First.orientation;
    bool const up = orientation == ORIENTATION_BOTLEFT || orientation == ORIENTATION_BOTRIGHT;
    bool const left = orientation == ORIENTATION_TOPRIGHT || orientation == ORIENTATION_BOTRIGHT;
    std::uint64_t const line = up ? m_First.length - 1 - y : y;
    std::uint64_t const column = left ? m_First.width - x - count : x;
    auto const out = plane.subspan((line * m_First.width + column) * bytes, count * bytes);
    UnpackSamples(m_First.samples, row, out);
    if (!left) return;
    std::reverse(out.begin(), out.end()); // the pixels, and then each one's bytes again
    for (std::size_t i = 0; i < out.size(); i += bytes)
      std::reverse(out.begin() + static_cast<std::ptrdiff_t>(i),
                   out.begin() + static_cast<std::ptrdiff_t>(i + bytes));
  }

  fs::path m_Path;
  std::uint64_t m_Size;
  CTiffFile m_File;
  StPage m_First;
  int64 m_Pages = 0, m_StackPages = 0;
  std::uint64_t m_StackOffset = 0;
  std::vector<std::uint64_t> m_Places; // of the pages' directories
  bool m_HasRows = false;              // see RowsArePlain
  StGrid m_Grid;
};

} // namespace

std::unique_ptr<IImageReader> MakeTiffReader(fs::path const& path) {
  return std::make_unique<CTiffReader>(path);
}

} // namespace selu
