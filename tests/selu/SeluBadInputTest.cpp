// Bad files: each gives one clear sentence and exit code 1, quickly, whatever is wrong with it.
#include "support/Dicom.h"
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

// An image with the values 0, 256, 512, ...
std::string Dicom(std::uint32_t columns, std::uint32_t rows, std::uint32_t pixels) {
  return test::Dicom({.columns = columns, .rows = rows, .pixels = pixels, .step = 256});
}

TEST_F(SeluBadInput, WhatIsNoFileOfAnImage) {
  fs::create_directory(Folder() / "dir.nrrd");
  Write("empty.png", "");
  Write("text.txt", "Gray values of a stone\n1 2 3\n");
  Write("text.png", "no image at all");
  ::mkfifo(Path("pipe.nrrd").c_str(), 0600);
  ExpectUnreadable("missing.png", "cannot read \"missing.png\": No such file or directory");
  ExpectUnreadable("dir.nrrd", "it has no slices: no PNG, TIFF or DICOM files");
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

TEST_F(SeluBadInput, DicomMayLeaveItsTypesOut) {
  Write("a.dcm", test::Dicom({.first = 7, .isExplicit = false}));
  auto const info = nlohmann::json::parse(Output({"info", "a.dcm", "--format", "json"}));
  EXPECT_EQ(info["least value"], 7);
  EXPECT_EQ(info["greatest value"], 30);
  auto const whole = Read("a.dcm");
  Write("cut.dcm", whole.substr(0, whole.size() - 1));
  ExpectUnreadable("cut.dcm", "the file is damaged or cut off");
}

TEST_F(SeluBadInput, LyingDicomElementsTakeNoMemory) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "AddressSanitizer takes more addresses than the limit below has";
#endif
  // Lengths of elements that the file does not have: readers would make room for them.
  auto const whole = test::Dicom({});
  for (std::size_t place = 132; place + 4 < whole.size() - 48; ++place) {
    if (place % 7 != 0) continue;
    auto bytes = whole;
    bytes.replace(place, 4, "\xff\xff\xff\x5f");
    Write("lie.dcm", bytes);
    auto const result = test::RunProcess(
        {"/usr/bin/env", "bash", "-c",
         "ulimit -v 1500000; exec timeout 60 \"$0\" info lie.dcm --range 0,9", SELU_BINARY},
        {.folder = Folder().string()});
    EXPECT_TRUE(result.code == 0 || result.code == 1) << place << result.error;
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), result.code)
        << result.error;
  }
}

// The library that reads MetaImage headers has fields of fixed lengths.
TEST_F(SeluBadInput, MetaImageNotesBeyondTheirFieldsAreRefused) {
  struct StCase {
    std::string key;
    std::size_t most;
  };
  auto const write = [&](std::string const& line) {
    Write("a.mha", "ObjectType = Image\nNDims = 2\n" + line +
                       "BinaryData = True\nBinaryDataByteOrderMSB = False\nDimSize = 2 2\n"
                       "ElementType = MET_UCHAR\nElementDataFile = LOCAL\nabcd");
  };
  for (auto const& [key, most] : {StCase{"Comment", 254}, StCase{"Name", 254},
                                  StCase{"ObjectSubType", 254}, StCase{"scanner", 32767}}) {
    write(key + " = " + std::string(most, 'n') + "\n");
    EXPECT_EQ(Selu({"info", "a.mha"}).code, 0) << key;
    for (std::size_t const length : {most + 1, most + 400, std::size_t{60000}}) {
      write(key + " = " + std::string(length, 'n') + "\n");
      ExpectFailure({"info", "a.mha"}, "its header has " + std::to_string(length) +
                                           " bytes for \"" + key + "\", but selu reads up to " +
                                           std::to_string(most));
    }
  }
  write(std::string(255, 'k') + " = 1\n");
  ExpectFailure({"info", "a.mha"}, "its header has a key of 255 bytes");
  std::string notes;
  for (int k = 0; k < 9000; ++k) notes += "k" + std::to_string(k) + " = 1\n";
  write(notes);
  ExpectFailure({"info", "a.mha"}, "its header is longer than 65536 bytes");
}

TEST_F(SeluBadInput, ErrorsEchoLittleOfAHeader) {
  std::string const much(3000, 'n');
  Write("a.nhdr", "NRRD0004\ntype: uint8\ndimension: 2\nsizes: 2 2\nencoding: raw\ndata file: " +
                      much + "\n");
  Write("a.mhd", "ObjectType = Image\nNDims = 2\nDimSize = 2 2\nElementType = MET_UCHAR\n"
                 "ElementDataFile = " +
                     much + "\n");
  Write("a.json", "{\"maximum label\": 1, \"object 1\": {\"" + much + "\": null}}");
  for (Arguments const& command : std::vector<Arguments>{
           {"info", "a.nhdr"}, {"info", "a.mhd"}, {"feature-image", "a.json", "--csv", "a.csv"}}) {
    auto const result = Selu(command);
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.error.find(std::string(81, 'n')), std::string::npos) << result.error;
  }
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
