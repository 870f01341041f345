// A walk over voxels that the command line describes, and going along it.
//
//   StWalk walk = MakeWalk(EnWalk::Line, given, std::nullopt);
//   StCounts counts = ForEachBlock(walk, std::nullopt, "walking",
//                                  [](std::span<Point const> points) { ... });
//   counts.points + counts.outside == the whole walk
#pragma once

#include "walks/WalkOptions.h"

#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/ImageWalker.h>
#include <SeluUtils/PlaneSection.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/RealPolygonVisitor.h>
#include <SeluUtils/SolidVisitor.h>
#include <SeluUtils/VolumeVisitor.h>
#include <pxlib2image/Size.h>

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace selu {

using Point = ORVA::CTriple<ORVA::int64>;
using RealPoint = ORVA::CTriple<double>;
using AnyWalker =
    std::variant<ORVA::CBresenhamVisitor, ORVA::CBresenhamAreaVisitor, ORVA::CPolygonVisitor,
                 ORVA::CBresenhamVolumeVisitor, ORVA::CPlaneSection, ORVA::CCutSlice,
                 ORVA::CWindowVisitor, ORVA::CParallelLineVisitor, ORVA::CDeltaVisitor,
                 ORVA::CDirectionalVisitor, ORVA::CRealPolygonVisitor, ORVA::CSolidVisitor>;

struct StWalk {
  std::string title; ///< "line from 0,0 to 10,4, neighborhood 8"
  int dimension = 3; ///< 2: all z are 0
  AnyWalker walker = {};
  std::vector<std::vector<RealPoint>> ideal = {}; ///< what the walk follows, as chains of lines
  int dominantAxis = 2;                           ///< of a slice: each column along it has a voxel
  /// Of a slice across an axis: its place along it.
  std::optional<ORVA::int64> place = {};
  bool isSolid = false; ///< its picture has a view of it
};

/// The walk that was asked for, in an image of this size where there is one. Throws CUsageError for
/// texts that are none, and CAppError for what the walker cannot walk or the memory not hold.
[[nodiscard]] StWalk MakeWalk(EnWalk kind, StWalkOptions const& given,
                              std::optional<ORVA::CSize> const& size);

struct StCounts {
  ORVA::uint64 points = 0, outside = 0;
};

[[nodiscard]] inline bool IsInside(Point const& p, ORVA::CSize const& size) noexcept {
  return p.x >= 0 && p.x < size.x && p.y >= 0 && p.y < size.y && p.z >= 0 && p.z < size.z;
}

/// Calls the function with all points in their order, some thousands at a time, those outside an
/// image of this size left out, with a progress bar where `progress` is not empty. The walk can be
/// gone along again. The memory does not grow with the points.
StCounts ForEachBlock(StWalk const& walk, std::optional<ORVA::CSize> const& size,
                      std::string const& progress,
                      std::function<void(std::span<Point const>)> const& visit);

} // namespace selu
