// Three components x, y, z: a voxel position, a move, an extent, a direction, a real point.
//
//   CTriple<long long> p(1, 2, 3);
//   p += CTriple<long long>(0, 0, 1);           // (1, 2, 4)
//   auto const back = CTriple<long long>(1, 1, 1) - p;
//   CTriple<double> const half = CTriple<double>(1, 2, 3) * 0.5;
#pragma once

namespace ORVA {

/// A plain value; a default triple is (0, 0, 0). The operations are the component type's own.
template <class T>
struct CTriple {
  constexpr CTriple() = default;
  constexpr CTriple(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}

  constexpr CTriple& operator+=(CTriple const& other) {
    x += other.x;
    y += other.y;
    z += other.z;
    return *this;
  }
  friend constexpr CTriple operator+(CTriple const& a, CTriple const& b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
  }
  friend constexpr CTriple operator-(CTriple const& a, CTriple const& b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
  }
  /// Each component times a scalar.
  friend constexpr CTriple operator*(CTriple const& a, T scalar) {
    return {a.x * scalar, a.y * scalar, a.z * scalar};
  }
  friend constexpr CTriple operator*(T scalar, CTriple const& a) { return a * scalar; }
  /// Each component times the other's, such as a sign for each axis.
  friend constexpr CTriple operator*(CTriple const& a, CTriple const& b) {
    return {a.x * b.x, a.y * b.y, a.z * b.z};
  }
  friend constexpr bool operator==(CTriple const&, CTriple const&) = default;

  T x{}, y{}, z{};
};

} // namespace ORVA
