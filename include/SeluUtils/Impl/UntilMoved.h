// A value that falls back to its default when its owner is moved from.
//
//   #include <iostream>
//   struct StWalk { Impl::CUntilMoved<int> left; };
//   StWalk walk{3};
//   StWalk const taken = std::move(walk);
//   std::cout << walk.left << taken.left;       // prints 03
#pragma once

#include <utility>

namespace ORVA::Impl {

/// For what a class knows of its lists, so that its own move need not be written out: a walker
/// that was moved from has no points left. The default is T{c_default...}.
template <class T, auto... c_default>
class CUntilMoved {
public:
  constexpr CUntilMoved() noexcept = default;
  constexpr CUntilMoved(T const& value) noexcept : m_Value(value) {} // is used like the value
  constexpr CUntilMoved(CUntilMoved const&) noexcept = default;
  constexpr CUntilMoved(CUntilMoved&& other) noexcept
      : m_Value(std::exchange(other.m_Value, T{c_default...})) {}
  constexpr CUntilMoved& operator=(CUntilMoved const&) noexcept = default;
  constexpr CUntilMoved& operator=(CUntilMoved&& other) noexcept {
    m_Value = std::exchange(other.m_Value, T{c_default...});
    return *this;
  }
  ~CUntilMoved() = default;

  constexpr operator T&() noexcept { return m_Value; }
  constexpr operator T const&() const noexcept { return m_Value; }

private:
  T m_Value{c_default...};
};

} // namespace ORVA::Impl
