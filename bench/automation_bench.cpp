// Late binding against the direct C++ call it wraps: what a scripting host pays per call for
// argument binding, coercion and by-reference write-back.

#include <benchmark/benchmark.h>

#include <chrono>

#include "orvogeneric/automation.hpp"
#include "orvogeneric/classes.hpp"

namespace {

using Clock = std::chrono::steady_clock;

template <class F>
double nanosecondsPerCall(F&& f, int calls) {
  const auto start = Clock::now();
  for (int i = 0; i < calls; ++i) f();
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / calls;
}

// Both sides run in the same benchmark iteration, so the ratio is taken under the same machine
// load; "ratio" is late-bound time over direct time.
void BM_InvokeVersusDirect_ExpandString(benchmark::State& state) {
  orvo::StringUtilities strings;
  const orvo::String templ = u"Value %0 of %1 in %2";
  orvo::SafeArray args(orvo::VarType::Variant, 0,
                       {orvo::Variant(u"a"), orvo::Variant(std::int32_t{42}), orvo::Variant(2.5)});
  const orvo::Variant argsVariant(args);
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    ours += nanosecondsPerCall(
        [&] {
          benchmark::DoNotOptimize(orvo::automation::invoke(strings, "ExpandString",
                                                            {orvo::Variant(templ), argsVariant}));
        },
        200);
    peer += nanosecondsPerCall([&] { benchmark::DoNotOptimize(strings.ExpandString(templ, args)); },
                               200);
  }
  state.counters["invoke_ns"] = ours / static_cast<double>(state.iterations());
  state.counters["direct_ns"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = ours / peer;
}
BENCHMARK(BM_InvokeVersusDirect_ExpandString)->Iterations(200);

void BM_InvokeVersusDirect_IsLongInArray(benchmark::State& state) {
  orvo::MathsUtilities maths;
  std::vector<orvo::Variant> items;
  for (int i = 0; i < 100; ++i) items.emplace_back(static_cast<double>(i));
  orvo::Variant array = orvo::Variant::array(items);
  double ours = 0;
  double peer = 0;
  for (auto _ : state) {
    ours += nanosecondsPerCall(
        [&] {
          benchmark::DoNotOptimize(orvo::automation::invoke(
              maths, "IsLongInArray", {orvo::Variant(std::int32_t{99}), array}));
        },
        200);
    peer += nanosecondsPerCall(
        [&] {
          std::int32_t index = 0;
          benchmark::DoNotOptimize(maths.IsLongInArray(99, array, &index));
        },
        200);
  }
  state.counters["invoke_ns"] = ours / static_cast<double>(state.iterations());
  state.counters["direct_ns"] = peer / static_cast<double>(state.iterations());
  state.counters["ratio"] = ours / peer;
}
BENCHMARK(BM_InvokeVersusDirect_IsLongInArray)->Iterations(200);

}  // namespace
