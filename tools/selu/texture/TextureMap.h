// Maps of texture: the features of the window around every voxel, and their picture.
//
//   std::vector<ORVA::CImage> const maps = ComputeMaps(window, gray.levels, 2);
//   file.Write(DrawMaps({"brick.png", "window 15 x 15"}, window.Features(), maps, ".png"));
#pragma once

#include <SeluUtils/Texture/TextureWindow.h>

#include <span>
#include <string>
#include <vector>

namespace selu {

/// One 32-bit floating-point image for each feature. Bands of rows (slices) are shared out among
/// the threads; the maps are the same with any number. Throws CAppError where they do not fit into
/// memory.
[[nodiscard]] std::vector<ORVA::CImage> ComputeMaps(ORVA::CTextureWindow& window,
                                                    ORVA::CLevelImage const& levels, int threads);

/// What stands above the panels.
struct StMapTitle {
  std::string image, text;
};

/// A panel with a color bar for each feature, in 3D of the middle slice: the bytes of a PNG or, for
/// the ending .svg, an SVG file. Windows without pairs are left pale.
[[nodiscard]] std::string DrawMaps(StMapTitle const& title,
                                   std::span<ORVA::EnTextureFeature const> features,
                                   std::span<ORVA::CImage const> maps, std::string const& ending);

} // namespace selu
