#include <SeluUtils/Random/RotationGenerator.h>

#include <pxlib2core/Random.h>

#include <algorithm>

namespace ORVA {

CEulerRotation IRotationGenerator::DrawFrom(CSourceReference source) {
  Impl::CBorrowedStream const stream(source);
  return (*this)();
}

void IRotationGenerator::FillFrom(std::span<std::array<double, 9>> out, CSourceReference source) {
  for (auto& matrix : out)
    std::ranges::copy(DrawFrom(source).getRotationMatrix().Elements().first<9>(), matrix.begin());
}

void IRotationGenerator::FillFrom(std::span<CQuaternion> out, CSourceReference source) {
  for (CQuaternion& quaternion : out) quaternion = CQuaternion(DrawFrom(source));
}

void IRotationGenerator::FillFrom(std::span<CTriple<double>> out, CSourceReference source) {
  for (auto& direction : out) direction = DrawFrom(source).getDirectionVector();
}

} // namespace ORVA
