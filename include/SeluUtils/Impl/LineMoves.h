// Digital lines as lists of unit moves, in 1, 2 and 3 dimensions; no start point, no image.
//
//   Impl::CBresenhamVisitor3D const line(4, 1, 2, NEIGHBORHOOD_26);
//   CTriple<int64> p(10, 10, 10);
//   for (int64 i = 0; i < line.LastStep(); ++i) p += line.Step(i);
//   // p is (14, 11, 12)
#pragma once

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Impl/KeptList.h>
#include <SeluUtils/Impl/LineCursor.h>
#include <SeluUtils/Impl/UntilMoved.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// Sign of a component; zero counts as positive.
[[nodiscard]] constexpr int64 Sign(int64 component) noexcept { return component >= 0 ? 1 : -1; }

/// Length of a component clamped to 32 bits, as 1D and 2D lines take it: 0 to 2147483648.
[[nodiscard]] constexpr int64 ClampedLength(int64 component) noexcept {
  if (component > INT32_MAX) return INT32_MAX;
  if (component < INT32_MIN) return -int64{INT32_MIN};
  return component < 0 ? -component : component;
}

/// Length of a component's low 32 bits, as 3D lines take it: 0 to 2147483648.
[[nodiscard]] constexpr int64 TruncatedLength(int64 component) noexcept {
  int64 const low = static_cast<std::int32_t>(static_cast<std::uint32_t>(component));
  return low < 0 ? -low : low;
}

/// A line along x. Takes no memory, whatever its length.
class SELUUTILS_EXPORT CBresenhamVisitor1D {
public:
  constexpr CBresenhamVisitor1D() noexcept = default;
  constexpr explicit CBresenhamVisitor1D(int64 dx) noexcept
      : m_Move(Sign(dx), 0, 0), m_Steps(ClampedLength(dx)) {}

  /// Move i; the null move at and past the end. A negative i throws CException.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    if (i < 0) [[unlikely]]
      RaiseStepOutOfRange();
    return i < m_Steps ? m_Move : CTriple<int64>();
  }
  /// Number of moves.
  [[nodiscard]] int64 LastStep() const noexcept { return m_Steps; }

private:
  [[noreturn]] static void RaiseStepOutOfRange();

  CTriple<int64> m_Move;
  int64 m_Steps = 0;
};

/// A line in the xy-plane (integer Bresenham; J. E. Bresenham, "Algorithm for computer control of a
/// digital plotter", IBM Systems Journal 4 (1965) 25-30). The longer axis drives, x on a tie. With
/// diagonals a tie between two pixels takes the diagonal; without, the side step comes first.
///
/// Components beyond 32 bits are clamped to them. Takes no memory and O(1) time, whatever its
/// length.
class SELUUTILS_EXPORT CBresenhamVisitor2D {
public:
  CBresenhamVisitor2D() = default;
  /// The line along (dx, dy) in NEIGHBORHOOD_4, _6_1, _6_2 or _8; CException for another code.
  CBresenhamVisitor2D(int64 dx, int64 dy, int64 neighborhood);
  /// The same along (d.x, d.y); CException unless d.z is 0.
  CBresenhamVisitor2D(CTriple<int64> d, int64 neighborhood);

  /// Computes the line anew for another difference.
  void Init(int64 dx, int64 dy);
  /// Takes the decision values anew for `a` voxels along the driving axis and `b` along the other;
  /// CExBadParam for a length outside 0 to 2147483648.
  void FillNabla(int64 a, int64 b);
  /// Whether the neighborhood has the diagonal of this line's quadrant.
  [[nodiscard]] bool DiagonalIn() const;

  /// Move i; the null move at and past the end. A negative i throws CException.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    if (i < 0) [[unlikely]]
      RaiseStepOutOfRange();
    if (i >= m_Steps) return {};
    return m_Moves[m_Seconds.IsStep(i)];
  }
  /// Number of moves.
  [[nodiscard]] int64 LastStep() const noexcept { return m_Steps; }
  /// Prints the moves to standard output, one per line.
  void PrintSteps() const;

  /// One value a move; where it is negative the move is along the driving axis, else the second.
  /// O(moves): the list is made by the call.
  [[nodiscard]] std::vector<int64> Decisions() const;
  /// At which of the moves the second one is taken.
  [[nodiscard]] StStepPattern const& Seconds() const noexcept { return m_Seconds; }
  [[nodiscard]] bool IsXMajor() const noexcept { return m_XMajor != 0; }
  [[nodiscard]] int64 Neighborhood() const noexcept { return m_Neighborhood; }

private:
  friend class CBresenhamVisitor3D;
  [[noreturn]] static void RaiseStepOutOfRange();
  /// For lengths that a 3D line has taken already.
  static CBresenhamVisitor2D Projection(int64 a, int64 b, int64 neighborhood);
  void Build(CTriple<int64> signs, int64 lengthX, int64 lengthY);

  CUntilMoved<int64> m_Steps;
  StStepPattern m_Seconds;
  int64 m_Other = 0; // length along the axis that does not drive
  int64 m_Neighborhood = 0;
  int64 m_SignX = 0, m_SignY = 0;
  int64 m_XMajor = 0;
  std::array<CTriple<int64>, 2> m_Moves; // the straight and the second move
};

/// A line in space. In a neighborhood of 26 it is the classic 3D Bresenham line: the longest axis
/// drives, x before y before z on ties, and the projections onto the planes of the driving axis are
/// 2D lines. In the smaller neighborhoods three projections are merged into the shortest walk that
/// the neighborhood permits; its projections are 2D lines wherever a walk of that length has them,
/// and elsewhere stray from them as little as possible.
///
/// A mask says which diagonal moves a line may use besides the three axis moves, in internal axes
/// (the axis that `Init` puts first is the first): 0 none; 1 (1,1,0); 3 (0,1,1), (1,1,0);
/// 6 (1,1,1), (0,1,1), (1,1,0); 4 (1,1,1), (1,1,0); 2 and 5 (1,1,1); 7 all.
///
/// Only the low 32 bits of a component give its length. Building takes O(moves) time and 24 bytes
/// per move; a line longer than memory can hold throws std::bad_alloc and leaves the object
/// as it was.
class SELUUTILS_EXPORT CBresenhamVisitor3D {
public:
  CBresenhamVisitor3D() = default;
  /// The line along d in NEIGHBORHOOD_6, _14_1, _14_2 or _26; CException for another code.
  CBresenhamVisitor3D(int64 dx, int64 dy, int64 dz, int64 neighborhood);
  CBresenhamVisitor3D(CTriple<int64> d, int64 neighborhood);
  /// The line along d with a mask of 0 to 7 given directly; CException for another mask. The code
  /// is stored and not looked at.
  CBresenhamVisitor3D(CTriple<int64> d, int64 neighborhood, int64 diagonal);

  /// Computes the line anew for another difference.
  void Init(int64 dx, int64 dy, int64 dz);
  void Init(int64 dx, int64 dy, int64 dz, int64 diagonal);
  /// Fills the list of moves from the projections anew.
  void ComputeMoves();
  /// An internal move in real axes; CException for a default line, which has no axes yet.
  [[nodiscard]] CTriple<int64> ConvertFrom(CTriple<int64> m) const;

  /// Move i; the null move at and past the end. A negative i throws CException.
  [[nodiscard]] CTriple<int64> Step(int64 i) const {
    if (i < 0) [[unlikely]]
      RaiseStepOutOfRange();
    auto const index = static_cast<std::size_t>(i);
    return index < m_Lists->moves.size() ? m_Lists->moves[index] : CTriple<int64>();
  }
  /// Number of moves.
  [[nodiscard]] int64 LastStep() const noexcept {
    return static_cast<int64>(m_Lists->moves.size());
  }
  /// Prints "Moves:" and the moves to standard output.
  void PrintMoves() const;
  /// Prints the moves of the projections "in XY-plane", "in XZ-plane" and "in YZ-plane", where X, Y
  /// and Z are the first, second and third internal axis.
  void PrintProjMoves() const;

  /// All moves in real axes.
  [[nodiscard]] std::span<CTriple<int64> const> Moves() const noexcept { return m_Lists->moves; }
  /// The mask of diagonal moves, 0 to 7.
  [[nodiscard]] int64 DiagonalMask() const noexcept { return m_DiagonalIn; }
  /// The real axis (1 x, 2 y, 3 z) of each internal axis.
  [[nodiscard]] CTriple<int64> AxisOrder() const noexcept { return m_Convert; }
  [[nodiscard]] int64 Neighborhood() const noexcept { return m_Neighborhood; }

private:
  struct StLists {
    std::vector<CTriple<int64>> moves;
    // Onto the planes of the internal axes (1, 2), (1, 3) and (2, 3).
    std::array<CBresenhamVisitor2D, 3> projections;
  };

  [[noreturn]] static void RaiseStepOutOfRange();
  void SetDifference(CTriple<int64> d) noexcept;
  void SetOrder(CTriple<int64> order) noexcept;
  void OrderByLength();
  void ChooseMask(std::size_t octant);
  void BuildProjections(char const* messageWithoutSet);
  void FillFromDrivingAxis(std::vector<CTriple<int64>>& moves, int64 count) const;

  CKeptList<StLists> m_Lists;
  CUntilMoved<CTriple<int64>> m_Lengths; // in internal axes
  CTriple<int64> m_Convert;              // real axis of each internal axis
  CTriple<int64> m_Signs;                // in real axes
  int64 m_Neighborhood = 0;
  int64 m_DiagonalIn = 0;
};

} // namespace ORVA::Impl
