#include <SeluUtils/Random/MixtureRotation.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <string>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "src/Utils/Random/MixtureRotation";
constexpr char c_draw[] = "ORVA::CMixtureRotation::operator ()";

CString Number(uint64 number) { return {std::to_string(number)}; }

std::unique_ptr<IRotationGenerator> CloneOf(std::unique_ptr<IRotationGenerator> const& generator) {
  return std::unique_ptr<IRotationGenerator>(generator ? generator->Clone() : nullptr);
}

[[noreturn]] void RaiseEmptySlot(uint64 n) {
  Impl::Raise(ORVA_LOCATION(c_module, c_draw).AtLine(64),
              CString("Non-existing orientation generator. Be sure to call "
                      "CMixtureRotation::Add n=%1 times!")
                  .Arg(Number(n)));
}

[[noreturn]] void RaisePastTheEnd(double u, double sum) {
  Impl::Raise(ORVA_LOCATION(c_module, c_draw),
              CString("The weights add up to %1 and leave no generator for %2.").Arg(sum).Arg(u));
}

} // namespace

CMixtureRotation::CMixtureRotation(std::size_t n) : m_n(n) {}

CMixtureRotation::CMixtureRotation(CMixtureRotation const& other)
    : IRandomGenerator<CEulerRotation>(other), IRotationGenerator(other), m_n(other.m_n),
      m_uniform(other.m_uniform) {
  m_slots.reserve(other.m_slots.size());
  for (auto const& [generator, weight] : other.m_slots)
    m_slots.push_back({CloneOf(generator), weight});
}

CMixtureRotation& CMixtureRotation::operator=(CMixtureRotation other) noexcept {
  m_n = other.m_n;
  m_slots = std::move(other.m_slots);
  m_uniform = other.m_uniform;
  return *this;
}

CMixtureRotation::~CMixtureRotation() = default;

// Everything that can fail comes before the generator changes hands.
void CMixtureRotation::MakeRoom() {
  if (m_slots.size() >= m_n)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CMixtureRotation::Add"),
                        CString("All n=%1 generators have been added.").Arg(Number(m_n)));
  if (m_slots.size() == m_slots.capacity()) m_slots.reserve(2 * m_slots.size() + 1);
}

void CMixtureRotation::Add(IRotationGenerator* generator, double weight) {
  MakeRoom();
  m_slots.push_back({std::unique_ptr<IRotationGenerator>(generator), weight});
}

void CMixtureRotation::Add(std::unique_ptr<IRotationGenerator>&& generator, double weight) {
  MakeRoom();
  m_slots.push_back({std::move(generator), weight});
}

CEulerRotation CMixtureRotation::operator()() {
  double const u = m_uniform();
  double sum = 0;
  for (auto& [generator, weight] : m_slots) {
    sum += weight;
    if (sum < u) continue;
    if (!generator) RaiseEmptySlot(m_n);
    return (*generator)();
  }
  if (m_slots.size() < m_n) RaiseEmptySlot(m_n);
  RaisePastTheEnd(u, sum);
}

bool CMixtureRotation::IsValid() const {
  double sum = 0;
  for (auto const& slot : m_slots) sum += slot.weight;
  return m_n > 0 && sum == 1;
}

IRotationGenerator* CMixtureRotation::Clone() const {
  auto copy = std::make_unique<CMixtureRotation>(m_n);
  for (auto const& [generator, weight] : m_slots)
    if (generator) copy->Add(CloneOf(generator), weight);
  return copy.release();
}

} // namespace ORVA
