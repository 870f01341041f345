// selu walk solid, the mesh files it reads, and polygons with real corners.
#include "support/SeluWalkRun.h"
#include "support/Walks.h"

#include <base/Errors.h>
#include <walks/MeshFile.h>

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>

#include <bit>
#include <cstdint>

namespace {

using namespace ORVA;
using test::Point;
using test::PointList;
using Arguments = std::vector<std::string>;

std::string const c_off = R"(OFF
# a tetrahedron
4 4 6

0 0 0
9 0 0   # with words behind
0 9 0
0 0 9
3 0 1 2  0.5 0.5 0.5
3 0 1 3
3 0 2 3
3 1 2 3 255 0 0
)";

std::string StlText() {
  std::string text = "solid part\r\n";
  char const* const triangles[4][3] = {{"0 0 0", "9 0 0", "0 9 0"},
                                       {"0 0 0", "9 0 0", "0 0 9"},
                                       {"0 0 0", "0 9 0", "0 0 9"},
                                       {"9.0e+0 0 -0", "+0 9 0", "0 0 9"}};
  for (auto const& triangle : triangles) {
    text += "  facet normal 0 0 0\r\n    outer loop\r\n";
    for (auto const* corner : triangle) text += std::string("      vertex ") + corner + "\r\n";
    text += "    endloop\r\n  endfacet\r\n";
  }
  return text + "endsolid part\r\n";
}

std::string StlBinary(std::vector<std::array<Point, 3>> const& triangles) {
  std::string bytes = "solid in name only";
  bytes.resize(80, ' ');
  auto const add = [&](std::uint32_t word) {
    for (int k = 0; k < 4; ++k) bytes += static_cast<char>(word >> (8 * k));
  };
  add(static_cast<std::uint32_t>(triangles.size()));
  for (auto const& triangle : triangles) {
    for (int k = 0; k < 3; ++k) add(0);
    for (Point const& p : triangle)
      for (int64 const coordinate : {p.x, p.y, p.z})
        add(std::bit_cast<std::uint32_t>(static_cast<float>(coordinate)));
    bytes += std::string(2, '\0');
  }
  return bytes;
}

PointList const c_corners{{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {0, 0, 9}};
std::vector<CSolidVisitor::Face> const c_faces{{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}};

std::vector<std::array<Point, 3>> Triangles() {
  std::vector<std::array<Point, 3>> triangles;
  for (auto const& f : c_faces)
    triangles.push_back({c_corners[f[0]], c_corners[f[1]], c_corners[f[2]]});
  return triangles;
}

std::string Csv(PointList const& points, int dimension = 3) {
  std::string text = dimension == 2 ? "x,y\n" : "x,y,z\n";
  for (auto const& p : points)
    text += std::to_string(p.x) + "," + std::to_string(p.y) +
            (dimension == 3 ? "," + std::to_string(p.z) : "") + "\n";
  return text;
}

class SeluSolid : public test::CSeluWalkTest {
protected:
  static Arguments Simplex(Arguments more = {}) {
    Arguments arguments{"solid", "0,0,0", "9,0,0", "0,9,0", "0,0,9"};
    for (auto const* face : {"0,1,2", "0,1,3", "0,2,3", "1,2,3"}) {
      arguments.emplace_back("--face");
      arguments.emplace_back(face);
    }
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
};

TEST_F(SeluSolid, CornersAndFacesGoAsTheVisitor) {
  for (auto const& [name, code] : {std::pair("6", NEIGHBORHOOD_6), {"26", NEIGHBORHOOD_26}})
    EXPECT_EQ(Walk(Simplex({"--neighborhood", name})),
              Csv(test::Walk(CSolidVisitor(c_corners, c_faces, code, true))));
  EXPECT_EQ(Walk(Simplex({"--without-border"})),
            Csv(test::Walk(CSolidVisitor(c_corners, c_faces, EnBoundary::Open))));
  EXPECT_EQ(Walk(Simplex({"--boundary", "half-open"})),
            Csv(test::Walk(CSolidVisitor(c_corners, c_faces, EnBoundary::HalfOpen))));
  Write("corners.csv", "x,y,z\n0,0,0\n9,0,0\n0,9,0\n0,0,9\n");
  Write("faces.csv", "# four\n0,1,2\n0, 1, 3\n\n0,2,3\n1,2,3\n");
  EXPECT_EQ(Walk({"solid", "--corners", "corners.csv", "--faces", "faces.csv"}), Walk(Simplex()));
}

TEST_F(SeluSolid, MeshFilesOfEveryFormatAreTheSameSolid) {
  Write("a.off", c_off);
  Write("text.stl", StlText());
  Write("binary.stl", StlBinary(Triangles()));
  for (auto const* file : {"a.off", "text.stl", "binary.stl"})
    EXPECT_EQ(Walk({"solid", "--mesh", file}), Walk(Simplex())) << file;
}

TEST_F(SeluSolid, AMeshIsScaledAndShiftedIntoVoxelsAndPartsOfThem) {
  Write("a.off", c_off);
  PointList fine;
  for (Point const& p : c_corners) fine.push_back(p + Point(2, 2, -6)); // in quarters
  EXPECT_EQ(
      Walk({"solid", "--mesh", "a.off", "--scale", "0.25", "--shift", "0.5,0.5,-1.5"}),
      Csv(test::Walk(CSolidVisitor(fine, c_faces, EnBoundary::Closed, EnWinding::EvenOdd, 4))));
}

TEST_F(SeluSolid, BentFacesAreTakenAsTriangles) {
  // A cube of which one corner is drawn out, so that three of its squares bend.
  Write("bent.off", "OFF 8 6 0\n0 0 0\n4 0 0\n0 4 0\n4 4 0\n0 0 4\n4 0 4\n0 4 4\n6 6 6\n"
                    "4 0 2 3 1\n4 4 5 7 6\n4 0 1 5 4\n4 2 6 7 3\n4 0 4 6 2\n4 1 3 7 5\n");
  auto const all = test::Lines(Walk({"solid", "--mesh", "bent.off", "--boundary", "closed"}));
  EXPECT_GT(all.size(), 125U);
  EXPECT_EQ(all.back(), "6,6,6");
}

TEST_F(SeluSolid, IsPaintedIntoAVolumeAndDrawn) {
  Write("a.off", c_off);
  WriteNrrd("black.nrrd", "uint8", {8, 8, 8}, std::vector<std::uint8_t>(512));
  Walk({"solid", "--mesh", "a.off", "--image", "black.nrrd", "--paint", "7", "-o", "out.nrrd"});
  std::string const painted = Read("out.nrrd");
  CSolidVisitor solid(c_corners, c_faces, EnBoundary::Closed);
  solid.SetImageSize(CSize(8, 8, 8));
  EXPECT_EQ(static_cast<uint64>(std::count(painted.end() - 512, painted.end(), '\7')),
            solid.Steps());
  for (auto const* file : {"solid.png", "solid.svg"}) {
    Walk({"solid", "--mesh", "a.off", "--picture", file});
    EXPECT_GT(Read(file).size(), 2000U) << file;
  }
  EXPECT_NE(Read("solid.svg").find("<svg"), std::string::npos);
}

TEST_F(SeluSolid, MeshesThatAreNoneAreRefusedInASentence) {
  std::string const stl = StlText(), binary = StlBinary(Triangles());
  struct {
    char const* name;
    std::string bytes;
    char const* text;
  } const cases[] = {
      {"no mesh", "ply\n", "it is neither an OFF nor an STL file"},
      {"only a word", "OFF\n", "line 1, the file ends before its counts"},
      {"no counts", "OFF\n-1 2 3\n", "line 2, \"-1\" is no number of corners"},
      {"promised corners", "OFF\n4000000000 1 0\n0 0 0\n",
       "line 3, the file ends before its corners do"},
      {"promised faces", "OFF\n1 4000000000 0\n0 0 0\n0\n",
       "line 4, the file ends before its faces do"},
      {"a promised face", "OFF\n1 1 0\n0 0 0\n4000000000 0 0\n",
       "line 4, a face of 4000000000 corners names 2"},
      {"a missing corner", "OFF\n1 1 0\n0 0 0\n3 0 1 0\n", "line 4, a face names corner 1 of 1"},
      {"no number", "OFF\n1 1 0\n0 0 zero\n1 0\n", "line 3, \"zero\" is no finite number"},
      {"infinity", "OFF\n1 1 0\n0 0 1e999\n1 0\n", "line 3, \"1e999\" is no finite number"},
      {"nan", "OFF\n1 1 0\n0 0 nan\n1 0\n", "line 3, \"nan\" is no finite number"},
      {"four coordinates", "OFF\n1 1 0\n0 0 0 1\n1 0\n", "line 3, \"1\" after the three numbers"},
      {"more", c_off + "0 0 0\n", "line 13, there is more than the counts say"},
      {"no faces", "OFF\n1 0 0\n0 0 0\n", "it has no faces"},
      {"cut off", stl.substr(0, stl.find("    endloop")), "the file ends before its facet does"},
      {"cut off bytes", binary.substr(0, 200),
       "as a binary STL file of 4 triangles it would have 284 bytes, not 200"},
      {"no facets", "solid of words\nfoo\n", "line 2, \"foo\" where \"facet\" belongs"}};
  for (auto const& c : cases) {
    SCOPED_TRACE(c.name);
    Write("mesh", c.bytes);
    Fails({"solid", "--mesh", "mesh"}, c.text);
  }
  std::string wrong = binary;
  wrong.replace(84 + 12, 4, std::string("\0\0\x80\x7f", 4)); // infinity
  Write("mesh", wrong);
  Fails({"solid", "--mesh", "mesh"}, "triangle 0 has a corner that is not finite");
}

TEST_F(SeluSolid, MistakesAreToldInASentence) {
  Write("a.off", c_off);
  Write("open.off", "OFF 3 1 0\n0 0 0\n9 0 0\n0 9 0\n3 0 1 2\n");
  struct {
    Arguments arguments;
    char const* text;
    int code;
  } const cases[] = {
      {{"solid"}, "a solid needs --mesh FILE, or corners and faces", 2},
      {{"solid", "0,0,0"}, "a solid needs --mesh FILE, or corners and faces", 2},
      {{"solid", "0,0", "--face", "0"}, "a solid needs corners x,y,z", 2},
      {{"solid", "0,0,0", "--mesh", "a.off"}, "not from both", 2},
      {{"solid", "0,0,0", "--face", "0,-1"}, "--face needs numbers of corners from 0 on", 2},
      {{"solid", "0,0,0", "--face", "0,1"}, "the solid has a face with corner 1 of 1", 1},
      {{"solid", "--mesh", "a.off", "--scale", "0"},
       "--scale needs a finite number other than 0",
       2},
      {{"solid", "--mesh", "a.off", "--shift", "1,2"}, "--shift needs x,y,z", 2},
      {{"solid", "--mesh", "a.off", "--scale", "1e300"},
       "the mesh reaches farther than walks do",
       1},
      {{"solid", "--mesh", "a.off", "--scale", "1e308"}, "is too large", 1},
      {{"solid", "--mesh", "a.off", "--scale", "2e8"}, "the solid needs", 1},
      {{"solid", "--mesh", "missing.off"}, "cannot read", 1},
      {{"solid", "--mesh", "a.off", "--boundary", "open", "--without-border"},
       "exclude each other",
       2},
      {{"solid", "--mesh", "a.off", "--boundary", "open", "--neighborhood", "6"},
       "--neighborhood is for digital faces",
       2},
      {{"solid", "--mesh", "a.off", "--neighborhood", "8"}, "--neighborhood needs one of 6", 2},
      {{"solid", "--mesh", "a.off", "-o", "a.off"}, "a.off", 1},
      {{"solid", "--mesh", "open.off"},
       "the solid walk is impossible: the surface is not closed: its edge from (9, 0, 0) to "
       "(0, 9, 0) has an odd number of faces",
       1}};
  for (auto const& c : cases) Fails(c.arguments, c.text, c.code);
}

TEST_F(SeluSolid, PolygonsTakeRealCorners) {
  CRealPolygonVisitor::Outline const outline{{0.5, 0.25, 0}, {9.1, 0, 0}, {4.4, 7.75, 0}};
  Arguments const corners{"polygon", "0.5,0.25", "9.1,0", "4.4,7.75"};
  auto const with = [&](Arguments more) {
    more.insert(more.begin(), corners.begin(), corners.end());
    return Walk(more);
  };
  EXPECT_EQ(with({}), Csv(test::Walk(CRealPolygonVisitor(outline)), 2));
  EXPECT_EQ(with({"--boundary", "half-open"}),
            Csv(test::Walk(CRealPolygonVisitor(outline, EnBoundary::HalfOpen)), 2));
  EXPECT_EQ(with({"--without-border"}),
            Csv(test::Walk(CRealPolygonVisitor(outline, EnBoundary::Open)), 2));
  Write("outline.csv", "x,y\n0.5,0.25\n9.1,0\n4.4,7.75\n");
  EXPECT_EQ(Walk({"polygon", "--corners", "outline.csv"}), with({}));
  Write("hole.csv", "3.5,1.5\n5.5,1.5\n4.5,4.5\n");
  CRealPolygonVisitor::Outline const hole{{3.5, 1.5, 0}, {5.5, 1.5, 0}, {4.5, 4.5, 0}};
  EXPECT_EQ(
      with({"--hole", "hole.csv", "--winding", "non-zero"}),
      Csv(test::Walk(CRealPolygonVisitor({outline, hole}, EnBoundary::Closed, EnWinding::NonZero)),
          2));
  // Whole corners, but by a rule: without the digital border.
  EXPECT_EQ(Walk({"polygon", "0,0", "2,0", "2,2", "0,2", "--boundary", "half-open"}),
            "x,y\n0,0\n1,0\n0,1\n1,1\n");
  EXPECT_EQ(Walk({"polygon", "0.5,0.5,3", "2.5,0.5,3", "1.5,2,3"}), "x,y,z\n1,1,3\n2,1,3\n");
}

TEST_F(SeluSolid, RealPolygonsRefuseWhatTheyAreNot) {
  Fails({"polygon", "0.5,0", "9,0", "0,9", "--neighborhood", "4"}, "--neighborhood is for", 2);
  Fails({"polygon", "0.5,0", "9,0,1", "0,9"}, "points of one dimension", 2);
  Fails({"polygon", "0.5,0", "nan,0"}, "CORNER needs two or three numbers", 2);
  Fails({"polygon", "0.5,0,1", "9,0,2", "0,9,1"}, "corners lie in slices 1 and 2 at once");
  Fails({"polygon", "0.5,0", "3e9,0", "0,9"}, "corner coordinate 3000000000 is not from");
  Write("bad.csv", "0.5,1\n2,x\n");
  Fails({"polygon", "--corners", "bad.csv"}, "line 2, \"2,x\" is no point x,y or x,y,z of numbers");
}

} // namespace
