// Gray levels of an image: mapping to what the texture counts, and what is lost by it.
//
//   auto range = ParseRange("-200,300");
//   StLevels levels = MeasureLevels(raw, range);   // value range, levels used, voxels that survive
//   ORVA::CImage gray = ToGray(raw, range, "scan.nrrd");
#pragma once

#include "images/VolumeSource.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace selu {

/// Values mapped linearly onto the gray levels: low becomes 0, high 255.
struct StRange {
  double low = 0, high = 0;
};

/// "LO,HI"; throws CUsageError unless both are finite, their difference too, and LO < HI.
[[nodiscard]] StRange ParseRange(std::string const& text);

struct StLevels {
  std::string low, high;      ///< least and greatest value, not counting NaN; empty: all are NaN
  ORVA::int64 voxels = 0;     ///< all of them
  ORVA::int64 notNumbers = 0; ///< NaN
  ORVA::int64 distinct = 0;   ///< different values, NaN left out
  // Only with a range or for unsigned 8, 16 and 32-bit images:
  bool quantized = false;
  ORVA::int64 survivors = 0; ///< see MeasureLevels
  int levels = 0;            ///< different gray levels of all voxels
  bool merged = false;       ///< voxels of different values share a level
};

/// Value range, distinct values and the result of the quantization. A voxel survives when it is
/// neither clamped by the range (or NaN) nor, without a range, set to level 0 though its value is
/// above 0. O(voxels), and memory for one copy of the image where its pixels have more than 16
/// bits.
[[nodiscard]] StLevels MeasureLevels(CRawImage const& image, std::optional<StRange> const& range);
/// The same without the distinct values, which cost most.
[[nodiscard]] StLevels MeasureLevelsOnly(CRawImage const& image,
                                         std::optional<StRange> const& range);

/// The image whose gray levels the texture counts: unsigned 8, 16 and 32-bit pixels as they are,
/// others (and these, with a range) mapped to 8 bits: rounded, clamped, NaN to 0. Throws CAppError
/// for a type that needs a range and has none; `path` and the value range are in the sentence.
[[nodiscard]] ORVA::CImage ToGray(CRawImage const& image, std::optional<StRange> const& range,
                                  std::filesystem::path const& path);

/// Throws what ToGray throws for an image without a range that needs one, with the range of all its
/// values.
void RequireRange(CVolumeSource& image, std::optional<StRange> const& range);

/// Finds out whether an image keeps few of its values as gray levels, slab by slab.
class CCollapseMeter {
public:
  CCollapseMeter(EnPixel pixel, std::optional<StRange> const& range);
  void Add(CRawImage const& image);
  /// The warning, or an empty text.
  [[nodiscard]] std::string Warning(std::filesystem::path const& path) const;

private:
  struct StLevel {
    std::uint32_t low = UINT32_MAX, high = 0; ///< of the values on it; low > high: none
  };
  std::size_t m_Bits;
  bool m_IsNeeded;
  std::array<StLevel, 256> m_Levels;
};

/// The same for an image as a whole.
[[nodiscard]] std::string CollapseWarning(CRawImage const& image,
                                          std::optional<StRange> const& range,
                                          std::filesystem::path const& path);

} // namespace selu
