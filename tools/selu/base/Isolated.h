// Work that may crash, in a process of its own: readers of damaged files are not to be trusted.
//
//   CSharedBuffer pixels(bytes);
//   auto answer = RunIsolated([&] { reader.Read(pixels.Bytes().data()); return std::string("ok");
//   }); if (!answer) throw CAppError("...");          // it crashed or threw
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

namespace selu {

/// Zeroed memory that an isolated job shares with this process, with a forbidden page behind it.
class CSharedBuffer {
public:
  CSharedBuffer() = default;
  /// Throws std::bad_alloc.
  explicit CSharedBuffer(std::size_t bytes);
  CSharedBuffer(CSharedBuffer&& other) noexcept;
  CSharedBuffer& operator=(CSharedBuffer&& other) noexcept;
  ~CSharedBuffer();
  [[nodiscard]] std::span<std::byte> Bytes() const noexcept { return {m_Begin, m_Bytes}; }

private:
  std::byte* m_Begin = nullptr;
  std::size_t m_Bytes = 0, m_Mapped = 0;
};

/// Runs the job in a child process, with its standard streams leading nowhere, and returns its
/// answer; nothing when it crashed, threw or computed for longer than this. The child dies with
/// this process.
[[nodiscard]] std::optional<std::string> RunIsolated(std::function<std::string()> const& job,
                                                     double seconds);

} // namespace selu
