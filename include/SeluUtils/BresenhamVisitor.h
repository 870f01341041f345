// All walks along digital lines and what is built of them: lines, areas, solids, plane slices.
//
//   CBresenhamVisitor line({0, 0, 0}, {9, 4, 2}, 3, NEIGHBORHOOD_26, true);
//   int64 sum = 0;
//   while (line.MorePoints()) sum += line.NextPoint().x;
//   std::vector<CTriple<int64>> corners{{2, 1, 0}, {9, 3, 0}, {4, 8, 0}};
//   CBresenhamAreaVisitor area(corners, 2, NEIGHBORHOOD_8, true);  // and areas likewise
#pragma once

#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/BresenhamVisitorImpl.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/VolumeVisitor.h>
