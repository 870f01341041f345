// Maps of texture: the features of the window around every voxel, written slab by slab, and their
// picture.
//
//   CMapPanels panels(window.Features().size(), window.MapSize(image.Size()));
//   ComputeMaps(window, source, threads, [&](std::size_t feature, ORVA::int64 first, auto values) {
//     writers[feature].Write(std::as_bytes(values));
//     panels.Add(feature, first, values);
//   });
//   file.Write(DrawMaps({"brick.png", "window 15 x 15"}, window.Features(), panels, ".png"));
#pragma once

#include "texture/LevelSource.h"

#include <SeluUtils/Texture/TextureWindow.h>

#include <functional>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace selu {

/// Takes the pixels of some slices of a feature's map, from `first` on.
using TakeMapSlices =
    std::function<void(std::size_t feature, ORVA::int64 first, std::span<float const> values)>;

/// Calls take() for all slices (rows of a 2D map) of each feature in their order. Slices are shared
/// out among the threads; the maps are the same with any number.
void ComputeMaps(ORVA::CTextureWindow& window, CLevelSource& source, int threads,
                 TakeMapSlices const& take);

/// The grid on which the windows of an image lie.
[[nodiscard]] StGrid MapGrid(StGrid grid, ORVA::CTextureWindow const& window);

/// What is shown of maps: of each the middle slice, thinned out to what a panel shows.
class CMapPanels {
public:
  CMapPanels(std::size_t features, ORVA::CSize const& size);
  void Add(std::size_t feature, ORVA::int64 first, std::span<float const> values);

  struct StPanel {
    std::vector<float> values;
    float low = std::numeric_limits<float>::infinity(), high = -low; ///< none: low > high
  };
  [[nodiscard]] ORVA::CSize const& Size() const noexcept { return m_Size; }
  [[nodiscard]] int Columns() const noexcept { return m_Columns; }
  [[nodiscard]] std::vector<StPanel> const& Panels() const noexcept { return m_Panels; }

private:
  ORVA::CSize m_Size;
  ORVA::int64 m_Step;
  int m_Columns;
  std::vector<StPanel> m_Panels;
};

/// What stands above the panels.
struct StMapTitle {
  std::string image, text;
};

/// A panel with a color bar for each feature: the bytes of a PNG or, for the ending .svg, an SVG
/// file. Windows without pairs are left pale.
[[nodiscard]] std::string DrawMaps(StMapTitle const& title,
                                   std::span<ORVA::EnTextureFeature const> features,
                                   CMapPanels const& maps, std::string const& ending);

} // namespace selu
