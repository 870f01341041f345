#include "base/Progress.h"

#include "base/AtomicFile.h"
#include "base/Output.h"

#include <algorithm>
#include <cmath>

#include <unistd.h>

namespace selu {

using Clock = std::chrono::steady_clock;

CProgressBar::CProgressBar(std::string text, ORVA::int64 steps)
    : m_Text(std::move(text)), m_Steps(std::max<ORVA::int64>(steps, 1)),
      m_Visible(StderrIsTerminal()), m_Start(Clock::now()) {
  if (m_Visible) Draw();
}

CProgressBar::~CProgressBar() {
  if (m_Visible) (void)WriteAll(STDERR_FILENO, "\r\033[K");
}

void CProgressBar::Advance() {
  std::scoped_lock const lock(m_Mutex);
  m_Done = std::min(m_Done + 1, m_Steps);
  if (m_Visible && Clock::now() - m_Drawn > std::chrono::milliseconds(100)) Draw();
}

void CProgressBar::Draw() {
  m_Drawn = Clock::now();
  constexpr ORVA::int64 width = 30;
  double const share = static_cast<double>(m_Done) / static_cast<double>(m_Steps);
  auto const filled = static_cast<std::size_t>(share * static_cast<double>(width));
  std::string line = "\r\033[K" + m_Text + " [" + std::string(filled, '#') +
                     std::string(width - filled, '.') + "] " +
                     std::to_string(static_cast<int>(share * 100)) + "%";
  if (m_Done > 0) {
    double const elapsed = std::chrono::duration<double>(m_Drawn - m_Start).count();
    line += ", " + TimeText(elapsed / share - elapsed) + " left";
  }
  (void)WriteAll(STDERR_FILENO, line);
}

std::string TimeText(double seconds) {
  auto const total = static_cast<long long>(std::ceil(std::clamp(seconds, 0.0, 3.6e8)));
  auto const two = [](long long value) {
    return std::string(1, static_cast<char>('0' + value / 10)) +
           static_cast<char>('0' + value % 10);
  };
  if (total < 3600) return std::to_string(total / 60) + ":" + two(total % 60);
  return std::to_string(total / 3600) + ":" + two(total / 60 % 60) + ":" + two(total % 60);
}

} // namespace selu
