#include "base/Signals.h"

#include "base/Errors.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>

#include <unistd.h>

namespace selu {
namespace {

// What a signal handler may touch: a fixed table of names, each with a flag that says whether the
// name before it is complete.
struct StSlot {
  std::atomic<bool> used = false;
  char name[4096] = {};
};
std::array<StSlot, 16> g_temporaries;
std::atomic<int> g_signalOutput = STDERR_FILENO;
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void RemoveTemporaries() noexcept {
  for (auto const& slot : g_temporaries)
    if (slot.used.load()) ::unlink(slot.name);
}

extern "C" void EndBySignal(int signal) {
  RemoveTemporaries();
  if (signal == SIGINT) {
    // The bar of a terminal is wiped first; elsewhere nothing stands on the line.
    int const output = g_signalOutput.load();
    constexpr char wipe[] = "\r\033[K", text[] = "selu: interrupted\n";
    if (::isatty(output) == 1) (void)!::write(output, wipe, sizeof wipe - 1);
    (void)!::write(output, text, sizeof text - 1);
  }
  ::_exit(128 + signal);
}

std::atomic<bool> g_memoryRanOut = false;
std::terminate_handler g_terminate = nullptr;

void NoteMemory() {
  g_memoryRanOut.store(true);
  throw std::bad_alloc();
}

// Libraries break down where memory has run out, some in destructors that may not throw.
void EndWithoutMemory() noexcept {
  if (!g_memoryRanOut.load()) return;
  RemoveTemporaries();
  constexpr char text[] = "selu: out of memory\n";
  (void)!::write(g_signalOutput.load(), text, sizeof text - 1);
  ::_exit(c_exitError);
}

extern "C" void EndByCrash(int signal) {
  EndWithoutMemory();
  RemoveTemporaries();
  std::signal(signal, SIG_DFL); // blocked until the handler returns to where it happens again
}

void EndByTerminate() {
  EndWithoutMemory();
  g_terminate();
}

void InstallMemoryHandlers() {
  std::set_new_handler(NoteMemory);
  g_terminate = std::set_terminate(EndByTerminate);
  struct sigaction action = {};
  bool const isWatched =
      ::sigaction(SIGSEGV, nullptr, &action) == 0 && action.sa_handler != SIG_DFL;
  if (isWatched) return; // by a sanitizer
  action = {};
  action.sa_handler = EndByCrash;
  ::sigaction(SIGSEGV, &action, nullptr);
}

} // namespace

void InstallSignalHandlers() {
  for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) {
    struct sigaction action = {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) continue;
    action = {};
    action.sa_handler = EndBySignal;
    ::sigfillset(&action.sa_mask);
    ::sigaction(signal, &action, nullptr);
  }
  std::signal(SIGXFSZ, SIG_IGN);
  InstallMemoryHandlers();
}

void ResetSignalHandlers() noexcept {
  for (int const signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(signal, SIG_DFL);
  struct sigaction action = {};
  if (::sigaction(SIGSEGV, nullptr, &action) == 0 && action.sa_handler == EndByCrash)
    std::signal(SIGSEGV, SIG_DFL);
  std::set_new_handler(nullptr);
  std::set_terminate(std::abort);
}

void SetSignalOutput(int descriptor) noexcept { g_signalOutput.store(descriptor); }

CTemporaryName::CTemporaryName(std::filesystem::path path) : m_Path(std::move(path)), m_Slot(-1) {
  auto const& text = m_Path.native();
  if (text.size() >= sizeof StSlot::name) throw CAppError("the path " + text + " is too long");
  for (std::size_t i = 0; i < g_temporaries.size(); ++i) {
    StSlot& slot = g_temporaries[i];
    if (slot.used.load()) continue;
    std::memcpy(slot.name, text.c_str(), text.size() + 1);
    slot.used.store(true);
    m_Slot = static_cast<int>(i);
    return;
  }
  throw CAppError("too many output files at once");
}

CTemporaryName::~CTemporaryName() {
  ::unlink(m_Path.c_str());
  g_temporaries[static_cast<std::size_t>(m_Slot)].used.store(false);
}

} // namespace selu
