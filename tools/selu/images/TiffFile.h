// A TIFF file in the hands of libtiff, whose complaints become exceptions.
//
//   CTiffFile file("stack.tif", "r");
//   auto const width = file.Field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
//   file.Require(TIFFReadDirectory(file.Get()) == 1);
#pragma once

#include <filesystem>
#include <memory>

#include <tiffio.h>

namespace selu {

/// Throws std::runtime_error where libtiff fails; warnings are not listened to.
class CTiffFile {
public:
  /// The mode is "r", "w" or, for more than 4 GB, "w8".
  CTiffFile(std::filesystem::path const& path, char const* mode);
  [[nodiscard]] TIFF* Get() const noexcept { return m_File.get(); }
  /// Throws unless this holds and libtiff has not complained so far.
  void Require(bool good) const;
  /// A tag of the current page that has one number; the default where it is not there.
  template <class T>
  [[nodiscard]] T Field(ttag_t tag, T otherwise) const {
    T value = otherwise;
    return TIFFGetFieldDefaulted(Get(), tag, &value) == 1 ? value : otherwise;
  }
  template <class... Values>
  void Set(ttag_t tag, Values... values) const {
    Require(TIFFSetField(Get(), tag, values...) == 1);
  }
  /// Writes what is still missing; throws where that fails.
  void Close();

private:
  struct StClose {
    void operator()(TIFF* file) const noexcept { TIFFClose(file); }
  };
  std::unique_ptr<bool> m_Failed = std::make_unique<bool>(false); // stays where libtiff knows it
  std::unique_ptr<TIFF, StClose> m_File;
};

} // namespace selu
