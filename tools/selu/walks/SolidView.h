// A view of a solid's voxels: an isometric picture, shaded as by a lamp.
//
//   StViewFrame frame;
//   frame.Add(point);                                // for each voxel of the walk
//   CSolidView view(frame, 420);                     // pixels of room
//   view.Add(point, number);                         // for each voxel again, from 1
//   picture.Cells(box, view.Columns(), view.Rows(), view.Colors(last));
#pragma once

#include "drawing/Colors.h"
#include "walks/Walk.h"

#include <cstddef>
#include <vector>

namespace selu {

/// How far voxels reach in the view. They lie less than 2^40 apart.
struct StViewFrame {
  void Add(Point const& p);

  Point origin; ///< the first of them, from which all are seen
  bool isEmpty = true;
  ORVA::int64 left = 0, right = 0; ///< x - y
  ORVA::int64 top = 0, bottom = 0; ///< x + y + 2z
};

/// x goes to the right and down, y to the left and down, z down: one looks at the sides of high x
/// and high y and at the top of low z. Large voxels are drawn as cubes, small ones as a surface.
/// Memory and the size of the picture do not grow with the voxels.
class CSolidView {
public:
  /// At most `room` pixels in either direction.
  CSolidView(StViewFrame const& frame, int room);

  void Add(Point const& p, ORVA::uint64 number);

  [[nodiscard]] int Columns() const { return m_Columns; }
  [[nodiscard]] int Rows() const { return m_Rows; }
  /// Row by row; in the colors of the order, of `last` voxels.
  [[nodiscard]] std::vector<Color> Colors(ORVA::uint64 last) const;

private:
  // What a pixel shows: the foremost voxel, how near it is, which of its sides, and whether an
  // edge.
  struct StPixel {
    ORVA::uint64 number = 0;
    ORVA::int64 nearness = 0;
    float light = 0;
  };

  void AddPixel(int column, int row, RealPoint const& center, ORVA::int64 nearness,
                ORVA::uint64 number);
  [[nodiscard]] float SideLight(double right, double down) const;
  [[nodiscard]] std::vector<float> SurfaceLight() const;
  [[nodiscard]] std::vector<float> SmoothNearness() const;

  StViewFrame m_Frame;
  double m_Scale = 1; // pixels per voxel
  int m_Columns = 1, m_Rows = 1;
  std::vector<StPixel> m_Pixels;
};

} // namespace selu
