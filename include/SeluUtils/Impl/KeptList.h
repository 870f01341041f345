// The lists of a class that is copied wholly or not at all.
//
//   #include <vector>
//   struct StWalk {
//     Impl::CKeptList<std::vector<int>> heights;     // the first member
//     int next = 0;
//   };
//   StWalk const walk{std::vector<int>(3)};
//   int const height = (*walk.heights)[0];
#pragma once

#include <utility>

namespace ORVA::Impl {

/// A list, or a struct of all lists of a class. An assignment copies first and then swaps, so that
/// one that runs out of memory changes nothing; what was moved from is empty, what was moved onto
/// itself stays. A class whose first member this is, and whose other members are copied without
/// memory, has the same promise by the rule of zero.
template <class Lists>
class CKeptList {
public:
  CKeptList() = default;
  CKeptList(Lists lists) noexcept : m_Lists(std::move(lists)) {} // is used like the lists
  CKeptList(CKeptList const&) = default;
  CKeptList(CKeptList&& other) noexcept : m_Lists(std::exchange(other.m_Lists, Lists())) {}
  CKeptList& operator=(CKeptList const& other) {
    *this = CKeptList(other);
    return *this;
  }
  CKeptList& operator=(CKeptList&& other) noexcept {
    m_Lists = std::exchange(other.m_Lists, Lists());
    return *this;
  }
  ~CKeptList() = default;

  [[nodiscard]] Lists& operator*() noexcept { return m_Lists; }
  [[nodiscard]] Lists const& operator*() const noexcept { return m_Lists; }
  [[nodiscard]] Lists* operator->() noexcept { return &m_Lists; }
  [[nodiscard]] Lists const* operator->() const noexcept { return &m_Lists; }

private:
  Lists m_Lists;
};

} // namespace ORVA::Impl
