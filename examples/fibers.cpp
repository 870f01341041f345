// A volume of fibers with random directions, and their direction found again by texture.

#include <SeluBase/Neighborhood.h>
#include <SeluUtils/BresenhamVisitor.h>
#include <SeluUtils/Cooccurrence.h>
#include <SeluUtils/Random/RandomGamma.h>
#include <SeluUtils/Random/UniformPoint.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Walker.h>
#include <pxlib2core/Random.h>
#include <pxlib2image/Image.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>
#include <numbers>

using namespace ORVA;

static void Draws() {
  CRandom::Obj().Seed(1);
  CRandomGamma const size(2.5, 1.0); // shape and rate
  CVonMisesFisher direction(20.0, CPolarCoordinates(std::numbers::pi / 2, std::numbers::pi / 4));
  for (int i = 0; i < 3; ++i) {
    CEulerRotation const rotation = direction();
    CTriple<double> const d = rotation.getDirectionVector();
    std::cout << size() << " along (" << d.x << ", " << d.y << ", " << d.z << ")\n";
  }
}

static CTriple<int64> Voxel(CTriple<double> const& p) {
  return {std::lround(p.x), std::lround(p.y), std::lround(p.z)};
}

static CImage Fibers(IRotationGenerator& direction, CSize const& size, int count) {
  CImage image(IMAGE_GREY_8, size);
  auto const pixels = image.CreateAccess(true).As<std::uint8_t>();
  CUniformPoint const place({64.0, 64.0, 64.0});
  for (int i = 0; i < count; ++i) {
    CTriple<double> const middle = place();
    CTriple<double> const half = direction().getDirectionVector() * 120.0;
    CBresenhamVisitor line(Voxel(middle - half), Voxel(middle + half), 3, NEIGHBORHOOD_26, true);
    for (auto const& p : Points(line)) {
      bool const inside =
          p.x >= 0 && p.x < size.x && p.y >= 0 && p.y < size.y && p.z >= 0 && p.z < size.z;
      if (inside) pixels(p) = 255;
    }
  }
  return image;
}

// The fixed direction along which the gray values differ least.
static CTriple<long> Anisotropy(CImage const& image) {
  CCooccurrence texture("texture", nullptr);
  CTriple<long> best;
  double least = std::numeric_limits<double>::infinity();
  for (CTriple<long> direction : CCooccurrence::m_cDirections) {
    CValueMap features;
    texture.ComputeFeatures(image, &direction, &features);
    double const contrast = features.Entry("Contrast").Double();
    if (contrast < least) best = direction;
    least = std::min(least, contrast);
  }
  return best;
}

int main() {
  Draws();
  CVonMisesFisher direction(100.0, CPolarCoordinates(std::numbers::pi / 2, std::numbers::pi / 4));
  CTriple<long> const d = Anisotropy(Fibers(direction, CSize(64, 64, 64), 400));
  std::cout << "fibers along " << d.x << ',' << d.y << ',' << d.z << '\n';
  return d == CTriple<long>(1, 1, 0) ? 0 : 1;
}
