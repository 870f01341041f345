// What the command line says about a walk, as texts.
//
//   StWalkOptions given;
//   given.points = {"0,0,0", "10,4,2"};
//   StWalk walk = MakeWalk(EnWalk::Line, given, std::nullopt);
#pragma once

#include <string>
#include <vector>

namespace selu {

enum class EnWalk { Line, Area, Polygon, Volume, Solid, Slice, Window, Delta, Direction };

/// An empty text stands for an option that is not given.
struct StWalkOptions {
  std::vector<std::string> points; ///< ends of a line, corners, points of a plane
  std::string corners;             ///< file of the same
  std::vector<std::string> holes;  ///< files
  std::string neighborhood, ends = "both";
  bool withoutBorder = false, edges = false;
  std::vector<std::string> faces; ///< numbers of corners
  std::string facesFile, mesh;    ///< files
  std::string scale, shift;       ///< of a mesh, into voxels
  std::string boundary, winding;
  std::string normal, distance, method, low, high, direction, size;
  // What is done with it.
  std::string image, series, paint, output, picture, format, range;
  bool profile = false;
};

} // namespace selu
