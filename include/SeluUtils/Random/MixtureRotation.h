// A mixture of rotation generators, each with its own weight.
//
//   #include <SeluUtils/Random/IsotropicRotation.h>
//   #include <SeluUtils/Random/VonMisesFisher.h>
//   CMixtureRotation mixture(2);
//   mixture.Add(std::make_unique<CVonMisesFisher>(50.0, CVonMisesFisher::zaxis), 0.75);
//   mixture.Add(std::make_unique<CIsotropicRotation>(), 0.25);
//   CEulerRotation const r = mixture();
#pragma once

#include <SeluUtils/Export.h>
#include <SeluUtils/Random/RandomUniform.h>
#include <SeluUtils/Random/RotationGenerator.h>
#include <pxlib2core/Types.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace ORVA {

/// Owns its generators; copies are deep. A draw takes one uniform number to choose the generator,
/// the first whose cumulated weight reaches it, and then that generator's draw.
class SELUUTILS_EXPORT CMixtureRotation : public IRotationGenerator {
public:
  /// A mixture of n generators, to be given by n calls of Add.
  explicit CMixtureRotation(std::size_t n);
  CMixtureRotation(CMixtureRotation const& other);
  CMixtureRotation(CMixtureRotation&& other) noexcept = default;
  CMixtureRotation& operator=(CMixtureRotation other) noexcept;
  ~CMixtureRotation() override;

  /// Fills the next slot and takes ownership of the generator, made by new; null leaves the slot
  /// without one. Throws CExBadParam when all slots are filled; the generator is then still the
  /// caller's.
  void Add(IRotationGenerator* generator, double weight);
  void Add(std::unique_ptr<IRotationGenerator>&& generator, double weight);

  /// Throws CException where the weights lead to a slot without a generator or past all slots.
  CEulerRotation operator()() override;
  using IRotationGenerator::operator();
  /// Whether there are slots and their weights, added in order, give exactly 1.
  [[nodiscard]] bool IsValid() const override;
  /// A mixture of n slots with clones of the generators that there are, in order.
  [[nodiscard]] IRotationGenerator* Clone() const override;

private:
  struct StSlot {
    std::unique_ptr<IRotationGenerator> generator;
    double weight;
  };

  CEulerRotation DrawFrom(CSourceReference source) override;
  IRotationGenerator& Chosen(double u);
  void MakeRoom();

  uint64 m_N;
  std::vector<StSlot> m_Slots; // those filled so far; the others would have no generator, weight 0
  CRandomUniform m_Uniform;
};

} // namespace ORVA
