// Makes allocations fail on purpose. Replaces the global operator new, so include it in one source
// file of a test executable. Kept out of line, since compilers pair new with delete by name.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <limits>
#include <new>

namespace test {

inline thread_local std::size_t t_largestAllocation = std::numeric_limits<std::size_t>::max();
inline thread_local int t_allocationsLeft = std::numeric_limits<int>::max();

/// While it lives, an allocation of more than this many bytes fails.
class CAllocationLimit {
public:
  explicit CAllocationLimit(std::size_t bytes) { t_largestAllocation = bytes; }
  CAllocationLimit(CAllocationLimit const&) = delete;
  CAllocationLimit& operator=(CAllocationLimit const&) = delete;
  ~CAllocationLimit() { t_largestAllocation = std::numeric_limits<std::size_t>::max(); }
};

/// While it lives, this many allocations succeed and all further ones fail.
class CFailingAllocations {
public:
  explicit CFailingAllocations(int allowed) { t_allocationsLeft = allowed; }
  CFailingAllocations(CFailingAllocations const&) = delete;
  CFailingAllocations& operator=(CFailingAllocations const&) = delete;
  ~CFailingAllocations() { t_allocationsLeft = std::numeric_limits<int>::max(); }
};

} // namespace test

[[gnu::noinline]] void* operator new(std::size_t bytes) {
  if (bytes > test::t_largestAllocation || test::t_allocationsLeft <= 0) throw std::bad_alloc();
  if (test::t_allocationsLeft != std::numeric_limits<int>::max()) --test::t_allocationsLeft;
  if (void* const memory = std::malloc(bytes != 0 ? bytes : 1)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t bytes, std::nothrow_t const&) noexcept {
  try {
    return ::operator new(bytes);
  } catch (std::bad_alloc const&) {
    return nullptr;
  }
}
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
