// The position on a digital line, moved on by additions alone.
//
//   Impl::StLineCursor cursor(CTriple<int64>(5, 5, 0));
//   cursor.x.SetSteps(Impl::StStepPattern::Even(9, 9), 1);
//   cursor.y.SetSteps(Impl::StStepPattern::Even(4, 9), -1);
//   for (int i = 0; i < 9; ++i) cursor.Advance();     // to (14, 1, 0)
#pragma once

#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

namespace ORVA::Impl {

/// At which of the moves an axis takes a step: where adding the rate carries out of the fraction,
/// both in units of 2^-64.
struct StStepPattern {
  uint64 fraction = 0, rate = 0;

  /// `steps` over `moves`, 0 <= steps <= moves <= 2^32, as evenly as can be: after k moves
  /// floor(k steps / moves + 1/2) of them. The rounding of the rate never reaches the next multiple
  /// of 1 / (2 moves), at which alone a step can be due, so they are exact.
  [[nodiscard]] static constexpr StStepPattern Even(uint64 steps, uint64 moves) noexcept {
    constexpr uint64 half = uint64{1} << 63;
    if (moves == 0) return {half, 0};
    uint64 const fraction = half + (moves % 2 == 0 ? half / moves : 0); // keeps off ties
    if (steps == moves) return {fraction, ~uint64{0}};                  // carries 2^63 times on end
    uint64 const high = (steps << 32) / moves, rest = (steps << 32) % moves;
    uint64 const low = (rest << 32) / moves, lastRest = (rest << 32) % moves;
    return {fraction, (high << 32) + low + (2 * lastRest >= moves)};
  }
  /// A step exactly where this one has none.
  [[nodiscard]] constexpr StStepPattern Complement() const noexcept {
    return {~fraction, rate == 0 ? ~uint64{0} : ~rate + 1};
  }
  /// Whether move i >= 0, counted from here, takes a step.
  [[nodiscard]] constexpr bool IsStep(int64 i) const noexcept {
    return fraction + (static_cast<uint64>(i) + 1) * rate < rate;
  }
  /// How many of the next moves have no step, at most 2^64 - 1.
  [[nodiscard]] constexpr uint64 RestingMoves() const noexcept {
    return rate == 0 ? ~uint64{0} : ~fraction / rate;
  }
  /// Goes on to the next move and says whether it takes a step.
  constexpr bool Advance() noexcept {
    fraction += rate;
    return fraction < rate;
  }
};

/// One axis. A coordinate that falls drifts by -1 at every move and rises again where the
/// complement of its pattern has a step: either way an addition with carry.
struct StLineAxis {
  StStepPattern pattern;
  uint64 position = 0;
  uint64 drift = 0;

  constexpr StLineAxis() noexcept = default;
  constexpr explicit StLineAxis(int64 start) noexcept : position(static_cast<uint64>(start)) {}

  [[nodiscard]] constexpr int64 Get() const noexcept { return static_cast<int64>(position); }
  constexpr void Advance() noexcept { position += drift + pattern.Advance(); }
  /// The axis before its last move.
  [[nodiscard]] constexpr StLineAxis Before() const noexcept {
    StLineAxis axis = *this;
    axis.position -= drift + (pattern.fraction < pattern.rate);
    axis.pattern.fraction -= pattern.rate;
    return axis;
  }
  /// Move i >= 0, counted from here.
  [[nodiscard]] constexpr int64 Move(int64 i) const noexcept {
    return static_cast<int64>(drift + pattern.IsStep(i));
  }
  /// This axis with the moves that come after its first `moves` >= 0.
  [[nodiscard]] constexpr StLineAxis TurnedBy(int64 moves) const noexcept {
    StLineAxis axis = *this;
    axis.pattern.fraction += static_cast<uint64>(moves) * pattern.rate;
    return axis;
  }
  /// How many of the next moves leave the axis where it is, and how many raise it, until the first
  /// that does not.
  [[nodiscard]] constexpr uint64 RestingMoves() const noexcept {
    return (drift == 0 ? pattern : pattern.Complement()).RestingMoves();
  }
  [[nodiscard]] constexpr uint64 RisingMoves() const noexcept {
    if (drift != 0) return 0;
    return pattern.rate == ~uint64{0} ? pattern.rate : pattern.Complement().RestingMoves();
  }
  /// Goes on by so many moves >= 0 that all take the same step.
  constexpr void AdvanceEvenly(int64 moves, int64 step) noexcept {
    position += static_cast<uint64>(moves) * static_cast<uint64>(step);
    pattern.fraction += static_cast<uint64>(moves) * pattern.rate;
  }
  constexpr void SetSteps(StStepPattern const& steps, int64 sign) noexcept {
    pattern = sign < 0 ? steps.Complement() : steps;
    drift = sign < 0 ? ~uint64{0} : 0;
  }
};

/// All three axes, each at rest until its steps are set.
struct StLineCursor {
  constexpr StLineCursor() noexcept = default;
  constexpr explicit StLineCursor(CTriple<int64> const& start) noexcept
      : x(start.x), y(start.y), z(start.z) {}

  [[nodiscard]] constexpr CTriple<int64> Get() const noexcept {
    return {x.Get(), y.Get(), z.Get()};
  }
  /// Move i >= 0, counted from here.
  [[nodiscard]] constexpr CTriple<int64> Move(int64 i) const noexcept {
    return {x.Move(i), y.Move(i), z.Move(i)};
  }
  /// The next move.
  constexpr void Advance() noexcept {
    x.Advance();
    y.Advance();
    z.Advance();
  }
  /// How many of the next moves go by +1 along the axis and not along the others.
  [[nodiscard]] constexpr uint64 MovesAlong(int64 axis) const noexcept {
    uint64 const alongX = axis == 0 ? x.RisingMoves() : x.RestingMoves();
    uint64 const alongY = axis == 1 ? y.RisingMoves() : y.RestingMoves();
    uint64 const alongZ = axis == 2 ? z.RisingMoves() : z.RestingMoves();
    uint64 const least = alongX < alongY ? alongX : alongY;
    return alongZ < least ? alongZ : least;
  }
  /// Goes on by so many moves >= 0 that are all alike.
  constexpr void AdvanceEvenly(int64 moves, CTriple<int64> const& move) noexcept {
    x.AdvanceEvenly(moves, move.x);
    y.AdvanceEvenly(moves, move.y);
    z.AdvanceEvenly(moves, move.z);
  }
  /// The position before the last Advance.
  [[nodiscard]] constexpr StLineCursor Before() const noexcept {
    StLineCursor cursor;
    cursor.x = x.Before();
    cursor.y = y.Before();
    cursor.z = z.Before();
    return cursor;
  }
  /// At the point given, with the moves that come after this one's first `moves` >= 0.
  [[nodiscard]] constexpr StLineCursor MovedTo(CTriple<int64> const& point,
                                               int64 moves) const noexcept {
    StLineCursor cursor;
    cursor.x = x.TurnedBy(moves);
    cursor.y = y.TurnedBy(moves);
    cursor.z = z.TurnedBy(moves);
    cursor.x.position = static_cast<uint64>(point.x);
    cursor.y.position = static_cast<uint64>(point.y);
    cursor.z.position = static_cast<uint64>(point.z);
    return cursor;
  }
  /// A move from elsewhere, for axes at rest.
  constexpr void MoveBy(CTriple<int64> const& move) noexcept {
    x.position += static_cast<uint64>(move.x);
    y.position += static_cast<uint64>(move.y);
    z.position += static_cast<uint64>(move.z);
  }

  StLineAxis x, y, z;
};

} // namespace ORVA::Impl
