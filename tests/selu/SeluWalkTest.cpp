// selu walk: the points of each kind of walk, its options and its errors.
#include "support/SeluWalkRun.h"
#include "support/Walks.h"

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/VolumeVisitor.h>

#include <nlohmann/json.hpp>

#include <array>
#include <limits>

namespace {

using namespace ORVA; // NEIGHBORHOOD_... and the walkers
using test::Point;
using test::PointList;
using Arguments = std::vector<std::string>;

struct StNeighborhood {
  char const* name;
  int64 code;
};
constexpr std::array<StNeighborhood, 4> c_flat = {{{"4", NEIGHBORHOOD_4},
                                                   {"6.1", NEIGHBORHOOD_6_1},
                                                   {"6.2", NEIGHBORHOOD_6_2},
                                                   {"8", NEIGHBORHOOD_8}}};
constexpr std::array<StNeighborhood, 4> c_solid = {{{"6", NEIGHBORHOOD_6},
                                                    {"14.1", NEIGHBORHOOD_14_1},
                                                    {"14.2", NEIGHBORHOOD_14_2},
                                                    {"26", NEIGHBORHOOD_26}}};

std::string Text(Point const& p, int dimension) {
  std::string const text = std::to_string(p.x) + "," + std::to_string(p.y);
  return dimension == 2 ? text : text + "," + std::to_string(p.z);
}

// The CSV table of a walk.
std::string Csv(PointList const& points, int dimension) {
  std::string text = dimension == 2 ? "x,y\n" : "x,y,z\n";
  for (auto const& p : points) text += Text(p, dimension) + "\n";
  return text;
}

class SeluWalk : public test::CSeluWalkTest {
protected:
  static Arguments With(Arguments arguments, PointList const& points, int dimension) {
    for (auto const& p : points) arguments.push_back(Text(p, dimension));
    return arguments;
  }
};

TEST_F(SeluWalk, LineGoesAsTheVisitorInEveryNeighborhood) {
  Point const from(-5, 3, 0), to(4, -2, 0);
  for (auto const& [name, code] : c_flat)
    for (std::string const ends : {"both", "none"})
      EXPECT_EQ(Walk({"line", "-5,3", "4,-2", "--neighborhood", name, "--ends", ends}),
                Csv(test::Walk(CBresenhamVisitor(from, to, 2, code, ends == "both")), 2));
  Point const far(9, -4, -7);
  for (auto const& [name, code] : c_solid)
    EXPECT_EQ(Walk({"line", "-5,3,0", "9,-4,-7", "--neighborhood", name}),
              Csv(test::Walk(CBresenhamVisitor(from, far, 3, code, true)), 3));
}

TEST_F(SeluWalk, NeighborhoodIsTheLargestByDefault) {
  EXPECT_EQ(Walk({"line", "0,0", "9,4"}), Walk({"line", "0,0", "9,4", "--neighborhood", "8"}));
  EXPECT_EQ(Walk({"line", "0,0,0", "9,4,2"}),
            Walk({"line", "0,0,0", "9,4,2", "--neighborhood", "26"}));
}

TEST_F(SeluWalk, LineWithoutItsEndsCanBeEmpty) {
  auto const result = Selu({"walk", "line", "3,3", "4,4", "--ends", "none"});
  EXPECT_EQ(result.code, 0);
  EXPECT_EQ(result.out, "x,y\n");
  EXPECT_EQ(result.error, "selu: note: the walk has no points\n");
  EXPECT_EQ(Walk({"line", "3,3", "3,3"}), "x,y\n3,3\n");
}

TEST_F(SeluWalk, AreaAndPolygonGoAsTheirVisitors) {
  PointList const flat = {{-6, 1, 0}, {2, -5, 0}, {9, 3, 0}, {1, 8, 0}};
  PointList const oblique = {{0, 0, 0}, {9, 0, 3}, {9, 9, 6}, {0, 9, 3}};
  for (bool const border : {true, false}) {
    Arguments const flag = border ? Arguments{} : Arguments{"--without-border"};
    auto const printed = [&](std::string const& kind, PointList const& corners, int dimension,
                             std::string const& neighborhood) {
      Arguments arguments = With({kind}, corners, dimension);
      arguments.insert(arguments.end(), {"--neighborhood", neighborhood});
      arguments.insert(arguments.end(), flag.begin(), flag.end());
      return Walk(arguments);
    };
    for (auto const& [name, code] : c_flat) {
      EXPECT_EQ(printed("area", flat, 2, name),
                Csv(test::Walk(CBresenhamAreaVisitor(PointList(flat), 2, code, border)), 2));
      EXPECT_EQ(printed("polygon", flat, 2, name),
                Csv(test::Walk(CPolygonVisitor(flat, 2, code, border)), 2));
    }
    for (auto const& [name, code] : {c_solid[1], c_solid[3]})
      EXPECT_EQ(printed("area", oblique, 3, name),
                Csv(test::Walk(CBresenhamAreaVisitor(PointList(oblique), 3, code, border)), 3));
    for (auto const& [name, code] : c_solid)
      EXPECT_EQ(printed("polygon", oblique, 3, name),
                Csv(test::Walk(CPolygonVisitor(oblique, 3, code, border)), 3));
  }
}

TEST_F(SeluWalk, CornersComeFromAFile) {
  Write("outline.csv", "x,y\n# the outline\n0, 0\r\n\n12,0\n\t12 ,10\n-3,10");
  Write("hole.csv", "2,2\n2,6\n8,6\n8,2\n");
  Write("hole2.csv", "9,7\n10,8\n9,9\n");
  PointList const outline = {{0, 0, 0}, {12, 0, 0}, {12, 10, 0}, {-3, 10, 0}};
  std::vector<PointList> const holes = {{{2, 2, 0}, {2, 6, 0}, {8, 6, 0}, {8, 2, 0}},
                                        {{9, 7, 0}, {10, 8, 0}, {9, 9, 0}}};
  EXPECT_EQ(Walk({"polygon", "--corners", "outline.csv"}),
            Csv(test::Walk(CPolygonVisitor(outline, 2, NEIGHBORHOOD_8, true)), 2));
  EXPECT_EQ(Walk({"polygon", "--hole", "hole.csv", "--hole", "hole2.csv", "0,0", "12,0", "12,10",
                  "-3,10"}),
            Csv(test::Walk(CPolygonVisitor(outline, holes, 2, NEIGHBORHOOD_8, true)), 2));
}

TEST_F(SeluWalk, VolumeGoesAsTheVisitorAndIsClosed) {
  PointList const edges = {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {9, 0, 0}, {0, 0, 9}, {9, 0, 0}};
  PointList const path = {{0, 0, 0}, {6, 0, 0}, {6, 5, 0}, {0, 5, 0}, {0, 0, 0}};
  for (bool const border : {true, false})
    for (auto const& [name, code] : {c_solid[0], c_solid[3]}) {
      Arguments arguments = With({"volume", "--edges", "--neighborhood", name}, edges, 3);
      Arguments open =
          With({"volume", "--neighborhood", name}, PointList(path.begin(), path.end() - 1), 3);
      if (!border) {
        arguments.emplace_back("--without-border");
        open.emplace_back("--without-border");
      }
      EXPECT_EQ(Walk(arguments), Csv(test::Walk(CBresenhamVolumeVisitor(
                                         PointList{edges[0], edges[2], edges[4]},
                                         PointList{edges[1], edges[3], edges[5]}, code, border)),
                                     3));
      EXPECT_EQ(Walk(open),
                Csv(test::Walk(CBresenhamVolumeVisitor(PointList(path), code, border)), 3));
    }
}

TEST_F(SeluWalk, SliceIsExactOrALattice) {
  CSize const size(11, 9, 7);
  PointList const points = {{0, 0, 6}, {10, 0, 1}, {3, 8, 0}};
  CTriple<double> const normal(1, -2, 2.5);
  CPlaneSection byNormal(normal, 4.5), byPoints(points[0], points[1], points[2]);
  CCutSlice lattice(normal, 4.5, NEIGHBORHOOD_6),
      latticeByPoints(PointList(points), NEIGHBORHOOD_26);
  byNormal.SetImageSize(size);
  byPoints.SetImageSize(size);
  lattice.SetImageSize(size);
  latticeByPoints.SetImageSize(size);
  Arguments const plane = {"slice",    "--size",     "11,9,7", "--normal",
                           "1,-2,2.5", "--distance", "4.5"};
  auto const with = [&](Arguments const& more) {
    Arguments all = plane;
    all.insert(all.end(), more.begin(), more.end());
    return Walk(all);
  };
  Arguments const through = With({"slice", "--size", "11,9,7"}, points, 3);
  Arguments throughLattice = through;
  throughLattice.insert(throughLattice.end(), {"--method", "lattice"});
  ASSERT_FALSE(byNormal.empty() || byPoints.empty() || lattice.empty() || latticeByPoints.empty());
  EXPECT_EQ(with({}), Csv(test::Walk(byNormal), 3));
  EXPECT_EQ(with({}), with({"--method", "exact"}));
  EXPECT_EQ(with({"--method", "lattice", "--neighborhood", "6"}), Csv(test::Walk(lattice), 3));
  EXPECT_EQ(Walk(through), Csv(test::Walk(byPoints), 3));
  EXPECT_EQ(Walk(throughLattice), Csv(test::Walk(latticeByPoints), 3));
}

TEST_F(SeluWalk, WindowIsClippedToTheSize) {
  EXPECT_EQ(Walk({"window", "--low", "-1,-2", "--high", "1,0"}),
            Csv(test::BoxPoints({-1, -2, 0}, {1, 0, 0}), 2));
  EXPECT_EQ(Walk({"window", "--low", "-1,-2,1", "--high", "1,9,7", "--size", "4,3,5"}),
            Csv(test::BoxPoints({0, 0, 1}, {1, 2, 4}), 3));
  EXPECT_EQ(Walk({"window", "--size", "3,2"}), Csv(test::BoxPoints({0, 0, 0}, {2, 1, 0}), 2));
}

TEST_F(SeluWalk, DirectionGoesAsTheVisitor) {
  for (Point const d : {Point(1, 0, 0), Point(-1, 1, 0), Point(0, -1, 0), Point(-1, -1, 0)}) {
    CDirectionalVisitor whole({0, 0, 0}, {4, 3, 0}, d), part({1, -1, 0}, {9, 2, 0}, d);
    whole.SetImageSize(CSize(5, 4));
    part.SetDirection(d);
    EXPECT_EQ(Walk({"direction", Text(d, 2), "--size", "5,4"}), Csv(test::Walk(whole), 2));
    EXPECT_EQ(Walk({"direction", Text(d, 2), "--low", "1,-1", "--high", "9,2"}),
              Csv(test::Walk(part), 2));
  }
  CDirectionalVisitor solid({0, 1, 0}, {4, 3, 9}, {-1, 0, 1});
  solid.SetImageSize(CSize(5, 4, 3));
  EXPECT_EQ(Walk({"direction", "-1,0,1", "--low", "0,1,0", "--high", "4,3,9", "--size", "5,4,3"}),
            Csv(test::Walk(solid), 3));
}

TEST_F(SeluWalk, DeltaIsExactOrPlain) {
  for (CTriple<double> const d : {CTriple<double>(1, 0.5, 0), CTriple<double>(-0.25, -3, 0)}) {
    CParallelLineVisitor exact(d);
    exact.SetImageSize(CSize(7, 5));
    EXPECT_EQ(Walk({"delta", std::to_string(d.x) + "," + std::to_string(d.y), "--size", "7,5"}),
              Csv(test::Walk(exact), 2));
  }
  CDeltaVisitor plain({1, 2, 9});
  plain.SetImageSize(CSize(4, 3, 5));
  // Its length costs nothing.
  EXPECT_EQ(Walk({"delta", "1e300,0", "--size", "5,5", "--method", "plain"}),
            Walk({"delta", "1,0", "--size", "5,5"}));
  EXPECT_EQ(Walk({"delta", "1,2,9", "--size", "4,3,5", "--method", "plain"}),
            Csv(test::Walk(plain), 3));
}

TEST_F(SeluWalk, JsonHoldsTheSamePoints) {
  auto const json = nlohmann::json::parse(Walk({"line", "-2,1", "1,0", "--format", "json"}));
  EXPECT_EQ(json["walk"], "line from -2,1 to 1,0, neighborhood 8");
  EXPECT_EQ(json["columns"], nlohmann::json({"x", "y"}));
  CBresenhamVisitor line(Point(-2, 1, 0), Point(1, 0, 0), 2, NEIGHBORHOOD_8, true);
  nlohmann::json points = nlohmann::json::array();
  for (auto const& p : test::Walk(line)) points.push_back(nlohmann::json::array({p.x, p.y}));
  EXPECT_EQ(json["points"], points);
  EXPECT_EQ(json["count"], points.size());
  EXPECT_EQ(json["outside"], 0);
  auto const empty = nlohmann::json::parse(
      Selu({"walk", "line", "0,0", "0,0", "--ends", "none", "--format", "json"}).out);
  EXPECT_EQ(empty["points"], nlohmann::json::array());
}

TEST_F(SeluWalk, FilesHoldWhatStandardOutputDoes) {
  for (std::string const format : {"csv", "json"}) {
    Arguments const line = {"line", "0,0,0", "30000,4,-2", "--format", format};
    std::string const printed = Walk(line);
    Arguments toFile = line;
    toFile.insert(toFile.end(), {"-o", "out.txt"});
    EXPECT_EQ(Walk(toFile), "");
    EXPECT_EQ(Read("out.txt"), printed);
    EXPECT_EQ(Walk({"line", "0,0,0", "30000,4,-2", "-o", "out." + format}), "");
    EXPECT_EQ(Read("out." + format), printed) << "the ending says the format";
  }
}

TEST_F(SeluWalk, FarCoordinatesArePrintedExactly) {
  EXPECT_EQ(Walk({"window", "--low", "2305843009213693951,-2305843009213693952", "--high",
                  "2305843009213693952,-2305843009213693952"}),
            "x,y\n2305843009213693951,-2305843009213693952\n"
            "2305843009213693952,-2305843009213693952\n");
  EXPECT_EQ(Walk({"line", "2305843009213693952,0", "2305843009213693951,0"}),
            "x,y\n2305843009213693952,0\n2305843009213693951,0\n");
}

TEST_F(SeluWalk, MillionsOfPointsArriveWhole) {
  auto const result =
      Selu({"walk", "window", "--low", "0,0,0", "--high", "99,99,299", "-o", "w.csv"});
  EXPECT_EQ(result.code, 0) << result.error;
  auto const lines = test::Lines(Read("w.csv"));
  ASSERT_EQ(lines.size(), 3000001u);
  EXPECT_EQ(lines[1], "0,0,0");
  EXPECT_EQ(lines.back(), "99,99,299");
}

TEST_F(SeluWalk, ATerminalSeesABar) {
  if (!test::HasTerminals()) GTEST_SKIP() << "no terminal is to be had here";
  auto const result =
      Selu({"walk", "window", "--low", "0,0,0", "--high", "99,99,99", "-o", "w.csv"},
           {.terminal = true});
  EXPECT_EQ(result.code, 0);
  EXPECT_NE(result.error.find("walking ["), std::string::npos) << result.error;
}

TEST_F(SeluWalk, InterruptLeavesNothingBehind) {
  test::StProcessOptions options;
  options.interruptAfter = 0.5;
  auto const result = Selu(
      {"walk", "window", "--low", "0,0,0", "--high", "99999,99999,99999", "-o", "w.csv"}, options);
  EXPECT_EQ(result.code, 130);
  EXPECT_EQ(result.error, "selu: interrupted\n");
  EXPECT_TRUE(Files().empty()) << testing::PrintToString(Files());
}

TEST_F(SeluWalk, BadPointsAreNamed) {
  Fails({"line", "0,0"}, "a line needs two points, FROM and TO", 2);
  Fails({"line", "0,0", "1,1", "2,2"}, "a line needs two points", 2);
  for (std::string const bad : {"1", "1,x", "1.5,2", "1,2,3,4", "1,2305843009213693953",
                                "99999999999999999999,0", "nan,1", "1, 2"})
    Fails({"line", "0,0", bad},
          "the line needs two or three whole numbers x,y[,z] from -2^61 to 2^61, not \"" + bad +
              "\"",
          2);
  Fails({"line", "0,0", "1,1,1"}, "points of one dimension, not 0,0 and 1,1,1", 2);
  Fails({"line", "0,0", "0,2147483648"},
        "the line from 0,0 to 0,2147483648 is longer than 2147483647 voxels along y");
  Fails({"line", "-2305843009213693952,0", "2305843009213693952,0"}, "is longer than 2147483647");
  Fails({"line", "0,0,0", "2147483647,2147483647,2147483647", "--neighborhood", "6"},
        "more than this machine's memory");
  Fails({"area"}, "the corners are missing", 2);
  Fails({"volume", "0,0", "1,1"}, "a volume needs corners x,y,z, not 0,0", 2);
  Fails({"volume", "3,0,0", "-1,3,3"},
        "the corner -1,3,3 lies outside the slices of a volume, x from 0 to 2147483647");
  Fails({"volume", "--edges", "0,0,0", "3,0,0", "1,1,1"}, "--edges needs two corners an edge");
  Fails({"polygon", "0,0,0", "5,0,0", "5,5,0", "1,1,9"}, "corner (1, 1, 9) lies off the plane");
}

TEST_F(SeluWalk, BadListsAreNamedWithTheirLine) {
  Write("bad.csv", "x,y\n0,0\n1;1\n");
  Write("mixed.csv", "0,0\n1,1,1\n");
  Write("empty.csv", "x,y\n# nothing\n");
  Write("binary.csv", std::string(100000, '\x01'));
  Write("good.csv", "0,0,1\n5,0,1\n5,5,1\n");
  std::string const none = " is no point x,y or x,y,z of whole numbers";
  Fails({"polygon", "--corners", "bad.csv"}, "cannot read \"bad.csv\": line 3, \"1;1\"" + none);
  Fails({"area", "--corners", "mixed.csv"},
        "line 2, \"1,1,1\" has not as many coordinates as the points before");
  Fails({"area", "--corners", "empty.csv"}, "cannot read \"empty.csv\": it has no points");
  Fails({"area", "--corners", "binary.csv"}, "line 1, \"????");
  Fails({"area", "--corners", "none.csv"}, "cannot read \"none.csv\"");
  Fails({"area", "--corners", "/dev/zero"}, "cannot read \"/dev/zero\"");
  Fails({"area", "--corners", "good.csv", "0,0"}, "not from both", 2);
  Fails({"polygon", "0,0", "9,0", "9,9", "--hole", "good.csv"},
        "the hole \"good.csv\" is 3D, but the outline 2D");
  Fails({"area", "--corners", "good.csv", "-o", "good.csv"}, "it is the input \"good.csv\"");
}

TEST_F(SeluWalk, NeighborhoodsOfAnotherDimensionAreRefused) {
  Fails({"line", "0,0", "1,1", "--neighborhood", "26"},
        "--neighborhood needs one of 4, 6.1, 6.2 and 8 in 2D, not \"26\"", 2);
  Fails({"line", "0,0,0", "1,1,1", "--neighborhood", "6.1"},
        "--neighborhood needs one of 6, 14.1, 14.2 and 26 in 3D, not \"6.1\"", 2);
  Fails({"volume", "0,0,0", "1,1,1", "--neighborhood", "14.2"},
        "--neighborhood needs one of 6 and 26 for a volume, not \"14.2\"", 2);
  Fails({"area", "0,0,0", "5,1,3", "2,7,9", "--neighborhood", "6"}, "the area walk is impossible");
  Fails({"slice", "--normal", "1,0,0", "--distance", "1", "--size", "3,3,3", "--neighborhood", "6"},
        "--neighborhood is for --method lattice", 2);
}

TEST_F(SeluWalk, BadPlanesAreNamed) {
  Fails({"slice", "--size", "3,3,3"}, "a slice needs three points or --normal and --distance", 2);
  Fails({"slice", "0,0,0", "1,0,0", "--size", "3,3,3"}, "a slice needs three points x,y,z", 2);
  Fails({"slice", "0,0", "1,0", "0,1", "--size", "3,3,3"}, "a slice needs three points x,y,z", 2);
  Fails({"slice", "0,0,0", "1,1,1", "2,2,2", "--size", "3,3,3"}, "lie in a line");
  Fails({"slice", "--normal", "1,0,0", "--size", "3,3,3"}, "--normal and --distance belong", 2);
  Fails({"slice", "--normal", "1,0,0", "--distance", "1"}, "needs the size of an image", 2);
  for (std::string const bad : {"0,0,0", "1,nan,0", "a,0,0", "inf,0,0"})
    Fails({"slice", "--normal", bad, "--distance", "1", "--size", "3,3,3"},
          "--normal needs two or three finite numbers that are not all 0, not \"" + bad + "\"", 2);
  for (std::string const bad : {"x", "inf", "1,2"})
    Fails({"slice", "--normal", "1,0,0", "--distance", bad, "--size", "3,3,3"},
          "--distance needs a finite number, not \"" + bad + "\"", 2);
  Fails({"slice", "--normal", "1,0,0", "--distance", "9", "--size", "3,3,3", "--method", "lattice"},
        "the slice walk is impossible: plane not in image");
}

TEST_F(SeluWalk, BadBoxesAndDirectionsAreNamed) {
  Fails({"window"}, "a window needs --low and --high, --size or --image", 2);
  Fails({"window", "--low", "0,0"}, "--low and --high belong together", 2);
  Fails({"window", "--low", "5,5", "--high", "6,4"}, "--low 5,5 lies beyond --high 6,4", 2);
  Fails({"window", "--low", "5,5", "--high", "6,6,6"}, "have different dimensions", 2);
  Fails({"window", "--size", "0,5"}, "--size needs numbers above 0", 2);
  for (std::string const bad : {"0,0", "2,0", "1,-2", "1,0,9"})
    Fails({"direction", bad, "--size", "3,3"}, "-1, 0 and 1 that are not all 0, not \"" + bad, 2);
  Fails({"direction", "1,0", "--size", "3,3,3"}, "the direction 1,0 is 2D, but the box 3D");
  Fails({"direction", "1,0"}, "a direction walk needs --low and --high", 2);
  for (std::string const bad : {"0,0", "nan,1", "1", "1,2,3,4", "1,inf"})
    Fails({"delta", bad, "--size", "3,3"}, "DIRECTION needs two or three finite numbers", 2);
  Fails({"delta", "1,1"}, "a delta walk needs the size of an image", 2);
  Fails({"delta", "1,1", "--size", "3,3,3"}, "the direction 1,1 needs z, since the image is 3D");
  Fails({"delta", "0.1,0", "--size", "5,5", "--method", "plain"},
        "the direction 0.1,0 is too short for the plain walk of 5 x 5 voxels");
  Fails({"delta", "1,1", "--size", "9000000000000,2"}, "this machine's memory");
}

TEST_F(SeluWalk, OptionsThatDoNotFitAreRefused) {
  Fails({"line", "0,0", "1,1", "--profile"}, "--profile needs --image", 2);
  Fails({"line", "0,0", "1,1", "--paint", "1", "-o", "a.nrrd"}, "--paint needs --image", 2);
  Fails({"line", "0,0", "1,1", "--format", "xml"}, "--format", 2);
  Fails({"line", "0,0", "1,1", "--ends", "first"}, "--ends", 2);
  Fails({"slice", "--size", "3,3,3", "--image", "a.nrrd"}, "exclude each other", 2);
  Fails({"slice", "--normal", "1,0,0", "--distance", "1", "--size", "3,3,3", "--range", "0,1"},
        "--range is for the picture of a slice", 2);
  Fails({"line", "0,0", "1,1", "-o", "a.png", "--picture", "a.png"}, "name the same file", 2);
  Fails({"line", "0,0", "1,1", "--picture", "a.jpg"}, "a picture ends in .png or .svg");
  Fails({"line", "0,0", "1,1", "-o", ""}, "the value is empty", 2);
  Fails({"line", "0,0", ""}, "the value is empty", 2);
  Fails({"line", "0,0", "1,1", "-o", "no/a.csv"}, "cannot write \"no/a.csv\"");
  Fails({"spiral"}, "there is no command or option \"spiral\"", 2);
  Fails({}, "required", 2);
  EXPECT_TRUE(Files().empty());
}

} // namespace
