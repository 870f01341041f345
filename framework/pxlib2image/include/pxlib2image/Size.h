// Size of an image, and a position in one.
//
//   CSize size(512, 512);                       // 2D: the z extent is 1
//   CSize volume(161, 143, 48);
//   size == CSize(512, 512, 1);                 // false: the dimensions differ
//   CPos first(0, 0, 0);
#pragma once

#include <pxlib2core/Types.h>
#include <pxlib2image/Export.h>

namespace ORVA {

/// Dimension and extents in voxels. A default size has dimension 0 and no extent; a size used as a
/// point by a walker may have negative components, an image's may not.
class PXLIB2IMAGE_EXPORT CSize {
public:
  constexpr CSize() noexcept = default;
  constexpr explicit CSize(int64 sizeX) noexcept : x(sizeX), y(1), z(1), m_Dim(1) {}
  constexpr CSize(int64 sizeX, int64 sizeY) noexcept : x(sizeX), y(sizeY), z(1), m_Dim(2) {}
  constexpr CSize(int64 sizeX, int64 sizeY, int64 sizeZ) noexcept
      : x(sizeX), y(sizeY), z(sizeZ), m_Dim(3) {}

  /// The dimension, 1 to 3.
  [[nodiscard]] constexpr int Dim() const noexcept { return m_Dim; }
  /// Sets the dimension; extents beyond it become 1. Throws CExBadParam unless 1, 2 or 3.
  void SetDim(int dimension);
  /// Whether an extent is 0 (or negative): an image of this size has no voxel.
  [[nodiscard]] constexpr bool IsEmpty() const noexcept { return x <= 0 || y <= 0 || z <= 0; }

  friend constexpr bool operator==(CSize const&, CSize const&) noexcept = default;

  /// Along x, y and z.
  int64 x = 0, y = 0, z = 0;

private:
  int m_Dim = 0;
};

/// A voxel position; z is 0 where it is not given.
struct CPos {
  constexpr CPos() noexcept = default;
  constexpr CPos(int64 posX, int64 posY, int64 posZ = 0) noexcept : x(posX), y(posY), z(posZ) {}
  friend constexpr bool operator==(CPos const&, CPos const&) noexcept = default;

  /// Along x, y and z.
  int64 x = 0, y = 0, z = 0;
};

} // namespace ORVA
