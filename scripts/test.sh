#!/usr/bin/env bash
# The whole check: setup, formatting, a warnings-as-errors build with every test (install and
# consumer included), clang-tidy, the same suite under AddressSanitizer + UndefinedBehaviorSanitizer, and
# the fuzz targets built with clang and run briefly.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
"$root/scripts/setup.sh"
jobs=$(nproc)

echo "== format"
git ls-files -- '*.cpp' '*.hpp' | grep -v '^tests/golden/' | xargs clang-format --dry-run -Werror

echo "== release build and tests"
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DORVO_WERROR=ON >/dev/null
cmake --build build/release -j "$jobs"
ctest --test-dir build/release --output-on-failure -j "$jobs"

echo "== clang-tidy (the library and the tool, on the release build's compile commands)"
# The checks of .clang-tidy over every source: about two minutes on two cores. Any finding fails.
tidy_log=$(mktemp)
# The GCC-only warning options of the build mean nothing to clang; GCC's TLS-dialect option is an
# error to this clang, so the commands are read without it.
tidy_db=$(mktemp -d)
sed 's/ -mtls-dialect=gnu2//g' build/release/compile_commands.json >"$tidy_db/compile_commands.json"
run-clang-tidy -p "$tidy_db" -quiet -j "$jobs" -extra-arg=-Wno-unknown-warning-option "$root/(src|tools/orvo)/.*\.cpp" >"$tidy_log" 2>&1 || true
rm -rf "$tidy_db"
if grep -q 'warning:\|error:' "$tidy_log"; then
  grep -A3 'warning:\|error:' "$tidy_log"
  rm -f "$tidy_log"
  echo "clang-tidy found problems" >&2
  exit 1
fi
rm -f "$tidy_log"

echo "== sanitizer build and tests"
cmake -S . -B build/asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DORVO_WERROR=ON -DORVO_SANITIZE=ON \
  -DORVO_BUILD_BENCH=OFF >/dev/null
cmake --build build/asan -j "$jobs"
ASAN_OPTIONS=detect_leaks=1 LSAN_OPTIONS=suppressions=$PWD/tests/sanitizer/lsan.supp \
  UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  ctest --test-dir build/asan --output-on-failure -j "$jobs"

echo "== fuzz targets (short run each)"
cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
  -DCMAKE_CXX_COMPILER=clang++ -DORVO_BUILD_FUZZ=ON -DORVO_BUILD_TESTS=OFF \
  -DORVO_BUILD_BENCH=OFF >/dev/null
cmake --build build/fuzz -j "$jobs"
for target in build/fuzz/fuzz/*_fuzz; do
  name=$(basename "$target" _fuzz)
  corpus=$(mktemp -d)
  cp -r "fuzz/corpus/${name}_fuzz/." "$corpus/" 2>/dev/null || true
  printf "%s: " "$name"
  "$target" -max_total_time="${ORVO_FUZZ_SECONDS:-15}" "$corpus" 2>&1 | grep -E "^Done|ERROR|SUMMARY"
  rm -rf "$corpus"
done
echo "== all checks passed"
