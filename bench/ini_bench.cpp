// Settings files of 5,000 keys (50 sections of 100, about 5,300 lines), against the libraries an
// application would pick instead, in the same run:
//  - load and 5,000 lookups through INI.GetStringFromINI, each of which still sees another
//    process's change at the next call, against SimpleIni's LoadFile + GetValue and inih's
//    INIReader + Get (ratio = peer's time / ours; bar 1.0 against SimpleIni);
//  - one PutStringToINI against rewriting the whole file once (ratio = ours / rewrite; bar 2).
// Every side must find the same 5,000 values, or no figure is given.

#include <INIReader.h>
// The files are ASCII: SimpleIni at its fastest, without converting what it reads.
#define SI_NO_CONVERSION
// Debian ships the member definitions behind this switch: one translation unit provides them.
#define SI_IMPLEMENTATION
#include <SimpleIni.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "orvogeneric/classes.hpp"
#include "settings/profile.hpp"
#include "settings/profile_cache.hpp"
#include "settings/profile_document.hpp"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kSections = 50;
constexpr int kKeysPerSection = 100;

std::string sectionName(int s) { return "Section" + std::to_string(s); }
std::string keyName(int k) { return "Setting_" + std::to_string(k); }

std::string fileText() {
  std::string text = "; settings of a large application\r\n";
  for (int s = 0; s < kSections; ++s) {
    text += "[" + sectionName(s) + "]\r\n";
    for (int k = 0; k < kKeysPerSection; ++k) {
      text += keyName(k) + "=" + std::to_string(s * 1000 + k) + " mm\r\n";
    }
    text += "\r\n";
  }
  return text;
}

std::string samplePath() {
  return (std::filesystem::temp_directory_path() / "orvo_bench_settings.ini").string();
}

void writeSample() { std::ofstream(samplePath(), std::ios::binary) << fileText(); }

// The requests: every key of the file once, in a scattered order so that no side profits from
// locality. (Stepping section and key by separate strides would name only 100 distinct pairs,
// 50 times each: a test of a cache, not of a lookup.)
struct Request {
  orvo::String section;
  orvo::String key;
  std::string section8;
  std::string key8;
};
const std::vector<Request>& requests() {
  static const std::vector<Request> list = [] {
    std::vector<Request> out;
    constexpr int kKeys = kSections * kKeysPerSection;
    // A stride prime to the number of keys visits each of them once.
    constexpr int kStride = 3037;
    for (int i = 0; i < kKeys; ++i) {
      const int j = static_cast<int>((static_cast<long long>(i) * kStride) % kKeys);
      const int s = j / kKeysPerSection;
      const int k = j % kKeysPerSection;
      out.push_back(
          {orvo::fromUtf8(sectionName(s)), orvo::fromUtf8(keyName(k)), sectionName(s), keyName(k)});
    }
    return out;
  }();
  return list;
}

double seconds(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void BM_SettingsLoadAndLookups(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const orvo::String file = orvo::fromUtf8(path);
  orvo::INI ini;
  orvo::FileSubs files;
  double ours = 0;
  double simpleIni = 0;
  double inih = 0;
  for (auto _ : state) {
    // Nothing of the file is known before the first call: the parse and the encoding check
    // are part of the time, as SimpleIni's and inih's loads are of theirs.
    orvo::settings::privateprofile::clearProfileCache();
    files.ClearTextFileEncoding(orvo::Variant(file));
    std::size_t oursFound = 0;
    auto start = Clock::now();
    for (const auto& r : requests())
      oursFound += ini.GetStringFromINI(file, r.section, r.key).size();
    ours += seconds(start);

    std::size_t simpleFound = 0;
    start = Clock::now();
    {
      CSimpleIniA peer;
      if (peer.LoadFile(path.c_str()) < 0) state.SkipWithError("SimpleIni could not load");
      for (const auto& r : requests()) {
        const char* value = peer.GetValue(r.section8.c_str(), r.key8.c_str(), "");
        simpleFound += std::char_traits<char>::length(value);
      }
    }
    simpleIni += seconds(start);

    std::size_t inihFound = 0;
    start = Clock::now();
    {
      const INIReader peer(path);
      if (peer.ParseError() != 0) state.SkipWithError("inih could not load");
      for (const auto& r : requests()) inihFound += peer.Get(r.section8, r.key8, "").size();
    }
    inih += seconds(start);
    if (oursFound == 0 || oursFound != simpleFound || oursFound != inihFound) {
      state.SkipWithError("the three readers found different values");
      return;
    }
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us"] = ours / n * 1e6;
  state.counters["simpleini_us"] = simpleIni / n * 1e6;
  state.counters["inih_us"] = inih / n * 1e6;
  state.counters["ratio_simpleini"] = simpleIni / ours;  // bar: at least 1.0
  state.counters["ratio_inih"] = inih / ours;
}
BENCHMARK(BM_SettingsLoadAndLookups)->Unit(benchmark::kMillisecond)->Iterations(30);

// The parse alone, from bytes in memory, against SimpleIni's LoadData: what a program pays once
// per file before its first lookup (ratio = SimpleIni's time / ours).
void BM_SettingsParse(benchmark::State& state) {
  const std::string text = fileText();
  double ours = 0;
  double simpleIni = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    const orvo::settings::privateprofile::detail::Document document(text, 1252);
    benchmark::DoNotOptimize(document.sectionsIndexed());
    ours += seconds(start);
    start = Clock::now();
    CSimpleIniA peer;
    if (peer.LoadData(text.data(), text.size()) < 0)
      state.SkipWithError("SimpleIni could not load");
    simpleIni += seconds(start);
    if (!document.keysIndexed() || peer.GetValue("Section7", "Setting_7") == nullptr) {
      state.SkipWithError("a parse found nothing");
      return;
    }
  }
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us"] = ours / n * 1e6;
  state.counters["simpleini_us"] = simpleIni / n * 1e6;
  state.counters["ratio_simpleini"] = simpleIni / ours;
}
BENCHMARK(BM_SettingsParse)->Unit(benchmark::kMicrosecond)->Iterations(300);

void BM_SettingsOneWrite(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const std::string wholePath = path + ".whole";
  const std::string text = fileText();
  const orvo::String file = orvo::fromUtf8(path);
  orvo::INI ini;
  double ours = 0;
  double whole = 0;
  int round = 0;
  for (auto _ : state) {
    const orvo::String value = orvo::fromUtf8(std::to_string(++round) + " mm");
    auto start = Clock::now();
    if (!orvo::isTrue(ini.PutStringToINI(file, u"Section25", u"Setting_50", value))) {
      state.SkipWithError("write failed");
      break;
    }
    ours += seconds(start);
    start = Clock::now();
    const int fd = ::open(wholePath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    const bool written =
        fd >= 0 && ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (fd >= 0) ::close(fd);
    whole += seconds(start);
    if (!written) state.SkipWithError("whole-file write failed");
  }
  if (ini.GetStringFromINI(file, u"Section25", u"Setting_50", u"") !=
      orvo::fromUtf8(std::to_string(round) + " mm")) {
    state.SkipWithError("the last value written does not read back");
  }
  std::filesystem::remove(wholePath);
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us"] = ours / n * 1e6;
  state.counters["whole_file_us"] = whole / n * 1e6;
  state.counters["ratio"] = ours / whole;  // bar: at most 2
}
BENCHMARK(BM_SettingsOneWrite)->Unit(benchmark::kMicrosecond)->Iterations(2000);

}  // namespace
