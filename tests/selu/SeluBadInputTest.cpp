// Bad files: each gives one clear sentence and exit code 1, quickly, whatever is wrong with it.
#include "support/Random.h"
#include "support/SeluRun.h"

#include <nlohmann/json.hpp>

#include <cstdint>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using Arguments = std::vector<std::string>;

class SeluBadInput : public test::CSeluTest {
protected:
  void ExpectUnreadable(std::string const& file, std::string const& text) const {
    ExpectFailure({"info", file}, text);
    ExpectFailure({"texture", file, "--range", "0,9", "--matrix", "m.nrrd"}, text);
    EXPECT_FALSE(fs::exists(Path("m.nrrd")));
  }
  void Make(std::string const& file, std::string const& size = "20,18,16") const {
    auto const result = Selu({"synth", "layers", "--size", size, "--seed", "2", "-o", file});
    ASSERT_EQ(result.code, 0) << result.error;
  }
  // The text with one part replaced by another, which must be there.
  [[nodiscard]] static std::string With(std::string text, std::string const& part,
                                        std::string const& other) {
    auto const place = text.find(part);
    EXPECT_NE(place, std::string::npos) << part;
    return place == std::string::npos ? text : text.replace(place, part.size(), other);
  }
};

void Append(std::string& bytes, std::uint32_t number, int count) {
  for (int i = 0; i < count; ++i) bytes += static_cast<char>(number >> (8 * i) & 255);
}

// An element of a DICOM file with explicit types, little endian.
std::string Element(std::uint32_t group, std::uint32_t element, std::string const& type,
                    std::string value) {
  if (value.size() % 2 != 0) value += type == "UI" ? '\0' : ' ';
  std::string bytes;
  Append(bytes, group, 2);
  Append(bytes, element, 2);
  bytes += type;
  bool const isLong = type == "OB" || type == "OW";
  if (isLong) Append(bytes, 0, 2);
  Append(bytes, static_cast<std::uint32_t>(value.size()), isLong ? 4 : 2);
  return bytes + value;
}

std::string Short(std::uint32_t number) {
  std::string bytes;
  Append(bytes, number, 2);
  return bytes;
}

// An image of unsigned 16-bit pixels with the values 0, 256, 512, ...
std::string Dicom(std::uint32_t columns, std::uint32_t rows, std::uint32_t pixels) {
  std::string const kind = "1.2.840.10008.5.1.4.1.1.7", name = "1.2.3.4.5";
  std::string meta = Element(2, 1, "OB", std::string("\0\1", 2)) + Element(2, 2, "UI", kind) +
                     Element(2, 3, "UI", name) + Element(2, 0x10, "UI", "1.2.840.10008.1.2.1") +
                     Element(2, 0x12, "UI", "1.2.3.4");
  std::string length;
  Append(length, static_cast<std::uint32_t>(meta.size()), 4);
  std::string values;
  for (std::uint32_t i = 0; i < pixels; ++i) Append(values, i * 256, 2);
  return std::string(128, '\0') + "DICM" + Element(2, 0, "UL", length) + meta +
         Element(8, 0x16, "UI", kind) + Element(8, 0x18, "UI", name) +
         Element(8, 0x60, "CS", "OT") + Element(0x28, 2, "US", Short(1)) +
         Element(0x28, 4, "CS", "MONOCHROME2") + Element(0x28, 0x10, "US", Short(rows)) +
         Element(0x28, 0x11, "US", Short(columns)) + Element(0x28, 0x100, "US", Short(16)) +
         Element(0x28, 0x101, "US", Short(16)) + Element(0x28, 0x102, "US", Short(15)) +
         Element(0x28, 0x103, "US", Short(0)) + Element(0x7fe0, 0x10, "OW", values);
}

TEST_F(SeluBadInput, WhatIsNoFileOfAnImage) {
  fs::create_directory(Folder() / "dir.nrrd");
  Write("empty.png", "");
  Write("text.txt", "Gray values of a stone\n1 2 3\n");
  Write("text.png", "no image at all");
  ::mkfifo(Path("pipe.nrrd").c_str(), 0600);
  ExpectUnreadable("missing.png", "cannot read \"missing.png\": No such file or directory");
  ExpectUnreadable("dir.nrrd", "it is a directory");
  ExpectUnreadable("empty.png", "the file is empty");
  ExpectUnreadable("text.txt", "it is no PNG, TIFF, NRRD, MetaImage, NIfTI or DICOM image");
  ExpectUnreadable("text.png", "it is no PNG, TIFF");
  ExpectUnreadable("pipe.nrrd", "it is not a regular file");
  ExpectUnreadable("/dev/zero", "it is not a regular file");
  ExpectUnreadable("text.txt/a.png", "Not a directory");
  ExpectUnreadable("new\nline.png", "\"new?line.png\"");
  ExpectUnreadable(std::string(5000, 'a'), "File name too long");
}

TEST_F(SeluBadInput, NoPermission) {
  Make("a.nrrd");
  ::chmod(Path("a.nrrd").c_str(), 0);
  ExpectFailure({"info", "a.nrrd"}, "\"a.nrrd\": Permission denied", 1, {.obeysPermissions = true});
}

TEST_F(SeluBadInput, CutOffFilesOfEveryFormat) {
  Make("a.png", "40,30");
  Write("a.dcm", Dicom(40, 30, 40 * 30));
  ASSERT_EQ(nlohmann::json::parse(Output({"info", "a.dcm", "--format", "json"}))["size"],
            (nlohmann::json{40, 30}));
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif", "png", "dcm"}) {
    std::string const file = "a." + ending, cut = "cut." + ending;
    if (ending != "png" && ending != "dcm") Make(file);
    auto const whole = Read(file);
    for (std::size_t const size : {std::size_t{1}, std::size_t{4}, std::size_t{10}, std::size_t{40},
                                   std::size_t{140}, whole.size() / 3, whole.size() / 2,
                                   whole.size() - 150, whole.size() - 9, whole.size() - 1}) {
      SCOPED_TRACE(ending + " cut to " + std::to_string(size) + " of " +
                   std::to_string(whole.size()));
      Write(cut, whole.substr(0, size));
      ExpectFailure({"info", cut}, "cannot read \"" + cut + "\"");
    }
  }
}

TEST_F(SeluBadInput, CutOffGzippedPixels) {
  // Gzipped zeros behind NRRD's and MetaImage's headers.
  Make("a.nii.gz", "64,64,64");
  auto const gzip = Read("a.nii.gz");
  std::string const head = "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 64 64 64\nencoding: gzip\n";
  // The unpacked header of NIfTI counts as the first pixels: more than enough of them.
  Write("whole.nrrd", head + "\n" + gzip);
  EXPECT_EQ(Selu({"info", "whole.nrrd"}).code, 0);
  Write("cut.nrrd", head + "\n" + gzip.substr(0, gzip.size() - 9));
  ExpectUnreadable("cut.nrrd", "the file is damaged or cut off");
  Write("data.gz", gzip.substr(0, gzip.size() / 2));
  Write("detached.nhdr", head + "data file: data.gz\n");
  ExpectUnreadable("detached.nhdr", "the file is damaged or cut off");
  Write("short.nrrd", With(head, "64 64 64", "64 64 80") + "\n" + gzip);
  ExpectUnreadable("short.nrrd", "the file unpacks to");
}

TEST_F(SeluBadInput, HeadersThatClaimFarMoreThanThereIs) {
  for (std::string const ending : {"nrrd", "mha"}) {
    Make("a." + ending);
    auto const whole = Read("a." + ending);
    for (std::string const sizes : {"20 18 17", "2000 1800 1600", "2000000 1800000 1600000",
                                    "9000000000000000000 9000000000000000000 9000000000000000000",
                                    "99999999999999999999 2 2", "-20 18 16", "20 0 16", "x y z"}) {
      Write("lie." + ending, With(whole, "20 18 16", sizes));
      SCOPED_TRACE(ending + " " + sizes);
      ExpectFailure({"info", "lie." + ending}, "cannot read \"lie." + ending);
    }
  }
}

TEST_F(SeluBadInput, BinaryHeadersThatClaimFarMoreThanThereIs) {
  // Bytes of a header replaced: place, and what stands there then (the greatest extents).
  struct StLie {
    std::string file;
    std::size_t place;
    std::string bytes;
  };
  Make("a.nii");
  Make("a.png", "40,30");
  Write("a.dcm", Dicom(40, 30, 40 * 30));
  std::string const greatest("\xff\x7f", 2);
  std::vector<StLie> const lies = {
      {"a.nii", 42, greatest + greatest + greatest},
      {"a.nii", 42, std::string("\xff\xff\xff\xff", 4)},
      {"a.png", 16, std::string("\x7f\xff\xff\xff\x7f\xff\xff\xff", 8)},
      {"a.png", 16, std::string("\x00\x00\xff\xff\x00\x00\xff\xff", 8)}};
  for (auto const& lie : lies) {
    auto bytes = Read(lie.file).replace(lie.place, lie.bytes.size(), lie.bytes);
    Write("lie-" + lie.file, bytes);
    ExpectUnreadable("lie-" + lie.file, "cannot read \"lie-" + lie.file);
  }
  Write("lie.dcm", Dicom(60000, 60000, 40 * 30));
  ExpectUnreadable("lie.dcm", "cannot read \"lie.dcm\"");
}

TEST_F(SeluBadInput, TiffWithPagesOfOtherSizes) {
  Make("a.tif", "20,18,3");
  auto bytes = Read("a.tif");
  // The first page's directory: its entry of the width, 20 as a 16-bit number.
  auto const entry = bytes.find(std::string("\x00\x01\x03\x00\x01\x00\x00\x00\x14\x00", 10));
  ASSERT_NE(entry, std::string::npos);
  bytes[entry + 8] = 19;
  Write("b.tif", bytes);
  ExpectUnreadable("b.tif", "its pages differ in size");
}

TEST_F(SeluBadInput, TiffWhosePagesGoInCircles) {
  Make("a.tif", "20,18,3");
  auto bytes = Read("a.tif");
  auto const number = [&](std::size_t place, std::size_t count) {
    std::size_t value = 0;
    for (std::size_t i = count; i-- > 0;)
      value = value << 8 | static_cast<unsigned char>(bytes.at(place + i));
    return value;
  };
  std::size_t const first = number(4, 4), next = first + 2 + 12 * number(first, 2);
  bytes.replace(next, 4, bytes.substr(4, 4)); // the second page is the first again
  Write("b.tif", bytes);
  ExpectUnreadable("b.tif", "cannot read \"b.tif\"");
}

TEST_F(SeluBadInput, PixelsInAFileElsewhere) {
  Make("a.nrrd");
  std::string const pixels(20 * 18 * 16, 'x');
  std::string const nrrd = "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 20 18 16\nencoding: raw\n";
  std::string const meta = "ObjectType = Image\nNDims = 3\nDimSize = 20 18 16\n"
                           "ElementType = MET_UCHAR\nElementDataFile = ";
  Write("pixels.raw", pixels);
  Write("short.raw", pixels.substr(1));
  ::mkfifo(Path("pipe.raw").c_str(), 0600);
  Write("a.nhdr", nrrd + "data file: pixels.raw\n");
  Write("a.mhd", meta + "pixels.raw\n");
  EXPECT_EQ(Selu({"info", "a.nhdr"}).code, 0);
  EXPECT_EQ(Selu({"info", "a.mhd"}).code, 0);
  for (auto const& [data, text] : std::vector<std::pair<std::string, std::string>>{
           {"short.raw",
            "its header claims 20 x 18 x 16 pixels of 8 bits, but \"short.raw\" has only"},
           {"none.raw", ", whose pixels are in \"none.raw\": No such file"},
           {"pipe.raw", ", whose pixels are in \"pipe.raw\": it is not a regular file"},
           {"/dev/zero", "it is not a regular file"},
           {"LIST", "spread over several files"},
           {"slice%03d.raw 1 16 1", "spread over several files"}}) {
    Write("b.nhdr", nrrd + "data file: " + data + "\n");
    Write("b.mhd", meta + data + "\n");
    ExpectUnreadable("b.nhdr", text);
    ExpectUnreadable("b.mhd", text);
  }
}

TEST_F(SeluBadInput, ImagesThatAreNotGrayValuesInTwoOrThreeDimensions) {
  std::vector<std::uint8_t> const bytes(24, 7);
  WriteNrrd("one.nrrd", "uint8", {24}, bytes);
  WriteNrrd("four.nrrd", "uint8", {2, 3, 2, 2}, bytes);
  ExpectUnreadable("one.nrrd", "it has 1 dimension, but selu needs 2 or 3");
  ExpectUnreadable("four.nrrd", "it has 4 dimensions (2 x 3 x 2 x 2), but selu needs 2 or 3");
  Write("rgb.nrrd",
        "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 3 4 2\nkinds: RGB-color domain domain\n"
        "encoding: raw\n\n" +
            std::string(24, 'x'));
  ExpectUnreadable("rgb.nrrd", "it has 3 components per pixel, but selu needs gray values: one");
}

TEST_F(SeluBadInput, DicomIsReadAndItsValuesAreRight) {
  Write("a.dcm", Dicom(16, 16, 256));
  auto const info = nlohmann::json::parse(Output({"info", "a.dcm", "--format", "json"}));
  EXPECT_EQ(info["pixel type"], "uint16");
  EXPECT_EQ(info["gray levels"], 256);
  EXPECT_EQ(info["greatest value"], 65280);
}

TEST_F(SeluBadInput, RandomDamageIsNeverMoreThanASentence) {
  test::CRandomNumbers random;
  Make("a.png", "20,30");
  Write("a.dcm", Dicom(20, 30, 600));
  for (std::string const ending : {"nrrd", "mha", "nii.gz", "tif", "png", "dcm"}) {
    std::string const file = "a." + ending, bad = "bad." + ending;
    if (ending != "png" && ending != "dcm") Make(file, "9,8,7");
    auto const whole = Read(file);
    for (int round = 0; round < 25; ++round) {
      auto bytes = whole;
      for (int hits = random.Between(1, 6); hits > 0; --hits)
        bytes[random.Between<std::size_t>(0, std::min<std::size_t>(bytes.size(), 700) - 1)] =
            static_cast<char>(random.Between(0, 255));
      Write(bad, bytes);
      auto const result = Selu({"info", bad});
      SCOPED_TRACE(ending + " round " + std::to_string(round) + ": " + result.error);
      EXPECT_TRUE(result.code == 0 || result.code == 1) << result.code;
      if (result.code == 1) {
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1);
        EXPECT_EQ(result.out, "");
      }
    }
  }
}

} // namespace
