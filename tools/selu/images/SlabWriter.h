// Writing an image file one slab after the other, so that the image may be larger than memory.
//
//   CSlabWriter writer(file, {size, EnPixel::Float}, grid, {{"feature", "contrast"}});
//   for (...) writer.Write(bytes);                  // slices in their order, in parts of any size
//   writer.Finish();                                // file.Commit() is the caller's
#pragma once

#include "images/ImageFile.h"
#include "images/TiffWriter.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

namespace selu {

/// Writes NRRD, MetaImage, NIfTI and TIFF as the pixels come; a packed NIfTI, a PNG and what fits
/// into SlabBytes() is gathered first. The file is, byte for byte, that of WriteImage() with the
/// same pixels, and is read back to be sure, as there. Where the file is not committed, nothing has
/// been written.
class CSlabWriter {
public:
  /// Throws CAppError for what the format does not hold, and for an image that is to be gathered
  /// but larger than memory. The file must outlive the object.
  CSlabWriter(CAtomicFile& file, StHeader const& header, StGrid const& grid = {},
              ImageNotes notes = {});
  CSlabWriter(CSlabWriter&&) = default;
  CSlabWriter& operator=(CSlabWriter&&) = delete;
  ~CSlabWriter() = default;

  /// The next pixels; all together must be those of the image. Throws CAppError.
  void Write(std::span<std::byte const> bytes);
  /// After all pixels. Throws CAppError.
  void Finish();

private:
  void Open();
  [[nodiscard]] std::string Sentence() const;

  CAtomicFile* m_File;
  StHeader m_Header;
  StGrid m_Grid;
  ImageNotes m_Notes;
  std::size_t m_Written = 0;
  unsigned long m_Checksum = 0;
  std::optional<CRawImage> m_Gathered;
  std::unique_ptr<CTiffWriter> m_Tiff;
};

} // namespace selu
