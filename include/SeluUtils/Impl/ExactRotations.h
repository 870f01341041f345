// What the exact distributions of rotations share: from a direction to a rotation about it, and
// draws from the shared source, from a given one, and of arrays.
//
//   #include <SeluUtils/Random/ExactVonMisesFisher.h>
//   CExactVonMisesFisher const bundle(50.0, CPolarCoordinates(1.0, 0.5));
//   CRandomSource source(42);
//   CQuaternion const q = bundle.Quaternion(source);   // CExactVonMisesFisher draws directions,
//   CEulerRotation const r = bundle(source);           // the rest is from here
#pragma once

#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/ExactDraws.h>
#include <SeluUtils/Impl/Ziggurat.h>
#include <SeluUtils/PolarCoordinates.h>
#include <SeluUtils/Quaternion.h>
#include <SeluUtils/Random/RotationGenerator.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/RandomSource.h>

#include <array>
#include <cmath>
#include <span>

namespace ORVA::Impl {

/// Numbers times this are a vector of length 1, the sum of their squares given. Where all of them
/// are 0 it is 0, never infinite.
[[nodiscard]] inline double ToLengthOne(double square) {
  return square > 0 ? 1 / std::sqrt(square) : 0;
}

/// A uniform point of the circle.
template <RandomSource Source>
[[nodiscard]] inline std::array<double, 2> UnitPair(Source& source) {
  double const x = StandardNormal(source), y = StandardNormal(source);
  double const square = x * x + y * y;
  if (square == 0) [[unlikely]]
    return {1, 0};
  double const factor = 1 / std::sqrt(square);
  return {x * factor, y * factor};
}

/// A uniform point of the sphere stretched across the z axis and scaled back to length 1.
template <RandomSource Source>
[[nodiscard]] inline CTriple<double> UnitVector(Source& source, double across = 1,
                                                double along = 1) {
  double const x = StandardNormal(source) * across, y = StandardNormal(source) * across;
  double const z = StandardNormal(source) * along;
  double const square = x * x + y * y + z * z;
  if (square == 0) [[unlikely]]
    return {0, 0, 1};
  double const factor = 1 / std::sqrt(square);
  return {x * factor, y * factor, z * factor};
}

/// The axes of a right-handed frame whose third axis is the given one.
class SELUUTILS_EXPORT CMeanFrame {
public:
  /// Throws CExBadParam, in the name of the function, unless both angles of the axis are finite.
  CMeanFrame(CPolarCoordinates const& axis, char const* function);

  [[nodiscard]] CTriple<double> FromZ(double x, double y, double z) const noexcept {
    return {m_X.x * x + m_Y.x * y + m_Z.x * z, m_X.y * x + m_Y.y * y + m_Z.y * z,
            m_X.z * x + m_Y.z * y + m_Z.z * z};
  }
  /// The direction at the given cosine, with its sine, and at a uniform azimuth.
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> DirectionAt(double cosine, double sine, Source& source) const {
    double const x = StandardNormal(source), y = StandardNormal(source);
    double const square = x * x + y * y;
    if (square == 0) [[unlikely]]
      return FromZ(sine, 0, cosine);
    double const factor = sine / std::sqrt(square);
    return FromZ(x * factor, y * factor, cosine);
  }

private:
  CTriple<double> m_X, m_Y, m_Z;
};

/// The rotation that takes the z axis to the direction, after a turn about the z axis by twice the
/// angle whose cosine and sine are given. Near the lower pole it starts from there, so that the
/// quotient keeps its digits.
[[nodiscard]] inline CQuaternion TurnedTo(CTriple<double> const& d,
                                          std::array<double, 2> const& half) {
  auto const [c, s] = half;
  bool const isFromBelow = d.z < -0.9;
  double const fromPole = isFromBelow ? 1 - d.z : 1 + d.z;
  double const factor = 1 / std::sqrt(2 * fromPole);
  double const w = fromPole * factor, x = d.x * factor, y = d.y * factor;
  // (w, y, -x, 0) (0, 1, 0, 0) (c, 0, 0, s), else (w, -y, x, 0) (c, 0, 0, s).
  if (isFromBelow) [[unlikely]]
    return {-(y * c + x * s), w * c, -(w * s), x * c - y * s};
  return {w * c, x * s - y * c, x * c + y * s, w * s};
}

/// A rotation is the direction's quaternion with a uniform spin about it. Distributions are
/// immutable and their constructors refuse bad parameters, so they are always valid and may be
/// drawn from on many threads at once, each with a source of its own.
template <class Distribution>
class CExactRotations : public IRotationGenerator {
public:
  /// A rotation from the shared source.
  CEulerRotation operator()() final {
    CSharedSource shared;
    return (*this)(shared);
  }
  /// From the given source, inline: a rotation, the same as a quaternion, or a direction alone,
  /// which takes no words for a spin.
  template <RandomSource Source>
  CEulerRotation operator()(Source& source) const {
    return RotationOf(Quaternion(source).Matrix());
  }
  template <RandomSource Source>
  [[nodiscard]] CQuaternion Quaternion(Source& source) const {
    return Self().DrawQuaternion(source);
  }
  template <RandomSource Source>
  [[nodiscard]] CTriple<double> Direction(Source& source) const {
    return Self().DrawDirection(source);
  }
  /// Fill arrays by such draws, one after the other.
  template <RandomSource Source>
  void Fill(std::span<CEulerRotation> out, Source& source) const {
    FillInOrder(out, source, [&own = *this](auto& words) { return own(words); });
  }
  template <RandomSource Source>
  void Fill(std::span<std::array<double, 9>> out, Source& source) const {
    FillInOrder(out, source, [this](auto& words) { return this->Quaternion(words).Matrix(); });
  }
  template <RandomSource Source>
  void Fill(std::span<CQuaternion> out, Source& source) const {
    FillInOrder(out, source, [this](auto& words) { return this->Quaternion(words); });
  }
  template <RandomSource Source>
  void Fill(std::span<CTriple<double>> out, Source& source) const {
    FillInOrder(out, source, [this](auto& words) { return this->Direction(words); });
  }
  [[nodiscard]] bool IsValid() const final { return true; }
  [[nodiscard]] IRotationGenerator* Clone() const final { return new Distribution(Self()); }

protected:
  template <RandomSource Source>
  [[nodiscard]] CQuaternion DrawQuaternion(Source& source) const {
    CTriple<double> const direction = Self().DrawDirection(source);
    return TurnedTo(direction, UnitPair(source));
  }

private:
  CEulerRotation DrawFrom(CSourceReference source) final { return (*this)(source); }
  void FillFrom(std::span<std::array<double, 9>> out, CSourceReference source) final {
    Fill(out, source);
  }
  void FillFrom(std::span<CQuaternion> out, CSourceReference source) final { Fill(out, source); }
  void FillFrom(std::span<CTriple<double>> out, CSourceReference source) final {
    Fill(out, source);
  }
  [[nodiscard]] Distribution const& Self() const noexcept {
    return static_cast<Distribution const&>(*this);
  }
};

} // namespace ORVA::Impl
