// Progress on a terminal: a bar with the time left. Elsewhere nothing is shown.
//
//   CProgressBar bar("counting pairs", 13);
//   algorithm.SetProgressObserver(&bar);        // or bar.Advance() after each step
//   // the end of its life wipes the bar
#pragma once

#include <SeluBase/Algorithm.h>

#include <chrono>
#include <mutex>
#include <string>

namespace selu {

/// One bar for a whole job of a known number of steps. As an observer it takes the steps of any
/// number of operations, from any thread; their own starts and ends do not begin a new bar.
class CProgressBar : public ORVA::IProgressObserver {
public:
  CProgressBar(std::string text, ORVA::int64 steps);
  CProgressBar(CProgressBar const&) = delete;
  CProgressBar& operator=(CProgressBar const&) = delete;
  ~CProgressBar() override;

  void Start(ORVA::int64, char const*) override {}
  void Advance() override;
  void Finish(bool) noexcept override {}

private:
  void Draw();

  std::mutex m_Mutex;
  std::string m_Text;
  ORVA::int64 m_Steps, m_Done = 0;
  bool m_Visible;
  std::chrono::steady_clock::time_point m_Start, m_Drawn;
};

/// "1:05" or "2:00:07".
[[nodiscard]] std::string TimeText(double seconds);

} // namespace selu
