#!/usr/bin/env bash
# Installs the build into a scratch prefix and builds a consumer against it, with CMake's
# find_package and with pkg-config.
set -euo pipefail
build=$1
work=$2
here=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" >/dev/null
cmake -S "$here" -B "$work/build" -G Ninja -DCMAKE_PREFIX_PATH="$work/prefix" >/dev/null
cmake --build "$work/build" >/dev/null
LD_LIBRARY_PATH="$work/prefix/lib" "$work/build/consumer"
export PKG_CONFIG_PATH="$work/prefix/lib/pkgconfig"
libdir=$(pkg-config --variable=libdir orvogeneric)
# shellcheck disable=SC2046
c++ -std=c++20 "$here/consumer.cpp" $(pkg-config --cflags --libs orvogeneric) -o "$work/consumer-pc"
LD_LIBRARY_PATH="$libdir" "$work/consumer-pc"
readelf -d "$work/prefix/lib/libORVOGeneric.so" | grep -q 'SONAME.*libORVOGeneric.so.0'
