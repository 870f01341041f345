#include "base/Isolated.h"

#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <new>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace selu {
namespace {

// What the child does; it never returns.
[[noreturn]] void Work(std::function<std::string()> const& job, int answer, pid_t parent,
                       double seconds) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);
  for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(signal, SIG_DFL);
  rlimit const noDump = {0, 0};
  ::setrlimit(RLIMIT_CORE, &noDump);
  auto const limit = static_cast<rlim_t>(std::clamp(seconds, 1.0, 1e6));
  rlimit const patience = {limit, limit};
  ::setrlimit(RLIMIT_CPU, &patience);
  int const nowhere = ::open("/dev/null", O_RDWR);
  for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, stream);
  try {
    ::_exit(WriteAll(answer, job()) == 0 ? 0 : 1);
  } catch (...) { // what went wrong does not matter, only that it did
    ::_exit(1);
  }
}

std::string ReadToEnd(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer;
  while (true) {
    ssize_t const count = ::read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
}

} // namespace

CSharedBuffer::CSharedBuffer(std::size_t bytes) : m_Bytes(bytes) {
  auto const page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  m_Mapped = (bytes + page - 1) / page * page + page;
  void* const memory =
      ::mmap(nullptr, m_Mapped, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  m_Begin = static_cast<std::byte*>(memory);
  ::mprotect(m_Begin + (m_Mapped - page), page, PROT_NONE);
}

CSharedBuffer::CSharedBuffer(CSharedBuffer&& other) noexcept
    : m_Begin(std::exchange(other.m_Begin, nullptr)), m_Bytes(std::exchange(other.m_Bytes, 0)),
      m_Mapped(std::exchange(other.m_Mapped, 0)) {}

CSharedBuffer& CSharedBuffer::operator=(CSharedBuffer&& other) noexcept {
  std::swap(m_Begin, other.m_Begin);
  std::swap(m_Bytes, other.m_Bytes);
  std::swap(m_Mapped, other.m_Mapped);
  return *this;
}

CSharedBuffer::~CSharedBuffer() {
  if (m_Begin != nullptr) ::munmap(m_Begin, m_Mapped);
}

std::optional<std::string> RunIsolated(std::function<std::string()> const& job, double seconds) {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0)
    throw CAppError("no pipe can be made: " + SystemText(errno));
  pid_t const parent = ::getpid(), child = ::fork();
  if (child == 0) Work(job, ends[1], parent, seconds);
  int const error = errno;
  ::close(ends[1]);
  std::string const answer = child > 0 ? ReadToEnd(ends[0]) : std::string();
  ::close(ends[0]);
  if (child < 0) throw CAppError("no process can be started: " + SystemText(error));
  int status = 0;
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) return std::nullopt;
  return answer;
}

} // namespace selu
