// Random public operations on shared and on own objects over many threads: each must give what it
// gives alone, and memory must stay flat.
//
//   Soak [SECONDS [THREADS [SEED]]]
#include "soak/Operations.h"

#include <SeluBase/Neighborhood.h>
#include <pxlib2core/Exception.h>

#include <malloc.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <string_view>
#include <thread>
#include <type_traits>
#include <vector>

namespace soak {

namespace {

using namespace ORVA;

constexpr int c_rounds = 10;                    // the threads end and begin anew in between
constexpr std::size_t c_keptBytes = 256 * 1024; // by which rounds may differ
constexpr uint64 c_tasks = 2000;

CImage Noise(CPixelType type, uint64 seed, int64 values) {
  CImage image(type, CSize(24, 20, 16));
  CRandomSource source(seed);
  auto const fill = [&](auto const& pixels, double unit) {
    for (int64 z = 0; z < 16; ++z)
      for (int64 y = 0; y < 20; ++y)
        for (auto& pixel : pixels.Row(y, z))
          pixel = static_cast<std::remove_reference_t<decltype(pixel)>>(
              static_cast<double>(Between(source, 0, values - 1)) * unit);
  };
  auto const access = image.CreateAccess(true);
  if (type == IMAGE_GREY_8) fill(access.As<std::uint8_t>(), 1);
  if (type == IMAGE_GREY_32) fill(access.As<std::uint32_t>(), 1);
  if (type == IMAGE_GREY_F) fill(access.As<float>(), 0.125);
  return image;
}

CTextureWindow Window() {
  CTextureWindow window("soak", nullptr);
  window.SetSides(CSize(5, 5, 3));
  window.SetDisplacements(NeighborDisplacements(3));
  window.SetFeatures(std::vector{EnTextureFeature::Contrast, EnTextureFeature::JointEntropy});
  return window;
}

CPairCounter Pairs(CLevelImage const& levels) {
  CPairCounter pairs(levels.Levels());
  for (auto const& way : NeighborDisplacements(3)) pairs.Count(levels, way);
  return pairs;
}

CSolidVisitor Tetrahedron() {
  std::vector<Point> const corners{{1, 1, 1}, {20, 3, 2}, {4, 18, 5}, {6, 7, 15}};
  std::vector<CSolidVisitor::Triangle> const faces{{0, 1, 2}, {0, 1, 3}, {0, 2, 3}, {1, 2, 3}};
  return {corners, faces, NEIGHBORHOOD_26, true};
}

CValueMap Features() {
  CValueMap map;
  map.SetEntry("maximum label", CValueLong(3));
  for (int label = 1; label <= 3; ++label) {
    std::string const object = "object " + std::to_string(label);
    map.SetEntry(object + "/object", CValueString(std::to_string(label)));
    map.SetEntry(object + "/x", CValueDouble(label * 1.5));
    map.SetEntry(object + "/kind", CValueString(std::string(label % 2 == 0 ? "round" : "flat")));
  }
  return map;
}

} // namespace

StShared::StShared()
    : gray(Noise(IMAGE_GREY_8, 1, 200)), labels(Noise(IMAGE_GREY_32, 2, 6)),
      reals(Noise(IMAGE_GREY_F, 3, 500)), levels(CQuantizer::BinCount(12).Quantize(reals)),
      pairs(Pairs(levels)), objects(levels, labels), window(Window()),
      quantizer(CQuantizer::Range(-20, 25, 300)), solid(Tetrahedron()),
      polygon({{0, 0, 0}, {15, 4, 0}, {9, 17, 0}, {5, 6, 0}}, 2, NEIGHBORHOOD_8, true),
      ellipsoid(CTriple<double>(10, 9.5, 8), CTriple<double>(7.2, 6, 5)), features(Features()) {}

namespace {

class CSoak {
public:
  explicit CSoak(uint64 seed) : m_Seed(seed), m_Operations(AllOperations()) {
    for (uint64 task = 0; task < c_tasks; ++task) m_Alone.push_back(Digest(task));
  }

  /// Threads do tasks in orders of their own until the time is over; how many they have done.
  uint64 Run(std::chrono::duration<double> time, unsigned threads, uint64 round) {
    auto const end = std::chrono::steady_clock::now() + time;
    std::atomic<uint64> done = 0;
    std::vector<std::thread> running;
    for (unsigned k = 0; k < threads; ++k)
      running.emplace_back([&, k] {
        CRandomSource order(m_Seed + 1, round * threads + k);
        uint64 n = 0;
        for (; std::chrono::steady_clock::now() < end; ++n) Check(order() % c_tasks);
        done += n;
      });
    for (auto& thread : running) thread.join();
    return done;
  }

  [[nodiscard]] uint64 Different() const { return m_Different; }
  [[nodiscard]] std::size_t Operations() const { return m_Operations.size(); }

private:
  [[nodiscard]] StOperation const& OperationOf(uint64 task) const {
    return m_Operations[task % m_Operations.size()];
  }
  [[nodiscard]] uint64 Digest(uint64 task) const {
    CRandomSource source(m_Seed, task);
    CDigest digest;
    try {
      OperationOf(task).run(m_Shared, source, digest);
    } catch (CException const& error) { // such as a plane beside the image
      digest.Add(std::string_view(error.what()));
    }
    return digest.Value();
  }
  void Check(uint64 task) {
    if (Digest(task) == m_Alone[task]) return;
    if (++m_Different <= 20)
      std::fprintf(stderr, "task %llu (%s) gives something else than alone\n",
                   static_cast<unsigned long long>(task), OperationOf(task).name);
  }

  uint64 m_Seed;
  StShared m_Shared;
  std::vector<StOperation> m_Operations;
  std::vector<uint64> m_Alone; // digests of the tasks, from a single thread
  std::atomic<uint64> m_Different = 0;
};

std::size_t BytesInUse() {
  struct mallinfo2 const info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

std::size_t ResidentBytes() {
  std::size_t total = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * 4096;
}

int Main(double seconds, unsigned threads, uint64 seed) {
  CSoak soak(seed);
  uint64 done = 0;
  std::size_t first = 0, last = 0;
  for (uint64 round = 0; round < c_rounds; ++round) {
    done += soak.Run(std::chrono::duration<double>(seconds / c_rounds), threads, round);
    last = BytesInUse();
    if (round == 0) first = last; // with what the first uses have set up
  }
  bool const isFlat = last <= first + c_keptBytes;
  std::printf(
      "%llu tasks of %zu operations over %u threads in %.0f s, seed %llu: %llu different; "
      "%zu bytes in use after the first of %d rounds, %zu after the last%s; %zu MiB resident\n",
      static_cast<unsigned long long>(done), soak.Operations(), threads, seconds,
      static_cast<unsigned long long>(seed), static_cast<unsigned long long>(soak.Different()),
      first, c_rounds, last, isFlat ? "" : ": not flat", ResidentBytes() >> 20);
  return soak.Different() == 0 && isFlat && done > 0 ? 0 : 1;
}

} // namespace

} // namespace soak

int main(int argc, char** argv) {
  double const seconds = argc > 1 ? std::strtod(argv[1], nullptr) : 60;
  auto const threads = static_cast<unsigned>(argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 8);
  ORVA::uint64 const seed = argc > 3 ? std::strtoull(argv[3], nullptr, 10) : 20240229;
  return soak::Main(seconds, threads, seed);
}
