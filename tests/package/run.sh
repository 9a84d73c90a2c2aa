#!/usr/bin/env bash
# Makes the Debian package from the build tree and checks what a user installing it gets: the
# library, headers, CMake and pkg-config files and the tool, dependencies worked out from the
# binaries, and a tool that runs from the unpacked tree.
set -euo pipefail
build=$1
work=$2
rm -rf "$work"
mkdir -p "$work"
(cd "$build" && cpack -G DEB -B "$work/out" >"$work/cpack.log") || {
  cat "$work/cpack.log" >&2
  exit 1
}
deb=$(echo "$work"/out/orvogeneric_*_amd64.deb)
test -f "$deb"
depends=$(dpkg-deb -f "$deb" Depends)
for needed in libicu libstdc++6 libc6; do
  grep -q "$needed" <<<"$depends" || { echo "Depends lacks $needed: $depends" >&2; exit 1; }
done
! grep -q libqt6 <<<"$depends" || { echo "the core package depends on Qt: $depends" >&2; exit 1; }
# The Qt module, when built, is a package of its own that needs the core one of its version.
for qt in "$work"/out/orvogeneric-qt_*_amd64.deb; do
  [[ -f "$qt" ]] || continue
  qt_depends=$(dpkg-deb -f "$qt" Depends)
  grep -q "orvogeneric (= " <<<"$qt_depends" && grep -q libqt6widgets6 <<<"$qt_depends" ||
    { echo "orvogeneric-qt Depends: $qt_depends" >&2; exit 1; }
  # Listed whole first: grep -q would close the pipe early and fail the listing.
  qt_contents=$(dpkg-deb -c "$qt")
  grep -q " ./usr/lib/libORVOGenericQt.so.0 " <<<"$qt_contents" ||
    { echo "orvogeneric-qt lacks its library" >&2; exit 1; }
done
contents=$(dpkg-deb -c "$deb")
for path in ./usr/bin/orvo ./usr/lib/libORVOGeneric.so.0 ./usr/include/orvogeneric/classes.hpp \
  ./usr/include/orvogeneric/version.hpp ./usr/lib/pkgconfig/orvogeneric.pc \
  ./usr/lib/cmake/ORVOGeneric/ORVOGenericConfig.cmake ./usr/share/man/man1/orvo.1 \
  ./usr/share/bash-completion/completions/orvo; do
  grep -q " $path" <<<"$contents" || { echo "the package lacks $path" >&2; exit 1; }
done
dpkg-deb -x "$deb" "$work/root"
env -u LD_LIBRARY_PATH "$work/root/usr/bin/orvo" --version | grep -q '^orvo '
