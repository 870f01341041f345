#include "base/FileLock.h"

#include "base/FileBytes.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <mutex>
#include <set>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view c_prefix = ".selu-";

// No link is followed and no pipe waited for; -1 for all but regular files. Writing is asked for
// since that is what a file has that is replaced; some file systems lock no others.
int OpenRegular(fs::path const& path) noexcept {
  int const file = ::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  struct stat status = {};
  if (file >= 0 && (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode))) {
    ::close(file);
    return -1;
  }
  return file;
}

bool Lock(int file, int how) noexcept {
  int result = 0;
  do result = ::flock(file, how | LOCK_NB);
  while (result != 0 && errno == EINTR);
  return result == 0;
}

bool IsNameOf(int file, fs::path const& path) noexcept {
  struct stat mine = {}, there = {};
  return ::fstat(file, &mine) == 0 && ::lstat(path.c_str(), &there) == 0 &&
         mine.st_dev == there.st_dev && mine.st_ino == there.st_ino;
}

// Whoever holds a lock is alive. Between the look and the lock another one may have taken the name.
void RemoveUnlocked(fs::path const& path) noexcept {
  int const file = OpenRegular(path);
  if (file < 0) return;
  if (Lock(file, LOCK_EX) && IsNameOf(file, path)) ::unlink(path.c_str());
  ::close(file);
}

bool IsFirstLook(fs::path const& folder) {
  static std::mutex mutex;
  static std::set<fs::path> seen;
  std::lock_guard const lock(mutex);
  return seen.insert(fs::canonical(folder)).second;
}

// The digits at the beginning, taken away; false where there are none.
bool TakeNumber(std::string_view& text) noexcept {
  auto const digits = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(digits);
  return digits > 0;
}

} // namespace

// Shared, so that one who reads the user's file under a lock of his own does not get in the way.
CFileLock::CFileLock(int descriptor) noexcept : m_Descriptor(descriptor) {
  if (m_Descriptor >= 0) m_IsTaken = !Lock(m_Descriptor, LOCK_SH) && errno == EWOULDBLOCK;
}

CFileLock::CFileLock(fs::path const& path) noexcept : CFileLock(OpenRegular(path)) {}

CFileLock::CFileLock(CFileLock&& other) noexcept
    : m_Descriptor(std::exchange(other.m_Descriptor, -1)), m_IsTaken(other.m_IsTaken) {}

CFileLock& CFileLock::operator=(CFileLock&& other) noexcept {
  std::swap(m_Descriptor, other.m_Descriptor);
  std::swap(m_IsTaken, other.m_IsTaken);
  return *this;
}

CFileLock::~CFileLock() {
  if (m_Descriptor >= 0) ::close(m_Descriptor);
}

bool CFileLock::Holds(fs::path const& path) const noexcept {
  return m_Descriptor >= 0 && !m_IsTaken && IsNameOf(m_Descriptor, path);
}

fs::path TemporaryName(std::string_view ending) {
  static std::atomic<int> count = 0;
  return std::string(c_prefix) + std::to_string(::getpid()) + "-" + std::to_string(count++) +
         std::string(ending);
}

bool IsTemporaryName(std::string_view name) noexcept {
  if (!name.starts_with(c_prefix)) return false;
  name.remove_prefix(c_prefix.size());
  if (!TakeNumber(name) || !name.starts_with('-')) return false;
  name.remove_prefix(1);
  return TakeNumber(name) && (name.empty() || name.starts_with('.'));
}

void RemoveLeftovers(fs::path const& folder) noexcept {
  try {
    if (!IsFirstLook(folder)) return;
    for (std::string const& name : NamesIn(folder))
      if (IsTemporaryName(name)) RemoveUnlocked(folder / name);
  } catch (...) { // they can stay where they are
  }
}

} // namespace selu
