#include <SeluUtils/Cooccurrence.h>

#include <pxlib2core/Exception.h>
#include <pxlib2core/String.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

namespace ORVA {

namespace {


} // namespace

struct CCooccurrence::StArrays {
  std::vector<std::uint32_t> m_ppCounts = std::vector<std::uint32_t>(65536);
};

CCooccurrence::CCooccurrence(char const* name, IObject const* parent)
    : CAlgorithm(name, parent), m_arrays(std::make_unique<StArrays>()) {}
CCooccurrence::CCooccurrence(CCooccurrence const& other)
    : CAlgorithm(other), m_arrays(std::make_unique<StArrays>(*other.m_arrays)) {}
CCooccurrence& CCooccurrence::operator=(CCooccurrence const& other) {
  auto copy = std::make_unique<StArrays>(*other.m_arrays);
  CAlgorithm::operator=(other);
  m_arrays = std::move(copy);
  return *this;
}
CCooccurrence::~CCooccurrence() = default;

} // namespace ORVA
