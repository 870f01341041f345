// Three components x, y, z: a voxel position, a move, an extent, a direction, a real point.
//
//   CTriple<long long> p(1, 2, 3);
//   p += CTriple<long long>(0, 0, 1);           // (1, 2, 4)
//   auto const back = CTriple<long long>(1, 1, 1) - p;
//   CTriple<double> const half = CTriple<double>(1, 2, 3) * 0.5;
#pragma once

#include <compare>
#include <cstddef>
#include <iosfwd>
#include <typeindex> // declares std::hash, and next to nothing else

namespace ORVA {

/// A plain value; a default triple is (0, 0, 0). The operations are the component type's own.
template <class T>
struct CTriple {
  constexpr CTriple() = default;
  constexpr CTriple(T xValue, T yValue, T zValue) : x(xValue), y(yValue), z(zValue) {}

  /// Adds the other one, component by component.
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
  /// x decides, then y, then z.
  friend constexpr auto operator<=>(CTriple const&, CTriple const&) = default;
  /// As (1, 2, 3); what is written so needs <ostream>.
  template <class Char, class Traits>
  friend std::basic_ostream<Char, Traits>& operator<<(std::basic_ostream<Char, Traits>& out,
                                                      CTriple const& a) {
    return out << '(' << a.x << ", " << a.y << ", " << a.z << ')';
  }

  /// Along x, y and z.
  T x{}, y{}, z{};
};

} // namespace ORVA

/// Equal triples have equal hashes, whatever their zeros' signs.
template <class T>
struct std::hash<ORVA::CTriple<T>> {
  [[nodiscard]] std::size_t operator()(ORVA::CTriple<T> const& a) const noexcept {
    std::hash<T> const of;
    return Mixed(Mixed(Mixed(of(a.x)) + of(a.y)) + of(a.z));
  }

private:
  static constexpr std::size_t c_odd = static_cast<std::size_t>(0x9e3779b97f4a7c15); // 2^64 / phi
  // Voxels near each other differ in low bits alone; all of them shall reach all bits.
  static constexpr std::size_t Mixed(std::size_t value) noexcept {
    value *= c_odd;
    return value ^ (value >> (4 * sizeof(value)));
  }
};
