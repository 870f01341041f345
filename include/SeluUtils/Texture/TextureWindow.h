// Maps of texture: the features of the window around every pixel or voxel of an image.
//
//   #include <SeluUtils/Texture/PairCounter.h>
//   #include <array>
//   #include <iostream>
//   CImage const pixels(IMAGE_GREY_8, CSize(64, 48));  // levels from 0, outside, to 8
//   CLevelImage const levels(pixels, 8);               // or made by a CQuantizer
//   CTextureWindow window("texture map", nullptr);
//   window.SetSides(CSize(15, 15));
//   window.SetDisplacements(NeighborDisplacements(2)); // the mean over four directions
//   window.SetFeatures(std::array{EnTextureFeature::Contrast, EnTextureFeature::JointEntropy});
//   std::vector<CImage> const maps = window.Maps(levels);
//   std::cout << maps.size() << " maps, " << maps[0].Size().x; // prints 2 maps, 64
#pragma once

#include <SeluBase/Algorithm.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>
#include <pxlib2image/Size.h>

#include <cstdint>
#include <span>
#include <vector>

namespace ORVA {

/// Around which voxels there are windows.
enum class EnWindowBorder : std::uint8_t {
  Clipped, ///< around every voxel; what of a window lies beyond the image has no pairs
  Valid    ///< only around those whose window lies in the image
};

/// Rows of a 2D image or slices of a 3D image, from `low` up to but not including `high`.
struct StRowRange {
  /// The first row or slice, and the one behind the last.
  int64 low = 0, high = 0;
  friend bool operator==(StRowRange const&, StRowRange const&) = default;
};

/// Texture features in a moving window. A window's pairs are those with both voxels in it; voxels
/// of level 0 are in none. Of several displacements the value is the mean of those that have a pair
/// in the window; NaN where none has.
///
/// From one window to the next along a line a column of pairs leaves and one enters. Features that
/// are sums over pairs cost the same for windows of any size; entropies, energy, information
/// measures and the joint maximum cost a step for each pair that comes or goes. The number of
/// levels hardly matters. All that is carried on are integers, logarithms in fixed point: a value
/// does not depend on the way to its window. It is that of At(), which counts the window's pairs
/// afresh, bit for bit, and that of CTextureFeatures for the window's matrix but for rounding: some
/// 1e-13 of it for windows of thousands of voxels, some 1e-10 for the largest. A mutual information
/// of 0 is exactly 0.
///
/// Limits, beyond which CExBadParam is thrown: windows of 2^20 voxels, 4096 levels, the product of
/// both 2^28; 2048 levels for the cluster prominence. Maximal correlation coefficients are not
/// offered: no sums give them. Memory of each call that runs, for n levels: at most 8 n^2 bytes,
/// and for each displacement 4 bytes for each voxel of the window's cross section, and 128, or in
/// space 10 KiB and more for tall windows, times 1000 columns or, where that is more, five times
/// the window's width.
///
/// The functions that compute do not change the object; any number of threads may call them, each
/// for other rows, if there is no observer or one that allows for it. Steps of progress are lines.
class SELUUTILS_EXPORT CTextureWindow : public CAlgorithm {
public:
  /// The most voxels of a window.
  static constexpr int64 c_mostVoxels = int64{1} << 20;
  /// The most levels of an image.
  static constexpr int c_mostLevels = 4096;
  /// The most that voxels of the window times levels may be.
  static constexpr int64 c_mostVoxelsTimesLevels = int64{1} << 28;

  /// A window of 15 x 15, displacement (1, 0, 0), all features of IBSI, matrices as counted,
  /// clipped at the border, one window per voxel. Throws CExBadParam for a null name.
  CTextureWindow(char const* name, IObject const* parent);
  CTextureWindow(CTextureWindow const&) = default;
  CTextureWindow& operator=(CTextureWindow const&) = default;
  ~CTextureWindow() override;

  /// The sides of the window, each odd; along z 1 for 2D images. Throws CExBadParam for others.
  void SetSides(CSize const& sides);
  /// One displacement at least, (0, 0, 0) allowed; each must leave pairs in the window, what is
  /// checked when maps are computed.
  void SetDisplacements(std::span<CTriple<int64> const> displacements);
  /// In the order of the maps; one at least. Throws CExBadParam for maximal correlation
  /// coefficients.
  void SetFeatures(std::span<EnTextureFeature const> features);
  /// Whether each pair counts in both orders.
  void SetSymmetric(bool isSymmetric) noexcept { m_IsSymmetric = isSymmetric; }
  /// Whether windows that the border cuts are computed from what is left of them, or left out.
  void SetBorder(EnWindowBorder border) noexcept { m_Border = border; }
  /// Voxels from one window to the next along each axis, at least 1.
  void SetSteps(CSize const& steps);
  /// Ng of the normalized inverse differences, 0 for the number of levels of the image.
  void SetNormalizingLevels(int levels);

  /// Extents of the window.
  [[nodiscard]] CSize const& Sides() const noexcept { return m_Sides; }
  /// Voxels from one window to the next along each axis.
  [[nodiscard]] CSize const& Steps() const noexcept { return m_Steps; }
  /// The features that are computed, in the order of their values.
  [[nodiscard]] std::span<EnTextureFeature const> Features() const noexcept { return m_Features; }
  /// The extents of a map of an image of that size: with clipped windows extent / step, rounded up,
  /// with valid ones (extent - side) / step + 1, rounded down, or 0.
  [[nodiscard]] CSize MapSize(CSize const& image) const;
  /// The voxel around which the window of a map's pixel lies.
  [[nodiscard]] CPos Center(CPos const& mapPixel) const noexcept;

  /// One IMAGE_GREY_F for each feature.
  [[nodiscard]] std::vector<CImage> Maps(CLevelImage const& levels) const;
  /// A band of the maps, rows of a 2D or slices of a 3D image, as a whole or in parts that are the
  /// same to the last bit: map after map, each with x fastest, as many values as features times
  /// pixels of the band. Throws CExBadParam where something does not fit, CException where the
  /// observer cancels; the values are unspecified then.
  void Compute(CLevelImage const& levels, StRowRange const& rows, std::span<double> values) const;
  void Compute(CLevelImage const& levels, StRowRange const& rows, std::span<float> values) const;

  /// The rows (slices) of an image of that size that a band of its maps needs.
  [[nodiscard]] StRowRange InputRows(CSize const& image, StRowRange const& rows) const;
  /// The same where only a part of a large image is there: `levels` are its rows (slices) from
  /// `first` on, at least those of InputRows; `image` is its size as a whole.
  void Compute(CLevelImage const& levels, int64 first, CSize const& image, StRowRange const& rows,
               std::span<double> values) const;
  void Compute(CLevelImage const& levels, int64 first, CSize const& image, StRowRange const& rows,
               std::span<float> values) const;

  /// The features of the one window around a voxel, counted by itself: the definition of a map's
  /// values. Much slower than a map's pixel; a window that the border cuts is clipped. Throws
  /// CExBadParam for a position outside of the image.
  [[nodiscard]] std::vector<double> At(CLevelImage const& levels, CPos const& center) const;

private:
  template <class Value>
  void ComputeRows(CLevelImage const& levels, int64 first, CSize const& image,
                   StRowRange const& rows, std::span<Value> values) const;
  void CheckLevels(int levels) const;
  void CheckSize(CSize const& image) const;
  void CheckPart(CLevelImage const& levels, int64 first, CSize const& image,
                 StRowRange const& rows) const;

  CSize m_Sides{15, 15};
  CSize m_Steps{1, 1};
  std::vector<CTriple<int64>> m_Displacements{{1, 0, 0}};
  std::vector<EnTextureFeature> m_Features{c_ibsiFeatures.begin(), c_ibsiFeatures.end()};
  EnWindowBorder m_Border = EnWindowBorder::Clipped;
  bool m_IsSymmetric = false;
  int m_NormalizingLevels = 0;
};

} // namespace ORVA
