#include "base/AtomicFile.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace selu {
namespace fs = std::filesystem;
namespace {

class CDescriptor {
public:
  CDescriptor(fs::path const& path, int flags, mode_t mode = 0)
      : m_Descriptor(::open(path.c_str(), flags | O_CLOEXEC, mode)) {}
  CDescriptor(CDescriptor const&) = delete;
  CDescriptor& operator=(CDescriptor const&) = delete;
  ~CDescriptor() { (void)Close(); }
  [[nodiscard]] bool IsOpen() const noexcept { return m_Descriptor >= 0; }
  [[nodiscard]] int Get() const noexcept { return m_Descriptor; }
  /// 0, or the error that the system had kept until now.
  [[nodiscard]] int Close() noexcept {
    int const result = m_Descriptor >= 0 && ::close(m_Descriptor) != 0 ? errno : 0;
    m_Descriptor = -1;
    return result;
  }

private:
  int m_Descriptor;
};

// The file behind symbolic links, also where that does not exist yet.
fs::path Resolve(fs::path path) {
  std::error_code error;
  for (int links = 0; links < 40 && fs::is_symlink(fs::symlink_status(path, error)); ++links) {
    fs::path const next = fs::read_symlink(path, error);
    if (error) break;
    path = path.parent_path() / next;
  }
  return path;
}

fs::path FolderOf(fs::path const& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

fs::path TemporaryPath(fs::path const& folder, fs::path const& target) {
  static std::atomic<int> count = 0;
  return folder /
         (".selu-" + std::to_string(::getpid()) + "-" + std::to_string(count++) + EndingOf(target));
}

// No signal comes between making a file and remembering to remove it, nor removes one that another
// process made.
class CSignalPause {
public:
  CSignalPause() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &m_Before);
  }
  CSignalPause(CSignalPause const&) = delete;
  CSignalPause& operator=(CSignalPause const&) = delete;
  ~CSignalPause() { ::pthread_sigmask(SIG_SETMASK, &m_Before, nullptr); }

private:
  sigset_t m_Before;
};

} // namespace

CAtomicFile::CAtomicFile(fs::path const& target) : m_Target(target), m_Resolved(Resolve(target)) {
  if (target.empty()) throw CAppError("the name of the output file is empty");
  struct stat status = {};
  bool const exists = ::stat(m_Resolved.c_str(), &status) == 0;
  if (!exists && errno != ENOENT) Fail(errno);
  if (exists && S_ISDIR(status.st_mode)) Fail(EISDIR);
  if (exists && ::access(m_Resolved.c_str(), W_OK) != 0) Fail(errno);
  m_Replaces = !exists || S_ISREG(status.st_mode);

  fs::path const folder = m_Replaces ? FolderOf(m_Resolved) : fs::temp_directory_path();
  if (!fs::is_directory(folder))
    throw CAppError("cannot write " + Quoted(target) + ": there is no folder " + Quoted(folder));
  MakeTemporary(folder);
  // A file that is replaced keeps its permissions.
  if (exists && m_Replaces && ::chmod(Temporary().c_str(), status.st_mode & 07777) != 0)
    Fail(errno);
}

// A process of the same number that was killed may have left its temporaries.
void CAtomicFile::MakeTemporary(fs::path const& folder) {
  constexpr int patience = 1000;
  CSignalPause const pause;
  for (int tries = 1;; ++tries) {
    fs::path const name = TemporaryPath(folder, m_Target);
    CDescriptor const file(name, O_WRONLY | O_CREAT | O_EXCL, 0666);
    if (file.IsOpen()) {
      m_Temporary = std::make_unique<CTemporaryName>(name);
      return;
    }
    if (errno != EEXIST || tries == patience) Fail(errno);
  }
}

void CAtomicFile::Fail(int error) const {
  throw CAppError("cannot write " + Quoted(m_Target) + ": " + SystemText(error));
}

void CAtomicFile::Write(std::string_view bytes) { WriteWith(O_TRUNC, bytes); }
void CAtomicFile::Append(std::string_view bytes) { WriteWith(O_APPEND, bytes); }

void CAtomicFile::WriteWith(int mode, std::string_view bytes) {
  CDescriptor file(Temporary(), O_WRONLY | mode);
  if (!file.IsOpen()) Fail(errno);
  if (int const error = WriteAll(file.Get(), bytes); error != 0) Fail(error);
  if (int const error = file.Close(); error != 0) Fail(error);
}

void CAtomicFile::Commit() {
  if (!m_Replaces) return CopyInto(m_Resolved);
  CDescriptor file(Temporary(), O_RDONLY);
  if (!file.IsOpen() || ::fsync(file.Get()) != 0) Fail(errno);
  if (::rename(Temporary().c_str(), m_Resolved.c_str()) != 0) Fail(errno);
}

void CAtomicFile::CopyInto(fs::path const& device) const {
  CDescriptor from(Temporary(), O_RDONLY);
  if (!from.IsOpen()) Fail(errno);
  // A pipe that nobody reads would keep us waiting; one that somebody reads may be full.
  CDescriptor to(device, O_WRONLY | O_NONBLOCK);
  if (!to.IsOpen() && errno == ENXIO)
    throw CAppError("cannot write " + Quoted(m_Target) + ": nobody reads from it");
  if (!to.IsOpen() || ::fcntl(to.Get(), F_SETFL, 0) != 0) Fail(errno);
  std::array<char, 1 << 16> buffer;
  while (true) {
    ssize_t const count = ::read(from.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(errno);
    if (count == 0) break;
    int const error = WriteAll(to.Get(), {buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) Fail(error);
  }
  if (int const error = to.Close(); error != 0) Fail(error);
}

void RefuseSameFile(fs::path const& output, fs::path const& input) {
  std::error_code error; // a file that is missing is no other
  if (fs::equivalent(output, input, error))
    throw CAppError("cannot write " + Quoted(output) + ": it is the input " + Quoted(input));
}

bool IsSameFile(fs::path const& a, fs::path const& b) {
  std::error_code error;
  if (fs::equivalent(a, b, error)) return !fs::is_character_file(a, error);
  auto const first = fs::weakly_canonical(fs::absolute(a, error), error);
  auto const second = fs::weakly_canonical(fs::absolute(b, error), error);
  return !first.empty() && first == second;
}

int WriteAll(int descriptor, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    ssize_t const count = ::write(descriptor, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

} // namespace selu
