// Every format with every pixel type in both byte orders: each value is read as it was written, or
// the file is refused.
#include "support/SeluRun.h"

#include <images/ImageFile.h>

#include <nlohmann/json.hpp>

#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <zlib.h>

namespace {

using Json = nlohmann::json;

// Numbers one after the other in a byte order.
class CBytes {
public:
  explicit CBytes(bool bigEndian)
      : m_Swap(bigEndian != (std::endian::native == std::endian::big)) {}
  template <class T>
  CBytes& Add(T value) {
    auto bytes = std::bit_cast<std::array<char, sizeof(T)>>(value);
    if (m_Swap) std::reverse(bytes.begin(), bytes.end());
    m_Text.append(bytes.data(), bytes.size());
    return *this;
  }
  template <class T>
  CBytes& Put(std::size_t place, T value) {
    CBytes one(*this);
    one.m_Text.clear();
    m_Text.replace(place, sizeof(T), one.Add(value).m_Text);
    return *this;
  }
  CBytes& Text(std::string const& text) {
    m_Text += text;
    return *this;
  }
  [[nodiscard]] std::string const& All() const { return m_Text; }

private:
  bool m_Swap;
  std::string m_Text;
};

template <class T>
std::string Pixels(std::vector<T> const& values, bool bigEndian) {
  CBytes bytes(bigEndian);
  for (T const value : values) bytes.Add(value);
  return bytes.All();
}

// A type's name in each format; TIFF tells the kind of numbers.
struct StType {
  char const* nrrd;
  char const* meta;
  std::int16_t nifti;
  std::uint16_t tiff;
};

template <class T>
constexpr StType TypeOf() {
  constexpr int index = std::is_floating_point_v<T> ? (sizeof(T) == 4 ? 8 : 9)
                        : std::is_signed_v<T>       ? 2 * std::countr_zero(sizeof(T)) + 1
                                                    : 2 * std::countr_zero(sizeof(T));
  constexpr std::array<StType, 10> types = {{{"uint8", "MET_UCHAR", 2, 1},
                                             {"int8", "MET_CHAR", 256, 2},
                                             {"uint16", "MET_USHORT", 512, 1},
                                             {"int16", "MET_SHORT", 4, 2},
                                             {"uint32", "MET_UINT", 768, 1},
                                             {"int32", "MET_INT", 8, 2},
                                             {"uint64", "MET_ULONG_LONG", 1280, 1},
                                             {"int64", "MET_LONG_LONG", 1024, 2},
                                             {"float", "MET_FLOAT", 16, 3},
                                             {"double", "MET_DOUBLE", 64, 3}}};
  return types[index];
}

template <class T>
std::string Nrrd(std::vector<T> const& values, bool bigEndian) {
  return std::string("NRRD0004\ntype: ") + TypeOf<T>().nrrd +
         "\ndimension: 2\nsizes: 4 3\nendian: " + (bigEndian ? "big" : "little") +
         "\nencoding: raw\n\n" + Pixels(values, bigEndian);
}

template <class T>
std::string Meta(std::vector<T> const& values, bool bigEndian) {
  return std::string("ObjectType = Image\nNDims = 2\nDimSize = 4 3\nBinaryData = True\n") +
         "BinaryDataByteOrderMSB = " + (bigEndian ? "True" : "False") +
         "\nElementType = " + TypeOf<T>().meta + "\nElementDataFile = LOCAL\n" +
         Pixels(values, bigEndian);
}

struct StNifti {
  float slope = 0, inter = 0, offset = 352;
  char const* magic = "n+1";
};

template <class T>
std::string Nifti(std::vector<T> const& values, bool bigEndian, StNifti const& how = {}) {
  CBytes bytes(bigEndian);
  bytes.Text(std::string(352, '\0')).Put(0, std::int32_t{348});
  for (std::size_t i = 0; i < 8; ++i) {
    constexpr std::array<std::int16_t, 8> extents = {2, 4, 3, 1, 1, 1, 1, 1};
    bytes.Put(40 + 2 * i, extents[i]).Put(76 + 4 * i, 1.0f);
  }
  bytes.Put(70, TypeOf<T>().nifti).Put(72, static_cast<std::int16_t>(8 * sizeof(T)));
  bytes.Put(108, how.offset).Put(112, how.slope).Put(116, how.inter);
  std::string const header = bytes.All();
  return header.substr(0, 344) + how.magic + std::string(1, '\0') + header.substr(348) +
         Pixels(values, bigEndian);
}

// One strip behind the directory.
struct StTiff {
  std::uint32_t width = 4, length = 3;
  std::uint16_t bits = 8, kind = 1, photometric = 1;
};

std::string Tiff(StTiff const& how, std::string const& pixels, bool bigEndian) {
  constexpr std::uint16_t entries = 10;
  constexpr std::uint32_t pixelsAt = 8 + 2 + 12 * entries + 4;
  CBytes bytes(bigEndian);
  bytes.Text(bigEndian ? "MM" : "II").Add(std::uint16_t{42}).Add(std::uint32_t{8}).Add(entries);
  auto const add = [&](std::uint16_t tag, std::uint32_t value) {
    bool const isLong = tag == 273 || tag == 279;
    bytes.Add(tag).Add(std::uint16_t(isLong ? 4 : 3)).Add(std::uint32_t{1});
    if (isLong)
      bytes.Add(value);
    else
      bytes.Add(static_cast<std::uint16_t>(value)).Add(std::uint16_t{0});
  };
  add(256, how.width);
  add(257, how.length);
  add(258, how.bits);
  add(259, 1); // not packed
  add(262, how.photometric);
  add(273, pixelsAt);
  add(277, 1);
  add(278, how.length);
  add(279, static_cast<std::uint32_t>(pixels.size()));
  add(339, how.kind);
  return bytes.Add(std::uint32_t{0}).Text(pixels).All();
}

template <class T>
std::string Tiff(std::vector<T> const& values, bool bigEndian) {
  return Tiff({.bits = 8 * sizeof(T), .kind = TypeOf<T>().tiff}, Pixels(values, bigEndian),
              bigEndian);
}

std::string Packed(std::string const& bytes) {
  std::string packed(::compressBound(bytes.size()), '\0');
  uLongf size = packed.size();
  ::compress(reinterpret_cast<Bytef*>(packed.data()), &size,
             reinterpret_cast<Bytef const*>(bytes.data()), bytes.size());
  return packed.substr(0, size);
}

std::string PngChunk(std::string const& type, std::string const& data) {
  std::string const body = type + data;
  auto const sum =
      ::crc32(0, reinterpret_cast<Bytef const*>(body.data()), static_cast<uInt>(body.size()));
  return CBytes(true)
      .Add(static_cast<std::uint32_t>(data.size()))
      .Text(body)
      .Add(static_cast<std::uint32_t>(sum))
      .All();
}

template <class T>
std::string Png(std::vector<T> const& values) {
  auto const pixels = Pixels(values, true);
  std::string rows;
  for (std::size_t y = 0; y < 3; ++y)
    rows += std::string(1, '\0') + pixels.substr(y * 4 * sizeof(T), 4 * sizeof(T));
  std::string const head = CBytes(true).Add(std::uint32_t{4}).Add(std::uint32_t{3}).All() +
                           static_cast<char>(8 * sizeof(T)) + std::string(4, '\0');
  return "\x89PNG\r\n\x1a\n" + PngChunk("IHDR", head) + PngChunk("IDAT", Packed(rows)) +
         PngChunk("IEND", "");
}

template <class T>
std::vector<T> Values() {
  using Limits = std::numeric_limits<T>;
  return {Limits::lowest(),
          Limits::max(),
          T{0},
          T{1},
          T{2},
          T{3},
          T{50},
          T{99},
          T{100},
          static_cast<T>(Limits::max() / 3),
          static_cast<T>(Limits::max() / 5),
          T{77}};
}

class SeluFormats : public test::CSeluTest {
protected:
  template <class T>
  void ExpectPixels(std::string const& file, std::vector<T> const& values) const {
    SCOPED_TRACE(file + " of " + TypeOf<T>().nrrd);
    try {
      auto const image = selu::ReadImage(Path(file));
      ASSERT_EQ(image.Bytes().size(), values.size() * sizeof(T));
      EXPECT_EQ(image.Size(), ORVA::CSize(4, 3));
      selu::VisitPixels(image, [&](auto pixels) {
        using Read = typename decltype(pixels)::value_type;
        EXPECT_EQ(std::is_signed_v<Read>, std::is_signed_v<T>);
        EXPECT_EQ(std::is_floating_point_v<Read>, std::is_floating_point_v<T>);
        for (std::size_t i = 0; i < values.size(); ++i)
          EXPECT_EQ(static_cast<T>(pixels[i]), values[i]) << "pixel " << i;
      });
    } catch (selu::CAppError const& error) {
      ADD_FAILURE() << error.what();
    }
  }

  template <class T>
  void ExpectReadByAll() const {
    auto const values = Values<T>();
    for (bool const bigEndian : {false, true}) {
      SCOPED_TRACE(bigEndian ? "big endian" : "little endian");
      Write("a.nrrd", Nrrd(values, bigEndian));
      Write("a.mha", Meta(values, bigEndian));
      Write("a.nii", Nifti(values, bigEndian));
      for (std::string const file : {"a.nrrd", "a.mha", "a.nii"}) ExpectPixels(file, values);
      Write("a.tif", Tiff(values, bigEndian));
      ExpectPixels("a.tif", values);
    }
  }
};

TEST_F(SeluFormats, IntegersAreReadInBothByteOrders) {
  ExpectReadByAll<std::uint8_t>();
  ExpectReadByAll<std::int8_t>();
  ExpectReadByAll<std::uint16_t>();
  ExpectReadByAll<std::int16_t>();
  ExpectReadByAll<std::uint32_t>();
  ExpectReadByAll<std::int32_t>();
  ExpectReadByAll<std::uint64_t>();
  ExpectReadByAll<std::int64_t>();
}

TEST_F(SeluFormats, FloatingPointNumbersAreReadInBothByteOrders) {
  ExpectReadByAll<float>();
  ExpectReadByAll<double>();
}

TEST_F(SeluFormats, PngKeepsTheGrid) {
  selu::StGrid grid;
  grid.spacing = {0.5, 0.25, 1};
  selu::StGrid spacing = grid;
  grid.origin = {10, -20, 0.1};
  grid.direction = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
  for (auto const& kept : {selu::StGrid(), spacing, grid}) {
    selu::CAtomicFile file(Path("a.png"));
    selu::WriteImage(file, selu::CRawImage({ORVA::CSize(4, 3), selu::EnPixel::UInt8}, kept));
    file.Commit();
    EXPECT_TRUE(selu::OpenImage(Path("a.png")).Grid() == kept);
  }
}

// Texts of others, and such as only look like a grid.
TEST_F(SeluFormats, PngTextsThatAreNoGridDoNoHarm) {
  auto const png = Png(Values<std::uint8_t>());
  auto const end = png.find("IDAT") - 4;
  auto const with = [&](std::string const& chunks) {
    Write("a.png", png.substr(0, end) + chunks + png.substr(end));
    return selu::OpenImage(Path("a.png")).Grid();
  };
  std::string const key = std::string("Description") + '\0';
  for (std::string const text :
       {"", "{", "{}", "a face", "{\"spacing\":[1,2]}", "{\"spacing\":[0,-1,\"x\"]}",
        "{\"spacing\":[1,1,1],\"direction\":[[2,0,0]],\"origin\":7}"})
    EXPECT_TRUE(with(PngChunk("tEXt", key + text)) == selu::StGrid()) << text;
  EXPECT_TRUE(with(PngChunk("tEXt", "Author" + std::string(1, '\0') + "{\"spacing\":[2,2,2]}")) ==
              selu::StGrid());
  std::string many;
  for (int k = 0; k < 2000; ++k) many += PngChunk("tEXt", key);
  EXPECT_TRUE(with(many) == selu::StGrid());
}

TEST_F(SeluFormats, PngOf8And16Bits) {
  Write("8.png", Png(Values<std::uint8_t>()));
  Write("16.png", Png(Values<std::uint16_t>()));
  ExpectPixels("8.png", Values<std::uint8_t>());
  ExpectPixels("16.png", Values<std::uint16_t>());
}

// Values 0, 1, 2, ... as 16-bit integers, which the header maps to others.
class SeluNifti : public SeluFormats {
protected:
  void ExpectScaled(std::string const& file, double slope, double inter) const {
    SCOPED_TRACE(file);
    auto const info = Json::parse(Output({"info", file, "--format", "json"}));
    EXPECT_EQ(info["least value"].get<double>(), inter);
    EXPECT_EQ(info["greatest value"].get<double>(), 11 * slope + inter);
    EXPECT_EQ(info["distinct values"], 12);
    auto const image = selu::ReadImage(Path(file));
    selu::VisitPixels(image, [&](auto pixels) {
      ASSERT_EQ(pixels.size(), 12u);
      for (std::size_t i = 0; i < pixels.size(); ++i)
        EXPECT_EQ(static_cast<double>(pixels[i]), static_cast<double>(i) * slope + inter);
    });
  }
  void WriteGzip(std::string const& name, std::string const& bytes) const {
    gzFile const file = ::gzopen(Path(name).c_str(), "wb");
    ASSERT_EQ(::gzwrite(file, bytes.data(), static_cast<unsigned>(bytes.size())),
              static_cast<int>(bytes.size()));
    ::gzclose(file);
  }
  template <class T>
  static std::vector<T> Counting() {
    return {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
  }
};

TEST_F(SeluNifti, SlopeAndInterceptScaleTheValues) {
  for (auto const& [slope, inter] : {std::pair{1.0f, -1024.0f}, {0.5f, 0.0f}, {2.0f, 10.0f}})
    for (bool const bigEndian : {false, true}) {
      SCOPED_TRACE(slope);
      StNifti const how = {.slope = slope, .inter = inter};
      Write("16.nii", Nifti(Counting<std::int16_t>(), bigEndian, how));
      Write("8.nii", Nifti(Counting<std::uint8_t>(), bigEndian, how));
      WriteGzip("16.nii.gz", Nifti(Counting<std::int16_t>(), bigEndian, how));
      WriteGzip("8.nii.gz", Nifti(Counting<std::uint8_t>(), bigEndian, how));
      for (std::string const file : {"16.nii", "8.nii", "16.nii.gz", "8.nii.gz"})
        ExpectScaled(file, slope, inter);
    }
}

TEST_F(SeluNifti, SecondVersionIsRefused) {
  for (bool const bigEndian : {false, true}) {
    CBytes bytes(bigEndian);
    bytes.Add(std::int32_t{540}).Text(std::string("n+2\0\r\n\x1a\n", 8) + std::string(600, '\0'));
    Write("a.nii", bytes.All());
    ExpectFailure({"info", "a.nii"}, "NIfTI-2 is not read, only NIfTI-1");
  }
}

TEST_F(SeluNifti, PixelsBeginBehindTheHeader) {
  auto const values = Counting<std::int16_t>();
  constexpr float infinite = std::numeric_limits<float>::infinity();
  for (float const offset : {-16.0f, 0.0f, 4.0f, 348.0f, 351.0f, -1e9f, infinite, -infinite,
                             std::numeric_limits<float>::quiet_NaN()}) {
    SCOPED_TRACE(offset);
    Write("a.nii", Nifti(values, false, {.offset = offset}));
    WriteGzip("a.nii.gz", Nifti(values, true, {.offset = offset}));
    ExpectFailure({"info", "a.nii"}, "its pixels begin inside its header");
    ExpectFailure({"info", "a.nii.gz"}, "its pixels begin inside its header");
  }
  for (float const offset : {354.0f, 1e9f, 1e16f, 3e38f}) {
    SCOPED_TRACE(offset);
    Write("a.nii", Nifti(values, false, {.offset = offset}));
    ExpectFailure({"info", "a.nii"}, "its header claims 4 x 3 pixels");
  }
  auto const whole = Nifti(values, false, {.offset = 368});
  Write("later.nii", whole.substr(0, 352) + std::string(16, 'x') + whole.substr(352));
  ExpectPixels("later.nii", values);
}

TEST_F(SeluNifti, PairsOfHeaderAndPixels) {
  auto const whole = Nifti(Counting<std::int16_t>(), false, {.offset = 0, .magic = "ni1"});
  Write("a.hdr", whole.substr(0, 348));
  Write("a.img", whole.substr(352));
  ExpectPixels("a.hdr", Counting<std::int16_t>());
}

TEST_F(SeluNifti, ScaledPixelsMustAllBeThere) {
  StNifti const how = {.slope = 1, .inter = -1024};
  auto const whole = Nifti(Counting<std::int16_t>(), false, how);
  Write("cut.nii", whole.substr(0, whole.size() - 1));
  WriteGzip("cut.nii.gz", whole.substr(0, whole.size() - 1));
  ExpectFailure({"info", "cut.nii"}, "its header claims 4 x 3 pixels of 16 bits, but");
  ExpectFailure({"info", "cut.nii.gz"}, "its header claims 376 bytes unpacked");
}

TEST_F(SeluFormats, MetaImagePixelsBehindAHeaderOfTheirOwn) {
  auto const values = Values<std::int16_t>();
  auto const pixels = Pixels(values, false);
  auto const header = [](std::string const& skipped, std::string const& data) {
    return "ObjectType = Image\nNDims = 2\nDimSize = 4 3\nElementType = MET_SHORT\nHeaderSize = " +
           skipped + "\nElementDataFile = " + data + "\n";
  };
  Write("data.raw", std::string(60, 'x') + pixels);
  Write("a.mhd", header("60", "data.raw"));
  ExpectPixels("a.mhd", values);
  Write("a.mhd", header("-1", "data.raw"));
  ExpectPixels("a.mhd", values);
  auto const local = header("100", "LOCAL");
  ASSERT_LT(local.size(), 200u);
  Write("a.mha", header("200", "LOCAL") + std::string(200 - local.size(), ' ') + pixels);
  ExpectPixels("a.mha", values);
  for (std::string const skipped : {"61", "84", "85", "100000"}) {
    Write("b.mhd", header(skipped, "data.raw"));
    ExpectFailure({"info", "b.mhd"}, "its header claims 4 x 3 pixels of 16 bits, but");
  }
  for (std::string const skipped : {"-2", "x", "1,2", "99999999999999999999"}) {
    Write("b.mhd", header(skipped, "data.raw"));
    ExpectFailure({"info", "b.mhd"}, "its header size is no number of bytes");
  }
  Write("b.mha", local + pixels);
  ExpectFailure({"info", "b.mha"}, "its pixels begin inside its header");
  Write("short.raw", pixels.substr(1));
  Write("b.mhd", header("-1", "short.raw"));
  ExpectFailure({"info", "b.mhd"}, "but");
}

TEST_F(SeluFormats, TiffOfOtherPixelsIsRefused) {
  struct StCase {
    StTiff how;
    std::size_t bytes;
    char const* text;
  };
  for (auto const& one :
       {StCase{{.bits = 32, .kind = 5}, 48, "32-bit numbers that are not real"},
        {{.bits = 128, .kind = 3}, 192, "TIFF of 128-bit floating-point numbers is not read"},
        {{.bits = 65}, 12 * 9, "TIFF of 65-bit integers is not read"},
        {{.bits = 8, .kind = 3}, 12, "TIFF of 8-bit floating-point numbers is not read"}}) {
    Write("a.tif", Tiff(one.how, std::string(one.bytes, '\x55'), false));
    ExpectFailure({"info", "a.tif"}, one.text);
    ExpectFailure({"texture", "a.tif", "--range", "0,9"}, one.text);
  }
}

TEST_F(SeluFormats, MetaImagePixelsAsText) {
  auto const header = [](std::string const& type) {
    return "ObjectType = Image\nNDims = 2\nDimSize = 4 3\nBinaryData = False\nElementType = " +
           type + "\nElementDataFile = LOCAL\n";
  };
  Write("a.mha", header("MET_DOUBLE") + "1 2.5 -3e300\n0.1 5 6 7 8\n9\t10 11 12");
  ExpectPixels<double>("a.mha", {1, 2.5, -3e300, 0.1, 5, 6, 7, 8, 9, 10, 11, 12});
  Write("a.mha", header("MET_SHORT") + "1 -2 3 4 5 6 7 8 9 10 11 -32768\n");
  ExpectPixels<std::int16_t>("a.mha", {1, -2, 3, 4, 5, 6, 7, 8, 9, 10, 11, -32768});
  Write("a.mha", header("MET_LONG_LONG") + "9007199254740993 2 3 4 5 6 7 8 9 10 11 12\n");
  ExpectPixels<std::int64_t>("a.mha", {9007199254740993, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12});
  Write("a.mha", header("MET_SHORT") + "1000 2000 3000 4000 5000 6000 7000 8000 9000 10000 110");
  ExpectFailure({"info", "a.mha"}, "it ends after 11 of 12 pixels");
  Write("a.mha", header("MET_SHORT") + "1 2 3");
  ExpectFailure({"info", "a.mha"}, "but the file has only");
  Write("a.mha", header("MET_UCHAR") + "1 2 3 4 5 6 7 8 9 10 11 256");
  ExpectFailure({"info", "a.mha"}, "\"256\" is no value for unsigned 8-bit integer pixels");
  Write("a.mha", header("MET_UCHAR") + "1 2 3 4 5 6 7 8 9 10 11 " + std::string(3000, 'x'));
  ExpectFailure({"info", "a.mha"}, "xxx...xxx");
}

TEST_F(SeluNifti, GzipMayHaveEmptyMembers) {
  auto const values = Counting<std::int16_t>();
  WriteGzip("empty.gz", "");
  WriteGzip("whole.nii.gz", Nifti(values, false));
  auto const empty = Read("empty.gz"), whole = Read("whole.nii.gz");
  Write("a.nii.gz", empty + whole);
  Write("b.nii.gz", whole + empty);
  auto const bytes = Nifti(values, false);
  WriteGzip("first.gz", bytes.substr(0, 360));
  WriteGzip("last.gz", bytes.substr(360));
  Write("c.nii.gz", Read("first.gz") + empty + Read("last.gz"));
  for (std::string const file : {"a.nii.gz", "b.nii.gz", "c.nii.gz"}) ExpectPixels(file, values);
}

} // namespace
