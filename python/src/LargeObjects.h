// The texture of objects that are too large to be counted between two looks for Ctrl-C.
//
//   CLargeObjects const large(levels, labels, texture.Objects(), options, watch);
//   if (!large.Compute(k, values)) texture.Compute(k, k + 1, values);
#pragma once

#include "Watch.h"

#include <SeluUtils/Texture/LevelImage.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <pxlib2image/ImageView.h>
#include <pxlib2image/Size.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>

namespace selu_python {

/// Objects from this size on may be large.
inline constexpr ORVA::int64 c_largeObject = ORVA::int64{1} << 22;

/// Counts an object box by box in a copy of its levels, which is as large as the object's box. So
/// Ctrl-C ends it, and whole rows are counted at a time. The values are those of CObjectTexture, to
/// the last bit. Objects that fill less than a 32nd of their boxes are not taken: their boxes cost
/// more than they do.
class CLargeObjects {
public:
  /// Reads the labels once if an object may be large. What is given must stay.
  CLargeObjects(ORVA::CLevelImage const& levels, ORVA::CImageView const& labels,
                std::span<ORVA::StTextureObject const> objects,
                ORVA::StObjectTextureOptions const& options, CWatch& watch);

  /// The features of an object, or false where it is not large.
  [[nodiscard]] bool Compute(std::uint32_t label, std::span<double> values) const;

private:
  struct StBox {
    ORVA::CPos low, high;
  };
  template <class T>
  void FindBoxes();
  [[nodiscard]] ORVA::CLevelImage LevelsOf(std::uint32_t label, StBox const& box) const;

  ORVA::CLevelImage const& m_Levels;
  ORVA::CImageView const& m_Labels;
  ORVA::StObjectTextureOptions const& m_Options;
  CWatch& m_Watch;
  std::map<std::uint32_t, StBox> m_Boxes; // of the large objects, by label
};

} // namespace selu_python
