// Points, corner lists and neighborhoods as the command line writes them.
//
//   StPoints corners = ParsePoints({"-5,3", "10,0"}, "CORNER");     // dimension 2
//   StPoints many = ReadPoints("corners.csv");
//   ORVA::int64 code = ParseNeighborhood("6.1", 2);
#pragma once

#include "walks/Walk.h"

#include <cstdint>
#include <string>
#include <vector>

namespace selu {

/// All of one dimension, 2 or 3; in 2D all z are 0.
struct StPoints {
  int dimension = 0;
  std::vector<Point> points;
};

/// The farthest coordinate, 2^61: sums and differences of two stay within 64 bits.
inline constexpr ORVA::int64 c_farthest = ORVA::int64{1} << 61;

/// Throws CUsageError, naming the argument, for texts that are no whole numbers x,y[,z] from -2^61
/// to 2^61, and for such of different dimensions.
[[nodiscard]] StPoints ParsePoints(std::vector<std::string> const& texts, std::string const& name);
[[nodiscard]] StPoints ParsePoint(std::string const& text, std::string const& name);

/// A CSV file with one point per line; its first line may name the columns, empty lines and such
/// begun with # are left out. Throws CAppError, naming the line.
[[nodiscard]] StPoints ReadPoints(std::string const& path);

/// Points of any finite numbers.
struct StRealPoints {
  int dimension = 0;
  std::vector<RealPoint> points;
};
[[nodiscard]] StRealPoints ParseRealPoints(std::vector<std::string> const& texts,
                                           std::string const& name);
[[nodiscard]] StRealPoints ReadRealPoints(std::string const& path);
/// Whether one of the texts, or of the lines of a file, is a point that is not whole.
[[nodiscard]] bool HasRealPoint(std::vector<std::string> const& texts);
[[nodiscard]] bool HasRealPointIn(std::string const& path);

/// Numbers of corners, one list per text or line of a file: 0 to 2^32 - 1. Throw as for points.
using Faces = std::vector<std::vector<std::uint32_t>>;
[[nodiscard]] Faces ParseFaces(std::vector<std::string> const& texts, std::string const& name);
[[nodiscard]] Faces ReadFaces(std::string const& path);

/// Two or three finite numbers that are not all 0; throws CUsageError. A missing z is 0.
struct StDirection {
  int dimension = 0;
  RealPoint components;
};
[[nodiscard]] StDirection ParseRealDirection(std::string const& text, std::string const& name);

/// The library's code; an empty text is 8 in 2D and 26 in 3D. Throws CUsageError.
[[nodiscard]] ORVA::int64 ParseNeighborhood(std::string const& text, int dimension);

} // namespace selu
