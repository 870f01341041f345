// Gray levels of an array as Python's keyword arguments ask for them.
//
//   CRecipe const recipe(py::none(), py::float_(25), py::none(), py::none(), py::none());
//   StLevels const gray = LevelsOf(image, recipe, mask);   // bins of width 25 from the least value
#pragma once

#include "Arrays.h"

#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/Quantizer.h>

#include <optional>
#include <vector>

namespace selu_python {

/// levels, bin_width, bin_count, range and anchor of the functions of `texture`.
class CRecipe {
public:
  /// BadParameter for what does not go together.
  CRecipe(std::optional<ORVA::int64> levels, std::optional<double> binWidth,
          std::optional<ORVA::int64> binCount, std::optional<std::pair<double, double>> range,
          py::object const& anchor);

  /// Whether the values are levels as they are.
  [[nodiscard]] bool IsPlain() const noexcept { return !m_Quantizer; }
  /// Whether the levels depend on the values found.
  [[nodiscard]] bool NeedsRange() const noexcept {
    return m_Quantizer && m_Quantizer->NeedsRange();
  }
  /// The same recipe for all parts of an image with values of that range.
  [[nodiscard]] CRecipe Fit(ORVA::StValueRange const& range) const;
  /// How many, where the values are taken as they are and the caller says it.
  [[nodiscard]] std::optional<int> Levels() const noexcept { return m_Levels; }
  /// Needs !IsPlain().
  [[nodiscard]] ORVA::CQuantizer const& Quantizer() const { return *m_Quantizer; }

private:
  std::optional<int> m_Levels;
  std::optional<ORVA::CQuantizer> m_Quantizer;
};

struct StLevels {
  ORVA::CLevelImage levels;
  std::vector<double> edges; ///< of quantized levels, one more than there are
};

/// The mask of an image, bool or integers, 0 is outside; none for None.
class CMask {
public:
  /// BadParameter for floating-point numbers and for another shape than the image's.
  CMask(py::handle mask, ORVA::CSize const& image);
  [[nodiscard]] ORVA::StMask Get() const noexcept {
    return {m_View ? &*m_View : nullptr, std::nullopt};
  }
  [[nodiscard]] bool IsGiven() const noexcept { return m_View.has_value(); }
  /// Needs IsGiven().
  [[nodiscard]] ORVA::CImageView const& View() const { return *m_View; }

private:
  std::optional<ORVA::CImageView> m_View;
};

// What follows is called without the interpreter's lock; Ctrl-C ends it.

/// Least and greatest finite value within the mask.
[[nodiscard]] ORVA::StValueRange FindRange(ORVA::CImageView const& image, CMask const& mask);
/// Levels 1 .. n of an image; 0 is outside. Without a recipe the values are the levels and must be
/// integers from 0 on; bytes and 16-bit numbers without a mask are not copied.
[[nodiscard]] StLevels LevelsOf(ORVA::CImageView const& image, CRecipe const& recipe,
                                CMask const& mask);
/// The same for values as they are where 0 is a value as others: value v becomes level v + 1. So
/// many `levels`, or 256 for bytes and the greatest value plus one for others.
[[nodiscard]] ORVA::CLevelImage ValuesAsLevels(ORVA::CImageView const& image,
                                               std::optional<int> levels, CMask const& mask);
/// How many levels the values of an image are as they are; BadParameter for values that are none.
[[nodiscard]] int CountValues(ORVA::CImageView const& image, std::optional<int> levels,
                              CMask const& mask);

} // namespace selu_python
