// The pixels of an image file, as the application reads them.
#pragma once

#include <images/ImageFile.h>

#include <cstring>
#include <string>
#include <vector>

namespace test {

/// The pixels of a file, x fastest; T must be their type.
template <class T>
std::vector<T> Pixels(std::string const& path) {
  auto const image = selu::ReadImage(path);
  std::vector<T> pixels(image.Bytes().size() / sizeof(T));
  std::memcpy(pixels.data(), image.Bytes().data(), image.Bytes().size());
  return pixels;
}

} // namespace test
