#!/usr/bin/env bash
# Records which string LoadStringW gives from the satellite fixtures under several user locales
# into tests/golden/satellite_strings.tsv (see satellite_strings.c). Needs wine64 and mingw-w64.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"; wineserver -k 2>/dev/null || true' EXIT
export WINEPREFIX=${ORACLE_WINEPREFIX:-$HOME/.cache/oracle-prefix}
export WINEARCH=win64 WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY
x86_64-w64-mingw32-gcc -O1 -static -o "$work/probe.exe" "$here/satellite_strings.c"
cp "$root"/tests/resources/fixtures/*.dll "$work/"
printf 'not a library\r\n' > "$work/NotPE.dll"
out="$root/tests/golden/satellite_strings.tsv"
{
  echo "# LoadStringW(LoadLibraryA(file), id, buffer, 4096) under Wine, per user locale."
  echo "# user-lcid	file	id	count	text   (id 'load-failed': count is GetLastError)"
  for locale in en_US.UTF-8 en_GB.UTF-8 fr_FR.UTF-8 ja_JP.UTF-8 de_DE.UTF-8; do
    (cd "$work" && env LC_ALL=$locale wine probe.exe AppRes809.dll NoStrings.dll \
       NoResources.dll NotPE.dll Missing.dll)
  done
} | tr -d '\r' > "$out"
echo "wrote $out ($(grep -vc '^#' "$out") rows)"
