// Walking as the command line asks for it: the points printed, read, painted or drawn.
//
//   StWalkOptions given;
//   given.points = {"0,0,0", "10,4,2"};
//   RunWalk(EnWalk::Line, given);               // prints x,y,z of each point
#pragma once

#include "walks/WalkOptions.h"

namespace selu {

/// Throws CUsageError for options that do not go together, and CAppError.
void RunWalk(EnWalk kind, StWalkOptions const& given);

} // namespace selu
