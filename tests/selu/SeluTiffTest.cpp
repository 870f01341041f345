// TIFF in every form: widths of samples, strips and tiles, packings, pages, stacks; and written.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <images/ImageFile.h>

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <tiffio.h>

namespace {

using Word = std::uint64_t;

struct StForm {
  std::uint32_t width = 37, length = 29;
  int bits = 16, kind = SAMPLEFORMAT_UINT, compression = COMPRESSION_NONE, orientation = 1;
  std::uint32_t tile = 0, rowsPerStrip = 8;
  char const* mode = "w";
};

class SeluTiff : public test::CSeluTest {
protected:
  using File = std::unique_ptr<TIFF, void (*)(TIFF*)>;

  [[nodiscard]] File Create(std::string const& name, char const* mode) const {
    return {TIFFOpen(Path(name).c_str(), mode), TIFFClose};
  }

  static void SetPage(TIFF* file, StForm const& form) {
    TIFFSetField(file, TIFFTAG_IMAGEWIDTH, form.width);
    TIFFSetField(file, TIFFTAG_IMAGELENGTH, form.length);
    TIFFSetField(file, TIFFTAG_BITSPERSAMPLE, form.bits);
    TIFFSetField(file, TIFFTAG_SAMPLEFORMAT, form.kind);
    TIFFSetField(file, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(file, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(file, TIFFTAG_COMPRESSION, form.compression);
    TIFFSetField(file, TIFFTAG_ORIENTATION, form.orientation);
    if (form.tile > 0) {
      TIFFSetField(file, TIFFTAG_TILEWIDTH, form.tile);
      TIFFSetField(file, TIFFTAG_TILELENGTH, form.tile);
    } else {
      TIFFSetField(file, TIFFTAG_ROWSPERSTRIP, form.rowsPerStrip);
    }
  }

  // 16-bit pixels, by libtiff's own packing.
  static void WritePage(TIFF* file, StForm const& form, std::vector<std::uint16_t> const& pixels) {
    SetPage(file, form);
    std::uint32_t const width = form.tile > 0 ? form.tile : form.width;
    std::uint32_t const length = form.tile > 0 ? form.tile : form.rowsPerStrip;
    std::uint32_t number = 0;
    for (std::uint32_t y = 0; y < form.length; y += length)
      for (std::uint32_t x = 0; x < form.width; x += width, ++number) {
        std::vector<std::uint16_t> piece(std::size_t{width} * length);
        std::uint32_t const rows = std::min(length, form.length - y);
        for (std::uint32_t v = 0; v < rows; ++v)
          for (std::uint32_t u = 0; u < std::min(width, form.width - x); ++u)
            piece[v * width + u] = pixels[(y + v) * form.width + x + u];
        auto const bytes = static_cast<tmsize_t>((form.tile > 0 ? length : rows) * width * 2);
        ASSERT_EQ(form.tile > 0 ? TIFFWriteEncodedTile(file, number, piece.data(), bytes)
                                : TIFFWriteEncodedStrip(file, number, piece.data(), bytes),
                  bytes);
      }
    ASSERT_EQ(TIFFWriteDirectory(file), 1);
  }

  // One strip of bytes as they are.
  void WriteRaw(std::string const& name, StForm form, std::string bytes) const {
    form.rowsPerStrip = form.length;
    File const file = Create(name, form.mode);
    SetPage(file.get(), form);
    TIFFWriteRawStrip(file.get(), 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
  }

  template <class T>
  [[nodiscard]] std::vector<T> Pixels(std::string const& name) const {
    auto const image = selu::ReadImage(Path(name));
    std::vector<T> pixels(image.Bytes().size() / sizeof(T));
    std::memcpy(pixels.data(), image.Bytes().data(), image.Bytes().size());
    return pixels;
  }

  static std::vector<std::uint16_t> RandomPixels(std::size_t count) {
    test::CRandomNumbers random;
    std::vector<std::uint16_t> pixels(count);
    for (auto& pixel : pixels)
      pixel = static_cast<std::uint16_t>(random.Between(0, 65535) & 0xf0f0);
    return pixels;
  }
};

// Rows of samples, each from the highest bit on, rows padded to whole bytes.
std::string PackBits(std::vector<Word> const& values, std::size_t width, int bits) {
  std::string bytes;
  for (std::size_t row = 0; row < values.size(); row += width) {
    std::string digits;
    for (std::size_t i = row; i < row + width; ++i)
      for (int bit = bits; bit-- > 0;) digits += (values[i] >> bit & 1) != 0 ? '1' : '0';
    digits.resize((digits.size() + 7) / 8 * 8, '0');
    for (std::size_t i = 0; i < digits.size(); i += 8)
      bytes += static_cast<char>(std::stoi(digits.substr(i, 8), nullptr, 2));
  }
  return bytes;
}

// Numbers of whole bytes in an order of bytes.
std::string PackBytes(std::vector<Word> const& values, int bits, bool bigEndian) {
  std::string bytes;
  for (Word const value : values)
    for (int i = 0; i < bits; i += 8)
      bytes += static_cast<char>(value >> (bigEndian ? bits - 8 - i : i) & 255);
  return bytes;
}

TEST_F(SeluTiff, IntegersOfEveryWidthAreRead) {
  test::CRandomNumbers random;
  for (int bits = 1; bits <= 64; ++bits)
    for (int const kind : {SAMPLEFORMAT_UINT, SAMPLEFORMAT_INT})
      for (bool const bigEndian : {false, true}) {
        SCOPED_TRACE(std::to_string(bits) + " bits, kind " + std::to_string(kind));
        Word const mask = bits == 64 ? ~Word{0} : (Word{1} << bits) - 1;
        std::vector<Word> values = {mask, 0, 1, mask >> 1, (mask >> 1) + 1};
        while (values.size() < 15) values.push_back(random.Between<Word>(0, mask));
        WriteRaw(
            "a.tif",
            {.width = 5, .length = 3, .bits = bits, .kind = kind, .mode = bigEndian ? "wb" : "wl"},
            bits % 8 == 0 ? PackBytes(values, bits, bigEndian) : PackBits(values, 5, bits));
        auto const image = selu::ReadImage(Path("a.tif"));
        selu::VisitPixels(image, [&]<class T>(std::span<T const> pixels) {
          ASSERT_EQ(pixels.size(), values.size());
          EXPECT_EQ(std::is_signed_v<T>, kind == SAMPLEFORMAT_INT);
          EXPECT_GE(sizeof(T) * 8, static_cast<std::size_t>(bits));
          for (std::size_t i = 0; i < values.size(); ++i) {
            bool const negative = kind == SAMPLEFORMAT_INT && (values[i] >> (bits - 1) & 1) != 0;
            EXPECT_EQ(static_cast<T>(negative ? values[i] | ~mask : values[i]), pixels[i]);
          }
        });
      }
}

TEST_F(SeluTiff, FloatingPointNumbersOfSmallWidthsAreRead) {
  constexpr float inf = std::numeric_limits<float>::infinity();
  std::vector<Word> const half = {0x3c00, 0xc000, 0x7bff, 0x0001, 0x7c00, 0x8000};
  WriteRaw("half.tif",
           {.width = 3, .length = 2, .bits = 16, .kind = SAMPLEFORMAT_IEEEFP, .mode = "wb"},
           PackBytes(half, 16, true));
  EXPECT_EQ(Pixels<float>("half.tif"), (std::vector<float>{1, -2, 65504, 0x1p-24f, inf, -0.0f}));
  std::vector<Word> const three = {0x3f0000, 0xc08000, 0x7effff, 0x000001, 0x7f0000, 0};
  WriteRaw("24.tif",
           {.width = 3, .length = 2, .bits = 24, .kind = SAMPLEFORMAT_IEEEFP, .mode = "wl"},
           PackBytes(three, 24, false));
  EXPECT_EQ(Pixels<float>("24.tif"), (std::vector<float>{1, -3, 0x1.ffffp63f, 0x1p-78f, inf, 0}));
}

TEST_F(SeluTiff, StripsAndTilesOfEveryPackingAreRead) {
  auto const pixels = RandomPixels(37 * 29);
  int read = 0;
  for (int const compression : {COMPRESSION_NONE, COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                COMPRESSION_PACKBITS, COMPRESSION_LZMA, COMPRESSION_ZSTD})
    for (std::uint32_t const tile : {0u, 16u, 48u})
      for (char const* const mode : {"wl", "wb", "wl8"}) {
        if (TIFFIsCODECConfigured(static_cast<std::uint16_t>(compression)) == 0) continue;
        SCOPED_TRACE(std::to_string(compression) + " " + mode + " " + std::to_string(tile));
        StForm const form = {.compression = compression, .tile = tile, .mode = mode};
        WritePage(Create("a.tif", mode).get(), form, pixels);
        EXPECT_EQ(Pixels<std::uint16_t>("a.tif"), pixels);
        ++read;
      }
  EXPECT_GE(read, 4 * 9);
}

TEST_F(SeluTiff, PagesAreAVolumeAndPreviewsAreNone) {
  auto const first = RandomPixels(37 * 29), second = RandomPixels(37 * 29);
  {
    File const file = Create("a.tif", "w");
    WritePage(file.get(), {}, first);
    TIFFSetField(file.get(), TIFFTAG_SUBFILETYPE, FILETYPE_REDUCEDIMAGE);
    WritePage(file.get(), {.width = 5, .length = 4}, RandomPixels(20));
    WritePage(file.get(), {.tile = 16}, second);
  }
  EXPECT_EQ(selu::OpenImage(Path("a.tif")).Header().size, ORVA::CSize(37, 29, 2));
  auto expected = first;
  expected.insert(expected.end(), second.begin(), second.end());
  EXPECT_EQ(Pixels<std::uint16_t>("a.tif"), expected);
}

TEST_F(SeluTiff, RowsMayBeginElsewhere) {
  std::vector<std::uint16_t> const pixels = {1, 2, 3, 4, 5, 6};
  for (auto const& [orientation, expected] :
       std::vector<std::pair<int, std::vector<std::uint16_t>>>{
           {ORIENTATION_TOPRIGHT, {3, 2, 1, 6, 5, 4}},
           {ORIENTATION_BOTRIGHT, {6, 5, 4, 3, 2, 1}},
           {ORIENTATION_BOTLEFT, {4, 5, 6, 1, 2, 3}}}) {
    StForm const form = {.width = 3, .length = 2, .orientation = orientation};
    WritePage(Create("a.tif", "w").get(), form, pixels);
    EXPECT_EQ(Pixels<std::uint16_t>("a.tif"), expected) << orientation;
  }
  WritePage(Create("a.tif", "w").get(),
            {.width = 3, .length = 2, .orientation = ORIENTATION_LEFTTOP}, pixels);
  ExpectFailure({"info", "a.tif"}, "its rows run downwards");
}

TEST_F(SeluTiff, StacksOfImageJWithASingleDirectoryAreRead) {
  std::vector<Word> values;
  for (Word i = 0; i < 4 * 3 * 5; ++i) values.push_back(i * 777);
  auto const write = [&](char const* mode, std::string const& pages) {
    StForm form = {.width = 4, .length = 3, .mode = mode};
    form.rowsPerStrip = 3;
    auto bytes = PackBytes(values, 16, std::string(mode) == "wb");
    File const file = Create("a.tif", mode);
    SetPage(file.get(), form);
    std::string const text =
        "ImageJ=1.53t\nimages=" + pages + "\nslices=" + pages + "\nunit=micron\nspacing=2.5\n";
    TIFFSetField(file.get(), TIFFTAG_IMAGEDESCRIPTION, text.c_str());
    TIFFSetField(file.get(), TIFFTAG_RESOLUTIONUNIT, RESUNIT_NONE);
    TIFFSetField(file.get(), TIFFTAG_XRESOLUTION, 4.0);
    TIFFSetField(file.get(), TIFFTAG_YRESOLUTION, 2.0);
    TIFFWriteRawStrip(file.get(), 0, bytes.data(), static_cast<tmsize_t>(bytes.size()));
  };
  for (char const* const mode : {"wl", "wb"}) {
    write(mode, "5");
    auto image = selu::OpenImage(Path("a.tif"));
    EXPECT_EQ(image.Header().size, ORVA::CSize(4, 3, 5));
    EXPECT_EQ(image.Grid().spacing, (std::array<double, 3>{0.25, 0.5, 2.5}));
    auto const pixels = Pixels<std::uint16_t>("a.tif");
    ASSERT_EQ(pixels.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(pixels[i], values[i]) << i;
    write(mode, "500");
    ExpectFailure({"info", "a.tif"}, "the file is damaged or cut off");
  }
}

TEST_F(SeluTiff, RepeatedTagsTakeNoTime) {
  // A directory of 4000 entries, all of them the offsets of the same strips.
  std::string bytes("II*\0\x08\0\0\0", 8);
  auto const add = [&](Word value, int count) {
    for (int i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i) & 255);
  };
  add(4000, 2);
  for (int i = 0; i < 4000; ++i) {
    add(273, 2);
    add(4, 2);
    add(4000, 4);
    add(8, 4);
  }
  add(0, 4);
  bytes.resize(65536);
  Write("a.tif", bytes);
  auto const result =
      test::RunProcess({"/usr/bin/env", "timeout", "30", SELU_BINARY, "info", "a.tif"},
                       {.folder = Folder().string()});
  EXPECT_EQ(result.code, 1) << result.error;
}

TEST_F(SeluTiff, EveryPixelTypeIsWrittenWithItsGrid) {
  for (int p = 0; p < 10; ++p) {
    selu::StGrid grid;
    grid.spacing = {0.1, 0.25, 3};
    grid.origin = {-1, 2.5, 1e3};
    selu::CRawImage image({ORVA::CSize(7, 5, 3), static_cast<selu::EnPixel>(p)}, grid);
    test::CRandomNumbers random;
    for (auto& byte : image.Bytes()) byte = static_cast<std::byte>(random.Between(0, 0x3f));
    selu::CAtomicFile file(Path("a.tif"));
    selu::WriteImage(file, image);
    file.Commit();
    auto opened = selu::OpenImage(Path("a.tif"));
    EXPECT_EQ(opened.Grid(), grid);
    EXPECT_EQ(opened.Header().pixel, image.Pixel());
    auto const back = opened.Read();
    EXPECT_TRUE(std::ranges::equal(back.Bytes(), image.Bytes())) << p;
  }
}

} // namespace
