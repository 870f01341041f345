// The voxels of an image file in slabs, so that an image may be larger than memory.
//
//   CVolumeSource scan(OpenImage("scan.nrrd"));
//   for (StSlab const& slab : SlabsOf(scan.Size(), bytesPerSlice, {1, 1})) {
//     CRawImage const pixels = scan.Slab(slab.from, slab.to);   // its slices and their neighbors
//     ...
//   }
#pragma once

#include "base/Memory.h"
#include "images/ImageFile.h"

#include <memory>
#include <optional>
#include <vector>

namespace selu {

/// Slices from `first` up to but not including `last`, and those from `from` up to `to` that are
/// read with them.
struct StSlab {
  ORVA::int64 first = 0, last = 0;
  ORVA::int64 from = 0, to = 0;
};

/// How many slices a slab needs below and above its own.
struct StHalo {
  ORVA::int64 below = 0, above = 0;
};

/// The slabs of an image of that size, one after the other, each slice in one of them: as thick as
/// SlabBytes() allows, halo included, at so many bytes a slice, but never without a slice.
[[nodiscard]] std::vector<StSlab> SlabsOf(ORVA::CSize const& size, double bytesPerSlice,
                                          StHalo const& halo = {});

/// An opened image whose slices (rows of a 2D image) are read when they are asked for. What fits
/// into SlabBytes() is read once and kept, and so are images whose files know no slabs: packed
/// ones.
class CVolumeSource {
public:
  explicit CVolumeSource(COpenImage image) : m_Image(std::move(image)) {}

  [[nodiscard]] COpenImage& Image() noexcept { return m_Image; }
  [[nodiscard]] COpenImage const& Image() const noexcept { return m_Image; }
  [[nodiscard]] std::filesystem::path const& Path() const noexcept { return m_Image.Path(); }
  [[nodiscard]] ORVA::CSize Size() const noexcept { return m_Image.Header().size; }
  [[nodiscard]] EnPixel Pixel() const noexcept { return m_Image.Header().pixel; }
  [[nodiscard]] double BytesPerSlice() const noexcept;
  /// Whether all pixels are held once any have been read.
  [[nodiscard]] bool IsHeld() const { return !m_Image.ReadsSlabs() || Bytes() <= SlabBytes(); }

  /// The slices from `first` up to but not including `last`; their pixels stay until the next call.
  /// Throws CAppError as COpenImage::Read() does.
  [[nodiscard]] CRawImage Slab(ORVA::int64 first, ORVA::int64 last);
  /// All of them, in memory; refuses what does not fit.
  [[nodiscard]] CRawImage const& Whole();

private:
  [[nodiscard]] double Bytes() const noexcept { return ImageBytes(m_Image.Header()); }

  COpenImage m_Image;
  std::optional<CRawImage> m_Whole;
  std::shared_ptr<CSharedBuffer> m_Buffer;
};

} // namespace selu
