#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Texture/PairCounter.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Texture";

void CheckArguments(int dimension, int64 distance, int64 most, char const* function) {
  if (dimension < 1 || dimension > 3)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("dimension %1 is not 1, 2 or 3").Arg(dimension));
  if (distance < 1 || distance > most)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, function),
                        CString("distance %1 is not from 1 to %2").Arg(distance).Arg(most));
}

// Whether the first component that is not 0 is positive: true for one of each opposite pair.
bool IsForward(CTriple<int64> const& d) {
  return d.x > 0 || (d.x == 0 && (d.y > 0 || (d.y == 0 && d.z > 0)));
}

} // namespace

std::vector<CTriple<int64>> NeighborDisplacements(int dimension, int64 distance) {
  CheckArguments(dimension, distance, std::numeric_limits<std::int32_t>::max(),
                 "ORVA::NeighborDisplacements");
  std::vector<CTriple<int64>> displacements;
  auto const all = static_cast<std::size_t>(CCooccurrence::NumberOfDirections(dimension));
  for (auto const& d : std::span(CCooccurrence::m_cDirections).first(all))
    displacements.push_back(distance * CTriple<int64>(d.x, d.y, d.z));
  return displacements;
}

std::vector<CTriple<int64>> ShellDisplacements(int dimension, int64 distance) {
  CheckArguments(dimension, distance, 1000, "ORVA::ShellDisplacements");
  if (distance == 1) return NeighborDisplacements(dimension);
  int64 const reachY = dimension > 1 ? distance : 0, reachZ = dimension > 2 ? distance : 0;
  std::vector<CTriple<int64>> shell;
  for (int64 z = -reachZ; z <= reachZ; ++z)
    for (int64 y = -reachY; y <= reachY; ++y) {
      // Inside the shell only the two ends of a row belong to it.
      bool const isFace = std::max(std::abs(y), std::abs(z)) == distance;
      for (int64 x = -distance; x <= distance; x += isFace ? 1 : 2 * distance)
        if (IsForward({x, y, z})) shell.emplace_back(x, y, z);
    }
  return shell;
}

} // namespace ORVA
