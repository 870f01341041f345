// Restricts a volume image to an upright circular cylinder that is described in its header.
//
//   CImage image(IMAGE_GREY_16, CSize(512, 512, 4)), other(IMAGE_GREY_F, CSize(512, 512, 4));
//   CCylinderMask mask("mask", nullptr);
//   mask.SetCylinderParameters(image, "Z", 255.5, 255.5, 240);
//   mask.MaskImageWithMetaInfoCylinder(image, 0);       // 0 outside the cylinder
//   mask.CopyMetaInfo(image, other);
//   mask.MaskImageWithMetaInfoCylinder(other, -1);      // the same cylinder, other pixels
#pragma once

#include <SeluBase/Algorithm.h>
#include <SeluUtils/Export.h>
#include <pxlib2core/String.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

namespace ORVA {

/// A cylinder mask. All of its state is the image's own meta information, so it travels with the
/// image; objects of this class hold nothing.
///
/// "cylinderMaskParameters" is a map with the text "axis" and the doubles "s", "t" and "radius", in
/// voxels. Only the first letter of the axis counts: X, Y, and for anything else Z. The cross
/// section has the axes (u, v) = (y, z) for X, (x, z) for Y and (x, y) for Z, and the center (s,
/// t). A voxel is inside where (u - s)^2 + (v - t)^2 < radius^2; one exactly on the circle is
/// outside.
///
/// "cylinderMaskSlice" is the cross section as an IMAGE_BOOL of size (extent u, extent v). Once it
/// is there it is used as it is, even if the parameters have changed since.
///
/// Missing meta information is no error: what needs it returns without change.
class SELUUTILS_EXPORT CCylinderMask : public CAlgorithm {
public:
  /// Throws CExBadParam for a null name.
  CCylinderMask(char const* name, IObject const* parent);
  CCylinderMask(CCylinderMask const&) = default;
  CCylinderMask& operator=(CCylinderMask const&) = default;
  ~CCylinderMask() override;

  /// Stores the parameters in the image, unchecked, in place of earlier ones. A slice stays.
  void SetCylinderParameters(CImage& image, CString axis, double s, double t, double radius);
  /// Stores the map if "s", "t", "radius" and "axis" have the types above, else does nothing.
  void SetCylinderParameters(CImage& image, CValueMap const& parameters);
  /// Stores the parameters of one image, not its slice, in another; false if there are none.
  bool CopyMetaInfo(CImage const& from, CImage& to);
  /// Computes the slice from the image's parameters and stores it. Throws CException for an image
  /// without cross section and std::out_of_range for an empty axis text. O(extent u * extent v).
  void SetCylinderSlice(CImage& image);
  /// Sets every voxel outside the cylinder to the value and leaves the others alone; makes the
  /// slice if there is none. In an integer image the value is truncated toward zero to 64 bits
  /// (what does not fit is the nearest number that does, NaN is 0), of which the low bits are
  /// stored.
  ///
  /// Throws CException for an image that is not IMAGE_GREY_8, _16, _32, _F or IMAGE_BINARY_FG, for
  /// an image without voxels, and where the stored slice is no image; CExBadParam for a slice that
  /// is not Boolean or does not cover the image, and for parameters without an axis text. Nothing
  /// but the slice has changed then. O(slice + voxels outside), at the speed of memory.
  void MaskImageWithMetaInfoCylinder(CImage& image, double value);
};

} // namespace ORVA
