// Value maps as JSON texts and back, with nothing lost on the way.
//
//   std::string const text = ToJsonText(features);
//   ORVA::CValueMap const same = ParseJsonMap(text);             // same == features
//   ORVA::CValueMap const read = ReadJsonMap("features.json");   // errors name the file
#pragma once

#include <pxlib2core/ValueMap.h>

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace selu {

// How values and JSON correspond, in both directions:
//
//   Boolean            true, false
//   long               a number without fraction and exponent, -2147483648 to 2147483647
//   double             a number with a fraction or an exponent (1.0 stays a double)
//   NaN, infinities    {"$number": "NaN"}, also "Infinity" and "-Infinity"; JSON has no numbers
//                      for them, and a text must stay a text
//   text               a string; it must be UTF-8
//   invalid value      null
//   map, vector        an object, an array, nested at most c_jsonDepth deep
//   key of a map       the text itself; one that begins with $ gets another $ in front; the number
//                      7 is "$7", since a map can hold the keys 7 and "7" at once
//
// Beyond that, an integer of more than 32 bits is read as a double if it is the same number then,
// and comes back with the fraction ".0"; an integer that no double holds, a number beyond the
// doubles, a key twice in an object and a key with "/" (the separator of key paths) are refused
// instead of being read as something else. The bits of a NaN and the annotations of values are not
// kept.

/// How deep maps and vectors may be nested, the outermost included.
inline constexpr int c_jsonDepth = 100;

/// The map as indented JSON, with a line end at the end. Throws CAppError, with the entry's path,
/// for an object in a value, for texts that are not UTF-8 and for deeper nesting. O(text).
[[nodiscard]] std::string ToJsonText(ORVA::CValueMap const& map);

/// The map that a JSON object describes; throws CAppError, with the place, for anything else.
/// O(text * log(entries)).
[[nodiscard]] ORVA::CValueMap ParseJsonMap(std::string_view text);

/// The same for a file, whose name is in every error.
[[nodiscard]] ORVA::CValueMap ReadJsonMap(std::filesystem::path const& path);
/// The entries of that map, handed over one after the other as they come in the file, so that
/// memory holds one of them at a time.
void ReadJsonEntries(
    std::filesystem::path const& path,
    std::function<void(ORVA::CValue_Key const& key, ORVA::CValue value)> const& take);

} // namespace selu
