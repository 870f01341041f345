// Reading an image file in the process at hand: what the isolated process does.
//
//   StOpened opened = OpenReader("scan.nii.gz");     // judged: header, grid, files
//   opened.reader->Read(pixels);                     // as many bytes as the header says
#pragma once

#include "images/FileFormat.h"
#include "images/RawImage.h"

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace selu {

/// What a file says of itself, before anyone has judged it.
struct StClaim {
  std::vector<ORVA::int64> extents; ///< as many as the file has
  ORVA::int64 components = 1;
  std::optional<EnPixel> pixel; ///< nothing: a type that is not read
  StGrid grid;
  /// The most bytes of pixels that a byte of the file can become; 0: what the format says.
  double ratio = 0;
  std::string series; ///< of DICOM: its unique identifier
};

class IImageReader {
public:
  IImageReader() = default;
  IImageReader(IImageReader const&) = delete;
  IImageReader& operator=(IImageReader const&) = delete;
  virtual ~IImageReader() = default;
  [[nodiscard]] virtual StClaim Claim() = 0;
  /// All pixels, x fastest, in the machine's byte order.
  virtual void Read(std::span<std::byte> pixels) = 0;
  /// Whether some slices (see SlicesOf) can be read without the others.
  [[nodiscard]] virtual bool ReadsSlabs() const { return false; }
  /// The slices from `first` on for which there is room.
  virtual void ReadSlab(ORVA::int64 first, std::span<std::byte> pixels);
};

/// By ITK.
[[nodiscard]] std::unique_ptr<IImageReader> MakeItkReader(std::filesystem::path const& path,
                                                          EnFormat format);

/// By libtiff: strips and tiles of integers and floating-point numbers of every width, packed in
/// every way that it knows; the pages of one size are the planes of a volume.
[[nodiscard]] std::unique_ptr<IImageReader> MakeTiffReader(std::filesystem::path const& path);

struct StOpened {
  EnFormat format = EnFormat::Nrrd;
  StHeader header;
  StGrid grid;
  std::string series;                       ///< of DICOM
  std::vector<std::filesystem::path> files; ///< the image first, then those with its pixels
  std::unique_ptr<IImageReader> reader;
};

/// Opens and judges a file; throws CAppError with a sentence, and whatever the readers throw.
[[nodiscard]] StOpened OpenReader(std::filesystem::path const& path);
/// The same for a folder of slices; of several DICOM series that with this identifier.
[[nodiscard]] StOpened OpenFolder(std::filesystem::path const& folder, std::string const& series);

} // namespace selu
