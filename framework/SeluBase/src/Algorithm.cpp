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

CAlgorithm::CAlgorithm(char const* name, IObject const* parent) : m_parent(parent) {
  if (name == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::CAlgorithm"), "name is null");
  m_name = name;
}

CAlgorithm::~CAlgorithm() = default;

void CAlgorithm::SetInstance(char const* name) {
  if (name == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::SetInstance"), "name is null");
  m_instance = name;
}

void CAlgorithm::Init(CValueMap const* setup) { m_setup = setup ? *setup : CValueMap(); }

void CAlgorithm::GetPluginSetup(CValueMap& setup) const {
  CValueMap complete(setup);
  for (auto const& [key, value] : m_setup) complete.SetEntry(key, value);
  complete.SetEntry("name", CValueString(m_name));
  complete.SetEntry("instance", CValueString(m_instance));
  setup = std::move(complete);
}

CAlgorithm::CProgress::CProgress(CAlgorithm const& algorithm, int64 steps, char const* text)
    : m_observer(algorithm.m_observer) {
  if (m_observer) m_observer->Start(steps, text);
}

CAlgorithm::CProgress::~CProgress() {
  if (m_observer) m_observer->Finish(false);
}

void CAlgorithm::CProgress::Advance() {
  if (!m_observer) return;
  m_observer->Advance();
  if (m_observer->IsCancelled())
    Impl::Raise(ORVA_LOCATION(c_module, "ORVA::CAlgorithm::CProgress::Advance"),
                "operation cancelled");
}

void CAlgorithm::CProgress::Finish() noexcept {
  if (m_observer) m_observer->Finish(true);
  m_observer = nullptr;
}

} // namespace ORVA
