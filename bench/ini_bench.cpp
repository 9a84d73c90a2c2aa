// Settings files of 5,000 keys (50 sections of 100), read and written one value at a time,
// against what an application would otherwise do, in the same run:
//  - 5,000 lookups of existing keys against the naive private-profile approach, which reads
//    and parses the whole file again for every call (ratio = naive time / ours; bar 100), and
//    against a cleverer naive reader that stops scanning at the key (scan_ratio);
//  - one write against writing the whole file once (ratio = ours / whole-file write; bar 3);
//  - a cold start, loading and parsing plus 5,000 lookups, against a minimal parser into
//    hash maps (ratio = minimal parser's time / ours; bar 1); also through the one-value
//    calls, which pay a stat per call to see other processes' changes.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "orvogeneric/classes.hpp"
#include "settings/profile.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using orvo::settings::privateprofile::ProfileForm;

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

void writeSample() {
  std::ofstream(samplePath(), std::ios::binary) << fileText();
  orvo::settings::privateprofile::clearProfileCache();
}

// The requests, in a scattered order so that neither side profits from locality.
struct Request {
  orvo::String section;
  orvo::String key;
  std::string section8;
  std::string key8;
};
const std::vector<Request>& requests() {
  static const std::vector<Request> list = [] {
    std::vector<Request> out;
    for (int i = 0; i < kSections * kKeysPerSection; ++i) {
      const int s = (i * 37) % kSections;
      const int k = (i * 61) % kKeysPerSection;
      out.push_back(
          {orvo::fromUtf8(sectionName(s)), orvo::fromUtf8(keyName(k)), sectionName(s), keyName(k)});
    }
    return out;
  }();
  return list;
}

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string trim(std::string_view s) {
  const auto b = s.find_first_not_of(" \t");
  if (b == std::string_view::npos) return {};
  const auto e = s.find_last_not_of(" \t\r");
  return std::string(s.substr(b, e - b + 1));
}

bool sameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

// The naive private-profile read: the file read and scanned again for every value.
std::string naiveGet(const std::string& path, std::string_view section, std::string_view key) {
  const std::string text = readAll(path);
  std::istringstream lines(text);
  std::string line;
  bool inSection = false;
  while (std::getline(lines, line)) {
    const std::string t = trim(line);
    if (t.empty() || t[0] == ';') continue;
    if (t[0] == '[') {
      const auto close = t.rfind(']');
      inSection = close != std::string::npos && sameName(trim(t.substr(1, close - 1)), section);
      continue;
    }
    const auto eq = t.find('=');
    if (inSection && eq != std::string::npos && sameName(trim(t.substr(0, eq)), key)) {
      return trim(t.substr(eq + 1));
    }
  }
  return {};
}

// The minimal parser: the whole file into hash maps with lower-cased names, then lookups.
using Parsed = std::unordered_map<std::string, std::unordered_map<std::string, std::string>>;
std::string lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}
Parsed minimalParse(const std::string& path) {
  Parsed parsed;
  const std::string text = readAll(path);
  std::istringstream lines(text);
  std::string line;
  std::unordered_map<std::string, std::string>* current = nullptr;
  while (std::getline(lines, line)) {
    const std::string t = trim(line);
    if (t.empty() || t[0] == ';') continue;
    if (t[0] == '[') {
      const auto close = t.rfind(']');
      if (close != std::string::npos) current = &parsed[lower(trim(t.substr(1, close - 1)))];
      continue;
    }
    const auto eq = t.find('=');
    if (current != nullptr && eq != std::string::npos) {
      current->emplace(lower(trim(t.substr(0, eq))), trim(t.substr(eq + 1)));
    }
  }
  return parsed;
}

double seconds(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The naive reader's time for all the requests. It is timed on every 50th request and scaled:
// 5,000 full re-reads per iteration would make the run take minutes.
double naiveSeconds(const std::string& path, std::size_t& checksum) {
  const auto start = Clock::now();
  for (std::size_t i = 0; i < requests().size(); i += 50) {
    const Parsed parsed = minimalParse(path);
    const auto s = parsed.find(lower(requests()[i].section8));
    if (s != parsed.end()) checksum += s->second.count(lower(requests()[i].key8));
  }
  return seconds(start) * 50;
}

void BM_SettingsLookups(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const orvo::String file = orvo::fromUtf8(path);
  double ours = 0;
  double naive = 0;
  double scan = 0;
  std::size_t checksum = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    for (const auto& r : requests()) {
      checksum += orvo::settings::privateprofile::GetPrivateProfileString(
                      r.section, r.key, u"", 2048, file, ProfileForm::Wide)
                      .size();
    }
    ours += seconds(start);
    naive += naiveSeconds(path, checksum);
    // The scanning reader, sampled the same way.
    start = Clock::now();
    for (std::size_t i = 0; i < requests().size(); i += 50) {
      checksum += naiveGet(path, requests()[i].section8, requests()[i].key8).size();
    }
    scan += seconds(start) * 50;
  }
  benchmark::DoNotOptimize(checksum);
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us_per_5000"] = ours / n * 1e6;
  state.counters["naive_us_per_5000"] = naive / n * 1e6;
  state.counters["scan_us_per_5000"] = scan / n * 1e6;
  state.counters["ratio"] = naive / ours;  // bar: at least 100
  state.counters["scan_ratio"] = scan / ours;
}
BENCHMARK(BM_SettingsLookups)->Unit(benchmark::kMillisecond)->Iterations(20);

// The same lookups through the INI class as applications make them: GetStringFromINI and
// ReadWriteINILong (each also asks the encoding detector whether the file is UTF-16, from its
// per-path cache), against the naive re-reading reader.
void BM_SettingsTypedLookups(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const orvo::String file = orvo::fromUtf8(path);
  orvo::INI ini;
  double strings = 0;
  double longs = 0;
  double naive = 0;
  std::size_t checksum = 0;
  for (auto _ : state) {
    auto start = Clock::now();
    for (const auto& r : requests())
      checksum += ini.GetStringFromINI(file, r.section, r.key).size();
    strings += seconds(start);
    start = Clock::now();
    for (const auto& r : requests()) {
      checksum += static_cast<std::size_t>(ini.ReadWriteINILong(r.section, r.key, 0, file));
    }
    longs += seconds(start);
    naive += naiveSeconds(path, checksum);
  }
  benchmark::DoNotOptimize(checksum);
  const double n = static_cast<double>(state.iterations());
  state.counters["GetStringFromINI_us_per_5000"] = strings / n * 1e6;
  state.counters["ReadWriteINILong_us_per_5000"] = longs / n * 1e6;
  state.counters["naive_us_per_5000"] = naive / n * 1e6;
  state.counters["ratio_GetStringFromINI"] = naive / strings;  // bar: at least 100
  state.counters["ratio_ReadWriteINILong"] = naive / longs;    // bar: at least 100
}
BENCHMARK(BM_SettingsTypedLookups)->Unit(benchmark::kMillisecond)->Iterations(10);

void BM_SettingsOneWrite(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const std::string wholePath = path + ".whole";
  const std::string text = fileText();
  const orvo::String file = orvo::fromUtf8(path);
  const orvo::String section = u"Section25";
  const orvo::String key = u"Setting_50";
  double ours = 0;
  double whole = 0;
  int round = 0;
  for (auto _ : state) {
    const orvo::String value = orvo::fromUtf8(std::to_string(++round) + " mm");
    auto start = Clock::now();
    if (!orvo::settings::privateprofile::WritePrivateProfileString(&section, &key, &value, file,
                                                                   ProfileForm::Wide)) {
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
  std::filesystem::remove(wholePath);
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us"] = ours / n * 1e6;
  state.counters["whole_file_us"] = whole / n * 1e6;
  state.counters["ratio"] = ours / whole;  // bar: at most 3
}
BENCHMARK(BM_SettingsOneWrite)->Unit(benchmark::kMicrosecond)->Iterations(2000);

void BM_SettingsColdStart(benchmark::State& state) {
  writeSample();
  const std::string path = samplePath();
  const orvo::String file = orvo::fromUtf8(path);
  double ours = 0;
  double minimal = 0;
  std::size_t checksum = 0;
  double oursPerCall = 0;
  for (auto _ : state) {
    orvo::settings::privateprofile::clearProfileCache();
    auto start = Clock::now();
    const auto snapshot = orvo::settings::privateprofile::ProfileSnapshot::read(file);
    for (const auto& r : requests()) checksum += snapshot->value(r.section, r.key)->size();
    ours += seconds(start);
    // The same through the one-value calls, each of which asks the file system whether the
    // file changed.
    orvo::settings::privateprofile::clearProfileCache();
    start = Clock::now();
    for (const auto& r : requests()) {
      checksum += orvo::settings::privateprofile::GetPrivateProfileString(
                      r.section, r.key, u"", 2048, file, ProfileForm::Wide)
                      .size();
    }
    oursPerCall += seconds(start);
    start = Clock::now();
    const Parsed parsed = minimalParse(path);
    for (const auto& r : requests()) {
      const auto s = parsed.find(lower(r.section8));
      if (s == parsed.end()) continue;
      const auto k = s->second.find(lower(r.key8));
      if (k != s->second.end()) checksum += k->second.size();
    }
    minimal += seconds(start);
  }
  benchmark::DoNotOptimize(checksum);
  const double n = static_cast<double>(state.iterations());
  state.counters["ours_us"] = ours / n * 1e6;
  state.counters["ours_one_value_calls_us"] = oursPerCall / n * 1e6;
  state.counters["minimal_parser_us"] = minimal / n * 1e6;
  state.counters["ratio"] = minimal / ours;  // bar: at least 1
  state.counters["one_value_calls_ratio"] = minimal / oursPerCall;
}
BENCHMARK(BM_SettingsColdStart)->Unit(benchmark::kMillisecond)->Iterations(50);

}  // namespace
