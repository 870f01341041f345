// Feature value maps: recognizing their layouts, listing their leaves, arithmetic on them, and
// turning the features of objects into an image.
//
//   #include <iostream>
//   CValueMap first, second;
//   first.SetEntry("volume", CValueDouble(3));
//   second.SetEntry("volume", CValueDouble(5));
//   CValueMapWithOperators mean(first, {});                         // numeric leaves only
//   mean += second;
//   mean /= 2;
//   std::cout << mean.Entry("volume").Double();                     // prints 4
#pragma once

#include <SeluUtils/Export.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

#include <string>
#include <vector>

namespace ORVA {

// A key path is the keys on the way from the root of a value tree to a leaf, joined by "/"; vectors
// contribute the index in decimal. The numeric reading of a value is that of a double, a long, or a
// Boolean (1 or 0); any other value reads as 0.

/// Whether the map holds "maximum label" and "no. of objects" as longs and, as its first sub-map
/// whose key begins with the prefix and a blank (with an empty prefix its first sub-map at all),
/// one with "object" and "status" as texts and at least one of "pixel", "no. of voxels", "no. of
/// pixels" and "volume [px]" as a long. O(entries).
[[nodiscard]] SELUUTILS_EXPORT bool IsObjectBasedFeaturesMap(CValueMap const& map,
                                                             std::string const& prefix);

/// Whether the map holds "no. of grayvalues" as a long and, as its first sub-map whose key begins
/// with the prefix and a blank, one with "grayvalue" and "status" as texts. Unlike above, an empty
/// prefix still asks for a key that begins with a blank. O(entries).
[[nodiscard]] SELUUTILS_EXPORT bool IsGrayvalueBasedFeaturesMap(CValueMap const& map,
                                                                std::string const& prefix);

/// Sets a copy of each entry of `source` that is no map into `target`, under the prefix followed by
/// its key. Both may be the same map, or one lie in the other: `source` is read as it was. Throws
/// CExBadParam where such a key is a path that leads through a value that is no map or vector;
/// then, and where memory is out, `target` is as it was. O(entries), and a copy of the entry of
/// `target` that a path leads through.
SELUUTILS_EXPORT void CopyMapEntries(CValueMap& target, CValueMap const& source,
                                     std::string const& prefix);

/// Appends the key paths of a value's leaves to `keys`, in the order of the maps, each below `path`
/// and without a "/" at its front. Paths in `excluded` are left out with all that lies below them.
///
/// Mode 0 lists every leaf; 2 longs, doubles, Booleans and texts; 3 every leaf and every empty map
/// or vector other than the root (whose path keeps a "/" at its front); any other number, such as
/// 1, longs, doubles and Booleans.
///
/// An invalid value in a container is no leaf: it is reported on the standard error stream and
/// passed over. O(values), whatever the number of exclusions.
SELUUTILS_EXPORT void CreateKeyListRecursivly(CValue const& value, std::string const& path,
                                              std::vector<std::string>& keys, int mode,
                                              std::vector<std::string> const& excluded);
/// The same for a map that is not in a value, without copying it.
SELUUTILS_EXPORT void CreateKeyListRecursivly(CValueMap const& map, std::string const& path,
                                              std::vector<std::string>& keys, int mode,
                                              std::vector<std::string> const& excluded);

/// Replaces `keys` by the key paths of the map's leaves; modes and exclusions as above.
SELUUTILS_EXPORT void ExtractKeys(CValueMap const& map, std::vector<std::string>& keys, int mode,
                                  std::vector<std::string> const& excluded);

/// A value map that can be summed and divided over a list of numeric key paths; its entries are
/// doubles after construction and after every operator. The operand of `+=` may be the map itself
/// or a map in it. Constructor and operators throw CExBadParam at a listed path that leads through
/// a value that is no map or vector (any more). Whatever an operator throws, the map is as it was.
struct SELUUTILS_EXPORT CValueMapWithOperators : CValueMap {
  CValueMapWithOperators() = default;
  CValueMapWithOperators(CValueMapWithOperators const&) = default;
  CValueMapWithOperators& operator=(CValueMapWithOperators const&) = default;
  /// Takes over the numeric reading of every numeric leaf whose path is not excluded.
  CValueMapWithOperators(CValueMap const& map, std::vector<std::string> const& excluded);
  ~CValueMapWithOperators() override;

  /// Adds the other map's readings of the listed paths; its other entries do not count.
  CValueMapWithOperators& operator+=(CValueMap const& other);
  /// Divides all listed entries; by 0 as IEEE arithmetic does.
  CValueMapWithOperators& operator/=(double divisor);

  std::vector<std::string> m_Keys;     ///< the paths operated on
  std::vector<std::string> m_Excluded; ///< the paths left out at construction
};

/// Writes the features of objects into a 2D image: column x is the object with label x, row 0 the
/// labels, every further row one feature.
///
/// `features` holds the long "maximum label" M and an object's map under `idKey`, a blank and its
/// label, zero-padded to the digits of M ("object 007" for M = 250). The first such map says which
/// features there are: its longs, doubles, Booleans and texts other than `idKey` and those in
/// `excluded` (key paths). `image` must be an IMAGE_GREY_F; it gets the size (M + 1, features + 1).
/// What an object does not have is 0, or the empty text. Of a text feature the row holds each
/// object's index in the sorted list of its distinct texts.
///
/// The image's attributes say what the rows mean: "Image/ContentType" ("FeatureImage"),
/// "Image/featurename", "Image/unique-id-key", and by row "Image/y-keys" (the key paths, `idKey`
/// for row 0) and "Image/y-types" ("numeric" or "label"). "Image/label-lookup" holds under the key
/// path of each text feature the vector of its distinct texts, so that the pixel value i of that
/// row is the text with index i. "Features/" and the feature name hold a copy of `features`, the
/// header's minimum and maximum are 0 and the largest pixel value.
///
/// Throws CException for another pixel type, a map without objects, a maximum label that is
/// missing, 0 or no long, and a feature of another type. Throws CExBadParam for a maximum label
/// that is negative, below an object's label, or so far above the number of objects that the image
/// would be next to nothing but gaps, for an image that cannot be allocated, and for an object
/// whose value is a text where the first object has a number or the other way round. Up to the
/// allocation the image is as it was, later it is partly written.
///
/// O((M + objects * log(texts)) * features), and the copy of the map.
SELUUTILS_EXPORT void
ConvertObjectBasedFeaturesIntoFeatureImage(std::string const& featureName,
                                           CValueMap const& features, std::string const& idKey,
                                           CImage& image, std::vector<std::string> const& excluded);
/// The same without the copy of the map, which for many objects takes as long as the rest: the
/// features move into the image's attributes. An error leaves them in place.
SELUUTILS_EXPORT void
ConvertObjectBasedFeaturesIntoFeatureImage(std::string const& featureName, CValueMap&& features,
                                           std::string const& idKey, CImage& image,
                                           std::vector<std::string> const& excluded);

} // namespace ORVA
