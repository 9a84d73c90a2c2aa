// Log lines per second against what else keeps a log: the plainest way (open for appending,
// write one line, close, no formatting) and spdlog's file logger flushed at every line, so
// that each line is in the file when the call returns, as ours is. AddToLog (line mode: time
// stamp, ANSI text) and AddToLogB (byte mode: the log's encoding, cached per path) have the bar
// 1.0 of the loop. Every side must have written every line, or no figure is given.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
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

// The lines that carry the message (the library's first byte-mode line also traces the log's
// encoding into it).
int lineCount(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  int lines = 0;
  for (std::string line; std::getline(in, line);) {
    lines += line.find("Solver: iteration converged") != std::string::npos ? 1 : 0;
  }
  return lines;
}

void runLogBench(benchmark::State& state, bool byteMode) {
  const auto dir = logDirectory();
  // Wherever the application was first placed (another benchmark may have done it), its log
  // is where LogFile says; the library writes only a log that exists, so it is made there.
  const std::filesystem::path log = orvo::toUtf8(orvo::files::LogFile());
  const auto plain = dir / "plain.log";
  const auto peer = dir / "spdlog.log";
  const orvo::String message = u"Solver: iteration converged, residual 1.25E-07 after 42 steps";
  const std::string line =
      "2026-Nov-23 10:15:20: Solver: iteration converged, residual "
      "1.25E-07 after 42 steps\r\n";
  constexpr int kLines = 2000;
  double ours = 0;
  double loop = 0;
  double spd = 0;
  for (auto _ : state) {
    std::ofstream(log, std::ios::trunc).close();
    std::ofstream(plain, std::ios::trunc).close();
    std::filesystem::remove(peer);
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
    {
      auto logger = spdlog::basic_logger_st("bench", peer.string());
      logger->set_pattern("%Y-%b-%d %H:%M:%S: %v");
      logger->flush_on(spdlog::level::info);
      start = Clock::now();
      for (int i = 0; i < kLines; ++i)
        logger->info("Solver: iteration converged, residual 1.25E-07 after 42 steps");
      spd += std::chrono::duration<double>(Clock::now() - start).count();
      spdlog::drop("bench");
    }
    for (const auto& written : {log, plain, peer}) {
      if (lineCount(written) != kLines) {
        state.SkipWithError(("not every line reached " + written.string()).c_str());
        return;
      }
    }
  }
  const double n = static_cast<double>(state.iterations()) * kLines;
  state.counters["ours_lines_per_s"] = n / ours;
  state.counters["loop_lines_per_s"] = n / loop;
  state.counters["spdlog_lines_per_s"] = n / spd;
  state.counters["ratio"] = loop / ours;  // bar: 1.0
  state.counters["ratio_spdlog"] = spd / ours;
}

void BM_AddToLog(benchmark::State& state) { runLogBench(state, false); }
void BM_AddToLogB(benchmark::State& state) { runLogBench(state, true); }
BENCHMARK(BM_AddToLog)->Unit(benchmark::kMillisecond)->Iterations(10);
BENCHMARK(BM_AddToLogB)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace
