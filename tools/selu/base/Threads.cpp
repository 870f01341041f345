#include "base/Threads.h"

#include "base/Errors.h"
#include "base/Texts.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace selu {

using ORVA::int64;

int ParseThreads(std::string const& text) {
  constexpr int64 most = 1024;
  if (text.empty())
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, 64u));
  auto const numbers = ParseIntegers(text);
  if (!numbers || numbers->size() != 1 || numbers->front() < 1 || numbers->front() > most)
    throw CUsageError("--threads needs a number from 1 to " + std::to_string(most) + ", not \"" +
                      text + "\"");
  return static_cast<int>(numbers->front());
}

void ForEachPart(int threads, int64 parts, std::function<void(int64)> const& work) {
  std::atomic<int64> next = 0;
  std::mutex mutex;
  std::exception_ptr failure;
  auto const run = [&] {
    try {
      for (int64 part = next++; part < parts; part = next++) work(part);
    } catch (...) {
      next = parts;
      std::scoped_lock const lock(mutex);
      if (!failure) failure = std::current_exception();
    }
  };
  std::vector<std::jthread> others;
  try {
    for (int64 k = 1; k < std::min<int64>(threads, parts); ++k) others.emplace_back(run);
  } catch (std::system_error const&) { // fewer do as well
  }
  run();
  others.clear();
  if (failure) std::rethrow_exception(failure);
}

} // namespace selu
