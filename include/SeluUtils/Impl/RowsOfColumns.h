// Turns the columns of a walk into rows across them.
//
//   #include <iostream>
//   Impl::CRowsOfColumns rows({8, 8, 1});
//   rows.Add({{3, 1, 0}, 1, 2});                       // (3, 1), (3, 2)
//   rows.Add({{4, 1, 0}, 1, 1});                       // (4, 1)
//   rows.Flush();
//   auto const ended = rows.Ended().front();
//   StRun const row = rows.Row(ended, ended.low);
//   std::cout << row.first.x << ", " << row.first.y << ": " << row.length;  // prints 3, 2: 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Run.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <span>
#include <vector>

namespace ORVA::Impl {

/// It remembers of each place along the columns where the row through it began, and reports a row
/// where a column lacks it: O(1) per end of a column or a row. Takes 8 bytes per place along the
/// columns and some 100 per column in hand.
class SELUUTILS_EXPORT CRowsOfColumns {
public:
  /// Rows that have ended at one column: those through the places from low to high on the axis
  /// along the columns.
  struct StEnded {
    CTriple<int64> position; // of one of the columns' points
    int64 along, across;     // axes of the columns and of the rows
    int64 low, high;
    int64 end; // on the axis of the rows, one beyond them
  };

  /// For columns within such an image.
  explicit CRowsOfColumns(CTriple<int64> const& extents);

  /// The next run of the walk, inside the image.
  void Add(StRun const& run);
  /// Ends all rows.
  void Flush();

  /// The rows that have ended since ForgetEnded; valid until the next call of another member.
  [[nodiscard]] std::span<StEnded const> Ended() const noexcept { return m_Ended; }
  void ForgetEnded() noexcept { m_Ended.clear(); }
  [[nodiscard]] StRun Row(StEnded const& ended, int64 place) const noexcept {
    StRun row{ended.position, ended.across, 0};
    At(row.first, ended.along) = place;
    int64& start = At(row.first, ended.across);
    start = m_RowStarts[static_cast<std::size_t>(place)];
    row.length = ended.end - start;
    return row;
  }

private:
  struct StPart {
    int64 low, high;
  };
  using Parts = std::vector<StPart>;

  static int64& At(CTriple<int64>& p, int64 axis) noexcept {
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  }
  static int64 At(CTriple<int64> const& p, int64 axis) noexcept {
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  }
  bool Follows(StRun const& run);
  template <class VisitPart>
  static void ForEachOutside(Parts const& a, Parts const& b, VisitPart visit);
  void CloseColumn();
  void CloseRows(int64 end);

  StRun m_First;                    // of the current column
  int64 m_Across = 0, m_Column = 0; // the axis across the columns, and where on it this one is
  Parts m_Previous, m_Current;      // the columns' places, ascending
  std::vector<StEnded> m_Ended;
  std::vector<int64> m_RowStarts; // by place along the columns
};

} // namespace ORVA::Impl
