// Writing an image file by ITK: every format but TIFF.
//
//   WriteByItk("scan.nii", EnFormat::Nifti, {header, grid, bytes}, {});
//   std::string const text = HeaderByItk("a.nrrd", EnFormat::Nrrd, header, grid, {});
#pragma once

#include "images/TiffWriter.h"

#include <filesystem>
#include <string>

namespace selu {

/// Throws CAppError for notes that a file of this name has no room for: long ones of a MetaImage,
/// whose library would write beyond its fields.
void CheckNotes(std::filesystem::path const& target, ImageNotes const& notes);
/// Throws whatever ITK throws.
void WriteByItk(std::filesystem::path const& path, EnFormat format, StPixels const& image,
                ImageNotes const& notes);
/// What stands before the pixels in such a file of NRRD, MetaImage or NIfTI; the file is written
/// over on the way.
[[nodiscard]] std::string HeaderByItk(std::filesystem::path const& path, EnFormat format,
                                      StHeader const& header, StGrid const& grid,
                                      ImageNotes const& notes);

} // namespace selu
