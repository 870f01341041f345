// The position on a digital line, moved on by additions alone.
//
//   Impl::StLineCursor cursor(start, signs);
//   cursor.SetEvenSteps(lengths, moves);
//   for (int64 i = 0; i < moves; ++i) cursor.Advance();
//   // cursor.Get() is start + signs * lengths
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// One axis: how far the position is, and when it steps.
///
/// Over n moves the axis takes `length` steps, as evenly as can be: after k moves it has taken
/// floor(k length / n + 1/2) of them. The fraction is kept in units of 2^-64, so that its carry is
/// the step. For n up to 2^32 the rounding of the rate never reaches the next multiple of 1 / 2n,
/// at which alone a step can be due: the steps are exact.
struct StLineAxis {
  uint64 fraction = 0, rate = 0;
  uint64 position = 0; // of the coordinate's complement where the axis runs downward
  uint64 mirror = 0;   // all bits set there, else none

  constexpr StLineAxis() noexcept = default;
  constexpr StLineAxis(int64 start, int64 sign) noexcept
      : position(static_cast<uint64>(sign < 0 ? ~start : start)),
        mirror(sign < 0 ? ~uint64{0} : 0) {}

  [[nodiscard]] constexpr int64 Get() const noexcept {
    return static_cast<int64>(position ^ mirror);
  }
  /// The next move; says whether the axis took a step.
  constexpr bool Advance() noexcept {
    fraction += rate;
    bool const isStep = fraction < rate;
    position += isStep;
    return isStep;
  }
  /// The axis before its last move.
  [[nodiscard]] constexpr StLineAxis Before() const noexcept {
    StLineAxis axis = *this;
    axis.position -= fraction < rate;
    axis.fraction -= rate;
    return axis;
  }
  /// 0 <= length <= moves <= 2^32.
  constexpr void SetEvenSteps(uint64 length, uint64 moves) noexcept {
    constexpr uint64 half = uint64{1} << 63;
    rate = 0;
    fraction = half;
    if (moves == 0) return;
    if (moves % 2 == 0) fraction += half / moves; // else every tie would lie on a multiple of 1 / n
    if (length == moves) {
      rate = ~uint64{0}; // carries 2^63 times on end
      return;
    }
    uint64 const high = (length << 32) / moves, rest = (length << 32) % moves;
    uint64 const low = (rest << 32) / moves, lastRest = (rest << 32) % moves;
    rate = (high << 32) + low + (2 * lastRest >= moves);
  }
  /// Steps exactly where the other axis does not.
  constexpr void SetStepsBetween(StLineAxis const& other) noexcept {
    fraction = ~other.fraction;
    rate = other.rate == 0 ? ~uint64{0} : ~other.rate + 1;
  }
};

/// All three axes. One that shall not move is left at rate 0.
struct StLineCursor {
  constexpr StLineCursor() noexcept = default;
  constexpr StLineCursor(CTriple<int64> const& start, CTriple<int64> const& signs) noexcept
      : x(start.x, signs.x), y(start.y, signs.y), z(start.z, signs.z) {}

  [[nodiscard]] constexpr CTriple<int64> Get() const noexcept {
    return {x.Get(), y.Get(), z.Get()};
  }
  /// The next move.
  constexpr void Advance() noexcept {
    x.Advance();
    y.Advance();
    z.Advance();
  }
  /// The position before the last Advance.
  [[nodiscard]] constexpr StLineCursor Before() const noexcept {
    StLineCursor cursor;
    cursor.x = x.Before();
    cursor.y = y.Before();
    cursor.z = z.Before();
    return cursor;
  }
  /// A move from elsewhere, on a line whose signs are all positive.
  constexpr void MoveBy(CTriple<int64> const& move) noexcept {
    x.position += static_cast<uint64>(move.x);
    y.position += static_cast<uint64>(move.y);
    z.position += static_cast<uint64>(move.z);
  }

  StLineAxis x, y, z;
};

} // namespace ORVA::Impl
