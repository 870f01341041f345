// Gray levels and features as the command line asks for them.
//
//   StLevelOptions options;                       // filled by AddLevelOptions(command, options)
//   StLevelRecipe const recipe = ParseLevels(options);     // before any image is read
//   auto mask = OpenMask(options, image);                  // nothing without --mask
#pragma once

#include "images/Quantize.h"
#include "images/VolumeSource.h"

#include <SeluUtils/Texture/Features.h>

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace selu {

/// As written; empty where not given.
struct StLevelOptions {
  std::string levels, width, start, count, range, mask, label;

  /// Whether any but the range is given.
  [[nodiscard]] bool AreGiven() const {
    return !(levels.empty() && width.empty() && count.empty() && mask.empty() && label.empty());
  }
};

/// --levels, --bin-width, --bin-start and --bin-count.
void AddLevelOptions(CLI::App& command, StLevelOptions& options);
/// --mask and --label.
void AddMaskOptions(CLI::App& command, StLevelOptions& options);

/// How values become levels: so many of equal width over a range, bins of one width from the least
/// value found, from a given one or from the multiple of the width below, or so many bins over the
/// values found.
struct StLevelRecipe {
  enum class EnKind { Range, Width, WidthFrom, WidthAtMultiple, Count } kind = EnKind::Range;
  int levels = 256;
  double width = 0, start = 0;
  std::optional<StRange> range;     ///< none: all values of the pixel type
  std::optional<ORVA::int64> label; ///< of the mask; none: all but 0
};

/// Throws CUsageError for what does not go together, and for numbers that are none.
[[nodiscard]] StLevelRecipe ParseLevels(StLevelOptions const& options);

/// The mask of an image, opened and judged; nothing where none is asked for.
[[nodiscard]] std::optional<CVolumeSource> OpenMask(StLevelOptions const& options,
                                                    COpenImage const& image);

/// "ibsi", "haralick", or names such as "contrast,joint_entr"; throws CUsageError for others.
[[nodiscard]] std::vector<ORVA::EnTextureFeature> ParseFeatures(std::string const& text);

} // namespace selu
