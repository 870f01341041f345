// selu walk on images: values, profiles, painting and resampled planes.
#include "support/SeluPixels.h"
#include "support/SeluWalkRun.h"
#include "support/Walks.h"

#include <images/ImageFile.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

using ORVA::CSize;
using ORVA::CTriple;
using test::Point;
using test::PointList;
using Arguments = std::vector<std::string>;
using Fields = std::vector<std::string>;

class SeluWalkImage : public test::CSeluWalkTest {
protected:
  static constexpr long c_nx = 7, c_ny = 5, c_nz = 4;

  // "a.nrrd" with different values everywhere; the pixel at (x, y, z).
  template <class T = std::uint16_t>
  static T ValueAt(Point const& p) {
    return static_cast<T>(p.x + 10 * p.y + 50 * p.z);
  }
  template <class T = std::uint16_t>
  static std::vector<T> Ramp() {
    std::vector<T> pixels;
    for (auto const& p : test::BoxPoints({0, 0, 0}, {c_nx - 1, c_ny - 1, c_nz - 1}))
      pixels.push_back(ValueAt<T>(p));
    return pixels;
  }
  template <class T = std::uint16_t>
  void WriteRamp(std::string const& type = "uint16") const {
    WriteNrrd("a.nrrd", type, {c_nx, c_ny, c_nz}, Ramp<T>());
  }

  [[nodiscard]] static bool IsInside(Point const& p) {
    return p.x >= 0 && p.y >= 0 && p.z >= 0 && p.x < c_nx && p.y < c_ny && p.z < c_nz;
  }
  static std::size_t Index(Point const& p) {
    return static_cast<std::size_t>((p.z * c_ny + p.y) * c_nx + p.x);
  }
};

TEST_F(SeluWalkImage, ValuesUnderTheWalkAreRead) {
  WriteRamp();
  std::string expected = "x,y,z,value\n";
  ORVA::CBresenhamVisitor line(Point(6, 0, 3), Point(0, 4, 0), 3, ORVA::NEIGHBORHOOD_26, true);
  for (auto const& p : test::Walk(line))
    expected += std::to_string(p.x) + "," + std::to_string(p.y) + "," + std::to_string(p.z) + "," +
                std::to_string(ValueAt(p)) + "\n";
  EXPECT_EQ(Quiet({"line", "6,0,3", "0,4,0", "--image", "a.nrrd"}), expected);
  EXPECT_EQ(test::Lines(Quiet({"window", "--image", "a.nrrd"})).size(), 7u * 5 * 4 + 1);
  EXPECT_EQ(test::Lines(Quiet({"delta", "1,-0.5,2", "--image", "a.nrrd"})).size(), 7u * 5 * 4 + 1);
}

TEST_F(SeluWalkImage, ValuesOfEveryTypeAreExact) {
  auto const check = [&](std::string const& type, auto low, auto high, std::string const& lowText,
                         std::string const& highText) {
    WriteNrrd("v.nrrd", type, {2, 1}, std::vector{low, high});
    EXPECT_EQ(Quiet({"window", "--image", "v.nrrd"}),
              "x,y,value\n0,0," + lowText + "\n1,0," + highText + "\n");
  };
  check("uint8", std::uint8_t{0}, std::uint8_t{255}, "0", "255");
  check("int8", std::int8_t{-128}, std::int8_t{127}, "-128", "127");
  check("int16", std::int16_t{-32768}, std::int16_t{32767}, "-32768", "32767");
  check("uint32", std::uint32_t{1}, std::uint32_t{4294967295}, "1", "4294967295");
  check("int32", std::int32_t{-2147483647}, std::int32_t{0}, "-2147483647", "0");
  check("uint64", std::uint64_t{0}, std::numeric_limits<std::uint64_t>::max(), "0",
        "18446744073709551615");
  check("int64", std::numeric_limits<std::int64_t>::min(), std::int64_t{9007199254740993},
        "-9223372036854775808", "9007199254740993");
  check("float", 0.1f, std::numeric_limits<float>::infinity(), "0.1", "inf");
  check("double", 0.1, std::nan(""), "0.1", "nan");
  EXPECT_EQ(nlohmann::json::parse(Quiet({"window", "--image", "v.nrrd", "--format", "json"})),
            nlohmann::json::parse(R"({"walk": "window from 0,0 to 1,0",
                "columns": ["x", "y", "value"], "points": [[0, 0, 0.1], [1, 0, null]],
                "count": 2, "outside": 0})"));
}

TEST_F(SeluWalkImage, PointsOutsideAreLeftOutAndCounted) {
  WriteRamp();
  auto const result =
      WalkResult({"line", "-3,2,1", "9,2,1", "--image", "a.nrrd", "--format", "json"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.error, "selu: note: 6 of the walk's 13 points lie outside the image \"a.nrrd\" "
                          "and are left out\n");
  auto const json = nlohmann::json::parse(result.out);
  EXPECT_EQ(json["count"], 7);
  EXPECT_EQ(json["outside"], 6);
  EXPECT_EQ(json["points"][0], nlohmann::json::array({0, 2, 1, 70}));
  auto const none = WalkResult({"line", "-3,-2,1", "-9,-2,1", "--image", "a.nrrd"});
  EXPECT_EQ(none.out, "x,y,z,value\n");
  EXPECT_NE(none.error.find("7 of the walk's 7 points"), std::string::npos) << none.error;
}

TEST_F(SeluWalkImage, PlanarWalksNeedPlanarImages) {
  WriteRamp();
  Fails({"line", "0,0", "3,3", "--image", "a.nrrd"},
        "the line from 0,0 to 3,3 needs z, since the image is 3D");
  Fails({"polygon", "0,0", "3,3", "0,3", "--image", "a.nrrd"},
        "the polygon needs z, since the image is 3D");
  Fails({"window", "--low", "0,0", "--high", "3,3", "--image", "a.nrrd"}, "needs z");
  WriteNrrd("flat.nrrd", "uint8", {3, 2}, std::vector<std::uint8_t>{1, 2, 3, 4, 5, 6});
  EXPECT_EQ(WalkResult({"line", "1,1,-1", "1,1,1", "--image", "flat.nrrd"}).out,
            "x,y,z,value\n1,1,0,5\n");
}

TEST_F(SeluWalkImage, ProfileMeasuresAlongTheIdealLine) {
  WriteRamp();
  auto const rows =
      test::Lines(Quiet({"line", "0,1,1", "6,4,1", "--image", "a.nrrd", "--profile"}));
  ASSERT_EQ(rows.size(), 8u);
  EXPECT_EQ(rows[0], "x,y,z,distance,value");
  for (std::size_t i = 1; i < rows.size(); ++i) {
    auto const fields = test::Fields(rows[i]);
    Point const p(std::stol(fields[0]), std::stol(fields[1]), std::stol(fields[2]));
    auto const dx = static_cast<double>(p.x), dy = static_cast<double>(p.y - 1);
    EXPECT_NEAR(std::stod(fields[3]), (6 * dx + 3 * dy) / std::sqrt(45), 1e-12) << rows[i];
    EXPECT_EQ(std::stoi(fields[4]), ValueAt(p)) << rows[i];
  }
  EXPECT_EQ(test::Fields(rows[1])[3], "0");
  EXPECT_NEAR(std::stod(test::Fields(rows.back())[3]), std::sqrt(45), 1e-12);
}

TEST_F(SeluWalkImage, ProfileIsInTheImagesSpacing) {
  std::string const pixels(27, '\x05');
  for (std::string const space :
       {"spacings: 0.5 2 3\n", "space: left-posterior-superior\nspace directions: (0,-0.5,0) "
                               "(2,0,0) (0,0,3)\n"}) {
    Write("s.nrrd", "NRRD0004\ntype: uint8\ndimension: 3\nsizes: 3 3 3\n" + space +
                        "encoding: raw\n\n" + pixels);
    auto const along = [&](std::string const& to) {
      auto const rows = test::Lines(Quiet({"line", "0,0,0", to, "--image", "s.nrrd", "--profile"}));
      return std::stod(test::Fields(rows.back())[3]);
    };
    EXPECT_NEAR(along("2,0,0"), 1, 1e-12);
    EXPECT_NEAR(along("0,2,0"), 4, 1e-12);
    EXPECT_NEAR(along("2,2,2"), std::sqrt(1 + 16 + 36), 1e-12);
  }
  EXPECT_EQ(Quiet({"line", "1,1,1", "1,1,1", "--image", "s.nrrd", "--profile"}),
            "x,y,z,distance,value\n1,1,1,0,5\n");
}

TEST_F(SeluWalkImage, PaintingChangesTheVoxelsOfTheWalkAlone) {
  WriteRamp();
  PointList const corners = {{-2, 0, 0}, {5, 0, 1}, {5, 6, 4}, {-2, 6, 3}};
  auto expected = Ramp();
  std::size_t outside = 0, inside = 0;
  ORVA::CPolygonVisitor polygon(corners, 3, ORVA::NEIGHBORHOOD_26, true);
  for (auto const& p : test::Walk(polygon)) {
    if (IsInside(p)) expected[Index(p)] = 65535;
    ++(IsInside(p) ? inside : outside);
  }
  ASSERT_GT(inside, 10u);
  ASSERT_GT(outside, 0u);
  std::string const before = Read("a.nrrd");
  auto const result = WalkResult({"polygon", "-2,0,0", "5,0,1", "5,6,4", "-2,6,3", "--image",
                                  "a.nrrd", "--paint", "65535", "-o", "out.nrrd"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.error.find("note: " + std::to_string(outside) + " of the walk's " +
                              std::to_string(inside + outside) + " points"),
            std::string::npos)
      << result.error;
  EXPECT_EQ(test::Pixels<std::uint16_t>(Path("out.nrrd")), expected);
  EXPECT_EQ(selu::OpenImage(Path("out.nrrd")).Header().size, CSize(c_nx, c_ny, c_nz));
  EXPECT_EQ(Read("a.nrrd"), before);
}

TEST_F(SeluWalkImage, EveryPixelTypeIsPainted) {
  auto const check = [&]<class T>(std::string const& type, std::string const& text, T value) {
    for (std::string const ending : {"nrrd", "mha", "nii.gz"}) {
      WriteRamp<T>(type);
      auto expected = Ramp<T>();
      expected[Index({3, 2, 1})] = value;
      EXPECT_EQ(Quiet({"line", "3,2,1", "3,2,1", "--image", "a.nrrd", "--paint", text, "-o",
                       "out." + ending}),
                "")
          << type;
      EXPECT_EQ(test::Pixels<T>(Path("out." + ending)), expected) << type << ' ' << ending;
      EXPECT_EQ(selu::OpenImage(Path("out." + ending)).Header().pixel,
                selu::OpenImage(Path("a.nrrd")).Header().pixel);
    }
  };
  check("uint8", "255", std::uint8_t{255});
  check("int8", "-128", std::int8_t{-128});
  check("uint16", "1e3", std::uint16_t{1000});
  check("int16", "-5", std::int16_t{-5});
  check("uint32", "4294967295", std::uint32_t{4294967295});
  check("int32", "-2147483648", std::numeric_limits<std::int32_t>::min());
  check("uint64", "18446744073709551615", std::numeric_limits<std::uint64_t>::max());
  check("int64", "9007199254740993", std::int64_t{9007199254740993});
  check("float", "0.1", 0.1f);
  check("double", "-1e300", -1e300);
}

TEST_F(SeluWalkImage, ValuesThatNoPixelHoldsAreRefused) {
  auto const paint = [&](std::string const& value, std::string const& text, int code = 1) {
    Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "--paint", value, "-o", "out.nrrd"}, text,
          code);
  };
  WriteRamp<std::uint8_t>("uint8");
  for (std::string const value : {"256", "-1", "2.5", "nan", "inf"})
    paint(value, value + " is no value for unsigned 8-bit integer pixels");
  paint("x", "--paint needs a number, not \"x\"", 2);
  paint("1,2", "--paint needs a number", 2);
  WriteRamp<std::int64_t>("int64");
  paint("9223372036854775808", "is no value for signed 64-bit integer pixels");
  WriteRamp<float>("float");
  paint("1e39", "1e39 is no value for 32-bit floating-point pixels");
  Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "--paint", "1"}, "--paint needs -o", 2);
  EXPECT_EQ(Files(), Fields{"a.nrrd"});
}

TEST_F(SeluWalkImage, InputsAreNotOverwritten) {
  WriteRamp();
  std::string const before = Read("a.nrrd");
  Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "--paint", "1", "-o", "./a.nrrd"},
        "cannot write \"./a.nrrd\": it is the input \"a.nrrd\"");
  std::filesystem::create_symlink("a.nrrd", Path("points.csv"));
  Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "-o", "points.csv"}, "it is the input");
  std::filesystem::create_symlink("a.nrrd", Path("link.png"));
  Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "--picture", "link.png"},
        "it is the input");
  for (std::string const name : {"out.txt", "out.png", "no/out.nrrd"})
    Fails({"line", "0,0,0", "1,1,1", "--image", "a.nrrd", "--paint", "1", "-o", name},
          "cannot write \"" + name + "\"");
  Fails({"line", "0,0,0", "1,1,1", "--image", "none.nrrd"}, "cannot read \"none.nrrd\"");
  EXPECT_EQ(Read("a.nrrd"), before);
  EXPECT_EQ(Files(), (Fields{"a.nrrd", "link.png", "points.csv"}));
}

TEST_F(SeluWalkImage, UnwritablePixelTypesAreNamed) {
  WriteNrrd("f.nrrd", "int16", {2, 2}, std::vector<std::int16_t>(4));
  Arguments const paint = {"line", "0,0", "1,1", "--image", "f.nrrd", "--paint", "1", "-o"};
  auto const with = [&](std::string const& output) {
    Arguments all = paint;
    all.push_back(output);
    return all;
  };
  Fails(with("out.png"), "PNG holds no signed pixels");
  EXPECT_EQ(Quiet(with("out.tif")), "");
  EXPECT_EQ(test::Pixels<std::int16_t>(Path("out.tif")), (std::vector<std::int16_t>{1, 0, 0, 1}));
  WriteNrrd("f.nrrd", "double", {2, 2}, std::vector<double>(4));
  Fails(with("out.png"), "PNG holds no more than 16 bits per pixel");
  EXPECT_EQ(Quiet(with("out.tif")), "");
  EXPECT_EQ(test::Pixels<double>(Path("out.tif")), (std::vector<double>{1, 0, 0, 1}));
}

TEST_F(SeluWalkImage, PointsAreNotWrittenAsAnImage) {
  for (std::string const name : {"x.tif", "x.png", "x.nrrd", "x.nii.gz"})
    ExpectFailure({"walk", "line", "0,0", "1,1", "-o", name}, "give --paint", 2);
  EXPECT_TRUE(Files().empty());
}

TEST_F(SeluWalkImage, PlanesKeepTheSpacingOfTheirAxes) {
  selu::StGrid grid;
  grid.spacing = {0.5, 0.25, 3};
  selu::CRawImage const image({CSize(4, 3, 2), selu::EnPixel::UInt8}, grid);
  selu::CAtomicFile file(Path("a.nrrd"));
  selu::WriteImage(file, image);
  file.Commit();
  EXPECT_EQ(Quiet({"slice", "--normal", "0,1,0", "--distance", "1", "--image", "a.nrrd",
                   "--picture", "plane.png"}),
            "");
  auto const kept = selu::OpenImage(Path("plane.png")).Grid();
  EXPECT_EQ(kept.spacing[0], 0.5);
  EXPECT_EQ(kept.spacing[1], 3);
}

TEST_F(SeluWalkImage, PlanesAcrossAnAxisKeepTheirPlaceInSpace) {
  selu::StGrid grid;
  grid.spacing = {0.5, 0.25, 3};
  grid.origin = {10, -20, 0.1};
  grid.direction = {{{0, 1, 0}, {0, 0, 1}, {1, 0, 0}}};
  selu::CRawImage const image({CSize(4, 3, 5), selu::EnPixel::UInt8}, grid);
  selu::CAtomicFile file(Path("a.nrrd"));
  selu::WriteImage(file, image);
  file.Commit();
  // Each pixel of the plane lies where its voxel does.
  auto const place = [](selu::StGrid const& g, std::array<double, 3> const& index, std::size_t k) {
    double sum = g.origin[k];
    for (std::size_t i = 0; i < 3; ++i) sum += g.direction[i][k] * g.spacing[i] * index[i];
    return sum;
  };
  for (auto const& [normal, across] :
       {std::pair<std::string, std::size_t>{"1,0,0", 0}, {"0,-2,0", 1}, {"0,0,1", 2}}) {
    EXPECT_EQ(Quiet({"slice", "--normal", normal, "--distance", across == 1 ? "-4" : "2", "--image",
                     "a.nrrd", "--picture", "plane.png"}),
              "");
    auto const plane = selu::OpenImage(Path("plane.png")).Grid();
    std::size_t const column = across == 0 ? 1 : 0, row = across == 2 ? 1 : 2;
    std::array<double, 3> voxel = {};
    voxel[across] = 2, voxel[column] = 3, voxel[row] = 1;
    for (std::size_t k = 0; k < 3; ++k)
      EXPECT_NEAR(place(plane, {3, 1, 0}, k), place(grid, voxel, k), 1e-12) << normal;
  }
  EXPECT_EQ(Quiet({"slice", "--normal", "1,0,1", "--distance", "2", "--image", "a.nrrd",
                   "--picture", "plane.png"}),
            "");
  EXPECT_EQ(selu::OpenImage(Path("plane.png")).Grid().origin, selu::StGrid().origin);
}

TEST_F(SeluWalkImage, PlanesAreResampledAlongTheDominantAxis) {
  WriteRamp();
  struct StCase {
    std::string normal, distance;
    CTriple<double> n;
    double d;
    std::int64_t Point::*column, Point::*row;
  };
  for (auto const& [normal, distance, n, d, column, row] :
       {StCase{"0,0.5,1", "2.5", {0, 0.5, 1}, 2.5, &Point::x, &Point::y},
        StCase{"-1,2,0.5", "3", {-1, 2, 0.5}, 3, &Point::x, &Point::z},
        StCase{"3,1,1", "7", {3, 1, 1}, 7, &Point::y, &Point::z}}) {
    ORVA::CPlaneSection section(n, d);
    section.SetImageSize(CSize(c_nx, c_ny, c_nz));
    Point const extents(c_nx, c_ny, c_nz);
    auto const columns = extents.*column;
    std::vector<std::uint16_t> expected(static_cast<std::size_t>(columns * extents.*row));
    auto const points = test::Walk(section);
    ASSERT_GT(points.size(), 5u);
    for (auto const& p : points)
      expected[static_cast<std::size_t>(p.*row * columns + p.*column)] = ValueAt(p);
    EXPECT_EQ(Quiet({"slice", "--normal", normal, "--distance", distance, "--image", "a.nrrd",
                     "--picture", "plane.png"}),
              "");
    EXPECT_EQ(test::Pixels<std::uint16_t>(Path("plane.png")), expected) << normal;
    EXPECT_EQ(selu::OpenImage(Path("plane.png")).Header().size, CSize(columns, extents.*row))
        << normal;
  }
}

TEST_F(SeluWalkImage, PlanesOfOtherTypesBecomeEightBits) {
  float const inf = std::numeric_limits<float>::infinity();
  WriteNrrd("f.nrrd", "float", {2, 2, 2},
            std::vector<float>{-1, 0, 3, std::nanf(""), inf, 9, -inf, 9});
  Arguments const plane = {"slice",   "--normal", "0,0,1",     "--distance", "0",
                           "--image", "f.nrrd",   "--picture", "plane.png"};
  EXPECT_EQ(Quiet(plane), "");
  EXPECT_EQ(test::Pixels<std::uint8_t>(Path("plane.png")),
            (std::vector<std::uint8_t>{0, 64, 255, 0}));
  auto ranged = plane;
  ranged.insert(ranged.end(), {"--range", "0,6"});
  EXPECT_EQ(Quiet(ranged), "");
  EXPECT_EQ(test::Pixels<std::uint8_t>(Path("plane.png")),
            (std::vector<std::uint8_t>{0, 0, 128, 0}));
  ranged[4] = "1";
  EXPECT_EQ(Quiet(ranged), "");
  EXPECT_EQ(test::Pixels<std::uint8_t>(Path("plane.png")),
            (std::vector<std::uint8_t>{255, 255, 0, 255}));
  ranged.back() = "6,0";
  Fails(ranged, "--range", 2);
  auto svg = plane;
  svg.back() = "plane.svg";
  Fails(svg, "the picture of a plane ends in .png");
  EXPECT_EQ(Files(), (Fields{"f.nrrd", "plane.png"}));
}

TEST_F(SeluWalkImage, PlanesOfRealVolumesKeepTheirVoxels) {
  std::string const file = std::string(SELU_TEST_DATA) + "/prostate_phantom_subvolume.nrrd";
  if (!std::filesystem::exists(file)) GTEST_SKIP() << "no " << file;
  EXPECT_EQ(Quiet({"slice", "--normal", "0,0,1", "--distance", "6", "--image", file, "--picture",
                   "plane.png"}),
            "");
  auto const volume = selu::ReadImage(file), plane = selu::ReadImage(Path("plane.png"));
  auto const pixels = static_cast<std::size_t>(volume.Size().x * volume.Size().y);
  ASSERT_EQ(plane.Bytes().size(), pixels * 2);
  EXPECT_EQ(std::memcmp(plane.Bytes().data(), volume.Bytes().data() + 6 * pixels * 2, pixels * 2),
            0);
}

} // namespace
