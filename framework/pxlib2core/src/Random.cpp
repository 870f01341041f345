#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>

#include "Words.h"

#include <mutex>
#include <optional>
#include <random>

#if defined(__unix__) || defined(__APPLE__)
#include <pthread.h>
#endif

namespace ORVA {

namespace Impl {

constinit thread_local StRandomStream t_randomStream{};
constinit std::atomic<uint64> g_randomGeneration{1};

} // namespace Impl

constinit CRandom CRandom::s_object;

namespace {

// What Seed left for the streams that start later; guarded by the mutex.
struct StSeed {
  StSeed();

  std::mutex mutex;
  std::optional<uint64> seed;
  uint64 nextStream = 0;
  bool isGiven = false; // by Seed, else from the system's entropy
  uint64 forks = 0;     // since Seed
};

StSeed& Seeding() {
  static StSeed seeding;
  return seeding;
}

// A forked child would go on with copies of its parent's streams. It starts its own: from a seed
// made of the parent's and the number of the fork or, unseeded, from the system's entropy.
#if defined(__unix__) || defined(__APPLE__)
void BeforeFork() {
  Seeding().mutex.lock();
  ++Seeding().forks;
}

void AfterForkInParent() { Seeding().mutex.unlock(); }

void AfterForkInChild() {
  StSeed& seeding = Seeding();
  if (seeding.isGiven)
    // Mixed again: a child's child is not to fall back to the first seed.
    seeding.seed = Impl::CMixer(*seeding.seed ^ Impl::CMixer(~seeding.forks).Next()).Next();
  else
    seeding.seed.reset();
  seeding.nextStream = 0;
  seeding.forks = 0;
  ++Impl::g_randomGeneration;
  seeding.mutex.unlock();
}

StSeed::StSeed() { pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild); }
#else
StSeed::StSeed() = default;
#endif

uint64 Entropy() {
  std::random_device device;
  return (uint64{device()} << 32) ^ device();
}

void FillStream(Impl::StRandomStream& stream, uint64 seed, uint64 number) {
  // The stream's number is mixed before it meets the seed, so that seed n, stream 1 is not
  // seed n + 1, stream 0.
  Impl::CMixer words(number == 0 ? seed : seed ^ Impl::CMixer(number).Next());
  for (uint64& word : stream.state) word = words.Next();
  stream.rand15 = words.Next();
}

} // namespace

void CRandom::Seed(uint64 seed) {
  StSeed& seeding = Seeding();
  std::scoped_lock const lock(seeding.mutex);
  seeding.seed = seed;
  seeding.isGiven = true;
  seeding.nextStream = 1;
  seeding.forks = 0;
  FillStream(Impl::t_randomStream, seed, 0);
  Impl::t_randomStream.generation = ++Impl::g_randomGeneration;
}

void CRandom::Restart(Impl::StRandomStream& stream) {
  StSeed& seeding = Seeding();
  std::scoped_lock const lock(seeding.mutex);
  if (!seeding.seed) seeding.seed = Entropy();
  FillStream(stream, *seeding.seed, seeding.nextStream++);
  stream.generation = Impl::g_randomGeneration;
}

void CRandom::Rand(void* buffer, std::size_t bytes) {
  if (bytes == 0) return;
  if (buffer == nullptr)
    Impl::RaiseBadParam(ORVA_LOCATION("framework/pxlib2core/Random", "ORVA::CRandom::Rand"),
                        "buffer is null");
  Impl::FillBytes(buffer, bytes, Stream().state);
}

int CRandom::Rand15() {
  uint64& state = Stream().rand15;
  state += Impl::c_mixerStep;
  return static_cast<int>(Impl::Mix(state) >> 49);
}

namespace Impl {

CBorrowedStream::CBorrowedStream(CSourceReference source) : m_Own(CRandom::Stream()) {
  for (uint64& word : t_randomStream.state) word = source();
  t_randomStream.state[0] |= 1; // never all zeros
  t_randomStream.rand15 = source();
}

// Where the streams have been restarted meanwhile, the stream is the restarted one.
CBorrowedStream::~CBorrowedStream() {
  if (t_randomStream.generation == m_Own.generation) t_randomStream = m_Own;
}

} // namespace Impl

} // namespace ORVA
