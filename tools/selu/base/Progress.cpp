#include "Progress.h"

#include "AtomicFile.h"
#include "Output.h"

#include <algorithm>
#include <cmath>

#include <unistd.h>

namespace selu {

using Clock = std::chrono::steady_clock;

CProgressBar::CProgressBar(std::string text, ORVA::int64 steps)
    : m_text(std::move(text)), m_steps(std::max<ORVA::int64>(steps, 1)),
      m_visible(StderrIsTerminal()), m_start(Clock::now()) {
  if (m_visible) Draw();
}

CProgressBar::~CProgressBar() {
  if (m_visible) (void)WriteAll(STDERR_FILENO, "\r\033[K");
}

void CProgressBar::Advance() {
  m_done = std::min(m_done + 1, m_steps);
  if (m_visible && Clock::now() - m_drawn > std::chrono::milliseconds(100)) Draw();
}

void CProgressBar::Draw() {
  m_drawn = Clock::now();
  constexpr ORVA::int64 width = 30;
  double const share = static_cast<double>(m_done) / static_cast<double>(m_steps);
  auto const filled = static_cast<std::size_t>(share * static_cast<double>(width));
  std::string line = "\r\033[K" + m_text + " [" + std::string(filled, '#') +
                     std::string(width - filled, '.') + "] " +
                     std::to_string(static_cast<int>(share * 100)) + "%";
  if (m_done > 0) {
    double const elapsed = std::chrono::duration<double>(m_drawn - m_start).count();
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
