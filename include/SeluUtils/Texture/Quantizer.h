// Gray levels of an image, made on purpose: by a range, a bin width, a bin count or edges.
//
//   #include <iostream>
//   CImage const scan(IMAGE_SIGNED_16, CSize(64, 64, 32)); // Hounsfield units, say
//   CQuantizer const quantizer = CQuantizer::BinWidthFrom(-1000, 25);
//   StLevelReport report;
//   CLevelImage const levels = quantizer.Quantize(scan, {}, &report);
//   std::cout << report.Occurring() << " of " << levels.Levels();          // prints 1 of 41
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <pxlib2core/Types.h>
#include <pxlib2image/Image.h>

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

namespace ORVA {

namespace Impl {
class CBinning;
}

/// Which voxels are within: all, those of any label but 0, or those of one label. The image may
/// have any integer type and must have the extents of what it masks.
struct StMask {
  IImage const* image = nullptr; ///< null: all voxels
  std::optional<int64> label;    ///< none: every label other than 0
};

/// What a quantizer saw. Reports of parts of an image add up to that of the whole.
struct SELUUTILS_EXPORT StLevelReport {
  std::vector<uint64> histogram; ///< voxels of level 0 .. n; level 0 are those outside
  uint64 offMask = 0;            ///< outside because they are off the mask
  uint64 notNumbers = 0;         ///< outside because they are NaN
  uint64 below = 0;              ///< below the lowest edge: outside, or set to level 1
  uint64 above = 0;              ///< above the highest edge: outside, or set to level n

  /// Voxels of all levels, and those of level 0.
  [[nodiscard]] uint64 Voxels() const noexcept;
  /// Voxels of level 0.
  [[nodiscard]] uint64 Outside() const noexcept { return histogram.empty() ? 0 : histogram[0]; }
  /// How many of the levels 1 .. n occur, and the greatest that does (0: none).
  [[nodiscard]] int Occurring() const noexcept;
  /// The greatest of the levels 1 .. n that occurs; 0 where none does.
  [[nodiscard]] int Greatest() const noexcept;
  /// Throws CExBadParam where both have levels, but not equally many.
  StLevelReport& operator+=(StLevelReport const& other);
};

/// Least and greatest finite value of the voxels within; ranges of parts add up to the whole.
struct SELUUTILS_EXPORT StValueRange {
  /// The least and the greatest finite value.
  double low = 0, high = 0;
  uint64 voxels = 0; ///< finite values found; 0: there is no range

  /// Widens this range to hold the other.
  StValueRange& operator+=(StValueRange const& other) noexcept;
};

/// Maps the values of an image to levels 1 .. n (n up to 65535); level 0 are the voxels off the
/// mask and those that are NaN. A value; it is given by a recipe and, where the recipe depends on
/// the values that occur, fitted to a range first. Quantize() does both.
///
/// Level k holds the values from edge k - 1 (included) up to edge k (excluded), the last level its
/// upper edge, too. The comparison is exact: with bins of width w from a, level k is where a +
/// (k - 1) w <= v < a + k w for the real numbers that the doubles a, w and v stand for, and alike
/// for n equal bins. No rounding moves a value that lies on an edge, or next to it, to a neighbor.
///
/// Values beyond the outermost edges, infinities included, are clamped to level 1 or n, unless
/// Beyond(EnBeyond::Outside) is asked for. Infinities never belong to a range that is found. Where
/// all finite values are equal there is one level. Where no finite value is found (an empty mask,
/// only NaN), every voxel is outside, Edges() is empty, and n is 1.
///
/// Types: all integers of 8, 16 and 32 bits, float and double. CExBadParam for others, for a mask
/// of another size or of floating-point pixels, and for arguments as said below.
class SELUUTILS_EXPORT CQuantizer {
public:
  /// What becomes of values beyond the outermost edges.
  enum class EnBeyond {
    Clamp,  ///< a value beyond the outermost edges gets the nearest level
    Outside ///< it gets level 0
  };

  /// `levels` bins of equal width from `low` to `high`: level floor(levels (v - low) / (high -
  /// low)) + 1, and `high` itself in the last. Needs finite low < high, 2^-1000 to 2^1000 apart.
  [[nodiscard]] static CQuantizer Range(double low, double high, int levels);
  /// The same over the range found, the convention called fixed bin number. Fitting refuses a range
  /// as above, unless all values are equal.
  [[nodiscard]] static CQuantizer BinCount(int levels);
  /// Bins of one width, the convention called fixed bin size: level floor((v - a) / width) + 1,
  /// with as many levels as reach the greatest value found. The first starts at a = the least value
  /// found. Needs a width from 2^-1000 to 2^1000; fitting refuses a range of more than 65535 bins.
  [[nodiscard]] static CQuantizer BinWidth(double width);
  /// The same from a given start, such as the lower end of the values that a study keeps.
  [[nodiscard]] static CQuantizer BinWidthFrom(double start, double width);
  /// The same from the multiple of the width at or below the least value found. Fitting refuses
  /// multiples beyond 2^46.
  [[nodiscard]] static CQuantizer BinWidthAtMultiple(double width);
  /// Levels between edges in strictly ascending order, two at least; the first may be -infinity and
  /// the last infinity.
  [[nodiscard]] static CQuantizer ByEdges(std::vector<double> edges);

  /// What becomes of values beyond the outermost edges; the object itself, for chaining.
  CQuantizer& Beyond(EnBeyond beyond) noexcept;

  /// Whether the edges depend on the values found: Fit or Quantize finds them.
  [[nodiscard]] bool NeedsRange() const noexcept;
  /// The same recipe with edges for that range; one that needs none is returned as it is. Fit once
  /// for a whole image, then quantize its parts.
  [[nodiscard]] CQuantizer Fit(StValueRange const& range) const;
  /// Least and greatest finite value within the mask. O(voxels).
  [[nodiscard]] static StValueRange FindRange(IImage const& image, StMask const& mask = {});

  /// n; throws CExBadParam where the edges are not known yet, as Edges() does.
  [[nodiscard]] int Levels() const;
  /// The n + 1 edges, each rounded to the nearest double.
  [[nodiscard]] std::vector<double> Edges() const;
  /// The level of one value that is within the mask: 0 for NaN. Throws where NeedsRange().
  [[nodiscard]] int Level(double value) const;

  /// The levels of an image, one byte per voxel up to 255 levels and two above, x fastest; finds
  /// the range first where the recipe asks for it. Fills in the report where one is given.
  [[nodiscard]] CLevelImage Quantize(IImage const& image, StMask const& mask = {},
                                     StLevelReport* report = nullptr) const;
  /// The same into pixels that are there, an IMAGE_GREY_8 (up to 255 levels) or IMAGE_GREY_16 of
  /// the extents of `image`, such as a view of a part of a larger image.
  void QuantizeInto(IImage& levels, IImage const& image, StMask const& mask = {},
                    StLevelReport* report = nullptr) const;

private:
  enum class EnRecipe { Count, Width, WidthFrom, WidthAtMultiple, Edges };
  explicit CQuantizer(EnRecipe recipe) : m_Recipe(recipe) {}
  [[nodiscard]] Impl::CBinning Binning() const;
  void CheckFitted(char const* function) const;
  void FitWidth(StValueRange const& range);

  EnRecipe m_Recipe;
  EnBeyond m_Beyond = EnBeyond::Clamp;
  bool m_IsFitted = false;
  int m_Levels = 1;             // Count: asked for; fitted: n
  double m_Low = 0, m_High = 0; // Count: of the range; Width...: start of level 1 in m_Low
  double m_Multiple = 0;        // WidthAtMultiple: level 1 starts at this times the width
  double m_Width = 0;
  std::vector<double> m_Edges; // Edges
  bool m_HasNone = false;      // fitted to a range without a value: all voxels are outside
};

} // namespace ORVA
