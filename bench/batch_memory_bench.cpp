// Peak memory of one orvo batch line with a 50 MB string argument, against what a caller would
// otherwise write: a JSON document library (nlohmann::json) parsed in full, its string turned
// into UTF-16 and passed on. Each side runs in a child process of its own so that its peak
// resident size is its own; the counters report MiB, the peak over the line's size (the bar is
// 6 for a call whose answer is small) and ours over the peer's.

#include <benchmark/benchmark.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "bench_support.hpp"
#include "cli.hpp"
#include "orvogeneric/automation.hpp"

namespace {

using orvo::bench::childPeakMiB;

constexpr std::size_t kStringBytes = 50'000'000;

// Words and spaces, so that the string members have something to find.
std::string batchLine(const char* member, const char* extraArgs) {
  std::string line = R"({"call":"StringUtilities.)" + std::string(member) + R"(","args":[")";
  const std::size_t start = line.size();
  line.reserve(start + kStringBytes + 64);
  for (std::size_t i = 0; line.size() - start < kStringBytes; ++i) {
    line += "word" + std::to_string(i % 100000) + ' ';
  }
  line += "\"" + std::string(extraArgs) + "]}";
  return line;
}

void memoryOfOneLine(benchmark::State& state, const char* member, const char* extraArgs) {
  double ours = 0;
  double peer = 0;
  double lineMiB = 0;
  for (auto _ : state) {
    ours = childPeakMiB([&] {
      const std::string line = batchLine(member, extraArgs);
      orvo::cli::ObjectTable objects;
      benchmark::DoNotOptimize(orvo::cli::batchLine(line, objects));
    });
    peer = childPeakMiB([&] {
      const std::string line = batchLine(member, extraArgs);
      const auto document = nlohmann::json::parse(line);
      std::vector<orvo::Variant> args;
      for (const auto& a : document.at("args")) {
        args.emplace_back(orvo::fromUtf8(a.get_ref<const std::string&>()));
      }
      const auto instance = orvo::automation::globalInstance("StringUtilities");
      benchmark::DoNotOptimize(orvo::automation::invoke(*instance, member, args));
    });
    lineMiB = static_cast<double>(batchLine(member, extraArgs).size()) / (1 << 20);
  }
  state.counters["line_MiB"] = lineMiB;
  state.counters["ours_peak_MiB"] = ours;
  state.counters["peer_peak_MiB"] = peer;
  state.counters["ours_over_line"] = ours / lineMiB;
  state.counters["ours_over_peer"] = ours / peer;
}

void BM_BatchLineMemory_LenTrim(benchmark::State& state) { memoryOfOneLine(state, "LenTrim", ""); }
void BM_BatchLineMemory_StringCount(benchmark::State& state) {
  memoryOfOneLine(state, "StringCount", R"(,"word1")");
}
BENCHMARK(BM_BatchLineMemory_LenTrim)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BatchLineMemory_StringCount)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
