// The application on real images, where their folder is present.
#include "support/Matrix.h"
#include "support/SeluRun.h"

#include <images/ImageFile.h>

#include <nlohmann/json.hpp>

namespace {

using Arguments = std::vector<std::string>;
using Json = nlohmann::json;

struct StImage {
  char const* file;
  char const* range; // or null
  char const* type;
  Json size;
  double low, high;
};

std::vector<StImage> Images() {
  return {{"brick.png", nullptr, "uint8", {512, 512}, 63, 207},
          {"chromo3d.nrrd", nullptr, "uint8", {160, 140, 16}, 8, 255},
          {"brain1_image.nrrd", "0,3057", "int16", {256, 256, 25}, 0, 3057},
          {"STS_002_CT_image.nii.gz", "-200,300", "float32", {161, 143, 48}, -1000, 1156},
          {"ibsi_phantom.nii.gz", "1,9", "int16", {5, 4, 4}, 1, 9},
          {"prostate_phantom_subvolume.nrrd", nullptr, "uint16", {82, 67, 13}, 0, 2017}};
}

class SeluRealImages : public test::CSeluTest {
protected:
  void SetUp() override {
    if (!std::filesystem::is_directory(SELU_TEST_DATA))
      GTEST_SKIP() << "no folder with real images at " << SELU_TEST_DATA;
  }
  [[nodiscard]] static std::string Data(std::string const& file) {
    return std::string(SELU_TEST_DATA) + "/" + file;
  }
  static Arguments With(Arguments arguments, char const* range) {
    if (range != nullptr) arguments.insert(arguments.end(), {"--range", range});
    return arguments;
  }
};

TEST_F(SeluRealImages, InfoIsRight) {
  for (auto const& image : Images()) {
    Json const info = Json::parse(Output({"info", Data(image.file), "--format", "json"}));
    EXPECT_EQ(info["pixel type"], image.type) << image.file;
    EXPECT_EQ(info["size"], image.size) << image.file;
    EXPECT_EQ(info["least value"].get<double>(), image.low) << image.file;
    EXPECT_EQ(info["greatest value"].get<double>(), image.high) << image.file;
  }
}

TEST_F(SeluRealImages, TextureGivesItsTableMatrixAndPictures) {
  for (auto const& image : Images()) {
    SCOPED_TRACE(image.file);
    auto const table = Output(With(
        {"texture", Data(image.file), "--picture", "p.png", "--matrix", "m.nrrd"}, image.range));
    EXPECT_TRUE(table.find("\nSum Variance ") != std::string::npos);
    EXPECT_GT(Read("p.png").size(), 20000u);
    Json const json = Json::parse(Output(With(
        {"texture", Data(image.file), "--format", "json", "--picture", "p.svg"}, image.range)));
    EXPECT_TRUE(Read("p.svg").ends_with("</svg>\n"));
    std::size_t const directions = image.size.size() == 3 ? 13 : 4;
    ASSERT_EQ(json["directions"].size(), directions);
    auto const matrices = selu::ReadImage(Path("m.nrrd")).ToGray();
    for (std::size_t s = 0; s < directions; ++s)
      EXPECT_EQ(test::Total(test::ReadMatrix(matrices, static_cast<ORVA::int64>(s))),
                json["directions"][s]["pairs"].get<std::uint64_t>());
  }
}

TEST_F(SeluRealImages, SignedAndFloatingPointImagesAskForARange) {
  ExpectFailure({"texture", Data("brain1_image.nrrd")},
                "signed 16-bit integer pixels, which need --range LO,HI");
  ExpectFailure({"texture", Data("STS_002_CT_image.nii.gz")}, "range from -1000 to 1156");
}

TEST_F(SeluRealImages, CollapsingImageIsWarnedOf) {
  auto const result = Selu({"info", Data("prostate_phantom_subvolume.nrrd")});
  EXPECT_EQ(result.code, 0);
  EXPECT_TRUE(result.error.find("keeps only 8 gray levels of its 16 bits") != std::string::npos);
  EXPECT_TRUE(result.error.find("--range 0,2017") != std::string::npos);
}

} // namespace
