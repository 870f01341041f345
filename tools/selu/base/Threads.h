// Work in parts, by several threads.
//
//   int const threads = ParseThreads("");            // "" for all cores, else a number
//   ForEachPart(threads, slices, [&](ORVA::int64 slice) { ... });
#pragma once

#include <pxlib2core/Types.h>

#include <functional>
#include <string>

namespace selu {

inline constexpr char c_threadsHelp[] =
    "how many threads compute; without it one for each core. The result is the same with any";

/// 1 to 1024, and the number of cores for an empty text; throws CUsageError for anything else.
[[nodiscard]] int ParseThreads(std::string const& text);

/// Calls work(0) .. work(parts - 1), each once, by so many threads at most; where the system gives
/// no more threads, by those that it gives. What a part throws is thrown here, when all threads
/// have stopped.
void ForEachPart(int threads, ORVA::int64 parts, std::function<void(ORVA::int64 part)> const& work);

} // namespace selu
