// What the soak test does over and over: public operations on objects that all threads share and on
// own ones. What an operation gives depends on its source of random numbers alone.
//
//   soak::StShared const shared;                             // read by all threads
//   CRandomSource source(seed, 17);
//   soak::CDigest digest;
//   soak::AllOperations()[0].run(shared, source, digest);    // the same digest in every thread
#pragma once

#include <SeluUtils/EllipsoidVisitor.h>
#include <SeluUtils/PolygonVisitor.h>
#include <SeluUtils/Random/AliasTable.h>
#include <SeluUtils/Random/ExactGamma.h>
#include <SeluUtils/Random/ExactNormal.h>
#include <SeluUtils/Random/ExactPoisson.h>
#include <SeluUtils/Random/ExactWatsonRotation.h>
#include <SeluUtils/SolidVisitor.h>
#include <SeluUtils/Texture/ObjectTexture.h>
#include <SeluUtils/Texture/PairCounter.h>
#include <SeluUtils/Texture/Quantizer.h>
#include <SeluUtils/Texture/TextureWindow.h>
#include <SeluUtils/Triple.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2image/Image.h>

#include <bit>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace soak {

using ORVA::CRandomSource;
using ORVA::int64;
using ORVA::uint64;
using Point = ORVA::CTriple<int64>;

/// A number that stands for everything that was added, in its order.
class CDigest {
public:
  void Add(uint64 word) noexcept { m_Value = (std::rotl(m_Value, 9) ^ word) * 0x9E3779B97F4A7C15u; }
  void Add(double number) noexcept { Add(std::bit_cast<uint64>(number)); }
  void Add(Point const& p) noexcept {
    Add(static_cast<uint64>(p.x));
    Add(static_cast<uint64>(p.y));
    Add(static_cast<uint64>(p.z));
  }
  void Add(std::string_view text) noexcept {
    for (char const c : text) Add(static_cast<uint64>(static_cast<unsigned char>(c)));
    Add(uint64{text.size()});
  }
  void Add(std::span<double const> numbers) noexcept {
    for (double const number : numbers) Add(number);
  }
  [[nodiscard]] uint64 Value() const noexcept { return m_Value; }

private:
  uint64 m_Value = 0;
};

/// From low to high, both included.
[[nodiscard]] inline int64 Between(CRandomSource& source, int64 low, int64 high) {
  return low + static_cast<int64>(source() % static_cast<uint64>(high - low + 1));
}
[[nodiscard]] inline Point Within(CRandomSource& source, int64 reach) {
  int64 const x = Between(source, -reach, reach), y = Between(source, -reach, reach);
  return {x, y, Between(source, -reach, reach)};
}
/// Any point but the origin.
[[nodiscard]] inline Point Way(CRandomSource& source, int64 reach) {
  Point p;
  while (p == Point()) p = Within(source, reach);
  return p;
}

/// What all threads read at a time.
struct StShared {
  StShared();

  ORVA::CImage gray, labels, reals; ///< 8 bits, 32 bits, float; 24 x 20 x 16
  ORVA::CLevelImage levels;         ///< of `reals`
  ORVA::CPairCounter pairs;         ///< of `levels`
  ORVA::CObjectTexture objects;
  ORVA::CTextureWindow window;
  ORVA::CQuantizer quantizer;
  ORVA::CSolidVisitor solid;
  ORVA::CPolygonVisitor polygon;
  ORVA::CEllipsoidVisitor ellipsoid;
  ORVA::CValueMap features;
  ORVA::CExactNormal normal{1.0, 2.5};
  ORVA::CExactGamma gamma{0.7, 2.0};
  ORVA::CExactPoisson poisson{37.5};
  ORVA::CExactWatsonRotation watson{8.0, ORVA::CPolarCoordinates(1.0, 0.5)};
  ORVA::CAliasTable alias{std::vector{1.0, 0.0, 2.5, 0.25}};
};

struct StOperation {
  char const* name;
  void (*run)(StShared const& shared, CRandomSource& source, CDigest& digest);
};

[[nodiscard]] std::vector<StOperation> WalkOperations();
[[nodiscard]] std::vector<StOperation> TextureOperations();
[[nodiscard]] std::vector<StOperation> OtherOperations();

[[nodiscard]] inline std::vector<StOperation> AllOperations() {
  std::vector<StOperation> all = WalkOperations();
  for (auto const& more : {TextureOperations(), OtherOperations()})
    all.insert(all.end(), more.begin(), more.end());
  return all;
}

} // namespace soak
