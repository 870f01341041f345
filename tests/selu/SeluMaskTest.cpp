// selu mask: what is left of an image inside a cylinder.
#include "support/Random.h"
#include "support/SeluPixels.h"
#include "support/SeluRun.h"

#include <base/JsonValues.h>
#include <images/ImageFile.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using Arguments = std::vector<std::string>;
using Sizes = std::vector<long>;

class SeluMask : public test::CSeluTest {
protected:
  // The command on "a.nrrd" with these options in place of the defaults.
  static Arguments Command(std::string const& axis, std::string const& center,
                           std::string const& radius, std::string const& value,
                           std::string const& output = "out.nrrd") {
    return {"mask",     "a.nrrd", "--axis",  axis,  "--center", center,
            "--radius", radius,   "--value", value, "-o",       output};
  }

  void WriteSmall() const {
    WriteNrrd("a.nrrd", "uint8", {2, 2}, std::vector<std::uint8_t>{1, 2, 3, 4});
  }

  // Random pixels and cylinders along every axis, compared with the distance of each voxel.
  template <class T>
  void CompareWithHand(std::string const& type, Sizes const& sizes) const {
    SCOPED_TRACE(type);
    test::CRandomNumbers random;
    long const nx = sizes[0], ny = sizes[1], nz = sizes.size() == 3 ? sizes[2] : 1;
    std::vector<T> pixels(static_cast<std::size_t>(nx * ny * nz));
    for (T& pixel : pixels) pixel = static_cast<T>(random.Between(1, 250));
    WriteNrrd("a.nrrd", type, sizes, pixels);
    for (std::string const axis : {"X", "Y", "Z", "y"}) {
      double const s = random.Between(-8, 40) / 4.0, t = random.Between(-8, 40) / 4.0;
      double const radius = random.Between(0, 60) / 8.0;
      EXPECT_EQ(Output(Command(axis, std::to_string(s) + "," + std::to_string(t),
                               std::to_string(radius), "0")),
                "");
      auto expected = pixels;
      for (long z = 0, i = 0; z < nz; ++z)
        for (long y = 0; y < ny; ++y)
          for (long x = 0; x < nx; ++x, ++i) {
            double const u = static_cast<double>(axis == "X" ? y : x) - s;
            double const v = static_cast<double>(axis == "Z" ? y : z) - t;
            if (u * u + v * v >= radius * radius) expected[static_cast<std::size_t>(i)] = 0;
          }
      EXPECT_EQ(test::Pixels<T>(Path("out.nrrd")), expected)
          << axis << ' ' << s << ' ' << t << ' ' << radius;
      EXPECT_EQ(selu::OpenImage(Path("out.nrrd")).Header().size,
                selu::OpenImage(Path("a.nrrd")).Header().size);
    }
  }
};

TEST_F(SeluMask, EveryPixelTypeAndAxisIsMaskedAsByHand) {
  for (Sizes const& sizes : {Sizes{11, 9, 7}, Sizes{13, 8}, Sizes{1, 5, 9}}) {
    CompareWithHand<std::uint8_t>("uint8", sizes);
    CompareWithHand<std::uint16_t>("uint16", sizes);
    CompareWithHand<std::uint32_t>("uint32", sizes);
    CompareWithHand<float>("float", sizes);
  }
}

TEST_F(SeluMask, VoxelsOnTheCircleAreOutside) {
  WriteNrrd("a.nrrd", "uint8", {5, 5}, std::vector<std::uint8_t>(25, 9));
  EXPECT_EQ(Output(Command("Z", "2,2", "2", "0")), "");
  EXPECT_EQ(test::Pixels<std::uint8_t>(Path("out.nrrd")),
            (std::vector<std::uint8_t>{0, 0, 0, 0, 0, 0, 9, 9, 9, 0, 0, 9, 9,
                                       9, 0, 0, 9, 9, 9, 0, 0, 0, 0, 0, 0}));
}

TEST_F(SeluMask, ValuesThatDoNotFitAreRefused) {
  WriteSmall();
  EXPECT_EQ(Output(Command("Z", "50,50", "1", "255")), "");
  EXPECT_EQ(test::Pixels<std::uint8_t>(Path("out.nrrd")), std::vector<std::uint8_t>(4, 255));
  std::filesystem::remove(Path("out.nrrd"));
  for (std::string const value : {"256", "300", "300.7", "-1", "2.5", "inf"})
    ExpectFailure(Command("Z", "50,50", "1", value),
                  value + " is no value for unsigned 8-bit integer pixels");
  EXPECT_FALSE(std::filesystem::exists(Path("out.nrrd")));
}

TEST_F(SeluMask, GridIsKept) {
  selu::StGrid grid;
  grid.spacing = {0.5, 0.25, 3};
  grid.origin = {-10, 20, 30.5};
  grid.direction = {{{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}}};
  selu::CRawImage const image({ORVA::CSize(4, 3, 2), selu::EnPixel::UInt8}, grid);
  for (std::string const ending : {"nrrd", "mha", "nii.gz", "tif"}) {
    selu::CAtomicFile file(Path("a." + ending));
    selu::WriteImage(file, image);
    file.Commit();
    EXPECT_EQ(Output({"mask", "a." + ending, "--axis", "Z", "--center", "1,1", "--radius", "1",
                      "--value", "7", "-o", "out." + ending}),
              "");
    EXPECT_EQ(Output({"walk", "line", "0,0,0", "1,1,1", "--image", "a." + ending, "--paint", "9",
                      "-o", "painted." + ending}),
              "");
    for (std::string const name : {"out.", "painted."}) {
      auto const kept = selu::OpenImage(Path(name + ending)).Grid();
      for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(kept.spacing[i], grid.spacing[i], 1e-6) << name << ending;
        EXPECT_NEAR(kept.origin[i], grid.origin[i], 1e-5) << name << ending;
        for (std::size_t k = 0; k < 3; ++k)
          EXPECT_NEAR(kept.direction[i][k], grid.direction[i][k], 1e-6) << name << ending;
      }
    }
  }
}

TEST_F(SeluMask, FloatingPointPixelsTakeAnyNumber) {
  WriteNrrd("a.nrrd", "float", {2, 1}, std::vector<float>{1, 2});
  EXPECT_EQ(Output(Command("Z", "0,0", "0.5", "nan")), "");
  auto const pixels = test::Pixels<float>(Path("out.nrrd"));
  EXPECT_EQ(pixels[0], 1);
  EXPECT_TRUE(std::isnan(pixels[1]));
  EXPECT_EQ(Output(Command("Z", "0,0", "0.5", "-0.25")), "");
  EXPECT_EQ(test::Pixels<float>(Path("out.nrrd"))[1], -0.25f);
}

TEST_F(SeluMask, KeptParametersReadBack) {
  WriteSmall();
  auto command = Command("x", "0.25,-3", "1.5", "7");
  command.push_back("--keep-parameters");
  EXPECT_EQ(Output(command), "");
  auto const map = selu::ReadJsonMap(Path("out.nrrd.json"));
  ORVA::CValueMap expected;
  expected.SetEntry("cylinderMaskParameters/axis", ORVA::CValueString("X"));
  expected.SetEntry("cylinderMaskParameters/s", ORVA::CValueDouble(0.25));
  expected.SetEntry("cylinderMaskParameters/t", ORVA::CValueDouble(-3));
  expected.SetEntry("cylinderMaskParameters/radius", ORVA::CValueDouble(1.5));
  EXPECT_EQ(map, expected) << Read("out.nrrd.json");
  EXPECT_EQ(Files(), (std::vector<std::string>{"a.nrrd", "out.nrrd", "out.nrrd.json"}));
}

TEST_F(SeluMask, PixelTypesThatCannotBeMaskedAreNamed) {
  for (auto const& [type, text, bytes] : std::vector<std::tuple<std::string, std::string, int>>{
           {"int8", "signed 8-bit integer", 1},
           {"int16", "signed 16-bit integer", 2},
           {"int32", "signed 32-bit integer", 4},
           {"uint64", "unsigned 64-bit integer", 8},
           {"int64", "signed 64-bit integer", 8},
           {"double", "64-bit floating-point", 8}}) {
    WriteNrrd("a.nrrd", type, {2, 2}, std::vector<char>(static_cast<std::size_t>(4 * bytes)));
    ExpectFailure(Command("Z", "0,0", "1", "0"),
                  "\"a.nrrd\" has " + text +
                      " pixels, but the mask takes only unsigned 8, 16 and 32-bit integer and "
                      "32-bit floating-point ones");
  }
  EXPECT_EQ(Files(), std::vector<std::string>{"a.nrrd"});
}

TEST_F(SeluMask, BadInputLeavesNothingBehind) {
  WriteSmall();
  ExpectFailure(Command("W", "0,0", "1", "0"), "--axis", 2);
  for (std::string const center : {"1", "1,2,3", "a,b", "nan,0", "0,inf", ""})
    ExpectFailure(Command("Z", center, "1", "0"), "--center", 2);
  for (std::string const radius : {"-1", "nan", "inf", "1,2", "one"})
    ExpectFailure(Command("Z", "0,0", radius, "0"), "--radius", 2);
  for (std::string const value : {"x", "1,2"})
    ExpectFailure(Command("Z", "0,0", "1", value), "--value needs a number", 2);
  ExpectFailure(Command("Z", "0,0", "1", "nan"), "nan is no value for unsigned 8-bit integer");
  ExpectFailure(Command("Z", "0,0", "1", "0", "no/out.nrrd"), "cannot write \"no/out.nrrd\"");
  ExpectFailure(Command("Z", "0,0", "1", "0", "out.txt"), "the ending must be one of");
  ExpectFailure({"mask", "a.nrrd"}, "required", 2);
  auto missing = Command("Z", "0,0", "1", "0");
  missing[1] = "none.nrrd";
  ExpectFailure(missing, "cannot read \"none.nrrd\"");
  WriteNrrd("a.nrrd", "uint32", {2, 2}, std::vector<std::uint32_t>(4));
  ExpectFailure(Command("Z", "0,0", "1", "0", "out.png"), "no more than 16 bits per pixel");
  EXPECT_EQ(Files(), std::vector<std::string>{"a.nrrd"});
}

TEST_F(SeluMask, RealVolumeIsMasked) {
  std::string const file = std::string(SELU_TEST_DATA) + "/prostate_phantom_subvolume.nrrd";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "no " << file;
  EXPECT_EQ(Output({"mask", file, "--axis", "Z", "--center", "40,33", "--radius", "30", "--value",
                    "65535", "-o", "out.nii.gz"}),
            "");
  auto const before = selu::ReadImage(file), after = selu::ReadImage(Path("out.nii.gz"));
  ASSERT_EQ(after.Size(), before.Size());
  ASSERT_EQ(after.Pixel(), selu::EnPixel::UInt16);
  auto const* const in = reinterpret_cast<std::uint16_t const*>(before.Bytes().data());
  auto const* const out = reinterpret_cast<std::uint16_t const*>(after.Bytes().data());
  long wrong = 0, outside = 0, i = 0;
  for (long z = 0; z < before.Size().z; ++z)
    for (long y = 0; y < before.Size().y; ++y)
      for (long x = 0; x < before.Size().x; ++x, ++i) {
        bool const isInside = (x - 40) * (x - 40) + (y - 33) * (y - 33) < 900;
        wrong += out[i] != (isInside ? in[i] : 65535);
        outside += !isInside;
      }
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(outside, 30000);
}

TEST_F(SeluMask, TheImageIsNotOverwritten) {
  WriteSmall();
  auto const image = Read("a.nrrd");
  ExpectFailure(Command("Z", "1,1", "1", "0", "./a.nrrd"),
                "cannot write \"./a.nrrd\": it is the input \"a.nrrd\"");
  Write("out.nrrd.json", image); // whatever its ending
  auto command = Command("Z", "1,1", "1", "0");
  command[1] = "out.nrrd.json";
  command.push_back("--keep-parameters");
  ExpectFailure(command, "it is the input \"out.nrrd.json\"");
  EXPECT_EQ(Read("out.nrrd.json"), image);
  EXPECT_EQ(Read("a.nrrd"), image);
}

} // namespace
