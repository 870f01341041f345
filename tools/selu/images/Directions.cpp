#include "images/Directions.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace selu {
namespace {

using ORVA::int64;

void CheckAxis(int64 step, int64 extent, char axis, std::string const& text) {
  if (std::abs(step) >= extent)
    throw CAppError("the direction " + text + " is as long as the image or longer along " + axis +
                    " (" + std::to_string(extent) + (extent == 1 ? " voxel)" : " voxels)"));
}

} // namespace

StGivenDirection ParseDirection(std::string const& text) {
  auto const numbers = ParseIntegers(text);
  if (!numbers || numbers->size() < 2 || numbers->size() > 3)
    throw CUsageError("--direction needs whole numbers dx,dy[,dz], not \"" + text + "\"");
  for (auto const number : *numbers)
    if (number < INT32_MIN || number > INT32_MAX)
      throw CUsageError("--direction needs numbers of 32 bits, not \"" + text + "\"");
  if (std::all_of(numbers->begin(), numbers->end(), [](int64 number) { return number == 0; }))
    throw CUsageError("--direction needs a direction other than " + text);
  return {text, *numbers};
}

Direction ToDirection(StGivenDirection const& given, int dimension) {
  auto const& d = given.components;
  if (dimension == 3 && d.size() == 2)
    throw CAppError("the direction " + given.text + " needs dz, since the image is 3D");
  if (dimension == 2 && d.size() == 3 && d[2] != 0)
    throw CAppError("the direction " + given.text + " needs dz = 0, since the image is 2D");
  return {static_cast<long>(d[0]), static_cast<long>(d[1]),
          d.size() == 3 ? static_cast<long>(d[2]) : 0};
}

Direction FitDirection(StGivenDirection const& given, ORVA::CSize const& size) {
  Direction const direction = ToDirection(given, size.Dim());
  CheckAxis(direction.x, size.x, 'x', given.text);
  CheckAxis(direction.y, size.y, 'y', given.text);
  CheckAxis(direction.z, size.z, 'z', given.text);
  return direction;
}

int64 PairsOf(ORVA::CSize const& size, Direction const& d) noexcept {
  auto const along = [](int64 extent, int64 step) {
    return std::max<int64>(extent - std::abs(step), 0);
  };
  return along(size.x, d.x) * along(size.y, d.y) * along(size.z, d.z);
}

} // namespace selu
