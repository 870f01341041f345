// The inner parts of the walks in BresenhamVisitor.h: lists of moves, and areas between limits.
//
//   Impl::CBresenhamVisitor2D const line(9, 4, NEIGHBORHOOD_8);
//   CTriple<int64> p;
//   for (int64 i = 0; i < line.LastStep(); ++i) p += line.Step(i);
//   std::vector<CTriple<int64>> path{{0, 0, 0}, {0, 5, 0}, {5, 0, 0}, {0, 0, 0}};
//   Impl::CBresenhamAreaVisitor2D area(path, NEIGHBORHOOD_8, true);
#pragma once

#include <SeluUtils/Impl/AreaRuns.h>
#include <SeluUtils/Impl/LineMoves.h>
