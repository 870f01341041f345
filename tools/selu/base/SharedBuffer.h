// Memory that this process shares with another one.
//
//   CSharedBuffer pixels(bytes);
//   process.Ask("pixels", limits, &pixels);       // the other process writes
//   pixels.Bytes()                                // what it has written
#pragma once

#include <cstddef>
#include <span>

namespace selu {

/// Zeroed memory, with a forbidden page behind it. Pages count only once they are written to.
class CSharedBuffer {
public:
  CSharedBuffer() = default;
  /// Throws std::bad_alloc, or CAppError where a limit of the system stands against it.
  explicit CSharedBuffer(std::size_t bytes);
  /// The same memory by its descriptor, which the object then owns, in the other process.
  CSharedBuffer(int descriptor, std::size_t bytes);
  /// Memory that stays with this process; limits on the sizes of files do not concern it. Throws
  /// std::bad_alloc.
  [[nodiscard]] static CSharedBuffer Unshared(std::size_t bytes) { return {-1, bytes}; }
  CSharedBuffer(CSharedBuffer&& other) noexcept;
  CSharedBuffer& operator=(CSharedBuffer&& other) noexcept;
  ~CSharedBuffer();
  [[nodiscard]] std::span<std::byte> Bytes() const noexcept { return {m_Begin, m_Bytes}; }
  [[nodiscard]] int Descriptor() const noexcept { return m_Descriptor; }

private:
  void Map();

  int m_Descriptor = -1;
  std::byte* m_Begin = nullptr;
  std::size_t m_Bytes = 0, m_Mapped = 0;
};

} // namespace selu
