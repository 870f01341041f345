// Image files as they are on disk: every pixel type, 2D or 3D, one component.
//
//   StHeader header = ReadHeader("scan.nii.gz");         // extents and pixel type, no pixels
//   CRawImage image = ReadImage("scan.nii.gz");          // the pixels in their own type
//   VisitPixels(image, [](auto pixels) { ... std::span<T const> ... });
//   WriteImage(atomicFile, gray);                        // a CImage, by the file's ending
#pragma once

#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Isolated.h"

#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <utility>

namespace selu {

enum class EnPixel { UInt8, Int8, UInt16, Int16, UInt32, Int32, UInt64, Int64, Float, Double };

/// Such as "unsigned 16-bit integer".
[[nodiscard]] char const* PixelText(EnPixel pixel) noexcept;
/// Such as "uint16".
[[nodiscard]] char const* PixelName(EnPixel pixel) noexcept;
[[nodiscard]] std::size_t PixelBytes(EnPixel pixel) noexcept;
/// Unsigned with 8, 16 or 32 bits: the types that have gray levels without a range.
[[nodiscard]] bool HasOwnGrayLevels(EnPixel pixel) noexcept;

struct StHeader {
  ORVA::CSize size;
  EnPixel pixel = EnPixel::UInt8;
};

/// An image with the pixels of its file, x fastest.
class CRawImage {
public:
  explicit CRawImage(StHeader const& header);
  [[nodiscard]] ORVA::CSize Size() const noexcept { return m_Header.size; }
  [[nodiscard]] EnPixel Pixel() const noexcept { return m_Header.pixel; }
  [[nodiscard]] std::span<std::byte> Bytes() noexcept { return m_Pixels.Bytes(); }
  [[nodiscard]] std::span<std::byte const> Bytes() const noexcept { return m_Pixels.Bytes(); }
  /// A copy as framework image; for types with gray levels of their own and 32-bit floating-point.
  [[nodiscard]] ORVA::CImage ToGray() const;

private:
  StHeader m_Header;
  CSharedBuffer m_Pixels;
};

/// Both throw CAppError, with one sentence that names the file, for whatever is not a whole image
/// with one component a pixel, two or three dimensions (further extents of 1 are left out) and at
/// least one pixel. Nothing that a file merely claims is allocated: the extents must be possible
/// for the file's size and for the machine's memory. The reading itself happens in a process of its
/// own, since damaged files bring the readers of some formats down.
[[nodiscard]] StHeader ReadHeader(std::filesystem::path const& path);
[[nodiscard]] CRawImage ReadImage(std::filesystem::path const& path);
/// Distance of neighboring voxels along x, y and z in the file's own unit; 1 where it has none or
/// none that is finite and above 0. Throws CAppError as above.
[[nodiscard]] std::array<double, 3> ReadSpacing(std::filesystem::path const& path);

/// Refuses, with CAppError, an output that is the image or its file of pixels, under whatever name.
void RefuseOverwriting(std::filesystem::path const& output, std::filesystem::path const& image);
/// Refuses, with CAppError, what WriteImage could not write under this name: an unknown ending or a
/// pixel type or dimension that the format does not hold.
void CheckImageOutput(std::filesystem::path const& path, ORVA::IImage::CType type, int dimension);
void CheckImageOutput(std::filesystem::path const& path, EnPixel pixel, int dimension);
/// Writes a framework image of 8, 16 or 32-bit or floating-point pixels to the file's temporary and
/// reads it back to be sure; the file is not committed.
void WriteImage(CAtomicFile& file, ORVA::CImage const& image);
/// The same for pixels of any type.
void WriteImage(CAtomicFile& file, CRawImage const& image);

namespace Impl {
template <class T, class Function>
decltype(auto) CallWith(CRawImage const& image, Function&& function) {
  auto const bytes = image.Bytes();
  return std::forward<Function>(function)(
      std::span<T const>(reinterpret_cast<T const*>(bytes.data()), bytes.size() / sizeof(T)));
}
} // namespace Impl

/// Calls the function with the pixels as a span of their type.
template <class Function>
decltype(auto) VisitPixels(CRawImage const& image, Function&& function) {
  switch (image.Pixel()) {
  case EnPixel::UInt8:
    return Impl::CallWith<std::uint8_t>(image, function);
  case EnPixel::Int8:
    return Impl::CallWith<std::int8_t>(image, function);
  case EnPixel::UInt16:
    return Impl::CallWith<std::uint16_t>(image, function);
  case EnPixel::Int16:
    return Impl::CallWith<std::int16_t>(image, function);
  case EnPixel::UInt32:
    return Impl::CallWith<std::uint32_t>(image, function);
  case EnPixel::Int32:
    return Impl::CallWith<std::int32_t>(image, function);
  case EnPixel::UInt64:
    return Impl::CallWith<std::uint64_t>(image, function);
  case EnPixel::Int64:
    return Impl::CallWith<std::int64_t>(image, function);
  case EnPixel::Float:
    return Impl::CallWith<float>(image, function);
  case EnPixel::Double:
    return Impl::CallWith<double>(image, function);
  }
  throw CAppError("unknown pixel type");
}

} // namespace selu
