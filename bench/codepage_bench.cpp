// Code-page conversion of whole buffers against ICU, the converter a C++ developer would reach
// for: UTF-8 (u_strFromUTF8 / u_strToUTF8) and the ANSI pages 1252 and 932 (ucnv). Both sides
// convert the same 16 MiB in the same iteration; the counters give each side's throughput in
// GB/s of input and "ratio" = ICU's time over ours (above 1: we are faster).

#include <benchmark/benchmark.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "platform/codepage.hpp"

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::size_t kTextUnits = 8 << 20;

// Mostly ASCII engineering text with a sprinkling of western accents; with Japanese mixed in
// for 932.
std::u16string sampleText(bool japanese) {
  const std::u16string western[] = {u"Beam 12, load case 3: 4.52 kN/m, ", u"Résumé of ",
                                    u"Düsseldorf façade ", u"stress 235 N/mm² at 20 °C; "};
  const std::u16string eastern[] = {u"設計荷重 ", u"梁の断面 ", u"温度 20 ℃, ", u"Beam 12; "};
  std::u16string text;
  text.reserve(kTextUnits + 64);
  for (std::size_t i = 0; text.size() < kTextUnits; ++i) {
    text += (japanese ? eastern : western)[i % 4];
    if (i % 7 == 6) text += u"\r\n";
  }
  return text;
}

struct IcuConverter {
  UConverter* cnv;
  explicit IcuConverter(const char* name) {
    UErrorCode status = U_ZERO_ERROR;
    cnv = ucnv_open(name, &status);
  }
  ~IcuConverter() { ucnv_close(cnv); }
  IcuConverter(const IcuConverter&) = delete;
  IcuConverter& operator=(const IcuConverter&) = delete;
};

template <class F>
double seconds(F&& f) {
  const auto start = Clock::now();
  f();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void report(benchmark::State& state, double ours, double peer, std::size_t inputBytes) {
  const double iterations = static_cast<double>(state.iterations());
  state.counters["ours_GBps"] = inputBytes * iterations / ours / 1e9;
  state.counters["peer_GBps"] = inputBytes * iterations / peer / 1e9;
  state.counters["ratio"] = peer / ours;
}

void toWide(benchmark::State& state, std::uint32_t codePage, const char* icuName) {
  const std::string bytes = orvo::platform::wideToMultiByte(codePage, sampleText(codePage == 932));
  const std::span<const std::uint8_t> input(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                            bytes.size());
  std::vector<char16_t> out(bytes.size() + 16);
  IcuConverter icu(icuName);
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    ours += seconds([&] {
      benchmark::DoNotOptimize(orvo::platform::multiByteToWide(codePage, input, out.data()));
    });
    peer += seconds([&] {
      UErrorCode status = U_ZERO_ERROR;
      if (codePage == orvo::platform::kCodePageUtf8) {
        int32_t length = 0;
        u_strFromUTF8(reinterpret_cast<UChar*>(out.data()), static_cast<int32_t>(out.size()),
                      &length, bytes.data(), static_cast<int32_t>(bytes.size()), &status);
        benchmark::DoNotOptimize(length);
      } else {
        benchmark::DoNotOptimize(ucnv_toUChars(icu.cnv, reinterpret_cast<UChar*>(out.data()),
                                               static_cast<int32_t>(out.size()), bytes.data(),
                                               static_cast<int32_t>(bytes.size()), &status));
      }
    });
  }
  report(state, ours, peer, bytes.size());
}

void fromWide(benchmark::State& state, std::uint32_t codePage, const char* icuName) {
  const std::u16string text = sampleText(codePage == 932);
  std::vector<std::uint8_t> out(text.size() * 3 + 16);
  IcuConverter icu(icuName);
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    ours += seconds([&] {
      benchmark::DoNotOptimize(orvo::platform::wideToMultiByte(codePage, text, out.data()));
    });
    peer += seconds([&] {
      UErrorCode status = U_ZERO_ERROR;
      auto* dest = reinterpret_cast<char*>(out.data());
      const auto* source = reinterpret_cast<const UChar*>(text.data());
      if (codePage == orvo::platform::kCodePageUtf8) {
        int32_t length = 0;
        u_strToUTF8(dest, static_cast<int32_t>(out.size()), &length, source,
                    static_cast<int32_t>(text.size()), &status);
        benchmark::DoNotOptimize(length);
      } else {
        benchmark::DoNotOptimize(ucnv_fromUChars(icu.cnv, dest, static_cast<int32_t>(out.size()),
                                                 source, static_cast<int32_t>(text.size()),
                                                 &status));
      }
    });
  }
  report(state, ours, peer, text.size() * 2);
}

void BM_ToUtf16_Utf8(benchmark::State& s) { toWide(s, 65001, "UTF-8"); }
void BM_ToUtf16_1252(benchmark::State& s) { toWide(s, 1252, "windows-1252"); }
void BM_ToUtf16_932(benchmark::State& s) { toWide(s, 932, "windows-31j"); }
void BM_FromUtf16_Utf8(benchmark::State& s) { fromWide(s, 65001, "UTF-8"); }
void BM_FromUtf16_1252(benchmark::State& s) { fromWide(s, 1252, "windows-1252"); }
void BM_FromUtf16_932(benchmark::State& s) { fromWide(s, 932, "windows-31j"); }
BENCHMARK(BM_ToUtf16_Utf8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ToUtf16_1252)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ToUtf16_932)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FromUtf16_Utf8)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FromUtf16_1252)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FromUtf16_932)->Unit(benchmark::kMillisecond);

}  // namespace
