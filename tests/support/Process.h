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
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

struct StProcessOptions {
  std::string outFile = {};   ///< standard output goes there instead of being caught
  std::string folder = {};    ///< working folder
  long fileLimit = -1;        ///< bytes that a file may have
  bool nobody = false;        ///< gives up root's rights first
  double interruptAfter = -1; ///< seconds until SIGINT
  int signal = SIGINT;        ///< what to send then
  bool terminal = false;      ///< standard error is a terminal; caught in `error`
};

struct StProcessResult {
  int code = -1; ///< exit code, or 1000 + signal
  std::string out, error;
};

namespace Impl {

[[noreturn]] inline void Execute(std::vector<std::string> const& command,
                                 StProcessOptions const& options, int out, int error) {
  int const target = options.outFile.empty() ? out : ::open(options.outFile.c_str(), O_WRONLY);
  if (target < 0) ::_exit(126);
  ::dup2(target, STDOUT_FILENO);
  if (!options.terminal) ::dup2(error, STDERR_FILENO);
  ::signal(SIGINT, SIG_DFL);
  if (!options.folder.empty() && ::chdir(options.folder.c_str()) != 0) ::_exit(126);
  if (options.fileLimit >= 0) {
    auto const bytes = static_cast<rlim_t>(options.fileLimit);
    rlimit const limit = {bytes, bytes};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  constexpr unsigned nobody = 65534;
  if (options.nobody && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(126);
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

} // namespace Impl

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
  if (options.terminal) ::close(error[0]);
  std::thread interrupter([&] {
    if (options.interruptAfter < 0) return;
    std::this_thread::sleep_for(std::chrono::duration<double>(options.interruptAfter));
    ::kill(child, options.signal);
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
