// The bytes of a file, and what its name says about it.
//
//   SizeOfReadable("scan.json")        // throws for what is no file with something in it
//   BeginningOf("scan.json", 512)      // its first bytes
//   EndingOf("dir/Scan.NII.GZ")        // ".nii.gz"
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace selu {

/// ASCII letters in lower case.
[[nodiscard]] std::string Lower(std::string text);

/// The ending with its dot, in lower case; ".nii.gz" and the like count as one.
[[nodiscard]] std::string EndingOf(std::filesystem::path const& path);

/// Bytes of a file; throws CAppError when it is missing, no regular file, empty or not readable.
/// The sentence names the header as well that the file belongs to, where that is another.
[[nodiscard]] std::uint64_t SizeOfReadable(std::filesystem::path const& path,
                                           std::filesystem::path const& header = {});
/// Its first bytes, as many as there are up to this number.
[[nodiscard]] std::string BeginningOf(std::filesystem::path const& path, std::size_t bytes);

/// The names of all that lies in a folder, in no order; none where it cannot be looked at. (The
/// standard library's iterator ends the process where memory runs out.)
[[nodiscard]] std::vector<std::string> NamesIn(std::filesystem::path const& folder);

} // namespace selu
