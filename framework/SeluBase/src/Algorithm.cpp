#include <SeluBase/Algorithm.h>
#include <pxlib2core/Exception.h>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/SeluBase/Algorithm";

} // namespace

IProgressObserver::~IProgressObserver() = default;
void IProgressObserver::Start(int64, char const*) {}
void IProgressObserver::Advance() {}
void IProgressObserver::Finish(bool) noexcept {}
bool IProgressObserver::IsCancelled() { return false; }

CAlgorithm::CAlgorithm(char const* name, IObject const* parent) : m_Parent(parent) {
  if (name == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::CAlgorithm"), "name is null");
  m_Name = name;
}

CAlgorithm::~CAlgorithm() = default;

void CAlgorithm::SetInstance(char const* name) {
  if (name == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::SetInstance"), "name is null");
  m_Instance = name;
}

void CAlgorithm::Init(CValueMap const* setup) { m_Setup = setup ? *setup : CValueMap(); }

void CAlgorithm::GetPluginSetup(CValueMap& setup) const {
  CValueMap complete(setup);
  for (auto const& [key, value] : m_Setup) complete.SetEntry(key, value);
  complete.SetEntry("name", CValueString(m_Name));
  complete.SetEntry("instance", CValueString(m_Instance));
  setup = std::move(complete);
}

CAlgorithm::CProgress::CProgress(CAlgorithm const& algorithm, int64 steps, char const* text)
    : m_Observer(algorithm.m_Observer) {
  if (m_Observer) m_Observer->Start(steps, text);
}

CAlgorithm::CProgress::~CProgress() {
  if (m_Observer) m_Observer->Finish(false);
}

void CAlgorithm::CProgress::Advance() {
  if (!m_Observer) return;
  m_Observer->Advance();
  if (m_Observer->IsCancelled())
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::CProgress::Advance"),
                "operation cancelled");
}

void CAlgorithm::CProgress::Finish() noexcept {
  if (m_Observer) m_Observer->Finish(true);
  m_Observer = nullptr;
}

} // namespace ORVA
