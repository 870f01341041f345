// Texture of every object of a label image, over the pairs with both voxels in the object.
//
//   #include <iostream>
//   std::array<std::uint8_t, 4> const pixels = {1, 2, 2, 1};
//   CImageView const image(IMAGE_GREY_8, CSize(4), pixels.data());
//   std::array<std::uint32_t, 4> const objects = {7, 7, 9, 9};
//   CImageView const labels(IMAGE_GREY_32, CSize(4), objects.data());
//   CObjectTexture const texture(CLevelImage(image), labels);
//   CValueMap const map = texture.ToMap(texture.Compute());
//   std::cout << map.Entry("object 9/contrast").Double(); // prints 1
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Texture/Features.h>
#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace ORVA {

/// What the texture of objects is made of.
struct StObjectTextureOptions {
  /// The features to compute.
  std::vector<EnTextureFeature> features{c_ibsiFeatures.begin(), c_ibsiFeatures.end()};
  bool isSymmetric = true; ///< each pair counts in both orders
  /// The matrices of all displacements added, then the features; otherwise the mean of the features
  /// over the displacements that have pairs.
  bool isCombined = false;
  std::vector<CTriple<int64>> displacements; ///< empty: the neighbors at distance 1
};

/// One object: its label and its size.
struct StTextureObject {
  /// The object's label.
  std::uint32_t label = 0;
  /// The number of its voxels.
  int64 voxels = 0;
};

/// Features of each label, not of its box: a pair counts where both voxels have the label and a
/// level above 0. Label 0 is the background. Labels need not be connected, nor follow each other.
///
/// The image of labels is read once, when the object is made: O(voxels + r log r) for r runs of one
/// label along x, with 16 bytes for each run. Computing takes O(voxels of the objects x
/// displacements). Both images must stay as they are meanwhile.
class SELUUTILS_EXPORT CObjectTexture {
public:
  /// Labels of any integer type from 0 to 2^32 - 1. CExBadParam for floating-point labels, negative
  /// ones, images of different extents, and displacements with dz other than 0 in a 2D image.
  CObjectTexture(CLevelImage levels, IImage const& labels, StObjectTextureOptions options = {});

  /// In ascending order of the labels.
  [[nodiscard]] std::span<StTextureObject const> Objects() const noexcept { return m_Objects; }
  /// The features that are computed, in the order of their values.
  [[nodiscard]] std::span<EnTextureFeature const> Features() const noexcept {
    return m_Options.features;
  }

  /// The features of all objects, those of object k from k * Features().size() on: NaN for an
  /// object without pairs.
  [[nodiscard]] std::vector<double> Compute() const;
  /// The same of the objects from `first` up to but not including `last` into `values`. Any number
  /// of threads may compute parts at a time. CExBadParam for a range or a span that does not fit.
  void Compute(std::size_t first, std::size_t last, std::span<double> values) const;

  /// The map that the conversion into a feature image takes: "maximum label", "no. of objects" and,
  /// for each object, under `idKey`, a blank and its label, `idKey`, "status", "no. of voxels" and
  /// each feature under its name. CExBadParam for values of another number, and for a
  /// label above 2^31 - 1, which a map's integers do not hold.
  [[nodiscard]] CValueMap ToMap(std::span<double const> values,
                                std::string const& idKey = "object") const;

private:
  /// Voxels of one label that follow each other along the first axis.
  struct StRun {
    std::uint32_t label = 0;
    std::uint32_t length = 0;
    int64 first = 0; // number of the first voxel
  };
  class CWorker;
  void TakeDisplacements();
  void FindRuns();
  void FindObjects();

  CLevelImage m_Levels;
  CImageAccess m_Labels;
  IImage::CType m_LabelType;
  StObjectTextureOptions m_Options;
  // The axes in the order of the labels' strides, and what follows them.
  std::array<std::size_t, 3> m_Axes{0, 1, 2};
  std::array<int64, 3> m_Extents{};
  std::vector<std::array<int64, 3>> m_Steps; // the displacements
  std::vector<StRun> m_Runs;                 // by label, then by their first voxels
  std::vector<std::size_t> m_FirstRun;       // of each object, and the number of all
  std::vector<StTextureObject> m_Objects;
};

} // namespace ORVA
