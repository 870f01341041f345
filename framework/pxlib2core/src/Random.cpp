#include <pxlib2core/Exception.h>
#include <pxlib2core/Random.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <mutex>
#include <optional>
#include <random>

namespace ORVA {

namespace Impl {

constinit thread_local StRandomStream t_randomStream{};
constinit std::atomic<uint64> g_randomGeneration{1};

} // namespace Impl

constinit CRandom CRandom::s_object;

namespace {

// What Seed left for the streams that start later; guarded by the mutex.
struct StSeed {
  std::mutex mutex;
  std::optional<uint64> seed;
  uint64 nextStream = 0;
};

StSeed& Seeding() {
  static StSeed seeding;
  return seeding;
}

// SplitMix64 (Steele, Lea and Flood, OOPSLA 2014): turns a counter into well-mixed words.
class CMixer {
public:
  explicit CMixer(uint64 start) : m_State(start) {}
  uint64 Next() {
    m_State += 0x9E3779B97F4A7C15u;
    uint64 z = m_State;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }

private:
  uint64 m_State;
};

uint64 Entropy() {
  std::random_device device;
  return (uint64{device()} << 32) ^ device();
}

void FillStream(Impl::StRandomStream& stream, uint64 seed, uint64 number) {
  // The stream's number is mixed before it meets the seed, so that seed n, stream 1 is not
  // seed n + 1, stream 0.
  CMixer words(number == 0 ? seed : seed ^ CMixer(number).Next());
  for (uint64& word : stream.state) word = words.Next();
  stream.rand15 = words.Next();
}

void StoreLittleEndian(std::byte* target, uint64 word, std::size_t bytes) {
  if constexpr (std::endian::native == std::endian::little) {
    std::memcpy(target, &word, bytes);
  } else {
    for (std::size_t i = 0; i < bytes; ++i) target[i] = static_cast<std::byte>(word >> (8 * i));
  }
}

} // namespace

void CRandom::Seed(uint64 seed) {
  StSeed& seeding = Seeding();
  std::scoped_lock const lock(seeding.mutex);
  seeding.seed = seed;
  seeding.nextStream = 1;
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
  Impl::StRandomStream& shared = Stream();
  Impl::StRandomStream stream = shared; // in registers while the buffer is filled
  auto* target = static_cast<std::byte*>(buffer);
  for (; bytes >= 8; bytes -= 8, target += 8) StoreLittleEndian(target, stream.Next(), 8);
  if (bytes > 0) StoreLittleEndian(target, stream.Next(), bytes);
  shared = stream;
}

int CRandom::Rand15() {
  uint64& state = Stream().rand15;
  CMixer mixer(state);
  uint64 const word = mixer.Next();
  state += 0x9E3779B97F4A7C15u;
  return static_cast<int>(word >> 49);
}

} // namespace ORVA
