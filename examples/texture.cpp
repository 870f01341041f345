#include <SeluUtils/Cooccurrence.h>
#include <iostream>

int main() {
  ORVA::CImage image(ORVA::IMAGE_GREY_8, ORVA::CSize(64, 64, 64));
  auto access = image.CreateAccess(true);
  for (std::size_t i = 0; i < image.Bytes(); ++i) access.WritableBase()[i] = std::byte(i * i >> 8);
  ORVA::CTriple<long> right(1, 0, 0);
  ORVA::CValueMap features;
  ORVA::CCooccurrence("texture", nullptr).ComputeFeatures(image, &right, &features);
  for (auto const& [name, value] : features)
    std::cout << name.ToString() << ": " << value.Double() << '\n';
}
