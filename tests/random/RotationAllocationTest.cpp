// Rotations and their draws stay off the heap.
#include <SeluUtils/Random/ConstantValue.h>
#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/GirdleRotation.h>
#include <SeluUtils/Random/IsotropicRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>
#include <SeluUtils/Random/VonMisesFisher.h>
#include <SeluUtils/Random/WatsonRotation.h>

#include "support/FailingAllocation.h"

#include <gtest/gtest.h>

#include <memory>

using namespace ORVA;

namespace {

// Their number, found by failing each of them in turn.
template <class Operation>
long AllocationsOf(Operation operation) {
  return test::FailEveryAllocation(operation, [] {});
}

} // namespace

TEST(RotationAllocation, DrawsNeedNone) {
  CPolarCoordinates const mean(1.0, 2.5);
  CEulerRotation const rotation(0.1, 0.2, 0.3);
  CConstantValue<CEulerRotation> constant(rotation);
  CFixRotation fixed(rotation);
  CIsotropicRotation isotropic;
  CGirdleRotation girdle(0.3, mean);
  CVonMisesFisher fisher(5, mean);
  CWatsonRotation cluster(5, mean), across(-5, mean), even(0, mean);
  CMixtureRotation mixture(2);
  mixture.Add(std::make_unique<CVonMisesFisher>(fisher), 0.5);
  mixture.Add(std::make_unique<CIsotropicRotation>(), 0.5);
  for (IRandomGenerator<CEulerRotation>* const generator :
       std::initializer_list<IRandomGenerator<CEulerRotation>*>{
           &constant, &fixed, &isotropic, &girdle, &fisher, &cluster, &across, &even, &mixture})
    EXPECT_EQ(AllocationsOf([&] {
                for (int i = 0; i < 100; ++i) (void)(*generator)().getDirectionVector();
              }),
              0);
  EXPECT_EQ(AllocationsOf([&] { (void)fisher(2, mean, 3, CVonMisesFisher::zaxis); }), 0);
}

TEST(RotationAllocation, CopiesAndReadersNeedNone) {
  CEulerRotation const rotation(0.1, 0.2, 0.3);
  EXPECT_EQ(AllocationsOf([&] {
              CEulerRotation copy(rotation);
              copy = rotation;
              (void)copy.getRotationMatrix();
              (void)copy.getInverseRotationMatrix();
              (void)copy.getEulerAngles();
              (void)copy.rotateVector(copy.backRotateVector({1, 2, 3}));
            }),
            0);
}

TEST(RotationAllocation, OnlyLargerMatricesTakeTheHeap) {
  EXPECT_EQ(AllocationsOf([] { (void)CMatrix<double>(3, 3); }), 0);
  EXPECT_GT(AllocationsOf([] { (void)CMatrix<double>(2, 5); }), 0);
}
