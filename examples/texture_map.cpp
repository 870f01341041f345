// Texture around every pixel: maps of a picture of two textures, computed by two threads.

#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/Texture/TextureWindow.h>

#include <array>
#include <cstdint>
#include <iostream>
#include <thread>
#include <vector>

using namespace ORVA;

// Stripes on the left, blocks of 2 x 2 on the right.
static CImage MakeImage() {
  CImage image(IMAGE_GREY_16, CSize(96, 64));
  CImageAccess access = image.CreateAccess(true);
  auto* pixels = reinterpret_cast<std::uint16_t*>(access.WritableBase());
  for (int64 y = 0; y < 64; ++y)
    for (int64 x = 0; x < 96; ++x)
      *pixels++ = static_cast<std::uint16_t>((x < 48 ? x % 2 : (x / 2 + y / 2) % 2) * 1000);
  return image;
}

static CTextureWindow MakeWindow() {
  CTextureWindow window("texture map", nullptr);
  window.SetSides(CSize(15, 15));
  window.SetDisplacements(NeighborDisplacements(2)); // the mean over four directions
  window.SetFeatures(std::array{EnTextureFeature::Contrast, EnTextureFeature::JointEntropy});
  window.SetSymmetric(true);
  return window;
}

static void OneCall(CTextureWindow const& window, CImage const& image) {
  CLevelImage const levels = CQuantizer::BinCount(16).Quantize(image);
  std::vector<CImage> const maps = window.Maps(levels); // one of floats for each feature
  std::cout << maps.size() << " maps of " << maps[0].Size().x << " x " << maps[0].Size().y << '\n';
}

static void TwoThreads(CTextureWindow const& window, CLevelImage const& levels) {
  std::vector<float> upper(2 * 96 * 32), lower(2 * 96 * 32);
  std::thread other([&] { window.Compute(levels, {0, 32}, upper); });
  window.Compute(levels, {32, 64}, lower);
  other.join();
  std::cout << "contrast " << upper[31 * 96 + 24] << " on stripes, " << lower[72] << " on blocks\n";
}

int main() {
  CImage const image = MakeImage();
  CTextureWindow const window = MakeWindow();
  OneCall(window, image);
  TwoThreads(window, CQuantizer::BinCount(16).Quantize(image));
}
