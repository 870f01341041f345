#include <SeluUtils/ValueHelper.h>

#include "Utils/ValueHelper/NumericReading.h"

#include <pxlib2core/ValueVector.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <unordered_set>
#include <utility>

namespace ORVA {

namespace {

using EnType = CValue::EnType;

bool HasEntryOfType(CValueMap const& map, char const* key, EnType type) {
  CValue const* const value = map.Find(key);
  return value != nullptr && value->Type() == type;
}

// The first sub-map whose key begins with the text, or null.
CValueMap const* FindSubMap(CValueMap const& map, std::string const& begin) {
  for (auto const& [key, value] : map)
    if (value.Type() == EnType::Map && key.ToString().starts_with(begin)) return &value.Map();
  return nullptr;
}

// Walks a value tree and lists its leaves.
class CKeyLister {
public:
  CKeyLister(std::vector<std::string>& keys, int mode, std::vector<std::string> const& excluded)
      : m_Keys(keys), m_Mode(mode), m_Excluded(excluded.begin(), excluded.end()) {}

  void List(CValue const& value, std::string const& path) {
    if (value.Type() == EnType::Map) return List(value.Map(), path);
    if (m_Excluded.contains(path)) return;
    if (value.Type() == EnType::Vector) return ListVector(value.Vector(), path);
    if (IsListed(value.Type())) m_Keys.push_back(path.starts_with('/') ? path.substr(1) : path);
  }

  void List(CValueMap const& map, std::string const& path) {
    if (m_Excluded.contains(path)) return;
    if (map.IsEmpty()) return ListEmpty(path);
    for (auto const& [key, value] : map)
      if (value.IsValid())
        List(value, Below(path, key.ToString()));
      else
        std::cerr << "Error: could not get the iterator item!\n";
  }

private:
  void ListVector(CValueVector const& vector, std::string const& path) {
    if (vector.IsEmpty()) return ListEmpty(path);
    std::size_t index = 0;
    for (auto const& value : vector) {
      if (value.IsValid())
        List(value, Below(path, std::to_string(index)));
      else
        std::cerr << "Error: could not instantiate the ORVA::CValueVector::item!\n";
      ++index;
    }
  }

  void ListEmpty(std::string const& path) {
    if (m_Mode == 3 && !path.empty() && path != "/") m_Keys.push_back(path);
  }

  [[nodiscard]] bool IsListed(EnType type) const {
    if (m_Mode == 0 || m_Mode == 3) return true;
    bool const isNumber = type == EnType::Long || type == EnType::Double || type == EnType::Bool;
    return isNumber || (m_Mode == 2 && type == EnType::String);
  }

  static std::string Below(std::string const& path, std::string const& key) {
    return path.empty() ? key : path + '/' + key;
  }

  std::vector<std::string>& m_Keys;
  int m_Mode;
  std::unordered_set<std::string> m_Excluded; // copies: the list may be the one appended to
};

// The path may be one of the keys appended to, hence the copy.
template <class Root>
void ListKeys(Root const& root, std::string path, std::vector<std::string>& keys, int mode,
              std::vector<std::string> const& excluded) {
  CKeyLister(keys, mode, excluded).List(root, path);
}

std::vector<double> Readings(CValueMap const& map, std::vector<std::string> const& keys) {
  std::vector<double> readings;
  readings.reserve(keys.size());
  for (auto const& key : keys) readings.push_back(Impl::NumericReading(map.Entry(key)));
  return readings;
}

} // namespace

bool IsObjectBasedFeaturesMap(CValueMap const& map, std::string const& prefix) {
  if (!HasEntryOfType(map, "maximum label", EnType::Long)) return false;
  if (!HasEntryOfType(map, "no. of objects", EnType::Long)) return false;
  CValueMap const* const object = FindSubMap(map, prefix.empty() ? prefix : prefix + ' ');
  if (object == nullptr) return false;
  if (!HasEntryOfType(*object, "object", EnType::String)) return false;
  if (!HasEntryOfType(*object, "status", EnType::String)) return false;
  constexpr std::array sizes = {"pixel", "no. of voxels", "no. of pixels", "volume [px]"};
  return std::ranges::any_of(
      sizes, [&](char const* key) { return HasEntryOfType(*object, key, EnType::Long); });
}

bool IsGrayvalueBasedFeaturesMap(CValueMap const& map, std::string const& prefix) {
  if (!HasEntryOfType(map, "no. of grayvalues", EnType::Long)) return false;
  CValueMap const* const grayvalue = FindSubMap(map, prefix + ' ');
  return grayvalue != nullptr && HasEntryOfType(*grayvalue, "grayvalue", EnType::String) &&
         HasEntryOfType(*grayvalue, "status", EnType::String);
}

void CopyMapEntries(CValueMap& target, CValueMap const& source, std::string const& prefix) {
  std::vector<std::pair<std::string, CValue>> copies; // the source may be or lie in the target
  for (auto const& [key, value] : source)
    if (value.Type() != EnType::Map) copies.emplace_back(prefix + key.ToString(), value);
  for (auto& [key, value] : copies) target.SetEntry(std::move(key), std::move(value));
}

void CreateKeyListRecursivly(CValue const& value, std::string const& path,
                             std::vector<std::string>& keys, int mode,
                             std::vector<std::string> const& excluded) {
  ListKeys(value, path, keys, mode, excluded);
}

void CreateKeyListRecursivly(CValueMap const& map, std::string const& path,
                             std::vector<std::string>& keys, int mode,
                             std::vector<std::string> const& excluded) {
  ListKeys(map, path, keys, mode, excluded);
}

void ExtractKeys(CValueMap const& map, std::vector<std::string>& keys, int mode,
                 std::vector<std::string> const& excluded) {
  std::vector<std::string> found; // the exclusions may be the very list to be replaced
  CreateKeyListRecursivly(map, "", found, mode, excluded);
  keys = std::move(found);
}

CValueMapWithOperators::CValueMapWithOperators(
    CValueMap const& map,
    std::vector<std::string> const& excluded) // NOLINT(modernize-pass-by-value): given so
    : m_Excluded(excluded) {
  ExtractKeys(map, m_Keys, 1, m_Excluded);
  for (auto const& key : m_Keys) SetEntry(key, CValueDouble(Impl::NumericReading(map.Entry(key))));
}

CValueMapWithOperators::~CValueMapWithOperators() = default;

CValueMapWithOperators& CValueMapWithOperators::operator+=(CValueMap const& other) {
  // Read in full before the first entry changes: the other map may lie in this one.
  auto const summands = Readings(other, m_Keys);
  for (std::size_t k = 0; k < m_Keys.size(); ++k) {
    double const sum = Impl::NumericReading(Entry(m_Keys[k], true)) + summands[k];
    SetEntry(m_Keys[k], CValueDouble(sum));
  }
  return *this;
}

CValueMapWithOperators& CValueMapWithOperators::operator/=(double divisor) {
  for (auto const& key : m_Keys)
    SetEntry(key, CValueDouble(Impl::NumericReading(Entry(key, true)) / divisor));
  return *this;
}

} // namespace ORVA
