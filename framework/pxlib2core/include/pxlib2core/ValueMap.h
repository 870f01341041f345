// Keyed tree of values that owns everything set into it.
//
//   #include <iostream>
//   CValueMap features;
//   features.SetEntry("object 1/volume [px]", CValueLong(12));   // makes the sub-map "object 1"
//   std::cout << features.HasEntry("object 1") << ' ';           // prints 1
//   for (auto const& [key, value] : features) std::cout << key.ToString();   // prints object 1
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/Value.h>
#include <pxlib2core/ValueKey.h>

#include <cstddef>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

namespace ORVA {

/// A map from keys to values, iterated in ascending key order, with deep copies.
///
/// A key text with "/" is a path. Each part names an entry of a sub-map, or by its decimal index
/// one of a vector; empty parts are passed over. A part that is the decimal form of a number also
/// finds the entry with that number as its key where no text entry has that name; only SetEntry
/// takes a key that is no path to the letter. Every operation below takes paths; a failure leaves
/// the map as it was. Cost O(log entries) per part.
class PXLIB2CORE_EXPORT CValueMap {
public:
  /// The keys and values, as the map keeps them.
  using Entries = std::map<CValue_Key, CValue>;
  /// Standard iterator over pairs, with Key() and Value() beside.
  class const_iterator : public Entries::const_iterator {
  public:
    const_iterator() = default;
    const_iterator(Entries::const_iterator position) : Entries::const_iterator(position) {}
    [[nodiscard]] CValue_Key const& Key() const noexcept { return (*this)->first; }
    [[nodiscard]] CValue const& Value() const noexcept { return (*this)->second; }
    const_iterator& operator++() noexcept {
      Entries::const_iterator::operator++();
      return *this;
    }
    const_iterator& operator--() noexcept {
      Entries::const_iterator::operator--();
      return *this;
    }
    const_iterator operator++(int) noexcept { return std::exchange(*this, std::next(*this)); }
    const_iterator operator--(int) noexcept { return std::exchange(*this, std::prev(*this)); }
  };

  CValueMap() = default;
  CValueMap(CValueMap const&) = default;
  CValueMap(CValueMap&&) noexcept = default;
  CValueMap& operator=(CValueMap const& other);
  CValueMap& operator=(CValueMap&& other) noexcept;
  virtual ~CValueMap();

  [[nodiscard]] const_iterator begin() const noexcept { return m_Entries.begin(); }
  [[nodiscard]] const_iterator end() const noexcept { return m_Entries.end(); }
  /// The number of entries.
  [[nodiscard]] std::size_t Size() const noexcept { return m_Entries.size(); }
  /// Whether there is no entry.
  [[nodiscard]] bool IsEmpty() const noexcept { return m_Entries.empty(); }
  /// All keys in ascending order, numbers before texts.
  [[nodiscard]] std::vector<CValue_Key> Keys() const;

  /// The entry. A missing one is created as an invalid value, with the sub-maps on the way, if
  /// `create` is set; otherwise the result is an invalid value that belongs to no map: it can be
  /// read, and throws CExBadParam where it is written to. Creating throws CExBadParam where a part
  /// of the path before the last is neither a map nor a vector, or an index lies beyond a vector's
  /// end.
  CValue& Entry(CValue_Key const& key, bool create = false);
  /// The entry, or an invalid value where there is none: a const map creates nothing.
  [[nodiscard]] CValue const& Entry(CValue_Key const& key, bool create = false) const;
  /// Sets or replaces the entry, makes the sub-maps on the way, and gives the value in its place;
  /// throws as Entry does.
  CValue& SetEntry(CValue_Key const& key, CValue value);
  /// Whether there is an entry of that key or path.
  [[nodiscard]] bool HasEntry(CValue_Key const& key) const { return Find(key) != nullptr; }
  /// The entry, or null.
  [[nodiscard]] CValue* Find(CValue_Key const& key);
  [[nodiscard]] CValue const* Find(CValue_Key const& key) const;
  /// Whether there was such an entry. Entries behind it in a vector move up.
  bool RemoveEntry(CValue_Key const& key);
  /// Sets all these entries in their order or, where one fails, none. O(log entries) per part, and
  /// a copy of the entry of this map that a path leads through.
  void SetEntries(std::vector<std::pair<CValue_Key, CValue>> entries);
  /// Takes the entry out of the map; invalid where there is none.
  CValue Detach(CValue_Key const& key);
  /// Takes all entries out.
  void Clear() noexcept { m_Entries.clear(); }

  /// Whether every entry of this map is in the other with an equal value.
  [[nodiscard]] bool IsSubset(CValueMap const& other) const;
  friend bool operator==(CValueMap const& a, CValueMap const& b) {
    return a.Size() == b.Size() && a.IsSubset(b);
  }

private:
  friend CValue;
  [[nodiscard]] Entries::const_iterator FindHere(CValue_Key const& key) const;

  Entries m_Entries;
};

} // namespace ORVA
