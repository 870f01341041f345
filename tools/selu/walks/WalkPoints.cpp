#include "walks/WalkPoints.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Memory.h"
#include "base/Texts.h"

#include <SeluBase/Neighborhood.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <optional>
#include <string_view>
#include <utility>

namespace selu {
namespace {

using ORVA::int64;

struct StGivenPoint {
  int dimension = 0;
  Point point;
};

std::optional<StGivenPoint> ToPoint(std::string const& text) {
  auto const numbers = ParseIntegers(text);
  if (!numbers || numbers->size() < 2 || numbers->size() > 3) return std::nullopt;
  for (auto const number : *numbers)
    if (number < -c_farthest || number > c_farthest) return std::nullopt;
  auto const& n = *numbers;
  return StGivenPoint{static_cast<int>(n.size()), Point(n[0], n[1], n.size() == 3 ? n[2] : 0)};
}

struct StGivenRealPoint {
  int dimension = 0;
  RealPoint point;
};

std::optional<StGivenRealPoint> ToRealPoint(std::string const& text) {
  auto const numbers = ParseNumbers(text);
  if (!numbers || numbers->size() < 2 || numbers->size() > 3) return std::nullopt;
  for (double const number : *numbers)
    if (!std::isfinite(number)) return std::nullopt;
  auto const& n = *numbers;
  return StGivenRealPoint{static_cast<int>(n.size()),
                          RealPoint(n[0], n[1], n.size() == 3 ? n[2] : 0)};
}

// Of points that are not whole.
bool IsRealPoint(std::string const& text) {
  auto const isWhole = [](double value) { return std::trunc(value) == value; };
  auto const point = ToRealPoint(text);
  return point && !(isWhole(point->point.x) && isWhole(point->point.y) && isWhole(point->point.z));
}

std::optional<std::vector<std::uint32_t>> ToFace(std::string const& text) {
  auto const numbers = ParseIntegers(text);
  if (!numbers) return std::nullopt;
  std::vector<std::uint32_t> face;
  for (auto const number : *numbers) {
    if (!std::in_range<std::uint32_t>(number)) return std::nullopt;
    face.push_back(static_cast<std::uint32_t>(number));
  }
  return face;
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r";
  auto const first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The fields of a line without the blanks around them.
std::string TrimmedFields(std::string_view line) {
  std::string text;
  while (true) {
    auto const comma = line.find(',');
    text += Trimmed(line.substr(0, comma));
    if (comma == std::string_view::npos) return text;
    text += ',';
    line.remove_prefix(comma + 1);
  }
}

// Enough of a line to find it again.
std::string Beginning(std::string const& line) {
  constexpr std::size_t most = 40;
  return Quoted(line.size() > most ? line.substr(0, most) + "..." : line);
}

[[noreturn]] void RefuseLine(std::string const& path, std::size_t number, std::string const& why) {
  throw CAppError("cannot read " + Quoted(path) + ": line " + std::to_string(number) + ", " + why);
}

// A line that may be any file's, but not longer than a point could be.
bool NextLine(std::istream& in, std::string& line) {
  constexpr std::size_t most = 4096;
  line.clear();
  int c = in.get();
  if (c == std::istream::traits_type::eof()) return false;
  for (; c != std::istream::traits_type::eof() && c != '\n'; c = in.get()) {
    line += static_cast<char>(c);
    if (line.size() >= most) break;
  }
  return true;
}

// Calls visit(number, line, text without blanks) for each line with something in it; the first one
// may name the columns.
template <class Visit>
void ForEachLine(std::string const& path, Visit visit) {
  std::ifstream in(path, std::ios::binary);
  std::string line;
  bool maybeHead = true;
  for (std::size_t number = 1; NextLine(in, line); ++number) {
    std::string const text = TrimmedFields(line);
    if (text.empty() || text.front() == '#') continue;
    bool const isHead = maybeHead && (text == "x,y" || text == "x,y,z");
    maybeHead = false;
    if (!isHead) visit(number, line, text);
  }
  if (in.bad()) throw CAppError("cannot read " + Quoted(path) + ": reading failed");
}

constexpr char c_wholeNumbers[] = "whole numbers x,y[,z] from -2^61 to 2^61";
constexpr char c_wholePoint[] = "no point x,y or x,y,z of whole numbers from -2^61 to 2^61";
constexpr char c_realNumbers[] = "numbers x,y[,z]";
constexpr char c_realPoint[] = "no point x,y or x,y,z of numbers";

template <class List, class Convert>
List ParseList(std::vector<std::string> const& texts, std::string const& name, Convert convert,
               char const* wanted) {
  List all;
  for (auto const& text : texts) {
    auto const point = convert(text);
    if (!point)
      throw CUsageError(name + " needs two or three " + wanted + ", not \"" + Shown(text) + "\"");
    if (all.dimension != 0 && all.dimension != point->dimension)
      throw CUsageError(name + " needs points of one dimension, not " + texts.front() + " and " +
                        text);
    all.dimension = point->dimension;
    all.points.push_back(point->point);
  }
  return all;
}

template <class List, class Convert>
List ReadList(std::string const& path, Convert convert, char const* refused) {
  // The shortest line, "0,0", becomes a point of 24 bytes, and vectors double as they grow.
  RefuseBeyondMemory(static_cast<double>(SizeOfReadable(path)) * 12, "the list " + Quoted(path));
  List all;
  ForEachLine(path, [&](std::size_t number, std::string const& line, std::string const& text) {
    auto const point = convert(text);
    if (!point) RefuseLine(path, number, Beginning(line) + " is " + refused);
    if (all.dimension != 0 && all.dimension != point->dimension)
      RefuseLine(path, number,
                 Beginning(line) + " has not as many coordinates as the points before");
    all.dimension = point->dimension;
    all.points.push_back(point->point);
  });
  if (all.points.empty()) throw CAppError("cannot read " + Quoted(path) + ": it has no points");
  return all;
}

} // namespace

StPoints ParsePoints(std::vector<std::string> const& texts, std::string const& name) {
  return ParseList<StPoints>(texts, name, ToPoint, c_wholeNumbers);
}

StPoints ParsePoint(std::string const& text, std::string const& name) {
  return ParsePoints({text}, name);
}

StPoints ReadPoints(std::string const& path) {
  return ReadList<StPoints>(path, ToPoint, c_wholePoint);
}

StRealPoints ParseRealPoints(std::vector<std::string> const& texts, std::string const& name) {
  return ParseList<StRealPoints>(texts, name, ToRealPoint, c_realNumbers);
}

StRealPoints ReadRealPoints(std::string const& path) {
  return ReadList<StRealPoints>(path, ToRealPoint, c_realPoint);
}

bool HasRealPoint(std::vector<std::string> const& texts) {
  return std::any_of(texts.begin(), texts.end(), IsRealPoint);
}

bool HasRealPointIn(std::string const& path) {
  static_cast<void>(SizeOfReadable(path));
  bool has = false;
  ForEachLine(path, [&](std::size_t, std::string const&, std::string const& text) {
    has = has || IsRealPoint(text);
  });
  return has;
}

Faces ParseFaces(std::vector<std::string> const& texts, std::string const& name) {
  Faces faces;
  for (auto const& text : texts) {
    auto face = ToFace(text);
    if (!face)
      throw CUsageError(name + " needs numbers of corners from 0 on, such as 0,1,2, not \"" +
                        Shown(text) + "\"");
    faces.push_back(std::move(*face));
  }
  return faces;
}

Faces ReadFaces(std::string const& path) {
  // The shortest line, "0", becomes a list of 24 bytes with 32 bytes for its number.
  RefuseBeyondMemory(static_cast<double>(SizeOfReadable(path)) * 40, "the list " + Quoted(path));
  Faces faces;
  ForEachLine(path, [&](std::size_t number, std::string const& line, std::string const& text) {
    auto face = ToFace(text);
    if (!face) RefuseLine(path, number, Beginning(line) + " is no list of corners from 0 on");
    faces.push_back(std::move(*face));
  });
  if (faces.empty()) throw CAppError("cannot read " + Quoted(path) + ": it has no faces");
  return faces;
}

StDirection ParseRealDirection(std::string const& text, std::string const& name) {
  auto const numbers = ParseNumbers(text);
  bool good = numbers && numbers->size() >= 2 && numbers->size() <= 3;
  bool isNull = true;
  for (std::size_t i = 0; good && i < numbers->size(); ++i) {
    good = std::isfinite((*numbers)[i]);
    isNull = isNull && (*numbers)[i] == 0;
  }
  if (!good || isNull)
    throw CUsageError(name + " needs two or three finite numbers that are not all 0, not \"" +
                      Shown(text) + "\"");
  auto const& n = *numbers;
  return {static_cast<int>(n.size()), RealPoint(n[0], n[1], n.size() == 3 ? n[2] : 0)};
}

int64 ParseNeighborhood(std::string const& text, int dimension) {
  struct StName {
    char const* name;
    int dimension;
    int64 code;
  };
  constexpr std::array<StName, 8> names = {{{"4", 2, ORVA::NEIGHBORHOOD_4},
                                            {"6.1", 2, ORVA::NEIGHBORHOOD_6_1},
                                            {"6.2", 2, ORVA::NEIGHBORHOOD_6_2},
                                            {"8", 2, ORVA::NEIGHBORHOOD_8},
                                            {"6", 3, ORVA::NEIGHBORHOOD_6},
                                            {"14.1", 3, ORVA::NEIGHBORHOOD_14_1},
                                            {"14.2", 3, ORVA::NEIGHBORHOOD_14_2},
                                            {"26", 3, ORVA::NEIGHBORHOOD_26}}};
  if (text.empty()) return dimension == 2 ? ORVA::NEIGHBORHOOD_8 : ORVA::NEIGHBORHOOD_26;
  for (auto const& name : names)
    if (text == name.name && dimension == name.dimension) return name.code;
  throw CUsageError(std::string("--neighborhood needs one of ") +
                    (dimension == 2 ? "4, 6.1, 6.2 and 8 in 2D" : "6, 14.1, 14.2 and 26 in 3D") +
                    ", not \"" + Shown(text) + "\"");
}

} // namespace selu
