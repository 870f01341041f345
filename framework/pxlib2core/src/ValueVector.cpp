#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueVector.h>

#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2core/ValueVector";

[[noreturn]] void RaiseIndex(Impl::StExLocation const& location, int64 index, std::size_t size) {
  CString message("index %1 does not fit a vector of %2 values");
  Impl::RaiseBadParam(location, message.Arg(index).Arg(size));
}

} // namespace

CValueVector::CValueVector(CValue first, CValue second) {
  m_Values.reserve(2);
  m_Values.push_back(std::move(first));
  m_Values.push_back(std::move(second));
}

// The other vector may be one of this vector's own values.
CValueVector& CValueVector::operator=(CValueVector const& other) {
  CValueVector copy(other);
  return *this = std::move(copy);
}

CValueVector& CValueVector::operator=(CValueVector&& other) noexcept {
  std::vector<CValue> taken(std::move(other.m_Values));
  m_Values.swap(taken);
  return *this;
}

CValue& CValueVector::Entry(int64 index) {
  CValue* const found = Find(index);
  if (found == nullptr)
    RaiseIndex(ORVA_LOCATION(c_module, "ORVA::CValueVector::Entry"), index, Size());
  return *found;
}

CValue const& CValueVector::Entry(int64 index) const {
  return const_cast<CValueVector*>(this)->Entry(index);
}

void CValueVector::SetEntry(int64 index, CValue value) {
  if (index == static_cast<int64>(Size())) {
    PushBack(std::move(value));
    return;
  }
  CValue* const found = Find(index);
  if (found == nullptr)
    RaiseIndex(ORVA_LOCATION(c_module, "ORVA::CValueVector::SetEntry"), index, Size());
  *found = std::move(value);
}

CValue* CValueVector::Find(int64 index) noexcept {
  if (index < 0 || static_cast<uint64>(index) >= m_Values.size()) return nullptr;
  return &m_Values[static_cast<std::size_t>(index)];
}

CValue const* CValueVector::Find(int64 index) const noexcept {
  return const_cast<CValueVector*>(this)->Find(index);
}

CValue CValueVector::Detach(int64 index) {
  CValue* const found = Find(index);
  if (found == nullptr)
    RaiseIndex(ORVA_LOCATION(c_module, "ORVA::CValueVector::Detach"), index, Size());
  CValue taken = std::move(*found);
  m_Values.erase(m_Values.begin() + index);
  return taken;
}

} // namespace ORVA
