// Makes the n-th allocation of a thread fail, to see what an operation leaves behind. Replaces the
// program's operator new: to be included by one source file of an executable.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

namespace test {

/// Allocations of this thread until the one that fails; negative: none does.
inline constinit thread_local long t_allocationsLeft = -1;

inline void* AllocateOrFail(std::size_t bytes) {
  if (t_allocationsLeft == 0) throw std::bad_alloc();
  if (t_allocationsLeft > 0) --t_allocationsLeft;
  void* const memory = std::malloc(bytes > 0 ? bytes : 1);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

/// Lets the first allocation of the operation fail, then only the second, and so on until it passes
/// without meeting one that fails; `check` looks at what each failure left. Gives their number.
template <class Operation, class Check>
long FailEveryAllocation(Operation operation, Check check) {
  constexpr long c_tooMany = 100000;
  for (long failing = 0; failing < c_tooMany; ++failing) {
    bool failed = false;
    try {
      t_allocationsLeft = failing;
      operation();
    } catch (std::bad_alloc const&) {
      failed = true;
    } catch (...) {
      t_allocationsLeft = -1;
      throw;
    }
    t_allocationsLeft = -1;
    if (!failed) return failing;
    SCOPED_TRACE("allocation " + std::to_string(failing + 1) + " failed");
    check();
    if (testing::Test::HasFailure()) return failing;
  }
  ADD_FAILURE() << "the operation never passed";
  return c_tooMany;
}

} // namespace test

// Not inline: where a compiler inlines one of these and not the other, it warns of a mismatch.
[[gnu::noinline]] void* operator new(std::size_t bytes) { return test::AllocateOrFail(bytes); }
[[gnu::noinline]] void* operator new[](std::size_t bytes) { return test::AllocateOrFail(bytes); }
// What may do without (as std::stable_sort does) always gets it: its failure would not be seen.
[[gnu::noinline]] void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
  return std::malloc(bytes > 0 ? bytes : 1);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
