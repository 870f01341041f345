// All walks along digital lines and what is built of them: lines, areas, solids, plane slices.
//
//   CTriple<int64> const from(0, 0, 0), to(9, 4, 2);
//   CBresenhamVisitor line(from, to, 3, NEIGHBORHOOD_26, true);
//   while (line.MorePoints()) Visit(line.NextPoint());
//   CBresenhamAreaVisitor area(corners, 2, NEIGHBORHOOD_8, true);  // and areas likewise
//   while (area.MorePoints()) Visit(area.NextPoint());
#pragma once

#include <SeluUtils/AreaVisitor.h>
#include <SeluUtils/BresenhamVisitorImpl.h>
#include <SeluUtils/CutSlice.h>
#include <SeluUtils/LineVisitor.h>
#include <SeluUtils/VolumeVisitor.h>
