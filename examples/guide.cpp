// The pieces of docs/guide, each in a function of its own.

#include <SeluUtils/Cooccurrence.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>
#include <pxlib2image/HeaderTools.h>

#include <cstdint>
#include <cstdio>
#include <iostream>
#include <span>

using namespace ORVA;

static CImage MakeImage() {
  CImage image(IMAGE_GREY_16, CSize(128, 128, 32));
  auto const pixels = image.CreateAccess(true).As<std::uint16_t>();
  std::uint16_t next = 0;
  for (int64 z = 0; z < 32; ++z)
    for (int64 y = 0; y < 128; ++y)
      for (std::uint16_t& pixel : pixels.Row(y, z)) pixel = next++;
  return image;
}

static void AllDirections(CImage const& image) {
  CCooccurrence texture("texture", nullptr);
  CImage matrices(IMAGE_GREY_32, CSize(13, 256, 256));
  texture.ComputeMatrixAllDirections(matrices, image);
  auto const counts = matrices.CreateAccess(false).As<std::uint32_t const>();
  std::cout << counts(5, 10, 20) << " pairs of levels 10 and 20 in direction 5\n";
}

static void OneDirection(CImage const& image) {
  CCooccurrence texture("texture", nullptr);
  CTriple<long> direction(3, -2, 1);
  CValueMap features;
  texture.ComputeFeatures(image, &direction, &features);
  std::cout << "entropy " << features.Entry("Entropy").Double() << '\n';
}

static void Errors(CImage const& image) {
  try {
    CTriple<long> tooLong(128, 0, 0);
    CValueMap features;
    CCooccurrence("texture", nullptr).ComputeFeatures(image, &tooLong, &features);
  } catch (CException const& error) {
    std::cerr << error.what() << " (" << error.Location().function << ")\n";
  }
}

struct CPercent : IProgressObserver {
  void Start(int64 steps, char const*) override { all = steps; }
  void Advance() override { std::fprintf(stderr, "%lld %%\n", 100LL * ++done / all); }
  bool IsCancelled() override { return false; } // true ends the operation at its next step
  int64 all = 1, done = 0;
};

static void Progress(CImage const& image) {
  CPercent percent;
  CCooccurrence texture("texture", nullptr);
  texture.SetProgressObserver(&percent);
  CImage matrices(IMAGE_GREY_32, CSize(13, 256, 256));
  texture.ComputeMatrixAllDirections(matrices, image);
}

static void Values() {
  CValueMap features;
  features.SetEntry("object 1/volume [px]", CValueLong(12));
  features.SetEntry("object 1/mean", CValueDouble(0.5));
  CValueMap copy = features; // deep
  copy.Entry("object 1/mean").Double() = 0.75;
  for (auto const& [key, value] : copy.Entry("object 1").Map())
    std::cout << key.ToString() << " is a " << value.TypeName() << '\n';
  if (CValue const* found = features.Find("object 2/mean")) std::cout << found->Double() << '\n';
}

static void MetaInformation(CImage& image) {
  CSeluHeaderTools::SetMetaInfo(image, CSeluHeaderTools::c_sMetaMinMax,
                                CValueVector(CValueDouble(0), CValueDouble(65535)));
  if (auto const* minMax = CSeluHeaderTools::FindMetaInfo(image, CSeluHeaderTools::c_sMetaMinMax))
    std::cout << "up to " << minMax->Vector().Entry(1).Double() << '\n';
}

static void Noise(CImage& image) {
  CRandom::Obj().Seed(42);
  CRandom::Obj().Rand(image.CreateAccess(true).WritableBase(), image.Bytes());
}

int main() {
  CImage image = MakeImage();
  AllDirections(image);
  OneDirection(image);
  Errors(image);
  Progress(image);
  Values();
  MetaInformation(image);
  Noise(image);
}
