// Whether the elements of a DICOM file are all there.
//
//   CheckDicomElements("slice.dcm", 512 * 512);     // throws for a file that ends in their midst
#pragma once

#include <filesystem>

namespace selu {

/// Walks from element to element: the file must not end inside one or before the pixels, and pixels
/// that are stored plainly must be as many as these. Readers would fill up what is missing. A file
/// with another byte order, deflated elements or elements that make no sense is left to the reader.
/// Throws CAppError.
void CheckDicomElements(std::filesystem::path const& path, double pixels);

} // namespace selu
