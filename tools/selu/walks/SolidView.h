// A view of a solid's voxels: an isometric picture, shaded as by a lamp.
//
//   CSolidView view(low, high, 420);                 // the box of the voxels, pixels of room
//   view.Add(point, number);                         // for each voxel of the walk, from 1
//   picture.Cells(box, view.Columns(), view.Rows(), view.Colors(last));
#pragma once

#include "drawing/Colors.h"
#include "walks/Walk.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace selu {

/// x goes to the right and down, y to the left and down, z down: one looks at the sides of high x
/// and high y and at the top of low z. Large voxels are drawn as cubes, small ones as a surface.
/// Memory and the size of the picture do not grow with the voxels.
class CSolidView {
public:
  /// At most `room` pixels in either direction.
  CSolidView(Point const& low, Point const& high, int room);

  void Add(Point const& p, ORVA::uint64 number);

  [[nodiscard]] int Columns() const { return m_Columns; }
  [[nodiscard]] int Rows() const { return m_Rows; }
  /// Row by row; in the colors of the order, of `last` voxels.
  [[nodiscard]] std::vector<Color> Colors(ORVA::uint64 last) const;
  /// Where a point of the box is in the picture, in pixels.
  [[nodiscard]] std::pair<double, double> Place(RealPoint const& p) const;

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

  Point m_Low;
  double m_Scale = 1; // pixels per voxel
  double m_Left = 0;  // of the box's corner of least x and y, in pixels
  int m_Columns = 1, m_Rows = 1;
  std::vector<StPixel> m_Pixels;
};

} // namespace selu
