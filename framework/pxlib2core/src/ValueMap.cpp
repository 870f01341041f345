#include <pxlib2core/Exception.h>
#include <pxlib2core/ValueMap.h>
#include <pxlib2core/ValueVector.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <span>
#include <utility>

namespace ORVA {

namespace {

constexpr char c_module[] = "framework/pxlib2core/ValueMap";

using Parts = std::vector<CValue_Key>;

// A number key has no text and so is no path.
bool IsPath(CValue_Key const& key) { return key.Text().find('/') != std::string::npos; }

// The parts of a path; a key that is none is its own only part. Empty for a text of slashes only.
Parts Split(CValue_Key const& key) {
  if (!IsPath(key)) return {key};
  std::string const& path = key.Text();
  Parts parts;
  for (std::size_t begin = 0; begin < path.size();) {
    std::size_t const slash = std::min(path.find('/', begin), path.size());
    if (slash > begin) parts.emplace_back(path.substr(begin, slash - begin));
    begin = slash + 1;
  }
  return parts;
}

// The number whose decimal form a text is (no sign but minus, no leading zeros).
std::optional<int64> AsNumber(CValue_Key const& part) {
  if (!part.IsText()) return part.Number();
  std::string const& text = part.Text();
  std::size_t const first = text.starts_with('-') ? 1 : 0;
  bool const padded = text.size() > first && text[first] == '0' && text.size() > 1;
  int64 number = 0;
  auto const [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (padded || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// The entry that a part names in a value, or null.
CValue const* Child(CValue const& value, CValue_Key const& part) {
  if (value.Type() == CValue::EnType::Map) return value.Map().Find(part);
  if (value.Type() != CValue::EnType::Vector) return nullptr;
  auto const index = AsNumber(part);
  return index ? value.Vector().Find(*index) : nullptr;
}

CValue const* Descend(CValue const* value, std::span<CValue_Key const> parts) {
  for (auto part = parts.begin(); value != nullptr && part != parts.end(); ++part)
    value = Child(*value, *part);
  return value;
}

// A value wrapped into one new map for each part. The innermost value keeps its address when the
// maps around it are moved, as entries of a map do.
struct StWrapped {
  CValue outer;
  CValue* inner = nullptr; // null: nothing around it, the value itself is still to be placed

  CValue& PlaceInto(CValue& place) && noexcept {
    place = std::move(outer);
    return inner != nullptr ? *inner : place;
  }
};

StWrapped Wrap(std::span<CValue_Key const> parts, CValue value) {
  StWrapped wrapped{std::move(value)};
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    CValueMap map;
    CValue& placed = map.SetEntry(*part, std::move(wrapped.outer));
    if (wrapped.inner == nullptr) wrapped.inner = &placed;
    wrapped.outer = CValue(std::move(map));
  }
  return wrapped;
}

[[noreturn]] void RaiseNoContainer(CValue_Key const& path, CValue_Key const& part,
                                   CValue const& found) {
  CString message("no entry \"%1\" can be made: \"%2\" would have to be in a %3");
  Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValueMap::SetEntry"),
                      message.Arg(path.ToString()).Arg(part.ToString()).Arg(found.TypeName()));
}

// Sets parts[0] .. below an existing value; the chain of new maps is complete before it goes in,
// and nothing that can fail comes after.
CValue& PutBelow(CValue& owner, CValue_Key const& path, std::span<CValue_Key const> parts,
                 CValue value) {
  if (!owner.IsValid()) return Wrap(parts, std::move(value)).PlaceInto(owner);
  StWrapped wrapped = Wrap(parts.subspan(1), std::move(value));
  CValue* place = nullptr;
  if (owner.Type() == CValue::EnType::Map) {
    place = &owner.Map().SetEntry(parts.front(), CValue());
  } else if (auto const index = AsNumber(parts.front());
             index && owner.Type() == CValue::EnType::Vector) {
    owner.Vector().SetEntry(*index, CValue());
    place = owner.Vector().Find(*index);
  } else {
    RaiseNoContainer(path, parts.front(), owner);
  }
  return std::move(wrapped).PlaceInto(*place);
}

} // namespace

CValueMap::~CValueMap() = default;

// The other map may lie inside this one.
CValueMap& CValueMap::operator=(CValueMap const& other) {
  Entries copy(other.m_Entries);
  m_Entries.swap(copy);
  return *this;
}

CValueMap& CValueMap::operator=(CValueMap&& other) noexcept {
  Entries taken(std::move(other.m_Entries));
  m_Entries.swap(taken);
  return *this;
}

std::vector<CValue_Key> CValueMap::Keys() const {
  std::vector<CValue_Key> keys;
  keys.reserve(m_Entries.size());
  for (auto const& entry : m_Entries) keys.push_back(entry.first);
  return keys;
}

CValueMap::Entries::const_iterator CValueMap::FindHere(CValue_Key const& key) const {
  auto found = m_Entries.find(key);
  if (found == m_Entries.end() && key.IsText())
    if (auto const number = AsNumber(key)) found = m_Entries.find(CValue_Key(*number));
  return found;
}

CValue const* CValueMap::Find(CValue_Key const& key) const {
  if (!IsPath(key)) {
    auto const found = FindHere(key);
    return found == m_Entries.end() ? nullptr : &found->second;
  }
  Parts const parts = Split(key);
  if (parts.empty()) return nullptr;
  return Descend(Find(parts.front()), std::span(parts).subspan(1));
}

CValue* CValueMap::Find(CValue_Key const& key) {
  return const_cast<CValue*>(std::as_const(*this).Find(key));
}

CValue const& CValueMap::Entry(CValue_Key const& key, bool) const {
  CValue const* const found = Find(key);
  return found != nullptr ? *found : CValue::Missing();
}

CValue& CValueMap::Entry(CValue_Key const& key, bool create) {
  if (CValue* const found = Find(key)) return *found;
  return create ? SetEntry(key, CValue()) : CValue::Missing();
}

CValue& CValueMap::SetEntry(CValue_Key const& key, CValue value) {
  Parts const parts = Split(key);
  if (parts.empty())
    Impl::RaiseBadParam(ORVA_LOCATION(c_module, "ORVA::CValueMap::SetEntry"),
                        CString("path \"%1\" names no entry").Arg(key.ToString()));
  // A key that is no path names its entry exactly: entries copied one by one all arrive.
  auto const top = IsPath(key) ? FindHere(parts.front()) : m_Entries.find(parts.front());
  if (top == m_Entries.end()) {
    StWrapped wrapped = Wrap(std::span(parts).subspan(1), std::move(value));
    return std::move(wrapped).PlaceInto(m_Entries[parts.front()]);
  }
  // Down to the deepest value that exists, then the rest of the path below it.
  CValue* deepest = const_cast<CValue*>(&top->second);
  std::size_t next = 1;
  while (next < parts.size()) {
    auto* const child = const_cast<CValue*>(Child(*deepest, parts[next]));
    if (child == nullptr) break;
    deepest = child;
    ++next;
  }
  if (next == parts.size()) return *deepest = std::move(value);
  return PutBelow(*deepest, key, std::span(parts).subspan(next), std::move(value));
}

// Sets the entries in a map of their own, beside copies of what their paths lead through; then all
// of it moves over, and nothing that can fail comes after.
// NOLINTNEXTLINE(performance-unnecessary-value-param): its values are moved out
void CValueMap::SetEntries(std::vector<std::pair<CValue_Key, CValue>> entries) {
  CValueMap staged;
  for (auto& [key, value] : entries) {
    Parts const parts = Split(key);
    if (IsPath(key) && !parts.empty() && staged.FindHere(parts.front()) == staged.end()) {
      auto const top = FindHere(parts.front());
      if (top != m_Entries.end()) staged.m_Entries.insert(*top);
    }
    staged.SetEntry(key, std::move(value));
  }
  while (!staged.IsEmpty()) {
    auto node = staged.m_Entries.extract(staged.m_Entries.begin());
    auto const [place, isNew, kept] = m_Entries.insert(std::move(node));
    if (!isNew) place->second = std::move(kept.mapped());
  }
}

CValue CValueMap::Detach(CValue_Key const& key) {
  Parts const parts = Split(key);
  if (parts.empty()) return {};
  auto const top = FindHere(parts.front());
  if (top == m_Entries.end()) return {};
  if (parts.size() == 1) {
    CValue taken = std::move(const_cast<CValue&>(top->second));
    m_Entries.erase(top);
    return taken;
  }
  auto const middle = std::span(parts).subspan(1, parts.size() - 2);
  auto* const owner = const_cast<CValue*>(Descend(&top->second, middle));
  if (owner == nullptr || Child(*owner, parts.back()) == nullptr) return {};
  if (owner->Type() == CValue::EnType::Map) return owner->Map().Detach(parts.back());
  return owner->Vector().Detach(*AsNumber(parts.back()));
}

bool CValueMap::RemoveEntry(CValue_Key const& key) {
  bool const found = HasEntry(key);
  if (found) Detach(key);
  return found;
}

bool CValueMap::IsSubset(CValueMap const& other) const {
  for (auto const& [key, value] : m_Entries) {
    auto const found = other.m_Entries.find(key);
    if (found == other.m_Entries.end() || !found->second.Equal(value)) return false;
  }
  return true;
}

} // namespace ORVA
