#include "base/AtomicFile.h"

#include "base/Errors.h"
#include "base/FileBytes.h"
#include "base/Texts.h"

#include <array>
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

fs::path FolderOf(fs::path const& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

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

// The number of the process's own open file that a path names, of whatever links it consists.
std::optional<int> OpenFileOf(fs::path path) {
  std::error_code error;
  fs::path const folder = "/proc/" + std::to_string(::getpid()) + "/fd";
  for (int links = 0; links < 40; ++links) {
    std::string const name = path.filename();
    bool const isNumber = !name.empty() && name.size() < 6 &&
                          name.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber && fs::canonical(FolderOf(path), error) == folder) return std::stoi(name);
    if (!fs::is_symlink(fs::symlink_status(path, error))) return std::nullopt;
    fs::path const next = fs::read_symlink(path, error);
    if (error) return std::nullopt;
    path = path.parent_path() / next;
  }
  return std::nullopt;
}

fs::path TemporaryPath(fs::path const& folder, fs::path const& target) {
  return folder / TemporaryName(EndingOf(target));
}

// Remembers to remove a file that was just made, or removes it at once.
std::unique_ptr<CTemporaryName> Remember(fs::path const& made) {
  try {
    return std::make_unique<CTemporaryName>(made);
  } catch (...) {
    ::unlink(made.c_str());
    throw;
  }
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

CAtomicFile::CAtomicFile(fs::path const& target)
    : m_Target(target), m_Resolved(Resolve(target)),
      m_Descriptor(DescriptorOf(target).value_or(-1)), m_Replaces(m_Descriptor < 0) {
  if (target.empty()) throw CAppError("the name of the output file is empty");
  if (!m_Replaces) {
    MakeTemporary(fs::temp_directory_path());
    return;
  }
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

// A process of the same number that was killed may have left its temporaries where they cannot be
// removed; one who removes leftovers may take a new one for such, as long as it has no lock.
void CAtomicFile::MakeTemporary(fs::path const& folder) {
  constexpr int patience = 1000;
  RemoveLeftovers(folder);
  CSignalPause const pause;
  for (int tries = 1;; ++tries) {
    fs::path const name = TemporaryPath(folder, m_Target);
    int const file = ::open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (file < 0 && (errno != EEXIST || tries == patience)) Fail(errno);
    if (file < 0) continue;
    m_Lock = CFileLock(file);
    m_Temporary = Remember(name);
    if (m_Lock.Holds(name) || tries == patience) return;
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

void CAtomicFile::Commit() { CommitAll({this}); }

void CAtomicFile::Flush() const {
  if (!m_Replaces) return;
  CDescriptor const file(Temporary(), O_RDONLY);
  if (!file.IsOpen() || ::fsync(file.Get()) != 0) Fail(errno);
}

void CAtomicFile::CopyOut() const {
  if (m_Replaces) return;
  if (m_Descriptor >= 0) return CopyInto(m_Descriptor);
  // A pipe that nobody reads would keep us waiting; one that somebody reads may be full.
  CDescriptor to(m_Resolved, O_WRONLY | O_NONBLOCK);
  if (!to.IsOpen() && errno == ENXIO)
    throw CAppError("cannot write " + Quoted(m_Target) + ": nobody reads from it");
  if (!to.IsOpen() || ::fcntl(to.Get(), F_SETFL, 0) != 0) Fail(errno);
  CopyInto(to.Get());
  if (int const error = to.Close(); error != 0) Fail(error);
}

void CAtomicFile::CopyInto(int descriptor) const {
  CDescriptor const from(Temporary(), O_RDONLY);
  if (!from.IsOpen()) Fail(errno);
  std::array<char, 1 << 16> buffer;
  while (true) {
    ssize_t const count = ::read(from.Get(), buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) Fail(errno);
    if (count == 0) break;
    int const error = WriteAll(descriptor, {buffer.data(), static_cast<std::size_t>(count)});
    if (error != 0) Fail(error);
  }
}

// What stands under the name gets another one for the time being.
void CAtomicFile::Rename() {
  if (!m_Replaces) return;
  {
    CSignalPause const pause;
    fs::path const old = TemporaryPath(FolderOf(m_Resolved), m_Target);
    if (::link(m_Resolved.c_str(), old.c_str()) == 0) {
      m_Old = Remember(old);
      m_OldLock = CFileLock(old);
    }
  }
  if (::rename(Temporary().c_str(), m_Resolved.c_str()) != 0) Fail(errno);
  m_Renamed = true;
}

void CAtomicFile::TakeBack() noexcept {
  if (!m_Renamed) return;
  if (m_Old)
    (void)::rename(m_Old->Path().c_str(), m_Resolved.c_str());
  else
    (void)::unlink(m_Resolved.c_str());
  m_Renamed = false;
}

void CommitAll(std::vector<CAtomicFile*> const& files, std::function<void()> const& print) {
  std::vector<CAtomicFile*> given = files;
  std::erase(given, nullptr);
  for (CAtomicFile const* const file : given) file->Flush();
  for (CAtomicFile const* const file : given) file->CopyOut();
  if (print) print();
  try {
    for (CAtomicFile* const file : given) file->Rename();
  } catch (...) {
    for (CAtomicFile* const file : given) file->TakeBack();
    throw;
  }
  for (CAtomicFile* const file : given) file->m_Old.reset();
}

std::optional<int> DescriptorOf(fs::path const& path) {
  if (path == "-") return STDOUT_FILENO;
  return OpenFileOf(path);
}

void RefuseSameFile(fs::path const& output, fs::path const& input) {
  if (DescriptorOf(output)) return; // whoever opened it had it so
  std::error_code error;            // a file that is missing is no other
  if (fs::equivalent(output, input, error))
    throw CAppError("cannot write " + Quoted(output) + ": it is the input " + Quoted(input));
}

bool IsSameFile(fs::path const& a, fs::path const& b) {
  auto const first = DescriptorOf(a), second = DescriptorOf(b);
  if (first || second) return first == second;
  std::error_code error;
  if (fs::equivalent(a, b, error)) return !fs::is_character_file(a, error);
  auto const whole = fs::weakly_canonical(fs::absolute(a, error), error);
  return !whole.empty() && whole == fs::weakly_canonical(fs::absolute(b, error), error);
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
