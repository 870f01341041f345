// An image of gray levels, as texture counts them: level 0 is outside, levels 1 .. n are within.
//
//   #include <iostream>
//   CImage image(IMAGE_GREY_8, CSize(64, 64));        // levels 0 .. 8, put there by the caller
//   image.CreateAccess(true).WritableBase()[65] = std::byte{8};
//   CLevelImage const levels(image, 8);               // checked once, nothing is copied
//   std::cout << levels.Levels() << ' ' << levels.At(CPos(1, 1)); // prints 8 8
#pragma once

#include <SeluUtils/Export.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>
#include <pxlib2image/ImageView.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace ORVA {

/// The greatest number of levels there may be.
inline constexpr int c_mostLevels = 65535;

/// Gray levels of a 1D, 2D or 3D image in one or two bytes per voxel, with any strides. CQuantizer
/// makes one of any image; the constructors take levels that are there already.
///
/// A plain value that is cheap to copy: copies share the pixels, which nobody can write through it.
/// Where it was made over an image, that image's pixels must stay as they are while it lives: a
/// level above n that is written behind its back would lead outside the tables of those who count.
class SELUUTILS_EXPORT CLevelImage {
public:
  /// No voxels, one level.
  CLevelImage() = default;
  /// Takes the pixels of an IMAGE_GREY_8, IMAGE_GREY_16 or one of the one-byte types as levels; n
  /// is `levels`, from 1 to 65535. Throws CExBadParam for another type and for a pixel above n.
  /// O(voxels) at the speed of memory.
  CLevelImage(IImage const& pixels, int levels);
  /// The same, n being the greatest pixel (1 where all are 0).
  explicit CLevelImage(IImage const& pixels);

  /// n: a voxel has a level from 0 to n.
  [[nodiscard]] int Levels() const noexcept { return m_Levels; }
  /// The extents, and the dimension.
  [[nodiscard]] CSize const& Size() const noexcept { return m_Size; }
  /// Bytes of one voxel: 1 or 2.
  [[nodiscard]] int BytesPerVoxel() const noexcept { return m_BytesPerVoxel; }
  /// Address of the first voxel, null where there is none; extents in voxels and strides in bytes
  /// along x, y, z. The addresses live as long as this object or a copy of it.
  [[nodiscard]] std::byte const* Base() const noexcept { return m_Access.Base(); }
  /// Voxels along x, y and z.
  [[nodiscard]] std::array<int64, 3> const& Extents() const noexcept { return m_Access.Extents(); }
  /// Bytes from a voxel to the next along x, y and z.
  [[nodiscard]] std::array<int64, 3> const& Strides() const noexcept { return m_Access.Strides(); }

  /// The level at a position; throws CExBadParam outside the image. Not for bulk work.
  [[nodiscard]] int At(CPos const& position) const;
  /// The same levels as a read-only image, for writing to a file or for drawing; nothing is copied.
  [[nodiscard]] CImageView View() const;
  /// The voxels from `low` up to but not including `high`; throws CExBadParam unless they lie
  /// inside the image. Nothing is copied.
  [[nodiscard]] CLevelImage Box(CPos const& low, CPos const& high) const;

private:
  friend class CQuantizer;
  struct StUnchecked {};
  CLevelImage(IImage const& pixels, int levels, StUnchecked);

  CImageAccess m_Access = CImageAccess::ForReading({}, nullptr, {}, {});
  CSize m_Size;
  int m_BytesPerVoxel = 1;
  int m_Levels = 1;
};

} // namespace ORVA
