// selu texture-map: the library's maps, in files that keep the grid.
#include "support/SeluRun.h"

#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <images/ImageFile.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace {

using Arguments = std::vector<std::string>;
using ORVA::CSize;
using ORVA::EnTextureFeature;

class SeluTextureMap : public test::CSeluTest {
protected:
  void Make(std::string const& size, std::string const& file) const {
    ASSERT_EQ(Selu({"synth", "blobs", "--size", size, "--seed", "3", "-o", file}).code, 0);
  }
  void ExpectMap(std::string const& file, ORVA::CImage const& expected) const {
    auto const map = selu::ReadImage(Path(file));
    EXPECT_EQ(map.Pixel(), selu::EnPixel::Float);
    EXPECT_EQ(map.ToGray(), expected) << file;
  }
};

TEST_F(SeluTextureMap, MapsAreThoseOfTheLibraryWithAnyNumberOfThreads) {
  for (std::string const size : {"40,30", "17,16,15"}) {
    Make(size, "a.nrrd");
    auto const image = selu::ReadImage(Path("a.nrrd")).ToGray();
    int const dimension = image.Size().Dim();
    ORVA::CTextureWindow window("map", nullptr);
    window.SetSides(dimension == 2 ? CSize(7, 7) : CSize(7, 7, 7));
    window.SetFeatures(std::array{EnTextureFeature::Contrast, EnTextureFeature::JointEntropy});
    window.SetDisplacements(ORVA::NeighborDisplacements(dimension));
    window.SetSymmetric(true);
    auto const expected = window.Maps(ORVA::CQuantizer::BinCount(16).Quantize(image));
    for (std::string const threads : {"1", "3"}) {
      EXPECT_EQ(
          Output({"texture-map", "a.nrrd", "--window", "7", "--bin-count", "16", "--symmetric",
                  "--features", "contrast,joint_entr", "--threads", threads, "-o", "m.nrrd"}),
          "");
      ExpectMap("m-contrast.nrrd", expected[0]);
      ExpectMap("m-joint_entr.nrrd", expected[1]);
    }
  }
}

TEST_F(SeluTextureMap, OneFeatureGoesToTheNameItselfInEveryFormat) {
  Make("20,18", "a.png");
  std::vector<std::string> const names = {"m.nrrd", "m.mha", "m.tif", "m.nii.gz"};
  for (auto const& name : names)
    (void)Output({"texture-map", "a.png", "--window", "5", "--features", "energy", "-o", name});
  auto const first = selu::ReadImage(Path(names[0])).ToGray();
  for (auto const& name : names) ExpectMap(name, first);
  EXPECT_NE(Read("m.nrrd").find("feature:=energy"), std::string::npos);
  EXPECT_NE(Read("m.nrrd").find("window:=5 x 5"), std::string::npos);
  EXPECT_NE(Read("m.tif").find("energy"), std::string::npos);
}

TEST_F(SeluTextureMap, TheGridIsKept) {
  std::vector<std::uint8_t> pixels(8 * 7 * 6, 3);
  std::string const header = "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 8 7 6\n"
                             "space: left-posterior-superior\n"
                             "space directions: (0.5,0,0) (0,0,2) (0,-3,0)\n"
                             "space origin: (10,20,30)\nencoding: raw\n\n";
  Write("a.nrrd", header + std::string(pixels.begin(), pixels.end()));
  (void)Output({"texture-map", "a.nrrd", "--window", "3", "--features", "corr", "-o", "m.nrrd"});
  auto const in = selu::ReadImage(Path("a.nrrd")).Grid();
  EXPECT_EQ(in.spacing[2], 3);
  EXPECT_EQ(selu::ReadImage(Path("m.nrrd")).Grid(), in);
}

TEST_F(SeluTextureMap, StepsAndValidWindowsMoveTheGrid) {
  Make("21,17,12", "plain.nrrd");
  auto const image = selu::ReadImage(Path("plain.nrrd"));
  selu::StGrid grid;
  grid.spacing = {0.5, 2, 3};
  grid.origin = {10, 20, 30};
  grid.direction = {{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}};
  selu::CRawImage placed({image.Size(), image.Pixel()}, grid);
  std::ranges::copy(image.Bytes(), placed.Bytes().begin());
  selu::CAtomicFile file(Path("a.nrrd"));
  selu::WriteImage(file, placed);
  file.Commit();

  ORVA::CTextureWindow window("map", nullptr);
  window.SetSides(CSize(7, 5, 3));
  window.SetSteps(CSize(2, 3, 4));
  window.SetBorder(ORVA::EnWindowBorder::Valid);
  window.SetFeatures(std::array{EnTextureFeature::Contrast});
  window.SetDisplacements(ORVA::NeighborDisplacements(3));
  auto const expected = window.Maps(ORVA::CQuantizer::BinCount(8).Quantize(image.ToGray()));
  (void)Output({"texture-map", "a.nrrd", "--window", "7,5,3", "--step", "2,3,4", "--border",
                "valid", "--features", "contrast", "--bin-count", "8", "-o", "m.nrrd"});
  ExpectMap("m.nrrd", expected[0]);
  auto const moved = selu::ReadImage(Path("m.nrrd")).Grid();
  EXPECT_EQ(moved.spacing, (std::array<double, 3>{1, 6, 12}));
  // The first window lies around voxel (3, 2, 1): x runs along the second axis of space.
  EXPECT_EQ(moved.origin, (std::array<double, 3>{14, 21.5, 33}));
  EXPECT_EQ(moved.direction, grid.direction);
}

TEST_F(SeluTextureMap, WindowsOffTheMaskAreNoNumbers) {
  WriteNrrd<std::uint8_t>("i.nrrd", "uint8", {8, 1}, {1, 2, 1, 2, 1, 2, 1, 2});
  WriteNrrd<std::uint8_t>("k.nrrd", "uint8", {8, 1}, {7, 7, 7, 7, 0, 0, 0, 0});
  (void)Output({"texture-map", "i.nrrd", "--mask", "k.nrrd", "--label", "7", "--window", "3,1",
                "--direction", "1,0", "--features", "contrast", "--bin-width", "1", "-o",
                "m.nrrd"});
  auto const map = selu::ReadImage(Path("m.nrrd"));
  selu::VisitPixels(map, [](auto values) {
    for (std::size_t x = 0; x < 8; ++x)
      if (x < 4) // the window reaches a pair
        EXPECT_EQ(static_cast<double>(values[x]), 1) << x;
      else
        EXPECT_TRUE(std::isnan(static_cast<double>(values[x]))) << x;
  });
}

TEST_F(SeluTextureMap, APictureHasAPanelForEachFeature) {
  Make("40,30", "a.png");
  for (std::string const name : {"p.png", "p.svg"})
    (void)Output({"texture-map", "a.png", "--window", "5", "-o", "m.nrrd", "--picture", name});
  EXPECT_NE(Read("p.svg").find("<svg"), std::string::npos);
  EXPECT_EQ(selu::OpenImage(Path("m-corr.nrrd")).Header().size, CSize(40, 30));
  (void)Output({"texture-map", "a.png", "--window", "5", "--features", "haralick", "-o", "h.nrrd"});
  EXPECT_TRUE(std::filesystem::exists(Path("h-haralick_entropy.nrrd")));
}

TEST_F(SeluTextureMap, BadWordsLeaveNothing) {
  Make("20,18", "a.png");
  auto const before = Files();
  struct StCase {
    Arguments options;
    std::string text;
    int code;
  };
  std::vector<StCase> const cases = {
      {{"--window", "4"}, "\"4\"", 2},
      {{"--window", "0"}, "\"0\"", 2},
      {{"--window", "5,5,5"}, "since the image is 2D", 1},
      {{"--step", "0"}, "--step needs a number above 0", 2},
      {{"--step", "1,1,1"}, "since the image is 2D", 1},
      {{"--border", "none"}, "--border", 2},
      {{"--border", "valid", "--window", "21"}, "no window of 21 x 21 voxels lies in the image", 1},
      {{"--features", "nothing"}, "nothing", 2},
      {{"--picture", "p.jpg"}, "a picture ends in .png or .svg", 1},
      {{"--levels", "5000"}, "5000", 1}};
  for (auto const& one : cases) {
    Arguments arguments = {"texture-map", "a.png", "-o", "m.nrrd"};
    arguments.insert(arguments.end(), one.options.begin(), one.options.end());
    ExpectFailure(arguments, one.text, one.code);
  }
  ExpectFailure({"texture-map", "a.png", "-o", "m.png"}, "PNG holds no");
  ExpectFailure({"texture-map", "a.png", "--features", "corr", "-o", "no/m.nrrd"}, "\"no\"");
  EXPECT_EQ(Files(), before);
}

} // namespace
