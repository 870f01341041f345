// All walks over the voxels of a box: in raster order, along one of the 26 unit directions, or
// along parallel lines of any direction that wrap around at the image border.
//
//   CWindowVisitor window({2, 3, 0}, {5, 9, 4});
//   window.SetImageSize({8, 8, 8});
//   int64 sum = 0;
//   while (window.MorePoints()) sum += window.NextPoint().x;
//   CParallelLineVisitor lines(CTriple<double>(0.8, -0.5, 0.3));   // and lines likewise
#pragma once

#include <SeluUtils/DeltaVisitor.h>
#include <SeluUtils/DirectionalVisitor.h>
#include <SeluUtils/ParallelLineVisitor.h>
#include <SeluUtils/WindowVisitor.h>
