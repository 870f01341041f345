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

// Walks a value tree and lists its leaves; without recursion, as trees may be deep.
class CKeyLister {
public:
  CKeyLister(std::string path, std::vector<std::string>& keys, int mode,
             std::vector<std::string> const& excluded)
      : m_Path(std::move(path)), m_Keys(keys), m_Mode(mode),
        m_Excluded(excluded.begin(), excluded.end()) {}

  void List(CValue const& root) {
    Enter(root);
    Go();
  }
  void List(CValueMap const& root) {
    Open(root);
    Go();
  }

private:
  // A container on the way down; one of the two is null.
  struct StOpen {
    CValueMap const* map;
    CValueMap::const_iterator next;
    CValueVector const* vector;
    std::size_t index;
    std::size_t pathLength; // of the container's own path
  };

  void Go() {
    while (!m_Open.empty()) {
      StOpen& open = m_Open.back();
      m_Path.resize(open.pathLength);
      if (open.map != nullptr)
        NextEntry(open);
      else
        NextItem(open);
    }
  }

  void NextEntry(StOpen& open) {
    if (open.next == open.map->end()) return m_Open.pop_back();
    auto const entry = open.next++;
    if (!entry.Value().IsValid()) return Report("Error: could not get the iterator item!\n");
    Append(entry.Key().ToString());
    Enter(entry.Value());
  }

  void NextItem(StOpen& open) {
    if (open.index == open.vector->Size()) return m_Open.pop_back();
    CValue const* const item = open.vector->Find(static_cast<int64>(open.index));
    std::size_t const index = open.index++;
    if (!item->IsValid())
      return Report("Error: could not instantiate the ORVA::CValueVector::item!\n");
    Append(std::to_string(index));
    Enter(*item);
  }

  void Enter(CValue const& value) {
    if (value.Type() == EnType::Map) return Open(value.Map());
    if (IsExcluded()) return;
    if (value.Type() == EnType::Vector) return Open(value.Vector());
    if (IsListed(value.Type())) m_Keys.push_back(m_Path.substr(m_Path.starts_with('/') ? 1 : 0));
  }

  void Open(CValueMap const& map) {
    if (IsExcluded()) return;
    if (map.IsEmpty()) return ListEmpty();
    m_Open.push_back({&map, map.begin(), nullptr, 0, m_Path.size()});
  }

  void Open(CValueVector const& vector) {
    if (vector.IsEmpty()) return ListEmpty();
    m_Open.push_back({nullptr, {}, &vector, 0, m_Path.size()});
  }

  void ListEmpty() {
    if (m_Mode == 3 && !m_Path.empty() && m_Path != "/") m_Keys.push_back(m_Path);
  }

  // Most callers exclude nothing: a long path is then not hashed.
  [[nodiscard]] bool IsExcluded() const {
    return !m_Excluded.empty() && m_Excluded.contains(m_Path);
  }

  [[nodiscard]] bool IsListed(EnType type) const {
    if (m_Mode == 0 || m_Mode == 3) return true;
    bool const isNumber = type == EnType::Long || type == EnType::Double || type == EnType::Bool;
    return isNumber || (m_Mode == 2 && type == EnType::String);
  }

  void Append(std::string const& key) {
    if (!m_Path.empty()) m_Path += '/';
    m_Path += key;
  }

  static void Report(char const* error) { std::cerr << error; }

  std::string m_Path; // of the value at hand
  std::vector<StOpen> m_Open;
  std::vector<std::string>& m_Keys;
  int m_Mode;
  std::unordered_set<std::string> m_Excluded; // copies: the list may be the one appended to
};

// The path may be one of the keys appended to, hence the copy.
template <class Root>
void ListKeys(Root const& root, std::string path, std::vector<std::string>& keys, int mode,
              std::vector<std::string> const& excluded) {
  CKeyLister(std::move(path), keys, mode, excluded).List(root);
}

std::vector<double> Readings(CValueMap const& map, std::vector<std::string> const& keys) {
  std::vector<double> readings;
  readings.reserve(keys.size());
  for (auto const& key : keys) readings.push_back(Impl::NumericReading(map.Entry(key)));
  return readings;
}

// The entries, or nothing where one is missing or no number: setting that one may fail, and may
// take the place of another away.
std::vector<CValue*> Numbers(CValueMap& map, std::vector<std::string> const& keys) {
  std::vector<CValue*> places;
  places.reserve(keys.size());
  for (auto const& key : keys) {
    CValue* const place = map.Find(key);
    if (place == nullptr || place->GenericType() != CValue::EnGenericType::Number) return {};
    places.push_back(place);
  }
  return places;
}

// Sets every listed entry k to changed(its reading, k), or none where that fails.
template <class Change>
void ChangeNumbers(CValueMap& map, std::vector<std::string> const& keys, Change changed) {
  if (keys.empty()) return;
  std::vector<CValue*> const places = Numbers(map, keys);
  for (std::size_t k = 0; k < places.size(); ++k)
    *places[k] = CValueDouble(changed(Impl::NumericReading(*places[k]), k));
  if (!places.empty()) return;
  CValueMap copy = map;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    double const reading = Impl::NumericReading(copy.Entry(keys[k], true));
    copy.SetEntry(keys[k], CValueDouble(changed(reading, k)));
  }
  map = std::move(copy);
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
  std::vector<std::pair<CValue_Key, CValue>> copies; // the source may be or lie in the target
  for (auto const& [key, value] : source)
    if (value.Type() != EnType::Map) copies.emplace_back(prefix + key.ToString(), value);
  target.SetEntries(std::move(copies));
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
  ChangeNumbers(*this, m_Keys,
                [&](double reading, std::size_t k) { return reading + summands[k]; });
  return *this;
}

CValueMapWithOperators& CValueMapWithOperators::operator/=(double divisor) {
  ChangeNumbers(*this, m_Keys,
                [divisor](double reading, std::size_t) { return reading / divisor; });
  return *this;
}

} // namespace ORVA
