#include "base/Signals.h"

#include "base/Errors.h"

#include <array>
#include <atomic>
#include <csignal>
#include <cstring>

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
