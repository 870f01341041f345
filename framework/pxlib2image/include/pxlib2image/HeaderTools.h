// Meta information in an image's header.
//
//   #include <iostream>
//   CImage image(IMAGE_GREY_8, CSize(4, 4));
//   CSeluHeaderTools::SetMetaInfo(image, "depth", CValueLong(12));
//   if (CValue const* const depth = CSeluHeaderTools::FindMetaInfo(image, "depth"))
//     std::cout << depth->Long();               // prints 12
#pragma once

#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>
#include <pxlib2image/Export.h>
#include <pxlib2image/Image.h>

namespace ORVA {

/// Meta information lives in the sub-map "Header" of the image's attributes, so it is copied with
/// the image.
struct PXLIB2IMAGE_EXPORT CSeluHeaderTools {
  /// Key of the pair (smallest, largest) pixel value.
  static constexpr char c_sMetaMinMax[] = "minmax";

  /// The information in its place, or null where there is none: for what is to be looked at and may
  /// be large. Good until the information or the image goes. Throws CExBadParam for a null key; a
  /// key with "/" is a path (see CValueMap).
  [[nodiscard]] static CValue const* FindMetaInfo(IImage const& image, char const* key);
  /// Copies the information into `value` and returns true, or returns false and leaves it alone.
  /// Throws as FindMetaInfo does.
  [[nodiscard]] static bool GetMetaInfo(IImage const& image, char const* key, CValue& value);
  /// Stores a copy, replacing earlier information under the key; throws CExBadParam, and changes
  /// nothing, where the attribute "Header" is no map.
  static void SetMetaInfo(IImage& image, char const* key, CValue const& value);
};

} // namespace ORVA
