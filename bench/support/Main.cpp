// Runs the benchmarks and closes with a table of ratios, as it stands in the README.
//
// A benchmark is named ROW/CONTESTANT, such as "256^3 noise, first direction/naive loop"; the
// contestant "SeluUtils" is this library. Where repetitions run, the fastest counts: what else the
// machine does only ever adds time.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr char c_ours[] = "SeluUtils";

class CRatioTable : public benchmark::ConsoleReporter {
public:
  CRatioTable() : ConsoleReporter(OO_None) {}

  void ReportRuns(std::vector<Run> const& runs) override {
    ConsoleReporter::ReportRuns(runs);
    for (Run const& run : runs) {
      if (run.error_occurred || run.run_type == Run::RT_Aggregate) continue;
      std::string const& name = run.run_name.function_name;
      std::size_t const slash = name.rfind('/');
      if (slash == std::string::npos) continue;
      Add(name.substr(0, slash), name.substr(slash + 1), run);
    }
  }

  void Finalize() override {
    ConsoleReporter::Finalize();
    std::printf("\n| what | %s |", c_ours);
    for (auto const& peer : m_Peers) std::printf(" / %s |", peer.c_str());
    std::printf("\n|---|---|");
    for (std::size_t k = 0; k < m_Peers.size(); ++k) std::printf("---|");
    std::printf("\n");
    std::vector<std::pair<std::int64_t, std::string>> rows;
    for (auto const& [row, order] : m_Order) rows.emplace_back(order, row);
    std::ranges::sort(rows);
    for (auto const& [order, row] : rows) PrintRow(row);
    std::fflush(stdout);
  }

private:
  struct StTime {
    double seconds; // of one iteration, on the processor
    double items;   // processed in it, 0 where they are not counted
  };

  void Add(std::string const& row, std::string const& contestant, Run const& run) {
    auto const order = m_Order.try_emplace(row, run.family_index).first;
    order->second = std::min(order->second, run.family_index);
    if (contestant != c_ours && std::ranges::find(m_Peers, contestant) == m_Peers.end())
      m_Peers.push_back(contestant);
    bool const isManual = run.run_name.time_type == "manual_time"; // as measured elsewhere
    double const seconds = (isManual ? run.real_accumulated_time : run.cpu_accumulated_time) /
                           static_cast<double>(run.iterations);
    auto const rate = run.counters.find("items_per_second");
    double const items = rate == run.counters.end() ? 0 : rate->second.value * seconds;
    auto const [entry, isNew] = m_Times[row].try_emplace(contestant, StTime{seconds, items});
    if (!isNew && seconds < entry->second.seconds) entry->second = {seconds, items};
  }

  void PrintRow(std::string const& row) {
    auto const& times = m_Times[row];
    auto const ours = times.find(c_ours);
    std::printf("| %s |", row.c_str());
    if (ours == times.end()) {
      std::printf(" - |");
    } else if (ours->second.items > 0) {
      std::printf(" %.3g ns each |", ours->second.seconds / ours->second.items * 1e9);
    } else {
      std::printf(" %.3g ms |", ours->second.seconds * 1e3);
    }
    for (auto const& peer : m_Peers) {
      auto const time = times.find(peer);
      if (time == times.end() || ours == times.end()) {
        std::printf(" |");
      } else {
        std::printf(" %.2g |", ours->second.seconds / time->second.seconds);
      }
    }
    std::printf("\n");
  }

  std::map<std::string, std::int64_t> m_Order; // rows, as they were registered
  std::vector<std::string> m_Peers;            // in the order of their first appearance
  std::map<std::string, std::map<std::string, StTime>> m_Times;
};

// The compiler as one names it, such as "GCC 12.2.0": the results say what built them.
std::string Compiler() {
#ifdef __clang__
  return "Clang " + std::to_string(__clang_major__) + "." + std::to_string(__clang_minor__) + "." +
         std::to_string(__clang_patchlevel__);
#else
  return "GCC " + std::to_string(__GNUC__) + "." + std::to_string(__GNUC_MINOR__) + "." +
         std::to_string(__GNUC_PATCHLEVEL__);
#endif
}

} // namespace

int main(int argc, char** argv) {
  benchmark::AddCustomContext("compiler", Compiler());
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  CRatioTable table;
  benchmark::RunSpecifiedBenchmarks(&table);
  benchmark::Shutdown();
  return 0;
}
