// selu walk --picture: squares in the colors of their order, ideal lines, projections, profiles.
#include "support/SeluWalkRun.h"
#include "support/Walks.h"

#include <drawing/Colors.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>

#include <cairo/cairo.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

using test::Point;
using Arguments = std::vector<std::string>;

// The colors of a PNG file.
class CPng {
public:
  explicit CPng(std::string const& path)
      : m_Surface(cairo_image_surface_create_from_png(path.c_str()), cairo_surface_destroy) {
    EXPECT_EQ(cairo_surface_status(m_Surface.get()), CAIRO_STATUS_SUCCESS) << path;
  }
  [[nodiscard]] int Width() const { return cairo_image_surface_get_width(m_Surface.get()); }
  [[nodiscard]] int Height() const { return cairo_image_surface_get_height(m_Surface.get()); }
  /// 0xRRGGBB, or -1 outside.
  [[nodiscard]] int At(int x, int y) const {
    if (x < 0 || y < 0 || x >= Width() || y >= Height()) return -1;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel,
                cairo_image_surface_get_data(m_Surface.get()) +
                    static_cast<std::ptrdiff_t>(y) *
                        cairo_image_surface_get_stride(m_Surface.get()) +
                    static_cast<std::ptrdiff_t>(x) * 4,
                4);
    return static_cast<int>(pixel & 0xffffff);
  }

private:
  std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)> m_Surface;
};

int Rgb(selu::Color const& color) {
  auto const part = [](double share) { return static_cast<int>(share * 255 + 0.5); };
  return part(color.red) << 16 | part(color.green) << 8 | part(color.blue);
}

constexpr int c_ideal = 0x19738c; // of ideal lines and of profiles

class SeluWalkPicture : public test::CSeluWalkTest {
protected:
};

// Where a small walk's first panel begins, and how large its squares are.
constexpr int c_left = 58, c_top = 110, c_side = 28;

int SquareAt(CPng const& png, int column, int row, int left = c_left) {
  // Near its corner, off the ideal line.
  return png.At(left + column * c_side + 4, c_top + row * c_side + c_side - 5);
}

TEST_F(SeluWalkPicture, PictureShowsSquaresInTheirOrder) {
  EXPECT_EQ(Quiet({"line", "-1,2", "3,4", "--picture", "line.png"}), "");
  CPng const png(Path("line.png"));
  ORVA::CBresenhamVisitor line(Point(-1, 2, 0), Point(3, 4, 0), 2, ORVA::NEIGHBORHOOD_8, true);
  auto const points = test::Walk(line);
  ASSERT_EQ(points.size(), 5u);
  int const left = c_left + 7; // "-1" is wider than a digit
  std::array<std::array<int, 5>, 3> expected;
  for (auto& row : expected) row.fill(Rgb(selu::c_empty));
  for (std::size_t i = 0; i < points.size(); ++i)
    expected[static_cast<std::size_t>(points[i].y - 2)][static_cast<std::size_t>(points[i].x + 1)] =
        Rgb(selu::SequentialRamp(static_cast<double>(i) / 4));
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 5; ++column)
      EXPECT_EQ(SquareAt(png, column, row, left),
                expected[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)])
          << column << ' ' << row;
  EXPECT_EQ(png.At(png.Width() - 1, png.Height() / 2), 0xffffff);
  EXPECT_GE(png.Width(), 560);
  EXPECT_EQ(Read("line.png").substr(1, 3), "PNG");
}

TEST_F(SeluWalkPicture, IdealLinesLieOverTheSquares) {
  EXPECT_EQ(Quiet({"line", "0,0", "8,0", "--picture", "line.png"}), "");
  CPng const line(Path("line.png"));
  EXPECT_EQ(line.At(c_left + 4 * c_side + 7, c_top + c_side / 2), c_ideal);
  EXPECT_EQ(
      Quiet({"polygon", "0,0", "8,0", "8,8", "0,8", "--without-border", "--picture", "square.png"}),
      "");
  CPng const square(Path("square.png"));
  EXPECT_EQ(SquareAt(square, 0, 0), Rgb(selu::c_empty)) << "border voxels are left out";
  EXPECT_EQ(SquareAt(square, 1, 1), Rgb(selu::SequentialRamp(0)));
  EXPECT_EQ(square.At(c_left + c_side / 2, c_top + 4 * c_side + 7), c_ideal);
  EXPECT_EQ(square.At(c_left + 8 * c_side + c_side / 2, c_top + 4 * c_side + 7), c_ideal);
}

TEST_F(SeluWalkPicture, SolidWalksShowThreeProjections) {
  EXPECT_EQ(Quiet({"window", "--low", "0,0,0", "--high", "1,2,3", "--picture", "box.png"}), "");
  CPng const png(Path("box.png"));
  // x-y, x-z and y-z with the last voxel on top: z = 3, y = 2 and x = 1.
  auto const order = [](int x, int y, int z) {
    return Rgb(selu::SequentialRamp((x + 2 * y + 6 * z) / 23.0));
  };
  constexpr int second = 171, third = 285; // left sides of the other panels
  for (int row = 0; row < 3; ++row)
    for (int column = 0; column < 2; ++column)
      EXPECT_EQ(SquareAt(png, column, row), order(column, row, 3));
  for (int row = 0; row < 4; ++row) {
    for (int column = 0; column < 2; ++column)
      EXPECT_EQ(SquareAt(png, column, row, second), order(column, 2, row));
    for (int column = 0; column < 3; ++column)
      EXPECT_EQ(SquareAt(png, column, row, third), order(1, column, row));
  }
}

TEST_F(SeluWalkPicture, PicturesAreBounded) {
  for (Arguments const& walk :
       {Arguments{"line", "0,0", "2000000,700000"}, Arguments{"line", "0,0,0", "100000,30,-70000"},
        Arguments{"line", "2305843009213693948,0", "2305843009213693952,1"},
        Arguments{"window", "--low", "0,0,0", "--high", "1,1,1000000"},
        Arguments{"line", "0,0", "0,0", "--ends", "none"}}) {
    Arguments all = walk;
    all.insert(all.end(), {"--picture", "p.png"});
    EXPECT_EQ(WalkResult(all).code, 0) << testing::PrintToString(walk);
    CPng const png(Path("p.png"));
    EXPECT_GT(png.Width(), 500) << testing::PrintToString(walk);
    EXPECT_LT(png.Width(), 2200) << testing::PrintToString(walk);
    EXPECT_LT(png.Height(), 1200) << testing::PrintToString(walk);
  }
}

TEST_F(SeluWalkPicture, PicturesGoWithPointsAndAsSvg) {
  std::string const points = Quiet({"area", "0,0", "5,1", "3,4"});
  EXPECT_EQ(Quiet({"area", "0,0", "5,1", "3,4", "-o", "points.csv", "--picture", "area.svg"}), "");
  EXPECT_EQ(Read("points.csv"), points);
  EXPECT_NE(Read("area.svg").find("</svg>"), std::string::npos);
  WriteNrrd("a.nrrd", "uint8", {7, 5, 4}, std::vector<std::uint8_t>(140));
  auto const result =
      WalkResult({"line", "-2,0,0", "9,4,3", "--image", "a.nrrd", "--picture", "in.png"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "");
  EXPECT_NE(result.error.find("lie outside"), std::string::npos) << result.error;
}

TEST_F(SeluWalkPicture, ProfilesArePlotted) {
  WriteNrrd("f.nrrd", "float", {5, 1}, std::vector<float>{0, 10, std::nanf(""), 10, 0});
  EXPECT_EQ(Quiet({"line", "0,0", "4,0", "--image", "f.nrrd", "--profile", "--picture", "p.png"}),
            "");
  CPng const png(Path("p.png"));
  EXPECT_EQ(png.Width(), 900);
  EXPECT_EQ(png.Height(), 560);
  // The plot's box is 120 to 850 and 110 to 480; values have 4 % of room above and below.
  auto const at = [&](double distance, double value) {
    double const x = 120 + distance / 4 * 730, y = 110 + 370 * (1 - (value + 0.4) / 10.8);
    return png.At(static_cast<int>(x), static_cast<int>(y));
  };
  EXPECT_EQ(at(1, 10), c_ideal);
  EXPECT_EQ(at(3, 10), c_ideal);
  EXPECT_NE(at(0.5, 5), 0xffffff);
  EXPECT_EQ(at(2, 10), 0xffffff) << "NaN leaves a gap";
  EXPECT_EQ(at(2, 5), 0xffffff);
  for (std::vector<double> const& values :
       {std::vector<double>{7, 7}, std::vector<double>{-1.7e308, 1.7e308},
        std::vector<double>{std::nan(""), std::nan("")}, std::vector<double>{1e17, 1e17 + 16},
        std::vector<double>{0, 5e-324}}) {
    WriteNrrd("d.nrrd", "double", {2, 1}, values);
    EXPECT_EQ(Quiet({"line", "0,0", "1,0", "--image", "d.nrrd", "--profile", "--picture", "d.png"}),
              "");
    EXPECT_EQ(CPng(Path("d.png")).Width(), 900);
  }
}

} // namespace
