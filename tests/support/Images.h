// Small images for tests, and plain loops over their pixels.
#pragma once

#include <pxlib2image/Image.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace test {

/// An image whose pixels are the given numbers, x fastest, converted to the pixel type.
template <class T>
ORVA::CImage MakeImage(ORVA::IImage::CType type, ORVA::CSize size, std::vector<T> const& pixels) {
  ORVA::CImage image(type, size);
  if (pixels.size() * sizeof(T) != image.Bytes()) throw std::logic_error("pixels do not fit size");
  if (!pixels.empty())
    std::memcpy(image.CreateAccess(true).WritableBase(), pixels.data(), image.Bytes());
  return image;
}

inline ORVA::CImage MakeGrey8(ORVA::CSize size, std::vector<std::uint8_t> const& pixels) {
  return MakeImage(ORVA::IMAGE_GREY_8, size, pixels);
}

/// All pixels of an image, x fastest.
template <class T>
std::vector<T> Pixels(ORVA::IImage const& image) {
  auto const access = image.CreateAccess(false);
  std::vector<T> pixels;
  for (ORVA::int64 z = 0; z < access.Extent(2); ++z)
    for (ORVA::int64 y = 0; y < access.Extent(1); ++y)
      for (ORVA::int64 x = 0; x < access.Extent(0); ++x) {
        T pixel;
        std::memcpy(&pixel,
                    access.Base() + x * access.Stride(0) + y * access.Stride(1) +
                        z * access.Stride(2),
                    sizeof pixel);
        pixels.push_back(pixel);
      }
  return pixels;
}

} // namespace test
