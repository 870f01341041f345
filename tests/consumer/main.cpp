// Uses each installed library once: values, images, algorithms.
#include <SeluUtils/Cooccurrence.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>

#include <cstdio>

int main() {
  ORVA::CRandom::Obj().Seed(1);
  ORVA::CImage image(ORVA::IMAGE_GREY_8, ORVA::CSize(32, 32));
  auto access = image.CreateAccess(true);
  ORVA::CRandom::Obj().Rand(access.WritableBase(), image.Bytes());
  ORVA::CTriple<long> right(1, 0, 0);
  ORVA::CValueMap features;
  ORVA::CCooccurrence texture("texture", nullptr);
  texture.ComputeFeatures(image, &right, &features);
  std::printf("%zu features, entropy %g\n", features.Size(), features.Entry("Entropy").Double());
  try {
    texture.ComputeFeatures(image, nullptr, &features);
  } catch (ORVA::CExBadParam const& error) {
    std::printf("caught: %s\n", error.what());
    return features.Size() == 13 ? 0 : 1;
  }
  return 1;
}
