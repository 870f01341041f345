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

CMixtureRotation::CMixtureRotation(std::size_t n) : m_N(n) {}

CMixtureRotation::CMixtureRotation(CMixtureRotation const& other)
    : IRandomGenerator<CEulerRotation>(other), IRotationGenerator(other), m_N(other.m_N),
      m_Uniform(other.m_Uniform) {
  m_Slots.reserve(other.m_Slots.size());
  for (auto const& [generator, weight] : other.m_Slots)
    m_Slots.push_back({CloneOf(generator), weight});
}

CMixtureRotation& CMixtureRotation::operator=(CMixtureRotation other) noexcept {
  m_N = other.m_N;
  m_Slots = std::move(other.m_Slots);
  m_Uniform = other.m_Uniform;
  return *this;
}

CMixtureRotation::~CMixtureRotation() = default;

// Everything that can fail comes before the generator changes hands.
void CMixtureRotation::MakeRoom() {
  if (m_Slots.size() >= m_N)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CMixtureRotation::Add"),
                        CString("All n=%1 generators have been added.").Arg(Number(m_N)));
  if (m_Slots.size() == m_Slots.capacity()) m_Slots.reserve(2 * m_Slots.size() + 1);
}

void CMixtureRotation::Add(IRotationGenerator* generator, double weight) {
  MakeRoom();
  m_Slots.push_back({std::unique_ptr<IRotationGenerator>(generator), weight});
}

void CMixtureRotation::Add(std::unique_ptr<IRotationGenerator>&& generator, double weight) {
  MakeRoom();
  m_Slots.push_back({std::move(generator), weight});
}

CEulerRotation CMixtureRotation::operator()() { return Chosen(m_Uniform())(); }

CEulerRotation CMixtureRotation::DrawFrom(CSourceReference source) {
  return Chosen(m_Uniform(source))(source);
}

IRotationGenerator& CMixtureRotation::Chosen(double u) {
  double sum = 0;
  for (auto& [generator, weight] : m_Slots) {
    sum += weight;
    if (sum < u) continue;
    if (!generator) RaiseEmptySlot(m_N);
    return *generator;
  }
  if (m_Slots.size() < m_N) RaiseEmptySlot(m_N);
  RaisePastTheEnd(u, sum);
}

bool CMixtureRotation::IsValid() const {
  double sum = 0;
  for (auto const& slot : m_Slots) sum += slot.weight;
  return m_N > 0 && sum == 1;
}

IRotationGenerator* CMixtureRotation::Clone() const {
  auto copy = std::make_unique<CMixtureRotation>(m_N);
  for (auto const& [generator, weight] : m_Slots)
    if (generator) copy->Add(CloneOf(generator), weight);
  return copy.release();
}

} // namespace ORVA
