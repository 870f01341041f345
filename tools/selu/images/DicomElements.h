// Whether the elements of a DICOM file are all there.
//
//   if (WalkDicomElements("slice.dcm") < 512 * 512) ...     // throws for a file that ends too
//   early
#pragma once

#include <filesystem>

namespace selu {

/// Walks from element to element: the file must not end inside one or before the pixels. Readers
/// would fill up what is missing, and make room for whatever an element claims. Gives the number of
/// pixels that are stored plainly, infinity where they are packed. A file with another byte order,
/// deflated elements or elements that make no sense is left to the reader. Throws CAppError.
[[nodiscard]] double WalkDicomElements(std::filesystem::path const& path);

} // namespace selu
