// Texts from and to numbers, the same in every locale.
//
//   ParseNumbers("-200,300")          -> {-200, 300}
//   ParseIntegers("64,64,32")         -> {64, 64, 32}
//   Shortest(0.1)                     -> "0.1", which reads back as the same number
#pragma once

#include <pxlib2core/Types.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace selu {

/// Comma-separated decimal numbers, or nothing when the text is anything else.
[[nodiscard]] std::optional<std::vector<double>> ParseNumbers(std::string_view text);
[[nodiscard]] std::optional<std::vector<ORVA::int64>> ParseIntegers(std::string_view text);
/// 0 to 2^64 - 1.
[[nodiscard]] std::optional<ORVA::uint64> ParseUnsigned(std::string_view text);

/// The shortest text that reads back as the same number.
[[nodiscard]] std::string Shortest(double value);
[[nodiscard]] std::string Shortest(float value);
/// With so many significant digits, for people.
[[nodiscard]] std::string Rounded(double value, int digits);
/// Bytes in KiB, MiB, ... for people.
[[nodiscard]] std::string BytesText(double bytes);
/// "64 x 64 x 32".
[[nodiscard]] std::string Joined(std::vector<ORVA::int64> const& numbers, std::string_view between);

/// A path on one line: control characters replaced.
[[nodiscard]] std::string Shown(std::filesystem::path const& path);
/// A path for messages: in quotes, control characters replaced, so that it stays on one line.
[[nodiscard]] std::string Quoted(std::filesystem::path const& path);
/// A text from a file for messages: in quotes, on one line, at most 80 characters of it.
[[nodiscard]] std::string QuotedPart(std::string_view text);
/// What the system calls this error number.
[[nodiscard]] std::string SystemText(int error);

} // namespace selu
