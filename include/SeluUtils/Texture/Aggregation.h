// Texture features of a region over all directions, in the six ways of IBSI.
//
//   #include <iostream>
//   std::array<std::uint8_t, 4> const pixels = {1, 2, 2, 1};
//   CLevelImage const levels(CImageView(IMAGE_GREY_8, CSize(2, 2), pixels.data()));
//   CAggregatedTexture texture(EnAggregation::Average2D, levels.Levels(),
//                              CTextureFeatures({EnTextureFeature::Contrast}));
//   texture.Count(levels);
//   std::cout << "contrast " << texture.Values()[0];  // prints contrast 0.5
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace ORVA {

/// How the matrices of slices (along z) and directions become one value per feature. In 2D and 2.5D
/// the directions are the 4 in the plane, in 3D the 13 in space.
enum class EnAggregation : std::uint8_t {
  Average2D,  ///< 2D_avg: features of each slice and direction, averaged
  Combine2D,  ///< 2D_comb: matrices of a slice's directions added, features averaged over slices
  Average25D, ///< 2_5D_avg: matrices of a direction added over slices, features averaged
  Combine25D, ///< 2_5D_comb: all matrices added
  Average3D,  ///< 3D_avg: features of the directions averaged
  Combine3D   ///< 3D_comb: all matrices added
};

/// All ways of aggregation.
inline constexpr std::array<EnAggregation, 6> c_aggregations = {
    EnAggregation::Average2D,  EnAggregation::Combine2D, EnAggregation::Average25D,
    EnAggregation::Combine25D, EnAggregation::Average3D, EnAggregation::Combine3D};

/// "2D_avg", "2D_comb", "2_5D_avg", "2_5D_comb", "3D_avg" or "3D_comb".
[[nodiscard]] SELUUTILS_EXPORT std::string_view AggregationName(EnAggregation way) noexcept;
/// The way of that name; nothing for any other text.
[[nodiscard]] SELUUTILS_EXPORT std::optional<EnAggregation>
AggregationFromName(std::string_view name) noexcept;

/// What to count; the defaults are IBSI's.
struct StAggregationOptions {
  bool isSymmetric = true;                   ///< each pair counts in both orders
  std::vector<CTriple<int64>> displacements; ///< empty: the neighbors of the way, at distance 1
};

/// Gathers the matrices of an image, whole or in parts, and evaluates features of them. Means are
/// plain ones over the matrices that have pairs, in a fixed order; NaN where none has any.
///
/// A value. Parts counted apart, by slabs or threads, add up: to the same values, bit by bit, as
/// counting the whole. Memory: one matrix for each direction (one in all where they are combined);
/// in 2D the features of each slice and direction. Where memory runs out in Count or +=, a part of
/// the pairs may have been added: assign a fresh object before it counts again.
class SELUUTILS_EXPORT CAggregatedTexture {
public:
  /// The features come with their evaluator. CExBadParam for levels outside 1 .. 65535, for a null
  /// displacement, and for one with dz other than 0 in 2D and 2.5D.
  CAggregatedTexture(EnAggregation way, int levels, CTextureFeatures features = CTextureFeatures(),
                     StAggregationOptions options = {});

  /// Adds the pairs of a whole image of at most as many levels.
  void Count(CLevelImage const& levels);
  /// Adds the pairs whose first voxel lies in the slices from `first` up to but not including
  /// `last`. The image is a slab whose slice 0 is slice `offset` of the whole; it includes the
  /// slices beyond that the displacements reach. In 2D a slice may be counted once only,
  /// CExBadParam otherwise.
  void Count(CLevelImage const& slab, int64 first, int64 last, int64 offset = 0);
  /// Adds what another object of the same way, levels and displacements has counted; CExBadParam
  /// for any other.
  CAggregatedTexture& operator+=(CAggregatedTexture const& other);

  /// The features, each aggregated, in the order of Features().
  [[nodiscard]] std::vector<double> Values() const;

  /// How matrices and values of several directions become one.
  [[nodiscard]] EnAggregation Way() const noexcept { return m_Way; }
  /// The number of gray levels.
  [[nodiscard]] int Levels() const noexcept { return m_Levels; }
  /// The features that are computed, in the order of their values.
  [[nodiscard]] std::span<EnTextureFeature const> Features() const noexcept {
    return m_Features.Features();
  }
  /// The displacements, in the order of their use.
  [[nodiscard]] std::span<CTriple<int64> const> Displacements() const noexcept {
    return m_Options.displacements;
  }

private:
  /// The features of the matrices of a slice, one after the other; NaN for one without pairs.
  struct StSliceValues {
    int64 slice = 0;
    std::vector<double> values;
  };
  void CountSlices(CLevelImage const& slab, int64 first, int64 last);
  void CountSlice(CLevelImage const& slab, int64 z, int64 slice);
  void CheckIsNew(int64 slice) const;
  void Insert(StSliceValues values);
  [[nodiscard]] static std::vector<double> ValuesOf(CPairCounter const& matrix, bool isSymmetric,
                                                    CTextureFeatures& features);

  EnAggregation m_Way;
  int m_Levels;
  CTextureFeatures m_Features;
  StAggregationOptions m_Options;
  std::vector<CPairCounter> m_Matrices; // 2D: of the slice at work
  std::vector<StSliceValues> m_Slices;  // 2D only, in ascending order
};

} // namespace ORVA
