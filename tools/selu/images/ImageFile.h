// Image files on their way in and out.
//
//   COpenImage scan = OpenImage("scan.nii.gz");          // header and grid, no pixels
//   CRawImage image = scan.Read();                       // the pixels in their own type
//   CheckImageOutput("out.nrrd", image.Pixel(), 3);      // before any work
//   WriteImage(atomicFile, image);                       // by the file's ending
#pragma once

#include "base/AtomicFile.h"
#include "base/Isolated.h"
#include "images/FileFormat.h"
#include "images/RawImage.h"

#include <pxlib2image/Image.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace selu {

/// An image file that has been opened and judged, once, by the process that will read its pixels:
/// what a damaged or hostile file can do is confined to that process, with limits on its time and
/// memory that follow from the file's size.
class COpenImage {
public:
  [[nodiscard]] std::filesystem::path const& Path() const noexcept { return m_Path; }
  [[nodiscard]] EnFormat Format() const noexcept { return m_Format; }
  [[nodiscard]] StHeader const& Header() const noexcept { return m_Header; }
  [[nodiscard]] StGrid const& Grid() const noexcept { return m_Grid; }
  /// The file itself, and those that its header names.
  [[nodiscard]] std::vector<std::filesystem::path> const& Files() const noexcept { return m_Files; }
  /// The pixels, in memory for one image. To be called once. Throws CAppError for a file that is
  /// damaged or cut off.
  [[nodiscard]] CRawImage Read();
  /// Whether some slices can be read without the others: of pixels that are not packed.
  [[nodiscard]] bool ReadsSlabs() const noexcept { return m_ReadsSlabs; }
  /// The slices from `first` up to but not including `last`, into a buffer that has room for them.
  /// As often as is wanted; throws like Read().
  void ReadSlab(ORVA::int64 first, ORVA::int64 last, CSharedBuffer const& buffer);

private:
  friend COpenImage OpenImage(std::filesystem::path const& path, std::string const& series);
  COpenImage(std::filesystem::path path, std::string const& series);

  std::filesystem::path m_Path;
  double m_Bytes; // of the file
  CIsolated m_Reader;
  EnFormat m_Format = EnFormat::Nrrd;
  StHeader m_Header;
  StGrid m_Grid;
  bool m_ReadsSlabs = false;
  std::vector<std::filesystem::path> m_Files;
};

/// What commands say of an image that they take, and of the option --series.
inline constexpr char c_imageHelp[] =
    "PNG, TIFF, NRRD, MetaImage, NIfTI or DICOM file, or a folder of PNG, TIFF or DICOM slices";
inline constexpr char c_seriesHelp[] =
    "which DICOM series of a folder to take, where it has several";

/// Throws CAppError, with one sentence that names the file, for whatever is not a whole image with
/// one component per pixel, two or three dimensions (further extents of 1 are left out) and at
/// least one pixel. Nothing that a file merely claims is allocated: the extents must be possible
/// for the file's size and for the machine's memory.
/// A folder is taken for the slices of a volume: PNG or TIFF files in the order of the numbers in
/// their names, or a DICOM series in the order of its positions; of several that with this
/// identifier.
[[nodiscard]] COpenImage OpenImage(std::filesystem::path const& path,
                                   std::string const& series = {});
/// Both at once.
[[nodiscard]] CRawImage ReadImage(std::filesystem::path const& path);

/// Keys and values that go into an image file beside the pixels.
using ImageNotes = std::vector<std::pair<std::string, std::string>>;

/// Refuses, with CAppError, an output that is one of the image's files, under whatever name.
void RefuseOverwriting(std::filesystem::path const& output, COpenImage const& image);
/// Refuses, with CAppError, what WriteImage could not write under this name: an unknown ending or a
/// pixel type or dimension that the format does not hold.
void CheckImageOutput(std::filesystem::path const& path, ORVA::IImage::CType type, int dimension);
void CheckImageOutput(std::filesystem::path const& path, EnPixel pixel, int dimension);
/// Writes a framework image of 8, 16 or 32-bit or floating-point pixels to the file's temporary and
/// reads it back to be sure; the file is not committed. Formats that hold no grid leave it out. The
/// notes become key-values of NRRD and MetaImage and the description of a TIFF; others hold none.
void WriteImage(CAtomicFile& file, ORVA::CImage const& image, StGrid const& grid = {},
                ImageNotes const& notes = {});
/// The same for pixels of any type, with the image's grid.
void WriteImage(CAtomicFile& file, CRawImage const& image, ImageNotes const& notes = {});

} // namespace selu
