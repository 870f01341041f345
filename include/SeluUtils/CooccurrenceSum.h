// Co-occurrence of an image that is counted in parts: slabs of a volume larger than memory, say.
//
//   #include <iostream>
//   CImage const slab(IMAGE_GREY_8, CSize(64, 64, 5));       // slices 0 .. 4 of more, all black
//   CCooccurrenceSum sum;
//   // the pairs whose first voxel is in slices 0 .. 3; the second one may be in slice 4
//   sum.Count(slab, {0, 0, 1}, CPos(0, 0, 0), CPos(64, 64, 4));
//   std::cout << sum.Pairs() << ' ' << sum(0, 0);            // prints 16384 16384
#pragma once

#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <cstdint>
#include <vector>

namespace ORVA {

/// A co-occurrence matrix of the 256 gray levels of CCooccurrence, with counts of 64 bits. What is
/// counted part by part has the same counts, and the same 13 features to the last bit, as what
/// CCooccurrence counts in one go.
///
/// A slab of an image that is read from `low` + min(0, d) up to `high` + max(0, d), clipped to the
/// image, has all that Count(slab, d, low, high) needs.
///
/// A value of 512 KiB. One object serves one thread at a time; sums of several add up.
class SELUUTILS_EXPORT CCooccurrenceSum {
public:
  /// No pairs.
  CCooccurrenceSum();

  /// Adds all pairs of an IMAGE_GREY_8, _16 or _32 of any dimension. A displacement that leads out
  /// of the image adds nothing. CExBadParam for another type, and for more than 2^46 pairs in all.
  /// O(pairs + 65536).
  void Count(IImage const& in, CTriple<int64> const& displacement);
  /// Adds the pairs whose first voxel lies in the box from `low` up to but not including `high`,
  /// clipped to the image; the second one may be anywhere in the image.
  void Count(IImage const& in, CTriple<int64> const& displacement, CPos const& low,
             CPos const& high);
  /// Adds what another object has counted.
  CCooccurrenceSum& operator+=(CCooccurrenceSum const& other);

  /// The sum of all counts.
  [[nodiscard]] uint64 Pairs() const noexcept { return m_Pairs; }
  /// How often level j stands the displacement away from level i, both from 0 to 255; CExBadParam
  /// for others.
  [[nodiscard]] uint64 operator()(int i, int j) const;
  /// As CCooccurrence::ComputeFeatures gives them; CException where there are no pairs.
  [[nodiscard]] CCooccurrence::CFeatures Features() const;
  /// The counts to the pixels (slice, i, j) of an IMAGE_GREY_32 of size (n, 256, 256). CExBadParam
  /// for another image or slice, CException for a count above 2^32 - 1.
  void Write(IImage& out, int64 slice = 0) const;

  friend bool operator==(CCooccurrenceSum const&, CCooccurrenceSum const&) = default;

private:
  void AddToTotal(uint64 pairs);

  std::vector<uint64> m_Counts; // C[i][j] at j * 256 + i
  uint64 m_Pairs = 0;
};

} // namespace ORVA
