// Number text against the C library doing the nearest equivalent work:
//  - doubleToText against snprintf("%.15G") followed by the decimal separator replacement and
//    widening to UTF-16, which yields the same text for ordinary values;
//  - Val against strtod on the same texts (already narrowed to char for strtod).
// Both sides run inside the same benchmark iteration over the same inputs, so machine load hits
// them alike. Read "ratio" as our time over the peer's: 1.0 is parity, 2.0 twice as slow.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "runtime/numbers.hpp"

namespace {

using Clock = std::chrono::steady_clock;

// A fixed mix of what applications print: whole numbers, money-like values, measurements with
// long fractions, and very large and very small magnitudes.
const std::vector<double>& inputs() {
  static const std::vector<double> values = [] {
    std::mt19937_64 rng(20261115);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::vector<double> v;
    for (int i = 0; i < 256; ++i) {
      switch (i % 4) {
        case 0:
          v.push_back(static_cast<double>(rng() % 100000));
          break;
        case 1:
          v.push_back(static_cast<double>(rng() % 1000000) / 100.0);
          break;
        case 2:
          v.push_back(unit(rng) * 1000.0 - 500.0);
          break;
        default:
          v.push_back((unit(rng) - 0.5) * std::pow(10.0, static_cast<int>(rng() % 80) - 40));
          break;
      }
    }
    return v;
  }();
  return values;
}

orvo::String peerText(double value, char16_t separator) {
  char buf[40];
  const int n = std::snprintf(buf, sizeof buf, "%.15G", value);
  orvo::String out;
  out.reserve(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) out += buf[i] == '.' ? separator : static_cast<char16_t>(buf[i]);
  return out;
}

template <class F>
double nanosecondsPerValue(F&& f) {
  const auto start = Clock::now();
  for (double v : inputs()) f(v);
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count() /
         static_cast<double>(inputs().size());
}

void BM_DoubleToTextVersusSnprintf(benchmark::State& state) {
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    ours += nanosecondsPerValue(
        [](double v) { benchmark::DoNotOptimize(orvo::runtime::doubleToText(v, u",")); });
    peer += nanosecondsPerValue([](double v) { benchmark::DoNotOptimize(peerText(v, u',')); });
  }
  state.counters["ours_ns"] = ours / static_cast<double>(state.iterations());
  state.counters["snprintf_ns"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = ours / peer;
}
BENCHMARK(BM_DoubleToTextVersusSnprintf)->Iterations(400);

void BM_ValVersusStrtod(benchmark::State& state) {
  std::vector<orvo::String> wide;
  std::vector<std::string> narrow;
  for (double v : inputs()) {
    wide.push_back(orvo::runtime::doubleToText(v));
    narrow.push_back(orvo::toUtf8(wide.back()));
  }
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    for (const orvo::String& s : wide) benchmark::DoNotOptimize(orvo::runtime::Val(s));
    ours += std::chrono::duration<double, std::nano>(Clock::now() - start).count();
    start = Clock::now();
    for (const std::string& s : narrow) {
      benchmark::DoNotOptimize(std::strtod(s.c_str(), nullptr));
    }
    peer += std::chrono::duration<double, std::nano>(Clock::now() - start).count();
  }
  const double perValue = static_cast<double>(state.iterations() * wide.size());
  state.counters["ours_ns"] = ours / perValue;
  state.counters["strtod_ns"] = peer / perValue;
  state.counters["ratio"] = ours / peer;
}
BENCHMARK(BM_ValVersusStrtod)->Iterations(400);

}  // namespace
