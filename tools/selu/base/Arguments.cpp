#include "base/Arguments.h"

#include "base/Errors.h"
#include "base/Texts.h"

namespace selu {

ORVA::CSize ParseSize(std::string const& text) {
  auto const extents = ParseIntegers(text);
  if (!extents || extents->size() < 2 || extents->size() > 3)
    throw CUsageError("--size needs two or three whole numbers nx,ny[,nz], not \"" + text + "\"");
  for (auto const extent : *extents)
    if (extent < 1) throw CUsageError("--size needs numbers above 0, not \"" + text + "\"");
  if (extents->size() == 2) return {(*extents)[0], (*extents)[1]};
  return {(*extents)[0], (*extents)[1], (*extents)[2]};
}

ORVA::uint64 ParseSeed(std::string const& text) {
  auto const seed = ParseUnsigned(text);
  if (!seed)
    throw CUsageError("--seed needs a whole number from 0 to 18446744073709551615, not \"" + text +
                      "\"");
  return *seed;
}

} // namespace selu
