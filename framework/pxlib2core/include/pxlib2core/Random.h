// The process-wide source of random bits.
//
//   CRandom& random = CRandom::Obj();
//   random.Seed(42);                            // the same bits in every run, on every platform
//   uint64 const word = random.Rand64();
//   unsigned char buffer[100];
//   random.Rand(buffer, sizeof buffer);
#pragma once

#include <pxlib2core/Export.h>
#include <pxlib2core/RandomSource.h>
#include <pxlib2core/Types.h>

#include <atomic>
#include <cstddef>
#include <limits>

namespace ORVA {

namespace Impl {

/// One thread's stream.
struct StRandomStream {
  uint64 state[4];
  uint64 rand15;     // state of the small generator behind Rand15
  uint64 generation; // which Seed call this stream belongs to; 0: none yet

  uint64 Next() noexcept { return NextWord(state); }
};

// Constant-initialized, so that an executable's draw reaches its stream by one load. The TLS model
// is left to the compiler: a plug-in may load the library late.
extern PXLIB2CORE_EXPORT constinit thread_local StRandomStream t_randomStream;
extern PXLIB2CORE_EXPORT constinit std::atomic<uint64> g_randomGeneration;

class CSharedSource;
class CBorrowedStream;

} // namespace Impl

/// Random bits for every thread at once: each thread draws from a stream of its own, so draws never
/// wait and never race. The thread that calls Seed gets stream 0 of that seed; each other thread
/// gets the next stream at its first draw after that. Unseeded, the streams start from the
/// operating system's entropy. A draw costs about a nanosecond.
///
/// Which stream a thread gets hangs on who draws first. Where the same numbers have to come back
/// from many threads, give each piece of work a CRandomSource of its own.
///
/// A child made by fork() draws other numbers than its parent. After Seed they are the same in
/// every run: the k-th child since then gets a seed made of the parent's and k, and its first
/// thread that draws stream 0 of that. Unseeded, the child starts from the operating system's
/// entropy.
class PXLIB2CORE_EXPORT CRandom {
public:
  /// The one source of the process.
  [[nodiscard]] static CRandom& Obj() noexcept { return s_object; }
  CRandom(CRandom const&) = delete;
  CRandom& operator=(CRandom const&) = delete;

  /// Restarts the streams of all threads from this number.
  void Seed(uint64 seed);

  /// 8, 32 or 64 random bits; each takes one step of the stream and its highest bits.
  [[nodiscard]] std::uint8_t Rand8() { return static_cast<std::uint8_t>(Rand64() >> 56); }
  /// The highest 32 bits of a step.
  [[nodiscard]] std::uint32_t Rand32() { return static_cast<std::uint32_t>(Rand64() >> 32); }
  /// All bits of a step.
  [[nodiscard]] uint64 Rand64() { return Stream().Next(); }
  /// Fills a buffer: the bytes of successive Rand64 words, lowest byte first; a last part of fewer
  /// than 8 bytes takes the lowest bytes of one more word. A null buffer is refused with
  /// CExBadParam unless `bytes` is 0.
  void Rand(void* buffer, std::size_t bytes);
  /// 0 to 32767, from a small generator of its own that Seed starts anew as well.
  [[nodiscard]] int Rand15();
  /// The greatest number of Rand15.
  static constexpr int c_rand15Max = 32767;

private:
  friend class Impl::CSharedSource;
  friend class Impl::CBorrowedStream;

  constexpr CRandom() = default;
  [[nodiscard]] static Impl::StRandomStream& Stream() {
    Impl::StRandomStream& stream = Impl::t_randomStream;
    if (stream.generation != Impl::g_randomGeneration.load(std::memory_order_relaxed)) [[unlikely]]
      Restart(stream);
    return stream;
  }
  static void Restart(Impl::StRandomStream& stream);

  static CRandom s_object;
};

namespace Impl {

/// The calling thread's stream of CRandom::Obj() as a source for one draw or one array: it looks
/// only once whether the streams have been restarted.
class CSharedSource {
public:
  using result_type = uint64;

  CSharedSource() : m_Stream(&CRandom::Stream()) {}

  uint64 operator()() noexcept { return m_Stream->Next(); }
  [[nodiscard]] static constexpr uint64 min() noexcept { return 0; }
  [[nodiscard]] static constexpr uint64 max() noexcept {
    return std::numeric_limits<uint64>::max();
  }

private:
  StRandomStream* m_Stream;
};

/// While it lives, the calling thread's stream of CRandom::Obj() is one begun with five words of
/// the given source. So a generator that knows only the shared source can draw from another one.
class PXLIB2CORE_EXPORT CBorrowedStream {
public:
  explicit CBorrowedStream(CSourceReference source);
  CBorrowedStream(CBorrowedStream const&) = delete;
  CBorrowedStream& operator=(CBorrowedStream const&) = delete;
  ~CBorrowedStream();

private:
  StRandomStream m_Own;
};

} // namespace Impl

} // namespace ORVA
