#include "base/Isolated.h"

#include "base/Errors.h"
#include "base/Signals.h"
#include "base/Texts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <new>
#include <optional>
#include <utility>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace selu {
namespace {

// What goes before the text of a request; a descriptor may go with it.
struct StRequestHead {
  std::uint64_t textBytes = 0, sharedBytes = 0;
  StLimits limits;
};

enum class EnKind : std::uint64_t { Answer, Sentence, Memory, Broken };

struct StAnswerHead {
  std::uint64_t textBytes = 0;
  EnKind kind = EnKind::Broken;
};
// More than any answer has; a child that has gone wild may claim anything.
constexpr std::uint64_t c_longestAnswer = std::uint64_t{1} << 28;

// ---- Bytes over the socket; false where the other end has gone ----

bool SendBytes(int socket, void const* data, std::size_t bytes) {
  auto const* at = static_cast<char const*>(data);
  while (bytes > 0) {
    ssize_t const count = ::send(socket, at, bytes, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    at += count;
    bytes -= static_cast<std::size_t>(count);
  }
  return true;
}

bool ReceiveBytes(int socket, void* data, std::size_t bytes) {
  auto* at = static_cast<char*>(data);
  while (bytes > 0) {
    ssize_t const count = ::recv(socket, at, bytes, 0);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    at += count;
    bytes -= static_cast<std::size_t>(count);
  }
  return true;
}

// One byte that a descriptor travels with.
union UnControl {
  cmsghdr align;
  std::array<char, CMSG_SPACE(sizeof(int))> bytes;
};

bool SendDescriptor(int socket, int descriptor) {
  char byte = 0;
  iovec part = {&byte, 1};
  UnControl control = {};
  msghdr message = {};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.bytes.data();
  message.msg_controllen = control.bytes.size();
  cmsghdr* const head = CMSG_FIRSTHDR(&message);
  head->cmsg_level = SOL_SOCKET;
  head->cmsg_type = SCM_RIGHTS;
  head->cmsg_len = CMSG_LEN(sizeof(int));
  std::memcpy(CMSG_DATA(head), &descriptor, sizeof descriptor);
  ssize_t count = 0;
  do count = ::sendmsg(socket, &message, MSG_NOSIGNAL);
  while (count < 0 && errno == EINTR);
  return count == 1;
}

int ReceiveDescriptor(int socket) {
  char byte = 0;
  iovec part = {&byte, 1};
  UnControl control = {};
  msghdr message = {};
  message.msg_iov = &part;
  message.msg_iovlen = 1;
  message.msg_control = control.bytes.data();
  message.msg_controllen = control.bytes.size();
  ssize_t count = 0;
  do count = ::recvmsg(socket, &message, MSG_CMSG_CLOEXEC);
  while (count < 0 && errno == EINTR);
  cmsghdr const* const head = CMSG_FIRSTHDR(&message);
  if (count != 1 || head == nullptr || head->cmsg_type != SCM_RIGHTS) ::_exit(1);
  int descriptor = -1;
  std::memcpy(&descriptor, CMSG_DATA(head), sizeof descriptor);
  return descriptor;
}

// ---- In the child ----

bool s_memoryRanOut = false;

void NoteMemory() {
  s_memoryRanOut = true;
  throw std::bad_alloc();
}

double AddressSpace() {
  double pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

double SecondsComputed() {
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  auto const seconds = [](timeval const& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// What the user has allowed stays the most.
class CLimit {
public:
  explicit CLimit(__rlimit_resource resource) : m_Resource(resource) {
    ::getrlimit(resource, &m_Given);
  }
  void Set(double value) const {
    rlimit limit = m_Given;
    if (value < static_cast<double>(m_Given.rlim_cur)) limit.rlim_cur = static_cast<rlim_t>(value);
    ::setrlimit(m_Resource, &limit);
  }

private:
  __rlimit_resource m_Resource;
  rlimit m_Given = {};
};

void Prepare(pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(1);
  ResetSignalHandlers();
  rlimit const noDump = {0, 0};
  ::setrlimit(RLIMIT_CORE, &noDump);
  int const nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  for (int const stream : {STDOUT_FILENO, STDERR_FILENO}) ::dup2(nowhere, stream);
  std::set_new_handler(NoteMemory);
}

std::pair<EnKind, std::string> Answer(CIsolated::Work const& work, std::string const& request,
                                      std::span<std::byte> shared) {
  s_memoryRanOut = false;
  errno = 0;
  try {
    return {EnKind::Answer, work(request, shared)};
  } catch (CAppError const& error) {
    return {EnKind::Sentence, error.what()};
  } catch (std::bad_alloc const&) {
    return {EnKind::Memory, {}};
  } catch (...) { // readers turn a lack of memory into errors of their own
    return {errno == ENOMEM || s_memoryRanOut ? EnKind::Memory : EnKind::Broken, {}};
  }
}

// Ends with the other end of the socket.
[[noreturn]] void Serve(CIsolated::Work const& work, int socket) {
  CLimit const time(RLIMIT_CPU), memory(RLIMIT_AS);
  while (true) {
    StRequestHead head;
    if (!ReceiveBytes(socket, &head, sizeof head)) ::_exit(0);
    std::string request(head.textBytes, '\0');
    if (!ReceiveBytes(socket, request.data(), request.size())) ::_exit(0);
    CSharedBuffer shared;
    if (head.sharedBytes > 0) shared = {ReceiveDescriptor(socket), head.sharedBytes};
    time.Set(SecondsComputed() + std::clamp(head.limits.seconds, 1.0, 1e6) + 1);
    memory.Set(AddressSpace() + head.limits.bytes);
    auto const [kind, text] = Answer(work, request, shared.Bytes());
    StAnswerHead const answer{text.size(), kind};
    if (!SendBytes(socket, &answer, sizeof answer) || !SendBytes(socket, text.data(), text.size()))
      ::_exit(1);
  }
}

char const* Text(EnFailure why) {
  switch (why) {
  case EnFailure::Time:
    return "it takes longer than a file of its size may";
  case EnFailure::Memory:
    return "it needs more memory than there is for a file of its size";
  default:
    return "the process that does the work has broken down";
  }
}

} // namespace

CIsolationError::CIsolationError(EnFailure why) : std::runtime_error(Text(why)), m_Why(why) {}

CIsolated::CIsolated(Work const& work) {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
    throw CAppError("no process can be started: " + SystemText(errno));
  pid_t const parent = ::getpid();
  m_Child = ::fork();
  if (m_Child == 0) {
    ::close(ends[0]);
    try {
      Prepare(parent);
      Serve(work, ends[1]);
    } catch (...) { // that it is gone says enough
      ::_exit(1);
    }
  }
  int const error = errno;
  ::close(ends[1]);
  m_Socket = ends[0];
  if (m_Child > 0) return;
  ::close(m_Socket);
  throw CAppError("no process can be started: " + SystemText(error));
}

CIsolated::CIsolated(CIsolated&& other) noexcept
    : m_Socket(std::exchange(other.m_Socket, -1)), m_Child(std::exchange(other.m_Child, -1)) {}

CIsolated& CIsolated::operator=(CIsolated&& other) noexcept {
  std::swap(m_Socket, other.m_Socket);
  std::swap(m_Child, other.m_Child);
  return *this;
}

CIsolated::~CIsolated() {
  if (m_Socket >= 0) ::close(m_Socket);
  if (m_Child <= 0) return;
  ::kill(m_Child, SIGKILL);
  while (::waitpid(m_Child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

void CIsolated::ThrowDeath() {
  int status = 0;
  // One that has gone wild, and still lives, is not waited for.
  if (m_Child > 0) ::kill(m_Child, SIGKILL);
  while (m_Child > 0 && ::waitpid(m_Child, &status, 0) < 0 && errno == EINTR) {
  }
  bool const tooLong = m_Child > 0 && WIFSIGNALED(status) && WTERMSIG(status) == SIGXCPU;
  m_Child = -1;
  throw CIsolationError(tooLong ? EnFailure::Time : EnFailure::Broken);
}

std::string CIsolated::Ask(std::string const& request, StLimits const& limits,
                           CSharedBuffer const* shared) {
  StRequestHead const head{request.size(), shared != nullptr ? shared->Bytes().size() : 0, limits};
  bool arrives = m_Child > 0 && SendBytes(m_Socket, &head, sizeof head) &&
                 SendBytes(m_Socket, request.data(), request.size());
  if (arrives && head.sharedBytes > 0) arrives = SendDescriptor(m_Socket, shared->Descriptor());
  StAnswerHead answer;
  if (!arrives || !ReceiveBytes(m_Socket, &answer, sizeof answer)) ThrowDeath();
  if (answer.textBytes > c_longestAnswer) ThrowDeath();
  std::string text(answer.textBytes, '\0');
  if (!ReceiveBytes(m_Socket, text.data(), text.size())) ThrowDeath();
  switch (answer.kind) {
  case EnKind::Answer:
    return text;
  case EnKind::Sentence:
    throw CAppError(text);
  case EnKind::Memory:
    throw CIsolationError(EnFailure::Memory);
  default:
    throw CIsolationError(EnFailure::Broken);
  }
}

} // namespace selu
