// Runs a program and catches what it writes.
//
//   auto const result = test::RunProcess({binary, "--version"});
//   EXPECT_EQ(result.code, 0);  result.out  result.error
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <pty.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

struct StProcessOptions {
  std::string outFile = {};      ///< standard output goes there instead of being caught
  std::string folder = {};       ///< working folder
  long fileLimit = -1;           ///< bytes that a file may have
  bool obeysPermissions = false; ///< root gives up the right to pass over them
  double interruptAfter = -1;    ///< seconds until SIGINT, once the program catches it
  int signal = SIGINT;           ///< what to send then
  bool terminal = false;         ///< standard error is a terminal; caught in `error`
};

struct StProcessResult {
  int code = -1; ///< -1: no process or terminal was to be had; else exit code, or 1000 + signal
  std::string out, error;
};

namespace Impl {

[[noreturn]] inline void Execute(std::vector<std::string> const& command,
                                 StProcessOptions const& options, int out, int error) {
  int const target = options.outFile.empty() ? out : ::open(options.outFile.c_str(), O_WRONLY);
  if (target < 0) ::_exit(126);
  ::dup2(target, STDOUT_FILENO);
  if (!options.terminal) ::dup2(error, STDERR_FILENO);
  for (int const signal : {SIGINT, SIGTERM, SIGHUP}) ::signal(signal, SIG_DFL);
  if (!options.folder.empty() && ::chdir(options.folder.c_str()) != 0) ::_exit(126);
  if (options.fileLimit >= 0) {
    auto const bytes = static_cast<rlim_t>(options.fileLimit);
    rlimit const limit = {bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  // Root without these obeys the permissions of its own files, and still reaches the program.
  for (auto const capability : {CAP_DAC_OVERRIDE, CAP_DAC_READ_SEARCH})
    if (options.obeysPermissions && ::geteuid() == 0 &&
        ::prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) != 0)
      ::_exit(126);
  std::vector<char*> arguments;
  for (auto const& argument : command) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  ::execv(arguments[0], arguments.data());
  ::_exit(127);
}

// Reads both streams until both are closed; a terminal ends with an error of its own.
inline void Collect(std::array<int, 2> streams, std::array<std::string*, 2> texts) {
  std::array<char, 65536> buffer;
  for (int open = 2; open > 0;) {
    std::array<pollfd, 2> polls = {{{streams[0], POLLIN, 0}, {streams[1], POLLIN, 0}}};
    if (::poll(polls.data(), polls.size(), -1) < 0 && errno != EINTR) return;
    for (std::size_t i = 0; i < 2; ++i) {
      if (streams[i] < 0 || polls[i].revents == 0) continue;
      ssize_t const count = ::read(streams[i], buffer.data(), buffer.size());
      if (count > 0) {
        texts[i]->append(buffer.data(), static_cast<std::size_t>(count));
      } else if (count == 0 || errno != EINTR) {
        ::close(streams[i]);
        streams[i] = -1;
        --open;
      }
    }
  }
}

// Whether the process has a handler of the signal, or has ended. On a busy machine a program may
// take longer to get there than any fixed time.
inline bool IsReadyFor(pid_t process, int signal) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("State:\tZ")) return true;
    if (line.starts_with("SigCgt:"))
      return (std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1) != 0;
  }
  return true;
}

inline void Interrupt(pid_t process, StProcessOptions const& options) {
  using namespace std::chrono;
  auto const deadline = steady_clock::now() + minutes(1);
  while (!IsReadyFor(process, options.signal) && steady_clock::now() < deadline)
    std::this_thread::sleep_for(milliseconds(2));
  std::this_thread::sleep_for(duration<double>(options.interruptAfter));
  ::kill(process, options.signal);
}

} // namespace Impl

/// Whether pseudo-terminals are to be had: bare trees without /dev/pts have none, and tests that
/// want one are skipped there.
inline bool HasTerminals() {
  int terminal = -1, line = -1;
  if (::openpty(&terminal, &line, nullptr, nullptr, nullptr) != 0) return false;
  ::close(terminal);
  ::close(line);
  return true;
}

inline StProcessResult RunProcess(std::vector<std::string> const& command,
                                  StProcessOptions const& options = {}) {
  std::array<int, 2> out{}, error{};
  if (::pipe2(out.data(), O_CLOEXEC) != 0 || ::pipe2(error.data(), O_CLOEXEC) != 0) return {};
  int terminal = -1;
  pid_t const child = options.terminal ? ::forkpty(&terminal, nullptr, nullptr, nullptr) : ::fork();
  if (child == 0) {
    if (options.terminal) ::setenv("TERM", "xterm", 1);
    Impl::Execute(command, options, out[1], error[1]);
  }
  ::close(out[1]);
  ::close(error[1]);
  if (child < 0) {
    ::close(out[0]);
    ::close(error[0]);
    return {};
  }
  if (options.terminal) ::close(error[0]);
  std::thread interrupter([&] {
    if (options.interruptAfter >= 0) Impl::Interrupt(child, options);
  });
  StProcessResult result;
  Impl::Collect({out[0], options.terminal ? terminal : error[0]}, {&result.out, &result.error});
  interrupter.join();
  int status = 0;
  ::waitpid(child, &status, 0);
  result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  return result;
}

} // namespace test
