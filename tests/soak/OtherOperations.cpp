// Draws, value maps, feature images, masks, distances, texts, errors; and what all threads share.
#include "soak/Operations.h"

#include <SeluUtils/CylinderMask.h>
#include <SeluUtils/EulerRotation.h>
#include <SeluUtils/Metric.h>
#include <SeluUtils/Random/ExactIsotropicRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/ValueHelper.h>
#include <SeluUtils/WindowVisitor.h>
#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>
#include <pxlib2core/String.h>
#include <pxlib2core/ValueVector.h>

#include <array>
#include <cstddef>
#include <memory>
#include <string>

namespace soak {

namespace {

using namespace ORVA;

void Draws(StShared const& shared, CRandomSource& source, CDigest& digest) {
  for (int k = 0; k < 50; ++k) {
    digest.Add(shared.normal(source));
    digest.Add(shared.gamma(source));
    digest.Add(static_cast<double>(shared.poisson(source)));
    digest.Add(uint64{shared.alias(source)});
  }
  std::array<CTriple<double>, 10> directions;
  shared.watson.Fill(std::span(directions), source);
  for (auto const& d : directions) digest.Add(std::array{d.x, d.y, d.z});
  // The shared source gives each thread numbers of its own: they do not count here.
  static_cast<void>(CRandom::Obj().Rand64());
  static_cast<void>(shared.normal());
}

void Rotations(StShared const&, CRandomSource& source, CDigest& digest) {
  CMixtureRotation mixture(2);
  mixture.Add(std::make_unique<CVonMisesFisher>(50.0, CVonMisesFisher::zaxis), 0.75);
  mixture.Add(std::make_unique<CIsotropicRotation>(), 0.25);
  for (int k = 0; k < 10; ++k) {
    CEulerRotation const rotation = mixture(source);
    CTriple<double> const v = rotation.backRotateVector(rotation.rotateVector({1.0, 2.0, 3.0}));
    digest.Add(std::array{v.x, v.y, v.z});
    digest.Add(rotation.ToString());
  }
}

void Values(StShared const& shared, CRandomSource& source, CDigest& digest) {
  CValueMap own = shared.features;
  own.SetEntry("object 2/added/" + std::to_string(Between(source, 0, 9)),
               CValueLong(static_cast<std::int32_t>(Between(source, 0, 99))));
  std::vector<std::string> keys;
  ExtractKeys(own, keys, static_cast<int>(Between(source, 0, 3)), {"object 1/x"});
  for (auto const& key : keys) digest.Add(key);
  CValueMapWithOperators mean(shared.features, {});
  mean += own;
  mean /= 2;
  for (auto const& key : mean.m_Keys) digest.Add(mean.Entry(key).Double());
}

void Tables(StShared const& shared, CRandomSource&, CDigest& digest) {
  CImage image(IMAGE_GREY_F, CSize(1, 1));
  ConvertObjectBasedFeaturesIntoFeatureImage("soak", shared.features, "object", image, {});
  auto const pixels = image.CreateAccess(false).As<float const>();
  for (int64 y = 0; y < image.Size().y; ++y)
    for (float const pixel : pixels.Row(y)) digest.Add(static_cast<double>(pixel));
}

void Masks(StShared const& shared, CRandomSource& source, CDigest& digest) {
  CImage own = shared.gray;
  CCylinderMask mask("soak", nullptr);
  char const* const axes[] = {"X", "Y", "Z"};
  mask.SetCylinderParameters(own, axes[Between(source, 0, 2)], 9.5, 8.0,
                             static_cast<double>(Between(source, 1, 10)));
  mask.MaskImageWithMetaInfoCylinder(own, 3);
  auto const pixels = own.CreateAccess(false).As<std::uint8_t const>();
  for (int64 y = 0; y < own.Size().y; ++y)
    for (std::uint8_t const pixel : pixels.Row(y, 7)) digest.Add(uint64{pixel});
}

void Distances(StShared const&, CRandomSource& source, CDigest& digest) {
  Point const a = Within(source, 50), b = Within(source, 50);
  std::vector<double> const from{static_cast<double>(a.x), static_cast<double>(a.y)};
  std::vector<double> const to{static_cast<double>(b.x), static_cast<double>(b.y)};
  digest.Add(CMetric::EuclideanDistance(from, to, {120, 130}, EEdgeTreatment::Periodic));
  std::vector<std::vector<int64>> table;
  CMetric::CalculateNeighbourTable(&table, 3, Between(source, 1, 4),
                                   EEdgeTreatment::NoEdgeTreatment);
  for (auto const& row : table)
    for (int64 const cell : row) digest.Add(static_cast<uint64>(cell));
}

void Texts(StShared const&, CRandomSource& source, CDigest& digest) {
  int64 const number = Between(source, -1'000'000, 1'000'000);
  CString text("%2 of %1, %1");
  text.Arg(number).Arg(static_cast<double>(number) / 3);
  digest.Add(text.Std());
  try {
    static_cast<void>(
        CQuantizer::Range(static_cast<double>(number), static_cast<double>(number), 5));
  } catch (CException const& error) {
    digest.Add(error.what());
  }
}

} // namespace

std::vector<StOperation> OtherOperations() {
  return {{"draws", Draws}, {"rotations", Rotations}, {"values", Values}, {"tables", Tables},
          {"masks", Masks}, {"distances", Distances}, {"texts", Texts}};
}

} // namespace soak
