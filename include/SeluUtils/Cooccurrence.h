// Texture of a gray-value image: co-occurrence matrix and Haralick features.
//
//   #include <iostream>
//   CImage image(IMAGE_GREY_8, CSize(64, 64));                      // all black
//   CTriple<long> right(1, 0, 0);
//   CValueMap features;
//   CCooccurrence("texture", nullptr).ComputeFeatures(image, &right, &features);
//   std::cout << features.Entry("Second Angular Moment").Double();  // prints 1
#pragma once

#include <SeluBase/Algorithm.h>
#include <SeluUtils/Export.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace ORVA {

/// Gray-level co-occurrence: how often gray level j stands a given displacement away from gray
/// level i. The matrix C is not symmetrized: a direction and its opposite give transposed matrices.
///
/// The 256 gray levels are the highest byte of an unsigned 8, 16 or 32-bit pixel; nothing is scaled
/// to the range of the values, so a 16-bit image with all values below 256 has the one level 0.
/// Only pairs with both voxels inside the image count. Counting takes O(voxels), the features
/// O(256 * 256), whatever the image.
///
/// A direction is the displacement (dx, dy, dz) from the first voxel of a pair to the second, in
/// voxels; each component must fit 32 bits, and dz must be 0 for a 2D image. A null direction or
/// map, or such a component, is refused with CExBadParam before anything is counted. A count above
/// 2^32 - 1 in one cell of the matrix ends an operation with a CException; the number of voxels is
/// not limited. Images of any type other than IMAGE_GREY_8, _16 and _32 are refused.
///
/// R. M. Haralick, K. Shanmugam and I. Dinstein, "Textural Features for Image Classification",
/// IEEE Transactions on Systems, Man, and Cybernetics SMC-3 (1973) 610-621.
///
/// Copies are deep. One object serves one thread at a time.
class SELUUTILS_EXPORT CCooccurrence : public CAlgorithm {
public:
  /// The number of gray levels, 256.
  static constexpr int64 m_cGreyLevels = 256;

  /// The displacements of ComputeMatrixAllDirections, in the order of the output's slices: one of
  /// each opposite pair of the 26 neighbors; the first four are those of a 2D image.
  static constexpr std::array<CTriple<long>, 13> m_cDirections = {{{1, 0, 0},
                                                                   {1, 1, 0},
                                                                   {0, 1, 0},
                                                                   {1, -1, 0},
                                                                   {1, 0, 1},
                                                                   {1, 1, 1},
                                                                   {0, 1, 1},
                                                                   {1, -1, 1},
                                                                   {1, 0, -1},
                                                                   {1, 1, -1},
                                                                   {0, 1, -1},
                                                                   {1, -1, -1},
                                                                   {0, 0, 1}}};
  /// How many of them an image of dimension 1, 2 or 3 has: 1, 4 or 13; 0 for another dimension.
  [[nodiscard]] static constexpr int64 NumberOfDirections(int dimension) noexcept {
    return dimension == 3 ? 13 : dimension == 2 ? 4 : dimension == 1 ? 1 : 0;
  }

  /// The features' names, in the order of their computation.
  static constexpr std::array<char const*, 13> m_cFeatureNames = {
      "Contrast",
      "Correlation",
      "Difference Variance",
      "Difference Entropy",
      "Entropy",
      "Inverse Difference Moment",
      "Information Measure of Correlation 1",
      "Information Measure of Correlation 2",
      "Second Angular Moment",
      "Sum Average",
      "Sum Entropy",
      "Sum Variance",
      "Variance"};

  /// The values of the features, in the order of their names.
  using CFeatures = std::array<double, m_cFeatureNames.size()>;

  /// Allocates all arrays, about 400 KiB, once for the object's life.
  CCooccurrence(char const* name, IObject const* parent);
  CCooccurrence(CCooccurrence const& other);
  CCooccurrence& operator=(CCooccurrence const& other);
  ~CCooccurrence() override;

  /// Counts the pairs of `in` and writes the count C[i][j] to the pixel (0, i, j) of `out`, which
  /// must be an IMAGE_GREY_32 of size (1, 256, 256). `in` may be 2D or 3D.
  void ComputeMatrix(IImage& out, IImage const& in, CTriple<long>* direction);
  /// The same for the fixed directions: matrix s goes to the pixels (s, i, j) of `out`, which must
  /// have size (4, 256, 256) for a 2D and (13, 256, 256) for a 3D image. `in` must be an
  /// IMAGE_GREY_8 or IMAGE_GREY_16.
  void ComputeMatrixAllDirections(IImage& out, IImage const& in);
  /// Counts the pairs of `in` and sets the 13 features into the map, each a CValueDouble under its
  /// name (m_cFeatureNames). Other entries of the map stay.
  ///
  /// Logarithms are natural; means and moments carry factors 1/256 and 1/511, and the correlation
  /// divides by one weighted and one unweighted deviation, so the values are this library's own and
  /// comparable only among themselves. A displacement that leaves no pair (exactly the image's
  /// width) throws CException; a longer one gives features that are all 0.
  ///
  /// The counts are exact. A feature differs from its formula by less than 1e-12 of its value, or
  /// by less than 1e-12 where it is within 1e-3 of zero; of Correlation and Information Measure of
  /// Correlation 1, whose formulas end in a difference, by less than 1e-12 of the larger of its
  /// terms. Information Measure of Correlation 2 is exactly 0 where the levels of a pair are
  /// independent. The same bits come from GCC and Clang. Where memory runs out, the map stays as it
  /// was.
  void ComputeFeatures(IImage const& in, CTriple<long>* direction, CValueMap* features);
  /// ComputeMatrix and ComputeFeatures from one count.
  void ComputeMatrixAndFeatures(IImage& out, IImage const& in, CTriple<long>* direction,
                                CValueMap* features);

  /// The same with the direction by value, and the features as an array: features[k] is the one
  /// called m_cFeatureNames[k]. Errors as above.
  void ComputeMatrix(IImage& out, IImage const& in, CTriple<long> direction);
  [[nodiscard]] CFeatures ComputeFeatures(IImage const& in, CTriple<long> direction);
  CFeatures ComputeMatrixAndFeatures(IImage& out, IImage const& in, CTriple<long> direction);

private:
  struct StArrays;

  CFeatures CountFeatures(IImage const& in, CTriple<long> direction, CValueMap* map,
                          char const* function);
  CFeatures CountMatrixAndFeatures(IImage& out, IImage const& in, CTriple<long> direction,
                                   CValueMap* map, char const* function);
  void ProcessMatrix(IImage const& in, CTriple<long> direction);
  void DataToImage(IImage& out) const;
  void DataToImage(IImage& out, int slice) const;
  void PrepareArrays(double N);
  CFeatures ProcessMap(CValueMap* map) const;

  std::unique_ptr<StArrays> m_Arrays;
};

} // namespace ORVA
