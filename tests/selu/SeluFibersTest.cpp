// Volumes of fibers: reproducible, as dense as their number and radius say, and with a texture that
// tells their orientation.
#include "support/Images.h"
#include "support/SeluRun.h"

#include <images/ImageFile.h>

#include <nlohmann/json.hpp>

#include <array>
#include <chrono>
#include <map>

namespace {

using Arguments = std::vector<std::string>;

class SeluFibers : public test::CSeluTest {
protected:
  [[nodiscard]] static Arguments Command(std::string const& size, std::string const& count,
                                         std::string const& radius, std::string const& orientation,
                                         std::string const& seed, std::string const& file) {
    return {"synth", "fibers",        "--size",    size,     "--count", count, "--radius",
            radius,  "--orientation", orientation, "--seed", seed,      "-o",  file};
  }
  void Make(std::string const& size, std::string const& count, std::string const& radius,
            std::string const& orientation, std::string const& seed,
            std::string const& file) const {
    auto const result = Selu(Command(size, count, radius, orientation, seed, file));
    EXPECT_EQ(result.code, 0) << result.error;
    EXPECT_EQ(result.out, "");
  }
  [[nodiscard]] std::vector<std::uint8_t> Voxels(std::string const& file) const {
    auto const image = selu::ReadImage(Path(file)).ToGray();
    auto const pixels = test::Pixels<std::uint8_t>(image);
    return {pixels.begin(), pixels.end()};
  }
  /// Contrast by direction, as the texture command finds it.
  [[nodiscard]] std::map<std::string, double> Contrasts(std::string const& file) const {
    auto const json = nlohmann::json::parse(Output({"texture", file, "--format", "json"}));
    std::map<std::string, double> contrasts;
    for (auto const& entry : json["directions"]) {
      auto const& d = entry["direction"];
      contrasts[std::to_string(d[0].get<int>()) + "," + std::to_string(d[1].get<int>()) + "," +
                std::to_string(d[2].get<int>())] = entry["features"]["Contrast"].get<double>();
    }
    return contrasts;
  }
};

TEST_F(SeluFibers, SameSeedSameBytes) {
  Make("40,30,20", "20", "2", "isotropic", "7", "a.nrrd");
  Make("40,30,20", "20", "2", "isotropic", "7", "b.nrrd");
  Make("40,30,20", "20", "2", "isotropic", "8", "c.nrrd");
  EXPECT_EQ(Read("a.nrrd"), Read("b.nrrd"));
  EXPECT_NE(Read("a.nrrd"), Read("c.nrrd"));
}

TEST_F(SeluFibers, OneFiberIsACylinderThroughTheWholeVolume) {
  // Along x: every plane across holds the same disc, as far as it lies inside.
  Make("50,41,41", "1", "4", "fixed,phi=0,theta=90deg,psi=90deg", "1", "a.nrrd");
  auto const voxels = Voxels("a.nrrd");
  std::array<double, 50> areas = {};
  for (std::size_t i = 0; i < voxels.size(); ++i) areas[i % 50] += voxels[i] / 255.0;
  for (double const area : areas) EXPECT_DOUBLE_EQ(area, areas[0]);
  EXPECT_GT(areas[0], 0);
  EXPECT_LT(areas[0], 1.05 * 3.1416 * 16);
}

TEST_F(SeluFibers, AFiberHasTheSectionOfItsRadius) {
  // Along z, thin enough to lie inside for most seeds: the sum of grays is the disc's area.
  int whole = 0;
  for (int seed = 1; seed <= 10; ++seed) {
    Make("101,101,2", "1", "6", "fixed", std::to_string(seed), "a.nrrd");
    double area = 0;
    for (auto const gray : Voxels("a.nrrd")) area += gray / 255.0 / 2;
    EXPECT_LT(area, 1.02 * 3.1416 * 36);
    whole += area > 0.98 * 3.1416 * 36 ? 1 : 0;
  }
  EXPECT_GE(whole, 5);
}

TEST_F(SeluFibers, NoFibersNoForeground) {
  Make("8,8,8", "0", "2", "isotropic", "7", "a.nrrd");
  EXPECT_EQ(Voxels("a.nrrd"), std::vector<std::uint8_t>(512, 0));
}

TEST_F(SeluFibers, TextureFindsTheDirectionOfTheFibersAgain) {
  struct StCase {
    std::string orientation, along;
  };
  for (auto const& [orientation, along] :
       {StCase{"vmf,kappa=60,theta=90deg,phi=0", "1,0,0"},
        StCase{"vmf,kappa=60,theta=90deg,phi=90deg", "0,1,0"}, StCase{"vmf,kappa=60", "0,0,1"},
        StCase{"watson,kappa=60,theta=90deg,phi=45deg", "1,1,0"},
        StCase{"girdle,beta=0.1,theta=90deg,phi=0", "1,0,0"}}) {
    Make("96,96,96", "60", "3", orientation, "5", "a.nrrd");
    auto const contrasts = Contrasts("a.nrrd");
    ASSERT_EQ(contrasts.size(), 13u);
    ASSERT_TRUE(contrasts.contains(along));
    for (auto const& [direction, contrast] : contrasts) {
      if (direction == along) continue;
      EXPECT_LT(1.2 * contrasts.at(along), contrast) << orientation << ": " << direction;
    }
  }
}

TEST_F(SeluFibers, AMixtureOfOrientationsComesFromAFile) {
  Write("mix.json", R"({"components": [
    {"weight": 0.5, "distribution": "vmf", "kappa": 100, "theta": "90deg"},
    {"weight": 0.5, "distribution": "vmf", "kappa": 100, "theta": "90deg", "phi": "90deg"}]})");
  Make("96,96,96", "80", "3", "mixture,file=mix.json", "5", "a.nrrd");
  auto const contrasts = Contrasts("a.nrrd");
  EXPECT_LT(1.2 * contrasts.at("1,0,0"), contrasts.at("0,0,1"));
  EXPECT_LT(1.2 * contrasts.at("0,1,0"), contrasts.at("0,0,1"));
}

TEST_F(SeluFibers, EveryFormatAndThinVolumesWork) {
  for (std::string const ending : {"nrrd", "mha", "nii", "nii.gz", "tif"}) {
    Make("20,18,16", "5", "1.5", "isotropic", "3", "a." + ending);
    EXPECT_EQ(Voxels("a." + ending), Voxels("a.nrrd")) << ending;
  }
  for (std::string const size : {"1,1,2", "1,7,3", "300,1,2", "2,2,2"})
    Make(size, "20", "0.6", "isotropic", "3", "thin.nrrd");
}

TEST_F(SeluFibers, WrongArgumentsAreRefusedByName) {
  auto const refused = [this](Arguments const& arguments, std::string const& text, int code) {
    ExpectFailure(arguments, text, code);
  };
  refused(Command("20,20", "5", "2", "isotropic", "1", "a.nrrd"), "three numbers", 2);
  refused(Command("20,20,20", "-5", "2", "isotropic", "1", "a.nrrd"), "\"-5\"", 2);
  refused(Command("20,20,20", "5", "2", "isotropic", "x", "a.nrrd"), "\"x\"", 2);
  for (std::string const radius : {"0", "-1", "nan", "inf", "21", "wide"})
    refused(Command("20,20,20", "5", radius, "isotropic", "1", "a.nrrd"), "\"" + radius + "\"", 2);
  refused(Command("20,20,20", "5", "2", "vmf,kappa=0", "1", "a.nrrd"), "kappa", 2);
  refused(Command("20,20,20", "5", "2", "normal", "1", "a.nrrd"), "\"normal\"", 2);
  refused(Command("20,20,20", "5", "2", "vmf,kappa=2,theta=4", "1", "a.nrrd"), "\"4\"", 2);
  EXPECT_TRUE(Files().empty());
}

TEST_F(SeluFibers, SizesBeyondMemoryOrTheDiskAreRefused) {
  ExpectFailure(Command("1000000,1000000,1000000", "5", "2", "isotropic", "1", "a.nrrd"),
                "left on its disk");
  ExpectFailure(Command("1000000,1000000,1000000", "5", "2", "isotropic", "1", "a.nii.gz"),
                "more than this machine's memory");
  EXPECT_TRUE(Files().empty());
}

TEST_F(SeluFibers, CtrlCLeavesNothingBehind) {
  auto const result = Selu(Command("64,64,64", "100000000", "5", "isotropic", "1", "a.nrrd"),
                           {.interruptAfter = 0.4});
  EXPECT_EQ(result.code, 130);
  EXPECT_EQ(result.error, "selu: interrupted\n");
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluFibers, HelpNamesTheOrientations) {
  auto const help = Output({"synth", "fibers", "--help"});
  for (std::string const name :
       {"isotropic", "girdle", "vmf", "watson", "fixed", "constant", "mixture", "--radius"})
    EXPECT_NE(help.find(name), std::string::npos) << name;
  EXPECT_NE(Output({"synth", "--help"}).find("fibers"), std::string::npos);
}

TEST_F(SeluFibers, AnswerToTheirBritishNameAsWell) {
  EXPECT_EQ(Output({"synth", "fibres", "--help"}), Output({"synth", "fibers", "--help"}));
}

} // namespace
