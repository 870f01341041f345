// What the fuzz targets share: values taken from the fuzzer's bytes, and checks that end the run.
//
//   extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
//     fuzz::CInput input(data, size);
//     Point const low = input.SmallPoint(9), high = input.SmallPoint(9);
//     auto const walker = fuzz::Try([&] { return CWindowVisitor(low, high); });
//     if (walker) fuzz::CheckWalk(*walker);
//     return 0;
//   }
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Triple.h>
#include <SeluUtils/Walker.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/Types.h>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <tuple>
#include <vector>

namespace fuzz {

using ORVA::CTriple;
using ORVA::int64;
using ORVA::uint64;
using Point = CTriple<int64>;
using PointList = std::vector<Point>;

/// Ends the run with a message, which libFuzzer reports along with the input.
[[noreturn]] inline void Fail(char const* what) {
  std::fprintf(stderr, "violated: %s\n", what);
  std::abort();
}
inline void Require(bool holds, char const* what) {
  if (!holds) [[unlikely]]
    Fail(what);
}

/// The result of a call that may refuse its arguments; nothing where it throws the library's own
/// exception. Any other one, a lack of memory too, is a finding: targets ask for little.
template <class Call>
auto Try(Call call) -> std::optional<decltype(call())> {
  try {
    return call();
  } catch (ORVA::CException const& error) {
    Require(error.what() != nullptr && error.what()[0] != 0, "an error says what is wrong");
    return std::nullopt;
  }
}
/// The same for a call without a result: whether it went through.
template <class Call>
bool Done(Call call) {
  return Try([&] { return call(), true; }).has_value();
}
/// Whether a call throws this exception.
template <class Error, class Call>
bool Throws(Call call) {
  try {
    call();
  } catch (Error const&) {
    return true;
  }
  return false;
}

/// The fuzzer's bytes, taken off one value at a time; zeros when they have run out.
class CInput {
public:
  CInput(std::uint8_t const* data, std::size_t size) : m_Bytes(data, size) {}

  bool Flag() { return (Byte() & 1) != 0; }
  std::uint8_t Byte() { return m_Bytes.ConsumeIntegral<std::uint8_t>(); }
  int64 Between(int64 low, int64 high) { return m_Bytes.ConsumeIntegralInRange<int64>(low, high); }
  std::size_t Count(std::size_t most) {
    return m_Bytes.ConsumeIntegralInRange<std::size_t>(0, most);
  }
  template <class T, std::size_t N>
  T const& OneOf(std::array<T, N> const& choices) {
    return choices[m_Bytes.ConsumeIntegralInRange<std::size_t>(0, N - 1)];
  }
  std::vector<std::uint8_t> Rest() { return m_Bytes.ConsumeRemainingBytes<std::uint8_t>(); }

  Point SmallPoint(int64 reach) { return PointBetween(-reach, reach); }
  Point PointBetween(int64 low, int64 high) {
    int64 const x = Between(low, high), y = Between(low, high), z = Between(low, high);
    return {x, y, z};
  }
  /// Any integer, most of them close to zero, a power of two or an end of the range.
  int64 Integer() {
    auto const kind = Byte();
    auto const near = static_cast<int64>(static_cast<std::int8_t>(Byte()));
    if (kind < 128) return near;
    if (kind < 250) { // one of +-2^k
      auto const power = uint64{1} << (kind % 61U);
      return (kind & 1) != 0 ? static_cast<int64>(power) + near : near - static_cast<int64>(power);
    }
    if (kind == 250) return std::numeric_limits<int64>::max() - (near & 63);
    if (kind == 251) return std::numeric_limits<int64>::min() + (near & 63);
    return m_Bytes.ConsumeIntegral<int64>();
  }
  Point AnyPoint() {
    int64 const x = Integer(), y = Integer(), z = Integer();
    return {x, y, z};
  }
  /// Any double: small multiples of 1/8, special values, or eight bytes as they come.
  double Real() {
    static constexpr double c_inf = std::numeric_limits<double>::infinity();
    static constexpr std::array<double, 18> special = {c_inf,
                                                       -c_inf,
                                                       std::numeric_limits<double>::quiet_NaN(),
                                                       -0.0,
                                                       1e-300,
                                                       -1e300,
                                                       1e300,
                                                       5e-324,
                                                       2.2e-308,
                                                       1.7976931348623157e308,
                                                       1e-12,
                                                       0.5,
                                                       1 / 3.,
                                                       1e9,
                                                       -1.5e10,
                                                       0x1p53,
                                                       0x1p63,
                                                       -0x1p63};
    auto const kind = Byte();
    if (kind < 160) return static_cast<double>(static_cast<std::int8_t>(Byte())) / 8;
    if (kind < 220) return special[kind % special.size()];
    auto const bits = m_Bytes.ConsumeIntegral<uint64>();
    double value = 0;
    std::copy_n(reinterpret_cast<char const*>(&bits), sizeof value,
                reinterpret_cast<char*>(&value));
    return value;
  }
  CTriple<double> RealTriple() {
    double const x = Real(), y = Real(), z = Real();
    return {x, y, z};
  }
  /// One of the eight codes, or now and then any other number.
  int64 Neighborhood() {
    static constexpr std::array<int64, 8> codes = {ORVA::NEIGHBORHOOD_4,    ORVA::NEIGHBORHOOD_6_1,
                                                   ORVA::NEIGHBORHOOD_6_2,  ORVA::NEIGHBORHOOD_8,
                                                   ORVA::NEIGHBORHOOD_6,    ORVA::NEIGHBORHOOD_14_1,
                                                   ORVA::NEIGHBORHOOD_14_2, ORVA::NEIGHBORHOOD_26};
    auto const kind = Byte();
    return kind < 240 ? codes[kind % codes.size()] : Integer();
  }
  /// A list of points, each from `next`.
  template <class Next>
  PointList List(std::size_t most, Next next) {
    PointList points(Count(most));
    for (auto& point : points) point = next();
    return points;
  }

private:
  FuzzedDataProvider m_Bytes;
};

[[nodiscard]] inline bool Is2D(int64 neighborhood) {
  return neighborhood == ORVA::NEIGHBORHOOD_4 || neighborhood == ORVA::NEIGHBORHOOD_6_1 ||
         neighborhood == ORVA::NEIGHBORHOOD_6_2 || neighborhood == ORVA::NEIGHBORHOOD_8;
}
[[nodiscard]] inline bool Is3D(int64 neighborhood) {
  return neighborhood == ORVA::NEIGHBORHOOD_6 || neighborhood == ORVA::NEIGHBORHOOD_14_1 ||
         neighborhood == ORVA::NEIGHBORHOOD_14_2 || neighborhood == ORVA::NEIGHBORHOOD_26;
}

/// How far the points lie apart along the axis where that is most; capped at 2^63.
[[nodiscard]] inline uint64 Spread(PointList const& points) {
  uint64 spread = 0;
  for (auto const axis : {&Point::x, &Point::y, &Point::z}) {
    if (points.empty()) break;
    auto const [low, high] = std::ranges::minmax(points, {}, axis);
    spread = std::max(spread, static_cast<uint64>(high.*axis) - static_cast<uint64>(low.*axis));
  }
  return spread;
}

struct StBox {
  Point low, high;
  [[nodiscard]] bool Has(Point const& p) const {
    return low.x <= p.x && p.x <= high.x && low.y <= p.y && p.y <= high.y && low.z <= p.z &&
           p.z <= high.z;
  }
};
/// The box of a list that is not empty.
[[nodiscard]] inline StBox BoxOf(PointList const& points) {
  StBox box{points.front(), points.front()};
  for (auto const axis : {&Point::x, &Point::y, &Point::z})
    for (auto const& p : points) {
      box.low.*axis = std::min(box.low.*axis, p.*axis);
      box.high.*axis = std::max(box.high.*axis, p.*axis);
    }
  return box;
}

[[nodiscard]] inline bool InOrder(Point const& a, Point const& b) {
  return std::tie(a.x, a.y, a.z) < std::tie(b.x, b.y, b.z);
}
[[nodiscard]] inline PointList Sorted(PointList points) {
  std::ranges::sort(points, InOrder);
  return points;
}
inline void RequireDistinct(PointList points, char const* what) {
  std::ranges::sort(points, InOrder);
  Require(std::ranges::adjacent_find(points) == points.end(), what);
}
inline void RequireInside(PointList const& points, StBox const& box, char const* what) {
  for (auto const& point : points) Require(box.Has(point), what);
}

/// The longest walk that is followed to its end.
inline constexpr std::size_t c_longest = 20'000;

template <class Walker>
PointList Walk(Walker& walker, std::size_t most = c_longest) {
  PointList points;
  while (points.size() < most && walker.MorePoints()) points.push_back(walker.NextPoint());
  return points;
}

/// Walks a walker that has not been walked and gives its first points, all of them where they are
/// no more than c_longest: as many as `count` says, and a copy taken on the way walks the same.
template <ORVA::Walker W>
PointList CheckWalk(W walker, uint64 count) {
  W const fresh = walker;
  auto const expected = static_cast<std::size_t>(std::min<uint64>(count, c_longest));
  PointList points = Walk(walker, expected);
  Require(points.size() == expected, "a walk hands out as many points as it counts");
  Require(walker.MorePoints() == (count > expected), "a walk ends after the points it counts");

  W first = fresh;
  PointList again = Walk(first, expected / 2);
  W second = first;
  static_cast<void>(Walk(first, expected));
  PointList const rest = Walk(second, expected - again.size());
  again.insert(again.end(), rest.begin(), rest.end());
  Require(again == points, "a copy walks on like its original");
  if constexpr (ORVA::RewindableWalker<W>) {
    second.Reset();
    Require(Walk(second, expected) == points, "a walk that is reset repeats itself");
  }
  return points;
}
template <ORVA::Walker W>
PointList CheckWalk(W walker) {
  auto const count = static_cast<uint64>(walker.Steps());
  Require(walker.empty() == (count == 0), "a walk is empty where it counts no points");
  return CheckWalk(std::move(walker), count);
}

} // namespace fuzz
