// Folders of slices: PNG and TIFF by the numbers in their names, DICOM series by their positions.
#include "support/Dicom.h"
#include "support/SeluRun.h"

#include <images/ImageFile.h>
#include <images/SliceFolder.h>

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace {

namespace fs = std::filesystem;

class SeluFolder : public test::CSeluTest {
protected:
  // Slices 6 x 4 of the layers of a volume, under these names.
  void WriteSlices(std::string const& folder, std::vector<std::string> const& names) const {
    fs::create_directory(Folder() / folder);
    for (std::size_t z = 0; z < names.size(); ++z) {
      ORVA::CImage slice(ORVA::IMAGE_GREY_8, ORVA::CSize(6, 4));
      auto* pixels = reinterpret_cast<std::uint8_t*>(slice.CreateAccess(true).WritableBase());
      for (std::size_t i = 0; i < 24; ++i) pixels[i] = static_cast<std::uint8_t>(z * 24 + i);
      selu::CAtomicFile file(Path(folder + "/" + names[z]));
      selu::WriteImage(file, slice);
      file.Commit();
    }
  }

  void ExpectCounting(std::string const& folder, std::size_t slices) const {
    auto const image = selu::ReadImage(Path(folder));
    EXPECT_EQ(image.Size(), ORVA::CSize(6, 4, static_cast<long>(slices)));
    ASSERT_EQ(image.Bytes().size(), slices * 24);
    for (std::size_t i = 0; i < image.Bytes().size(); ++i)
      ASSERT_EQ(image.Bytes()[i], static_cast<std::byte>(i)) << i;
  }

  void WriteDicom(std::string const& name, test::StDicom const& how) const {
    fs::create_directories((Folder() / name).parent_path());
    Write(name, test::Dicom(how));
  }
};

TEST_F(SeluFolder, SlicesAreOrderedByTheNumbersInTheirNames) {
  for (std::string const ending : {".png", ".tif"}) {
    std::string const folder = "stack" + ending;
    std::vector<std::string> names;
    for (int z = 8; z < 12; ++z) names.push_back("slice" + std::to_string(z) + ending);
    WriteSlices(folder, names);
    Write(folder + "/notes.txt", "no slice");
    Write(folder + "/.hidden.png", "no slice either");
    ExpectCounting(folder, 4);
  }
}

TEST_F(SeluFolder, NamesCompareByTheirNumbers) {
  EXPECT_TRUE(selu::ComesBeforeByNumbers("a9.png", "a10.png"));
  EXPECT_FALSE(selu::ComesBeforeByNumbers("a10.png", "a9.png"));
  EXPECT_TRUE(selu::ComesBeforeByNumbers("a1b2", "a1b10"));
  EXPECT_FALSE(selu::ComesBeforeByNumbers("a007", "a7"));
  EXPECT_FALSE(selu::ComesBeforeByNumbers("a7", "a007"));
  EXPECT_TRUE(selu::ComesBeforeByNumbers("a", "a1"));
  EXPECT_TRUE(selu::ComesBeforeByNumbers("1", "a"));
}

TEST_F(SeluFolder, EveryCommandTakesAFolder) {
  WriteSlices("stack", {"1.png", "2.png", "3.png"});
  EXPECT_EQ(Selu({"info", "stack"}).code, 0);
  EXPECT_EQ(Selu({"texture", "stack"}).code, 0);
  EXPECT_EQ(Selu({"mask", "stack", "--axis", "Z", "--center", "2,2", "--radius", "1", "--value",
                  "0", "-o", "m.nrrd"})
                .code,
            0);
  EXPECT_EQ(Selu({"regions", "stack", "--intensity", "stack", "-o", "r.json"}).code, 0);
  EXPECT_EQ(Output({"walk", "line", "0,0,0", "0,0,2", "--image", "stack"}),
            "x,y,z,value\n0,0,0,0\n0,0,1,24\n0,0,2,48\n");
}

TEST_F(SeluFolder, GapsAndStrangersAreNamed) {
  WriteSlices("gap", {"s1.png", "s2.png", "s5.png"});
  ExpectFailure({"info", "gap"}, "cannot read the folder");
  ExpectFailure({"info", "gap"}, "the slices 3 to 4 are missing");
  WriteSlices("one", {"s1.png", "s3.png"});
  ExpectFailure({"info", "one"}, "the slice 2 is missing");
  WriteSlices("twice", {"a1.png", "b1.png"});
  ExpectFailure({"info", "twice"}, "the slice 1 is there twice");
  WriteSlices("sizes", {"s1.png"});
  ASSERT_EQ(Selu({"synth", "noise", "--size", "5,4", "--seed", "1", "-o", "sizes/s2.png"}).code, 0);
  ExpectFailure({"info", "sizes"}, "\"s1.png\" and \"s2.png\" differ in size");
  WriteSlices("formats", {"s1.png", "s2.tif"});
  ExpectFailure({"info", "formats"}, "differ in format");
  fs::create_directory(Folder() / "none");
  ExpectFailure({"info", "none"}, "it has no slices");
  WriteSlices("cut", {"s1.png", "s2.png"});
  Write("cut/s2.png", Read("cut/s2.png").substr(0, 60));
  ExpectFailure({"info", "cut"}, "\"");
}

TEST_F(SeluFolder, SlicesTooDamagedToBeKnownAreNotLeftOut) {
  for (int z = 0; z < 3; ++z)
    WriteDicom("scan/" + std::to_string(z) + ".dcm", {.position = 1.0 * z});
  WriteSlices("png", {"s1.png", "s2.png"});
  WriteSlices("tif", {"s1.TIF", "s2.TIF"});
  for (std::string const last : {"scan/2.dcm", "png/s2.png", "tif/s2.TIF"}) {
    std::string const folder = last.substr(0, last.find('/')), whole = Read(last);
    EXPECT_EQ(Selu({"info", folder}).code, 0) << last;
    for (std::size_t const size : {0u, 3u, 50u}) {
      SCOPED_TRACE(last + " cut to " + std::to_string(size));
      Write(last, size < 50 ? whole.substr(0, size) : std::string(size, '\0'));
      ExpectFailure({"info", folder}, "cannot read \"" + last + "\"");
    }
  }
}

TEST_F(SeluFolder, DicomIsOrderedByPosition) {
  // The names say another order.
  for (int z = 0; z < 4; ++z)
    WriteDicom("scan/" + std::to_string(9 - z) + ".dcm",
               {.first = static_cast<std::uint32_t>(z * 100), .position = 2.5 * z});
  auto image = selu::OpenImage(Path("scan"));
  EXPECT_EQ(image.Header().size, ORVA::CSize(6, 4, 4));
  EXPECT_EQ(image.Grid().spacing, (std::array<double, 3>{0.5, 0.75, 2.5}));
  auto const raw = image.Read();
  selu::VisitPixels(raw, [](auto pixels) {
    for (std::size_t z = 0; z < 4; ++z)
      EXPECT_EQ(static_cast<double>(pixels[z * 24]), 100.0 * static_cast<double>(z));
  });
}

TEST_F(SeluFolder, DicomSlicesThatAreMissingAreNoticed) {
  for (int const z : {0, 1, 2, 4})
    WriteDicom("scan/" + std::to_string(z) + ".dcm", {.position = 2.0 * z});
  ExpectFailure({"info", "scan"}, "apart, but the slices");
}

TEST_F(SeluFolder, OneOfSeveralSeriesIsChosen) {
  for (int z = 0; z < 3; ++z) {
    WriteDicom("scan/a" + std::to_string(z), {.first = 1, .position = 1.0 * z, .series = "1.2.3"});
    WriteDicom("scan/b" + std::to_string(z), {.first = 2, .position = 1.0 * z, .series = "1.2.4"});
  }
  ExpectFailure({"info", "scan"}, "choose one by --series: \"1.2.3\" of 3 slices, \"1.2.4\" of 3");
  ExpectFailure({"info", "scan", "--series", "1"}, "it has no series \"1\"");
  auto const info =
      nlohmann::json::parse(Output({"info", "scan", "--series", "1.2.4", "--format", "json"}));
  EXPECT_EQ(info["least value"], 2);
  EXPECT_EQ(info["size"], (nlohmann::json{6, 4, 3}));
}

} // namespace
