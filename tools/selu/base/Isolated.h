// Work that may crash, never end or eat up the memory, in a process of its own: neither files from
// elsewhere nor their readers are to be trusted.
//
//   CIsolated reader([](std::string const& request, std::span<std::byte> shared) { ... });
//   std::string const answer = reader.Ask("header", {.seconds = 5, .bytes = 1 << 28});
//   CSharedBuffer pixels(bytes);
//   reader.Ask("pixels", {.seconds = 60, .bytes = 1 << 30}, &pixels);
#pragma once

#include "base/SharedBuffer.h"

#include <cstddef>
#include <functional>
#include <span>
#include <stdexcept>
#include <string>

#include <sys/types.h>

namespace selu {

/// What the process may use for one answer, beyond what it has used so far.
struct StLimits {
  double seconds = 5; ///< of computing
  double bytes = 0;   ///< of address space
};

/// Why there is no answer.
enum class EnFailure { Broken, Time, Memory };

class CIsolationError : public std::runtime_error {
public:
  explicit CIsolationError(EnFailure why);
  [[nodiscard]] EnFailure Why() const noexcept { return m_Why; }

private:
  EnFailure m_Why;
};

/// A child process that answers one request after the other, its output streams leading nowhere. It
/// dies with this object, and with this process.
class CIsolated {
public:
  /// Answers a request; the bytes are those of the buffer that came with it. What it keeps from one
  /// request to the next stays in the child.
  using Work = std::function<std::string(std::string const& request, std::span<std::byte> shared)>;

  /// Throws CAppError where no process can be started.
  explicit CIsolated(Work const& work);
  CIsolated(CIsolated&& other) noexcept;
  CIsolated& operator=(CIsolated&& other) noexcept;
  ~CIsolated();

  /// The answer. A CAppError of the work is thrown here with its sentence; whatever else goes wrong
  /// there is a CIsolationError. After one for the time, or a crash, every further one is Broken.
  [[nodiscard]] std::string Ask(std::string const& request, StLimits const& limits,
                                CSharedBuffer const* shared = nullptr);

private:
  [[noreturn]] void ThrowDeath();

  int m_Socket = -1;
  pid_t m_Child = -1;
};

} // namespace selu
