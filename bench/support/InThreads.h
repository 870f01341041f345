// Work in parts by several threads, in real time, each on a processor of its own: a system may
// leave short threads on one processor for a while.
//
//   double const seconds = bench::SecondsInThreads(2, [&](int part) { ... });
#pragma once

#include <cerrno>
#include <chrono>
#include <system_error>
#include <thread>
#include <vector>

#include <sched.h>
#include <unistd.h>

namespace bench {

/// Calls work(0) .. work(threads - 1), each in a thread of its own on the processor of its number,
/// as far as there are so many, and says how long all took.
template <class Work>
double SecondsInThreads(int threads, Work work) {
  auto const start = std::chrono::steady_clock::now();
  {
    std::vector<std::jthread> all;
    for (int part = 0; part < threads; ++part)
      all.emplace_back([&work, part] {
        cpu_set_t processors;
        CPU_ZERO(&processors);
        CPU_SET(static_cast<unsigned>(part % ::sysconf(_SC_NPROCESSORS_ONLN)), &processors);
        if (::sched_setaffinity(0, sizeof processors, &processors) != 0)
          throw std::system_error(errno, std::generic_category(), "a thread's processor");
        work(part);
      });
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace bench
