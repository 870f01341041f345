// Which image format a file has: by its content when it is read, by its ending when it is written.
//
//   FormatOfFile("scan.nii.gz")       -> EnFormat::Nifti, after a look into the file
//   FormatForOutput("matrix.nrrd")    -> EnFormat::Nrrd; throws for endings that are not written
//   EndingOf("dir/Scan.NII.GZ")       -> ".nii.gz"
#pragma once

#include <pxlib2core/Types.h>

#include <filesystem>
#include <string>

namespace selu {

enum class EnFormat { Png, Tiff, Nrrd, Meta, Nifti, Dicom };

/// The ending with its dot, in lower case; ".nii.gz" and the like count as one.
[[nodiscard]] std::string EndingOf(std::filesystem::path const& path);

/// Throws CAppError for a file that is missing, no regular file, empty, not readable, or of none of
/// the formats.
[[nodiscard]] EnFormat FormatOfFile(std::filesystem::path const& path);

/// Throws CAppError for an ending that is none of .png, .tif, .tiff, .nrrd, .mha, .nii and .nii.gz.
[[nodiscard]] EnFormat FormatForOutput(std::filesystem::path const& path);

/// Whether the file's size is what limits its pixels: the bytes that hold pixels, headers included,
/// and the most that a byte of them can unpack to (1 for formats without compression).
struct StPixelStore {
  ORVA::uint64 bytes;
  ORVA::uint64 ratio;
};
/// Looks at the file, and for a header with its pixels elsewhere at that file, which must be a
/// regular file, too; throws CAppError.
[[nodiscard]] StPixelStore PixelStoreOf(std::filesystem::path const& path, EnFormat format);

} // namespace selu
