// Which image format a file has: by its content when it is read, by its ending when it is written.
//
//   FormatOf(path, BeginningOf(path, 512))   -> EnFormat::Nifti
//   FormatForOutput("matrix.nrrd")           -> EnFormat::Nrrd; throws where nothing is written
#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace selu {

enum class EnFormat { Png, Tiff, Nrrd, Meta, Nifti, Dicom };

/// The text of a format for messages, such as "NIfTI".
[[nodiscard]] char const* FormatText(EnFormat format) noexcept;

/// By its first bytes alone; nothing where they are none that only one of the formats has.
[[nodiscard]] std::optional<EnFormat> KnownFormat(std::string_view beginning) noexcept;
/// Of a file that begins with these bytes, 512 of them or more where it has as many; throws
/// CAppError for one of none of the formats.
[[nodiscard]] EnFormat FormatOf(std::filesystem::path const& path, std::string_view beginning);

/// Whether FormatForOutput knows the ending.
[[nodiscard]] bool IsImageEnding(std::string_view ending) noexcept;
/// Throws CAppError for an ending that is none of .png, .tif, .tiff, .nrrd, .mha, .nii and .nii.gz.
/// What goes to an open file, such as "-" for standard output, is NRRD.
[[nodiscard]] EnFormat FormatForOutput(std::filesystem::path const& path);

} // namespace selu
