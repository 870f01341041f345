// A file in use says so by a lock, which the system takes back however its process ends.
//
//   CFileLock lock(fs::path(".selu-123-0.nrrd")); // from here on no other process removes it
//   RemoveLeftovers("/data");                     // what killed processes have left there
#pragma once

#include <filesystem>
#include <string_view>

namespace selu {

/// Marks a file as in use, across processes and containers, for as long as this object lives. A
/// file system that knows no locks is no error: nothing that lies there is removed either.
class CFileLock {
public:
  CFileLock() = default;
  /// Of an open file, which it takes over; a negative number is none.
  explicit CFileLock(int descriptor) noexcept;
  /// Of a regular file that this process may write to.
  explicit CFileLock(std::filesystem::path const& path) noexcept;
  CFileLock(CFileLock&& other) noexcept;
  CFileLock& operator=(CFileLock&& other) noexcept;
  ~CFileLock();
  /// Whether the path names this file, and nobody who removes leftovers was quicker.
  [[nodiscard]] bool Holds(std::filesystem::path const& path) const noexcept;

private:
  int m_Descriptor = -1;
  bool m_IsTaken = false; // by another one, for as long as that takes
};

/// The name of a temporary file: hidden, with the number of this process and one of its own.
[[nodiscard]] std::filesystem::path TemporaryName(std::string_view ending);
/// Whether a name is one of those.
[[nodiscard]] bool IsTemporaryName(std::string_view name) noexcept;

/// Removes the temporaries in a folder that no living process has locked: those of processes that
/// were killed. Looks once at each folder; what it may not see or remove stays. O(files there).
void RemoveLeftovers(std::filesystem::path const& folder) noexcept;

} // namespace selu
