// Ordered list of values, keyed by index.
//
//   CValueVector minMax(CValueDouble(0.0), CValueDouble(255.0));
//   minMax.PushBack(CValueString("gray"));
//   minMax.Entry(1).Double();                   // 255
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/Types.h>
#include <pxlib2core/Value.h>

#include <cstddef>
#include <vector>

namespace ORVA {

/// A vector of values with deep copies.
class PXLIB2CORE_EXPORT CValueVector {
public:
  CValueVector() = default;
  CValueVector(CValue first, CValue second);
  CValueVector(CValueVector const&) = default;
  CValueVector(CValueVector&&) noexcept = default;
  CValueVector& operator=(CValueVector const& other);
  CValueVector& operator=(CValueVector&& other) noexcept;
  ~CValueVector() = default;

  /// Adds a value at the end.
  void PushBack(CValue value) { m_Values.push_back(std::move(value)); }
  /// Throws CExBadParam for an index outside 0 .. Size() - 1.
  CValue& Entry(int64 index);
  [[nodiscard]] CValue const& Entry(int64 index) const;
  /// Replaces an entry, or appends one at index Size(); throws CExBadParam for any other index.
  void SetEntry(int64 index, CValue value);
  /// The entry, or null outside 0 .. Size() - 1.
  [[nodiscard]] CValue* Find(int64 index) noexcept;
  [[nodiscard]] CValue const* Find(int64 index) const noexcept;
  /// Takes the entry out; those behind it move up. Throws as Entry does.
  CValue Detach(int64 index);

  /// The number of values.
  [[nodiscard]] std::size_t Size() const noexcept { return m_Values.size(); }
  /// Whether there is no value.
  [[nodiscard]] bool IsEmpty() const noexcept { return m_Values.empty(); }
  [[nodiscard]] auto begin() const noexcept { return m_Values.begin(); }
  [[nodiscard]] auto end() const noexcept { return m_Values.end(); }

  friend bool operator==(CValueVector const& a, CValueVector const& b) {
    return a.m_Values == b.m_Values;
  }

private:
  friend CValue;

  std::vector<CValue> m_Values;
};

} // namespace ORVA
