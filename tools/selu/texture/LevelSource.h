// The gray levels of an image file in slabs.
//
//   CVolumeSource image(OpenImage("scan.nrrd"));
//   CLevelSource source(image, nullptr, recipe);            // finds the range where one is needed
//   for (StSlab const& slab : source.Slabs({1, 1})) {
//     ORVA::CLevelImage const levels = source.Levels(slab);
//     ...
//   }
//   source.RequireVoxels();
#pragma once

#include "images/VolumeSource.h"
#include "texture/LevelOptions.h"

#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/Quantizer.h>

#include <memory>
#include <vector>

namespace selu {

/// The pixels as a framework image, which lives no longer than they do; integers of 64 bits as
/// floating-point numbers. Throws CAppError for one of those that no such number is equal to.
[[nodiscard]] std::unique_ptr<ORVA::IImage> ValuesOf(CRawImage const& image,
                                                     std::filesystem::path const& path);
/// The same of the labels of a mask: floating-point numbers and integers of 64 bits become integers
/// of 32. Throws CAppError for those that are none.
[[nodiscard]] std::unique_ptr<ORVA::IImage> LabelsOf(CRawImage const& mask,
                                                     std::filesystem::path const& path);

/// Levels are those of the whole image, whatever the slab.
class CLevelSource {
public:
  /// The sources must outlive the object; the mask may be null. Reads all pixels once where the
  /// levels follow from the values found. Throws CAppError for pixels that the recipe does not fit.
  CLevelSource(CVolumeSource& image, CVolumeSource* mask, StLevelRecipe const& recipe);

  [[nodiscard]] ORVA::CSize Size() const noexcept { return m_Image.Size(); }
  [[nodiscard]] int Count() const { return m_Quantizer.Levels(); }
  [[nodiscard]] std::vector<double> Edges() const { return m_Quantizer.Edges(); }
  /// What a slice takes: its pixels, those of the mask, and its levels.
  [[nodiscard]] double BytesPerSlice() const noexcept;
  /// With the halo for what is done with the levels.
  [[nodiscard]] std::vector<StSlab> Slabs(StHalo const& halo) const;
  /// The levels of a slab's slices `from` .. `to`.
  [[nodiscard]] ORVA::CLevelImage Levels(StSlab const& slab);
  /// Throws CAppError where none of the slabs had a voxel within.
  void RequireVoxels() const;

private:
  template <class Use>
  auto UseSlices(ORVA::int64 from, ORVA::int64 to, Use use);

  CVolumeSource& m_Image;
  CVolumeSource* m_Mask;
  std::optional<ORVA::int64> m_Label;
  ORVA::CQuantizer m_Quantizer;
  bool m_HasVoxels = false, m_IsMasked = false;
};

} // namespace selu
