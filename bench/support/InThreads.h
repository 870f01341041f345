// Work in parts by several threads, in real time, wherever the processors are.
//
//   double const seconds = bench::SecondsInThreads(2, [&](int part) { ... });
#pragma once

#include <chrono>
#include <thread>
#include <vector>

#include <sched.h>
#include <unistd.h>

namespace bench {

/// Calls work(0) .. work(threads - 1), each in a thread of its own that may run on any processor,
/// and says how long all took.
template <class Work>
double SecondsInThreads(int threads, Work work) {
  auto const start = std::chrono::steady_clock::now();
  {
    std::vector<std::jthread> all;
    for (int part = 0; part < threads; ++part)
      all.emplace_back([&work, part] {
        cpu_set_t processors;
        CPU_ZERO(&processors);
        for (long k = 0; k < ::sysconf(_SC_NPROCESSORS_ONLN); ++k)
          CPU_SET(static_cast<unsigned>(k), &processors);
        (void)::sched_setaffinity(0, sizeof processors, &processors);
        work(part);
      });
  }
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace bench
