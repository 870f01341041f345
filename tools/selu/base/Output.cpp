#include "base/Output.h"

#include "base/AtomicFile.h"
#include "base/Errors.h"
#include "base/Texts.h"

#include <cstdlib>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace selu {

void OccupyClosedStreams() noexcept {
  // Opening takes the lowest number that is free; the wrong way round, use still fails.
  for (int const stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (::fcntl(stream, F_GETFD) < 0)
      (void)::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

void PrintOut(std::string_view text) {
  if (int const error = WriteAll(STDOUT_FILENO, text); error != 0)
    throw CAppError("cannot write to standard output: " + SystemText(error));
}

void WriteOut(CAtomicFile* file, std::string_view text) {
  if (file != nullptr)
    file->Append(text);
  else
    PrintOut(text);
}

void PrintNote(std::string_view text) noexcept {
  // Nobody can be told that standard error failed.
  (void)WriteAll(STDERR_FILENO, "selu: ");
  (void)WriteAll(STDERR_FILENO, text);
  (void)WriteAll(STDERR_FILENO, "\n");
}

bool StderrIsTerminal() noexcept {
  char const* const kind = std::getenv("TERM"); // NOLINT(concurrency-mt-unsafe)
  return ::isatty(STDERR_FILENO) == 1 && kind != nullptr && std::string_view(kind) != "dumb";
}

int OutputColumns() noexcept {
  constexpr int page = 120;
  winsize size = {};
  bool const known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : page;
}

std::string CsvField(std::string_view text) {
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
  std::string quoted = "\"";
  for (char const c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + "\"";
}

} // namespace selu
