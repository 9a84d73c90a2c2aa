// Log lines per second against the plainest way to keep a log: open for appending, write one
// line, close, with no formatting. AddToLog (line mode: time stamp, ANSI text) has the bar
// 0.7 of that loop, AddToLogB (byte mode: the log's encoding detected, cached per path) 0.5.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "files/log.hpp"
#include "frame/parent_app.hpp"
#include "frame/state.hpp"

namespace {

using Clock = std::chrono::steady_clock;

std::filesystem::path logDirectory() {
  static const std::filesystem::path dir = [] {
    auto d = std::filesystem::temp_directory_path() / "orvo_bench_log";
    std::filesystem::create_directories(d);
    orvo::frame::InitialiseParentAppProperties(orvo::fromUtf8(d.string()), u"BenchApp");
    return d;
  }();
  return dir;
}

void runLogBench(benchmark::State& state, bool byteMode) {
  const auto dir = logDirectory();
  const auto log = dir / "BenchApp.log";
  const auto plain = dir / "plain.log";
  const orvo::String message = u"Solver: iteration converged, residual 1.25E-07 after 42 steps";
  const std::string line =
      "2026-Nov-23 10:15:20: Solver: iteration converged, residual "
      "1.25E-07 after 42 steps\r\n";
  constexpr int kLines = 2000;
  double ours = 0;
  double loop = 0;
  for (auto _ : state) {
    std::ofstream(log, std::ios::trunc).close();
    std::ofstream(plain, std::ios::trunc).close();
    auto start = Clock::now();
    for (int i = 0; i < kLines; ++i) {
      orvo::files::AddToLogB_Worker(message, u"", 0,
                                    byteMode ? orvo::VBool::True : orvo::VBool::False);
    }
    ours += std::chrono::duration<double>(Clock::now() - start).count();
    start = Clock::now();
    for (int i = 0; i < kLines; ++i) {
      const int fd = ::open(plain.c_str(), O_WRONLY | O_APPEND | O_CREAT, 0644);
      if (fd < 0 || ::write(fd, line.data(), line.size()) < 0) state.SkipWithError("write");
      if (fd >= 0) ::close(fd);
    }
    loop += std::chrono::duration<double>(Clock::now() - start).count();
  }
  const double n = static_cast<double>(state.iterations()) * kLines;
  state.counters["ours_lines_per_s"] = n / ours;
  state.counters["loop_lines_per_s"] = n / loop;
  state.counters["ratio"] = loop / ours;  // bars: 0.7 line mode, 0.5 byte mode
}

void BM_AddToLog(benchmark::State& state) { runLogBench(state, false); }
void BM_AddToLogB(benchmark::State& state) { runLogBench(state, true); }
BENCHMARK(BM_AddToLog)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_AddToLogB)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
