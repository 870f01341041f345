// Two rotations that differ, and mixtures of them.
//
//   EXPECT_TRUE(test::TwoFixed(1, 0)() == test::c_first);
#pragma once

#include <SeluUtils/Random/FixRotation.h>
#include <SeluUtils/Random/MixtureRotation.h>

namespace test {

inline ORVA::CEulerRotation const c_first(0.1, 0.2, 0.3), c_second(1, 2, 3);

inline ORVA::CMixtureRotation TwoFixed(double firstWeight, double secondWeight) {
  ORVA::CMixtureRotation mixture(2);
  mixture.Add(new ORVA::CFixRotation(c_first), firstWeight);
  mixture.Add(new ORVA::CFixRotation(c_second), secondWeight);
  return mixture;
}

} // namespace test
