// The reader and writer of ITK for a format.
//
//   auto const io = MakeItkIo(EnFormat::Nifti);
//   io->SetComponentType(ComponentOf(EnPixel::Int16));
#pragma once

#include "images/FileFormat.h"
#include "images/RawImage.h"

#include <optional>

#include <itkImageIOBase.h>

namespace selu {

[[nodiscard]] itk::ImageIOBase::Pointer MakeItkIo(EnFormat format);
[[nodiscard]] itk::IOComponentEnum ComponentOf(EnPixel pixel) noexcept;
[[nodiscard]] std::optional<EnPixel> PixelOf(itk::IOComponentEnum component) noexcept;
/// All pixels of the image that it was given or has found.
[[nodiscard]] itk::ImageIORegion WholeRegion(itk::ImageIOBase const& io);

} // namespace selu
