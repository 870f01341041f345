// The pieces of docs/guide, about masks, features of objects and distances, each in a function of
// its own.

#include <SeluUtils/CylinderMask.h>
#include <SeluUtils/Metric.h>
#include <SeluUtils/ValueHelper.h>
#include <pxlib2core/ValueVector.h>

#include <iostream>
#include <utility>
#include <vector>

using namespace ORVA;

static void Mask() {
  CImage image(IMAGE_GREY_16, CSize(512, 512, 100));
  CCylinderMask mask("mask", nullptr);
  mask.SetCylinderParameters(image, "Z", 255.5, 255.5, 240); // the axis, its place, the radius
  mask.MaskImageWithMetaInfoCylinder(image, 0);
}

static void Table() {
  CValueMap cells;
  cells.SetEntry("maximum label", CValueLong(2));
  cells.SetEntry("cell 1/volume [px]", CValueLong(12));
  cells.SetEntry("cell 1/status", CValueString("inside"));
  cells.SetEntry("cell 2/volume [px]", CValueLong(7));
  cells.SetEntry("cell 2/status", CValueString("border"));
  CImage table(IMAGE_GREY_F, CSize(1, 1));
  ConvertObjectBasedFeaturesIntoFeatureImage("cells", std::move(cells), "cell", table, {});
  for (auto const& key : table.Attributes().Entry("Image/y-keys").Vector())
    std::cout << key.String().Std() << '\n'; // cell, status, volume [px]: what the rows are
}

static void Mean(std::vector<CValueMap> const& features) {
  CValueMapWithOperators mean(features.front(), {"object"}); // numbers, but for this path
  for (std::size_t k = 1; k < features.size(); ++k) mean += features[k];
  mean /= static_cast<double>(features.size());
  std::cout << mean.Entry("volume").Double() << '\n';
}

static void Distances() {
  std::vector<double> const a{1, 1, 5}, b{9, 9, 5}, period{10, 10, 10};
  std::cout << CMetric::EuclideanDistance(a, b, period, EEdgeTreatment::Periodic)
            << '\n'; // sqrt(8)
  std::vector<std::vector<int64>> neighbors;
  CMetric::CalculateNeighbourTable(&neighbors, 3, 20, EEdgeTreatment::NoEdgeTreatment);
  std::cout << neighbors[0][26] << '\n'; // behind its 26 neighbors the cell itself, 0
}

int main() {
  Mask();
  Table();
  CValueMap one, two;
  one.SetEntry("volume", CValueDouble(3));
  two.SetEntry("volume", CValueDouble(5));
  Mean({one, two});
  Distances();
}
