#!/usr/bin/env bash
# Installs the build into a scratch prefix and uses it as the README says: the README's C++
# example built with its CMake lines, a consumer with pkg-config under a newer standard than the
# library's, and the installed tool run from where it landed.
set -euo pipefail
build=$1
work=$2
here=$(cd "$(dirname "$0")" && pwd)
readme="$here/../../README.md"
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
# Every C++ block of the README, as it stands: a whole program, or statements run as one.
count=$(grep -c '^```cpp$' "$readme")
for ((i = 1; i <= count; i++)); do
  block=$(awk -v want="$i" '/^```cpp$/ {n++; if (n == want) {on = 1; next}} /^```$/ && on {exit} on' "$readme")
  if grep -q 'int main' <<<"$block"; then
    printf '%s\n' "$block" >"$work/readme_app.cpp"
  else
    printf '#include <cstdio>\n#include <orvogeneric/classes.hpp>\n#include <orvogeneric/error.hpp>\nint main() {\n%s\n}\n' \
      "$block" >"$work/readme_app.cpp"
  fi
  qt=OFF
  if grep -q 'orvogeneric/qt.hpp' <<<"$block"; then
    # Built only where the Qt module is; run on Qt's display-less platform.
    [[ -f "$work/prefix/lib/cmake/ORVOGeneric/ORVOGenericQtTargets.cmake" ]] || continue
    qt=ON
  fi
  cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" \
    -DORVO_README_APP="$work/readme_app.cpp" -DORVO_README_QT=$qt >/dev/null
  cmake --build "$work/build" >/dev/null
  QT_QPA_PLATFORM=offscreen LD_LIBRARY_PATH="$work/prefix/lib" timeout 60 "$work/build/app" \
    >/dev/null 2>&1 || {
    echo "the README's C++ block $i does not do what it says" >&2
    exit 1
  }
done
LD_LIBRARY_PATH="$work/prefix/lib" "$work/build/consumer"
export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir orvogeneric)
if pkg-config --cflags orvogeneric | grep -q -- '-std='; then
  echo "the pkg-config file chooses the C++ standard" >&2
  exit 1
fi
# A consumer on C++23 stays on C++23.
printf '#include <orvogeneric/classes.hpp>\nstatic_assert(__cplusplus > 202002L);\nint main() {}\n' \
  >"$work/newer.cpp"
# shellcheck disable=SC2046
c++ -std=c++23 "$work/newer.cpp" $(pkg-config --cflags --libs orvogeneric) -o "$work/newer"
# shellcheck disable=SC2046
c++ -std=c++20 "$here/consumer.cpp" $(pkg-config --cflags --libs orvogeneric) -o "$work/consumer-pc"
LD_LIBRARY_PATH="$libdir" "$work/consumer-pc"
readelf -d "$work/prefix/lib/libORVOGeneric.so" | grep -q 'SONAME.*libORVOGeneric.so.0'
# The installed tool runs where it landed, with no library path given.
env -u LD_LIBRARY_PATH "$work/prefix/bin/orvo" --version | grep -q '^orvo [0-9.]* (ORVOGeneric [0-9.]*)$'
test "$(env -u LD_LIBRARY_PATH "$work/prefix/bin/orvo" call StringUtilities.LenTrim ' x ')" = '{"result":1}'
