// The programs of docs/start.md, each in a function of its own.

#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Random/ExactVonMisesFisher.h>
#include <SeluUtils/Texture/Aggregation.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <pxlib2core/RandomSource.h>

#include <iostream>
#include <vector>

using namespace ORVA;

static CImage Ramp() {
  CImage image(IMAGE_GREY_8, CSize(16, 16, 16));
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  for (int64 z = 0; z < 16; ++z)
    for (int64 y = 0; y < 16; ++y)
      for (int64 x = 0; x < 16; ++x) pixels(x, y, z) = static_cast<std::uint8_t>(x + y + z);
  return image;
}

static void FirstTexture(CImage const& image) {
  CLevelImage const levels = CQuantizer::BinCount(8).Quantize(image);
  CAggregatedTexture texture(EnAggregation::Average3D, levels.Levels());
  texture.Count(levels);
  auto const values = texture.Values();
  for (std::size_t k = 0; k < values.size(); ++k)
    if (texture.Features()[k] == EnTextureFeature::Contrast)
      std::cout << "contrast " << values[k] << '\n';
}

static void FirstWalk() {
  std::vector<CTriple<int64>> const outline{{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {5, 3, 0}, {0, 9, 0}};
  CPolygonVisitor polygon(outline, 2, NEIGHBORHOOD_8, true);
  int64 points = 0, sum = 0;
  for (auto const& p : polygon) {
    ++points;
    sum += p.x;
  }
  std::cout << points << " pixels, mean x "
            << static_cast<double>(sum) / static_cast<double>(points) << '\n';
}

static void FirstDraw() {
  CRandomSource source(1, 0); // seed and stream
  CExactVonMisesFisher const bundle(20.0, CPolarCoordinates(1.0, 0.5));
  std::vector<CTriple<double>> directions(3);
  bundle.Fill(std::span(directions), source);
  for (auto const& d : directions) std::cout << d.x << ' ' << d.y << ' ' << d.z << '\n';
}

int main() {
  FirstTexture(Ramp());
  FirstWalk();
  FirstDraw();
}
