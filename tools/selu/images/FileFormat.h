// Which image format a file has: by its content when it is read, by its ending when it is written.
//
//   FormatOfFile("scan.nii.gz")       -> EnFormat::Nifti, after a look into the file
//   FormatForOutput("matrix.nrrd")    -> EnFormat::Nrrd; throws for endings that are not written
//   EndingOf("dir/Scan.NII.GZ")       -> ".nii.gz"
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace selu {

enum class EnFormat { Png, Tiff, Nrrd, Meta, Nifti, Dicom };

/// The ending with its dot, in lower case; ".nii.gz" and the like count as one.
[[nodiscard]] std::string EndingOf(std::filesystem::path const& path);

/// The text of a format for messages, such as "NIfTI".
[[nodiscard]] char const* FormatText(EnFormat format) noexcept;

/// Bytes of a file; throws CAppError when it is missing, no regular file, empty or not readable.
/// The sentence names the header as well that the file belongs to, where that is another.
[[nodiscard]] std::uint64_t SizeOfReadable(std::filesystem::path const& path,
                                           std::filesystem::path const& header = {});
/// Its first bytes, as many as there are up to this number.
[[nodiscard]] std::string BeginningOf(std::filesystem::path const& path, std::size_t bytes);

/// Throws CAppError as SizeOfReadable does, and for a file of none of the formats.
[[nodiscard]] EnFormat FormatOfFile(std::filesystem::path const& path);

/// Throws CAppError for an ending that is none of .png, .tif, .tiff, .nrrd, .mha, .nii and .nii.gz.
[[nodiscard]] EnFormat FormatForOutput(std::filesystem::path const& path);

} // namespace selu
