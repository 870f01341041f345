// What every test of a walk needs: points and walks, their checks and prints, errors, and the ends
// of the ranges of numbers.
#pragma once

#include "Errors.h"
#include "Printers.h"
#include "WalkChecks.h"
#include "Walks.h"

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/Types.h>

#include <limits>

namespace test {

inline constexpr ORVA::int64 c_min = std::numeric_limits<ORVA::int64>::min();
inline constexpr ORVA::int64 c_max = std::numeric_limits<ORVA::int64>::max();
inline constexpr double c_infinity = std::numeric_limits<double>::infinity();
inline constexpr double c_nan = std::numeric_limits<double>::quiet_NaN();

} // namespace test
