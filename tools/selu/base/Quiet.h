// Silence for libraries that write remarks of their own to the standard streams.
//
//   {
//     CQuiet quiet;
//     reader->Read(buffer);          // whatever it prints goes nowhere
//   }
#pragma once

#include "base/Signals.h"

#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace selu {

/// While this object lives, standard output and standard error lead nowhere for the process.
class CQuiet {
public:
  CQuiet()
      : m_Out(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)),
        m_Error(::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)) {
    SetSignalOutput(m_Error);
    int const nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    if (nowhere > STDERR_FILENO) ::close(nowhere);
  }
  CQuiet(CQuiet const&) = delete;
  CQuiet& operator=(CQuiet const&) = delete;
  ~CQuiet() {
    std::fflush(stdout);
    std::fflush(stderr);
    SetSignalOutput(STDERR_FILENO);
    Restore(m_Out, STDOUT_FILENO);
    Restore(m_Error, STDERR_FILENO);
  }

private:
  // A stream that was closed before is closed again.
  static void Restore(int kept, int stream) {
    if (kept < 0) {
      ::close(stream);
      return;
    }
    ::dup2(kept, stream);
    ::close(kept);
  }

  int m_Out, m_Error;
};

} // namespace selu
