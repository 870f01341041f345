// What the command texture has computed, and its ways out.
//
//   StTexture texture = ...;
//   PrintOut(ToCsv(texture));
//   file.Write(DrawTexture(texture, ".svg"));
#pragma once

#include "images/Directions.h"
#include "images/Quantize.h"

#include <SeluUtils/Cooccurrence.h>

#include <optional>
#include <string>
#include <vector>

namespace selu {

/// The names of the thirteen features, in the order of the tables.
inline constexpr auto const& c_featureNames = ORVA::CCooccurrence::m_cFeatureNames;

struct StDirectionTexture {
  Direction direction;
  ORVA::int64 pairs = 0;
  std::vector<double> features;
};

struct StTexture {
  std::string image; ///< the file's name as it was given
  ORVA::CSize size;
  EnPixel pixel = EnPixel::UInt8;
  std::optional<StRange> range;
  std::vector<std::string> featureNames;
  std::vector<StDirectionTexture> directions;
  /// Size (directions, n, n) for n levels: the count of (i, j) for direction s at (s, i, j). Of an
  /// aggregation those of its directions, or the only one of all.
  ORVA::CImage matrices;
  std::vector<std::string> matrixNames; ///< such as "1,0,0"
  /// The n + 1 edges of the levels; none for the 256 gray levels.
  std::vector<double> edges;
  /// Such as "3D_avg", and the features of all directions; the directions have none then.
  std::string aggregation;
  std::vector<double> aggregated;
};

/// "1,-1,0", without the third component for a 2D image.
[[nodiscard]] std::string DirectionText(Direction const& direction, int dimension);

/// Features as rows and directions as columns, in blocks that fit the page.
[[nodiscard]] std::string ToTable(StTexture const& texture, int columns);
/// With every digit that the numbers have.
[[nodiscard]] std::string ToJson(StTexture const& texture);
[[nodiscard]] std::string ToCsv(StTexture const& texture);

/// The picture as the bytes of a PNG or, for the ending .svg, an SVG file.
[[nodiscard]] std::string DrawTexture(StTexture const& texture, std::string const& ending);

} // namespace selu
