// The points of a walk on their way into a file or to standard output: CSV or JSON, block by block.
//
//   CWalkWriter writer({.title = "line ...", .dimension = 2}, &file);   // null: standard output
//   writer.Add(points);
//   writer.Finish(counts);
#pragma once

#include "base/AtomicFile.h"
#include "images/RawImage.h"
#include "walks/Walk.h"

#include <array>
#include <optional>
#include <span>
#include <string>

namespace selu {

/// Distance along a line of points on it, in the unit of the spacing.
class CLineDistance {
public:
  CLineDistance(RealPoint const& from, RealPoint const& to, std::array<double, 3> const& spacing);
  /// Of the foot of the perpendicular, from the line's beginning; 0 where the line is a point.
  [[nodiscard]] double Of(Point const& p) const noexcept;

private:
  RealPoint m_From, m_Spacing, m_Unit;
};

struct StWalkForm {
  bool isJson = false;
  std::string title;
  int dimension = 3;
  std::optional<CLineDistance> distance = {}; ///< adds a column
  CRawImage const* image = nullptr;           ///< adds the value; the points must lie inside
};

/// Rows x,y[,z][,distance][,value]; numbers read back as the same. JSON has neither NaN nor
/// infinity: such a value is null there. Needs about 1 MiB whatever the number of points.
class CWalkWriter {
public:
  CWalkWriter(StWalkForm form, CAtomicFile* file);
  void Add(std::span<Point const> points);
  void Finish(StCounts const& counts);

private:
  template <class Value>
  void AddRows(std::span<Point const> points, Value const& appendValue);
  template <class T>
  void AddNumber(T number);
  void Flush();

  StWalkForm m_Form;
  CAtomicFile* m_File;
  std::string m_Buffer;
  bool m_First = true;
};

} // namespace selu
